#include "tune/tune_axes.h"

#include <cmath>

namespace vela {

namespace {

constexpr std::uint8_t kLoadSensingBit = 0x40;

TuneAxes AxesWithSites(const CalibrationImage& image, int load_sites) {
  TuneAxes axes;
  for (int rpm : RpmSites(image.Byte(FieldPos("RpmSitesSetup")))) axes.rpm.push_back(rpm);
  const std::uint8_t sensor = image.Byte(FieldPos("MapSensorSetup"));
  const LoadAxis load = LoadAxisOf((sensor & kLoadSensingBit) != 0, sensor & kMapSensorTypeBits,
                                   image.Byte(FieldPos("MapSensorScaling")));
  axes.basis = load.basis;
  axes.loads = LoadSiteValues(load, load_sites);
  return axes;
}

// The lower site of the pair around a fractional position and the share of the upper one.
std::pair<int, double> PairAround(double position, int count) {
  if (count < 2) return {0, 0.0};
  const int lower = std::min(static_cast<int>(std::floor(position)), count - 2);
  return {lower, position - lower};
}

}  // namespace

TuneAxes FuelAxesOf(const CalibrationImage& image) {
  return AxesWithSites(image, image.FuelLoadSites());
}

TuneAxes IgnAxesOf(const CalibrationImage& image) {
  return AxesWithSites(image, image.IgnLoadSites());
}

CellShares SharesAt(const TuneAxes& axes, double rpm, double load) {
  const auto [site, up] = PairAround(AxisPosition(axes.rpm, rpm), axes.Rows());
  const auto [column, right] = PairAround(AxisPosition(axes.loads, load), axes.Columns());
  const int low_row = axes.Rows() - site;
  const int high_row = std::max(low_row - 1, 1);
  const int left = column + 1;
  const int right_column = std::min(left + 1, axes.Columns());
  return {{{low_row, left, (1.0 - up) * (1.0 - right)},
           {low_row, right_column, (1.0 - up) * right},
           {high_row, left, up * (1.0 - right)},
           {high_row, right_column, up * right}}};
}

}  // namespace vela
