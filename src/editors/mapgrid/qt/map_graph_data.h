// What a map graph draws: a copy of a grid's values and axes, taken whenever the grid changes.
#pragma once

#include <QColor>
#include <QString>
#include <QStringList>
#include <vector>

#include "editors/mapgrid/cell_overlay.h"
#include "editors/mapgrid/map_display.h"
#include "editors/mapgrid/map_grid_model.h"

namespace vela {

struct MapGraphData {
  MapKind kind = MapKind::kFuel;
  QString title;
  int sites = 0;                  // load-site columns drawn
  std::vector<double> values;     // grid rows 1..11 (highest RPM first) x columns 1..sites
  std::vector<double> fractions;  // each value's share of the map's range, for its colour
  QStringList rpm_labels;         // grid rows 1..11
  QStringList load_labels;        // columns 1..sites, in load_unit
  QString load_unit = QStringLiteral("kPa");  // "kPa" or "%"
  std::vector<double> rpm_axis;               // RPM of grid rows 1..11, strictly falling
  std::vector<double> load_axis;              // load of columns 1..sites, strictly rising
  std::vector<QColor> marks;                  // as values: an overlay's marks, invalid for none

  double At(int row, int column) const {
    return values[static_cast<std::size_t>((row - 1) * sites + column - 1)];
  }
  double FractionAt(int row, int column) const {
    return fractions[static_cast<std::size_t>((row - 1) * sites + column - 1)];
  }
};

// What both views of the graph show alike: a value's colour on the grid's ramp, a value as text
// (fuel in ms with two decimals, ignition in degrees with one) and its unit ("ms", "deg").
QColor RampQColor(double fraction);
QString GraphValueText(MapKind kind, double value);
QString GraphValueUnit(MapKind kind);

// A copy of `grid` with at most `max_sites` columns (all of them when 0 or less). Axes fall back
// to the standard RPM sites and to the column numbers when the labels do not run in order.
MapGraphData GraphDataOf(const MapGridModel& grid, int max_sites);

// The overlay's values in place of the grid's (coloured on the grid's range) and its marks.
void ApplyOverlay(MapGraphData& data, const GridOverlay& overlay, const MapGridModel& grid);

}  // namespace vela
