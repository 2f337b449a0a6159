#include "editors/workbench/image_compare.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "editors/compensation/compensation_compare.h"
#include "workbench/test_images.h"

namespace vela {
namespace {

using ::testing::DoubleNear;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Optional;

class ImageCompareTest : public ::testing::Test {
 protected:
  ImageComparison Compare() {
    return CompareImages(ours, theirs, CompensationCompareTables(SensorSetup{}));
  }
  CalibrationImage ours = testing::EvenMaps();
  CalibrationImage theirs = testing::EvenMaps();
};

TEST_F(ImageCompareTest, EqualImagesHaveNoDifferenceOnAnyPage) {
  const ImageComparison comparison = Compare();
  for (ComparePage page : {ComparePage::kFuel1, ComparePage::kFuel2, ComparePage::kIgnition,
                           ComparePage::kCompensation, ComparePage::kSetup}) {
    EXPECT_EQ(comparison.CountOn(page), 0);
  }
  EXPECT_THAT(PositionsToSend(comparison), IsEmpty());
}

// Block row 1 is the bottom grid row (11), block row 11 the top one (1).
TEST_F(ImageCompareTest, ChangedMapCellsAreFoundWhereTheGridShowsThem) {
  theirs.SetFuelMs(1, 1, 3, 2.5);    // grid row 11, column 3
  theirs.SetFuelMs(1, 2, 3, 2.25);   // grid row 10
  theirs.SetFuelMs(2, 11, 2, 1.0);   // grid row 1, column 2, at position 375 + 2 x (90 + 1)
  theirs.SetIgnDegrees(6, 5, 25.5);  // grid row 6, column 5
  const ImageComparison comparison = Compare();

  const TableComparison& fuel1 = *comparison.Table("FuelMap1");
  EXPECT_THAT(fuel1.DifferingCells(), ElementsAre(MapCell{10, 3}, MapCell{11, 3}));
  EXPECT_THAT(fuel1.Difference({11, 3}), Optional(DoubleNear(-0.5, 1e-9)));
  const TableComparison& fuel2 = *comparison.Table("FuelMap2");
  EXPECT_THAT(fuel2.DifferingCells(), ElementsAre(MapCell{1, 2}));
  EXPECT_EQ(fuel2.OurPosition({1, 2}), 557);
  EXPECT_THAT(fuel2.Difference({1, 2}), Optional(DoubleNear(1.0, 1e-9)));
  const TableComparison& ign = *comparison.Table("IgnMap");
  EXPECT_THAT(ign.DifferingCells(), ElementsAre(MapCell{6, 5}));
  EXPECT_THAT(ign.Difference({6, 5}), Optional(DoubleNear(-5.5, 1e-9)));

  EXPECT_EQ(comparison.CountOn(ComparePage::kFuel1), 2);
  EXPECT_EQ(comparison.CountOn(ComparePage::kFuel2), 1);
  EXPECT_EQ(comparison.CountOn(ComparePage::kIgnition), 1);
  EXPECT_EQ(comparison.CountOn(ComparePage::kCompensation), 0);
  EXPECT_EQ(comparison.CountOn(ComparePage::kSetup), 0);
}

// A fuel cell travels as one frame at its first byte, whichever of its bytes changed.
TEST_F(ImageCompareTest, OnlyDifferingCellsAndBytesAreSent) {
  ours.SetFuelMs(1, 1, 1, 2.001);  // low byte only
  theirs.SetIgnDegrees(1, 1, 10.0);
  theirs.SetByte(949, 0x10);
  const ImageComparison comparison = Compare();
  EXPECT_THAT(PositionsToSend(comparison), ElementsAre(1, 751, 949));
}

// A comparison with a map file of another layout: 13 fuel load sites against 9. The grid
// columns only one side has differ on every row; the layout byte is a differing set-up byte.
TEST_F(ImageCompareTest, AnotherLayoutDiffersInTheColumnsOnlyOneSideHas) {
  theirs.SetByte(995, 1);
  for (int r = 1; r <= 11; ++r) {
    for (int c = 1; c <= 13; ++c) theirs.SetFuelMs(1, r, c, 2.0);
  }
  const ImageComparison comparison = Compare();
  const TableComparison& fuel1 = *comparison.Table("FuelMap1");
  EXPECT_EQ(fuel1.Columns(), 13);
  EXPECT_EQ(comparison.CountOn(ComparePage::kFuel1), 4 * 11);
  EXPECT_FALSE(fuel1.Differs({5, 9}));
  EXPECT_TRUE(fuel1.Differs({5, 10}));
  EXPECT_EQ(fuel1.Ours({5, 10}), std::nullopt);
  EXPECT_EQ(fuel1.Difference({5, 10}), std::nullopt);
  EXPECT_THAT(comparison.setup, ElementsAre(SetupByteDifference{995, "FuelSitesSelection", 0, 1}));
  // None of those cells can be taken into a 9-column image.
  const TakeOther take = TakeOtherValues(fuel1);
  EXPECT_THAT(take.bytes, IsEmpty());
  EXPECT_EQ(take.skipped, 44);
}

TEST_F(ImageCompareTest, CompensationCellsAndSetUpBytesAreCountedOnTheirPages) {
  theirs.SetByte(965, 138);   // AirMap row 2: +1.0 against 0 shown as -12.8
  theirs.SetByte(1001, 125);  // BattMap row 2: 1.25 ms
  theirs.SetByte(951, 20);    // the throttle pump's " De-activate Over" (row 3)
  theirs.SetByte(1008, 7);    // a battery byte no row shows: a set-up byte
  theirs.SetByte(950, 3);     // RevLimit1's high byte
  theirs.SetByte(820, 9);     // owned by no editor: not compared
  theirs.SetByte(300, 9);     // unused room of a 9-site fuel map: not compared
  const ImageComparison comparison = Compare();

  const TableComparison& air = *comparison.Table("AirMap");
  EXPECT_EQ(air.FirstRow(), 0);
  EXPECT_THAT(air.DifferingCells(), ElementsAre(MapCell{2, 1}));
  EXPECT_THAT(air.Theirs({2, 1}), Optional(DoubleNear(1.0, 1e-9)));
  EXPECT_THAT(air.Difference({2, 1}), Optional(DoubleNear(-13.8, 1e-9)));
  EXPECT_THAT(comparison.Table("BattMap")->Theirs({2, 1}), Optional(DoubleNear(1.25, 1e-9)));
  EXPECT_THAT(comparison.Table("ThrottlePump")->DifferingCells(), ElementsAre(MapCell{3, 1}));
  EXPECT_EQ(comparison.CountOn(ComparePage::kCompensation), 3);
  EXPECT_THAT(comparison.setup, ElementsAre(SetupByteDifference{950, "RevLimit1", 0, 3},
                                            SetupByteDifference{1008, "BattComp", 0, 7}));
  EXPECT_EQ(comparison.CountOn(ComparePage::kSetup), 2);
}

// What each view shows of a cell is the overlay's (its own tests); here only the key's cycle.
TEST(CompareViewTest, TheKeyCyclesThroughTheThreeViews) {
  EXPECT_EQ(NextView(CompareView::kCurrent), CompareView::kOther);
  EXPECT_EQ(NextView(CompareView::kOther), CompareView::kDifference);
  EXPECT_EQ(NextView(CompareView::kDifference), CompareView::kCurrent);
}

// 2.000 ms is raw 2000 (0x07D0), 2.500 ms raw 2500 (0x09C4), 2.001 ms raw 2001 (0x07D1).
TEST_F(ImageCompareTest, TakingTheOtherSideGivesExactlyTheBytesThatChange) {
  theirs.SetFuelMs(1, 1, 1, 2.5);    // grid (11, 1), position 1
  theirs.SetFuelMs(1, 1, 2, 2.001);  // grid (11, 2), position 3: low byte only
  theirs.SetFuelMs(1, 11, 9, 3.0);   // grid (1, 9): outside the selection below
  const ImageComparison comparison = Compare();
  const TableComparison& fuel1 = *comparison.Table("FuelMap1");

  const TakeOther take = TakeOtherValues(fuel1, MapCellRect{10, 1, 11, 4});
  EXPECT_THAT(take.bytes, ElementsAre(ByteChange{1, 0xD0, 0xC4}, ByteChange{2, 0x07, 0x09},
                                      ByteChange{3, 0xD0, 0xD1}));
  EXPECT_THAT(take.cells, ElementsAre(MapCell{11, 1}, MapCell{11, 2}));
  EXPECT_EQ(take.skipped, 0);

  // The whole map takes the third cell too, and afterwards nothing differs.
  const TakeOther all = TakeOtherValues(fuel1);
  EXPECT_EQ(all.cells.size(), 3u);
  for (const ByteChange& change : all.bytes) ours.SetByte(change.position, change.after);
  EXPECT_EQ(Compare().CountOn(ComparePage::kFuel1), 0);
}

TEST_F(ImageCompareTest, TakingIgnitionAndCompensationCellsWritesTheirOneByte) {
  theirs.SetIgnDegrees(2, 3, 30.0);  // raw 138 at 751 + 5 + 2
  theirs.SetByte(980, 50);           // WaterMap row 1
  const ImageComparison comparison = Compare();
  EXPECT_THAT(TakeOtherValues(*comparison.Table("IgnMap")).bytes,
              ElementsAre(ByteChange{758, 158, 138}));
  EXPECT_THAT(TakeOtherValues(*comparison.Table("WaterMap"), MapCellRect{1, 1, 1, 1}).bytes,
              ElementsAre(ByteChange{980, 0, 50}));
  EXPECT_THAT(TakeOtherValues(*comparison.Table("WaterMap"), MapCellRect{2, 1, 7, 1}).bytes,
              IsEmpty());
}

}  // namespace
}  // namespace vela
