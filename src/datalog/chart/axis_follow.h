// The rule by which the chart's time axis grows while live data comes in: once the newest point
// comes within 0.15 s of the axis' end, the end moves past it by a look-ahead that depends on the
// link's packet-speed factor, plus a two-hundredth of the axis' width. The start stays, so the
// axis widens to hold the whole log from its beginning.
#pragma once

#include "datalog/datalog_log.h"

namespace vela {

inline constexpr double kAxisFollowMargin = 0.15;

// The look-ahead in seconds for packet-speed factor `k`.
double AxisLookAhead(double k);

// Moves `axis`'s end for a point at `time`; true when it moved.
bool FollowTimeAxis(TimeAxis& axis, double time, double k);

}  // namespace vela
