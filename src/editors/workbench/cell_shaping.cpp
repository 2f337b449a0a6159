#include "editors/workbench/cell_shaping.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace vela {

namespace {

// Each cell's place along an axis of `count` cells, 0 for the first and 1 for the last: the
// distance walked from the first cell over the whole walk, or the cell index over count - 1 when
// the axis is unknown or its walk is zero. A single cell sits at 0.
std::vector<double> ShapingShares(const std::vector<double>& axis, int count) {
  std::vector<double> shares(static_cast<std::size_t>(std::max(count, 0)), 0.0);
  if (count < 2) return shares;
  const bool known =
      static_cast<int>(axis.size()) == count &&
      std::all_of(axis.begin(), axis.end(), [](double v) { return std::isfinite(v); });
  double walk = 0.0;
  if (known) {
    for (int i = 1; i < count; ++i) {
      walk += std::abs(axis[i] - axis[i - 1]);
      shares[i] = walk;
    }
  }
  if (!known || walk <= 0.0 || !std::isfinite(walk)) {
    for (int i = 0; i < count; ++i) shares[i] = static_cast<double>(i) / (count - 1);
    return shares;
  }
  for (double& share : shares) share /= walk;
  shares[count - 1] = 1.0;
  return shares;
}

// Between `from` and `to` at `share`; the ends come back exactly.
double ShapingBetween(double from, double to, double share) {
  return from * (1.0 - share) + to * share;
}

// The kernel at an interior cell: a neighbour `dr` rows and `dc` columns away weighs
// (2 - |dr|) x (2 - |dc|), so 4 for the cell itself, and the weights sum to 16.
double ShapingKernelAt(const SelectionValues& block, int row, int column) {
  double sum = 0.0;
  for (int dr = -1; dr <= 1; ++dr) {
    for (int dc = -1; dc <= 1; ++dc) {
      sum += (2 - std::abs(dr)) * (2 - std::abs(dc)) * block.At(row + dr, column + dc);
    }
  }
  return sum / 16.0;
}

SelectionValues SmoothLine(const SelectionValues& current) {
  SelectionValues result = current;
  const int length = static_cast<int>(current.values.size());
  for (int i = 1; i + 1 < length; ++i) {
    result.values[i] =
        (current.values[i - 1] + 2.0 * current.values[i] + current.values[i + 1]) / 4.0;
  }
  return result;
}

}  // namespace

bool SelectionValues::WellFormed() const {
  return rows > 0 && columns > 0 &&
         values.size() == static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns);
}

double SelectionValues::At(int row, int column) const {
  return values[static_cast<std::size_t>(row) * columns + column];
}

void SelectionValues::Set(int row, int column, double value) {
  values[static_cast<std::size_t>(row) * columns + column] = value;
}

SelectionValues Interpolate(const SelectionValues& current, const SelectionAxes& axes,
                            InterpolationDirection direction) {
  if (!current.WellFormed()) return current;
  const int last_row = current.rows - 1;
  const int last_column = current.columns - 1;
  const std::vector<double> down = ShapingShares(axes.row_rpm, current.rows);
  const std::vector<double> across = ShapingShares(axes.column_load, current.columns);
  SelectionValues result = current;
  for (int row = 0; row < current.rows; ++row) {
    for (int column = 0; column < current.columns; ++column) {
      double value = current.At(row, column);
      switch (direction) {
        case InterpolationDirection::kRows:
          value = ShapingBetween(current.At(row, 0), current.At(row, last_column), across[column]);
          break;
        case InterpolationDirection::kColumns:
          value = ShapingBetween(current.At(0, column), current.At(last_row, column), down[row]);
          break;
        case InterpolationDirection::kBoth: {
          const double top =
              ShapingBetween(current.At(0, 0), current.At(0, last_column), across[column]);
          const double bottom = ShapingBetween(current.At(last_row, 0),
                                               current.At(last_row, last_column), across[column]);
          value = ShapingBetween(top, bottom, down[row]);
          break;
        }
      }
      result.Set(row, column, value);
    }
  }
  return result;
}

SelectionValues Smooth(const SelectionValues& current) {
  if (!current.WellFormed()) return current;
  if (current.rows == 1 || current.columns == 1) return SmoothLine(current);
  SelectionValues result = current;
  for (int row = 1; row + 1 < current.rows; ++row) {
    for (int column = 1; column + 1 < current.columns; ++column) {
      result.Set(row, column, ShapingKernelAt(current, row, column));
    }
  }
  return result;
}

SelectionValues Fill(const SelectionValues& current, double value) {
  if (!current.WellFormed()) return current;
  SelectionValues result = current;
  std::fill(result.values.begin(), result.values.end(), value);
  return result;
}

namespace {

MapCellRect ShapingClamped(const MapGridModel& grid, MapCellRect rect) {
  const auto row = [](int r) { return std::clamp(r, 1, kMapRows); };
  const auto column = [&grid](int c) { return std::clamp(c, 1, grid.LoadSites()); };
  return {row(std::min(rect.top, rect.bottom)), column(std::min(rect.left, rect.right)),
          row(std::max(rect.top, rect.bottom)), column(std::max(rect.left, rect.right))};
}

}  // namespace

SelectionValues ReadSelection(const MapGridModel& grid, MapCellRect rect) {
  const MapCellRect r = ShapingClamped(grid, rect);
  SelectionValues block{r.bottom - r.top + 1, r.right - r.left + 1, {}};
  for (int row = r.top; row <= r.bottom; ++row) {
    for (int column = r.left; column <= r.right; ++column) {
      block.values.push_back(grid.Value(row, column));
    }
  }
  return block;
}

SelectionAxes AxesOfSelection(const MapGridModel& grid, MapCellRect rect) {
  const MapCellRect r = ShapingClamped(grid, rect);
  SelectionAxes axes;
  for (int row = r.top; row <= r.bottom; ++row) {
    axes.row_rpm.push_back(grid.RowRpm(row).value_or(std::numeric_limits<double>::quiet_NaN()));
  }
  for (int column = r.left; column <= r.right; ++column) {
    axes.column_load.push_back(grid.LoadSiteValue(column));
  }
  return axes;
}

}  // namespace vela
