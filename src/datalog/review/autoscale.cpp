#include "datalog/review/autoscale.h"

#include <algorithm>
#include <cmath>

#include "datalog/review/distribution.h"

namespace vela::review {

double NiceStep(double raw) {
  const double magnitude = std::pow(10.0, std::floor(std::log10(raw)));
  for (double factor : {1.0, 2.0, 5.0}) {
    if (factor * magnitude >= raw * (1.0 - 1e-12)) return factor * magnitude;
  }
  return 10.0 * magnitude;
}

AxisRange NiceRange(double low, double high, int ticks) {
  ticks = std::max(ticks, 1);
  if (!std::isfinite(low) || !std::isfinite(high)) return {};
  if (high < low) std::swap(low, high);
  if (high == low) {
    const double step = low == 0.0 ? 1.0 : NiceStep(std::fabs(low) / ticks);
    low -= step;
    high += step;
  }
  AxisRange range;
  range.step = NiceStep((high - low) / ticks);
  // Round outwards, but not past a value that is a step to within rounding noise.
  range.low = std::floor(low / range.step + 1e-9) * range.step;
  range.high = std::ceil(high / range.step - 1e-9) * range.step;
  // The rounding can add up to two steps: take the next step when that is one interval too many.
  if ((range.high - range.low) / range.step > ticks + 1.5) {
    range.step = NiceStep(range.step * 1.5);
    range.low = std::floor(low / range.step + 1e-9) * range.step;
    range.high = std::ceil(high / range.step - 1e-9) * range.step;
  }
  return range;
}

std::optional<AxisRange> ScaleInView(const ChannelScale& scale, const ColumnView& column,
                                     const std::vector<double>& times, double t0, double t1) {
  if (!scale.automatic) {
    const double low = std::min(scale.min, scale.max);
    const double high = std::max(scale.min, scale.max);
    const double step = high > low ? NiceRange(low, high).step : 1.0;
    return AxisRange{low, high, step};
  }
  const std::optional<ValueSpan> values = ColumnRange(column, RecordsInSpan(times, t0, t1));
  if (!values) return std::nullopt;
  return NiceRange(values->low, values->high);
}

}  // namespace vela::review
