#include "editors/compare/compare_overlay.h"

#include <algorithm>
#include <cmath>

#include "editors/compare/compare_texts.h"

namespace vela {

namespace {

constexpr Rgb kHigherFull{240, 105, 85};
constexpr Rgb kLowerFull{105, 150, 250};
constexpr double kLeastShare = 0.25;

std::uint8_t Blend(std::uint8_t full, double share) {
  return static_cast<std::uint8_t>(std::lround(255.0 + (full - 255.0) * share));
}

double LargestDifference(const TableComparison& table) {
  double largest = 0.0;
  for (const MapCell& cell : table.DifferingCells()) {
    largest = std::max(largest, std::abs(table.Difference(cell).value_or(0.0)));
  }
  return largest;
}

// The values of one side: theirs in the other side's view, the base's in the current view.
CellOverlay SideLook(const TableComparison& table, MapCell cell, CompareView view, int decimals,
                     char separator) {
  CellOverlay look;
  const std::optional<double> value = table.Shown(cell, view);
  look.text = value ? ValueText(*value, decimals, separator, false) : std::string();
  look.value = value;
  if (!value) look.ground = kOneSideGround;
  return look;
}

CellOverlay DifferenceLook(const TableComparison& table, MapCell cell, int decimals, char separator,
                           double largest) {
  CellOverlay look;
  const std::optional<double> difference = table.Difference(cell);
  look.text = difference ? ValueText(*difference, decimals, separator, true) : std::string();
  if (!difference) {
    look.ground = kOneSideGround;
  } else if (!table.Differs(cell)) {
    look.ground = kEqualGround;
  } else {
    look.ground = DifferenceGround(*difference, largest);
  }
  return look;
}

}  // namespace

std::optional<Rgb> CompareMark(const TableComparison& table, MapCell cell) {
  if (!table.Differs(cell)) return std::nullopt;
  const std::optional<double> difference = table.Difference(cell);
  if (!difference) return kOneSideMark;
  return *difference > 0 ? kOursHigherMark : kOursLowerMark;
}

Rgb DifferenceGround(double difference, double largest) {
  const double size = largest > 0 ? std::min(std::abs(difference) / largest, 1.0) : 1.0;
  const double share = kLeastShare + (1.0 - kLeastShare) * size;
  const Rgb full = difference > 0 ? kHigherFull : kLowerFull;
  return {Blend(full.red, share), Blend(full.green, share), Blend(full.blue, share)};
}

GridOverlay CompareOverlay(const TableComparison& table, CompareView view, int decimals,
                           char separator, bool base_values) {
  GridOverlay overlay(table.FirstRow() + table.Rows() - 1, table.Columns());
  const double largest = view == CompareView::kDifference ? LargestDifference(table) : 0.0;
  for (int r = 0; r < table.Rows(); ++r) {
    for (int column = 1; column <= table.Columns(); ++column) {
      const MapCell cell{table.FirstRow() + r, column};
      CellOverlay look;
      if (view == CompareView::kOther || (view == CompareView::kCurrent && base_values)) {
        look = SideLook(table, cell, view, decimals, separator);
      }
      if (view == CompareView::kDifference) {
        look = DifferenceLook(table, cell, decimals, separator, largest);
      }
      look.mark = CompareMark(table, cell);
      overlay.Set(cell, std::move(look));
    }
  }
  return overlay;
}

}  // namespace vela
