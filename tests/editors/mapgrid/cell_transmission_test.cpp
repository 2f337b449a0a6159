#include "editors/mapgrid/cell_transmission.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "editors/mapgrid/grid_setup.h"
#include "support/recording_sender.h"

namespace vela {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Frame = testing::SentFrame;
using testing::RecordingSender;

class CellTransmissionTest : public ::testing::Test {
 protected:
  // A fuel grid of `sites` load sites holding what the image holds.
  MapGridModel FuelGrid(int sites, int map = 1) {
    image.SetByte(995, sites == 9 ? 0 : (sites == 13 ? 1 : 2));
    MapGridModel grid(MapKind::kFuel, sites);
    FillFuelGrid(grid, image, map);
    return grid;
  }

  CalibrationImage image;
  RecordingSender sender;
  CellTransmission transmission{image, sender};
};

TEST_F(CellTransmissionTest, AFuelCellTravelsAsOnePairFrameAtItsPosition) {
  MapGridModel grid = FuelGrid(9);
  grid.SetCurrent(11, 1);
  grid.SetValue(11, 1, 4.66);  // 4660 us = 0x1234
  const TransmissionResult result = transmission.OnCellChanged(grid, {kFuelMap1Start});
  EXPECT_EQ(result.outcome, TransmissionOutcome::kDone);
  EXPECT_THAT(sender.frames, ElementsAre(Frame{kSingleValueWrite, 1, 0x1234}));
  EXPECT_EQ(image.Byte(1), 0x34);
  EXPECT_EQ(image.Byte(2), 0x12);
}

// (Nine sites' stride of 18: the all-ranges and key tests below.)
TEST_F(CellTransmissionTest, RowStrideIsTwiceTheLoadSites) {
  MapGridModel seventeen = FuelGrid(17, 2);
  seventeen.SetCurrent(10, 3);  // one RPM site above the lowest
  transmission.OnCellChanged(seventeen, {kFuelMap2Start});
  ASSERT_EQ(sender.frames.size(), 1u);
  EXPECT_EQ(sender.frames[0].address, 375 + 34 + 4);
}

TEST_F(CellTransmissionTest, TheCurrentRowIsSentEvenWhenItEqualsTheImage) {
  MapGridModel grid = FuelGrid(9);
  image.Write16(1 + 2 * 9 * 6 + 2 * 4, 3210);  // grid row 5, column 5
  FillFuelGrid(grid, image, 1);
  grid.SetCurrent(5, 5);
  transmission.OnCellChanged(grid, {kFuelMap1Start});
  EXPECT_THAT(sender.frames, ElementsAre(Frame{kSingleValueWrite, 117, 3210}));
}

TEST_F(CellTransmissionTest, AllRangesSendsOnlyRowsAboveThatDifferAndNeverRowsBelow) {
  MapGridModel grid = FuelGrid(9);
  grid.SetAllRanges(true);
  for (int row = 1; row <= 11; ++row) grid.SetValue(row, 2, 1.0);  // all differ from the image
  grid.SetValue(3, 2, 0.0);                                        // equals the image
  grid.SetCurrent(5, 2);
  const TransmissionResult result = transmission.OnCellChanged(grid, {kFuelMap1Start});
  EXPECT_THAT(result.sent, ElementsAre(MapCell{5, 2}, MapCell{4, 2}, MapCell{2, 2}, MapCell{1, 2}));
  std::vector<int> addresses;
  for (const Frame& frame : sender.frames) addresses.push_back(frame.address);
  // Grid row r of column 2 lies at 1 + 2 + 18 x (11 - r).
  EXPECT_THAT(addresses, ElementsAre(111, 129, 165, 183));
  EXPECT_EQ(image.Read16(111), 1000u);
  EXPECT_EQ(image.Read16(3 + 18 * 5), 0u);  // row 6: not sent, not written
}

TEST_F(CellTransmissionTest, FuelCellsAreCappedToTheDutyLimitOfTheirRpm) {
  MapGridModel grid = FuelGrid(9);
  grid.SetAllRanges(true);
  grid.SetText(2, 0, "");  // row 2 has no RPM label
  for (int row = 1; row <= 3; ++row) grid.SetValue(row, 1, 40.0);
  grid.SetCurrent(3, 1);  // 5500 rpm: 120000 / 5500 = 21.8 ms
  const TransmissionResult result = transmission.OnCellChanged(grid, {kFuelMap1Start, 1, false});
  EXPECT_EQ(grid.Text(3, 1), "21.800");
  EXPECT_EQ(grid.Text(2, 1), "20.000");  // empty label
  EXPECT_EQ(grid.Text(1, 1), "17.100");  // 7000 rpm
  EXPECT_EQ(result.capped.size(), 3u);
  EXPECT_EQ(sender.frames.back(), (Frame{kSingleValueWrite, 1 + 18 * 10, 17100}));
}

// A map file or an earlier set-up can leave a cell above 100 % duty; an edit anywhere below it
// brings it down, and only it, without sending the cells in between.
TEST_F(CellTransmissionTest, AnEditBelowAHighTopCellCapsAndSendsItWithoutAllRanges) {
  image.Write16(1 + 18 * 10, 65000);  // row 1 (7000 rpm): 65 ms
  image.Write16(1 + 18 * 9, 9000);    // row 2: within its limit
  MapGridModel grid = FuelGrid(9);
  grid.SetValue(9, 1, 3.0);
  grid.SetValue(2, 1, 9.5);  // differs from the image but lies above the change
  grid.SetCurrent(9, 1);
  const TransmissionResult result = transmission.OnCellChanged(grid, {kFuelMap1Start, 1, false});
  EXPECT_THAT(result.capped, ElementsAre(MapCell{1, 1}));
  EXPECT_THAT(result.sent, ElementsAre(MapCell{9, 1}, MapCell{1, 1}));
  EXPECT_THAT(sender.frames, ElementsAre(Frame{kSingleValueWrite, 1 + 18 * 2, 3000},
                                         Frame{kSingleValueWrite, 1 + 18 * 10, 17100}));
  EXPECT_EQ(image.Read16(1 + 18 * 10), 17100u);
  EXPECT_EQ(image.Read16(1 + 18 * 9), 9000u);
}

TEST_F(CellTransmissionTest, DutyLimitFollowsTheIgnitionDivideAndInjectionMode) {
  // (Batch and sequential from the injection byte: the applied calibration's own tests.)
  EXPECT_DOUBLE_EQ(DutyLimitBase(4, false), 30000.0);
  EXPECT_DOUBLE_EQ(DutyLimitBase(0, false), 120000.0);
  EXPECT_EQ(DutyLimitUnits(30000.0, 4800), 6200);  // 6.25 -> 6.2 (half to even)
  EXPECT_EQ(DutyLimitUnits(120000.0, 0), 20000);
  // A label that is no number (or blank: see above) gives no RPM and no limit below 20.0 ms.
  MapGridModel grid = FuelGrid(9);
  grid.SetText(4, 0, "fast");
  EXPECT_EQ(DutyLimitUnits(120000.0, grid.RowRpm(4)), 20000);
  grid.SetText(4, 0, " 3200 ");
  EXPECT_EQ(DutyLimitUnits(40000.0, grid.RowRpm(4)), 12500);  // 12.5 ms exactly is kept
}

TEST_F(CellTransmissionTest, IgnitionCellsAreOneByteFramesWithoutADutyLimit) {
  image.SetByte(996, 1);  // 6 ignition load sites
  MapGridModel grid(MapKind::kIgnition, 6);
  FillIgnGrid(grid, image);
  grid.SetText(1, 0, "");
  grid.SetValue(1, 6, 35.5);  // raw 2 x (99 - 35.5) = 127
  grid.SetValue(11, 1, -28.5);
  grid.SetCurrent(1, 6);
  transmission.OnCellChanged(grid, {kIgnMapStart});
  grid.SetCurrent(11, 1);
  transmission.OnCellChanged(grid, {kIgnMapStart});
  EXPECT_THAT(sender.frames, ElementsAre(Frame{kSingleValueWrite, 751 + 5 + 6 * 10, 127},
                                         Frame{kSingleValueWrite, 751, 255}));
  EXPECT_EQ(grid.Text(1, 6), "35.5");
  EXPECT_EQ(image.Byte(751), 255);
}

TEST_F(CellTransmissionTest, APositionBeyondTheAddressRangeStopsWithoutSending) {
  MapGridModel grid(MapKind::kFuel, 2000);
  grid.SetValue(1, 1, 1.0);
  grid.SetCurrent(1, 1);
  const TransmissionResult result = transmission.OnCellChanged(grid, {kFuelMap1Start});
  EXPECT_EQ(result.outcome, TransmissionOutcome::kOverflow);
  EXPECT_THAT(sender.frames, IsEmpty());
  EXPECT_EQ(grid.Text(1, 1), "1.000");
}

TEST_F(CellTransmissionTest, AChangeArrivingWhileOneIsHandledIsRefused) {
  MapGridModel grid = FuelGrid(9);
  grid.SetValue(11, 1, 2.0);
  grid.SetCurrent(11, 1);
  TransmissionResult inner;
  bool reentered = false;
  sender.on_send = [&] {
    if (reentered) return;
    reentered = true;
    inner = transmission.OnCellChanged(grid, {kFuelMap1Start});
  };
  transmission.OnCellChanged(grid, {kFuelMap1Start});
  ASSERT_TRUE(reentered);
  EXPECT_EQ(inner.outcome, TransmissionOutcome::kBusy);
  EXPECT_EQ(sender.frames.size(), 1u);
  EXPECT_FALSE(transmission.Busy());
}

TEST_F(CellTransmissionTest, KeyChangesOfSeveralColumnsSendEveryChangedCell) {
  MapGridModel grid = FuelGrid(9, 2);
  std::vector<MapCell> changed;
  grid.SetCellsChangedHandler([&](const std::vector<MapCell>& cells) { changed = cells; });
  grid.Select({6, 3, 7, 4}, {7, 4});
  grid.ApplyStep({ValueKey::kOneMs, 1});
  transmission.OnCellsChanged(grid, changed, {kFuelMap2Start});
  // Column 3 rows 7 and 6, then column 4 rows 7 and 6; each 1.000 ms.
  EXPECT_THAT(sender.frames, ElementsAre(Frame{kSingleValueWrite, 375 + 4 + 18 * 4, 1000},
                                         Frame{kSingleValueWrite, 375 + 4 + 18 * 5, 1000},
                                         Frame{kSingleValueWrite, 375 + 6 + 18 * 4, 1000},
                                         Frame{kSingleValueWrite, 375 + 6 + 18 * 5, 1000}));
  EXPECT_EQ(image.Read16(375 + 6 + 18 * 5), 1000u);
}

}  // namespace
}  // namespace vela
