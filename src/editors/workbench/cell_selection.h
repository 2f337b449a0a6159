// The cells a bulk operation acts on: a rectangle of value cells of a map grid (rows 1 to 11,
// columns 1 to the load sites), and the selection the tuner extends from an anchor with the
// selection keys or the mouse, or widens to the whole map.
#pragma once

#include <vector>

#include "editors/mapgrid/map_grid_model.h"

namespace vela {

// A rectangle of grid cells, bounds included. A rectangle made by the functions below is
// always ordered (top <= bottom, left <= right) and lies inside its grid's value cells.
struct CellRect {
  int top = 1;
  int left = 1;
  int bottom = 1;
  int right = 1;

  int RowCount() const { return bottom - top + 1; }
  int ColumnCount() const { return right - left + 1; }
  int CellCount() const { return RowCount() * ColumnCount(); }
  bool Contains(int row, int column) const {
    return row >= top && row <= bottom && column >= left && column <= right;
  }
  bool operator==(const CellRect&) const = default;
};

// The rectangle spanned by two corner cells in any order, clamped into the grid's value cells.
CellRect SpanOf(const MapGridModel& grid, MapCell corner, MapCell other_corner);
// Every value cell of the grid.
CellRect WholeMap(const MapGridModel& grid);
// The grid's own selection (what the value keys act on) and back.
CellRect SelectionOf(const MapGridModel& grid);
MapCellRect ToMapCellRect(const CellRect& rect);
// The rectangle's cells, row by row from the top, left to right.
std::vector<MapCell> CellsOf(const CellRect& rect);

// A selection held as an anchor (where it started) and an active cell (the moving corner, the
// grid's cursor). Moving collapses it onto one cell; extending moves only the active cell.
class CellSelection {
 public:
  // A selection of the grid's current cell; the grid gives the bounds (its size when made).
  explicit CellSelection(const MapGridModel& grid);

  MapCell Anchor() const { return anchor_; }
  MapCell Active() const { return active_; }
  CellRect Rect() const;

  // Collapses onto one cell (a plain click, a plain arrow key).
  void MoveTo(MapCell cell);
  // Moves the active corner by rows and columns (the selection keys), or to a cell (a drag).
  void ExtendBy(int rows, int columns);
  void ExtendTo(MapCell cell);
  // The whole map: anchor at the top left, the active corner at the bottom right.
  void SelectAll();
  // New bounds (the load sites changed); both corners are clamped into them.
  void SetBounds(const MapGridModel& grid);

 private:
  MapCell Clamped(MapCell cell) const;

  int rows_;
  int columns_;
  MapCell anchor_;
  MapCell active_;
};

}  // namespace vela
