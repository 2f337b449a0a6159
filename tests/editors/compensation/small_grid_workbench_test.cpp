#include "editors/compensation/small_grid_workbench.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "editors/compensation/compensation_tables.h"

namespace vela {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// A compensation table's grid as the page builds it, holding `raws`.
SmallGridModel TableGrid(CompTable table, const std::vector<int>& raws,
                         const SensorSetup& sensors = {}) {
  CompTableLayout layout = LayoutOf(table);
  SmallGridModel grid(layout.row_labels, layout.positions);
  for (int row = 0; row < grid.Rows(); ++row) {
    grid.SetFormat(row, FormatOf(table, row, sensors));
    grid.SetRaw(row, raws[static_cast<std::size_t>(row)]);
  }
  return grid;
}

// Battery rows over an uneven axis of 10, 11, 13 and 16 V, holding `raws`.
SmallGridModel UnevenVolts(const std::vector<int>& raws) {
  SmallGridModel grid({"10", "11", "13", "16"}, {0, 1, 2, 3});
  for (int row = 0; row < 4; ++row) {
    grid.SetFormat(row, FormatOf(CompTable::kBattMap, 0, {}));
    grid.SetRaw(row, raws[static_cast<std::size_t>(row)]);
  }
  return grid;
}

CellOperation Typed(const SmallGridModel& grid, int first, int last, const char* text) {
  const OperationParse parse = ParseCellOperation(text, '.', RowBoundsOf(grid, first, last));
  EXPECT_TRUE(parse.operation) << text << ": " << parse.refusal;
  return parse.operation.value_or(CellOperation{});
}

TEST(RowSelectionTest, KeptWhileShownElseAnchoredOppositeTheCursor) {
  SmallGridModel grid = TableGrid(CompTable::kAirMap, std::vector<int>(8, 128));
  grid.Select(2, 2, 2);
  RowSelection selection = RowSelectionFollowing(grid, std::nullopt);
  selection = ExtendedBy(grid, selection, 3);
  EXPECT_EQ(selection, (RowSelection{2, 5}));
  // The grid shows it: kept. The extension turns over the anchor and stops at the table's end.
  grid.Select(2, 5, 5);
  selection = ExtendedBy(grid, RowSelectionFollowing(grid, selection), -4);
  EXPECT_EQ(selection, (RowSelection{2, 1}));
  EXPECT_EQ(ExtendedBy(grid, selection, -5), (RowSelection{2, 0}));
  EXPECT_EQ(ExtendedBy(grid, {2, 6}, 5), (RowSelection{2, 7}));
  // A drag from row 6 up to row 3 (cursor at the top): the anchor is the bottom row.
  grid.Select(3, 6, 3);
  EXPECT_EQ(RowSelectionFollowing(grid, selection), (RowSelection{6, 3}));
  EXPECT_EQ(WholeTable(grid), (RowSelection{0, 7}));
}

// Every target goes to the byte a typed value gives, held inside the row's limits; a row the ECU
// left beyond them is never pushed further out.
TEST(RowOperationTest, TargetsTakeTheTypedConversionAndTheRowLimits) {
  // Air: 2.0 %, 5.5 %, -3.0 %, -9.5 %; *1.1 gives 2.2, 6.05 and -10.45 (each a half: to the
  // even byte, as typed; -9.5 x 1.1 computes a hair above -10.45), and -3.3.
  const SmallGridModel air = TableGrid(CompTable::kAirMap, {148, 183, 98, 33, 128, 128, 128, 128});
  const RowChange scaled = PlanOperation(air, 0, 3, Typed(air, 0, 3, "*1.1"));
  EXPECT_THAT(scaled.changed, ElementsAre(SmallRowValue{0, 150}, SmallRowValue{1, 188},
                                          SmallRowValue{2, 95}, SmallRowValue{3, 24}));
  EXPECT_EQ(scaled.clamped, 0);
  EXPECT_EQ(RowChangeSummary(scaled, ','), "-10,4 .. 6,0, 4 cells change");

  // Water: 60 % doubled is beyond the byte: held at 99.6 %.
  const SmallGridModel water = TableGrid(CompTable::kWaterMap, {154, 10, 0, 0, 0, 0, 0, 0});
  const RowChange doubled = PlanOperation(water, 0, 1, Typed(water, 0, 1, "*2"));
  EXPECT_THAT(doubled.changed, ElementsAre(SmallRowValue{0, 255}, SmallRowValue{1, 20}));
  EXPECT_EQ(doubled.clamped, 1);
  EXPECT_EQ(RowChangeSummary(doubled, '.'),
            "7.8 .. 99.6, 2 cells change, 1 held at the table's range");

  // Battery: row 0 stands at 2.10 ms, beyond the table's 2.00 ms limit.
  const SmallGridModel batt = TableGrid(CompTable::kBattMap, {210, 100, 50, 40, 30, 20, 10});
  const RowChange raised = PlanOperation(batt, 0, 1, Typed(batt, 0, 1, "+0.5"));
  EXPECT_THAT(raised.changed, ElementsAre(SmallRowValue{1, 150}));
  EXPECT_EQ(raised.clamped, 1);
  const RowChange lowered = PlanOperation(batt, 0, 0, Typed(batt, 0, 0, "-0.5"));
  EXPECT_THAT(lowered.changed, ElementsAre(SmallRowValue{0, 160}));
}

TEST(RowOperationTest, TheTypedLineReadsTheSelectedRowsBounds) {
  const SmallGridModel water = TableGrid(CompTable::kWaterMap, std::vector<int>(8, 0));
  const OperationParse hundred = ParseCellOperation("100", '.', RowBoundsOf(water, 0, 0));
  EXPECT_FALSE(hundred.operation);
  EXPECT_THAT(hundred.refusal, ::testing::HasSubstr("(0.0 to 99.6)"));
  // The throttle pump's rows hold different things; the line takes what any selected row holds
  // and each row keeps its own limits.
  const SmallGridModel pump = TableGrid(CompTable::kThrottlePump, {128, 10, 5, 100});
  const ValueBounds bounds = RowBoundsOf(pump, 2, 3);
  EXPECT_DOUBLE_EQ(bounds.lowest, 0.0);
  EXPECT_DOUBLE_EQ(bounds.highest, 99.609375);
  EXPECT_EQ(bounds.decimals, 2);
  const RowChange set = PlanOperation(pump, 2, 3, Typed(pump, 2, 3, "50"));
  EXPECT_THAT(set.changed, ElementsAre(SmallRowValue{2, 128}, SmallRowValue{3, 255}));
  EXPECT_EQ(set.clamped, 1);  // 50 % throttle is beyond the byte of " De-activate Over"
}

// Interpolation runs from the first selected row to the last spaced by the rows' axis values,
// not by their index; smoothing keeps the end rows. A table without an axis is left alone.
TEST(RowShapingTest, InterpolationFollowsTheAxisAndSmoothingKeepsTheEnds) {
  const SmallGridModel uneven = UnevenVolts({100, 0, 0, 160});
  EXPECT_THAT(PlanInterpolation(uneven, 0, 3).changed,
              ElementsAre(SmallRowValue{1, 110}, SmallRowValue{2, 130}));
  EXPECT_THAT(PlanInterpolation(uneven, 1, 1).changed, IsEmpty());

  const SmallGridModel spike = TableGrid(CompTable::kWaterMap, {0, 0, 0, 160, 0, 0, 0, 0});
  EXPECT_THAT(PlanSmoothing(spike, 1, 5).changed,
              ElementsAre(SmallRowValue{2, 40}, SmallRowValue{3, 80}, SmallRowValue{4, 40}));
  EXPECT_THAT(PlanSmoothing(spike, 2, 3).changed, IsEmpty());

  const SmallGridModel pump = TableGrid(CompTable::kThrottlePump, {128, 0, 5, 100});
  EXPECT_FALSE(RowAxisOf(pump, 0, 3));
  EXPECT_THAT(PlanInterpolation(pump, 0, 2).changed, IsEmpty());
  EXPECT_THAT(PlanSmoothing(pump, 0, 2).changed, IsEmpty());
}

// Fill takes the row nearest the live point along the axis (volts here, unevenly spaced), not the
// row at the same index, and leaves the rows already at that value out of the change.
TEST(RowShapingTest, FillTakesTheRowNearestTheLivePoint) {
  const SmallGridModel volts = UnevenVolts({100, 120, 140, 160});
  EXPECT_THAT(PlanFill(volts, 0, 3, 14.6).changed,
              ElementsAre(SmallRowValue{0, 160}, SmallRowValue{1, 160}, SmallRowValue{2, 160}));
  EXPECT_THAT(PlanFill(volts, 1, 2, 11.4).changed, ElementsAre(SmallRowValue{2, 120}));
  const SmallGridModel pump = TableGrid(CompTable::kThrottlePump, {128, 0, 5, 100});
  EXPECT_THAT(PlanFill(pump, 0, 2, 50.0).changed, IsEmpty());
}

TEST(RowSheetTest, CopyKeepsEachRowsDecimalsAndAPasteLandsAtTheCursor) {
  SmallGridModel pump = TableGrid(CompTable::kThrottlePump, {128, 10, 5, 102});
  EXPECT_EQ(SheetText(RowSheetBlock(pump, 2, 3), ','), "2,0\n9,97\n");

  SmallGridModel batt = TableGrid(CompTable::kBattMap, {100, 100, 100, 100, 100, 100, 100});
  batt.Select(5, 5, 5);
  SheetPaste paste = ReadSheetPaste("1.234\n9\n", '.', RowPasteArea(batt));
  ASSERT_EQ(paste.status, PasteStatus::kFits);
  // 1.234 ms is stored to the hundredth; 9 ms is beyond the table and held at its 2.00 ms.
  const RowChange pasted = PlanPaste(batt, paste.cells);
  EXPECT_THAT(pasted.changed, ElementsAre(SmallRowValue{5, 123}, SmallRowValue{6, 200}));
  EXPECT_EQ(pasted.clamped, 1);
  // Three rows from row 5 do not fit: the tuner is asked, and clipping keeps two.
  paste = ReadSheetPaste("1.5\n1.5\n1.5\n", '.', RowPasteArea(batt));
  EXPECT_EQ(paste.status, PasteStatus::kTooBig);
  EXPECT_EQ(PlanPaste(batt, paste.cells).changed.size(), 2U);
  // One value onto a selection fills it.
  batt.Select(1, 3, 3);
  paste = ReadSheetPaste("0.5", '.', RowPasteArea(batt));
  EXPECT_THAT(PlanPaste(batt, paste.cells).changed,
              ElementsAre(SmallRowValue{1, 50}, SmallRowValue{2, 50}, SmallRowValue{3, 50}));
}

// With the axis, each row goes out as its label and its value; pasted back, the label column is
// checked against the table's own rows and skipped, and a column off the axis refuses the paste.
TEST(RowSheetTest, TheAxisColumnGoesOutAndIsCheckedOnTheWayBack) {
  SmallGridModel batt = TableGrid(CompTable::kBattMap, {100, 110, 120, 130, 140, 150, 160});
  EXPECT_FALSE(RowSheetAxes(TableGrid(CompTable::kThrottlePump, {1, 2, 3, 4}), 0, 3));
  const std::optional<SheetAxes> axis = RowSheetAxes(batt, 2, 3);
  ASSERT_TRUE(axis);
  const std::string copied = SheetText(RowSheetBlock(batt, 2, 3), '.', &*axis);
  EXPECT_EQ(copied, batt.RowLabel(2) + "\t1.20\n" + batt.RowLabel(3) + "\t1.30\n");

  const std::optional<SheetAxes> whole = RowSheetAxes(batt, 0, batt.Rows() - 1);
  batt.Select(5, 5, 5);
  SheetPaste paste = ReadSheetPaste(copied, '.', RowPasteArea(batt), &*whole);
  ASSERT_EQ(paste.status, PasteStatus::kFits);
  EXPECT_TRUE(paste.had_axes);
  EXPECT_THAT(PlanPaste(batt, paste.cells).changed,
              ElementsAre(SmallRowValue{5, 120}, SmallRowValue{6, 130}));

  paste = ReadSheetPaste(batt.RowLabel(2) + "\t1\n99\t1\n", '.', RowPasteArea(batt), &*whole);
  EXPECT_EQ(paste.refusal, PasteRefusal::kAxisMismatch);
  EXPECT_EQ(paste.bad_row, 2);
  EXPECT_EQ(paste.bad_column, 1);
  EXPECT_EQ(paste.bad_text, "99");
}

TEST(SmallGridModelTest, SeveralRowsEnteredAreReportedAsOneChange) {
  SmallGridModel air = TableGrid(CompTable::kAirMap, std::vector<int>(8, 128));
  std::vector<std::vector<SmallGridChange>> reports;
  air.SetChangedHandler([&](const std::vector<SmallGridChange>& c) { reports.push_back(c); });
  air.Enter({{1, 130}, {4, 120}});
  ASSERT_EQ(reports.size(), 1U);
  EXPECT_THAT(reports[0], ElementsAre(SmallGridChange{1, 965, 964}, SmallGridChange{4, 968, 964}));
  EXPECT_EQ(air.Raw(4), 120);
}

}  // namespace
}  // namespace vela
