#include "editors/mapgrid/qt/map_graph_data.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <optional>

#include "calibration/map_axes.h"

namespace vela {

namespace {

std::vector<double> RpmAxis(const MapGridModel& grid) {
  std::vector<double> axis;
  for (int row = 1; row <= kMapRows; ++row) {
    const std::optional<double> rpm = grid.RowRpm(row);
    if (!rpm || (!axis.empty() && *rpm >= axis.back())) {
      axis.clear();
      break;
    }
    axis.push_back(*rpm);
  }
  if (!axis.empty()) return axis;
  const std::array<int, kMapRows> sites = RpmSites(0);
  for (int row = 1; row <= kMapRows; ++row) axis.push_back(sites[BlockRowOfGridRow(row) - 1]);
  return axis;
}

std::vector<double> LoadPoints(const MapGridModel& grid, int sites) {
  std::vector<double> axis;
  for (int column = 1; column <= sites; ++column) axis.push_back(grid.LoadSiteValue(column));
  const bool rising =
      std::adjacent_find(axis.begin(), axis.end(), std::greater_equal<>()) == axis.end();
  if (rising) return axis;
  for (int column = 1; column <= sites; ++column) axis[column - 1] = column;
  return axis;
}

}  // namespace

QColor RampQColor(double fraction) {
  const Rgb rgb = RampColour(fraction);
  return QColor(rgb.red, rgb.green, rgb.blue);
}

QString GraphValueText(MapKind kind, double value) {
  return QString::number(value, 'f', kind == MapKind::kFuel ? 2 : 1);
}

QString GraphValueUnit(MapKind kind) {
  return kind == MapKind::kFuel ? QStringLiteral("ms") : QStringLiteral("deg");
}

MapGraphData GraphDataOf(const MapGridModel& grid, int max_sites) {
  MapGraphData data;
  data.kind = grid.Kind();
  data.title = QString::fromStdString(grid.Text(0, 0));
  data.sites = max_sites > 0 ? std::min(max_sites, grid.LoadSites()) : grid.LoadSites();
  const UnitsRange range = RangeOf(grid);
  for (int row = 1; row <= kMapRows; ++row) {
    data.rpm_labels.append(QString::fromStdString(grid.RpmLabel(row)));
    for (int column = 1; column <= data.sites; ++column) {
      data.values.push_back(grid.Value(row, column));
      data.fractions.push_back(RangeFraction(range, grid.Units(row, column)));
    }
  }
  for (int column = 1; column <= data.sites; ++column) {
    data.load_labels.append(QString::fromStdString(grid.LoadLabel(column)));
  }
  data.load_unit = QString::fromStdString(grid.LoadUnit());
  data.rpm_axis = RpmAxis(grid);
  data.load_axis = LoadPoints(grid, data.sites);
  return data;
}

void ApplyOverlay(MapGraphData& data, const GridOverlay& overlay, const MapGridModel& grid) {
  data.marks.assign(data.values.size(), QColor());
  if (overlay.Empty()) return;
  const UnitsRange range = RangeOf(grid);
  const int per_unit = UnitsPerDisplayUnit(grid.Kind());
  for (int row = 1; row <= kMapRows; ++row) {
    for (int column = 1; column <= data.sites; ++column) {
      const CellOverlay* look = overlay.At(row, column);
      if (!look) continue;
      const auto at = static_cast<std::size_t>((row - 1) * data.sites + column - 1);
      if (look->value) {
        data.values[at] = *look->value;
        data.fractions[at] =
            RangeFraction(range, static_cast<int>(std::lround(*look->value * per_unit)));
      }
      if (look->mark) data.marks[at] = QColor(look->mark->red, look->mark->green, look->mark->blue);
    }
  }
}

}  // namespace vela
