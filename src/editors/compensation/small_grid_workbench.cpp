#include "editors/compensation/small_grid_workbench.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "calibration/decimal_text.h"
#include "editors/workbench/cell_shaping.h"

namespace vela {

namespace {

// A computed target a hair off the value it stands for (6.05 x 10 landing at 60.4999...) is read
// as that value before it is converted, as a typed number would be.
constexpr double kTargetSnap = 1e6;

int LastRow(const SmallGridModel& grid) { return std::max(grid.Rows() - 1, 0); }
int OnGrid(const SmallGridModel& grid, int row) { return std::clamp(row, 0, LastRow(grid)); }

// The byte a row takes for `wanted`: converted as a typed value, held inside the row's limits,
// never further out than the row already stands.
int RangedRaw(const CellFormat& format, int current, double wanted, bool& clamped) {
  const double snapped = std::nearbyint(wanted * kTargetSnap) / kTargetSnap;
  const int stored = format.stored(std::isfinite(snapped) ? snapped : wanted);
  const int low = std::min(format.min_raw, current);
  const int high = std::max(format.max_raw, current);
  clamped = stored < low || stored > high;
  return std::clamp(stored, low, high);
}

// A change of every row of `values` (shown values of the rows from `first`), NaN leaving a row.
RowChange PlanValues(const SmallGridModel& grid, int first, const SelectionValues& values) {
  if (!values.WellFormed() || values.columns != 1) return {};
  return PlanRows(grid, first, first + values.rows - 1,
                  [&](int row, double) { return values.At(row - first, 0); });
}

SelectionValues ValuesOf(const SmallGridModel& grid, int first, int last) {
  SelectionValues values{last - first + 1, 1, {}};
  for (int row = first; row <= last; ++row) values.values.push_back(grid.Value(row));
  return values;
}

std::string Counted(int count, const char* one, const char* many) {
  return std::to_string(count) + " " + (count == 1 ? one : many);
}

}  // namespace

RowSelection RowSelectionFollowing(const SmallGridModel& grid,
                                   const std::optional<RowSelection>& kept) {
  const int first = grid.SelectionFirst();
  const int last = grid.SelectionLast();
  const int cursor = grid.Current();
  if (kept && kept->First() == first && kept->Last() == last && kept->active == cursor) {
    return *kept;
  }
  if (cursor == first) return {last, first};
  if (cursor == last) return {first, last};
  return {first, last};
}

RowSelection ExtendedBy(const SmallGridModel& grid, RowSelection selection, int rows) {
  return {OnGrid(grid, selection.anchor), OnGrid(grid, selection.active + rows)};
}

RowSelection WholeTable(const SmallGridModel& grid) { return {0, LastRow(grid)}; }

RowChange PlanRows(const SmallGridModel& grid, int first, int last, const RowTarget& target) {
  RowChange change;
  first = OnGrid(grid, first);
  last = OnGrid(grid, last);
  change.lowest = std::numeric_limits<double>::infinity();
  change.highest = -change.lowest;
  for (int row = first; row <= last && grid.Rows() > 0; ++row) {
    const CellFormat& format = grid.Format(row);
    int raw = grid.Raw(row);
    const double wanted = target(row, grid.Value(row));
    if (!std::isnan(wanted) && format.shown && format.stored) {
      bool clamped = false;
      const int next = RangedRaw(format, raw, wanted, clamped);
      change.clamped += clamped ? 1 : 0;
      if (next != raw) change.changed.push_back({row, next});
      raw = next;
    }
    const double shown = format.shown ? format.shown(raw) : static_cast<double>(raw);
    change.lowest = std::min(change.lowest, shown);
    change.highest = std::max(change.highest, shown);
    change.decimals = std::max(change.decimals, format.decimals);
  }
  return change;
}

ValueBounds RowBoundsOf(const SmallGridModel& grid, int first, int last) {
  ValueBounds bounds{std::numeric_limits<double>::infinity(),
                     -std::numeric_limits<double>::infinity(), 0.0, 0};
  for (int row = OnGrid(grid, first); row <= OnGrid(grid, last); ++row) {
    const CellFormat& format = grid.Format(row);
    if (!format.shown) continue;
    const double low = format.shown(format.min_raw);
    const double high = format.shown(format.max_raw);
    const double step = std::abs(format.shown(format.min_raw + 1) - low);
    bounds.lowest = std::min({bounds.lowest, low, high});
    bounds.highest = std::max({bounds.highest, low, high});
    if (step > 0.0 && (bounds.step == 0.0 || step < bounds.step)) bounds.step = step;
    bounds.decimals = std::max(bounds.decimals, format.decimals);
  }
  if (bounds.lowest > bounds.highest) return {0.0, 0.0, 1.0, 0};
  return bounds;
}

RowChange PlanOperation(const SmallGridModel& grid, int first, int last,
                        const CellOperation& operation) {
  return PlanRows(grid, first, last,
                  [&operation](int, double current) { return operation.Apply(current); });
}

std::string RowChangeSummary(const RowChange& change, char decimal_mark) {
  const std::string low = FormatFixed(change.lowest, change.decimals, decimal_mark, nullptr);
  const std::string high = FormatFixed(change.highest, change.decimals, decimal_mark, nullptr);
  std::string text = (low == high ? low : low + " .. " + high) + ", ";
  const int changed = static_cast<int>(change.changed.size());
  text += changed == 0 ? std::string("no cell changes")
                       : Counted(changed, "cell changes", "cells change");
  if (change.clamped > 0) {
    text += ", " + std::to_string(change.clamped) + " held at the table's range";
  }
  return text;
}

std::optional<std::vector<double>> RowAxisOf(const SmallGridModel& grid, int first, int last) {
  std::vector<double> axis;
  for (int row = OnGrid(grid, first); row <= OnGrid(grid, last); ++row) {
    const std::optional<double> value = NumberOfText(grid.RowLabel(row), '.');
    if (!value) return std::nullopt;
    axis.push_back(*value);
  }
  return axis;
}

RowChange PlanInterpolation(const SmallGridModel& grid, int first, int last) {
  first = OnGrid(grid, first);
  last = OnGrid(grid, last);
  const std::optional<std::vector<double>> axis = RowAxisOf(grid, first, last);
  if (!axis) return {};
  const SelectionAxes axes{*axis, {0.0}};
  return PlanValues(
      grid, first,
      Interpolate(ValuesOf(grid, first, last), axes, InterpolationDirection::kColumns));
}

RowChange PlanFill(const SmallGridModel& grid, int first, int last, double live_x) {
  const std::optional<std::vector<double>> axis = RowAxisOf(grid, 0, grid.Rows() - 1);
  if (!axis || axis->empty() || !std::isfinite(live_x)) return {};
  std::size_t nearest = 0;
  for (std::size_t row = 1; row < axis->size(); ++row) {
    if (std::abs((*axis)[row] - live_x) < std::abs((*axis)[nearest] - live_x)) nearest = row;
  }
  const double value = grid.Value(static_cast<int>(nearest));
  return PlanRows(grid, OnGrid(grid, first), OnGrid(grid, last),
                  [value](int, double) { return value; });
}

RowChange PlanSmoothing(const SmallGridModel& grid, int first, int last) {
  first = OnGrid(grid, first);
  last = OnGrid(grid, last);
  if (!RowAxisOf(grid, first, last)) return {};
  return PlanValues(grid, first, Smooth(ValuesOf(grid, first, last)));
}

SheetBlock RowSheetBlock(const SmallGridModel& grid, int first, int last) {
  SheetBlock block;
  block.columns = 1;
  for (int row = OnGrid(grid, first); row <= OnGrid(grid, last); ++row) {
    block.values.push_back(grid.Value(row));
    block.row_decimals.push_back(grid.Format(row).decimals);
    ++block.rows;
  }
  return block;
}

std::optional<SheetAxes> RowSheetAxes(const SmallGridModel& grid, int first, int last) {
  std::optional<std::vector<double>> axis = RowAxisOf(grid, first, last);
  if (!axis) return std::nullopt;
  SheetAxes axes;
  axes.row_values = std::move(*axis);
  for (int row = OnGrid(grid, first); row <= OnGrid(grid, last); ++row) {
    const std::string& label = grid.RowLabel(row);
    const std::size_t mark = label.find('.');
    if (mark != std::string::npos) {
      axes.row_decimals = std::max(axes.row_decimals, static_cast<int>(label.size() - mark - 1));
    }
  }
  return axes;
}

PasteArea RowPasteArea(const SmallGridModel& grid) {
  const int rows = std::max(grid.Rows(), 1);
  return {{1, 1, rows, 1},
          {grid.Current() + 1, 1},
          {grid.SelectionFirst() + 1, 1, grid.SelectionLast() + 1, 1}};
}

RowChange PlanPaste(const SmallGridModel& grid, const std::vector<PasteCellValue>& cells) {
  if (cells.empty()) return {};
  std::vector<double> targets(static_cast<std::size_t>(grid.Rows()),
                              std::numeric_limits<double>::quiet_NaN());
  int first = grid.Rows();
  int last = -1;
  for (const PasteCellValue& cell : cells) {
    const int row = cell.cell.row - 1;
    if (cell.cell.column != 1 || row < 0 || row >= grid.Rows()) continue;
    targets[static_cast<std::size_t>(row)] = cell.value;
    first = std::min(first, row);
    last = std::max(last, row);
  }
  if (last < first) return {};
  return PlanRows(grid, first, last,
                  [&targets](int row, double) { return targets[static_cast<std::size_t>(row)]; });
}

}  // namespace vela
