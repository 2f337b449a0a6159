// A change of many map cells at once (a typed operation, an interpolation, a paste), held to the
// rules of a key change: each cell is rounded to the map's stored step (a microsecond, half a
// degree) and kept inside the map's range, and a fuel map's duty cap is walked up every changed
// column to row 1, lowering any cell above 100 % injector duty at its row's RPM, above the
// changed cells too.
//
// Only the grid changes here. The caller writes the changed cells into the image and sends them
// with the single-value write: CellTransmission::OnCellsChanged with `changed` sends exactly
// these cells when the image held the grid's values before.
#pragma once

#include <functional>
#include <vector>

#include "editors/mapgrid/cell_transmission.h"
#include "editors/mapgrid/map_grid_model.h"
#include "editors/workbench/cell_selection.h"

namespace vela {

// What the duty limit of a fuel map depends on (see DutyLimitBase).
struct DutyContext {
  int ignition_divide = 1;
  bool third_injection_mode = false;
};
DutyContext DutyContextOf(const TransmissionSetup& setup);

struct BulkChange {
  // Cells whose stored value changed, in the order a transmission sends them: column by column
  // from the left, each from its lowest row upward.
  std::vector<MapCell> changed;
  int capped = 0;   // cells held at or lowered to their row's duty limit
  int clamped = 0;  // cells whose target lay beyond the map's range, held at its edge
  // The rectangle's values afterwards, in display units.
  double lowest = 0.0;
  double highest = 0.0;
};

// The new value of a cell in display units from its row, column and present value; NaN leaves
// the cell as it is.
using CellTarget = std::function<double(int row, int column, double current)>;

// Sets every cell of `rect` (clamped into the grid) to its target. A target beyond the map's
// range is held at the range's edge; a cell already beyond it (left there when the range
// narrowed) is never moved further out, as with the value keys. The grid's changed handler is
// not called.
BulkChange ApplyTargets(MapGridModel& grid, const CellRect& rect, const CellTarget& target,
                        const DutyContext& duty);

// A value in display units as whole cell units, rounded half to even; a product that lands a
// hair off a half (1.05 x 0.01 ms) is read as the half it stands for.
double CellUnitsOf(MapKind kind, double value);

}  // namespace vela
