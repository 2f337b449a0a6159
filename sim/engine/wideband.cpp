#include "sim/engine/wideband.h"

#include <algorithm>
#include <cmath>

namespace vela::sim {

namespace {
// What the ring holds of a mixture beyond the sensor's ends: far enough out to peg the reading.
constexpr double kHeldLow = 0.5;
constexpr double kHeldHigh = 2.0;
}  // namespace

double TransportDelayS(double rpm, double load_pct) {
  const double flow = std::max(rpm, kDelayMinRpm) * std::max(load_pct, kDelayMinLoadPct);
  return std::min(kDelayFloorS + kDelayK / flow, kDelayMaxS);
}

Wideband::Wideband(double step_s, double start_lambda)
    : step_s_(step_s),
      history_(static_cast<std::size_t>(std::ceil(kDelayMaxS / step_s)) + 2,
               std::clamp(start_lambda, kHeldLow, kHeldHigh)),
      reading_(std::clamp(start_lambda, kHeldLow, kHeldHigh)),
      shown_(std::clamp(start_lambda, kSensorMinLambda, kSensorMaxLambda)) {}

double Wideband::Past(double seconds_ago) const {
  const double steps = seconds_ago / step_s_;
  const auto whole = static_cast<std::size_t>(steps);
  const double part = steps - static_cast<double>(whole);
  const std::size_t n = history_.size();
  const double nearer = history_[(newest_ + n - whole % n) % n];
  const double further = history_[(newest_ + n - (whole + 1) % n) % n];
  return nearer + (further - nearer) * part;
}

double Wideband::Step(double exhaust_lambda, double rpm, double load_pct) {
  newest_ = (newest_ + 1) % history_.size();
  history_[newest_] =
      std::isfinite(exhaust_lambda) ? std::clamp(exhaust_lambda, kHeldLow, kHeldHigh) : kHeldHigh;
  delay_s_ = TransportDelayS(rpm, load_pct);
  const double arriving = Past(delay_s_);
  reading_ += (arriving - reading_) * (1.0 - std::exp(-step_s_ / kSensorLagS));
  shown_ = std::clamp(reading_, kSensorMinLambda, kSensorMaxLambda);
  return shown_;
}

}  // namespace vela::sim
