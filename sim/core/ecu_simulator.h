// The simulated ECU: bytes in, bytes out, with time passed in by the caller. It holds a
// 1023-byte calibration image, takes the program's command frames (single byte writes, download
// frames, the closing frame, the rate register, the upload request and the fault code request),
// answers an upload request with "ALL", the image and "DONE" and a fault code request with the
// codes it holds, and streams live frames of its engine model at the rate last set, paced like a
// 115,200 baud line. Nothing here reads a clock: the same seed, the same input at the same times
// and the same options give the same output, however the calls are spaced.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "calibration/calibration_image.h"
#include "sim/core/command_parser.h"
#include "sim/core/engine_model.h"
#include "sim/core/fault_memory.h"
#include "sim/core/output_wire.h"
#include "sim/core/random.h"
#include "sim/core/sim_options.h"

namespace vela::sim {

// Command codes and addresses the ECU answers to.
inline constexpr std::uint8_t kCodeWriteByte = 4;
inline constexpr std::uint8_t kCodeWritePair = 2;
inline constexpr std::uint8_t kCodeClose = 6;
inline constexpr std::uint16_t kRateAddress = 864;
inline constexpr std::uint16_t kUploadRequestAddress = 770;
inline constexpr std::uint16_t kUploadRequestValue = 1284;
// The rev limiter's fault code, recorded whenever the limiter cuts in.
inline constexpr int kRevLimiterFault = 1;

struct SimCounters {
  std::uint64_t live_frames = 0;     // live frames queued for sending (bursts not counted)
  std::uint64_t frames_skipped = 0;  // due while the line was still busy, or while silent
  std::uint64_t commands = 0;        // frames whose checksum held
  std::uint64_t byte_writes = 0;     // code 4 writes into the image
  std::uint64_t pair_writes = 0;     // code 2 download frames
  std::uint64_t transfers_closed = 0;
  std::uint64_t rate_writes = 0;
  std::uint64_t upload_requests = 0;
  std::uint64_t uploads_sent = 0;
  std::uint64_t fault_requests = 0;
  std::uint64_t fault_replies = 0;
  std::uint64_t bursts = 0;
  std::uint64_t ignored = 0;  // frames the ECU takes and does nothing with (code 7, ...)
};

// "ALL", the image and "DONE". `cut_bytes` >= 0 ends the reply after that many image bytes with
// no "DONE"; otherwise `done_shift` puts "DONE" that many bytes late (zero filler) or early.
std::vector<std::uint8_t> UploadReply(const CalibrationImage& image, int cut_bytes = -1,
                                      int done_shift = 0);

class EcuSimulator {
 public:
  EcuSimulator(const SimOptions& options, const CalibrationImage& image);

  // Takes bytes from the program at the time of the last Advance; returns the command frames
  // they completed, already acted on.
  std::vector<CommandFrame> Feed(std::span<const std::uint8_t> bytes);

  // Moves the ECU's time to `now_us` (microseconds since it started; time never goes back) and
  // returns the bytes it has sent since the last call.
  std::vector<std::uint8_t> Advance(std::int64_t now_us);

  std::int64_t NowUs() const { return now_us_; }
  const CalibrationImage& Image() const { return image_; }
  const EngineState& Engine() const { return engine_.State(); }
  const SimCounters& Counters() const { return counters_; }
  std::uint64_t DiscardedCommandBytes() const { return parser_.DiscardedBytes(); }
  std::uint16_t RateValue() const { return rate_value_; }
  int FramesPerSecond() const { return frames_per_second_; }
  bool TransferOpen() const { return transfer_open_; }
  bool Silent() const { return silence_phase_ == kSilent; }
  const FaultMemory& Faults() const { return faults_; }

 private:
  void Act(const CommandFrame& frame);
  void WriteByte(const CommandFrame& frame);
  void WritePair(const CommandFrame& frame);
  void SetRate(std::uint16_t value);
  void AnswerUploadRequest();
  void AnswerFaultRequest();
  void RecordInjectedFaults(std::int64_t t);

  std::int64_t NextEventUs() const;
  void RunEventsAt(std::int64_t t);
  void SendFrame(std::int64_t t);
  void SendBurst(std::int64_t t);
  std::vector<std::uint8_t> Garbage();
  std::int64_t NextFrameUs() const;
  std::int64_t NextSilenceEdgeUs() const;
  std::int64_t NextInjectedFaultUs() const;
  // The engine's state with the fault fields of the live frame.
  EngineState ShownState() const;

  SimOptions options_;
  CalibrationImage image_;
  CommandParser parser_;
  EngineModel engine_;
  OutputWire wire_;
  Rng fault_rng_;
  SimCounters counters_;
  FaultMemory faults_;
  std::size_t next_injected_ = 0;  // options_.fault_codes sorted by time; the next to record

  std::int64_t now_us_ = 0;
  std::int64_t next_step_us_ = EngineModel::kStepUs;
  std::int64_t frame_anchor_us_ = 0;
  std::int64_t frame_index_ = 1;
  std::int64_t next_burst_us_ = 0;
  std::uint16_t rate_value_;
  int frames_per_second_;
  bool transfer_open_ = false;
  enum SilencePhase { kBeforeSilence, kSilent, kAfterSilence };
  SilencePhase silence_phase_ = kBeforeSilence;
};

}  // namespace vela::sim
