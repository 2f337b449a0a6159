#include "editors/grid_workbench.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "editors/workbench/cell_shaping.h"

namespace vela {

namespace {

std::string CountOf(int count, const char* one, const char* many) {
  return std::to_string(count) + " " + (count == 1 ? one : many);
}

SelectionValues ShapedValues(const MapGridModel& grid, const CellRect& rect, ShapeKind kind,
                             double fill_value) {
  const MapCellRect cells = ToMapCellRect(rect);
  const SelectionValues current = ReadSelection(grid, cells);
  switch (kind) {
    case ShapeKind::kSmooth:
      return Smooth(current);
    case ShapeKind::kFill:
      return Fill(current, fill_value);
    case ShapeKind::kInterpolateRows:
      return Interpolate(current, AxesOfSelection(grid, cells), InterpolationDirection::kRows);
    case ShapeKind::kInterpolateColumns:
      return Interpolate(current, AxesOfSelection(grid, cells), InterpolationDirection::kColumns);
    case ShapeKind::kInterpolateBoth:
      break;
  }
  return Interpolate(current, AxesOfSelection(grid, cells), InterpolationDirection::kBoth);
}

}  // namespace

CellSelection SelectionFollowing(const MapGridModel& grid,
                                 const std::optional<CellSelection>& kept) {
  const CellRect shown = SelectionOf(grid);
  const MapCell cursor = grid.Current();
  if (kept && kept->Rect() == shown && kept->Active() == cursor) {
    CellSelection same = *kept;
    same.SetBounds(grid);
    return same;
  }
  // The cursor is a corner of the grid's selection after a click, a drag or a key; should it
  // lie inside, the selection grows from its top left.
  const bool corner = (cursor.row == shown.top || cursor.row == shown.bottom) &&
                      (cursor.column == shown.left || cursor.column == shown.right);
  const MapCell anchor = corner ? MapCell{cursor.row == shown.top ? shown.bottom : shown.top,
                                          cursor.column == shown.left ? shown.right : shown.left}
                                : MapCell{shown.top, shown.left};
  const MapCell active = corner ? cursor : MapCell{shown.bottom, shown.right};
  CellSelection selection(grid);
  selection.MoveTo(anchor);
  selection.ExtendTo(active);
  return selection;
}

BulkChange ShapeCells(MapGridModel& grid, const CellRect& rect, ShapeKind kind,
                      const DutyContext& duty, double fill_value) {
  const SelectionValues shaped = ShapedValues(grid, rect, kind, fill_value);
  if (!shaped.WellFormed() || shaped.rows != rect.RowCount() ||
      shaped.columns != rect.ColumnCount()) {
    return {};
  }
  return ApplyTargets(
      grid, rect,
      [&](int row, int column, double) { return shaped.At(row - rect.top, column - rect.left); },
      duty);
}

MapCell NearestCell(const MapGridModel& grid, double row, double column) {
  const auto nearest = [](double place, int last) {
    if (!std::isfinite(place)) return 1;
    return static_cast<int>(std::clamp(std::lround(place), 1L, static_cast<long>(last)));
  };
  return {nearest(row, kMapRows), nearest(column, grid.LoadSites())};
}

SheetBlock SheetBlockOf(const MapGridModel& grid, const CellRect& rect) {
  const SelectionValues values = ReadSelection(grid, ToMapCellRect(rect));
  SheetBlock block;
  block.rows = values.rows;
  block.columns = values.columns;
  block.values = values.values;
  block.decimals = CellDecimals(grid.Kind());
  return block;
}

SheetAxes SheetAxesOf(const MapGridModel& grid, const CellRect& rect) {
  SheetAxes axes;
  for (int row = rect.top; row <= rect.bottom; ++row) {
    axes.row_values.push_back(grid.RowRpm(row).value_or(std::numeric_limits<double>::quiet_NaN()));
  }
  for (int column = rect.left; column <= rect.right; ++column) {
    axes.column_values.push_back(grid.LoadSiteValue(column));
  }
  // The grid labels both axes in whole numbers (MapGridModel::LoadLabel, the RPM sites).
  axes.row_decimals = 0;
  axes.column_decimals = 0;
  return axes;
}

PasteArea PasteAreaOf(const MapGridModel& grid) {
  return {ToMapCellRect(WholeMap(grid)), grid.Current(), grid.Selection()};
}

BulkChange PasteCells(MapGridModel& grid, const std::vector<PasteCellValue>& cells,
                      const DutyContext& duty) {
  if (cells.empty()) return {};
  CellRect around{cells.front().cell.row, cells.front().cell.column, cells.front().cell.row,
                  cells.front().cell.column};
  for (const PasteCellValue& c : cells) {
    around.top = std::min(around.top, c.cell.row);
    around.bottom = std::max(around.bottom, c.cell.row);
    around.left = std::min(around.left, c.cell.column);
    around.right = std::max(around.right, c.cell.column);
  }
  const int width = around.ColumnCount();
  std::vector<double> targets(static_cast<std::size_t>(around.CellCount()),
                              std::numeric_limits<double>::quiet_NaN());
  for (const PasteCellValue& c : cells) {
    targets[static_cast<std::size_t>((c.cell.row - around.top) * width + c.cell.column -
                                     around.left)] = c.value;
  }
  return ApplyTargets(
      grid, around,
      [&](int row, int column, double) {
        return targets[static_cast<std::size_t>((row - around.top) * width + column - around.left)];
      },
      duty);
}

std::string OperationSummary(const OperationPreview& preview, MapKind kind, char decimal_mark) {
  std::string text = RangeText(preview, kind, decimal_mark) + ", ";
  text += preview.changed == 0 ? std::string("no cell changes")
                               : CountOf(preview.changed, "cell changes", "cells change");
  if (preview.capped > 0) text += ", " + std::to_string(preview.capped) + " held at the duty limit";
  if (preview.clamped > 0) {
    text += ", " + std::to_string(preview.clamped) + " held at the map's range";
  }
  return text;
}

std::vector<MapCell> WaitingCellsOf(const MapGridModel& grid, int map_start,
                                    const std::vector<int>& positions) {
  const int width = grid.Kind() == MapKind::kFuel ? 2 : 1;
  const int sites = grid.LoadSites();
  std::vector<MapCell> cells;
  for (const int position : positions) {
    const int offset = position - map_start;
    if (offset < 0 || offset % width != 0) continue;
    const int index = offset / width;
    const int site_row = index / sites;  // 0 = the lowest RPM site, grid row 11
    if (site_row >= kMapRows) continue;
    cells.push_back({kMapRows - site_row, index % sites + 1});
  }
  return cells;
}

}  // namespace vela
