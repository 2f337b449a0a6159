#include "link/live/live_smoothing.h"

#include <cmath>

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

LiveData LiveSmoothing::Apply(
    const LiveData& raw, const SmoothingChoice& choice, char separator,
    const std::function<ReceiveHandlers::AfrShown(double)>& afr_shown) const {
  using live_text::Fixed;
  LiveData shown = raw;
  if (choice.rpm && rpm_.Value()) {
    shown.engine_rpm = *rpm_.Value();
    shown.engine_rpm_text = Fixed(shown.engine_rpm, 0, separator);
  }
  if (choice.map && map_.Value() && raw.map_text != "Over") {
    shown.map_kpa = *map_.Value();
    shown.map_text = Fixed(shown.map_kpa, 1, separator);
    if (raw.boost_text != "99.99 ") {
      shown.boost_bar = (shown.map_kpa - live_text::kAtmosphereKpa) / 100.0;
      shown.boost_text = Fixed(shown.boost_bar, 2, separator);
    }
  }
  if (choice.afr && lambda_.Value() && raw.lambda > 0.0) {
    shown.lambda = *lambda_.Value();
    shown.lambda_text = Fixed(shown.lambda, 3, separator);
    const ReceiveHandlers::AfrShown afr =
        afr_shown ? afr_shown(shown.lambda)
                  : ReceiveHandlers::AfrShown{shown.lambda * kGasolineStoichiometric, 1};
    shown.afr = afr.value;
    shown.afr_text = Fixed(shown.afr, afr.decimals, separator);
  }
  return shown;
}

}  // namespace vela
