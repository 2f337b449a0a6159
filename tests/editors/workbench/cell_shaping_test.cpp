#include "editors/workbench/cell_shaping.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "calibration/map_axes.h"

namespace vela {
namespace {

using ::testing::DoubleNear;
using ::testing::ElementsAre;
using ::testing::Pointwise;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

SelectionValues Block(int rows, int columns, std::vector<double> values) {
  return {rows, columns, std::move(values)};
}

// Uneven load sites and the 750 RPM spacing's lower sites, listed top to bottom as the grid
// shows them (highest RPM first).
const std::vector<double> kLoads = {0, 6, 12, 19};
const std::vector<double> kRpmDown = {3250, 2500, 1750, 1000, 500};

TEST(CellShapingInterpolateTest, RowsAreSpacedByLoadNotByIndex) {
  // 10 at 0 kPa to 29 at 19 kPa: one per kPa, so 16 at 6 and 22 at 12 (index spacing would
  // give 16.33 and 22.67). The second row runs down.
  const SelectionValues current = Block(2, 4, {10, 0, 0, 29, 38, 99, -5, 0});
  const SelectionValues result =
      Interpolate(current, {{1000, 500}, kLoads}, InterpolationDirection::kRows);
  EXPECT_THAT(result.values,
              Pointwise(DoubleNear(1e-9), std::vector<double>{10, 16, 22, 29, 38, 26, 14, 0}));
}

TEST(CellShapingInterpolateTest, ColumnsAreSpacedByRpmDownTheirDescendingAxis) {
  // 16 at 3250 RPM down to 5 at 500 RPM: 11 over 2750 RPM, so 3 less every 750 RPM.
  const SelectionValues current = Block(5, 1, {16, 0, 0, 0, 5});
  const SelectionValues down =
      Interpolate(current, {kRpmDown, {50}}, InterpolationDirection::kColumns);
  EXPECT_THAT(down.values, Pointwise(DoubleNear(1e-9), std::vector<double>{16, 13, 10, 7, 5}));
}

TEST(CellShapingInterpolateTest, BothRunsBilinearFromTheCornersOverBothAxes) {
  // Corners on the plane load + RPM / 250; every other cell, edges included, lands on it.
  const std::vector<double> rpm = {1750, 1000, 500};
  SelectionValues current = Block(3, 4, {7, 99, 99, 26, 99, 99, 99, 99, 2, 99, 99, 21});
  const SelectionValues result = Interpolate(current, {rpm, kLoads}, InterpolationDirection::kBoth);
  std::vector<double> expected;
  for (double r : rpm) {
    for (double load : kLoads) expected.push_back(load + r / 250);
  }
  EXPECT_THAT(result.values, Pointwise(DoubleNear(1e-9), expected));

  // A twisted block: only one corner raised, so a cell takes it times both shares.
  current = Block(3, 4, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 19});
  const SelectionValues twisted =
      Interpolate(current, {rpm, kLoads}, InterpolationDirection::kBoth);
  EXPECT_NEAR(twisted.At(1, 2), 19.0 * (750.0 / 1250.0) * (12.0 / 19.0), 1e-9);
}

TEST(CellShapingInterpolateTest, SingleRowsAndColumnsInterpolateOnlyAlongTheirLength) {
  const SelectionValues row = Block(1, 4, {10, 3, 3, 29});
  EXPECT_EQ(Interpolate(row, {{2500}, kLoads}, InterpolationDirection::kColumns), row);
  const SelectionValues both = Interpolate(row, {{2500}, kLoads}, InterpolationDirection::kBoth);
  EXPECT_THAT(both.values, Pointwise(DoubleNear(1e-9), std::vector<double>{10, 16, 22, 29}));

  const SelectionValues column = Block(3, 1, {4, 9, 1});
  EXPECT_EQ(Interpolate(column, {{1750, 1000, 500}, {25}}, InterpolationDirection::kRows), column);
  const SelectionValues one = Block(1, 1, {4});
  EXPECT_EQ(Interpolate(one, {{500}, {0}}, InterpolationDirection::kBoth), one);
}

TEST(CellShapingInterpolateTest, AZeroSpanOrUnknownAxisSpacesByIndex) {
  const SelectionValues current = Block(1, 4, {10, 0, 0, 40});
  const std::vector<double> even = {10, 20, 30, 40};
  for (const std::vector<double>& loads :
       {std::vector<double>{50, 50, 50, 50}, std::vector<double>{0, kNan, 12, 19},
        std::vector<double>{0, 6}}) {
    const SelectionValues result =
        Interpolate(current, {{1000}, loads}, InterpolationDirection::kRows);
    EXPECT_THAT(result.values, Pointwise(DoubleNear(1e-9), even));
    for (double v : result.values) EXPECT_TRUE(std::isfinite(v));
  }
  // Two cells on one axis value take one value; the rest still spaces by the axis.
  const SelectionValues repeated = Interpolate(Block(1, 4, {0, 5, 5, 12}), {{1000}, {0, 6, 6, 12}},
                                               InterpolationDirection::kRows);
  EXPECT_THAT(repeated.values, Pointwise(DoubleNear(1e-9), std::vector<double>{0, 6, 6, 12}));
}

TEST(CellShapingSmoothTest, FlattensASpikeAndKeepsTheEdges) {
  std::vector<double> values(25, 0.0);
  values[12] = 16;  // the middle of 5 x 5
  values[0] = 50;   // a corner spike stays, as every edge cell does
  const SelectionValues result = Smooth(Block(5, 5, values));
  EXPECT_THAT(result.values, ElementsAre(50, 0, 0, 0, 0,             //
                                         0, 1 + 50.0 / 16, 2, 1, 0,  //
                                         0, 2, 4, 2, 0,              //
                                         0, 1, 2, 1, 0,              //
                                         0, 0, 0, 0, 0));
}

TEST(CellShapingSmoothTest, LeavesARampAloneAndSmoothsLinesAlongTheirLength) {
  std::vector<double> plane;
  for (int row = 0; row < 4; ++row) {
    for (int column = 0; column < 5; ++column) plane.push_back(3.0 * row - 1.5 * column + 7);
  }
  EXPECT_THAT(Smooth(Block(4, 5, plane)).values, Pointwise(DoubleNear(1e-9), plane));

  EXPECT_THAT(Smooth(Block(5, 1, {0, 0, 8, 0, 0})).values, ElementsAre(0, 2, 4, 2, 0));
  EXPECT_THAT(Smooth(Block(1, 4, {0, 8, 0, 4})).values, ElementsAre(0, 4, 3, 4));
}

TEST(CellShapingSmoothTest, ASelectionWithoutInteriorChangesNothing) {
  for (const SelectionValues& block :
       {Block(2, 6, {1, 9, 1, 9, 1, 9, 9, 1, 9, 1, 9, 1}), Block(1, 2, {0, 8}), Block(1, 1, {3}),
        Block(3, 3, {1, 2})}) {
    EXPECT_EQ(Smooth(block), block);
  }
}

TEST(CellShapingFillTest, EveryCellTakesTheValue) {
  const SelectionValues result = Fill(Block(2, 3, {1, 2, 3, 4, 5, 6}), 8.25);
  EXPECT_EQ(result, Block(2, 3, {8.25, 8.25, 8.25, 8.25, 8.25, 8.25}));
}

TEST(CellShapingGridTest, ReadsASelectionsValuesAndAxesFromTheGrid) {
  MapGridModel grid(MapKind::kFuel, 9);
  grid.SetRpmSites(RpmSites(0));  // 0, 500, 1000, 1750 ... 7000; row 11 is 0 RPM
  grid.SetValue(9, 2, 4.0);
  grid.SetValue(11, 3, 1.5);
  // Given upside down, the rectangle is still rows 9 to 11 and columns 1 to 3.
  const MapCellRect rect{11, 3, 9, 1};
  EXPECT_EQ(ReadSelection(grid, rect), Block(3, 3, {0, 4, 0, 0, 0, 0, 0, 0, 1.5}));
  SelectionAxes axes = AxesOfSelection(grid, rect);
  EXPECT_THAT(axes.row_rpm, ElementsAre(1000, 500, 0));
  EXPECT_THAT(axes.column_load, ElementsAre(0, 12.5, 25));

  grid.SetText(10, 0, "");
  axes = AxesOfSelection(grid, rect);
  EXPECT_TRUE(std::isnan(axes.row_rpm[1]));
}

}  // namespace
}  // namespace vela
