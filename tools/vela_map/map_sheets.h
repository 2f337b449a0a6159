// The three maps of a map file as the map editors' grids show them: grid rows 1 (top, the
// highest RPM site) to 11, load-site columns 1 to the image's own load sites, with the RPM of
// each row and the load of each column as the file's own set-up gives them.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "calibration/calibration_image.h"

namespace vela::mapfile {

enum class MapId { kFuel1, kFuel2, kIgnition };
inline constexpr std::array<MapId, 3> kAllMaps = {MapId::kFuel1, MapId::kFuel2, MapId::kIgnition};

// The name scripts use ("fuel1", "fuel2", "ign"), the grid's title and the value's unit.
std::string_view MapName(MapId map);
std::string_view MapTitle(MapId map);
std::string_view ValueUnit(MapId map);
std::optional<MapId> MapNamed(std::string_view name);

// The axes of the maps of an image: RPM by grid row (index 0 = grid row 1) and the load of each
// load site of the map.
struct SheetAxes {
  std::array<int, kMapRows> rpm{};
  std::vector<double> loads;
  std::string load_unit;
};
SheetAxes AxesOf(const CalibrationImage& image, MapId map);

int LoadSitesOf(const CalibrationImage& image, MapId map);
// The image position of a cell's first byte, 0 when the layout has no such cell.
int CellPosition(const CalibrationImage& image, MapId map, int grid_row, int column);
// A cell's raw value (microseconds, or the ignition byte), nullopt when there is no such cell.
std::optional<int> CellRaw(const CalibrationImage& image, MapId map, int grid_row, int column);
// A raw value as the grid shows it: milliseconds or degrees.
double DisplayValue(MapId map, int raw);
// The same with the grid's decimals and '.' as the decimal mark.
std::string DisplayText(MapId map, int raw);
// A number with up to three decimals and no trailing zeros (axis values).
std::string AxisText(double value);

}  // namespace vela::mapfile
