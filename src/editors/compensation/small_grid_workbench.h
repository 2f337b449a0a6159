// The workbench on a small grid (a compensation table: one column of bytes): the selection of
// rows kept across the selection keys and the mouse, the typed line, interpolation spaced by the
// table's own axis, smoothing, and copy and paste, each worked out under the rules of the table's
// value keys and typed values: every row's target is converted to its stored byte as a typed
// value is, and held inside the row's limits. Nothing here writes the grid: the caller hands the
// change to SmallGridModel::Enter, which reports it like a key change.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "editors/compensation/small_grid_model.h"
#include "editors/workbench/cell_operation.h"
#include "editors/workbench/sheet_text.h"

namespace vela {

// The rows selected: the anchor (where the selection started) and the active row (the cursor).
struct RowSelection {
  int anchor = 0;
  int active = 0;
  int First() const { return anchor < active ? anchor : active; }
  int Last() const { return anchor < active ? active : anchor; }
  bool operator==(const RowSelection&) const = default;
};

// The selection that goes on from what the grid shows: `kept` while the grid still shows it
// (the selection keys left it); otherwise (a click, a drag, N or P) a new one anchored at the
// end opposite the cursor.
RowSelection RowSelectionFollowing(const SmallGridModel& grid,
                                   const std::optional<RowSelection>& kept);
// The active row moved by `rows`, kept on the grid.
RowSelection ExtendedBy(const SmallGridModel& grid, RowSelection selection, int rows);
// Every row: anchored at the top, the cursor on the last row.
RowSelection WholeTable(const SmallGridModel& grid);

// A change of rows, planned on the grid as it stands.
struct RowChange {
  std::vector<SmallRowValue> changed;  // rows whose byte changes, top to bottom
  int clamped = 0;  // rows whose target lay beyond their limits, held at the edge
  // The selection's shown values afterwards (lowest and highest) and the most decimals it shows.
  double lowest = 0.0;
  double highest = 0.0;
  int decimals = 0;
};

// The new shown value of a row from its present one; NaN leaves the row.
using RowTarget = std::function<double(int row, double current)>;

// Each row from `first` to `last` taken to its target: converted to the stored byte as a typed
// value is (made whole), then held inside the row's limits. A row already beyond them (left
// there by the ECU) is never pushed further out, as with the value keys.
RowChange PlanRows(const SmallGridModel& grid, int first, int last, const RowTarget& target);

// What the selected rows can hold, for reading the typed line: from the lowest to the highest
// value any of them holds, the finest stored step among them, their most decimals.
ValueBounds RowBoundsOf(const SmallGridModel& grid, int first, int last);
RowChange PlanOperation(const SmallGridModel& grid, int first, int last,
                        const CellOperation& operation);
// The typed line's preview: "2.0 .. 8.5, 3 cells change, 1 held at the table's range".
std::string RowChangeSummary(const RowChange& change, char decimal_mark);

// The axis a table's rows stand on (its labels as numbers: temperatures, volts), for the rows
// from `first` to `last`; nullopt when a label is no number (the throttle pump's rows are
// separate settings, not points along an axis).
std::optional<std::vector<double>> RowAxisOf(const SmallGridModel& grid, int first, int last);
// Interpolation from the first selected row to the last, spaced by the axis, and one pass of
// 1-2-1 smoothing keeping both end rows. Nothing (no change) on a table without an axis.
RowChange PlanInterpolation(const SmallGridModel& grid, int first, int last);
RowChange PlanSmoothing(const SmallGridModel& grid, int first, int last);
// Fill: every selected row takes the value of the row nearest `live_x` along the table's axis
// (the live air or water temperature, the battery volts), as the maps fill from the cell under
// the live point. Nothing (no change) on a table without an axis.
RowChange PlanFill(const SmallGridModel& grid, int first, int last, double live_x);

// Copy: the selected rows as a one-column block, each row with its own decimals.
SheetBlock RowSheetBlock(const SmallGridModel& grid, int first, int last);
// The axis column of a copy or a paste: the labels of rows `first` to `last` read as numbers
// (temperatures, volts), with no column values. None on the throttle pump's rows (no axis).
std::optional<SheetAxes> RowSheetAxes(const SmallGridModel& grid, int first, int last);
// Paste: where a block lands (rows as grid rows 1.., one column), and the rows it sets.
PasteArea RowPasteArea(const SmallGridModel& grid);
RowChange PlanPaste(const SmallGridModel& grid, const std::vector<PasteCellValue>& cells);

}  // namespace vela
