#include "editors/grid_workbench.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "editors/mapgrid/grid_setup.h"

namespace vela {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// A 9-site fuel map 1 holding 2.0 ms, rows from 11000 RPM (row 1) down to 1000 RPM (row 11).
struct FuelGrid {
  FuelGrid() {
    grid.SetRpmSites({1000, 2000, 3000, 4000, 5000, 6000, 7000, 8000, 9000, 10000, 11000});
    for (int row = 1; row <= kMapRows; ++row) {
      for (int column = 1; column <= 9; ++column) grid.SetValue(row, column, 2.0);
    }
  }
  MapGridModel grid{MapKind::kFuel, 9};
};

TEST(GridSelectionTest, SelectionKeysGoOnFromTheKeptAnchorAndAClickStartsAgain) {
  FuelGrid f;
  f.grid.SetCurrent(5, 4);
  f.grid.Select({5, 4, 5, 4}, {5, 4});
  CellSelection selection = SelectionFollowing(f.grid, std::nullopt);
  selection.ExtendBy(1, 1);
  f.grid.Select(ToMapCellRect(selection.Rect()), selection.Active());
  // Going on from the same grid state keeps the anchor: two steps up turn over it.
  selection = SelectionFollowing(f.grid, selection);
  selection.ExtendBy(-2, 0);
  EXPECT_EQ(selection.Rect(), (CellRect{4, 4, 5, 5}));
  EXPECT_EQ(selection.Anchor(), (MapCell{5, 4}));
  // A click elsewhere (the grid's selection is no longer the kept one) starts from there.
  f.grid.SetCurrent(9, 2);
  f.grid.Select({9, 2, 9, 2}, {9, 2});
  selection = SelectionFollowing(f.grid, selection);
  EXPECT_EQ(selection.Rect(), (CellRect{9, 2, 9, 2}));
}

TEST(GridSelectionTest, AfterADragTheAnchorIsTheCornerOppositeTheCursor) {
  FuelGrid f;
  // Dragged from (7, 6) up and left to (3, 2): the cursor is the top-left corner.
  f.grid.Select({3, 2, 7, 6}, {3, 2});
  CellSelection selection = SelectionFollowing(f.grid, std::nullopt);
  EXPECT_EQ(selection.Anchor(), (MapCell{7, 6}));
  selection.ExtendBy(0, -1);
  EXPECT_EQ(selection.Rect(), (CellRect{3, 1, 7, 6}));
}

TEST(GridShapingTest, InterpolationIsSpacedByRpmAndKeepsItsEdgeCells) {
  FuelGrid f;
  // Column 3 from 6.0 ms at row 2 (10000 RPM) to 2.0 ms at row 6 (6000 RPM).
  f.grid.SetValue(2, 3, 6.0);
  const BulkChange change =
      ShapeCells(f.grid, {2, 3, 6, 3}, ShapeKind::kInterpolateColumns, DutyContext{});
  EXPECT_DOUBLE_EQ(f.grid.Value(3, 3), 5.0);
  EXPECT_DOUBLE_EQ(f.grid.Value(5, 3), 3.0);
  EXPECT_THAT(change.changed, ElementsAre(MapCell{5, 3}, MapCell{4, 3}, MapCell{3, 3}));
}

TEST(GridShapingTest, TheLivePointTakesTheNearestCellInsideTheMap) {
  FuelGrid f;
  EXPECT_EQ(NearestCell(f.grid, 4.4, 2.6), (MapCell{4, 3}));
  EXPECT_EQ(NearestCell(f.grid, 0.2, 12.0), (MapCell{1, 9}));
  EXPECT_EQ(NearestCell(f.grid, std::nan(""), 3.0), (MapCell{1, 3}));
}

// What is copied with the axes reads back through the paste at another cursor: the axes are
// recognised and skipped, and only the copied values land.
TEST(GridSheetTest, ACopyWithAxesPastesBackAtTheCursor) {
  FuelGrid f;
  f.grid.SetValue(3, 2, 4.125);
  f.grid.SetValue(4, 3, 5.5);
  const CellRect copied{3, 2, 4, 3};
  const SheetAxes axes = SheetAxesOf(f.grid, copied);
  const std::string text = SheetText(SheetBlockOf(f.grid, copied), ',', &axes);
  f.grid.SetCurrent(8, 6);
  f.grid.Select({8, 6, 8, 6}, {8, 6});
  const SheetAxes map_axes = SheetAxesOf(f.grid, WholeMap(f.grid));
  const SheetPaste paste = ReadSheetPaste(text, ',', PasteAreaOf(f.grid), &map_axes);
  ASSERT_EQ(paste.status, PasteStatus::kFits) << text;
  EXPECT_TRUE(paste.had_axes);
  const BulkChange change = PasteCells(f.grid, paste.cells, {});
  EXPECT_DOUBLE_EQ(f.grid.Value(8, 6), 4.125);
  EXPECT_DOUBLE_EQ(f.grid.Value(9, 7), 5.5);
  // Equal values (2.0 onto 2.0) are no change, and nothing outside the block moved.
  EXPECT_THAT(change.changed, ElementsAre(MapCell{8, 6}, MapCell{9, 7}));
  EXPECT_DOUBLE_EQ(f.grid.Value(9, 8), 2.0);
}

TEST(GridSheetTest, AnEmptyPasteChangesNothing) {
  FuelGrid f;
  EXPECT_THAT(PasteCells(f.grid, {}, {}).changed, IsEmpty());
}

TEST(OperationSummaryTest, SaysTheRangeAndEveryCount) {
  OperationPreview preview{12.5, 14.25, 42, 3, 0};
  EXPECT_EQ(OperationSummary(preview, MapKind::kFuel, ','),
            "12,500 .. 14,250, 42 cells change, 3 held at the duty limit");
  preview = {-5.0, -5.0, 1, 0, 2};
  EXPECT_EQ(OperationSummary(preview, MapKind::kIgnition, '.'),
            "-5.0, 1 cell changes, 2 held at the map's range");
  preview = {2.0, 2.0, 0, 0, 0};
  EXPECT_EQ(OperationSummary(preview, MapKind::kFuel, '.'), "2.000, no cell changes");
}

// Positions back to cells, by the cell formula: fuel map start + 2 (c - 1) + 2 sites (11 - r).
TEST(WaitingCellsTest, PositionsOfTheGridsMapBecomeItsCellsAndOthersAreLeftOut) {
  MapGridModel fuel(MapKind::kFuel, 17);
  const int start = kFuelMap2Start;
  EXPECT_THAT(WaitingCellsOf(fuel, start,
                             {start, start + 2 * 16 + 34 * 10, start + 2 * 4 + 34 * 6,
                              start + 1,    // the high byte of a cell: not a cell's start
                              start - 2,    // fuel map 1
                              start + 374,  // past the map: the ignition map
                              kIgnMapStart}),
              ElementsAre(MapCell{11, 1}, MapCell{1, 17}, MapCell{5, 5}));
  MapGridModel ign(MapKind::kIgnition, 6);
  EXPECT_THAT(WaitingCellsOf(ign, kIgnMapStart, {kIgnMapStart + 5, kIgnMapStart + 6 * 10, 1000}),
              ElementsAre(MapCell{11, 6}, MapCell{1, 1}));
}

}  // namespace
}  // namespace vela
