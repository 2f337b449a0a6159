#include "sim/engine/true_map.h"

#include <algorithm>
#include <cmath>

#include "calibration/map_axes.h"
#include "sim/core/base_calibration.h"

namespace vela::sim {

double TrueCellUs(const CalibrationImage& image, std::span<const FuelError> errors,
                  const vela::TargetTable& target, int block_row, int column) {
  const double rpm = RpmSites(image.Byte(FieldPos("RpmSitesSetup")))[block_row - 1];
  const int sites = image.FuelLoadSites();
  const LoadAxis axis = LoadAxisOfImage(image);
  const double load = LoadSiteValues(axis, sites)[column - 1];
  const double kpa = axis.basis == LoadBasis::kMap ? load : SteadyManifoldKpa(load, rpm);
  const double load_pct = 100.0 * (column - 1) / (sites - 1);
  const double fuel_mg = AirMgPerCycle(rpm, kpa) / target.AtPoint(rpm, load);
  const double us =
      FuelErrorFactorAtSite(errors, rpm, load_pct) * fuel_mg / kInjectorMgPerMs * 1000.0;
  return std::clamp(std::round(us), 0.0, 65'535.0);
}

CalibrationImage WithTrueFuelMap(const CalibrationImage& image, std::span<const FuelError> errors,
                                 const vela::TargetTable& target) {
  CalibrationImage out = image;
  for (int row = 1; row <= kMapRows; ++row) {
    for (int column = 1; column <= image.FuelLoadSites(); ++column) {
      const double us = TrueCellUs(image, errors, target, row, column);
      out.Write16(image.FuelCellPosition(1, row, column), static_cast<std::uint16_t>(us));
    }
  }
  return out;
}

}  // namespace vela::sim
