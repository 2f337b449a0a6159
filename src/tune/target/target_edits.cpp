#include "tune/target/target_edits.h"

#include <algorithm>
#include <cmath>

namespace vela {

namespace {

// A target held inside the table's range and to the 0.01 the file and the grid keep.
double KeptTarget(double afr) {
  const double held = std::clamp(afr, kMinTargetAfr, kMaxTargetAfr);
  return std::round(held * 100.0) / 100.0;
}

}  // namespace

bool TargetEdits::Change(TargetTable table) {
  if (table == table_) return false;
  undo_.push_back(std::move(table_));
  if (undo_.size() > kMaxSteps) undo_.erase(undo_.begin());
  table_ = std::move(table);
  redo_.clear();
  return true;
}

bool TargetEdits::Undo() {
  if (undo_.empty()) return false;
  redo_.push_back(std::move(table_));
  table_ = std::move(undo_.back());
  undo_.pop_back();
  return true;
}

bool TargetEdits::Redo() {
  if (redo_.empty()) return false;
  undo_.push_back(std::move(table_));
  table_ = std::move(redo_.back());
  redo_.pop_back();
  return true;
}

void TargetEdits::Reset(TargetTable table) {
  table_ = std::move(table);
  undo_.clear();
  redo_.clear();
}

TargetTable TargetOnAxes(const TargetTable& table, const TuneAxes& axes) {
  TargetTable moved(axes);
  for (int row = 1; row <= axes.Rows(); ++row) {
    for (int column = 1; column <= axes.Columns(); ++column) {
      moved.Set(row, column, KeptTarget(table.AtPoint(axes.RowRpm(row), axes.ColumnLoad(column))));
    }
  }
  return moved;
}

MapValues TargetValues(const TargetTable& table) {
  const TuneAxes& axes = table.Axes();
  MapValues values(axes.Columns());
  for (int row = 1; row <= std::min(axes.Rows(), kMapRows); ++row) {
    for (int column = 1; column <= axes.Columns(); ++column) {
      values.Set(row, column, table.At(row, column));
    }
  }
  return values;
}

TargetTable TargetFromValues(const MapValues& values, const TuneAxes& axes) {
  TargetTable table(axes);
  const int rows = std::min(axes.Rows(), values.Rows());
  const int columns = std::min(axes.Columns(), values.Columns());
  for (int row = 1; row <= rows; ++row) {
    for (int column = 1; column <= columns; ++column) {
      table.Set(row, column, KeptTarget(values.At(row, column)));
    }
  }
  return table;
}

}  // namespace vela
