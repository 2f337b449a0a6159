#include "editors/apply_calibration.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

#include "editor_fakes.h"
#include "editors/setup/setup_checks.h"

namespace vela {
namespace {

using editor_testing::SentFrame;
using editor_testing::SoundImage;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ApplyCalibration : public ::testing::Test, public editor_testing::ApplyRig {
 protected:
  ApplyCalibration() {
    env.end_upload = [this] { ++upload_ends; };
  }
  void Apply(const CalibrationImage& image, CalibrationSource source = CalibrationSource::kUpload) {
    ApplyUploadedCalibration(image, source, state, env);
  }
  static CalibrationImage With(CalibrationImage image, int position, int value) {
    image.SetByte(position, static_cast<std::uint8_t>(value));
    return image;
  }

  EditorState state;
  int upload_ends = 0;
};

TEST_F(ApplyCalibration, SoundBlockFillsTheEditorsWithoutErrorsAndTracesTheSorting) {
  Apply(SoundImage());
  EXPECT_THAT(state.SetupErrors, IsEmpty());
  EXPECT_THAT(status.texts(), ElementsAre("Upload Sorting Started", "Upload Sorting Complete"));
  EXPECT_EQ(state.idle.IdleTargetRpm, 19u * 256);
  EXPECT_EQ(state.version.VersionLabel, "2");
}

// Byte 907's low bits choose the injection mode; the fuel duty limit follows how often each
// injector opens in a cycle.
TEST_F(ApplyCalibration, TheInjectionModeSetsTheIgnitionDivideOfTheDutyLimit) {
  Apply(With(SoundImage(), 907, 64 + 0));  // batch: once a crank turn
  EXPECT_EQ(state.setup.ignition_divide, 2);
  EXPECT_DOUBLE_EQ(DutyLimitBase(state.setup), 60000.0);
  Apply(With(SoundImage(), 907, 64 + 2));  // sequential: once a cycle
  EXPECT_EQ(state.setup.ignition_divide, 1);
  EXPECT_EQ(state.setup.injection_factor, 1);
  EXPECT_DOUBLE_EQ(DutyLimitBase(state.setup), 120000.0);
}

TEST_F(ApplyCalibration, ListsEveryFailedCheckInStepOrderAndStillAppliesEveryField) {
  CalibrationImage image = SoundImage();
  for (auto [position, value] : std::initializer_list<std::pair<int, int>>{
           {947, 9},   {946, 4},   {995, 0x63}, {959, 121},  {996, 2},    {871, 1},  {909, 4},
           {900, 0},   {901, 0},   {902, 6},    {903, 0x83}, {852, 230},  {904, 5},  {905, 3},
           {853, 230}, {906, 4},   {907, 3},    {884, 16},   {910, 16},   {926, 16}, {942, 0x18},
           {949, 0},   {950, 0},   {952, 2},    {955, 0x86}, {956, 65},   {1022, 8}, {1023, 8},
           {958, 128}, {972, 253}, {998, 201},  {1005, 201}, {1006, 255}, {1011, 0}, {1012, 0},
           {1014, 5},  {1015, 4},  {1018, 128}, {867, 4}}) {
    image.SetByte(position, static_cast<std::uint8_t>(value));
  }
  for (int i = 0; i < 8; ++i) image.SetByte(987 + i, static_cast<std::uint8_t>(i + 1));
  Apply(image);

  EXPECT_THAT(
      state.SetupErrors,
      ElementsAre("Cylinders Setup Invalid", "RPM Sites Setup is invalid", "Fuel Load Sites Error",
                  "Fuel Map Selection Error", "Trigger Offset Error", "Ignition Load Sites Error",
                  "Ignition Timing Lock Active", "PC Software out of date", "Rev Limiter 2 Invalid",
                  "Trigger Pattern Invalid", "Trigger Hall or Magnetic Invalid",
                  "Trigger Voltage Invalid", "Home Position Pattern Invalid",
                  "Home Position Hall or Magnetic Invalid", "Home Position Voltage Invalid",
                  "Ignition Spark Mode Invalid", "Fuel Injection Mode and Injector Impedance",
                  "GPO1 Function Invalid", "GPO2 Function Invalid", "GPO3 Function Invalid",
                  "Rev Limiter Type Invalid", "Tacho Output Setup Invalid",
                  "Trigger Edges Setup Invalid", "Rev Limiter 1 Invalid", "TPS Setup Error",
                  "Throttle Pump Setup Error", "Map Sensor Setup Error",
                  "Map Sensor Scaling Invalid", "GPI1 Function Invalid", "GPI2 Function Invalid",
                  "Dwell Time Invalid", "Air Temp Sensor Calibration Error",
                  "Water Temp Sensor Calibration Error", "Water Temp Sensor Calibration Error",
                  "Water Temp Sensor Calibration Error", "Water Temp Sensor Calibration Error",
                  "Water Temp Sensor Calibration Error", "Water Temp Sensor Calibration Error",
                  "Water Temp Sensor Calibration Error", "Injector Startup Prime Invalid",
                  "Battery Voltage Compensation Invalid", "Idle Target RPM Invalid",
                  "Idle Minimum Larger than Maximum Error", "Idle Cold Adjuster Invalid",
                  "Idle PWM Frequency Invalid"));

  EXPECT_EQ(state.setup.cylinders_code, 9);
  EXPECT_EQ(state.setup.trigger_pattern, 6);
  EXPECT_EQ(state.maps.FuelLoadSites, 17);
  EXPECT_EQ(state.maps.IgnLoadSites, 6);
}

TEST_F(ApplyCalibration, InvalidRpmSitesStillFillBothFuelMaps) {
  CalibrationImage image = With(SoundImage(), 946, 4);
  image.Write16(1, 0x1234);  // block row 1, column 1
  image.Write16(375, 1000);  // fuel map 2, block row 1, column 1
  Apply(image);
  EXPECT_THAT(state.SetupErrors, ElementsAre("RPM Sites Setup is invalid"));
  EXPECT_EQ(state.setup.rpm_sites_code, 4);
  EXPECT_DOUBLE_EQ(state.maps.FuelMap1.At(11, 1), 4.66);
  EXPECT_DOUBLE_EQ(state.maps.FuelMap2.At(11, 1), 1.0);
}

TEST_F(ApplyCalibration, FuelSitesByteSizesTheFuelMapsAndChoosesTheMapFromBitSevenDown) {
  CalibrationImage image = With(SoundImage(), 995, 2);
  image.Write16(35, 700);   // 17 sites: block row 2, column 1
  image.Write16(373, 900);  // 17 sites: block row 11, column 17
  Apply(image);
  EXPECT_EQ(state.maps.FuelMap1.Columns(), 17);
  EXPECT_EQ(state.setup.fuel_load_sites_code, 2);
  EXPECT_DOUBLE_EQ(state.maps.FuelMap1.At(10, 1), 0.7);
  EXPECT_DOUBLE_EQ(state.maps.FuelMap1.At(1, 17), 0.9);

  Apply(With(image, 995, 0));
  EXPECT_EQ(state.maps.FuelMap1.Columns(), 9);
  EXPECT_EQ(state.maps.FuelMap2.Columns(), 9);
  EXPECT_EQ(state.setup.fuel_map_selection, kMapSelectionCombine);
  EXPECT_DOUBLE_EQ(state.maps.FuelMap1.At(10, 9), 0.7);  // position 35: block row 2, column 9

  for (auto [bits, selection] : {std::pair{0x20, 0}, {0x40, 1}, {0x80, 2}, {0xC0, 1}}) {
    Apply(With(SoundImage(), 995, bits));
    EXPECT_EQ(state.setup.fuel_map_selection, selection) << bits;
  }
  EXPECT_THAT(state.SetupErrors, ElementsAre("Fuel Map Selection Error"));  // 0xC0 only
}

TEST_F(ApplyCalibration, IgnitionSitesAndLockFillTheIgnitionMap) {
  CalibrationImage image = With(With(SoundImage(), 996, 1), 871, 1);
  image.SetByte(757, 20);  // 6 sites: block row 2, column 1
  Apply(image);
  EXPECT_EQ(state.maps.IgnMap.Columns(), 6);
  EXPECT_DOUBLE_EQ(state.maps.IgnMap.At(10, 1), 89.0);
  EXPECT_TRUE(state.setup.ignition_lock);
  EXPECT_THAT(state.SetupErrors, ElementsAre("Ignition Timing Lock Active"));
}

TEST_F(ApplyCalibration, NewerFirmwareOpensTheUpdateBoxOncePerVersionText) {
  const std::string line = std::string(kSoftwareUpdateLine1);
  Apply(With(SoundImage(), 909, 4));
  ASSERT_EQ(messages.shown.size(), 1u);
  EXPECT_EQ(messages.shown[0].title, "PC Software Update");
  EXPECT_THAT(messages.shown[0].lines, ElementsAre(line + "  ", std::string(kSoftwareUpdateLine2)));
  EXPECT_FALSE(state.version.ShowVersionMessage);

  Apply(With(SoundImage(), 909, 4));
  EXPECT_EQ(messages.shown.size(), 1u);
  EXPECT_THAT(state.SetupErrors, ElementsAre("PC Software out of date", "PC Software out of date"));

  state.version.ShowVersionMessage = true;
  Apply(With(SoundImage(), 909, 4));
  ASSERT_EQ(messages.shown.size(), 2u);
  EXPECT_EQ(messages.shown[1].lines[0], line);

  Apply(With(SoundImage(), 909, 5));
  ASSERT_EQ(messages.shown.size(), 3u);
  EXPECT_EQ(messages.shown[2].lines[0], line + "  ");
  EXPECT_TRUE(state.version.firmware_latest);
}

TEST_F(ApplyCalibration, VersionsUpToThreePassAndZeroSkipsTheChecks) {
  for (int version : {0, 1, 2, 3}) Apply(With(SoundImage(), 909, version));
  EXPECT_THAT(messages.shown, IsEmpty());
  EXPECT_THAT(state.SetupErrors, IsEmpty());
  EXPECT_TRUE(state.version.firmware_latest);  // version 3
  Apply(With(SoundImage(), 909, 0));
  EXPECT_FALSE(state.version.firmware_latest);
  for (int version = 0; version <= 255; ++version) {
    EXPECT_FALSE(FirmwareOlderThanSoftware(static_cast<std::uint8_t>(version))) << version;
  }
}

// The editors send nothing while they fill, and no box opens then: the version message waits
// until the calibration is applied. An upload ends with the live-rate command and leaves the
// upload alone (it ended itself when it handed its block on); a map file ends the upload.
TEST_F(ApplyCalibration, EditorsSendNothingWhileFillingAndNoBoxOpensUntilTheEnd) {
  link.CommsSpeedValue = 27;
  suppress = false;
  std::vector<std::string> events;
  sender.on_send = [&] { events.push_back(suppress ? "send while filling" : "send"); };
  messages.while_open = [&](const std::string&) {
    events.push_back(std::string(suppress ? "box while filling" : "box") + " after " +
                     status.latest());
  };
  Apply(With(SoundImage(), 909, 4));
  EXPECT_THAT(events, ElementsAre("send while filling", "box after Upload Sorting Complete"));
  EXPECT_FALSE(suppress);
  EXPECT_THAT(sender.frames, ElementsAre(SentFrame{4, 864, 27}));
  EXPECT_EQ(upload_ends, 0);

  Apply(SoundImage(), CalibrationSource::kMapFile);
  EXPECT_EQ(sender.frames.size(), 1u);
  EXPECT_EQ(upload_ends, 1);
}

TEST_F(ApplyCalibration, NotesGoToTheCallerWhenItTakesThem) {
  std::vector<CalibrationNote> notes;
  env.notes = &notes;
  Apply(With(SoundImage(), 909, 4));
  EXPECT_THAT(messages.shown, IsEmpty());
  ASSERT_EQ(notes.size(), 1u);
  EXPECT_EQ(notes[0].title, "PC Software Update");
  EXPECT_EQ(notes[0].lines[1], kSoftwareUpdateLine2);
}

TEST_F(ApplyCalibration, ScalingCodeSelectsTheScaleEntryOfTheSensorTypeInByte955) {
  const CalibrationImage type4 = With(SoundImage(), 955, 64 | 4);
  Apply(With(type4, 956, 250));
  EXPECT_EQ(state.sensors.map_sensor_type, 4);
  EXPECT_EQ(state.sensors.map_scale_entry, 11);
  Apply(With(type4, 956, 113));
  EXPECT_EQ(state.sensors.map_scale_entry, 7);
  EXPECT_THAT(state.SetupErrors, IsEmpty());

  Apply(With(With(SoundImage(), 955, 64 | 2), 956, 72));  // a type 3 code on a type 2 sensor
  EXPECT_EQ(state.sensors.map_sensor_type, 2);
  EXPECT_EQ(state.sensors.map_scale_entry, 7);
  EXPECT_EQ(state.sensors.map_scale_code, 72);
  EXPECT_THAT(state.SetupErrors, ElementsAre("Map Sensor Scaling Invalid"));
}

TEST_F(ApplyCalibration, ChecksHoldTheirBoundsAndTheLeftOpenOnesFollowTheDocs) {
  const std::tuple<int, int, const char*> failing[] = {
      {907, 0xC0, "Fuel Injection Mode and Injector Impedance"},
      {907, 0x04, "Fuel Injection Mode and Injector Impedance"},
      {971, 0, "Air Temp Sensor Calibration Error"},
      {955, 0x46, "Map Sensor Setup Error"},
      {998, 15, "Injector Startup Prime Invalid"}};
  for (auto [position, value, message] : failing) {
    state.SetupErrors.clear();
    Apply(With(SoundImage(), position, value));
    EXPECT_THAT(state.SetupErrors, ::testing::Contains(message)) << position;
  }
  // The last value each stated bound lets through ("above" passes the bound, "or more" stops at
  // it), then values the documented choices let through.
  const std::pair<int, int> passing[] = {
      {946, 3},       {959, 120},  {996, 1},    {902, 5},   {903, 0x82}, {852, 229},
      {904, 4},       {905, 0x82}, {853, 229},  {906, 3},   {952, 1},    {958, 127},
      {998, 14},      {1010, 200}, {1018, 127}, {867, 3},   {955, 0xE4}, {955, 0xA0},
      {907, 2 | 128}, {955, 0x45}, {999, 255},  {972, 252}, {1014, 200}};
  for (auto [position, value] : passing) {
    state.SetupErrors.clear();
    Apply(With(SoundImage(), position, value));
    EXPECT_THAT(state.SetupErrors, IsEmpty()) << position << " " << value;
  }
  // The tooth offset names a tooth of the selected wheel; a single trigger has none to check.
  for (auto [pattern, offset, passes] :
       {std::tuple{0, 200, true}, {1, 11, true}, {1, 12, false}, {5, 59, true}, {5, 60, false}}) {
    state.SetupErrors.clear();
    Apply(With(With(SoundImage(), 902, pattern), 908, offset));
    EXPECT_EQ(state.SetupErrors.empty(), passes) << pattern << " " << offset;
  }
}

}  // namespace
}  // namespace vela
