#include "datalog/chart/axis_follow.h"

namespace vela {

// The thresholds are taken in order; the three steps from 1.25 to 4.5 all give 0.18.
double AxisLookAhead(double k) {
  if (k < 1.25) return 0.16;
  if (k < 2.5) return 0.18;
  if (k < 3.5) return 0.18;
  if (k < 4.5) return 0.18;
  if (k < 5.5) return 0.21;
  return 0.22;
}

bool FollowTimeAxis(TimeAxis& axis, double time, double k) {
  if (!(axis.max - kAxisFollowMargin < time)) return false;
  axis.max = time + AxisLookAhead(k) + (axis.max - axis.min) / 200.0;
  return true;
}

}  // namespace vela
