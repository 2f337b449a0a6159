// Shaping a selection of cells: interpolation spaced by the real axis values, smoothing and fill.
// Each function reads the selection's current values and returns the values the tuner asked for,
// cell by cell; it changes no grid and knows no map rules. Ranges, the stored step and the duty
// cap are applied afterwards by whoever writes the values into the map, so a value returned here
// may be one the map cannot hold.
//
// Values are in whatever unit the caller reads them (the grids' display units: milliseconds,
// degrees); every rule here is linear, so the unit does not matter.
#pragma once

#include <vector>

#include "editors/mapgrid/map_grid_model.h"

namespace vela {

// The values of a rectangular selection, row by row: row 0 is the selection's top row as the
// grid shows it, column 0 its leftmost column. A block whose values do not number rows x columns
// is malformed; every function below returns a malformed block unchanged.
struct SelectionValues {
  int rows = 0;
  int columns = 0;
  std::vector<double> values;

  bool WellFormed() const;
  double At(int row, int column) const;
  void Set(int row, int column, double value);
  bool operator==(const SelectionValues&) const = default;
};

// The real axis value of each row and column of a selection: the engine speed of each row, top
// to bottom, and the load of each column, left to right. Either may run up or down. A value that
// is not a finite number (NaN for a row whose RPM is unknown), or a list whose length is not the
// block's, makes that axis unknown.
struct SelectionAxes {
  std::vector<double> row_rpm;
  std::vector<double> column_load;
};

enum class InterpolationDirection {
  kRows,     // each row runs straight from its first cell to its last, spaced by the load
  kColumns,  // each column runs straight from its top cell to its bottom, spaced by the RPM
  kBoth,     // bilinear from the four corner cells, spaced by both axes
};

// Interpolation between the selection's edge cells, spaced by the axis values rather than by
// the cell index. A cell's place along an axis is its distance from the first cell walked cell
// by cell (the sum of the absolute steps of the axis values) over the whole walk, so a
// descending axis spaces exactly as the same values ascending, and two cells on one axis value
// take one value. An axis that is unknown or whose walk is zero (all its values equal) is spaced
// evenly by cell index instead. kRows keeps the first and last column, kColumns the top and
// bottom row, kBoth the four corners; kBoth rewrites every other cell, the edges too, from the
// corners alone. A selection one cell wide along a direction has nothing to interpolate there.
SelectionValues Interpolate(const SelectionValues& current, const SelectionAxes& axes,
                            InterpolationDirection direction);

// One pass of a small weighted kernel (1-2-1 along each direction: 4 for the cell, 2 for each
// side neighbour, 1 for each corner neighbour, over 16) on the selection's interior cells, read
// from the values before the pass; the selection's edge cells stay as they are, so only
// neighbours inside the selection are ever read. A selection one cell thick (one row or one
// column, as a compensation table) is a line: its end cells stay and the cells between take
// 1-2-1 along it. A selection without interior cells (fewer than three cells along a line, or a
// block two cells thick) changes nothing. A straight ramp or plane comes out unchanged.
SelectionValues Smooth(const SelectionValues& current);

// Every cell of the selection takes `value` (the live operating point's cell value, which the
// caller picks).
SelectionValues Fill(const SelectionValues& current, double value);

// The selection `rect` of a map grid as it stands: its values in display units, and its axes
// (RowRpm of each row, NaN where the row has none; LoadSiteValue of each column). The rectangle
// is clamped into the grid's value cells first.
SelectionValues ReadSelection(const MapGridModel& grid, MapCellRect rect);
SelectionAxes AxesOfSelection(const MapGridModel& grid, MapCellRect rect);

}  // namespace vela
