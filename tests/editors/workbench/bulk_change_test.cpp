#include "editors/workbench/bulk_change.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "editors/mapgrid/grid_setup.h"
#include "support/recording_sender.h"

namespace vela {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

CellTarget SetTo(double value) {
  return [value](int, int, double) { return value; };
}

// Fuel cell position of grid row r, column c with 9 load sites on fuel map 1.
int FuelPosition(int row, int column) {
  return kFuelMap1Start + 2 * (column - 1) + 18 * (11 - row);
}

class BulkChangeTest : public ::testing::Test {
 protected:
  // A 9-site fuel map 1 holding 2.0 ms everywhere, row 1 column 2 at 12.0 ms (over its limit),
  // and the grid reading it; rows run 11000 RPM (row 1) down to 1000 RPM (row 11).
  BulkChangeTest() {
    for (int row = 1; row <= kMapRows; ++row) {
      for (int column = 1; column <= 9; ++column) image.Write16(FuelPosition(row, column), 2000);
    }
    image.Write16(FuelPosition(1, 2), 12000);
    FillFuelGrid(grid, image, 1);
    grid.SetRpmSites({1000, 2000, 3000, 4000, 5000, 6000, 7000, 8000, 9000, 10000, 11000});
  }

  CalibrationImage image;
  MapGridModel grid{MapKind::kFuel, 9};
};

TEST_F(BulkChangeTest, TheDutyCapIsWalkedUpEveryChangedColumnToRowOne) {
  // Rows 5 (7000 RPM: 17.1 ms) and 6 (6000 RPM: 20.0 ms) in columns 2 and 3 asked for 30 ms.
  const BulkChange change = ApplyTargets(grid, {5, 2, 6, 3}, SetTo(30.0), {});
  EXPECT_DOUBLE_EQ(grid.Value(5, 2), 17.1);
  EXPECT_DOUBLE_EQ(grid.Value(6, 3), 20.0);
  // Above the rectangle, row 1 of column 2 (11000 RPM: 10.9 ms) is lowered as a key would;
  // column 4 had no change and keeps its value.
  EXPECT_DOUBLE_EQ(grid.Value(1, 2), 10.9);
  EXPECT_THAT(change.changed, ElementsAre(MapCell{6, 2}, MapCell{5, 2}, MapCell{1, 2},
                                          MapCell{6, 3}, MapCell{5, 3}));
  EXPECT_EQ(change.capped, 5);
  EXPECT_EQ(change.clamped, 0);
  EXPECT_DOUBLE_EQ(change.lowest, 17.1);
  EXPECT_DOUBLE_EQ(change.highest, 20.0);
}

TEST_F(BulkChangeTest, TheDutyLimitFollowsTheInjectionSetUp) {
  // Batch injection (divide 2): 60000 / 6000 RPM = 10.0 ms; sequential restores 20.0 ms.
  ApplyTargets(grid, {6, 1, 6, 1}, SetTo(30.0), {2, false});
  EXPECT_DOUBLE_EQ(grid.Value(6, 1), 10.0);
  ApplyTargets(grid, {6, 1, 6, 1}, SetTo(30.0), {2, true});
  EXPECT_DOUBLE_EQ(grid.Value(6, 1), 20.0);
}

TEST_F(BulkChangeTest, OnlyCellsWhoseStoredValueChangesAreReturned) {
  // 2.0004 ms rounds back to the stored 2.000; NaN leaves a cell; column 9 gets 3 ms.
  const BulkChange change = ApplyTargets(grid, {11, 7, 11, 9},
                                         [](int, int column, double now) {
                                           if (column == 7) return now + 0.0004;
                                           return column == 8 ? std::nan("") : 3.0;
                                         },
                                         {});
  EXPECT_THAT(change.changed, ElementsAre(MapCell{11, 9}));
  EXPECT_THAT(ApplyTargets(grid, {11, 9, 11, 9}, SetTo(3.0), {}).changed, IsEmpty());
}

TEST_F(BulkChangeTest, ResultsAreHeldAtTheFuelMapsRange) {
  MapGridSettings settings;
  settings.maxms = 20.0;
  grid.SetSettings(settings);
  grid.SetUnits(10, 1, 15000);
  const BulkChange change = ApplyTargets(grid, {10, 1, 11, 2}, SetTo(-1.0), {});
  EXPECT_EQ(grid.Units(10, 1), 0);
  EXPECT_EQ(change.clamped, 4);
  ApplyTargets(grid, {11, 1, 11, 1}, SetTo(25.0), {});  // 1000 RPM: the range, not the duty
  EXPECT_DOUBLE_EQ(grid.Value(11, 1), 20.0);
}

TEST_F(BulkChangeTest, ACellBeyondANarrowedRangeIsNeverPushedFurtherOut) {
  grid.SetUnits(11, 1, 30000);  // held before maxms came down to 20 ms
  MapGridSettings settings;
  settings.maxms = 20.0;
  grid.SetSettings(settings);
  const auto add = [](double amount) {
    return [amount](int, int, double now) { return now + amount; };
  };
  EXPECT_THAT(ApplyTargets(grid, {11, 1, 11, 1}, add(1.0), {}).changed, IsEmpty());
  EXPECT_DOUBLE_EQ(grid.Value(11, 1), 30.0);
  ApplyTargets(grid, {11, 1, 11, 1}, add(-1.0), {});
  EXPECT_DOUBLE_EQ(grid.Value(11, 1), 20.0);
}

TEST(BulkChangeIgnitionTest, IgnitionCellsRoundToHalfDegreesWithinTheirRangeAndNoCap) {
  MapGridModel grid(MapKind::kIgnition, 5);
  grid.SetRpmSites({1000, 2000, 3000, 4000, 5000, 6000, 7000, 8000, 9000, 10000, 11000});
  const BulkChange change =
      ApplyTargets(grid, {1, 1, 1, 5},
                   [](int, int column, double) {
                     const double targets[] = {10.3, 10.25, 10.75, 120.0, -40.0};
                     return targets[column - 1];
                   },
                   {});
  EXPECT_DOUBLE_EQ(grid.Value(1, 1), 10.5);
  EXPECT_DOUBLE_EQ(grid.Value(1, 2), 10.0);  // a half step goes to the even neighbour
  EXPECT_DOUBLE_EQ(grid.Value(1, 3), 11.0);
  EXPECT_DOUBLE_EQ(grid.Value(1, 4), 99.0);
  EXPECT_DOUBLE_EQ(grid.Value(1, 5), -28.5);
  EXPECT_EQ(change.clamped, 2);
  EXPECT_EQ(change.capped, 0);
}

TEST(BulkChangeUnitsTest, AProductLandingBesideAHalfIsReadAsTheHalf) {
  // Held as 4.500000000000001 and 13.499999999999998 microseconds.
  EXPECT_EQ(CellUnitsOf(MapKind::kFuel, 0.003 * 1.5), 4.0);
  EXPECT_EQ(CellUnitsOf(MapKind::kFuel, 0.009 * 1.5), 14.0);
  EXPECT_EQ(CellUnitsOf(MapKind::kIgnition, 10.25), 20.0);
}

}  // namespace
}  // namespace vela
