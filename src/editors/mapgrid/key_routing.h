// The main window's part of the keystrokes. The main window sees every key before the focused
// control; this decides what it does with one, as a pure function of the key and the window's
// state, so that the window only carries the action out.
#pragma once

#include <array>
#include <string_view>

#include "editors/mapgrid/map_keys.h"

namespace vela {

// The main window's tabs, by index.
inline constexpr std::array<std::string_view, 12> kPageTitles = {
    "&Fuel Map 1", "&Fuel Map 2",   "&Ignition Maps", "Ou&tputs",
    "Inpu&ts",     "&Compensation", "&Main Setup",    "&Sensor Setup",
    "&Help",       "&Data Page",    "File &Options",  "DataLo&gging"};
inline constexpr int kPageFuelMap1 = 0;
inline constexpr int kPageFuelMap2 = 1;
inline constexpr int kPageIgnition = 2;
inline constexpr int kPageOutputs = 3;
inline constexpr int kPageInputs = 4;
inline constexpr int kPageCompensation = 5;
inline constexpr int kPageMainSetup = 6;
inline constexpr int kPageSensorSetup = 7;
inline constexpr int kPageHelp = 8;
inline constexpr int kPageDataPage = 9;
inline constexpr int kPageFileOptions = 10;
inline constexpr int kPageDataLogging = 11;

enum class KeyAction {
  kPassToGrid,             // not the window's: the focused control gets the key
  kToggleAllRanges,        // Alt-A
  kToggleLiveTuning,       // Alt-L (live tuning of FuelMap1)
  kRebuildGrids,           // Alt-E: the grid set-up again
  kForceUpload,            // U or u
  kToggleDatalogging,      // L or l
  kDropMarker,             // K or k: a marker in the datalog
  kSelectPage,             // a page letter; `page` tells which
  kInsertLiveValue,        // Enter; the window inserts the live value when live tuning is on
  kMovePointerToLoadSite,  // the second of two Space presses in a row
  kDiscard,                // handled, nothing to do (a first Space)
  kUndo,                   // Ctrl-Z: the newest change of the edit history undone, on any page
  kRedo,                   // Ctrl-Y or Ctrl-Shift-Z
  kCompareView,    // Ctrl-Q: the map page's compared view cycles (current, other, difference)
  kCompareChoose,  // Ctrl-Shift-Q: choose what the editors' image is compared with
  kShowHistory,    // Ctrl-J: the history panel (changes and restore points)
  kProposeFuel,    // Ctrl-P: the fuel correction proposal for the fuel map page in front
  kLogOverlay,     // Ctrl-H on a map page: the log overlay's next layer
  kMarkCellTimes,  // Ctrl-M on a map page: the selected cells' times shaded on the datalog chart
  kShowTargets,    // Ctrl-T on a map page: the target AFR table
};

struct KeyRoute {
  KeyAction action = KeyAction::kPassToGrid;
  int page = -1;  // for kSelectPage
  bool operator==(const KeyRoute&) const = default;
};

// The window's state that the routing depends on.
struct KeyContext {
  int current_page = kPageFuelMap1;
  bool previous_key_was_space = false;
};

// Page letters: F, I, T, C, M, S, H, D, O and G in either case, alone, with Shift or with Alt.
// F shows Fuel Map 1, and Fuel Map 2 when Fuel Map 1 is up (a further F goes back); T shows
// Outputs, and Inputs when Outputs is up. Control with any key, and every key not named here
// (N, P, the value keys, Left/Right), pass to the grid. Enter never does, nor Space on a map
// page (two in a row move the pointer there); on any other page Space is the focused control's
// (a tick box or an option button). K drops a marker into the datalog.
KeyRoute RouteMainWindowKey(const MapKeyPress& press, const KeyContext& context);

// Fuel Map 1, Fuel Map 2 and Ignition Maps: the pages with a map grid.
bool IsMapPage(int page);

// The page a page letter selects from `current_page`; -1 for any other letter.
int PageOfLetter(char letter, int current_page);

}  // namespace vela
