// Copy and paste text that a spreadsheet understands: a block of map values written as
// tab-separated text with the computer's decimal mark, and tab-, semicolon- or comma-separated
// text read back into target values for the cells it covers. Applying the values (ranges, duty
// cap, sending) is the caller's business; this only reads, checks and places.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "editors/mapgrid/map_grid_model.h"

namespace vela {

// The axis values of a block or of a whole map: one per value row (the RPM of the row, in the
// grid's order, highest RPM first) and one per value column (the load of the column), each
// shown with its number of decimals. A NaN axis value stands for a row or column without one.
// No column values at all stands for a one-column table whose rows have an axis (a compensation
// table's temperatures or volts): its text is an axis column and a value column, no header row.
struct SheetAxes {
  std::vector<double> row_values;
  std::vector<double> column_values;
  int row_decimals = 0;
  int column_decimals = 0;
};

// A block of values, row by row, in display units (milliseconds, degrees).
struct SheetBlock {
  int rows = 0;
  int columns = 0;
  std::vector<double> values;  // rows x columns, row by row
  int decimals = 0;            // the decimals the map shows
  // When not empty, one count per row instead of `decimals` (the compensation tables).
  std::vector<int> row_decimals;
  double At(int row, int column) const {
    return values[static_cast<std::size_t>(row * columns + column)];
  }
};

// The block as text: cells split by tabs, each number with the block's decimals and
// `decimal_mark`, every row (the last too) ending in "\n". With `axes` (sized to the block), a
// header row of the column values and a first column of the row values come first, with an
// empty top-left cell; with row values only, the first column alone.
std::string SheetText(const SheetBlock& block, char decimal_mark, const SheetAxes* axes = nullptr);

// Where a paste lands: the map's value cells, the cursor and the selection as the grid holds them
// (a selection of one cell counts as none).
struct PasteArea {
  MapCellRect map;
  MapCell cursor;
  MapCellRect selection;
};

enum class PasteStatus {
  kFits,     // `cells` holds a target value for every cell the block covers
  kTooBig,   // the block is larger than the room it has; `cells` is what clipping would keep
  kRefused,  // nothing may be pasted; `refusal` says why
};

enum class PasteRefusal {
  kNone,
  kEmpty,         // no values at all
  kTooLong,       // text far beyond any map (kMaxPasteBytes)
  kNotANumber,    // a cell is empty or no number: `bad_row`, `bad_column`, `bad_text`
  kAmbiguous,     // a row reads as one grouped number or as several: `bad_row`, `bad_text`
  kAxisMismatch,  // an axis cell is not the map's axis value there: `bad_row`, `bad_column`
};

inline constexpr std::size_t kMaxPasteBytes = 1 << 20;

struct PasteCellValue {
  MapCell cell;
  double value;
  bool operator==(const PasteCellValue&) const = default;
};

struct SheetPaste {
  PasteStatus status = PasteStatus::kRefused;
  std::vector<PasteCellValue> cells;  // row by row
  // The values in the text (axis row and column left out), and the part that fits (kTooBig).
  int block_rows = 0;
  int block_columns = 0;
  int kept_rows = 0;
  int kept_columns = 0;
  bool room_is_selection = false;  // the room was the selection, not the map from the cursor
  bool had_axes = false;           // an axis row and column were recognised and skipped
  PasteRefusal refusal = PasteRefusal::kNone;
  int bad_row = 0;     // 1-based, as the row and column stand in the pasted text
  int bad_column = 0;  // 0 when a whole row is meant
  std::string bad_text;
};

// Reads `text` and places it at the top-left of the selection (or at the cursor when no
// selection is active). A single value fills a whole selection. `map_axes` (sized to the map's
// value rows and columns) lets an axis row and column in the text be recognised; on a one-column
// table with row values only, a two-column text is read as the axis column and the values. See
// docs/workbench.md for the reading rules.
SheetPaste ReadSheetPaste(std::string_view text, char decimal_mark, const PasteArea& area,
                          const SheetAxes* map_axes = nullptr);

// The words the tuner reads: why a paste was refused, and the question a block too big asks.
std::vector<std::string> PasteRefusalLines(const SheetPaste& paste);
std::vector<std::string> PasteTooBigLines(const SheetPaste& paste);

}  // namespace vela
