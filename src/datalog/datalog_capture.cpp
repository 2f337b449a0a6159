#include "datalog/datalog_capture.h"

#include <algorithm>
#include <charconv>

#include "calibration/rounding.h"
#include "datalog/chart/axis_follow.h"
#include "link/link_timing.h"

namespace vela {

namespace {
constexpr std::int16_t kTrue = -1;
}  // namespace

std::int16_t FramesPerSecondOfChoice(int index) {
  if (index < 0 || index >= static_cast<int>(kLiveFrameRates.size())) return 0;
  const std::string_view text = kLiveFrameRates[static_cast<std::size_t>(index)].text;
  std::int16_t rate = 0;
  std::from_chars(text.data(), text.data() + text.size(), rate);
  return rate;
}

void DatalogCapture::StartLogging(double time_scale_s, double now_s) {
  DatalogTime = 0.0;
  DatalogRecordCount = 0.0f;
  started_s_ = now_s;
  log_.Clear();
  // A log loaded from a file may have drawn other channels, in its own colours.
  for (int n = 0; n < kChannelCount; ++n) {
    log_.SetActive(n, ChannelOn(n));
    log_.SetColour(n, kChannels[n].colour);
  }
  log_.axis = TimeAxis{0.0, time_scale_s};
  DatalogLive = true;
}

void DatalogCapture::StopLogging() {
  if (DatalogLive) log_.CloseGaps();
  DatalogLive = false;
}

void DatalogCapture::SetChannelEnabled(int channel, bool enabled) {
  ChannelEnabled[channel] = enabled ? kTrue : 0;
  log_.SetActive(channel, enabled);
  log_.Touch();
}

bool DatalogCapture::CaptureFrame(const live::Frame& frame, const ChannelInputs& inputs,
                                  double packet_speed_factor, bool follow, double now_s) {
  if (!DatalogLive) return false;
  DatalogRecordCount += 1.0f;
  std::fill_n(ChannelMax.begin(), kChannelLimitsReset, kChannelMaxReset);
  std::fill_n(ChannelMin.begin(), kChannelLimitsReset, kChannelMinReset);
  if (FramesPerSecond != 0) DatalogTime += kDatalogTimeStep / FramesPerSecond;
  if (follow) FollowTimeAxis(log_.axis, DatalogTime, packet_speed_factor);

  ChannelValues values{};
  ChannelMask mask = 0;
  for (int n : kCaptureOrder) {
    if (!ChannelOn(n)) continue;
    values[n] = DecodeChannel(n, frame, inputs);
    UpdateLimits(n, values[n]);
    mask |= static_cast<ChannelMask>(1u << n);
  }
  log_.Append(DatalogTime, ArrivalOf(now_s), values, mask);
  return true;
}

void DatalogCapture::UpdateLimits(int channel, double value) {
  const auto whole = [](double v) {
    return static_cast<std::int16_t>(std::clamp(RoundHalfEven(v), -32768.0, 32767.0));
  };
  if (value > ChannelMax[channel]) ChannelMax[channel] = whole(value);
  if (value < ChannelMin[channel]) ChannelMin[channel] = whole(value);
}

}  // namespace vela
