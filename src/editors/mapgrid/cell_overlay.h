// What a grid and its graph show over a map's own values: per value cell a text in place of the
// value, a value for the graph, a ground colour, and a mark (a frame on the grid, a dot on the
// graph). A comparison fills one; an empty overlay leaves the grid as it is.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "editors/mapgrid/map_display.h"
#include "editors/mapgrid/map_grid_model.h"

namespace vela {

struct CellOverlay {
  std::optional<std::string> text;         // shown in place of the cell's value
  std::optional<double> value;             // the value the graph draws and the cell is coloured by
  std::optional<Rgb> ground;               // the cell's colour, in place of its value's colour
  std::optional<Rgb> mark;                 // a frame round the cell, a dot on the graph
  std::optional<std::string> description;  // what a screen reader says the colour means
  bool operator==(const CellOverlay&) const = default;
};

// The value cells of a grid, rows and columns numbered from 1 as the grid numbers them.
class GridOverlay {
 public:
  GridOverlay() = default;
  GridOverlay(int rows, int columns)
      : rows_(rows), columns_(columns), cells_(static_cast<std::size_t>(rows * columns)) {}

  bool Empty() const { return cells_.empty(); }
  int Rows() const { return rows_; }
  int Columns() const { return columns_; }
  void Set(MapCell cell, CellOverlay look) {
    if (Inside(cell.row, cell.column)) cells_[Index(cell.row, cell.column)] = std::move(look);
  }
  // Nothing outside the overlay's cells.
  const CellOverlay* At(int row, int column) const {
    return Inside(row, column) ? &cells_[Index(row, column)] : nullptr;
  }
  bool operator==(const GridOverlay&) const = default;

 private:
  bool Inside(int row, int column) const {
    return row >= 1 && row <= rows_ && column >= 1 && column <= columns_;
  }
  std::size_t Index(int row, int column) const {
    return static_cast<std::size_t>((row - 1) * columns_ + column - 1);
  }

  int rows_ = 0;
  int columns_ = 0;
  std::vector<CellOverlay> cells_;
};

}  // namespace vela
