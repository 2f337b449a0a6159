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

CommandFrame BuildCommandFrame(int command, int address, std::int32_t value) {
  std::int64_t v = value;
  if (v > kValueStep) v -= v / kValueStep;
  if (v > 65'535) v %= 65'536;
  CommandFrame frame{};
  frame[0] = LowByte(command);
  frame[1] = LowByte(address);       // address - Int(address / 256) x 256
  frame[2] = LowByte(address >> 8);  // Int(address / 256), rounded down for negatives too
  frame[3] = LowByte(v);
  frame[4] = LowByte(v >> 8);
  frame[5] = LowByte(frame[0] + frame[1] + frame[2] + frame[3] + frame[4]);
  return frame;
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

void CommsSender::CommsSend(int command, int address, std::int32_t value, bool& pre_wait,
                            bool& /*reserved*/, int command2, int address2, std::int32_t value2,
                            bool& slower) {
  if (!port_.IsOpen() || !link_.PacingReady) return;
  ChoosePacing();
  double frame_time = FrameTimeMs(command, comms_byte_delay_);
  double frame_time2 = FrameTimeMs(command2, comms_byte_delay_);
  if (!link_.CommsDelayEnabled && !link_.ForcedDelay) {
    frame_time = frame_time2 = kUndelayedFrameTimeMs;
  }
  if (link_.CommsSuspended) return;
  const bool waits_first = pre_wait;
  const bool slow_bytes = slower;
  if (!SendFrame(BuildCommandFrame(command, address, value), frame_time, waits_first, slow_bytes)) {
    return;
  }
  if (command2 > 0) {
    // Nothing follows the second frame: how it went stays in CommsSendAborted, as the first's.
    static_cast<void>(SendFrame(BuildCommandFrame(command2, address2, value2), frame_time2,
                                waits_first, slow_bytes));
  }
}

void CommsSender::SendClosingCommand() {
  if (link_.TLock) return;
  Send(6, 0, 0);
  delay_.DelayMs(kClosingDelayMs);
}

void CommsSender::ChoosePacing() {
  // A stopped engine (count 0) leaves an infinite rate; it paces like a standing engine.
  if (std::isinf(link_.EngineRate) && link_.EngineRate > 0) link_.EngineRate = 0.0f;
  const PacingRow row = PacingRowFor(link_.EngineRate);
  comms_byte_delay_ = row.byte_delay;
  comms_delay_steps_ = row.steps;
  if (link_.SlowSend) comms_byte_delay_ = static_cast<float>(comms_byte_delay_ * 1.2 + 2.0);
}

bool CommsSender::SendFrame(const CommandFrame& frame, double frame_time, bool pre_wait,
                            bool slower) {
  if (pre_wait) PreWait(frame_time);
  const std::int64_t wait = ByteWaitIterations(frame_time, pre_wait, slower);
  for (const std::uint8_t byte : frame) {
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

std::int64_t CommsSender::ByteWaitIterations(double frame_time, bool pre_wait, bool slower) const {
  const double divisor = pre_wait ? comms_delay_steps_ * 1.5 + 6.0 : 6.0 + comms_delay_steps_;
  double iterations = frame_time * link_.CountsPerMS / divisor;
  if (slower) iterations *= 1.5;
  return AtLeastMin(iterations);
}

}  // namespace vela
