#include "editors/workbench/cell_selection.h"

#include <algorithm>

namespace vela {

CellRect SpanOf(const MapGridModel& grid, MapCell corner, MapCell other_corner) {
  const auto row = [](int r) { return std::clamp(r, 1, kMapRows); };
  const auto column = [&grid](int c) { return std::clamp(c, 1, grid.LoadSites()); };
  return {row(std::min(corner.row, other_corner.row)),
          column(std::min(corner.column, other_corner.column)),
          row(std::max(corner.row, other_corner.row)),
          column(std::max(corner.column, other_corner.column))};
}

CellRect WholeMap(const MapGridModel& grid) { return {1, 1, kMapRows, grid.LoadSites()}; }

CellRect SelectionOf(const MapGridModel& grid) {
  const MapCellRect rect = grid.Selection();
  return SpanOf(grid, {rect.top, rect.left}, {rect.bottom, rect.right});
}

MapCellRect ToMapCellRect(const CellRect& rect) {
  return {rect.top, rect.left, rect.bottom, rect.right};
}

std::vector<MapCell> CellsOf(const CellRect& rect) {
  std::vector<MapCell> cells;
  if (rect.RowCount() <= 0 || rect.ColumnCount() <= 0) return cells;
  cells.reserve(static_cast<std::size_t>(rect.CellCount()));
  for (int row = rect.top; row <= rect.bottom; ++row) {
    for (int column = rect.left; column <= rect.right; ++column) cells.push_back({row, column});
  }
  return cells;
}

CellSelection::CellSelection(const MapGridModel& grid)
    : rows_(kMapRows),
      columns_(grid.LoadSites()),
      anchor_(grid.Current()),
      active_(grid.Current()) {}

CellRect CellSelection::Rect() const {
  return {std::min(anchor_.row, active_.row), std::min(anchor_.column, active_.column),
          std::max(anchor_.row, active_.row), std::max(anchor_.column, active_.column)};
}

MapCell CellSelection::Clamped(MapCell cell) const {
  return {std::clamp(cell.row, 1, rows_), std::clamp(cell.column, 1, columns_)};
}

void CellSelection::MoveTo(MapCell cell) {
  active_ = Clamped(cell);
  anchor_ = active_;
}

void CellSelection::ExtendBy(int rows, int columns) {
  ExtendTo({active_.row + rows, active_.column + columns});
}

void CellSelection::ExtendTo(MapCell cell) { active_ = Clamped(cell); }

void CellSelection::SelectAll() {
  anchor_ = {1, 1};
  active_ = {rows_, columns_};
}

void CellSelection::SetBounds(const MapGridModel& grid) {
  columns_ = grid.LoadSites();
  anchor_ = Clamped(anchor_);
  active_ = Clamped(active_);
}

}  // namespace vela
