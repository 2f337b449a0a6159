#include "editors/mapgrid/key_routing.h"

namespace vela {

namespace {

char Upper(char letter) { return (letter >= 'a' && letter <= 'z') ? letter - 'a' + 'A' : letter; }

KeyRoute Route(KeyAction action) { return KeyRoute{action, -1}; }

constexpr KeyAction kPass = KeyAction::kPassToGrid;

// The log's chords, on the map pages only.
KeyRoute RouteLogKey(char letter, bool shift, const KeyContext& context) {
  if (shift || !IsMapPage(context.current_page)) return Route(kPass);
  if (letter == 'H') return Route(KeyAction::kLogOverlay);
  if (letter == 'M') return Route(KeyAction::kMarkCellTimes);
  return Route(kPass);
}

}  // namespace

bool IsMapPage(int page) {
  return page == kPageFuelMap1 || page == kPageFuelMap2 || page == kPageIgnition;
}

int PageOfLetter(char letter, int current_page) {
  switch (Upper(letter)) {
    case 'F':
      return current_page == kPageFuelMap1 ? kPageFuelMap2 : kPageFuelMap1;
    case 'I':
      return kPageIgnition;
    case 'T':
      return current_page == kPageOutputs ? kPageInputs : kPageOutputs;
    case 'C':
      return kPageCompensation;
    case 'M':
      return kPageMainSetup;
    case 'S':
      return kPageSensorSetup;
    case 'H':
      return kPageHelp;
    case 'D':
      return kPageDataPage;
    case 'O':
      return kPageFileOptions;
    case 'G':
      return kPageDataLogging;
    default:
      return -1;
  }
}

KeyRoute RouteMainWindowKey(const MapKeyPress& press, const KeyContext& context) {
  if (press.key == MapKey::kEnter) return Route(KeyAction::kInsertLiveValue);
  if (press.key == MapKey::kSpace) {
    // Off the map pages Space is the focused control's: it sets a tick box or option button.
    if (!IsMapPage(context.current_page)) return Route(KeyAction::kPassToGrid);
    return Route(context.previous_key_was_space ? KeyAction::kMovePointerToLoadSite
                                                : KeyAction::kDiscard);
  }
  if (press.key != MapKey::kLetter) return Route(KeyAction::kPassToGrid);
  const char letter = Upper(press.letter);
  if (press.control) {
    if (press.alt) return Route(KeyAction::kPassToGrid);
    if (letter == 'Z') return Route(press.shift ? KeyAction::kRedo : KeyAction::kUndo);
    if (letter == 'Y' && !press.shift) return Route(KeyAction::kRedo);
    if (letter == 'Q')
      return Route(press.shift ? KeyAction::kCompareChoose : KeyAction::kCompareView);
    if (letter == 'J' && !press.shift) return Route(KeyAction::kShowHistory);
    if (letter == 'T' && !press.shift && IsMapPage(context.current_page)) {
      return Route(KeyAction::kShowTargets);
    }
    if (letter == 'P' && !press.shift) return Route(KeyAction::kProposeFuel);
    if (const KeyRoute log = RouteLogKey(letter, press.shift, context); log.action != kPass) {
      return log;
    }
    return Route(KeyAction::kPassToGrid);
  }
  if (press.alt) {
    if (letter == 'A') return Route(KeyAction::kToggleAllRanges);
    if (letter == 'L') return Route(KeyAction::kToggleLiveTuning);
    if (letter == 'E') return Route(KeyAction::kRebuildGrids);
  } else {
    if (letter == 'U') return Route(KeyAction::kForceUpload);
    if (letter == 'L') return Route(KeyAction::kToggleDatalogging);
    if (letter == 'K') return Route(KeyAction::kDropMarker);
  }
  const int page = PageOfLetter(letter, context.current_page);
  if (page >= 0) return KeyRoute{KeyAction::kSelectPage, page};
  return Route(KeyAction::kPassToGrid);
}

}  // namespace vela
