#include "editors/mapgrid/key_routing.h"

#include <gtest/gtest.h>

#include "editors/mapgrid/grid_setup.h"
#include "editors/mapgrid/keystroke_table.h"
#include "editors/mapgrid/map_display.h"

namespace vela {
namespace {

MapKeyPress Letter(char letter, bool alt = false, bool control = false) {
  MapKeyPress press;
  press.key = MapKey::kLetter;
  press.letter = letter;
  press.alt = alt;
  press.control = control;
  return press;
}

MapKeyPress Key(MapKey key) {
  MapKeyPress press;
  press.key = key;
  return press;
}

KeyRoute Action(KeyAction action) { return KeyRoute{action, -1}; }
KeyRoute Page(int page) { return KeyRoute{KeyAction::kSelectPage, page}; }

TEST(MainWindowKeys, AltKeysToggleModesAndRebuildTheGrids) {
  const KeyContext context;
  EXPECT_EQ(RouteMainWindowKey(Letter('a', true), context), Action(KeyAction::kToggleAllRanges));
  EXPECT_EQ(RouteMainWindowKey(Letter('L', true), context), Action(KeyAction::kToggleLiveTuning));
  EXPECT_EQ(RouteMainWindowKey(Letter('e', true), context), Action(KeyAction::kRebuildGrids));
  EXPECT_EQ(RouteMainWindowKey(Letter('u'), context), Action(KeyAction::kForceUpload));
  EXPECT_EQ(RouteMainWindowKey(Letter('U'), context), Action(KeyAction::kForceUpload));
  EXPECT_EQ(RouteMainWindowKey(Letter('l'), context), Action(KeyAction::kToggleDatalogging));
  EXPECT_EQ(RouteMainWindowKey(Letter('K'), context), Action(KeyAction::kDropMarker));
}

TEST(MainWindowKeys, PageLettersInEitherCaseBringTheirPageToTheFront) {
  const KeyContext on_help{kPageHelp, false};
  const std::vector<std::pair<char, int>> letters = {
      {'f', kPageFuelMap1},     {'I', kPageIgnition},  {'t', kPageOutputs},
      {'C', kPageCompensation}, {'m', kPageMainSetup}, {'S', kPageSensorSetup},
      {'h', kPageHelp},         {'D', kPageDataPage},  {'o', kPageFileOptions},
      {'G', kPageDataLogging}};
  for (const auto& [letter, page] : letters) {
    EXPECT_EQ(RouteMainWindowKey(Letter(letter), on_help), Page(page)) << letter;
  }
  EXPECT_EQ(RouteMainWindowKey(Letter('s', true), on_help), Page(kPageSensorSetup));
}

TEST(MainWindowKeys, RepeatedFAndTStepThroughThePagesSharingTheLetter) {
  EXPECT_EQ(RouteMainWindowKey(Letter('F'), {kPageFuelMap1, false}), Page(kPageFuelMap2));
  EXPECT_EQ(RouteMainWindowKey(Letter('F'), {kPageFuelMap2, false}), Page(kPageFuelMap1));
  EXPECT_EQ(RouteMainWindowKey(Letter('T'), {kPageOutputs, false}), Page(kPageInputs));
  EXPECT_EQ(RouteMainWindowKey(Letter('T'), {kPageInputs, false}), Page(kPageOutputs));
  EXPECT_EQ(kPageTitles[kPageOutputs], "Ou&tputs");
  EXPECT_EQ(kPageTitles[kPageInputs], "Inpu&ts");
  EXPECT_EQ(kPageTitles[kPageDataLogging], "DataLo&gging");
}

TEST(MainWindowKeys, EnterAndSpaceNeverReachTheGrid) {
  EXPECT_EQ(RouteMainWindowKey(Key(MapKey::kEnter), {}), Action(KeyAction::kInsertLiveValue));
  EXPECT_EQ(RouteMainWindowKey(Key(MapKey::kSpace), {kPageFuelMap1, false}),
            Action(KeyAction::kDiscard));
  EXPECT_EQ(RouteMainWindowKey(Key(MapKey::kSpace), {kPageFuelMap1, true}),
            Action(KeyAction::kMovePointerToLoadSite));
  EXPECT_EQ(RouteMainWindowKey(Key(MapKey::kSpace), {kPageIgnition, false}),
            Action(KeyAction::kDiscard));
}

TEST(MainWindowKeys, OffTheMapPagesSpaceIsTheFocusedControls) {
  for (const int page : {kPageOutputs, kPageInputs, kPageCompensation, kPageMainSetup,
                         kPageSensorSetup, kPageDataPage, kPageFileOptions, kPageDataLogging}) {
    for (const bool after_space : {false, true}) {
      EXPECT_EQ(RouteMainWindowKey(Key(MapKey::kSpace), {page, after_space}),
                Action(KeyAction::kPassToGrid))
          << page;
    }
  }
}

TEST(MainWindowKeys, GridKeysAndControlCombinationsPassThrough) {
  const KeyContext context;
  for (MapKey key : {MapKey::kUp, MapKey::kDown, MapKey::kLeft, MapKey::kRight, MapKey::kPageUp,
                     MapKey::kPageDown, MapKey::kOther}) {
    EXPECT_EQ(RouteMainWindowKey(Key(key), context), Action(KeyAction::kPassToGrid));
  }
  EXPECT_EQ(RouteMainWindowKey(Letter('n'), context), Action(KeyAction::kPassToGrid));
  EXPECT_EQ(RouteMainWindowKey(Letter('P'), context), Action(KeyAction::kPassToGrid));
  EXPECT_EQ(RouteMainWindowKey(Letter('f', false, true), context), Action(KeyAction::kPassToGrid));
  EXPECT_EQ(RouteMainWindowKey(Letter('u', true), context), Action(KeyAction::kPassToGrid));
}

// The edit history's chords work on every page, whatever the case; Ctrl with a page letter or a
// grid letter stays the grid's.
TEST(MainWindowKeys, HistoryChordsUndoAndRedoOnEveryPage) {
  for (int page : {kPageFuelMap1, kPageMainSetup, kPageHelp}) {
    const KeyContext context{page, false};
    EXPECT_EQ(RouteMainWindowKey(Letter('z', false, true), context), Action(KeyAction::kUndo));
    MapKeyPress shifted = Letter('Z', false, true);
    shifted.shift = true;
    EXPECT_EQ(RouteMainWindowKey(shifted, context), Action(KeyAction::kRedo));
    EXPECT_EQ(RouteMainWindowKey(Letter('Y', false, true), context), Action(KeyAction::kRedo));
    EXPECT_EQ(RouteMainWindowKey(Letter('d', false, true), context),
              Action(KeyAction::kPassToGrid));
    EXPECT_EQ(RouteMainWindowKey(Letter('z', true, true), context), Action(KeyAction::kPassToGrid));
  }
}

// The log's chords belong to the map pages; elsewhere, shifted or with Alt they stay the grid's.
TEST(MainWindowKeys, LogChordsOnTheMapPagesOnly) {
  for (int page : {kPageFuelMap1, kPageFuelMap2, kPageIgnition}) {
    const KeyContext context{page, false};
    EXPECT_EQ(RouteMainWindowKey(Letter('h', false, true), context),
              Action(KeyAction::kLogOverlay));
    EXPECT_EQ(RouteMainWindowKey(Letter('M', false, true), context),
              Action(KeyAction::kMarkCellTimes));
    MapKeyPress shifted = Letter('H', false, true);
    shifted.shift = true;
    EXPECT_EQ(RouteMainWindowKey(shifted, context), Action(KeyAction::kPassToGrid));
    EXPECT_EQ(RouteMainWindowKey(Letter('m', true, true), context), Action(KeyAction::kPassToGrid));
  }
  for (int page : {kPageHelp, kPageDataLogging}) {
    EXPECT_EQ(RouteMainWindowKey(Letter('h', false, true), {page, false}),
              Action(KeyAction::kPassToGrid));
  }
}

// Ctrl-Q cycles the compared view and Ctrl-Shift-Q chooses the other side, on every page (the
// window says when there is nothing to do); bare Q and Alt-Ctrl-Q stay the grid's.
TEST(MainWindowKeys, CompareChordsOnEveryPage) {
  for (int page : {kPageFuelMap1, kPageIgnition, kPageCompensation}) {
    const KeyContext context{page, false};
    EXPECT_EQ(RouteMainWindowKey(Letter('q', false, true), context),
              Action(KeyAction::kCompareView));
    MapKeyPress shifted = Letter('Q', false, true);
    shifted.shift = true;
    EXPECT_EQ(RouteMainWindowKey(shifted, context), Action(KeyAction::kCompareChoose));
    EXPECT_EQ(RouteMainWindowKey(Letter('q'), context), Action(KeyAction::kPassToGrid));
    EXPECT_EQ(RouteMainWindowKey(Letter('q', true, true), context), Action(KeyAction::kPassToGrid));
  }
}

// Ctrl-J opens the history panel from any page; with Shift or Alt it stays the grid's, and a
// bare J is no key of the window.
TEST(MainWindowKeys, CtrlJShowsTheHistoryOnEveryPage) {
  for (int page : {kPageFuelMap1, kPageIgnition, kPageMainSetup, kPageDataLogging}) {
    const KeyContext context{page, false};
    EXPECT_EQ(RouteMainWindowKey(Letter('j', false, true), context),
              Action(KeyAction::kShowHistory));
    EXPECT_EQ(RouteMainWindowKey(Letter('J', false, true), context),
              Action(KeyAction::kShowHistory));
    MapKeyPress shifted = Letter('J', false, true);
    shifted.shift = true;
    EXPECT_EQ(RouteMainWindowKey(shifted, context), Action(KeyAction::kPassToGrid));
    EXPECT_EQ(RouteMainWindowKey(Letter('j', true, true), context), Action(KeyAction::kPassToGrid));
    EXPECT_EQ(RouteMainWindowKey(Letter('j'), context), Action(KeyAction::kPassToGrid));
  }
}

// Ctrl-T opens the target AFR table from a map page only; elsewhere, with Shift or with Alt it
// is no key of the window, and a bare T still picks the Outputs page.
TEST(MainWindowKeys, CtrlTShowsTheTargetsFromAMapPage) {
  for (int page : {kPageFuelMap1, kPageFuelMap2, kPageIgnition}) {
    const KeyContext context{page, false};
    EXPECT_EQ(RouteMainWindowKey(Letter('t', false, true), context),
              Action(KeyAction::kShowTargets));
    MapKeyPress shifted = Letter('T', false, true);
    shifted.shift = true;
    EXPECT_EQ(RouteMainWindowKey(shifted, context), Action(KeyAction::kPassToGrid));
    EXPECT_EQ(RouteMainWindowKey(Letter('t', true, true), context), Action(KeyAction::kPassToGrid));
    EXPECT_EQ(RouteMainWindowKey(Letter('t'), context).action, KeyAction::kSelectPage);
  }
  for (int page : {kPageMainSetup, kPageDataLogging}) {
    EXPECT_EQ(RouteMainWindowKey(Letter('t', false, true), KeyContext{page, false}),
              Action(KeyAction::kPassToGrid));
  }
}

TEST(KeystrokeTable, HoldsTheEnglishAndGermanRowsInOrder) {
  EXPECT_EQ(kKeystrokeHeadings.keystroke, " Keystroke");
  EXPECT_EQ(kKeystrokeHeadings.function, " Function");
  EXPECT_EQ(kKeystrokeRows[8].function, " 1ms Tuning Increment");
  EXPECT_EQ(kKeystrokeRows[21].keystroke, "F,I,T,C,M,S,H,D,O,G");
  EXPECT_EQ(kKeystrokeRows.back().function, "Move Fuel/Ign map pointer to active loadsite");
  EXPECT_EQ(kKeystrokeHeadingsGerman.keystroke, " Tasten");
  EXPECT_EQ(kKeystrokeHeadingsGerman.function, " Funktion");
  EXPECT_EQ(kKeystrokeRowsGerman[7].keystroke, "Bild Ab");
  EXPECT_EQ(kKeystrokeRowsGerman[8].keystroke, "Linker Pfeil");
  EXPECT_EQ(kKeystrokeRowsGerman[11].function, "vorheriger Drehzahlbereich");
  EXPECT_EQ(kKeystrokeRowsGerman.back().function, "Fugt den Live Tuning Wert ein");
  // From "Left Arrow" on, the German keys follow the English ones.
  for (std::size_t i = 10; i < kKeystrokeRowsGerman.size(); ++i) {
    EXPECT_EQ(kKeystrokeRowsGerman[i].keystroke, kKeystrokeRows[i + 4].keystroke);
  }
}

TEST(GridGeometry, LoadSiteColumnsShareTheWidthLeftAfterTheReservedWidth) {
  // Made whole: to the nearest, a half to the even neighbour.
  EXPECT_EQ(ColumnWidthsFor(9000, 9), (ColumnWidths{1296, 856}));   // 7700 / 9 = 855.6
  EXPECT_EQ(ColumnWidthsFor(9000, 13), (ColumnWidths{1005, 615}));  // 8000 / 13 = 615.4
  EXPECT_EQ(ColumnWidthsFor(9000, 17), (ColumnWidths{908, 476}));   // 8100 / 17 = 476.47
  EXPECT_EQ(ColumnWidthsFor(6000, 5), (ColumnWidths{1300, 940}));
  EXPECT_EQ(ColumnWidthsFor(4303, 6), (ColumnWidths{1303, 500}));  // 3003 / 6 = 500.5
  EXPECT_EQ(ColumnWidthsFor(4309, 6), (ColumnWidths{1297, 502}));  // 3009 / 6 = 501.5
  EXPECT_EQ(ColumnWidthsFor(1000, 9), (ColumnWidths{1000, 0}));
  EXPECT_EQ(ColumnWidthsFor(9000, 0), (ColumnWidths{9000, 0}));
}

TEST(GridSetup, AnImageWithoutLoadSitesBuildsNineFuelAndFiveIgnitionColumns) {
  const GridLoadSites sites = LoadSitesForGrids(0, 0);
  EXPECT_EQ(sites, (GridLoadSites{9, 5}));
  EXPECT_EQ(LoadSitesForGrids(17, 6), (GridLoadSites{17, 6}));
  MapGridModel fuel(MapKind::kFuel, 13);
  SetUpMapGrid(fuel, kTitleFuel2, sites.fuel);
  EXPECT_EQ(fuel.Rows(), 12);
  EXPECT_EQ(fuel.Columns(), 10);
  EXPECT_EQ(fuel.Text(0, 0), "Fuel 2");
  EXPECT_EQ(fuel.Text(0, 9), "250");
  MapGridModel ign(MapKind::kIgnition, 6);
  SetUpMapGrid(ign, kTitleIgnition, sites.ignition);
  EXPECT_EQ(ign.Columns(), 6);
  EXPECT_EQ(ign.Text(0, 0), "Ignition");
  EXPECT_EQ(ign.Text(0, 3), "1000");
}

TEST(GridSetup, FillingFromTheImageShowsTheBottomBlockRowAtTheBottom) {
  CalibrationImage image;
  image.SetByte(995, 1);  // 13 fuel load sites
  image.SetFuelMs(2, 1, 1, 2.5);
  image.SetFuelMs(2, 11, 13, 9.876);
  image.SetIgnDegrees(1, 5, 12.5);
  MapGridModel fuel(MapKind::kFuel, 9);
  FillFuelGrid(fuel, image, 2);
  EXPECT_EQ(fuel.LoadSites(), 13);
  EXPECT_EQ(fuel.Text(11, 1), "2.500");
  EXPECT_EQ(fuel.Text(1, 13), "9.876");
  MapGridModel ign(MapKind::kIgnition, 5);
  FillIgnGrid(ign, image);
  EXPECT_EQ(ign.Text(11, 5), "12.5");
  EXPECT_EQ(ign.Text(11, 4), "99.0");
}

TEST(MapDisplay, ColourRampRunsBlueGreenRedAndClampsOutsideTheRange) {
  EXPECT_EQ(RampColour(0.0), (Rgb{40, 70, 220}));
  EXPECT_EQ(RampColour(0.5), (Rgb{60, 200, 80}));
  EXPECT_EQ(RampColour(1.0), (Rgb{220, 50, 40}));
  EXPECT_EQ(RampColour(-3.0), RampColour(0.0));
  EXPECT_EQ(RampColour(7.0), RampColour(1.0));
  EXPECT_EQ(RangeFraction({100, 300}, 250), 0.75);
  EXPECT_EQ(RangeFraction({100, 100}, 100), 0.5);
}

TEST(MapDisplay, ValueAxisGetsRoundEndsAndSteps) {
  const AxisScale fuel = NiceScale(0.0, 11.493, 5);
  EXPECT_DOUBLE_EQ(fuel.min, 0.0);
  EXPECT_DOUBLE_EQ(fuel.max, 12.0);
  EXPECT_EQ(fuel.segments, 6);
  const AxisScale ign = NiceScale(-3.5, 36.0, 5);
  EXPECT_DOUBLE_EQ(ign.min, -10.0);
  EXPECT_DOUBLE_EQ(ign.max, 40.0);
  EXPECT_EQ(ign.segments, 5);
  const AxisScale flat = NiceScale(5.0, 5.0, 5);
  EXPECT_LT(flat.min, 5.0);
  EXPECT_GT(flat.max, 5.0);
}

// Ctrl-P asks for the fuel proposal on every page (the window says so off the fuel maps); with
// Shift or Alt it stays the grid's, and a bare P is the grid's value key.
TEST(MainWindowKeys, CtrlPProposesFuelAndNothingElseDoes) {
  for (int page : {kPageFuelMap1, kPageFuelMap2, kPageIgnition, kPageHelp}) {
    const KeyContext context{page, false};
    EXPECT_EQ(RouteMainWindowKey(Letter('p', false, true), context),
              Action(KeyAction::kProposeFuel));
    MapKeyPress shifted = Letter('P', false, true);
    shifted.shift = true;
    EXPECT_EQ(RouteMainWindowKey(shifted, context), Action(KeyAction::kPassToGrid));
    EXPECT_EQ(RouteMainWindowKey(Letter('p', true, true), context), Action(KeyAction::kPassToGrid));
    EXPECT_EQ(RouteMainWindowKey(Letter('p'), context), Action(KeyAction::kPassToGrid));
  }
}

}  // namespace
}  // namespace vela
