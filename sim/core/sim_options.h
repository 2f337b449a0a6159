// Settings of the simulated ECU: the seed of its engine, the wire pacing and the faults it can
// be told to commit, and the command line that sets them.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "sim/engine/engine_physics.h"

namespace vela::sim {

// Wire time of one byte at 115,200 baud, 8 data bits, no parity, 1 stop bit (10 bit times).
inline constexpr double kByteTimeUs = 1e6 / 11520.0;

struct FaultOptions {
  // Stray bytes: before every `garbage_every`-th live frame (0 = never), 1 to
  // `garbage_max_bytes` bytes that spell no marker.
  int garbage_every = 0;
  int garbage_max_bytes = 8;

  // Small chunks: everything leaves in pieces of 1 to `chunk_max_bytes` bytes (0 = off) with a
  // pause of `chunk_gap_us` after each piece.
  int chunk_max_bytes = 0;
  std::int64_t chunk_gap_us = 2000;
  // The upload reply in pieces of exactly `reply_chunk_bytes` bytes (0 = off), each followed by
  // `chunk_gap_us` of quiet: an ECU behind a USB adapter, or one reading its memory in blocks.
  int reply_chunk_bytes = 0;

  // Silence: from `silence_after_us` (negative = never) for `silence_for_us` nothing at all is
  // sent and upload requests go unanswered; then the ECU carries on.
  std::int64_t silence_after_us = -1;
  std::int64_t silence_for_us = 0;

  // Damaged upload replies, for the first `faulty_uploads` replies (0 = every reply):
  // `upload_cut_bytes` >= 0 ends the reply after that many image bytes with no "DONE";
  // otherwise `done_shift` moves "DONE" that many bytes later (filler bytes after the image) or
  // earlier (the image's last bytes left out).
  int upload_cut_bytes = -1;
  int done_shift = 0;
  int faulty_uploads = 1;

  // Bursts: every `burst_every_us` (0 = never), whole live frames adding up to at least
  // `burst_bytes` bytes, all at once with no wire pacing.
  std::int64_t burst_every_us = 0;
  int burst_bytes = 600;

  bool DamagesUploads() const { return upload_cut_bytes >= 0 || done_shift != 0; }
};

// A fault code the ECU records `at_us` after it starts (0: held from the start).
struct InjectedFault {
  int code = 0;
  std::int64_t at_us = 0;
  bool operator==(const InjectedFault&) const = default;
};

struct SimOptions {
  std::uint64_t seed = 1;
  // From this time on (negative = never) the engine holds its state: every live frame then
  // carries the same values, for checking a display against them.
  std::int64_t steady_after_us = -1;
  // 0 sends every byte the moment it is ready.
  double byte_time_us = kByteTimeUs;
  FaultOptions faults;
  // Fault codes besides those the engine model records itself (the rev limiter's).
  std::vector<InjectedFault> fault_codes;
  // False: fault code requests go unanswered while everything else goes on.
  bool answer_fault_requests = true;
  // Where the engine needs other fuel than its calibration gives (--fuel-error).
  std::vector<FuelError> fuel_errors;
};

// "CODE[@SECONDS],..." as the --fault-codes option takes it; nullopt when a code is not 1 to
// 255 or a time is not a number of seconds.
std::optional<std::vector<InjectedFault>> ParseInjectedFaults(std::string_view text);

// The whole command line of vela-ecusim.
struct SimCommandLine {
  SimOptions sim;
  std::string image_path;  // empty: the base calibration built into the program
  std::string link_path;   // empty: no symbolic link to the device
  bool verbose = false;
  bool help = false;
  // Work without a link: drive `drive_seconds` (> 0) and write the log to `write_log_path`;
  // write the true fuel map to `true_map_path`, for the target table read from `target_path`
  // (empty: the default target).
  double drive_seconds = 0;
  std::string write_log_path;
  std::string true_map_path;
  std::string target_path;
  bool Offline() const { return !write_log_path.empty() || !true_map_path.empty(); }
};

// Reads the arguments after the program name. Unknown options, missing or malformed values, and
// --drive without --write-log or the other way round, give nullopt and a one-line reason in
// `error`.
std::optional<SimCommandLine> ParseSimCommandLine(std::span<const std::string_view> args,
                                                  std::string* error);

std::string SimUsageText();

}  // namespace vela::sim
