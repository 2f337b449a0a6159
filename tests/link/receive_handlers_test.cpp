// The receive handlers: a frame built with the live frame layout, decoded into the live data set.
#include <gtest/gtest.h>

#include "receive_fakes.h"

namespace vela::receive_testing {
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

TEST_F(HandlerTest, DecodesEveryFieldOfARunningEngine) {
  Run(FrameBuilder()
          .U24(live::kEnginePeriod, 20'000)
          .U16(live::kMap, 1013)
          .U16(live::kTps, 456)
          .U16(live::kInjectionTime, 4322)
          .U16(live::kIgnitionAdvance, static_cast<std::uint16_t>(-55))
          .Byte(live::kWaterSensor, 190)
          .Byte(live::kAirSensor, 220)
          .Byte(live::kLoadSite, 40)
          .U16(live::kBattery, 1385)
          .Byte(live::kLambda, 95)
          .U16(live::kIdleValve, 333)
          .U16(live::kThrottlePump, 1500)
          .Byte(live::kRpmSite, 24)
          .Byte(live::kLastError, 77)
          .Byte(live::kIdleStep, 5)
          .U16(live::kIdleTarget, 950)
          .Byte(live::kStatus, live::kStatusEngineActive | live::kStatusFuelMap2)
          .Byte(live::kFirmwareVersion, 3)
          .Byte(live::kFirmwareVersion + 1, 7)
          .Byte(live::kLiveTune, 1)
          .Byte(live::kFramesPerSecond, 25));
  EXPECT_EQ(counts, std::vector<std::uint32_t>{20'000});
  EXPECT_EQ(live.engine_rpm_text, "3000");
  EXPECT_EQ(live.map_text, "101.3");
  EXPECT_EQ(live.tps_text, "45.6");
  EXPECT_EQ(live.injection_text, "4.32");
  EXPECT_EQ(live.injector_duty_text, "21.61");  // 4322 us of a 20,000 us revolution
  EXPECT_EQ(live.ignition_text, "-5.5");
  EXPECT_EQ(live.water_temp_text, "30");
  EXPECT_EQ(live.air_temp_text, "0");
  EXPECT_EQ(live.load_site, 2.5);
  EXPECT_EQ(live.afr_text, "14.0");
  EXPECT_EQ(live.battery_text, "13.85");
  EXPECT_EQ(live.idle_valve_text, "33.3");
  EXPECT_EQ(live.throttle_pump_text, "1.50");
  EXPECT_EQ(live.rpm_site, 1.5);
  EXPECT_EQ(live.last_error, 77);
  EXPECT_EQ(live.idle_active_text, "ON");
  EXPECT_EQ(live.idle_target_rpm, 950);
  EXPECT_EQ(live.engine_status_text, "Active");
  EXPECT_EQ(live.fuel_map_text, "Fuel Map 2");
  EXPECT_EQ(live.firmware_text, "3.7");
  EXPECT_EQ(live.live_tune_text, "ON");
  EXPECT_EQ(live.frames_per_second, 25);
}

TEST_F(HandlerTest, OutOfRangeValuesShowTheirMarkers) {
  Run(FrameBuilder().U24(live::kEnginePeriod, 10'000).U16(live::kInjectionTime, 50'001));
  EXPECT_EQ(live.injection_text, "Over");
  EXPECT_EQ(live.injector_duty_text, "99.99 ");
  Run(FrameBuilder()
          .Byte(live::kWaterSensor, 190)
          .Byte(live::kSensorFlags, 1)
          .Byte(live::kAirSensor, 255));
  EXPECT_EQ(live.water_temp_text, "Error");
  EXPECT_EQ(live.air_temp_text, "999");
  Run(FrameBuilder().Byte(live::kWaterSensor, 90).Byte(live::kAirSensor, 250));
  EXPECT_EQ(live.water_temp_text, "Over");
  EXPECT_EQ(live.air_temp_text, "<-20");
  EXPECT_EQ(live.injector_duty_text, "0.00");  // a standing engine
  EXPECT_EQ(live.fuel_map_text, "");
  EXPECT_EQ(live.live_tune_text, "OFF");
}

}  // namespace
}  // namespace vela::receive_testing
