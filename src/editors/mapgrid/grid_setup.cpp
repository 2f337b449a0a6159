#include "editors/mapgrid/grid_setup.h"

#include <algorithm>
#include <string>

#include "calibration/conversions.h"
#include "calibration/rounding.h"

namespace vela {

GridLoadSites LoadSitesForGrids(int fuel_load_sites, int ign_load_sites) {
  return {fuel_load_sites == 0 ? kDefaultFuelLoadSites : fuel_load_sites,
          ign_load_sites == 0 ? kDefaultIgnLoadSites : ign_load_sites};
}

int ReservedWidth(int load_sites) {
  switch (load_sites) {
    case 13:
      return 1000;
    case 17:
      return 900;
    default:
      return 1300;
  }
}

ColumnWidths ColumnWidthsFor(int grid_width, int load_sites) {
  const int width = std::max(grid_width, 0);
  if (load_sites <= 0) return {width, 0};
  const double share = static_cast<double>(std::max(width - ReservedWidth(load_sites), 0)) /
                       static_cast<double>(load_sites);
  const int site = std::min(static_cast<int>(RoundHalfEven(share)), width / load_sites);
  return {width - site * load_sites, site};
}

void SetUpMapGrid(MapGridModel& grid, std::string_view title, int load_sites) {
  if (grid.Columns() != load_sites + 1) grid.SetColumns(load_sites + 1);
  grid.SetText(0, 0, std::string(title));
  grid.WriteDefaultLabels();
}

GridAxes AxesFor(int rpm_sites_code, bool map_based, int combo_map, std::uint8_t scaling_code) {
  GridAxes axes;
  axes.rpm_sites = RpmSites(rpm_sites_code);
  axes.load = LoadAxisOf(map_based, combo_map, scaling_code);
  axes.full_span =
      map_based ? MapSensorTypeOf(combo_map).scales.front().span_bar * kKpaPerBar : axes.load.top;
  return axes;
}

void ApplyAxes(MapGridModel& grid, const GridAxes& axes) {
  grid.SetRpmSites(axes.rpm_sites);
  MapGridSettings settings = grid.Settings();
  settings.const1 = axes.full_span;
  settings.const2 = 0.0;
  settings.mapsensordiv = axes.load.top > 0.0 ? axes.full_span / axes.load.top : 1.0;
  settings.load_unit = std::string(axes.load.unit());
  grid.SetSettings(settings);
}

void FillFuelGrid(MapGridModel& grid, const CalibrationImage& image, int map) {
  grid.Load(image.ReadFuelMap(map));
}

void FillIgnGrid(MapGridModel& grid, const CalibrationImage& image) {
  grid.Load(image.ReadIgnMap());
}

}  // namespace vela
