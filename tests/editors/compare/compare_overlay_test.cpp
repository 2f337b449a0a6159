#include "editors/compare/compare_overlay.h"

#include <gtest/gtest.h>

#include "workbench/test_images.h"

namespace vela {
namespace {

class CompareOverlayTest : public ::testing::Test {
 protected:
  TableComparison Fuel() const {
    return TableComparison(FuelMapTable(ours, 1), ours, FuelMapTable(theirs, 1), theirs);
  }
  CalibrationImage ours = testing::EvenMaps();
  CalibrationImage theirs = testing::EvenMaps();
};

// Grid row 11 is block row 1. Ours higher at (11, 1), lower at (11, 2), equal elsewhere.
TEST_F(CompareOverlayTest, EveryViewMarksDifferingCellsBySignAndOnlyThose) {
  ours.SetFuelMs(1, 1, 1, 2.5);
  ours.SetFuelMs(1, 1, 2, 1.75);
  const TableComparison table = Fuel();
  for (CompareView view : {CompareView::kCurrent, CompareView::kOther, CompareView::kDifference}) {
    const GridOverlay overlay = CompareOverlay(table, view, 3, '.');
    EXPECT_EQ(overlay.At(11, 1)->mark, kOursHigherMark);
    EXPECT_EQ(overlay.At(11, 2)->mark, kOursLowerMark);
    EXPECT_EQ(overlay.At(11, 3)->mark, std::nullopt);
    EXPECT_EQ(overlay.At(1, 9)->mark, std::nullopt);
    EXPECT_EQ(overlay.At(12, 1), nullptr);
    EXPECT_EQ(overlay.At(1, 10), nullptr);
  }
  // The current view leaves the values to the grid: they follow the edits.
  const GridOverlay current = CompareOverlay(table, CompareView::kCurrent, 3, '.');
  EXPECT_EQ(current.At(11, 1)->text, std::nullopt);
  EXPECT_EQ(current.At(11, 1)->value, std::nullopt);
  EXPECT_EQ(current.At(11, 1)->ground, std::nullopt);
}

TEST_F(CompareOverlayTest, OtherSideViewShowsTheirValuesWithTheComputersDecimalMark) {
  ours.SetFuelMs(1, 1, 1, 2.5);
  const GridOverlay overlay = CompareOverlay(Fuel(), CompareView::kOther, 3, ',');
  EXPECT_EQ(overlay.At(11, 1)->text, "2,000");
  EXPECT_EQ(overlay.At(11, 1)->value, 2.0);
  EXPECT_EQ(overlay.At(11, 1)->ground, std::nullopt) << "coloured by its value on the grid";
  EXPECT_EQ(overlay.At(5, 5)->text, "2,000");
}

// A base the grid does not hold: the current view shows the base's values (ours), every cell,
// and keeps the marks; the other views are as with the editors' image.
TEST_F(CompareOverlayTest, CurrentViewOfAnotherBaseShowsTheBasesValues) {
  ours.SetFuelMs(1, 1, 1, 2.5);
  const TableComparison table = Fuel();
  const GridOverlay current = CompareOverlay(table, CompareView::kCurrent, 3, ',', true);
  EXPECT_EQ(current.At(11, 1)->text, "2,500");
  EXPECT_EQ(current.At(11, 1)->value, 2.5);
  EXPECT_EQ(current.At(11, 1)->mark, kOursHigherMark);
  EXPECT_EQ(current.At(5, 5)->text, "2,000");
  EXPECT_EQ(current.At(5, 5)->mark, std::nullopt);
  EXPECT_EQ(CompareOverlay(table, CompareView::kOther, 3, ',', true).At(11, 1)->text, "2,000");
  EXPECT_EQ(CompareOverlay(table, CompareView::kDifference, 3, ',', true).At(11, 1)->text,
            "+0,500");
}

TEST_F(CompareOverlayTest, DifferenceViewSignsAndColoursByDirectionAndSize) {
  ours.SetFuelMs(1, 1, 1, 2.5);   // +0.5, the largest
  ours.SetFuelMs(1, 1, 2, 2.1);   // +0.1
  ours.SetFuelMs(1, 1, 3, 1.75);  // -0.25
  const GridOverlay overlay = CompareOverlay(Fuel(), CompareView::kDifference, 3, '.');
  EXPECT_EQ(overlay.At(11, 1)->text, "+0.500");
  EXPECT_EQ(overlay.At(11, 3)->text, "-0.250");
  EXPECT_EQ(overlay.At(11, 4)->text, "0.000");
  EXPECT_EQ(overlay.At(11, 4)->ground, kEqualGround);
  EXPECT_EQ(overlay.At(11, 1)->value, std::nullopt) << "the graph keeps the editors' values";
  const Rgb large = *overlay.At(11, 1)->ground;
  const Rgb small = *overlay.At(11, 2)->ground;
  const Rgb lower = *overlay.At(11, 3)->ground;
  EXPECT_GT(large.red, large.blue);
  EXPECT_GT(lower.blue, lower.red);
  EXPECT_LT(large.green, small.green) << "a larger difference is deeper";
  EXPECT_LT(small.green, 250) << "a small difference still shows";
}

// Ignition is stored inverted (a higher raw value is less advance): the sign follows degrees.
TEST_F(CompareOverlayTest, IgnitionSignFollowsDegreesNotStoredBytes) {
  ours.SetIgnDegrees(1, 1, 25.5);
  const TableComparison table(IgnMapTable(ours), ours, IgnMapTable(theirs), theirs);
  const GridOverlay overlay = CompareOverlay(table, CompareView::kDifference, 1, '.');
  EXPECT_EQ(overlay.At(11, 1)->text, "+5.5");
  EXPECT_EQ(overlay.At(11, 1)->mark, kOursHigherMark);
}

// A table one side holds wider than the other: the extra cells differ, show nothing where a side
// lacks them and carry their own mark.
TEST(CompareOverlay, CellsOnlyOneSideHoldsAreMarkedApart) {
  CalibrationImage image;
  image.SetByte(100, 7);
  image.SetByte(101, 7);
  image.SetByte(102, 9);
  const auto shown = [](int, int raw) { return raw * 1.0; };
  CellTable narrow = ByteColumnTable("T", {100}, shown);
  CellTable wide = ByteColumnTable("T", {101, 102}, shown);
  const TableComparison table(narrow, image, wide, image);
  const GridOverlay difference = CompareOverlay(table, CompareView::kDifference, 0, '.');
  EXPECT_EQ(difference.At(1, 1)->mark, kOneSideMark);  // row 1 of a grid numbered from 0
  EXPECT_EQ(difference.At(1, 1)->text, "");
  EXPECT_EQ(difference.At(1, 1)->ground, kOneSideGround);
  const GridOverlay other = CompareOverlay(table, CompareView::kOther, 0, '.');
  EXPECT_EQ(other.At(1, 1)->text, "9");
  const TableComparison reversed(wide, image, narrow, image);
  EXPECT_EQ(CompareOverlay(reversed, CompareView::kOther, 0, '.').At(1, 1)->text, "");
}

TEST(CompareOverlay, DifferenceGroundNeverFadesToWhiteAndHoldsAtTheLargest) {
  EXPECT_EQ(DifferenceGround(1.0, 1.0), DifferenceGround(5.0, 1.0));
  EXPECT_EQ(DifferenceGround(-2.0, 0.0), DifferenceGround(-1.0, 1.0));
  const Rgb faint = DifferenceGround(1e-9, 1.0);
  EXPECT_LT(faint.green, 240);
  EXPECT_GT(faint.red, faint.blue);
}

}  // namespace
}  // namespace vela
