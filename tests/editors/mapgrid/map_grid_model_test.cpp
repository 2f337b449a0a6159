#include "editors/mapgrid/map_grid_model.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/map_key_presses.h"

namespace vela {
namespace {

using ::testing::ElementsAre;

using testing::KeyPress;
using testing::LetterPress;

struct KeyCase {
  MapKeyPress press;
  int fuel_units;      // microseconds
  int ignition_units;  // half degrees
};

// One key of each modifier (the downward keys mirror the upward ones; the one- and two-millisecond
// keys again below).
TEST(MapGridValueKeys, EachKeyStepsFuelAndIgnitionCellsByItsFixedAmount) {
  const std::vector<KeyCase> cases = {
      {KeyPress(MapKey::kUp), 100, 2},
      {KeyPress(MapKey::kDown, true), -10, -1},
      {KeyPress(MapKey::kUp, false, true), 1, 1},
      {KeyPress(MapKey::kPageUp), 500, 10},
      {KeyPress(MapKey::kPageDown, true), -1000, 0},
      {KeyPress(MapKey::kPageUp, false, true), 2000, 0},
  };
  for (const KeyCase& c : cases) {
    MapGridModel fuel(MapKind::kFuel, 9);
    fuel.SetUnits(5, 3, 10000);
    fuel.SetCurrent(5, 3);
    EXPECT_TRUE(fuel.HandleKey(c.press));
    EXPECT_EQ(fuel.Units(5, 3), 10000 + c.fuel_units);

    MapGridModel ign(MapKind::kIgnition, 5);
    ign.SetUnits(5, 3, 40);
    ign.SetCurrent(5, 3);
    EXPECT_TRUE(ign.HandleKey(c.press));
    EXPECT_EQ(ign.Units(5, 3), 40 + c.ignition_units);
  }
}

TEST(MapGridValueKeys, OneAndTwoMillisecondKeysStayExactOverManyPresses) {
  MapGridModel grid(MapKind::kFuel, 9);
  grid.SetValue(1, 1, 1.234);
  grid.SetCurrent(1, 1);
  for (int i = 0; i < 7; ++i) grid.HandleKey(KeyPress(MapKey::kPageUp, true));
  for (int i = 0; i < 3; ++i) grid.HandleKey(KeyPress(MapKey::kPageUp, false, true));
  EXPECT_EQ(grid.Text(1, 1), "14.234");
  for (int i = 0; i < 5; ++i) grid.HandleKey(KeyPress(MapKey::kPageDown, false, true));
  EXPECT_EQ(grid.Text(1, 1), "4.234");
  for (int i = 0; i < 999; ++i) grid.HandleKey(KeyPress(MapKey::kUp, false, true));
  EXPECT_EQ(grid.Text(1, 1), "5.233");
}

TEST(MapGridValueKeys, ValuesClampAtTheEndsOfTheirRange) {
  MapGridModel fuel(MapKind::kFuel, 9);
  fuel.SetValue(2, 2, 64.9);
  fuel.SetCurrent(2, 2);
  fuel.HandleKey(KeyPress(MapKey::kPageUp, false, true));
  EXPECT_EQ(fuel.Text(2, 2), "65.535");
  fuel.SetValue(2, 2, 0.5);
  fuel.HandleKey(KeyPress(MapKey::kPageDown, true));
  EXPECT_EQ(fuel.Text(2, 2), "0.000");

  MapGridModel ign(MapKind::kIgnition, 5);
  ign.SetValue(1, 1, 97.0);
  ign.SetCurrent(1, 1);
  ign.HandleKey(KeyPress(MapKey::kPageUp));
  EXPECT_EQ(ign.Text(1, 1), "99.0");
  ign.SetValue(1, 1, -27.0);
  ign.HandleKey(KeyPress(MapKey::kPageDown));
  EXPECT_EQ(ign.Text(1, 1), "-28.5");
}

TEST(MapGridValueKeys, MaxmsCapsFuelKeysAndTypedValues) {
  MapGridModel grid(MapKind::kFuel, 9);
  MapGridSettings settings;
  settings.maxms = 25.0;
  grid.SetSettings(settings);
  grid.SetValue(1, 1, 24.5);
  grid.SetCurrent(1, 1);
  grid.HandleKey(KeyPress(MapKey::kPageUp, true));
  EXPECT_EQ(grid.Text(1, 1), "25.000");
  EXPECT_TRUE(grid.SetText(1, 2, "40"));
  EXPECT_EQ(grid.Text(1, 2), "25.000");
}

TEST(MapGridValueKeys, ChangedCellsAreReportedOnceAndOnlyWhenAValueMoved) {
  MapGridModel grid(MapKind::kFuel, 9);
  std::vector<std::vector<MapCell>> reports;
  grid.SetCellsChangedHandler([&](const std::vector<MapCell>& cells) { reports.push_back(cells); });
  grid.Select({3, 2, 4, 3}, {4, 3});
  grid.SetUnits(3, 2, 65535);  // at the top already: does not move
  grid.HandleKey(KeyPress(MapKey::kUp));
  ASSERT_EQ(reports.size(), 1u);
  EXPECT_THAT(reports[0], ElementsAre(MapCell{3, 3}, MapCell{4, 2}, MapCell{4, 3}));
  EXPECT_EQ(grid.Units(4, 2), 100);

  grid.SetCurrent(1, 1);
  grid.HandleKey(KeyPress(MapKey::kDown));  // already 0
  EXPECT_EQ(reports.size(), 1u);
}

TEST(MapGridValueKeys, AllRangesAlsoRaisesEveryCellAboveTheSelection) {
  MapGridModel grid(MapKind::kFuel, 9);
  grid.SetAllRanges(true);
  grid.Select({5, 2, 6, 2}, {6, 2});
  const std::vector<MapCell> changed = grid.ApplyStep({ValueKey::kLarge, 1});
  EXPECT_EQ(changed.size(), 6u);  // rows 1 to 6 of column 2
  for (int row = 1; row <= 6; ++row) EXPECT_EQ(grid.Units(row, 2), 500) << row;
  EXPECT_EQ(grid.Units(7, 2), 0);
  EXPECT_EQ(grid.Units(5, 3), 0);
}

TEST(MapGridNavigation, LeftRightAndRpmRangeKeysMoveTheCursorWithinTheValueCells) {
  MapGridModel grid(MapKind::kIgnition, 5);
  grid.SetCurrent(4, 1);
  EXPECT_TRUE(grid.HandleKey(KeyPress(MapKey::kLeft)));
  EXPECT_EQ(grid.Current(), (MapCell{4, 1}));
  grid.HandleKey(KeyPress(MapKey::kRight));
  grid.HandleKey(KeyPress(MapKey::kRight));
  EXPECT_EQ(grid.Current(), (MapCell{4, 3}));
  for (int i = 0; i < 5; ++i) grid.HandleKey(KeyPress(MapKey::kRight));
  EXPECT_EQ(grid.Current(), (MapCell{4, 5}));
  EXPECT_TRUE(grid.HandleKey(LetterPress('n')));
  EXPECT_EQ(grid.Current(), (MapCell{3, 5}));
  grid.HandleKey(LetterPress('P'));
  grid.HandleKey(LetterPress('P'));
  EXPECT_EQ(grid.Current(), (MapCell{5, 5}));
  EXPECT_EQ(grid.Selection(), (MapCellRect{5, 5, 5, 5}));
  EXPECT_FALSE(grid.HandleKey(LetterPress('x')));
  EXPECT_FALSE(grid.HandleKey(KeyPress(MapKey::kEnter)));
}

TEST(MapGridNavigation, SelectionIsNormalisedAndClampedToValueCells) {
  MapGridModel grid(MapKind::kFuel, 9);
  grid.Select({8, 12, 0, 3}, {0, 0});
  EXPECT_EQ(grid.Selection(), (MapCellRect{1, 3, 8, 9}));
  EXPECT_EQ(grid.Current(), (MapCell{1, 1}));
  EXPECT_EQ(grid.SelectedCells().size(), 8u * 7u);
}

TEST(MapGridSelection, TheModelTakesTheRectangleAroundTheSelectedValueCells) {
  MapGridModel grid(MapKind::kIgnition, 5);
  grid.FollowView({4, 2}, {{4, 2}, {4, 3}, {5, 2}, {5, 3}, {0, 3}, {6, 0}});
  EXPECT_EQ(grid.Selection(), (MapCellRect{4, 2, 5, 3})) << "label cells are no value cells";
  EXPECT_EQ(grid.Current(), (MapCell{4, 2}));
  grid.FollowView({9, 4}, {});
  EXPECT_EQ(grid.Selection(), (MapCellRect{9, 4, 9, 4})) << "nothing selected: the cursor's cell";
  grid.SetLiveTuning(true);
  grid.FollowView({2, 1}, {{2, 1}, {3, 1}});
  EXPECT_EQ(grid.InsertLiveValue(-3.0).size(), 2u);
}

TEST(MapGridCells, TextUsesTheMapsDecimalsAndTheComputersSeparator) {
  MapGridModel fuel(MapKind::kFuel, 9, ',');
  EXPECT_TRUE(fuel.SetText(2, 2, "3,5"));
  EXPECT_EQ(fuel.Text(2, 2), "3,500");
  EXPECT_TRUE(fuel.SetText(2, 3, " 1,2345 "));  // a half goes to the even neighbour
  EXPECT_EQ(fuel.Units(2, 3), 1234);
  EXPECT_FALSE(fuel.SetText(2, 4, "abc"));
  EXPECT_FALSE(fuel.SetText(2, 4, ""));
  EXPECT_EQ(fuel.Text(2, 4), "0,000");

  MapGridModel ign(MapKind::kIgnition, 5);
  ign.SetValue(1, 1, 12.26);
  EXPECT_EQ(ign.Text(1, 1), "12.5");
  EXPECT_EQ(ign.Text(12, 1), "");
}

TEST(MapGridCells, LoadAndStoreKeepEveryValueAndTakeTheMapsSites) {
  MapValues values(13);
  for (int row = 1; row <= kMapRows; ++row) {
    for (int column = 1; column <= 13; ++column) values.Set(row, column, row + column / 1000.0);
  }
  MapGridModel grid(MapKind::kFuel, 9);
  grid.Load(values);
  EXPECT_EQ(grid.Columns(), 14);
  EXPECT_EQ(grid.Text(11, 13), "11.013");
  EXPECT_EQ(grid.ToMapValues(), values);
}

TEST(MapGridLabels, HeaderShowsLoadsThenTheThreeMarkers) {
  MapGridModel grid(MapKind::kFuel, 9);
  MapGridSettings settings;
  settings.const1 = 200.0;  // a 2 bar sensor at full span
  settings.const2 = 20.0;
  settings.mapsensordiv = 1.0;
  grid.SetSettings(settings);
  EXPECT_EQ(grid.Text(0, 1), "20");
  EXPECT_EQ(grid.Text(0, 2), "42");  // 20 + 180 / 8 = 42.5, to the even neighbour
  EXPECT_EQ(grid.Text(0, 7), "1000");
  EXPECT_EQ(grid.Text(0, 8), "750");
  EXPECT_EQ(grid.Text(0, 9), "250");
  EXPECT_EQ(grid.LoadLabel(9), "200");
  grid.SetText(0, 3, "WOT");
  settings.fontsize = 12;  // not a load input: the header keeps what the program wrote
  grid.SetSettings(settings);
  EXPECT_EQ(grid.Text(0, 3), "WOT");
  settings.mapsensordiv = 2.0;  // scaled to half the span
  grid.SetSettings(settings);
  EXPECT_EQ(grid.LoadLabel(9), "100");
  EXPECT_EQ(grid.Text(0, 3), "40");
}

}  // namespace
}  // namespace vela
