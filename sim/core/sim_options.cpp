#include "sim/core/sim_options.h"

#include <charconv>
#include <cmath>
#include <functional>
#include <vector>

namespace vela::sim {

namespace {

constexpr double kLongestDriveS = 24 * 3600.0;

template <typename T>
bool ParseNumber(std::string_view text, T& out) {
  const char* end = text.data() + text.size();
  auto [ptr, ec] = std::from_chars(text.data(), end, out);
  return ec == std::errc() && ptr == end;
}

bool ParseInt(std::string_view text, int low, int high, int& out) {
  return ParseNumber(text, out) && out >= low && out <= high;
}

// Seconds (fractions allowed) as microseconds.
bool ParseSeconds(std::string_view text, std::int64_t& out_us) {
  double seconds = 0;
  if (!ParseNumber(text, seconds) || !std::isfinite(seconds) || seconds < 0 || seconds > 1e7) {
    return false;
  }
  out_us = std::llround(seconds * 1e6);
  return true;
}

struct ValueOption {
  std::string_view name;
  std::function<bool(std::string_view, SimCommandLine&)> apply;
};

// The engine's options and those that work without a link.
std::vector<ValueOption> EngineValueOptions() {
  return {
      {"--fuel-error",
       [](std::string_view v, SimCommandLine& c) {
         const auto error = ParseFuelError(v);
         if (error) c.sim.fuel_errors.push_back(*error);
         return error.has_value();
       }},
      {"--drive",
       [](std::string_view v, SimCommandLine& c) {
         return ParseNumber(v, c.drive_seconds) && c.drive_seconds > 0 &&
                c.drive_seconds <= kLongestDriveS;
       }},
      {"--write-log",
       [](std::string_view v, SimCommandLine& c) { return !(c.write_log_path = v).empty(); }},
      {"--true-map",
       [](std::string_view v, SimCommandLine& c) { return !(c.true_map_path = v).empty(); }},
      {"--target",
       [](std::string_view v, SimCommandLine& c) { return !(c.target_path = v).empty(); }},
  };
}

std::vector<ValueOption> ValueOptions() {
  auto int_option = [](int low, int high, auto member) {
    return [=](std::string_view v, SimCommandLine& c) { return ParseInt(v, low, high, member(c)); };
  };
  auto seconds_option = [](auto member) {
    return [=](std::string_view v, SimCommandLine& c) { return ParseSeconds(v, member(c)); };
  };
  return {
      {"--image",
       [](std::string_view v, SimCommandLine& c) { return !(c.image_path = v).empty(); }},
      {"--link", [](std::string_view v, SimCommandLine& c) { return !(c.link_path = v).empty(); }},
      {"--seed", [](std::string_view v, SimCommandLine& c) { return ParseNumber(v, c.sim.seed); }},
      {"--garbage-every",
       int_option(0, 1'000'000, [](auto& c) -> int& { return c.sim.faults.garbage_every; })},
      {"--garbage-max",
       int_option(1, 1000, [](auto& c) -> int& { return c.sim.faults.garbage_max_bytes; })},
      {"--chunks",
       int_option(0, 1000, [](auto& c) -> int& { return c.sim.faults.chunk_max_bytes; })},
      {"--reply-chunks",
       int_option(0, 1030, [](auto& c) -> int& { return c.sim.faults.reply_chunk_bytes; })},
      {"--chunk-gap-ms",
       [](std::string_view v, SimCommandLine& c) {
         int ms = 0;
         if (!ParseInt(v, 0, 10'000, ms)) return false;
         c.sim.faults.chunk_gap_us = std::int64_t{ms} * 1000;
         return true;
       }},
      {"--steady-after",
       seconds_option([](auto& c) -> std::int64_t& { return c.sim.steady_after_us; })},
      {"--silence-after",
       seconds_option([](auto& c) -> std::int64_t& { return c.sim.faults.silence_after_us; })},
      {"--silence-for",
       seconds_option([](auto& c) -> std::int64_t& { return c.sim.faults.silence_for_us; })},
      {"--upload-cut",
       int_option(0, 1022, [](auto& c) -> int& { return c.sim.faults.upload_cut_bytes; })},
      {"--done-shift",
       int_option(-1023, 1000, [](auto& c) -> int& { return c.sim.faults.done_shift; })},
      {"--faulty-uploads",
       int_option(0, 1'000'000, [](auto& c) -> int& { return c.sim.faults.faulty_uploads; })},
      {"--burst-every",
       seconds_option([](auto& c) -> std::int64_t& { return c.sim.faults.burst_every_us; })},
      {"--fault-codes",
       [](std::string_view v, SimCommandLine& c) {
         auto faults = ParseInjectedFaults(v);
         if (faults) c.sim.fault_codes = std::move(*faults);
         return faults.has_value();
       }},
      {"--burst-bytes",
       int_option(500, 100'000, [](auto& c) -> int& { return c.sim.faults.burst_bytes; })},
  };
}

bool ApplyFlag(std::string_view arg, SimCommandLine& c) {
  if (arg == "--help" || arg == "-h") return c.help = true;
  if (arg == "--verbose" || arg == "-v") return c.verbose = true;
  if (arg == "--no-fault-reply") {
    c.sim.answer_fault_requests = false;
    return true;
  }
  if (arg == "--unpaced") {
    c.sim.byte_time_us = 0;
    return true;
  }
  return false;
}

}  // namespace

std::optional<std::vector<InjectedFault>> ParseInjectedFaults(std::string_view text) {
  std::vector<InjectedFault> faults;
  while (!text.empty()) {
    const std::size_t comma = text.find(',');
    std::string_view item = text.substr(0, comma);
    text = comma == std::string_view::npos ? std::string_view() : text.substr(comma + 1);
    InjectedFault fault;
    const std::size_t at = item.find('@');
    if (at != std::string_view::npos && !ParseSeconds(item.substr(at + 1), fault.at_us)) {
      return std::nullopt;
    }
    if (!ParseInt(item.substr(0, at), 1, 255, fault.code)) return std::nullopt;
    faults.push_back(fault);
  }
  return faults;
}

std::optional<SimCommandLine> ParseSimCommandLine(std::span<const std::string_view> args,
                                                  std::string* error) {
  SimCommandLine line;
  std::vector<ValueOption> options = ValueOptions();
  for (ValueOption& o : EngineValueOptions()) options.push_back(std::move(o));
  for (std::size_t i = 0; i < args.size(); ++i) {
    std::string_view arg = args[i];
    if (ApplyFlag(arg, line)) continue;
    std::optional<std::string_view> inline_value;
    if (const auto eq = arg.find('='); eq != std::string_view::npos) {
      inline_value = arg.substr(eq + 1);
      arg = arg.substr(0, eq);
    }
    const ValueOption* option = nullptr;
    for (const ValueOption& o : options) {
      if (o.name == arg) option = &o;
    }
    if (option == nullptr) {
      if (error) *error = "unknown option: " + std::string(args[i]);
      return std::nullopt;
    }
    if (!inline_value && i + 1 >= args.size()) {
      if (error) *error = "missing value for " + std::string(arg);
      return std::nullopt;
    }
    const std::string_view value = inline_value ? *inline_value : args[++i];
    if (!option->apply(value, line)) {
      if (error) *error = "bad value for " + std::string(arg) + ": " + std::string(value);
      return std::nullopt;
    }
  }
  if ((line.drive_seconds > 0) != !line.write_log_path.empty()) {
    if (error) *error = "--drive and --write-log go together";
    return std::nullopt;
  }
  return line;
}

std::string SimUsageText() {
  return R"(Usage: vela-ecusim [options]

Simulated MORVANE VELA ECU on a pseudo-terminal. Prints the device path of the
terminal's slave side on the first line of standard output; point the tuning
program's serial port at it. Stops on SIGINT or SIGTERM.

  --image PATH          calibration image to start with (a 1023-byte .sm1 file);
                        default: the base calibration built into the program
  --link PATH           also place a symbolic link to the device at PATH
  --seed N              seed of the engine model and its drive (default 1)
  --steady-after SEC    hold the engine's state from SEC seconds on (every frame the same)
  --unpaced             send bytes as fast as possible instead of at 115,200 baud
  -v, --verbose         log every command frame received on standard error
  -h, --help            show this text

Faults:
  --garbage-every N     stray bytes before every N-th live frame
  --garbage-max N       at most N stray bytes at a time (default 8)
  --chunks N            send everything in pieces of 1 to N bytes
  --reply-chunks N      send the upload reply in pieces of exactly N bytes
  --chunk-gap-ms MS     pause after each piece (default 2)
  --silence-after SEC   go silent SEC seconds after start ...
  --silence-for SEC     ... for SEC seconds, then carry on
  --upload-cut N        end the upload reply after N image bytes, with no "DONE"
  --done-shift N        put "DONE" N bytes late (negative: early)
  --faulty-uploads N    damage only the first N upload replies (default 1; 0 = all)
  --burst-every SEC     every SEC seconds send live frames worth at least
  --burst-bytes N       N bytes (default 600, at least 500) all at once

The engine:
  --fuel-error P@R1-R2,L1-L2
                        the engine needs P percent more fuel (negative: less) than the
                        calibration gives from R1 to R2 RPM and from L1 to L2 percent of
                        the load axis; repeatable (for example 12@4000-9000,60-100)

Without a link (nothing is opened; the program ends when the files are written):
  --drive SEC           drive SEC seconds from a cold start, faster than real time, ...
  --write-log PATH      ... and write the log as a chart file (.sl1) at PATH
  --true-map PATH       write the calibration with the fuel map that makes this engine
                        run exactly at the target (a .sm1 file)
  --target PATH         the target air-fuel ratios for --true-map: the program's target
                        table CSV, on the fuel map's axes (default: 14.7 up to 40 kPa,
                        13.2 at 80, 12.5 at 100)

Fault codes:
  --fault-codes LIST    codes the ECU records, comma-separated; CODE@SEC records
                        CODE SEC seconds after start (for example 66,139@20)
  --no-fault-reply      leave fault code requests unanswered (live frames go on)
)";
}

}  // namespace vela::sim
