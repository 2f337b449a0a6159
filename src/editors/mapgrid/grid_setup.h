// The map grids' set-up: load-site counts, column widths and titles, run at start, after an
// upload and when a site count changes. Widths are in display units of 1/1440 inch (15 to a
// pixel on a 96 dpi screen); the widget converts.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "calibration/calibration_image.h"
#include "calibration/map_axes.h"
#include "editors/mapgrid/map_grid_model.h"

namespace vela {

struct GridLoadSites {
  int fuel;
  int ignition;
  bool operator==(const GridLoadSites&) const = default;
};

// A count of 0 means the image carries none yet: 9 fuel and 5 ignition load sites are taken.
GridLoadSites LoadSitesForGrids(int fuel_load_sites, int ign_load_sites);

// Width kept back from the load-site columns: 1300 for 9 sites, 1000 for 13, 900 for 17, and
// 1300 for any other count (the ignition map's 5 or 6).
int ReservedWidth(int load_sites);

struct ColumnWidths {
  int label;  // the RPM label column: the rest of the width
  int site;   // each load-site column: (grid width - reserved) / load sites, made whole (to
              // the nearest, a half to the even neighbour)
  bool operator==(const ColumnWidths&) const = default;
};
// Neither width is ever negative; a grid narrower than the reserved width gives all its width to
// the label column.
ColumnWidths ColumnWidthsFor(int grid_width, int load_sites);

// Sets `grid` to `load_sites` value columns (12 rows), writes the title into the corner cell and
// the header row's labels and markers.
void SetUpMapGrid(MapGridModel& grid, std::string_view title, int load_sites);

// The axes the calibration gives the maps: the RPM of each site from the RPM site spacing code
// (byte 946) and the load axis from the load sensing, the MAP sensor type and its scaling code.
struct GridAxes {
  std::array<int, kMapRows> rpm_sites{};
  LoadAxis load;
  double full_span = 100.0;  // the sensor type's full span (kPa), or 100 % on a throttle basis
};
GridAxes AxesFor(int rpm_sites_code, bool map_based, int combo_map, std::uint8_t scaling_code);
// Labels the grid's rows with the RPM sites and its columns with the load sites: const1 the full
// span, mapsensordiv how many times the scaling narrows it, const2 0, the load unit.
void ApplyAxes(MapGridModel& grid, const GridAxes& axes);

// Fuel map 1 or 2, or the ignition map, from the image into the grid (the grid takes the map's
// load sites from the image).
void FillFuelGrid(MapGridModel& grid, const CalibrationImage& image, int map);
void FillIgnGrid(MapGridModel& grid, const CalibrationImage& image);

}  // namespace vela
