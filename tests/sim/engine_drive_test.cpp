// The drive the simulated engine runs, the log it writes without a link and the target table's
// file.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>

#include "datalog/files/log_file.h"
#include "sim/core/base_calibration.h"
#include "sim/core/engine_model.h"
#include "sim/core/sim_options.h"
#include "sim/engine/drive_log.h"
#include "sim/engine/offline_run.h"
#include "sim/engine/true_map.h"
#include "tune/target/target_table.h"

namespace vela::sim {
namespace {

// Ten minutes of the drive: which cells the engine ran near (the four around each point) and how
// often each kind of moment came, from cold to warm.
TEST(DriveCycleTest, TenMinutesVisitMostOfTheMapWithEveryKindOfMoment) {
  const CalibrationImage image = EmbeddedBaseCalibration();
  EngineModel engine(11);
  std::set<std::pair<int, int>> cells;
  int cut = 0, pump = 0, pulls = 0, limiter = 0, tip_ins = 0;
  double first_water = 0, map_high = 0, cut_injection = 0;
  for (int i = 0; i < 60'000; ++i) {
    engine.Step(image);
    const EngineState& s = engine.State();
    if (i == 0) first_water = s.water_c;
    const int r = static_cast<int>(s.rpm_site), c = static_cast<int>(s.load_site);
    for (int dr : {0, 1}) {
      for (int dc : {0, 1}) cells.insert({std::min(r + dr, 10), std::min(c + dc, 16)});
    }
    map_high = std::max(map_high, s.map_kpa);
    if (s.decel_cut) cut_injection = std::max(cut_injection, s.injection_us);
    cut += s.decel_cut;
    pump += s.throttle_pump_us > 0;
    pulls += s.phase == DrivePhase::kPull;
    tip_ins += s.phase == DrivePhase::kTipIn;
    limiter += s.limiter;
  }
  EXPECT_GE(cells.size(), 187u * 2 / 3);
  EXPECT_GT(cut, 1000);         // 10 s of decel cut ...
  EXPECT_EQ(cut_injection, 0);  // ... with no fuel at all
  EXPECT_GT(tip_ins, 500);      // 5 s of tip-ins
  EXPECT_GT(pump, 100);
  EXPECT_GT(pulls, 3000);
  EXPECT_GT(limiter, 0);
  EXPECT_LT(first_water, 25);             // from cold ...
  EXPECT_GT(engine.State().water_c, 80);  // ... to warm
  EXPECT_LE(map_high, 101.3);             // never above the air around it
}

// The log reads back whole, a record a frame (their spacing: the tuning proof's delay fit); the
// same seed gives the same file, another seed another.
TEST(DriveLogTest, TheLogIsTheProgramsChartFileAndTheSeedFixesIt) {
  const CalibrationImage image = EmbeddedBaseCalibration();
  auto log_of = [&](std::uint64_t seed) {
    SimOptions options;
    options.seed = seed;
    DatalogLog log;
    RunDrive(options, image, 60, log);
    return EncodeLogFile(log);
  };
  const std::string file = log_of(7);
  EXPECT_EQ(file, log_of(7));
  EXPECT_NE(file, log_of(8));
  DatalogLog log;
  ASSERT_TRUE(DecodeLogFile(file, log).Intact());
  ASSERT_EQ(log.RecordCount(), 60u * kDriveLogFramesPerSecond);
  EXPECT_NEAR(log.Arrivals().back(), 60.0, 1e-9);
}

// --target reads the table the program keeps beside a map file, on the fuel map's axes: the true
// map is made for it; a table on other axes is refused with the program's reasons.
TEST(TargetTableTest, TheTrueMapFollowsTheProgramsTargetFile) {
  const CalibrationImage base = EmbeddedBaseCalibration();
  TargetTable rich(FuelAxesOf(base));
  rich.Set(1, 17, 11.8);
  const std::filesystem::path dir = std::filesystem::temp_directory_path() / "vela_sim_target";
  std::filesystem::create_directories(dir);
  const std::string csv = (dir / "t.afr.csv").string();
  const std::string out = (dir / "t.sm1").string();
  std::ofstream(csv, std::ios::binary) << TargetCsv(rich);
  std::string error;
  const std::vector<std::string_view> args = {"--true-map", out, "--target", csv};
  const auto line = ParseSimCommandLine(args, &error);
  ASSERT_TRUE(line) << error;
  ASSERT_TRUE(RunOffline(*line, &error)) << error;
  const auto written = LoadCalibrationFile(out, &error);
  ASSERT_TRUE(written) << error;
  EXPECT_EQ(written->Bytes(), WithTrueFuelMap(base, {}, rich).Bytes());
  EXPECT_GT(written->FuelMs(1, 11, 17), base.FuelMs(1, 11, 17) * 1.05);

  std::ofstream(csv, std::ios::binary) << "RPM/kPa,0,100\n0,13.5,13.5\n9000,13.5,13.5\n";
  EXPECT_FALSE(RunOffline(*line, &error));
  EXPECT_NE(error.find(csv + ": The target CSV has 3 lines"), std::string::npos) << error;
  std::filesystem::remove_all(dir);
}

}  // namespace
}  // namespace vela::sim
