// The workbench keys of the map grids: the operations on many cells at once, the edit history
// and the comparison, beside the value keys of the keystroke table (which stay as they are). The
// Help page shows them as a table of their own; `GridChordOf` tells which of them a key press on
// a grid is.
#pragma once

#include <array>
#include <string_view>

#include "editors/mapgrid/map_keys.h"

namespace vela {

struct WorkbenchKeyRow {
  std::string_view keys;
  std::string_view function;
};

inline constexpr WorkbenchKeyRow kWorkbenchKeyHeadings = {" Workbench Key", " Function"};

inline constexpr std::array<WorkbenchKeyRow, 24> kWorkbenchKeyRows = {{
    {"Ctrl-Shift-Arrows", "Extend the selection"},
    {"Ctrl-A", "Select the whole map or table"},
    {"= or a digit", "Set the selection to a typed value (12.5, =-5)"},
    {"* / + -", "Scale or shift it (*1.05, /2, +0.3, -3%)"},
    {"Enter, Escape", "Apply the typed line, or leave it"},
    {"Ctrl-B", "Interpolate both ways, spaced by RPM and load"},
    {"Ctrl-R", "Interpolate along each row"},
    {"Ctrl-Shift-R", "Interpolate along each column"},
    {"Ctrl-B, Ctrl-R", "On a compensation table: interpolate by its axis"},
    {"Ctrl-W", "Smooth the selection"},
    {"Ctrl-E", "Fill with the live operating point's cell"},
    {"Ctrl-C", "Copy the selection"},
    {"Ctrl-Shift-C", "Copy the selection with its RPM and load"},
    {"Ctrl-V", "Paste at the cursor or into the selection"},
    {"Ctrl-Z", "Undo the last change, on the ECU too"},
    {"Ctrl-Y", "Redo"},
    {"Ctrl-Shift-Z", "Redo"},
    {"Ctrl-J", "History of changes and restore points"},
    {"Ctrl-Q", "Compared view: current, other side, difference"},
    {"Ctrl-Shift-Q", "Choose the two sides to compare"},
    {"Ctrl-P", "Fuel correction proposal from the log (fuel maps)"},
    {"Ctrl-H", "Log overlay: off, time, mean AFR, spread, AFR error"},
    {"Ctrl-M", "Mark the selected cells' times on the datalog chart"},
    {"Ctrl-T", "Target AFR table, edited with these keys"},
}};

// What a key pressed on a map grid asks of the workbench.
enum class GridChord {
  kNone,
  kExtendUp,
  kExtendDown,
  kExtendLeft,
  kExtendRight,
  kSelectAll,
  kOpenLine,  // the typed line, starting with the typed character
  kInterpolateBoth,
  kInterpolateRows,
  kInterpolateColumns,
  kSmooth,
  kFill,
  kCopy,
  kCopyWithAxes,
  kPaste,
};

// `typed` is the character the key typed, 0 when none. Ctrl-Shift with an arrow extends the
// selection; the Ctrl chords above; `=`, a digit, `*`, `/`, `+` and `-` typed without Ctrl or Alt
// open the typed line. Everything else (the value keys among them) is no chord.
GridChord GridChordOf(const MapKeyPress& press, char typed);

}  // namespace vela
