#include "tools/vela_map/map_sheets.h"

#include <cmath>
#include <cstdio>

#include "calibration/conversions.h"
#include "calibration/map_axes.h"
#include "editors/mapgrid/map_grid_model.h"

namespace vela::mapfile {

namespace {

constexpr std::uint8_t kMapLoadSensingBit = 0x40;

int Index(MapId map) { return static_cast<int>(map); }

}  // namespace

std::string_view MapName(MapId map) {
  constexpr std::array<std::string_view, 3> kNames = {"fuel1", "fuel2", "ign"};
  return kNames[Index(map)];
}

std::string_view MapTitle(MapId map) {
  constexpr std::array<std::string_view, 3> kTitles = {kTitleFuel1, kTitleFuel2, kTitleIgnition};
  return kTitles[Index(map)];
}

std::string_view ValueUnit(MapId map) { return map == MapId::kIgnition ? "deg" : "ms"; }

std::optional<MapId> MapNamed(std::string_view name) {
  for (MapId map : kAllMaps) {
    if (MapName(map) == name) return map;
  }
  return std::nullopt;
}

SheetAxes AxesOf(const CalibrationImage& image, MapId map) {
  SheetAxes axes;
  const std::array<int, kMapRows> sites = RpmSites(image.Byte(FieldPos("RpmSitesSetup")));
  for (int row = 1; row <= kMapRows; ++row) axes.rpm[row - 1] = sites[BlockRowOfGridRow(row) - 1];
  const std::uint8_t sensor = image.Byte(FieldPos("MapSensorSetup"));
  const LoadAxis load = LoadAxisOf((sensor & kMapLoadSensingBit) != 0, sensor & kMapSensorTypeBits,
                                   image.Byte(FieldPos("MapSensorScaling")));
  axes.loads = LoadSiteValues(load, LoadSitesOf(image, map));
  axes.load_unit = std::string(load.unit());
  return axes;
}

int LoadSitesOf(const CalibrationImage& image, MapId map) {
  return map == MapId::kIgnition ? image.IgnLoadSites() : image.FuelLoadSites();
}

int CellPosition(const CalibrationImage& image, MapId map, int grid_row, int column) {
  if (grid_row < 1 || grid_row > kMapRows) return 0;
  const int block_row = BlockRowOfGridRow(grid_row);
  if (map == MapId::kIgnition) return image.IgnCellPosition(block_row, column);
  return image.FuelCellPosition(map == MapId::kFuel1 ? 1 : 2, block_row, column);
}

std::optional<int> CellRaw(const CalibrationImage& image, MapId map, int grid_row, int column) {
  const int position = CellPosition(image, map, grid_row, column);
  if (position == 0) return std::nullopt;
  if (map == MapId::kIgnition) return image.Byte(position);
  return static_cast<int>(image.Read16(position));
}

double DisplayValue(MapId map, int raw) {
  return map == MapId::kIgnition ? IgnDegreesFromRaw(raw) : FuelMsFromRaw(raw);
}

std::string DisplayText(MapId map, int raw) {
  char text[32];
  std::snprintf(text, sizeof text, map == MapId::kIgnition ? "%.1f" : "%.3f",
                DisplayValue(map, raw));
  return text;
}

std::string AxisText(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.3f", std::round(value * 1000.0) / 1000.0);
  std::string out = text;
  while (out.back() == '0') out.pop_back();
  if (out.back() == '.') out.pop_back();
  if (out == "-0") out = "0";
  return out;
}

}  // namespace vela::mapfile
