#include "editors/mapgrid/key_routing.h"

#include <gtest/gtest.h>

#include "editors/mapgrid/grid_setup.h"
#include "editors/mapgrid/map_display.h"
#include "support/map_key_presses.h"

namespace vela {
namespace {

using testing::KeyPress;

// A letter with Alt or Control.
MapKeyPress Letter(char letter, bool alt = false, bool control = false) {
  return testing::LetterPress(letter, false, alt, control);
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
}

TEST(MainWindowKeys, EnterAndSpaceNeverReachTheGrid) {
  EXPECT_EQ(RouteMainWindowKey(KeyPress(MapKey::kEnter), {}), Action(KeyAction::kInsertLiveValue));
  EXPECT_EQ(RouteMainWindowKey(KeyPress(MapKey::kSpace), {kPageFuelMap1, false}),
            Action(KeyAction::kDiscard));
  EXPECT_EQ(RouteMainWindowKey(KeyPress(MapKey::kSpace), {kPageFuelMap1, true}),
            Action(KeyAction::kMovePointerToLoadSite));
  EXPECT_EQ(RouteMainWindowKey(KeyPress(MapKey::kSpace), {kPageIgnition, false}),
            Action(KeyAction::kDiscard));
}

TEST(MainWindowKeys, OffTheMapPagesSpaceIsTheFocusedControls) {
  for (const int page : {kPageOutputs, kPageInputs, kPageCompensation, kPageMainSetup,
                         kPageSensorSetup, kPageDataPage, kPageFileOptions, kPageDataLogging}) {
    for (const bool after_space : {false, true}) {
      EXPECT_EQ(RouteMainWindowKey(KeyPress(MapKey::kSpace), {page, after_space}),
                Action(KeyAction::kPassToGrid))
          << page;
    }
  }
}

TEST(MainWindowKeys, GridKeysAndControlCombinationsPassThrough) {
  const KeyContext context;
  for (MapKey key : {MapKey::kUp, MapKey::kDown, MapKey::kLeft, MapKey::kRight, MapKey::kPageUp,
                     MapKey::kPageDown, MapKey::kOther}) {
    EXPECT_EQ(RouteMainWindowKey(KeyPress(key), context), Action(KeyAction::kPassToGrid));
  }
  EXPECT_EQ(RouteMainWindowKey(Letter('n'), context), Action(KeyAction::kPassToGrid));
  EXPECT_EQ(RouteMainWindowKey(Letter('P'), context), Action(KeyAction::kPassToGrid));
  EXPECT_EQ(RouteMainWindowKey(Letter('f', false, true), context), Action(KeyAction::kPassToGrid));
  EXPECT_EQ(RouteMainWindowKey(Letter('u', true), context), Action(KeyAction::kPassToGrid));
}

// A Ctrl chord of each kind, in either case of its letter: what it does on a map page and what it
// does on the other pages (the chords each end-to-end test presses reach their action there).
// With Alt added every chord is the grid's.
TEST(MainWindowKeys, CtrlChordsActWhereTheyBelong) {
  const KeyAction pass = KeyAction::kPassToGrid;
  struct Chord {
    char letter;
    bool shift;
    KeyAction on_map_page;
    KeyAction elsewhere;
  };
  const Chord chords[] = {
      {'z', false, KeyAction::kUndo, KeyAction::kUndo},
      {'z', true, KeyAction::kRedo, KeyAction::kRedo},
      {'t', false, KeyAction::kShowTargets, pass},
      {'t', true, pass, pass},
      {'h', false, KeyAction::kLogOverlay, pass},
      {'d', false, pass, pass},
  };
  for (const Chord& chord : chords) {
    for (const int page : {kPageFuelMap1, kPageFuelMap2, kPageIgnition, kPageMainSetup,
                           kPageCompensation, kPageHelp, kPageDataLogging}) {
      const KeyAction expected = IsMapPage(page) ? chord.on_map_page : chord.elsewhere;
      for (const char letter : {chord.letter, static_cast<char>(chord.letter - 'a' + 'A')}) {
        SCOPED_TRACE(::testing::Message()
                     << letter << " shift " << chord.shift << " page " << page);
        MapKeyPress press = Letter(letter, false, true);
        press.shift = chord.shift;
        EXPECT_EQ(RouteMainWindowKey(press, {page, false}), Action(expected));
        press.alt = true;
        EXPECT_EQ(RouteMainWindowKey(press, {page, false}), Action(pass));
      }
    }
  }
  // Bare, the chords' letters are the grid's, or pick a page.
  for (const char letter : {'q', 'j', 'p'}) {
    EXPECT_EQ(RouteMainWindowKey(Letter(letter), {kPageFuelMap1, false}), Action(pass));
  }
  EXPECT_EQ(RouteMainWindowKey(Letter('t'), {kPageFuelMap1, false}).action, KeyAction::kSelectPage);
}

TEST(GridGeometry, LoadSiteColumnsShareTheWidthLeftAfterTheReservedWidth) {
  // Made whole: to the nearest, a half to the even neighbour.
  EXPECT_EQ(ColumnWidthsFor(9000, 9), (ColumnWidths{1296, 856}));  // 7700 / 9 = 855.6
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

}  // namespace
}  // namespace vela
