#include "sim/core/live_encoder.h"

#include <gtest/gtest.h>

#include "link/receive/receive_handlers.h"
#include "sim/core/base_calibration.h"
#include "sim/core/engine_model.h"

namespace vela::sim {
namespace {

// The simulated ECU's frame read by the program's own receive handlers (whose positions their own
// tests pin) gives back the engine's values. The speed and the manifold pressure the Data Page
// walk reads from the simulator, and the mixture the tuning proof corrects by.
TEST(LiveEncoderTest, TheProgramsHandlersReadBackWhatTheEcuEncoded) {
  EngineState s;
  s.throttle_pct = 12.3;
  s.injection_us = 4320;
  s.advance_deg = -2.5;
  s.battery_v = 13.95;
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
  EXPECT_NEAR(live.tps_percent, 12.3, 0.05);
  EXPECT_DOUBLE_EQ(live.injection_ms, 4.32);
  EXPECT_DOUBLE_EQ(live.ignition_advance_deg, -2.5);
  EXPECT_DOUBLE_EQ(live.battery_volts, 13.95);
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
}

}  // namespace
}  // namespace vela::sim
