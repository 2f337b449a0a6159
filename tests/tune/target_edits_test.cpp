// The target table as the tuner edits it: undo and redo, other axes, the grid's values, the AFR
// grid's keys and range, and the colours it is shown in.
#include "tune/target/target_edits.h"

#include <gtest/gtest.h>

#include "editors/compare/compare_overlay.h"
#include "editors/editor_fakes.h"
#include "editors/mapgrid/map_grid_model.h"
#include "tune/view/target_colours.h"

namespace vela {
namespace {

TuneAxes EditedAxes() { return FuelAxesOf(editor_testing::SoundImage()); }

TargetTable WithTarget(double afr, int row = 2, int column = 3) {
  TargetTable table(EditedAxes());
  table.Set(row, column, afr);
  return table;
}

TEST(TargetEdits, UndoAndRedoStepThroughWholeTables) {
  TargetEdits edits{TargetTable(EditedAxes())};
  EXPECT_FALSE(edits.Undo());
  EXPECT_FALSE(edits.Change(TargetTable(EditedAxes())));  // equal: no step
  ASSERT_TRUE(edits.Change(WithTarget(13.0)));
  ASSERT_TRUE(edits.Change(WithTarget(12.0)));
  ASSERT_TRUE(edits.Undo());
  EXPECT_EQ(edits.Table(), WithTarget(13.0));
  ASSERT_TRUE(edits.Redo());
  EXPECT_EQ(edits.Table(), WithTarget(12.0));
  ASSERT_TRUE(edits.Undo());
  ASSERT_TRUE(edits.Undo());
  EXPECT_EQ(edits.Table(), TargetTable(EditedAxes()));
  EXPECT_FALSE(edits.CanUndo());
  // A new change after an undo drops what could be redone.
  ASSERT_TRUE(edits.Redo());
  ASSERT_TRUE(edits.Change(WithTarget(11.0)));
  EXPECT_FALSE(edits.CanRedo());
  // A table from another file starts a history of its own.
  edits.Reset(WithTarget(15.0));
  EXPECT_FALSE(edits.CanUndo());
  EXPECT_FALSE(edits.CanRedo());
}

TEST(TargetEdits, OtherAxesKeepTheTargetsWhereTheEngineRuns) {
  const TuneAxes axes = EditedAxes();
  TargetTable table(axes);
  for (int column = 1; column <= axes.Columns(); ++column) table.Set(5, column, 10.0 + column);
  EXPECT_EQ(TargetOnAxes(table, axes), table);
  // Thirteen load sites over the same span: a shared site keeps its target, a site between two
  // takes the straight line between them.
  TuneAxes wider = axes;
  wider.loads.clear();
  for (int site = 0; site <= 12; ++site) wider.loads.push_back(100.0 * site / 12.0);
  const TargetTable moved = TargetOnAxes(table, wider);
  ASSERT_EQ(moved.Axes(), wider);
  EXPECT_DOUBLE_EQ(moved.At(5, 1), 11.0);
  EXPECT_DOUBLE_EQ(moved.At(5, 13), 19.0);
  EXPECT_DOUBLE_EQ(moved.At(5, 7), 15.0);   // 50 %: a site of both
  EXPECT_DOUBLE_EQ(moved.At(5, 2), 11.67);  // 8.33 %: two thirds to 12.5, rounded
}

TEST(TargetEdits, GridValuesComeBackInsideTheRangeInHundredths) {
  const TuneAxes axes = EditedAxes();
  TargetTable table(axes);
  table.Set(1, 1, 12.34);
  table.Set(11, 9, 24.99);
  MapValues values = TargetValues(table);
  EXPECT_DOUBLE_EQ(values.At(1, 1), 12.34);
  EXPECT_DOUBLE_EQ(values.At(11, 9), 24.99);
  EXPECT_EQ(TargetFromValues(values, axes), table);
  values.Set(1, 1, 3.0);
  values.Set(11, 9, 40.0);
  values.Set(6, 4, 13.4449999);
  const TargetTable back = TargetFromValues(values, axes);
  EXPECT_DOUBLE_EQ(back.At(1, 1), kMinTargetAfr);
  EXPECT_DOUBLE_EQ(back.At(11, 9), kMaxTargetAfr);
  EXPECT_DOUBLE_EQ(back.At(6, 4), 13.44);
}

TEST(TargetGrid, KeysStepInAfrAndStayInsideTheRange) {
  MapGridModel grid(MapKind::kAfr, 9);
  grid.SetValue(3, 3, 14.7);
  grid.SetCurrent(3, 3);
  EXPECT_EQ(grid.Text(3, 3), "14.70");
  const auto press = [&](MapKey key, bool shift = false) {
    grid.HandleKey(MapKeyPress{key, 0, shift, false, false});
    return grid.Value(3, 3);
  };
  EXPECT_NEAR(press(MapKey::kUp), 14.8, 1e-9);
  EXPECT_NEAR(press(MapKey::kDown, true), 14.79, 1e-9);
  EXPECT_NEAR(press(MapKey::kPageDown), 14.29, 1e-9);
  EXPECT_NEAR(press(MapKey::kPageUp, true), 14.29, 1e-9);  // no 1 ms key on targets
  grid.SetValue(3, 3, 24.8);
  EXPECT_NEAR(press(MapKey::kPageUp), 25.0, 1e-9);
  grid.SetValue(3, 3, 6.05);
  EXPECT_NEAR(press(MapKey::kDown), 6.0, 1e-9);
  grid.SetValue(3, 3, 40.0);
  EXPECT_NEAR(grid.Value(3, 3), 25.0, 1e-9);
}

TEST(TargetColours, RicherAndLeanerInTheDifferenceViewsHuesDeeperFurtherAway) {
  TargetTable table(EditedAxes());
  table.Set(1, 1, 14.7);
  table.Set(1, 2, 13.7);
  table.Set(1, 3, 12.7);
  table.Set(1, 4, 15.7);
  const GridOverlay overlay = TargetOverlay(table);
  const auto ground = [&](int column) { return *overlay.At(1, column)->ground; };
  EXPECT_EQ(ground(1), kEqualGround);
  EXPECT_GT(ground(2).blue, ground(2).red);  // richer
  EXPECT_GT(ground(4).red, ground(4).blue);  // leaner
  EXPECT_LT(ground(3).red, ground(2).red);   // two richer is deeper than one richer
  EXPECT_EQ(*overlay.At(1, 1)->description, "stoichiometric");
  EXPECT_EQ(*overlay.At(1, 3)->description, "2.00 richer than stoichiometric");
  EXPECT_EQ(*overlay.At(1, 4)->description, "1.00 leaner than stoichiometric");
}

}  // namespace
}  // namespace vela
