#include "editors/workbench/cell_selection.h"

#include <gtest/gtest.h>

namespace vela {
namespace {

TEST(CellSelectionTest, ExtendingMovesOnlyTheActiveCornerAndStaysOnTheGrid) {
  MapGridModel grid(MapKind::kFuel, 9);
  grid.SetCurrent(5, 4);
  CellSelection selection(grid);
  selection.ExtendBy(2, -1);
  EXPECT_EQ(selection.Rect(), (CellRect{5, 3, 7, 4}));
  selection.ExtendBy(-6, 0);  // past the anchor: the rectangle turns over it
  EXPECT_EQ(selection.Rect(), (CellRect{1, 3, 5, 4}));
  selection.ExtendTo({20, 20});
  EXPECT_EQ(selection.Rect(), (CellRect{5, 4, 11, 9}));
  selection.MoveTo({0, 0});
  EXPECT_EQ(selection.Rect(), (CellRect{1, 1, 1, 1}));
}

TEST(CellSelectionTest, SelectAllTakesEveryValueCellOfTheMap) {
  MapGridModel grid(MapKind::kFuel, 17);
  CellSelection selection(grid);
  selection.SelectAll();
  EXPECT_EQ(selection.Rect(), WholeMap(grid));
  EXPECT_EQ(selection.Rect().CellCount(), 11 * 17);
  grid.SetColumns(10);  // 9 load sites
  selection.SetBounds(grid);
  EXPECT_EQ(selection.Rect(), (CellRect{1, 1, 11, 9}));
}

TEST(CellSelectionTest, TheGridsSelectionReadsAsARectangle) {
  MapGridModel grid(MapKind::kIgnition, 5);
  grid.Select({9, 4, 2, 1}, {2, 1});
  EXPECT_EQ(SelectionOf(grid), (CellRect{2, 1, 9, 4}));
  EXPECT_EQ(CellsOf({2, 1, 3, 2}).size(), 4u);
  EXPECT_EQ(SpanOf(grid, {12, 7}, {0, 3}), (CellRect{1, 3, 11, 5}));
}

}  // namespace
}  // namespace vela
