// Which samples say something about the mixture a fuel cell gives. The log records no flag for
// a decel cut or the rev limiter; both are read from what it does record (docs/tuning.md).
#pragma once

#include <array>
#include <string_view>
#include <vector>

#include "tune/log_samples.h"

namespace vela {

struct FilterSettings {
  double min_rpm = 300.0;             // below: the engine is not running
  double min_water_c = 70.0;          // below: a cold engine, still enriched
  double cut_tps_percent = 2.0;       // throttle at or below this...
  double cut_fuel_ms = 0.5;           // ...with injection at or below this: a decel cut
  double max_pump = 0.0;              // a throttle pump addition above this: accel enrichment
  double limiter_rpm = 0.0;           // the rev limiter's speed; 0: no limiter known
  double limiter_margin_rpm = 200.0;  // within this below the limiter counts as on it
  double max_rpm_rate = 2000.0;       // RPM per second, over the rate window
  double max_tps_rate = 30.0;         // throttle percent per second, over the rate window
  double rate_window_s = 0.2;
  double settle_s = 0.5;  // samples this soon after any of the above are dropped too
  double min_afr = 9.0;   // the wideband's valid range; a dead sensor reads 0
  double max_afr = 19.0;
  // A kept sample whose measured / target AFR lies further than this share off what a first
  // fit of the cells gives at its point is left out, and the cells are fitted again (0: no
  // check). Its mixture is not the cells' (a transient the filters let through).
  double max_off_fit = 0.03;
};

enum class SampleVerdict {
  kKept,
  kNotRunning,
  kCold,
  kDecelCut,
  kThrottlePump,
  kRevLimiter,
  kUnsteadyRpm,
  kUnsteadyThrottle,
  kSettling,     // too soon after a cut, a pump addition, the limiter or a change
  kAfrInvalid,   // the AFR the exhaust gave is outside the sensor's range, or not recorded
  kNoPairedAfr,  // the exhaust's AFR lies beyond the log or across a gap
  kOffTheFit,    // its AFR lies far off what the first fit of the cells gives there
};
inline constexpr int kSampleVerdicts = 12;
std::string_view VerdictName(SampleVerdict verdict);

// The verdict on each sample's operating point (every verdict but the two about the AFR).
std::vector<SampleVerdict> PointVerdicts(const std::vector<TuneSample>& samples,
                                         const FilterSettings& settings);

// The verdict on an AFR reading.
bool AfrValid(double afr, const FilterSettings& settings);

}  // namespace vela
