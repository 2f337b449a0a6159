// The receive handlers: a frame built with the live frame layout, decoded into the live data set.
#include <gtest/gtest.h>

#include "calibration/conversions.h"
#include "support/receive_rig.h"

namespace vela::testing {
namespace {

struct HandlerTest : ::testing::Test {
  void SetUp() override {
    for (int i = 0; i < 8; ++i) {  // both sensors: 240 at -20 C falling by 20 to 100 at 120 C
      image.SetByte(987 + i, static_cast<std::uint8_t>(240 - 20 * i));
      image.SetByte(971 + i, static_cast<std::uint8_t>(240 - 20 * i));
    }
    handlers.SetCalibration(&image);
  }
  void Run(const FrameBuilder& frame) { handlers.RunAll(frame.frame); }

  LiveData live;
  std::vector<std::uint32_t> counts;
  ReceiveHandlers handlers{live, {[this](std::uint32_t c) { counts.push_back(c); }, nullptr}};
  CalibrationImage image;
};

// The frame is built at the fixed positions by number, not through the layout's constants, so
// that a field moved in the layout fails here.
TEST_F(HandlerTest, DecodesEveryFieldFromItsPositionInTheFrame) {
  Run(FrameBuilder()
          .U24(6, 20'000)                              // period: 3000 RPM
          .U16(9, 432)                                 // injection time x 100
          .U16(11, static_cast<std::uint16_t>(-2816))  // advance x 512: -5.5 degrees
          .U16(13, 1013)                               // MAP x 10
          .U16(15, 466)                                // throttle, 10-bit
          .U16(17, 190 * 4)                            // water: 30 C on the test sensor
          .U16(19, 220 * 4)                            // air: 0 C
          .U16(21, 1385)                               // battery x 100
          .Byte(23, 85)                                // idle valve x 2.56
          .U16(24, 952)                                // lambda x 1000
          .Byte(26, 40)                                // load site x 16
          .Byte(28, 24)                                // RPM site x 16
          .U16(29, 125)                                // throttle pump addition x 10
          .Byte(31, 5)
          .U16(32, 950)
          .Byte(36, live::kStatusEngineActive | live::kStatusFuelMap2)
          .Byte(37, 3)
          .Byte(38, 7)
          .Byte(39, 1)
          .Byte(40, 25)
          .Byte(41, 2)
          .Byte(42, 77));
  EXPECT_EQ(counts, std::vector<std::uint32_t>{20'000});
  EXPECT_DOUBLE_EQ(live.engine_rpm, 3000.0);
  EXPECT_DOUBLE_EQ(live.injection_ms, 4.32);
  EXPECT_DOUBLE_EQ(live.ignition_advance_deg, -5.5);
  EXPECT_DOUBLE_EQ(live.map_kpa, 101.3);
  EXPECT_FALSE(live.map_over_range);
  EXPECT_NEAR(live.boost_bar, 0.0, 1e-12);
  EXPECT_NEAR(live.tps_percent, 45.6, 0.05);
  EXPECT_DOUBLE_EQ(live.water_temp_c, 30.0);
  EXPECT_DOUBLE_EQ(live.air_temp_c, 0.0);
  EXPECT_FALSE(live.water_fault);
  EXPECT_DOUBLE_EQ(live.battery_volts, 13.85);
  EXPECT_NEAR(live.idle_valve_percent, 33.2, 0.05);
  EXPECT_DOUBLE_EQ(live.lambda, 0.952);
  EXPECT_DOUBLE_EQ(live.afr, 0.952 * kGasolineStoichiometric);
  EXPECT_EQ(live.load_site, 2.5);
  EXPECT_EQ(live.rpm_site, 1.5);
  EXPECT_DOUBLE_EQ(live.throttle_pump_percent, 12.5);
  EXPECT_EQ(live.idle_step, 5);
  EXPECT_TRUE(live.idle_active);
  EXPECT_EQ(live.idle_target_rpm, 950);
  EXPECT_EQ(live.status, live::kStatusEngineActive | live::kStatusFuelMap2);
  EXPECT_EQ(live.firmware_version, 3);
  EXPECT_EQ(live.firmware_build, 7);
  EXPECT_TRUE(live.live_tune);
  EXPECT_EQ(live.frames_per_second, 25);
  EXPECT_EQ(live.error_count, 2);
  EXPECT_EQ(live.last_error, 77);
  // 4.32 ms at 3000 RPM of the 120000 ms x RPM a cycle allows.
  EXPECT_NEAR(live.injector_duty_percent, 10.80, 1e-9);
  handlers.SetDutyBase(60000.0);
  Run(FrameBuilder().U24(6, 20'000).U16(9, 432));
  EXPECT_NEAR(live.injector_duty_percent, 21.60, 1e-9);
}

TEST_F(HandlerTest, OutOfRangeValuesAreFlaggedOrKeptForTheReadOuts) {
  Run(FrameBuilder().U24(6, 10'000).U16(9, 5001).U16(13, 4001));
  EXPECT_DOUBLE_EQ(live.injection_ms, 50.01);
  EXPECT_GT(live.injector_duty_percent, 99.99);
  EXPECT_DOUBLE_EQ(live.map_kpa, 400.1);
  EXPECT_TRUE(live.map_over_range);  // beyond the default range
  Run(FrameBuilder().U16(13, 4000));
  EXPECT_FALSE(live.map_over_range);  // the top of the range still reads
  handlers.SetMapRangeKpa(500.0);
  Run(FrameBuilder().U16(13, 4001));
  EXPECT_FALSE(live.map_over_range);
  // Sensor faults sit in the top bits of the water reading's high byte.
  Run(FrameBuilder().U16(17, 190 * 4).Byte(18, 0x40).U16(19, 1023));
  EXPECT_TRUE(live.water_fault);
  EXPECT_FALSE(live.air_fault);
  EXPECT_EQ(live.air_reading, 1023);
  Run(FrameBuilder().U16(17, 190 * 4).Byte(18, 0x80 | ((190 * 4) >> 8)).U16(19, 220 * 4));
  EXPECT_FALSE(live.water_fault);
  EXPECT_DOUBLE_EQ(live.water_temp_c, 30.0);
  EXPECT_TRUE(live.air_fault);
  Run(FrameBuilder().U16(17, 90 * 4).U16(19, 250 * 4));
  EXPECT_EQ(live.water_temp_c, kTemperatureBeyondHot);
  EXPECT_EQ(live.air_temp_c, kTemperatureBeyondCold);
  EXPECT_EQ(live.injector_duty_percent, 0.0);  // a standing engine
  EXPECT_EQ(live.status, 0);
  EXPECT_FALSE(live.live_tune);
}

TEST_F(HandlerTest, AnEngineBarelyTurningReadsNoSpeed) {
  Run(FrameBuilder().U24(6, 39 * 65536 + 65535).U16(9, 500));
  EXPECT_GT(live.engine_rpm, 0.0);
  Run(FrameBuilder().U24(6, 40 * 65536).U16(9, 500));
  EXPECT_EQ(live.engine_rpm, 0.0);
  EXPECT_EQ(live.injector_duty_percent, 0.0);
}

}  // namespace
}  // namespace vela::testing
