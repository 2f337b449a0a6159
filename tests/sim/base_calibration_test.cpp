#include "sim/core/base_calibration.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "sim/core/live_encoder.h"

namespace vela::sim {
namespace {

std::uint8_t Field(const CalibrationImage& image, std::string_view name, int offset = 0) {
  return image.Byte(FindSetupField(name)->position + offset);
}

TEST(BaseCalibrationTest, FileInTheRepositoryIsWhatTheGeneratorMakesAndWhatIsBuiltIn) {
  std::string error;
  const auto file = LoadCalibrationFile(VELA_BASE_IMAGE_FILE, &error);
  ASSERT_TRUE(file) << error;
  EXPECT_EQ(file->Bytes(), BuildBaseCalibration().Bytes());
  EXPECT_EQ(EmbeddedBaseCalibration().Bytes(), file->Bytes());
  EXPECT_EQ(std::filesystem::file_size(VELA_BASE_IMAGE_FILE), 1023u);
}

TEST(BaseCalibrationTest, LoadSitesAre17FuelAnd6Ignition) {
  const CalibrationImage image = EmbeddedBaseCalibration();
  EXPECT_EQ(image.FuelSitesSelection() & 0x1F, 2);
  EXPECT_EQ(image.FuelLoadSites(), 17);
  EXPECT_EQ(image.IgnSites(), 1);
  EXPECT_EQ(image.IgnLoadSites(), 6);
  const int selection = image.FuelSitesSelection() >> 5;
  EXPECT_TRUE(selection == 1 || selection == 2 || selection == 4);  // one map selection choice
}

TEST(BaseCalibrationTest, EverySetupCheckPasses) {
  const CalibrationImage i = EmbeddedBaseCalibration();
  const std::pair<std::string_view, int> highest[] = {
      {"FirmwareVersion", 3}, {"TriggerPattern", 5},  {"HomePattern", 4},   {"TriggerVoltage", 229},
      {"HomeVoltage", 229},   {"SparkMode", 3},       {"RpmSitesSetup", 3}, {"Cylinders", 8},
      {"TriggerOffset", 120}, {"IgnitionLock", 0},    {"TpsSetup", 1},      {"MapSensorSetup", 228},
      {"DwellTime", 127},     {"IdlePwmFrequency", 3}};
  for (const auto& [name, high] : highest) EXPECT_LE(Field(i, name), high) << name;
  EXPECT_GE(i.FirmwareVersion(), 1);
  EXPECT_LE(Field(i, "TriggerSensor") & 0x7F, 2);
  EXPECT_LE(Field(i, "HomeSensor") & 0x7F, 2);
  EXPECT_EQ(Field(i, "MapSensorScaling"), 64);    // valid for every MAP sensor type
  EXPECT_NE(Field(i, "LimiterTacho") & 0xC0, 0);  // a rev limiter mode is chosen
  EXPECT_LE(Field(i, "IdleMinMax", 0), Field(i, "IdleMinMax", 1));
  EXPECT_LT(Field(i, "IdleCold", 2), 128);
  for (int p = 1000; p <= 1010; ++p) EXPECT_LE(i.Byte(p), 200) << p;
  for (int k = 0; k < 7; ++k) {  // sensor points fall with temperature
    EXPECT_GT(Field(i, "AirSensorCal", k), Field(i, "AirSensorCal", k + 1));
    EXPECT_GT(Field(i, "WaterSensorCal", k), Field(i, "WaterSensorCal", k + 1));
  }
  EXPECT_NEAR(RpmOfPeriodField(i.RevLimit1(), 0), 6800, 1);
  EXPECT_NEAR(RpmOfPeriodField(i.IdleTargetRpm(), 0), 900, 1);
}

// Fuel: 1 to 9 ms, rising with load, not falling with speed. Advance: 10 to 35 degrees, not
// rising with load, not falling with speed.
TEST(BaseCalibrationTest, MapsAreRealistic) {
  const CalibrationImage image = EmbeddedBaseCalibration();
  for (int r = 1; r <= 11; ++r) {
    for (int c = 1; c <= 17; ++c) {
      for (int map = 1; map <= 2; ++map) {
        const double ms = image.FuelMs(map, r, c);
        EXPECT_TRUE(ms >= 1.0 && ms <= 9.0) << ms;
        EXPECT_TRUE(c == 1 || ms > image.FuelMs(map, r, c - 1));
        EXPECT_TRUE(r == 1 || ms >= image.FuelMs(map, r - 1, c));
      }
      if (c > 6) continue;
      const double deg = image.IgnDegrees(r, c);
      EXPECT_TRUE(deg >= 10.0 && deg <= 35.0) << deg;
      EXPECT_TRUE(c == 1 || deg <= image.IgnDegrees(r, c - 1));
      EXPECT_TRUE(r == 1 || deg >= image.IgnDegrees(r - 1, c));
    }
  }
}

TEST(BaseCalibrationTest, UnownedPositionsAreZeroAndNoReplyMarkerIsSpelt) {
  const CalibrationImage image = EmbeddedBaseCalibration();
  for (const PositionRange& range : kUnownedPositions) {
    for (int p = range.first; p <= range.last; ++p) EXPECT_EQ(image.Byte(p), 0) << p;
  }
  EXPECT_EQ(FindMarker(image.Bytes()), std::string_view::npos);
}

TEST(BaseCalibrationTest, LoadingAFileInsistsOnExactly1023Bytes) {
  const auto dir = std::filesystem::temp_directory_path() / "vela_sim_test_images";
  std::filesystem::create_directories(dir);
  const auto write = [&](const char* name, std::size_t n) {
    std::ofstream(dir / name, std::ios::binary) << std::string(n, '\x05');
    return (dir / name).string();
  };
  std::string error;
  EXPECT_FALSE(LoadCalibrationFile(write("short.sm1", 1022), &error));
  EXPECT_FALSE(LoadCalibrationFile(write("long.sm1", 1024), &error));
  EXPECT_FALSE(LoadCalibrationFile((dir / "missing.sm1").string(), &error));
  const auto image = LoadCalibrationFile(write("good.sm1", 1023), &error);
  ASSERT_TRUE(image);
  EXPECT_EQ(image->Byte(1023), 5);
  std::filesystem::remove_all(dir);
}

}  // namespace
}  // namespace vela::sim
