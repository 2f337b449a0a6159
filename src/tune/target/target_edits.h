// The target table as the tuner edits it: the table in force and the steps to undo and redo,
// and a table carried over to other axes.
#pragma once

#include <cstddef>
#include <vector>

#include "calibration/map_values.h"
#include "tune/target/target_table.h"

namespace vela {

class TargetEdits {
 public:
  // The oldest steps go beyond this many.
  static constexpr std::size_t kMaxSteps = 200;

  explicit TargetEdits(TargetTable table) : table_(std::move(table)) {}

  const TargetTable& Table() const { return table_; }
  // A new table in force as one step; false (and no step) when it equals the present one.
  bool Change(TargetTable table);
  bool Undo();
  bool Redo();
  bool CanUndo() const { return !undo_.empty(); }
  bool CanRedo() const { return !redo_.empty(); }
  // A table from elsewhere (another file, other axes): in force with nothing to undo.
  void Reset(TargetTable table);

 private:
  TargetTable table_;
  std::vector<TargetTable> undo_;
  std::vector<TargetTable> redo_;
};

// `table` on other axes: each cell takes the target the old table gives at its RPM and load
// (between the four cells around it, held at the edges), rounded to 0.01.
TargetTable TargetOnAxes(const TargetTable& table, const TuneAxes& axes);

// The table as a grid's values (grid rows from the highest RPM) and back; values outside the
// table's range are held at its edges.
MapValues TargetValues(const TargetTable& table);
TargetTable TargetFromValues(const MapValues& values, const TuneAxes& axes);

}  // namespace vela
