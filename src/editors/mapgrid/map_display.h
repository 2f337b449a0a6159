// What the grid and the graph draw, worked out without a toolkit: the colour of a value cell and
// the live operating point (the cross-hair) in grid coordinates.
#pragma once

#include <cstdint>
#include <optional>

#include "editors/mapgrid/map_grid_model.h"
#include "link/live/live_frame.h"

namespace vela {

struct Rgb {
  std::uint8_t red;
  std::uint8_t green;
  std::uint8_t blue;
  bool operator==(const Rgb&) const = default;
};

// The cell colour ramp: 0 is blue, 0.5 green, 1 red, running through cyan and yellow; values
// outside 0..1 are taken as the nearer end.
Rgb RampColour(double fraction);

// The smallest and largest value units of a grid.
struct UnitsRange {
  int low;
  int high;
};
UnitsRange RangeOf(const MapGridModel& grid);
// Where a value lies in the grid's range, 0 to 1 (0.5 when every cell holds the same value).
double RangeFraction(const UnitsRange& range, int units);

// A value axis with round ends and round steps (1, 2 or 5 times a power of ten) that holds
// low..high in at most `segments` + 2 steps, the finest such step.
struct AxisScale {
  double min;
  double max;
  int segments;
};
AxisScale NiceScale(double low, double high, int segments);

// The live operating point as a fractional grid position: row 11 is the lowest RPM site and row
// 1 the highest, column 1 the first load site.
struct OperatingPoint {
  double row;
  double column;
  bool operator==(const OperatingPoint&) const = default;
};

// The live engine speed and load placed on a grid's own axes: the row between the RPM sites
// of its labels, the column between its load sites (the MAP pressure on a kPa axis, the throttle
// on a percent axis), both clamped into the grid. The graph's tooltip and the cross-hair use
// this, so the mark stands where the labels say the engine runs.
struct LiveLoad {
  double rpm = 0.0;
  double map_kpa = 0.0;
  double tps_percent = 0.0;
};
OperatingPoint OperatingPointOn(const MapGridModel& grid, const LiveLoad& live);
LiveLoad LiveLoadOf(const live::Frame& frame);

}  // namespace vela
