// The workbench's operations on a map grid, as the map pages carry them out: the selection kept
// across the selection keys and the mouse, shaping and pasting under the rules of a key change,
// the spreadsheet text of a selection, the words of the typed line's preview, and which cells of
// a grid are still waiting to go to the ECU.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "editors/mapgrid/map_grid_model.h"
#include "editors/workbench/bulk_change.h"
#include "editors/workbench/cell_operation.h"
#include "editors/workbench/cell_selection.h"
#include "editors/workbench/sheet_text.h"

namespace vela {

// A selection that goes on from what the grid shows: when the grid's selection is still the one
// `kept` left (the selection keys), it is kept; otherwise (a click, a drag, a plain arrow key)
// a new one starts with its anchor at the corner opposite the grid's cursor.
CellSelection SelectionFollowing(const MapGridModel& grid,
                                 const std::optional<CellSelection>& kept);

enum class ShapeKind { kInterpolateBoth, kInterpolateRows, kInterpolateColumns, kSmooth, kFill };

// Shapes the cells of `rect` (interpolation spaced by the axes, smoothing, or a fill with
// `fill_value`) and applies the values under the map's rules (ApplyTargets).
BulkChange ShapeCells(MapGridModel& grid, const CellRect& rect, ShapeKind kind,
                      const DutyContext& duty, double fill_value = 0.0);

// The cell nearest a fractional grid position (the live operating point), inside the value cells.
MapCell NearestCell(const MapGridModel& grid, double row, double column);

// Copy: the values of `rect` with the decimals the map shows, and the axes of `rect` (each row's
// RPM, each column's load, as the grid labels them: whole numbers).
SheetBlock SheetBlockOf(const MapGridModel& grid, const CellRect& rect);
SheetAxes SheetAxesOf(const MapGridModel& grid, const CellRect& rect);
// Paste: where a block lands (the grid's cursor and selection).
PasteArea PasteAreaOf(const MapGridModel& grid);
// Sets the pasted cells' values under the map's rules; cells not in `cells` stay.
BulkChange PasteCells(MapGridModel& grid, const std::vector<PasteCellValue>& cells,
                      const DutyContext& duty);

// The typed line's preview: "12.500 .. 14.250, 42 cells change, 3 held at the duty limit".
std::string OperationSummary(const OperationPreview& preview, MapKind kind, char decimal_mark);

// The cells of a grid whose map starts at `map_start` that wait at these image positions (each
// the first byte of a cell), in the order given; positions outside the map are left out.
std::vector<MapCell> WaitingCellsOf(const MapGridModel& grid, int map_start,
                                    const std::vector<int>& positions);

}  // namespace vela
