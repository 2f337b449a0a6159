#include "calibration/rounding.h"

#include <cmath>

namespace vela {

namespace {
constexpr double kHalfTolerance = 1e-9;
}  // namespace

double RoundHalfEven(double value) {
  if (!std::isfinite(value)) return value;
  const double lower = std::floor(value);
  const double fraction = value - lower;
  if (std::fabs(fraction - 0.5) <= kHalfTolerance) {
    return std::fmod(lower, 2.0) == 0.0 ? lower : lower + 1.0;
  }
  return fraction < 0.5 ? lower : lower + 1.0;
}

}  // namespace vela
