// The values of one map as its editor grid holds them: grid rows 1 (top, the last RPM site) to
// 11 (bottom, the first RPM site) and load-site columns 1 to N. Row 0 and column 0 of the
// editor are axis headers and are not held here.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace vela {

inline constexpr int kMapRows = 11;

// Block row r (1 = first RPM site) is shown in grid row 12 - r, and the other way round.
constexpr int GridRowOfBlockRow(int block_row) { return kMapRows + 1 - block_row; }
constexpr int BlockRowOfGridRow(int grid_row) { return kMapRows + 1 - grid_row; }

class MapValues {
 public:
  // A grid of 11 rows and `columns` columns (none when negative), every value 0.
  explicit MapValues(int columns)
      : columns_(std::max(columns, 0)), values_(static_cast<std::size_t>(kMapRows * columns_)) {}

  int Rows() const { return kMapRows; }
  int Columns() const { return columns_; }

  // Outside the grid a read gives 0 and a write is ignored.
  double At(int grid_row, int column) const {
    return Holds(grid_row, column) ? values_[Index(grid_row, column)] : 0.0;
  }
  void Set(int grid_row, int column, double value) {
    if (Holds(grid_row, column)) values_[Index(grid_row, column)] = value;
  }

  bool operator==(const MapValues&) const = default;

 private:
  bool Holds(int grid_row, int column) const {
    return grid_row >= 1 && grid_row <= kMapRows && column >= 1 && column <= columns_;
  }
  std::size_t Index(int grid_row, int column) const {
    return static_cast<std::size_t>((grid_row - 1) * columns_ + (column - 1));
  }

  int columns_;
  std::vector<double> values_;
};

}  // namespace vela
