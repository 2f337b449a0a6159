// The painted 3D surface: the box always fits its area, nearer cells are painted after farther
// ones from every side, and the live point stands on the surface between its cells.
#include "editors/mapgrid/surface_geometry.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace vela {
namespace {

std::vector<ScreenPoint> FlatGrid(const SurfaceProjection& view, int rows, int columns) {
  std::vector<ScreenPoint> points;
  for (int row = 0; row < rows; ++row) {
    for (int column = 0; column < columns; ++column) {
      points.push_back(view.Project(column / (columns - 1.0), 0.5, row / (rows - 1.0)));
    }
  }
  return points;
}

TEST(SurfaceProjection, TheWholeBoxFitsTheAreaFromEverySideAndFillsOneOfItsSides) {
  for (double turn = -180; turn <= 180; turn += 15) {
    for (double tilt : {0.0, 5.0, 30.0, 60.0, 85.0, 120.0}) {
      SCOPED_TRACE(::testing::Message() << turn << " " << tilt);
      const SurfaceProjection view({turn, tilt}, 400, 250);
      double left = 1e9, right = -1e9, top = 1e9, bottom = -1e9;
      for (int corner = 0; corner < 8; ++corner) {
        const ScreenPoint p = view.Project(corner & 1, (corner >> 1) & 1, (corner >> 2) & 1);
        left = std::min(left, p.x);
        right = std::max(right, p.x);
        top = std::min(top, p.y);
        bottom = std::max(bottom, p.y);
      }
      EXPECT_GE(left, -1e-6);
      EXPECT_LE(right, 400 + 1e-6);
      EXPECT_GE(top, -1e-6);
      EXPECT_LE(bottom, 250 + 1e-6);
      EXPECT_TRUE(right - left > 400 - 1e-6 || bottom - top > 250 - 1e-6);
    }
  }
}

TEST(SurfaceProjection, HigherValuesStandHigherOnTheScreenAndTheNearCornerIsNearest) {
  const SurfaceProjection view(ViewAngles{}, 500, 400);
  EXPECT_LT(view.Project(0.3, 1.0, 0.3).y, view.Project(0.3, 0.0, 0.3).y);
  const auto [x, z] = view.NearestFloorCorner();
  for (int ox = 0; ox <= 1; ++ox) {
    for (int oz = 0; oz <= 1; ++oz) {
      EXPECT_GE(view.Project(x, 0, z).depth, view.Project(ox, 0, oz).depth);
    }
  }
}

TEST(CellsFarthestFirst, EveryCellOnceAndTheNearCornerCellLastFromEverySide) {
  constexpr int kRows = 11;
  constexpr int kColumns = 9;
  for (double turn = -170; turn <= 180; turn += 20) {
    SCOPED_TRACE(turn);
    const SurfaceProjection view({turn, 30}, 500, 400);
    const std::vector<int> order =
        CellsFarthestFirst(FlatGrid(view, kRows, kColumns), kRows, kColumns);
    ASSERT_EQ(order.size(), static_cast<std::size_t>((kRows - 1) * (kColumns - 1)));
    std::vector<int> sorted = order;
    std::sort(sorted.begin(), sorted.end());
    for (int i = 0; i < static_cast<int>(sorted.size()); ++i) EXPECT_EQ(sorted[i], i);
    const auto [x, z] = view.NearestFloorCorner();
    const int near_cell = (z == 1 ? kRows - 2 : 0) * (kColumns - 1) + (x == 1 ? kColumns - 2 : 0);
    EXPECT_EQ(order.back(), near_cell);
  }
  EXPECT_TRUE(CellsFarthestFirst({}, 11, 9).empty());
  EXPECT_TRUE(CellsFarthestFirst({}, 1, 9).empty());
}

TEST(SurfaceValues, TheLivePointIsReadBetweenItsFourCellsAndHeldAtTheEdges) {
  // 2 rows x 3 columns.
  const std::vector<double> values = {0, 10, 20, 100, 110, 120};
  EXPECT_DOUBLE_EQ(ValueBetween(values, 2, 3, 0, 0), 0);
  EXPECT_DOUBLE_EQ(ValueBetween(values, 2, 3, 1, 2), 120);
  EXPECT_DOUBLE_EQ(ValueBetween(values, 2, 3, 0.5, 1.5), 65);
  EXPECT_DOUBLE_EQ(ValueBetween(values, 2, 3, -3, 9), 20);
  EXPECT_DOUBLE_EQ(ValueBetween(values, 3, 3, 0, 0), 0);  // too few values

  const std::vector<double> rpm = {7000, 6250, 5500};  // falling, as the grid's rows
  EXPECT_DOUBLE_EQ(AxisAt(rpm, 0.5), 6625);
  EXPECT_DOUBLE_EQ(AxisAt(rpm, -1), 7000);
  EXPECT_DOUBLE_EQ(AxisAt(rpm, 7), 5500);
  EXPECT_DOUBLE_EQ(AxisShare(rpm, 6250), 0.5);
  EXPECT_DOUBLE_EQ(AxisShare(rpm, 9000), 0.0);
  EXPECT_DOUBLE_EQ(AxisShare({40}, 40), 0.5);
}

}  // namespace
}  // namespace vela
