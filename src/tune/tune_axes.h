// The axes a log's operating points are placed on: the RPM sites and load sites of a map as its
// calibration sets them, and the four cells around an operating point with the share each takes.
#pragma once

#include <array>
#include <string_view>
#include <vector>

#include "calibration/calibration_image.h"
#include "calibration/map_axes.h"

namespace vela {

struct TuneAxes {
  std::vector<double> rpm;    // RPM of sites 0 (lowest, the grid's bottom row) upward
  std::vector<double> loads;  // the load of each load site, first to last
  LoadBasis basis = LoadBasis::kMap;

  int Rows() const { return static_cast<int>(rpm.size()); }
  int Columns() const { return static_cast<int>(loads.size()); }
  std::string_view LoadUnit() const { return basis == LoadBasis::kMap ? "kPa" : "%"; }
  // The RPM of a grid row (1 = the highest site) and the load of a column (1 = the first site).
  double RowRpm(int row) const { return rpm[static_cast<std::size_t>(Rows() - row)]; }
  double ColumnLoad(int column) const { return loads[static_cast<std::size_t>(column - 1)]; }
  bool operator==(const TuneAxes&) const = default;
};

// The fuel maps' axes and the ignition map's, as the map editors label them for `image`.
TuneAxes FuelAxesOf(const CalibrationImage& image);
TuneAxes IgnAxesOf(const CalibrationImage& image);

// One of the four cells around an operating point: grid row and column, and its share.
struct CellShare {
  int row = 1;
  int column = 1;
  double weight = 0.0;
};
using CellShares = std::array<CellShare, 4>;

// Bilinear shares of the four cells around (rpm, load): each cell's share falls with the
// point's distance from it along each axis, and the four always add up to one. A point beyond
// an axis is held at its edge; a point exactly on a site gives the far neighbours a share of 0.
CellShares SharesAt(const TuneAxes& axes, double rpm, double load);

}  // namespace vela
