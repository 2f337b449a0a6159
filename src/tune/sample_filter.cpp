#include "tune/sample_filter.h"

#include <cmath>

namespace vela {

namespace {

// A condition that is not recorded (NaN) never drops a sample.
bool Below(double value, double limit) { return !std::isnan(value) && value < limit; }

SampleVerdict OwnVerdict(const TuneSample& sample, const FilterSettings& settings) {
  if (!(sample.rpm >= settings.min_rpm) || std::isnan(sample.load)) {
    return SampleVerdict::kNotRunning;
  }
  if (Below(sample.water_c, settings.min_water_c)) return SampleVerdict::kCold;
  if (!std::isnan(sample.tps) && !std::isnan(sample.fuel_ms) &&
      sample.tps <= settings.cut_tps_percent && sample.fuel_ms <= settings.cut_fuel_ms) {
    return SampleVerdict::kDecelCut;
  }
  if (!std::isnan(sample.pump) && sample.pump > settings.max_pump) {
    return SampleVerdict::kThrottlePump;
  }
  if (settings.limiter_rpm > 0.0 &&
      sample.rpm >= settings.limiter_rpm - settings.limiter_margin_rpm) {
    return SampleVerdict::kRevLimiter;
  }
  return SampleVerdict::kKept;
}

// How fast RPM and throttle moved over the window before sample `i`.
SampleVerdict RateVerdict(const std::vector<TuneSample>& samples, std::size_t i,
                          std::size_t window_start, const FilterSettings& settings) {
  const TuneSample& now = samples[i];
  const TuneSample& then = samples[window_start];
  const double span = now.time - then.time;
  if (span <= 0.0) return SampleVerdict::kKept;
  if (std::abs(now.rpm - then.rpm) / span > settings.max_rpm_rate) {
    return SampleVerdict::kUnsteadyRpm;
  }
  if (std::abs(now.tps - then.tps) / span > settings.max_tps_rate) {
    return SampleVerdict::kUnsteadyThrottle;
  }
  return SampleVerdict::kKept;
}

}  // namespace

std::string_view VerdictName(SampleVerdict verdict) {
  constexpr std::array<std::string_view, kSampleVerdicts> kNames = {"kept",
                                                                    "engine not running",
                                                                    "cold engine",
                                                                    "decel cut",
                                                                    "throttle pump",
                                                                    "rev limiter",
                                                                    "RPM not steady",
                                                                    "throttle not steady",
                                                                    "settling",
                                                                    "AFR out of range",
                                                                    "AFR beyond the log or a gap",
                                                                    "far off the fit"};
  return kNames[static_cast<std::size_t>(verdict)];
}

std::vector<SampleVerdict> PointVerdicts(const std::vector<TuneSample>& samples,
                                         const FilterSettings& settings) {
  std::vector<SampleVerdict> verdicts(samples.size(), SampleVerdict::kKept);
  std::size_t window_start = 0;
  double last_disturbed = -INFINITY;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const TuneSample& sample = samples[i];
    while (samples[window_start].time < sample.time - settings.rate_window_s ||
           samples[window_start].lost_before != sample.lost_before) {
      ++window_start;
    }
    SampleVerdict verdict = OwnVerdict(sample, settings);
    if (verdict == SampleVerdict::kKept) verdict = RateVerdict(samples, i, window_start, settings);
    const bool disturbed = verdict != SampleVerdict::kKept &&
                           verdict != SampleVerdict::kNotRunning && verdict != SampleVerdict::kCold;
    if (disturbed) last_disturbed = sample.time;
    if (verdict == SampleVerdict::kKept && sample.time - last_disturbed < settings.settle_s) {
      verdict = SampleVerdict::kSettling;
    }
    verdicts[i] = verdict;
  }
  return verdicts;
}

bool AfrValid(double afr, const FilterSettings& settings) {
  return afr >= settings.min_afr && afr <= settings.max_afr;
}

}  // namespace vela
