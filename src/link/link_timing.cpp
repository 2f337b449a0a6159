#include "link/link_timing.h"

#include <cmath>
#include <limits>
#include <string>

namespace vela {
namespace {

// Below this many iterations per millisecond the PC is slow enough that the later measurements
// are made full-length and without letting events run.
constexpr std::int32_t kSlowPcCounts = 20'001;

}  // namespace

void LinkTiming::CountsPerMSTimer(StartupTrace& trace, StatusLabel& label,
                                  const std::function<void()>& enable_upload_timer) {
  label.SetText("Testing...");
  label.SetColour(kTestingRed);
  trace.Show("Entered CountsPerMSTimer");

  bool keep_responsive = true;
  bool quick = true;
  trace.Show("Confirm1MSDelay1 Started");
  std::int64_t elapsed = delay_.MeasureCountsPerMS(keep_responsive, quick);
  for (const char* step : {"Confirm1MSDelay2 Started", "Confirm1MSDelay3 Started"}) {
    trace.Show(step);
    if (link_.CountsPerMS < kSlowPcCounts) keep_responsive = quick = false;
    elapsed = delay_.MeasureCountsPerMS(keep_responsive, quick);
  }
  trace.Show("Confirm1MSDelay Full Final Started");
  elapsed = delay_.MeasureCountsPerMS(keep_responsive, quick);

  trace.Show("Confirm1MSDelay Complete");
  label.SetText(std::to_string(elapsed) + "  " + std::to_string(link_.CountsPerMS));
  label.SetColour(kMeasuredGrey);

  // The first frame of the run: the live-frame rate, paced like every frame after it. The
  // upload timer's link preparation (8, then 15, to the same address) follows on its ticks.
  link_.PacingReady = true;
  TimerCommsSpeed();
  if (enable_upload_timer) enable_upload_timer();
  trace.Show("UploadTimer Enabled");
  label.SetColour(kReadyGreen);
}

void LinkTiming::ComputeCommsSpeed(int index) {
  if (link_.CommsSuspended) return;
  if (index < 0 || index >= static_cast<int>(kLiveFrameRates.size())) return;
  const LiveFrameRate& rate = kLiveFrameRates[static_cast<std::size_t>(index)];
  const double value = std::floor(rate.constant / std::pow(link_.DispatchPerTick, rate.exponent));
  if (std::isnan(value)) return;
  constexpr double kMax = std::numeric_limits<std::int16_t>::max();
  constexpr double kMin = std::numeric_limits<std::int16_t>::min();
  link_.CommsSpeedValue = static_cast<std::int16_t>(value > kMax   ? kMax
                                                    : value < kMin ? kMin
                                                                   : value);
}

void LinkTiming::TimerCommsSpeed() {
  // No acknowledgement follows: a rate frame lost on the line shows as the link's stall.
  static_cast<void>(sender_.Send({.command = kSingleValueWrite,
                                  .address = kLiveRateAddress,
                                  .value = link_.CommsSpeedValue,
                                  .pre_wait = true}));
}

}  // namespace vela
