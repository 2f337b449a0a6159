#include "sim/core/engine_model.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "link/receive/receive_handlers.h"
#include "sim/core/base_calibration.h"
#include "sim/core/live_encoder.h"

namespace vela::sim {
namespace {

struct Extremes {
  double low = 1e9;
  double high = -1e9;
  void Add(double v) {
    low = std::min(low, v);
    high = std::max(high, v);
  }
};

// Ten simulated minutes of the base engine.
class EngineRunTest : public ::testing::Test {
 protected:
  void SetUp() override {
    EngineModel engine(3);
    double lambda_sum = 0;
    int fuelled = 0;
    int steady_steps = 0;
    int idle_steps = 0;
    for (int i = 0; i < 60'000; ++i) {
      engine.Step(image_);
      const EngineState& s = engine.State();
      rpm_.Add(s.rpm);
      map_.Add(s.map_kpa);
      battery_.Add(s.battery_v);
      advance_.Add(s.advance_deg);
      const bool idling =
          s.phase == DrivePhase::kIdle && s.throttle_pct < 0.5 && s.rpm < s.idle_target_rpm + 100;
      idle_steps = idling ? idle_steps + 1 : 0;
      if (idle_steps > 50) idle_map_.Add(s.map_kpa);
      if (s.decel_cut) ++cut_steps_;
      if (s.decel_cut) cut_injection_.Add(s.injection_us);
      water_.Add(s.water_c);
      // Warm, fuelled and cruising for 1.5 s (the sensor has seen the cruise's own exhaust).
      const bool steady = s.water_c > 80 && !s.decel_cut && !s.limiter &&
                          s.phase == DrivePhase::kCruise && s.throttle_pump_us == 0;
      steady_steps = steady ? steady_steps + 1 : 0;
      if (steady_steps > 150) {
        lambda_.Add(s.lambda);
        injection_.Add(s.injection_us);
        lambda_sum += s.lambda;
        ++fuelled;
      }
    }
    lambda_mean_ = lambda_sum / fuelled;
  }

  CalibrationImage image_ = EmbeddedBaseCalibration();
  Extremes rpm_, map_, battery_, lambda_, injection_, advance_, water_, idle_map_;
  double lambda_mean_ = 0;
  Extremes cut_injection_;
  int cut_steps_ = 0;
};

TEST_F(EngineRunTest, SpeedWandersBetweenIdleAndAFewThousand) {
  EXPECT_LT(rpm_.low, 1000);
  EXPECT_GT(rpm_.low, 600);
  EXPECT_GT(rpm_.high, 4000);
  EXPECT_LT(rpm_.high, 6800);  // below the rev limiter
}

TEST_F(EngineRunTest, ManifoldPressureFollowsTheThrottle) {
  EXPECT_LT(idle_map_.high, 45);
  EXPECT_GT(map_.high, 90);
  EXPECT_LE(map_.high, 101.3);
}

TEST_F(EngineRunTest, ElectricsMixtureAndTimingStayInTheirBands) {
  EXPECT_GE(battery_.low, 13.8);
  EXPECT_LE(battery_.high, 14.2);
  EXPECT_GT(battery_.high - battery_.low, 0.2);  // ripple
  // Cruising warm, the base calibration holds the engine at its targets: lambda 1.0 up to 40 %
  // load, 0.87 from 80 %.
  EXPECT_GE(lambda_.low, 0.8);
  EXPECT_LE(lambda_.high, 1.2);
  EXPECT_NEAR(lambda_mean_, 0.95, 0.05);
  EXPECT_GE(advance_.low, 10);
  EXPECT_LE(advance_.high, 35);
  EXPECT_GT(injection_.low, 1000);
  EXPECT_LT(injection_.high, 12'000);
  // Lifting off at speed cuts the fuel altogether.
  EXPECT_GT(cut_steps_, 0);
  EXPECT_EQ(cut_injection_.high, 0);
}

// The drive cycle test sees the water warm up from cold; here it holds at the thermostat.
TEST_F(EngineRunTest, WaterHoldsAtTheThermostat) { EXPECT_LT(water_.high, 95); }

TEST(EngineLookupTest, FuelAndIgnitionBlendNeighbouringSites) {
  const CalibrationImage image = EmbeddedBaseCalibration();
  const double cell = image.Read16(image.FuelCellPosition(1, 3, 5));
  const double right = image.Read16(image.FuelCellPosition(1, 3, 6));
  const double up = image.Read16(image.FuelCellPosition(1, 4, 5));
  EXPECT_DOUBLE_EQ(FuelMapUs(image, 1, 2.0, 4.0), cell);
  EXPECT_DOUBLE_EQ(FuelMapUs(image, 1, 2.0, 4.5), (cell + right) / 2);
  EXPECT_DOUBLE_EQ(FuelMapUs(image, 1, 2.5, 4.0), (cell + up) / 2);
  EXPECT_DOUBLE_EQ(IgnMapDegrees(image, 10.0, 1.0), image.IgnDegrees(11, 6));
  // 750 RPM spacing: sites 0, 500, 1000, 1750, ...; MAP load sensing on 0 to 100 kPa.
  EXPECT_DOUBLE_EQ(RpmSitePosition(image, 1750), 3.0);
  EXPECT_DOUBLE_EQ(RpmSitePosition(image, 1375), 2.5);
  EXPECT_DOUBLE_EQ(LoadFraction(image, 50.0, 0.0), 0.5);
}

TEST(EngineLookupTest, SensorReadingFollowsTheCalibrationPoints) {
  const CalibrationImage image = EmbeddedBaseCalibration();
  // A 10-bit count: four counts to one step of the points.
  EXPECT_EQ(SensorReading(image, 987, -20), 4 * image.Byte(987));
  EXPECT_EQ(SensorReading(image, 987, 120), 4 * image.Byte(994));
  EXPECT_EQ(SensorReading(image, 987, 30), 2 * (image.Byte(989) + image.Byte(990)));
}

// The simulated ECU's frame read by the program's own receive handlers gives back the engine's
// values, and the values sit at the positions the program's readers use.
TEST(LiveEncoderTest, TheProgramsHandlersReadBackWhatTheEcuEncoded) {
  EngineState s;
  s.rpm = 3000;
  s.map_kpa = 55.5;
  s.throttle_pct = 12.3;
  s.injection_us = 4320;
  s.advance_deg = -2.5;
  s.battery_v = 13.95;
  s.lambda = 0.98;
  s.idle_duty_pct = 31.25;
  s.idle_target_rpm = 950;
  s.throttle_pump_us = 432;
  s.rpm_site = 4.0;
  s.load_site = 8.5;
  s.water_c = 40.0;
  s.air_c = 20.0;
  s.error_count = 1;
  s.last_error = 3;
  const CalibrationImage image = EmbeddedBaseCalibration();
  const live::Frame f = EncodeLiveFrame(s, image, 25);
  LiveData live;
  ReceiveHandlers handlers(live);
  handlers.SetCalibration(&image);
  handlers.RunAll(f);
  EXPECT_DOUBLE_EQ(live.engine_rpm, 3000.0);
  EXPECT_DOUBLE_EQ(live.map_kpa, 55.5);
  EXPECT_NEAR(live.tps_percent, 12.3, 0.05);
  EXPECT_DOUBLE_EQ(live.injection_ms, 4.32);
  EXPECT_DOUBLE_EQ(live.ignition_advance_deg, -2.5);
  EXPECT_DOUBLE_EQ(live.battery_volts, 13.95);
  EXPECT_DOUBLE_EQ(live.lambda, 0.98);
  EXPECT_DOUBLE_EQ(live.idle_valve_percent, 31.25);
  EXPECT_EQ(live.idle_target_rpm, 950);
  EXPECT_DOUBLE_EQ(live.throttle_pump_percent, 10.0);
  EXPECT_EQ(live.rpm_site, 4.0);
  EXPECT_EQ(live.load_site, 8.5);
  EXPECT_NEAR(live.water_temp_c, 40.0, 0.5);
  EXPECT_NEAR(live.air_temp_c, 20.0, 0.5);
  EXPECT_EQ(live.frames_per_second, 25);
  EXPECT_EQ(live.error_count, 1);
  EXPECT_EQ(live.last_error, 3);
  EXPECT_TRUE(live.throttle_pump_active);
  EXPECT_EQ(live::U16(f, 9), 432u);   // injection time x 100
  EXPECT_EQ(live::U16(f, 13), 555u);  // MAP x 10
  EXPECT_EQ(live::At(f, 23), 80);     // idle valve x 2.56
}

}  // namespace
}  // namespace vela::sim
