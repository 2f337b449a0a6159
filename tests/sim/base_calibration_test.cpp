#include "sim/core/base_calibration.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "editors/setup/setup_checks.h"
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
}

TEST(BaseCalibrationTest, PassesTheProgramsSetupChecksAndLeavesUnownedPositionsZero) {
  const CalibrationImage i = EmbeddedBaseCalibration();
  std::vector<std::string> failed;
  RunChecks(AllSetupChecks(), i, CheckContext{}, failed);
  EXPECT_TRUE(failed.empty()) << failed.front();
  EXPECT_EQ(Field(i, "MapSensorScaling"), 64);    // valid for every MAP sensor type
  EXPECT_NE(Field(i, "LimiterTacho") & 0xC0, 0);  // a rev limiter mode is chosen
  for (int k = 0; k < 7; ++k) {                   // sensor points fall with temperature
    EXPECT_GT(Field(i, "AirSensorCal", k), Field(i, "AirSensorCal", k + 1));
    EXPECT_GT(Field(i, "WaterSensorCal", k), Field(i, "WaterSensorCal", k + 1));
  }
  EXPECT_NEAR(RpmOfPeriodField(i.RevLimit1(), 0), 6800, 1);
  EXPECT_NEAR(RpmOfPeriodField(i.IdleTargetRpm(), 0), 900, 1);
  for (const PositionRange& range : kUnownedPositions) {  // positions no field owns are zero
    for (int p = range.first; p <= range.last; ++p) EXPECT_EQ(i.Byte(p), 0) << p;
  }
  EXPECT_EQ(FindMarker(i.Bytes()), std::string_view::npos);  // no reply marker is spelt
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
  const auto image = LoadCalibrationFile(write("good.sm1", 1023), &error);
  ASSERT_TRUE(image);
  EXPECT_EQ(image->Byte(1023), 5);
  std::filesystem::remove_all(dir);
}

}  // namespace
}  // namespace vela::sim
