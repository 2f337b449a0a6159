#include "editors/history/restore_writes.h"

#include <gtest/gtest.h>

#include "workbench/test_images.h"

namespace vela {
namespace {

constexpr int kFuelSitesByte = 995;
constexpr int kIgnSitesByte = 996;

// Random bytes with valid load-site codes: 17 fuel and 6 ignition load sites.
CalibrationImage Calibration(unsigned seed) {
  CalibrationImage image = testing::Noise(seed);
  image.SetByte(kFuelSitesByte, 2);
  image.SetByte(kIgnSitesByte, 1);
  return image;
}

CalibrationImage Applied(CalibrationImage image, const RestorePlan& plan) {
  ApplyWrites(image, plan.writes);
  return image;
}

TEST(RestoreWritesTest, WholeImageComesBackExactly) {
  const CalibrationImage now = Calibration(1);
  const CalibrationImage point = Calibration(2);
  const RestorePlan plan = PlanRestore(now, point, EditPlace::kWholeImage);
  EXPECT_TRUE(plan.refusal.empty());
  EXPECT_EQ(Applied(now, plan).Bytes(), point.Bytes());
  EXPECT_TRUE(PlanRestore(point, point, EditPlace::kWholeImage).writes.empty());
}

// Restoring one map takes its whole area from the point, its first and last byte included, and
// leaves every byte outside it, the neighbouring map's first byte too.
TEST(RestoreWritesTest, OneMapTakesOnlyItsOwnArea) {
  const CalibrationImage now = Calibration(3);
  const CalibrationImage point = Calibration(4);
  struct Case {
    EditPlace place;
    int start;
    int length;
  };
  for (const Case& c : {Case{EditPlace::kFuelMap1, kFuelMap1Start, kFuelMapAreaLength},
                        Case{EditPlace::kFuelMap2, kFuelMap2Start, kFuelMapAreaLength},
                        Case{EditPlace::kIgnMap, kIgnMapStart, kIgnMapAreaLength}}) {
    const RestorePlan plan = PlanRestore(now, point, c.place);
    ASSERT_TRUE(plan.refusal.empty());
    const CalibrationImage after = Applied(now, plan);
    for (int p = 1; p <= kImageLength; ++p) {
      const bool inside = p >= c.start && p < c.start + c.length;
      EXPECT_EQ(after.Byte(p), inside ? point.Byte(p) : now.Byte(p)) << p;
    }
  }
}

// A map laid out over another number of load sites would land its values in other cells.
TEST(RestoreWritesTest, MapOfAnotherLayoutIsRefusedWholeImageIsNot) {
  const CalibrationImage now = Calibration(5);
  CalibrationImage point = Calibration(6);
  point.SetByte(kFuelSitesByte, 1);  // 13 fuel load sites
  for (EditPlace place : {EditPlace::kFuelMap1, EditPlace::kFuelMap2}) {
    const RestorePlan plan = PlanRestore(now, point, place);
    EXPECT_TRUE(plan.writes.empty());
    EXPECT_NE(plan.refusal.find("13 load sites"), std::string::npos) << plan.refusal;
  }
  EXPECT_TRUE(PlanRestore(now, point, EditPlace::kIgnMap).refusal.empty());
  point.SetByte(kIgnSitesByte, 0);  // 5 ignition load sites
  EXPECT_FALSE(PlanRestore(now, point, EditPlace::kIgnMap).refusal.empty());
  EXPECT_EQ(Applied(now, PlanRestore(now, point, EditPlace::kWholeImage)).Bytes(), point.Bytes());
  EXPECT_FALSE(PlanRestore(now, point, EditPlace::kSetup).refusal.empty());
}

}  // namespace
}  // namespace vela
