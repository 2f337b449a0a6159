// The simulated engine against its own truth: the true map fuels it to the target, and the
// wideband shows a change only after the transport delay, then with its lag. That a fuel error
// moves the mixture as the true map says, and that the engine's readings lag by a delay falling
// with flow, is what the tuning proof rests on and checks (it fits that delay from the log).
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>

#include "sim/core/base_calibration.h"
#include "sim/core/engine_model.h"
#include "sim/engine/true_map.h"
#include "tune/target/target_table.h"

namespace vela::sim {
namespace {

// Warm and fuelled, no pump, cruising for at least a second with the manifold pressure within
// 2 kPa of where it was half a second ago (the port walls have settled).
struct SteadyCruise {
  int steps = 0;
  std::array<double, 50> map{};
  bool operator()(const EngineState& s) {
    const bool steady = s.water_c > 80 && !s.decel_cut && !s.limiter && s.throttle_pump_us == 0 &&
                        s.phase == DrivePhase::kCruise;
    double& then = map[static_cast<std::size_t>(steps) % map.size()];
    const bool settled = std::abs(s.map_kpa - then) < 2.0;
    then = s.map_kpa;
    steps = steady ? steps + 1 : 0;
    return steps > 100 && settled;
  }
};

// The base calibration is the true map at the default target; a true map made for another
// target fuels the engine to that one.
TEST(EngineTruthTest, TheTrueMapHoldsTheEngineAtItsTarget) {
  const CalibrationImage base = EmbeddedBaseCalibration();
  TargetTable flat(FuelAxesOf(base));
  for (int row = 1; row <= flat.Axes().Rows(); ++row) {
    for (int column = 1; column <= flat.Axes().Columns(); ++column) flat.Set(row, column, 13.5);
  }
  for (const TargetTable& target : {TargetTable(FuelAxesOf(base)), flat}) {
    const CalibrationImage image = WithTrueFuelMap(base, {}, target);
    EngineModel engine(5);
    SteadyCruise steady;
    double sum = 0, worst = 0;
    int n = 0;
    for (int i = 0; i < 40'000; ++i) {
      engine.Step(image);
      const EngineState& s = engine.State();
      if (!steady(s)) continue;
      const double off = s.exhaust_lambda * 14.7 / target.AtPoint(s.rpm, s.map_kpa) - 1.0;
      sum += std::abs(off);
      worst = std::max(worst, std::abs(off));
      ++n;
    }
    ASSERT_GT(n, 5000);
    EXPECT_LT(sum / n, 0.005);  // the manifold sensor's noise and reading between sites
    EXPECT_LT(worst, 0.03);
  }
}

// A step of the mixture reaches the reading after the delay, then follows with the lag: 63 % of
// the step one time constant later.
TEST(WidebandTest, AStepShowsAfterTheDelayThenWithTheLag) {
  constexpr double kStep = 0.01;
  Wideband sensor(kStep, 1.0);
  for (int i = 0; i < 300; ++i) sensor.Step(1.0, 2000, 50);
  const double delay = TransportDelayS(2000, 50);
  const int delay_steps = static_cast<int>(std::round(delay / kStep));
  for (int i = 1; i < delay_steps; ++i) EXPECT_DOUBLE_EQ(sensor.Step(0.9, 2000, 50), 1.0) << i;
  const int lag_steps = static_cast<int>(std::round(kSensorLagS / kStep));
  double reading = 0;
  for (int i = 0; i <= lag_steps; ++i) reading = sensor.Step(0.9, 2000, 50);
  EXPECT_NEAR(reading, 1.0 - 0.1 * (1 - std::exp(-1.0)), 0.01);
  for (int i = 0; i < 100; ++i) reading = sensor.Step(0.9, 2000, 50);
  EXPECT_NEAR(reading, 0.9, 1e-4);
  // No fuel reads the lean end of the scale; a rich misfire the rich end.
  for (int i = 0; i < 300; ++i)
    reading = sensor.Step(std::numeric_limits<double>::infinity(), 2000, 50);
  EXPECT_DOUBLE_EQ(reading, kSensorMaxLambda);
  for (int i = 0; i < 300; ++i) reading = sensor.Step(0.3, 2000, 50);
  EXPECT_DOUBLE_EQ(reading, kSensorMinLambda);
  EXPECT_DOUBLE_EQ(TransportDelayS(0, 0), kDelayMaxS);  // no flow: the longest delay
}

}  // namespace
}  // namespace vela::sim
