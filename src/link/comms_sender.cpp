#include "link/comms_sender.h"

#include <algorithm>
#include <cmath>

namespace vela {
namespace {

struct PacingBound {
  float below;
  PacingRow row;
};

constexpr std::array<PacingBound, 25> kPacingTable = {{
    {3000.0f, {3.6f, 1}},    {5000.0f, {4.0f, 1}},    {10000.0f, {4.2f, 2}},
    {15000.0f, {4.4f, 4}},   {20000.0f, {4.6f, 5}},   {25000.0f, {4.8f, 6}},
    {30000.0f, {5.0f, 6}},   {40000.0f, {5.2f, 7}},   {60000.0f, {6.0f, 7}},
    {80000.0f, {6.6f, 7}},   {100000.0f, {7.0f, 7}},  {125000.0f, {7.3f, 7}},
    {150000.0f, {7.5f, 7}},  {175000.0f, {7.6f, 7}},  {200000.0f, {7.8f, 7}},
    {225000.0f, {8.0f, 7}},  {250000.0f, {8.5f, 7}},  {275000.0f, {9.0f, 6}},
    {300000.0f, {9.5f, 6}},  {325000.0f, {10.0f, 6}}, {350000.0f, {14.0f, 5}},
    {360000.0f, {18.0f, 4}}, {370000.0f, {25.0f, 4}}, {375000.0f, {30.0f, 3}},
    {380000.0f, {35.0f, 3}},
}};
constexpr PacingRow kTopRow = {40.0f, 3};

constexpr std::int32_t kValueStep = 16'777'216;
constexpr int kPreWaitBaseSteps = 10;

std::uint8_t LowByte(std::int64_t v) { return static_cast<std::uint8_t>(v & 0xFF); }

// The number of times a wait's iteration count is run: `CommsRepeat`, at least once.
std::int32_t RepeatsOf(const LinkState& link) {
  return std::max<std::int32_t>(1, link.CommsRepeat);
}

std::int64_t AtLeastMin(double iterations) {
  return std::max(DelayLoop::kMinIterations, static_cast<std::int64_t>(std::nearbyint(iterations)));
}

}  // namespace

FrameBytes BuildFrameBytes(const CommandFrame& frame) {
  std::int64_t v = frame.value;
  if (v > kValueStep) v -= v / kValueStep;
  if (v > 65'535) v %= 65'536;
  FrameBytes bytes{};
  bytes[0] = LowByte(frame.command);
  bytes[1] = LowByte(frame.address);       // address - Int(address / 256) x 256
  bytes[2] = LowByte(frame.address >> 8);  // Int(address / 256), rounded down for negatives too
  bytes[3] = LowByte(v);
  bytes[4] = LowByte(v >> 8);
  bytes[5] = LowByte(bytes[0] + bytes[1] + bytes[2] + bytes[3] + bytes[4]);
  return bytes;
}

PacingRow PacingRowFor(float engine_rate) {
  for (const PacingBound& bound : kPacingTable) {
    if (engine_rate < bound.below) return bound.row;
  }
  return kTopRow;
}

double FrameTimeMs(int command, float byte_delay) {
  if (command == 2 || command == 12) return 2.0 * byte_delay + 0.9;
  if (command == 6) return 10.45;
  return 1.05 * byte_delay + 0.45;
}

SendResult CommsSender::Send(const CommandFrame& frame) {
  SendResult result;
  if (!port_.IsOpen() || !link_.PacingReady) return result;
  const PacingRow pacing = ChoosePacing();
  result.byte_delay_ms = pacing.byte_delay;
  result.delay_steps = pacing.steps;
  double frame_time = FrameTimeMs(frame.command, pacing.byte_delay);
  if (!link_.CommsDelayEnabled && !link_.ForcedDelay) frame_time = kUndelayedFrameTimeMs;
  if (link_.CommsSuspended) return result;
  const bool written = WriteFrame(BuildFrameBytes(frame), frame_time, frame.pre_wait, pacing);
  result.outcome = written ? SendOutcome::kSent : SendOutcome::kAborted;
  return result;
}

void CommsSender::SendClosingCommand() {
  if (link_.TLock) return;
  // Shutdown goes on whatever became of it: the port closes next.
  static_cast<void>(Send({.command = kCloseCommand, .address = 0, .value = 0}));
  delay_.DelayMs(kClosingDelayMs);
}

PacingRow CommsSender::ChoosePacing() {
  // A stopped engine (count 0) leaves an infinite rate; it paces like a standing engine.
  if (std::isinf(link_.EngineRate) && link_.EngineRate > 0) link_.EngineRate = 0.0f;
  PacingRow row = PacingRowFor(link_.EngineRate);
  if (link_.SlowSend) row.byte_delay = static_cast<float>(row.byte_delay * 1.2 + 2.0);
  return row;
}

bool CommsSender::WriteFrame(const FrameBytes& bytes, double frame_time, bool pre_wait,
                             const PacingRow& pacing) {
  if (pre_wait) PreWait(frame_time);
  const std::int64_t wait = ByteWaitIterations(frame_time, pre_wait, pacing);
  for (const std::uint8_t byte : bytes) {
    const std::int64_t before = clock_.NowMs();
    const bool taken = port_.WriteByte(byte);
    if (!taken || clock_.NowMs() - before > kWriteTimeoutMs) {
      link_.CommsSendAborted = 1;
      link_.StallCounter = 100;
      clock_.LetEventsRun();
      return false;
    }
    link_.CommsSendAborted = 0;
    for (std::int32_t r = 0; r < RepeatsOf(link_); ++r) delay_.Spin(wait);
  }
  return true;
}

void CommsSender::PreWait(double frame_time) {
  const std::int64_t step = AtLeastMin(frame_time * link_.CountsPerMS / 4.0);
  const int steps = link_.CommsPreWaitCount + kPreWaitBaseSteps;
  for (int s = 0; s < steps; ++s) {
    for (std::int32_t r = 0; r < link_.CommsRepeat; ++r) delay_.Spin(step);
  }
}

std::int64_t CommsSender::ByteWaitIterations(double frame_time, bool pre_wait,
                                             const PacingRow& pacing) const {
  const double divisor = pre_wait ? pacing.steps * 1.5 + 6.0 : 6.0 + pacing.steps;
  return AtLeastMin(frame_time * link_.CountsPerMS / divisor);
}

}  // namespace vela
