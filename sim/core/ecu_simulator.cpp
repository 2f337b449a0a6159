#include "sim/core/ecu_simulator.h"

#include <algorithm>
#include <limits>
#include <string_view>

#include "link/live/live_frame.h"
#include "sim/core/frame_rate.h"
#include "sim/core/live_encoder.h"

namespace vela::sim {

namespace {

constexpr std::int64_t kNever = std::numeric_limits<std::int64_t>::max();
constexpr std::string_view kAllMarker = "ALL";
constexpr std::string_view kDoneMarker = "DONE";
// A live frame falls due while more than this is still waiting to go out: it is skipped, so the
// program always sees fresh values rather than a growing backlog.
constexpr std::size_t kMaxBacklog = live::kFrameLength;

constexpr std::uint64_t kWireSeedSalt = 0x5851F42D4C957F2DULL;
constexpr std::uint64_t kFaultSeedSalt = 0x14057B7EF767814FULL;

void Append(std::vector<std::uint8_t>& out, std::string_view text) {
  out.insert(out.end(), text.begin(), text.end());
}

bool IsFaultRequest(const CommandFrame& f) {
  return f.code == fault_reply::kRequestCommand && f.address == fault_reply::kRequestAddress &&
         f.value == fault_reply::kRequestValue;
}

bool IsUploadRequest(const CommandFrame& f) {
  return f.code >= 1 && f.code <= 5 && f.address == kUploadRequestAddress &&
         f.value == kUploadRequestValue;
}

}  // namespace

std::vector<std::uint8_t> UploadReply(const CalibrationImage& image, int cut_bytes,
                                      int done_shift) {
  const auto& block = image.Bytes();
  std::vector<std::uint8_t> reply;
  reply.reserve(block.size() + 16);
  Append(reply, kAllMarker);
  if (cut_bytes >= 0) {
    const auto n = std::min<std::size_t>(static_cast<std::size_t>(cut_bytes), block.size());
    reply.insert(reply.end(), block.begin(), block.begin() + static_cast<std::ptrdiff_t>(n));
    return reply;
  }
  const int kept = std::clamp(kImageLength + std::min(done_shift, 0), 0, kImageLength);
  reply.insert(reply.end(), block.begin(), block.begin() + kept);
  reply.insert(reply.end(), static_cast<std::size_t>(std::max(done_shift, 0)), 0);
  Append(reply, kDoneMarker);
  return reply;
}

EcuSimulator::EcuSimulator(const SimOptions& options, const CalibrationImage& image)
    : options_(options),
      image_(image),
      engine_(options.seed, options.fuel_errors),
      wire_(options.byte_time_us, options.faults.chunk_max_bytes, options.faults.chunk_gap_us,
            options.seed ^ kWireSeedSalt),
      fault_rng_(options.seed ^ kFaultSeedSalt),
      next_burst_us_(options.faults.burst_every_us > 0 ? options.faults.burst_every_us : kNever),
      rate_value_(kInitialRateValue),
      frames_per_second_(FramesPerSecondForValue(kInitialRateValue)) {
  std::stable_sort(
      options_.fault_codes.begin(), options_.fault_codes.end(),
      [](const InjectedFault& a, const InjectedFault& b) { return a.at_us < b.at_us; });
  RecordInjectedFaults(0);
}

std::vector<CommandFrame> EcuSimulator::Feed(std::span<const std::uint8_t> bytes) {
  std::vector<CommandFrame> frames = parser_.Feed(bytes);
  for (const CommandFrame& frame : frames) Act(frame);
  return frames;
}

void EcuSimulator::Act(const CommandFrame& frame) {
  ++counters_.commands;
  if (IsUploadRequest(frame)) {
    AnswerUploadRequest();
    return;
  }
  if (IsFaultRequest(frame)) {
    AnswerFaultRequest();
    return;
  }
  switch (frame.code) {
    case kCodeWriteByte:
      WriteByte(frame);
      break;
    case kCodeWritePair:
      WritePair(frame);
      break;
    case kCodeClose:
      if (transfer_open_) ++counters_.transfers_closed;
      transfer_open_ = false;
      break;
    default:
      ++counters_.ignored;
  }
}

// A fuel map cell is a 16-bit injector time starting at an odd position of the two fuel map
// areas; a single write there takes the whole cell, so the engine never runs on half a value.
bool IsFuelCellStart(int position) {
  constexpr int kFuelAreasEnd = kFuelMap2Start + kFuelMapAreaLength - 1;
  return position >= kFuelMap1Start && position < kFuelAreasEnd &&
         (position - kFuelMap1Start) % 2 == 0;
}

void EcuSimulator::WriteByte(const CommandFrame& frame) {
  if (frame.address == kRateAddress) {
    SetRate(frame.value);
  } else if (IsFuelCellStart(frame.address)) {
    image_.Write16(frame.address, frame.value);
    ++counters_.byte_writes;
  } else if (image_.SetByte(frame.address, static_cast<std::uint8_t>(frame.value & 0xFF))) {
    ++counters_.byte_writes;
  } else {
    ++counters_.ignored;
  }
}

void EcuSimulator::WritePair(const CommandFrame& frame) {
  if (!CalibrationImage::IsPosition(frame.address)) {
    ++counters_.ignored;
    return;
  }
  image_.SetByte(frame.address, static_cast<std::uint8_t>(frame.value & 0xFF));
  image_.SetByte(frame.address + 1, static_cast<std::uint8_t>(frame.value >> 8));  // none past 1023
  ++counters_.pair_writes;
  transfer_open_ = true;
}

void EcuSimulator::SetRate(std::uint16_t value) {
  ++counters_.rate_writes;
  rate_value_ = value;
  const int fps = FramesPerSecondForValue(value);
  if (fps == frames_per_second_) return;
  frames_per_second_ = fps;
  frame_anchor_us_ = now_us_;  // the new rate counts from now
  frame_index_ = 1;
}

void EcuSimulator::AnswerUploadRequest() {
  ++counters_.upload_requests;
  if (Silent()) return;
  const FaultOptions& f = options_.faults;
  const bool damaged =
      f.DamagesUploads() && (f.faulty_uploads == 0 ||
                             counters_.uploads_sent < static_cast<std::uint64_t>(f.faulty_uploads));
  wire_.Queue(damaged ? UploadReply(image_, f.upload_cut_bytes, f.done_shift) : UploadReply(image_),
              now_us_, false, f.reply_chunk_bytes);
  ++counters_.uploads_sent;
}

void EcuSimulator::AnswerFaultRequest() {
  ++counters_.fault_requests;
  if (Silent() || !options_.answer_fault_requests) return;
  const std::string reply = fault_reply::Encode(faults_.Reply());
  wire_.Queue({reply.begin(), reply.end()}, now_us_);
  ++counters_.fault_replies;
}

void EcuSimulator::RecordInjectedFaults(std::int64_t t) {
  for (; next_injected_ < options_.fault_codes.size() &&
         options_.fault_codes[next_injected_].at_us <= t;
       ++next_injected_) {
    faults_.Record(options_.fault_codes[next_injected_].code);
  }
}

std::int64_t EcuSimulator::NextInjectedFaultUs() const {
  return next_injected_ < options_.fault_codes.size() ? options_.fault_codes[next_injected_].at_us
                                                      : kNever;
}

std::vector<std::uint8_t> EcuSimulator::Advance(std::int64_t now_us) {
  std::vector<std::uint8_t> out;
  now_us = std::max(now_us, now_us_);
  for (std::int64_t t = NextEventUs(); t <= now_us; t = NextEventUs()) {
    wire_.SendUntil(t, out);
    now_us_ = t;
    RunEventsAt(t);
  }
  now_us_ = now_us;
  wire_.SendUntil(now_us, out);
  return out;
}

std::int64_t EcuSimulator::NextFrameUs() const {
  return frame_anchor_us_ + frame_index_ * 1'000'000 / frames_per_second_;
}

std::int64_t EcuSimulator::NextSilenceEdgeUs() const {
  const FaultOptions& f = options_.faults;
  if (f.silence_after_us < 0 || f.silence_for_us <= 0) return kNever;
  if (silence_phase_ == kBeforeSilence) return f.silence_after_us;
  if (silence_phase_ == kSilent) return f.silence_after_us + f.silence_for_us;
  return kNever;
}

std::int64_t EcuSimulator::NextEventUs() const {
  return std::min(
      {next_step_us_, NextFrameUs(), next_burst_us_, NextSilenceEdgeUs(), NextInjectedFaultUs()});
}

void EcuSimulator::RunEventsAt(std::int64_t t) {
  if (next_step_us_ <= t) {
    const std::int64_t steady = options_.steady_after_us;
    if (steady < 0 || t < steady) engine_.Step(image_);
    if (engine_.State().limiter) faults_.Record(kRevLimiterFault);
    next_step_us_ += EngineModel::kStepUs;
  }
  RecordInjectedFaults(t);
  if (NextSilenceEdgeUs() <= t) {
    silence_phase_ = silence_phase_ == kBeforeSilence ? kSilent : kAfterSilence;
    if (Silent()) wire_.Clear();
  }
  if (NextFrameUs() <= t) {
    SendFrame(t);
    ++frame_index_;
  }
  if (next_burst_us_ <= t) {
    SendBurst(t);
    next_burst_us_ += options_.faults.burst_every_us;
  }
}

EngineState EcuSimulator::ShownState() const {
  EngineState state = engine_.State();
  state.error_count = static_cast<std::uint8_t>(faults_.Held());
  state.last_error = static_cast<std::uint8_t>(faults_.Newest());
  return state;
}

void EcuSimulator::SendFrame(std::int64_t t) {
  if (Silent() || wire_.Backlog() > kMaxBacklog) {
    ++counters_.frames_skipped;
    return;
  }
  const int every = options_.faults.garbage_every;
  if (every > 0 && (counters_.live_frames + 1) % static_cast<std::uint64_t>(every) == 0) {
    wire_.Queue(Garbage(), t);
  }
  const live::Frame frame = EncodeLiveFrame(ShownState(), image_, frames_per_second_);
  wire_.Queue({frame.begin(), frame.end()}, t);
  ++counters_.live_frames;
}

void EcuSimulator::SendBurst(std::int64_t t) {
  if (Silent()) return;
  const live::Frame frame = EncodeLiveFrame(ShownState(), image_, frames_per_second_);
  std::vector<std::uint8_t> burst;
  while (burst.size() < static_cast<std::size_t>(options_.faults.burst_bytes)) {
    burst.insert(burst.end(), frame.begin(), frame.end());
  }
  wire_.Queue(std::move(burst), t, /*burst=*/true);
  ++counters_.bursts;
}

// Stray bytes that spell no marker, neither alone nor between the end of one frame ("...D") and
// the start of the next ("STAR...").
std::vector<std::uint8_t> EcuSimulator::Garbage() {
  const int max_bytes = std::max(options_.faults.garbage_max_bytes, 1);
  for (;;) {
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(fault_rng_.Int(1, max_bytes)));
    for (std::uint8_t& b : bytes) b = static_cast<std::uint8_t>(fault_rng_.Next());
    std::vector<std::uint8_t> context = {'D'};
    context.insert(context.end(), bytes.begin(), bytes.end());
    Append(context, "STAR");
    if (FindMarker(context) == std::string_view::npos) return bytes;
  }
}

}  // namespace vela::sim
