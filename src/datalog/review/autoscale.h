// A channel's vertical scale: fixed (the tuner's minimum and maximum, kept as they are) or
// automatic, from the lowest and highest value in the records in view (read from the channel's
// summaries, so the cost does not grow with the span) widened to round tick values.
#pragma once

#include <optional>

#include "datalog/review/log_span.h"

namespace vela::review {

struct ChannelScale {
  bool automatic = true;
  double min = 0.0;  // a fixed scale's range
  double max = 0.0;
  bool operator==(const ChannelScale&) const = default;
};

// A range with its tick step: low and high are whole multiples of step.
struct AxisRange {
  double low = 0.0;
  double high = 1.0;
  double step = 1.0;
  bool operator==(const AxisRange&) const = default;
};

// The smallest of 1, 2 or 5 times a power of ten that is at least `raw` (> 0).
double NiceStep(double raw);

inline constexpr int kAxisTicks = 5;
// `low` .. `high` widened to multiples of a step of 1, 2 or 5 times a power of ten that gives
// at most about `ticks` intervals. A single value is widened by one step each way (by 1 for 0).
AxisRange NiceRange(double low, double high, int ticks = kAxisTicks);

// The scale of a column over the records of [t0, t1] of `times`: a fixed scale as it is (its
// step chosen for its range), an automatic one its values' nice range; nullopt for an automatic
// scale with no value in the span.
std::optional<AxisRange> ScaleInView(const ChannelScale& scale, const ColumnView& column,
                                     const std::vector<double>& times, double t0, double t1);

}  // namespace vela::review
