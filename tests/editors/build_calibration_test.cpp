#include "editors/build_calibration.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "editor_fakes.h"

namespace vela {
namespace {

using editor_testing::Applied;
using editor_testing::SoundImage;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

void Fill(CalibrationImage& image, int first, int last, int salt) {
  for (int p = first; p <= last; ++p) {
    image.SetByte(p, static_cast<std::uint8_t>((p * 37 + salt) % 200 + 1));
  }
}

// Every owned byte set to a value the editors hold without loss, the unused map tails and the
// unowned positions set to junk.
CalibrationImage BusyImage() {
  CalibrationImage image = SoundImage();
  image.SetByte(995, 0x80 | 1);  // ECU selected, 13 fuel load sites
  image.SetByte(996, 1);         // 6 ignition load sites
  Fill(image, 1, 286, 1);
  Fill(image, 375, 660, 2);
  Fill(image, 751, 816, 3);
  const std::pair<int, int> owned[] = {
      {749, 750}, {828, 829}, {856, 858},  {860, 863},   {868, 869},  {872, 883}, {885, 899},
      {911, 925}, {927, 941}, {943, 945},  {948, 948},   {951, 951},  {953, 954}, {960, 970},
      {979, 986}, {997, 997}, {999, 1010}, {1016, 1017}, {1019, 1021}};
  for (const auto& [first, last] : owned) Fill(image, first, last, 4);
  image.SetByte(903, 0x81);
  image.SetByte(905, 0x82);
  image.SetByte(907, 2 | 128);
  image.SetByte(942, 1 | 2 | 4 | 32 | 192);
  image.SetByte(955, 0xE0);
  return image;
}

TEST(BuildCalibration, RebuildsAnAppliedBlockWithZerosWhereNoEditorOwnsTheBytes) {
  CalibrationImage source = BusyImage();
  CalibrationImage expected = source;
  for (int p = 287; p <= 374; ++p) source.SetByte(p, 0xAA);  // tail of a 13-site fuel map
  for (int p = 661; p <= 748; ++p) source.SetByte(p, 0xAA);
  for (const PositionRange& range : kUnownedPositions) {
    for (int p = range.first; p <= range.last; ++p) source.SetByte(p, 0x5A);
  }
  const BuiltCalibration built = BuildCalibrationFromEditors(Applied(source));
  EXPECT_THAT(built.errors, IsEmpty());
  for (int p = 1; p <= kImageLength; ++p) {
    EXPECT_EQ(built.image.Byte(p), expected.Byte(p)) << "position " << p;
  }
}

TEST(BuildCalibration, NineFuelAndFiveIgnitionSitesLeaveTheRestOfTheAreasZero) {
  EditorState state = Applied(SoundImage());
  for (int row = 1; row <= 11; ++row) {
    for (int column = 1; column <= 9; ++column) {
      state.maps.FuelMap1.Set(row, column, 1.0);
      state.maps.FuelMap2.Set(row, column, 2.0);
    }
    for (int column = 1; column <= 5; ++column) state.maps.IgnMap.Set(row, column, 10.0);
  }
  const CalibrationImage image = BuildCalibrationFromEditors(state).image;
  EXPECT_EQ(image.Read16(197), 1000u);
  EXPECT_EQ(image.Read16(571), 2000u);
  EXPECT_EQ(image.Byte(805), 178);
  for (int p = 199; p <= 374; ++p) EXPECT_EQ(image.Byte(p), 0) << p;
  for (int p = 573; p <= 748; ++p) EXPECT_EQ(image.Byte(p), 0) << p;
  for (int p = 806; p <= 827; ++p) EXPECT_EQ(image.Byte(p), 0) << p;
}

TEST(BuildCalibration, FailedChecksCarryTheMapErrorSuffixAndNoticesAreLeftOut) {
  EditorState state;
  state.setup.ignition_lock = true;
  const BuiltCalibration built = BuildCalibrationFromEditors(state);
  EXPECT_EQ(built.image.Byte(871), 1);
  EXPECT_THAT(built.errors, ElementsAre("Rev Limiter 2 Invalid, There was an error in your Map",
                                        "Rev Limiter 1 Invalid, There was an error in your Map",
                                        "Idle Target RPM Invalid, There was an error in your Map"));
}

TEST(BuildCalibration, AListWithoutAChoiceIsWrittenAsAnInvalidCode) {
  EditorState state = Applied(SoundImage());
  state.setup.trigger_pattern = kNoEntry;
  state.setup.limiter_mode = kNoEntry;
  const BuiltCalibration built = BuildCalibrationFromEditors(state);
  EXPECT_EQ(built.image.Byte(902), 255);
  EXPECT_THAT(built.errors,
              ElementsAre("Trigger Pattern Invalid, There was an error in your Map",
                          "Rev Limiter Type Invalid, There was an error in your Map"));
}

}  // namespace
}  // namespace vela
