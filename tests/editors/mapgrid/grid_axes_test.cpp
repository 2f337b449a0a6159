// The map axes the calibration sets: the RPM rows of each site spacing, the load columns of each
// load basis and MAP scaling, and the cross-hair reading the same axes.
#include <gtest/gtest.h>

#include "calibration/map_axes.h"
#include "editors/mapgrid/grid_setup.h"
#include "editors/mapgrid/map_display.h"

namespace vela {
namespace {

constexpr int kTwoAndAHalfBar = 2;  // `ComboMAP` type with four scalings

MapGridModel GridWith(const GridAxes& axes, int load_sites = 9) {
  MapGridModel grid(MapKind::kFuel, load_sites);
  ApplyAxes(grid, axes);
  return grid;
}

TEST(RpmSites, EachSpacingEndsOnTheSpeedItsEntryNamesAndStepsDownByItsSpacing) {
  const int tops[] = {7000, 8200, 9000, 10000};
  const int spacings[] = {750, 900, 1000, 1200};
  for (int code = 0; code < 4; ++code) {
    SCOPED_TRACE(code);
    const std::array<int, kMapRows> sites = RpmSites(code);
    EXPECT_EQ(sites.back(), tops[code]);
    EXPECT_EQ(sites.front(), 0);
    for (std::size_t i = 1; i < sites.size(); ++i) EXPECT_GT(sites[i], sites[i - 1]);
    // The upper sites keep the spacing down to at least one spacing above 0 RPM.
    int spaced = 0;
    for (std::size_t i = sites.size() - 1; i > 0 && sites[i] - sites[i - 1] == spacings[code];
         --i) {
      ++spaced;
    }
    EXPECT_GE(sites[kMapRows - 1 - spaced], spacings[code]);
    EXPECT_LT(sites[kMapRows - 1 - spaced] - spacings[code], spacings[code]);
  }
  EXPECT_EQ(RpmSites(0), (std::array<int, kMapRows>{0, 500, 1000, 1750, 2500, 3250, 4000, 4750,
                                                    5500, 6250, 7000}));
  EXPECT_EQ(RpmSites(4), RpmSites(0));  // an invalid code reads as the first spacing
}

TEST(GridAxes, RowsCapAndCrossHairFollowEverySpacing) {
  for (int code = 0; code < 4; ++code) {
    SCOPED_TRACE(code);
    const MapGridModel grid = GridWith(AxesFor(code, true, kTwoAndAHalfBar, 64));
    const std::array<int, kMapRows> sites = RpmSites(code);
    EXPECT_EQ(grid.RpmLabel(1), std::to_string(sites[10]));
    EXPECT_EQ(grid.RpmLabel(11), "0");
    EXPECT_EQ(grid.RowRpm(1), sites[10]);
    // Halfway between the two top sites the mark stands halfway between rows 1 and 2.
    const double rpm = (sites[9] + sites[10]) / 2.0;
    const OperatingPoint point = OperatingPointOn(grid, {rpm, 0.0, 0.0});
    EXPECT_NEAR(point.row, 1.5, 1e-9);
    EXPECT_NEAR(OperatingPointOn(grid, {20000.0, 0.0, 0.0}).row, 1.0, 1e-9);
  }
}

TEST(GridAxes, LoadColumnsFollowTheScalingAndTheCrossHairStandsOnThem) {
  // 88.8 kPa on a full-scale 2.5 bar sensor: 0 to 250 kPa over nine sites, 31.25 kPa apart.
  const MapGridModel full = GridWith(AxesFor(0, true, kTwoAndAHalfBar, 64));
  EXPECT_EQ(full.LoadLabel(1), "0");
  EXPECT_EQ(full.LoadLabel(9), "250");
  EXPECT_EQ(full.LoadUnit(), "kPa");
  EXPECT_NEAR(OperatingPointOn(full, {1000.0, 88.8, 50.0}).column, 1.0 + 88.8 / 31.25, 1e-9);
  // The same sensor scaled to 1.036 bar: 0 to 103.6 kPa.
  const MapGridModel scaled = GridWith(AxesFor(0, true, kTwoAndAHalfBar, 158));
  EXPECT_EQ(scaled.LoadLabel(9), "104");
  EXPECT_EQ(scaled.LoadLabel(2), "13");
  EXPECT_NEAR(OperatingPointOn(scaled, {1000.0, 88.8, 50.0}).column, 1.0 + 88.8 / 12.95, 1e-9);
  EXPECT_EQ(OperatingPointOn(scaled, {1000.0, 180.0, 50.0}).column, 9.0);
  // A code the type does not take reads as its full span.
  EXPECT_EQ(GridWith(AxesFor(0, true, kTwoAndAHalfBar, 99)).LoadLabel(9), "250");
  // On a throttle basis the columns are percent and the mark follows the throttle.
  const MapGridModel throttle = GridWith(AxesFor(0, false, kTwoAndAHalfBar, 64), 5);
  EXPECT_EQ(throttle.LoadUnit(), "%");
  EXPECT_EQ(throttle.LoadLabel(5), "100");
  EXPECT_EQ(throttle.LoadLabel(2), "25");
  EXPECT_NEAR(OperatingPointOn(throttle, {1000.0, 250.0, 62.5}).column, 3.5, 1e-9);
}

TEST(MapSensorScales, CodesReadAsTheirEntries) {
  EXPECT_EQ(MapScaleEntryOfCode(4, 163), 10);
  EXPECT_EQ(MapScaleEntryOfCode(4, 251), 11);
  EXPECT_EQ(MapScaleEntryOfCode(3, 251), std::nullopt);
  EXPECT_EQ(MapScaleEntryOfCode(-1, 64), 0);
  EXPECT_EQ(MapSensorTypeOf(3).scales[5].text, "Scaled to 1.041 Bar Span");
}

}  // namespace
}  // namespace vela
