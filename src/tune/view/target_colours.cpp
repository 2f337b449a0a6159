#include "tune/view/target_colours.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "editors/compare/compare_overlay.h"

namespace vela {

namespace {

// Distances under half a hundredth are 14.7 itself (the table keeps hundredths).
constexpr double kSameAfr = 0.005;

}  // namespace

std::string TargetLeaning(double afr) {
  const double distance = afr - kStoichiometricAfr;
  if (std::abs(distance) < kSameAfr) return "stoichiometric";
  char text[48];
  std::snprintf(text, sizeof text, "%.2f %s than stoichiometric", std::abs(distance),
                distance < 0 ? "richer" : "leaner");
  return text;
}

GridOverlay TargetOverlay(const TargetTable& table) {
  const TuneAxes& axes = table.Axes();
  double largest = kTargetColourSpan;
  for (int row = 1; row <= axes.Rows(); ++row) {
    for (int column = 1; column <= axes.Columns(); ++column) {
      largest = std::max(largest, std::abs(table.At(row, column) - kStoichiometricAfr));
    }
  }
  GridOverlay overlay(axes.Rows(), axes.Columns());
  for (int row = 1; row <= axes.Rows(); ++row) {
    for (int column = 1; column <= axes.Columns(); ++column) {
      const double distance = table.At(row, column) - kStoichiometricAfr;
      CellOverlay look;
      look.ground =
          std::abs(distance) < kSameAfr ? kEqualGround : DifferenceGround(distance, largest);
      look.description = TargetLeaning(table.At(row, column));
      overlay.Set({row, column}, look);
    }
  }
  return overlay;
}

}  // namespace vela
