#include "link/live/live_smoothing.h"

#include <cmath>

#include "calibration/conversions.h"

namespace vela {

double LowPassFilter::Add(double value, double dt_s) {
  if (!value_ || !(time_constant_s_ > 0.0)) {
    value_ = value;
  } else {
    *value_ += (value - *value_) * (1.0 - std::exp(-std::max(dt_s, 0.0) / time_constant_s_));
  }
  return *value_;
}

void LiveSmoothing::Add(const LiveData& frame) {
  const double dt =
      frame.frames_per_second > 0 ? 1.0 / frame.frames_per_second : kDefaultFrameSeconds;
  rpm_.Add(frame.engine_rpm, dt);
  map_.Add(frame.map_kpa, dt);
  if (frame.lambda > 0.0) {
    lambda_.Add(frame.lambda, dt);
  } else {
    lambda_.Reset();
  }
}

void LiveSmoothing::Reset() {
  rpm_.Reset();
  map_.Reset();
  lambda_.Reset();
}

LiveData LiveSmoothing::Apply(const LiveData& raw, const SmoothingChoice& choice,
                              const ReceiveHandlers::AfrValue& afr_value) const {
  LiveData shown = raw;
  if (choice.rpm && rpm_.Value()) shown.engine_rpm = *rpm_.Value();
  if (choice.map && map_.Value() && !raw.map_over_range) {
    shown.map_kpa = *map_.Value();
    if (!(raw.boost_bar > live::kBoostDisplayLimitBar)) {
      shown.boost_bar = (shown.map_kpa - live::kAtmosphereKpa) / kKpaPerBar;
    }
  }
  if (choice.afr && lambda_.Value() && raw.lambda > 0.0) {
    shown.lambda = *lambda_.Value();
    shown.afr = afr_value ? afr_value(shown.lambda) : shown.lambda * kGasolineStoichiometric;
  }
  return shown;
}

}  // namespace vela
