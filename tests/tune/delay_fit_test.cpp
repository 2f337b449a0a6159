// The transport delay's fit: steps of injection time whose AFR answers come a known floor + k /
// (RPM x load) later, through a first-order sensor lag, give back that floor and k.
#include "tune/delay_fit.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tune/tune_test_support.h"

namespace vela {
namespace {

using tune_testing::During;
using tune_testing::SteadyLog;

constexpr double kFloor = 0.06;
constexpr double kK = 6000.0;
constexpr double kLag = 0.1;

struct Flow {
  double rpm;
  double load;
};

// Six seconds per flow; the injection time steps up 30 % at 1.5 s and back at 4.5 s, first seen
// in the records at those times, so changed half a frame before on the mean; the AFR answers
// each change after the delay of that flow, as a first-order lag does.
SampleLog StepLog(const std::vector<Flow>& flows) {
  SampleLog log = SteadyLog(6.0 * static_cast<double>(flows.size()) + 1.0);
  for (std::size_t f = 0; f < flows.size(); ++f) {
    const double start = 6.0 * static_cast<double>(f);
    const Flow flow = flows[f];
    const double delay = kFloor + kK / (flow.rpm * flow.load);
    During(log, start, start + 6.0, [&](TuneSample& s) {
      s.rpm = flow.rpm;
      s.load = flow.load;
      const bool rich = s.time >= start + 1.5 && s.time < start + 4.5;
      s.fuel_ms = rich ? 6.5 : 5.0;
      const auto answer = [&](double at) {
        const double since = s.time - (at - tune_testing::kFrameStep / 2.0) - delay;
        return since > 0.0 ? 1.0 - std::exp(-since / kLag) : 0.0;
      };
      s.afr = 14.7 - 3.0 * answer(start + 1.5) + 3.0 * answer(start + 4.5);
    });
  }
  return log;
}

TEST(DelayFit, RecoversAKnownFloorAndK) {
  const SampleLog log =
      StepLog({{1000, 30}, {2000, 50}, {3000, 80}, {5000, 100}, {1500, 40}, {800, 25}});
  const std::vector<DelayStep> steps = FindDelaySteps(log.samples, StepSettings());
  ASSERT_EQ(steps.size(), 12u);
  for (const DelayStep& step : steps) EXPECT_NEAR(step.lag, kLag, 0.01);
  const DelayFit fit = FitDelay(steps);
  ASSERT_TRUE(fit.fitted) << fit.why_not;
  EXPECT_NEAR(fit.model.floor_s, kFloor, 0.006);
  EXPECT_NEAR(fit.model.k, kK, kK * 0.05);
  EXPECT_EQ(fit.steps, 12);
  EXPECT_LT(fit.rms_residual_s, 0.005);
}

TEST(DelayFit, AnOutlyingStepIsLeftOutAndTooFewStepsGiveNoFit) {
  std::vector<DelayStep> steps;
  for (double flow : {20000.0, 40000.0, 80000.0, 160000.0, 320000.0}) {
    steps.push_back({0.0, flow, kFloor + kK / flow, kLag});
  }
  steps.push_back({0.0, 50000.0, 1.5, kLag});  // a misread answer
  const DelayFit fit = FitDelay(steps);
  ASSERT_TRUE(fit.fitted);
  EXPECT_EQ(fit.dropped, 1);
  EXPECT_NEAR(fit.model.k, kK, 1.0);

  EXPECT_FALSE(FitDelay(std::span(steps).first(2)).fitted);
  const std::vector<DelayStep> one_flow(4, DelayStep{0.0, 30000.0, 0.3, kLag});
  EXPECT_FALSE(FitDelay(one_flow).fitted);
}

TEST(DelayFit, StepsWithoutACleanAnswerAreNotSteps) {
  // Injection steps the AFR never answers (the air followed the fuel), and a step across a gap
  // in the log.
  SampleLog log = StepLog({{2000, 50}, {3000, 80}});
  During(log, 0.0, 6.0, [](TuneSample& s) { s.afr = 14.7; });
  During(log, 7.6, 13.0, [](TuneSample& s) { s.lost_before = 1; });
  During(log, 10.6, 13.0, [](TuneSample& s) { s.lost_before = 2; });
  EXPECT_TRUE(FindDelaySteps(log.samples, StepSettings()).empty());
}

TEST(DelayFit, OnlyFuelStepsReadOnTheScaleAreTimed) {
  // A tip-in: the load rises with the fuel, so the answer is not the fuel step's.
  SampleLog tip_in = StepLog({{2000, 50}});
  During(tip_in, 1.5, 4.5, [](TuneSample& s) { s.load = 65.0; });
  EXPECT_TRUE(FindDelaySteps(tip_in.samples, StepSettings()).empty());
  // Fuel cut: the AFR runs off the scale within a frame, timed as a jump half-way between the
  // records around it; from the pegged reading the return cannot be timed.
  SampleLog cut = StepLog({{2000, 50}});
  const double delay = kFloor + kK / (2000.0 * 50.0);
  During(cut, 1.5, 4.5, [&](TuneSample& s) {
    s.fuel_ms = 0.0;
    if (s.time >= 1.5 - tune_testing::kFrameStep / 2 + delay) s.afr = 20.0;
  });
  const std::vector<DelayStep> steps = FindDelaySteps(cut.samples, StepSettings());
  ASSERT_EQ(steps.size(), 1u);
  EXPECT_NEAR(steps[0].delay, delay, tune_testing::kFrameStep / 2 + 1e-9);
}

// A cut whose answer the sensor is seen rising towards (a first-order lag onto a lean mixture,
// pegged at 20 once past it): timed from that rise, not in whole frames, wherever the answer
// falls between two records; and the flow is the one at the answer, also while it falls.
TEST(DelayFit, ACutSeenRisingIsTimedWithinAFractionOfAFrame) {
  for (const double phase : {0.05, 0.3, 0.55, 0.8}) {
    SCOPED_TRACE(::testing::Message() << "phase " << phase);
    SampleLog cut = StepLog({{2000, 50}});
    const double delay = 0.2 + phase * tune_testing::kFrameStep;
    const double arrival = 1.5 - tune_testing::kFrameStep / 2 + delay;
    During(cut, 1.5, 4.5, [&](TuneSample& s) {
      s.fuel_ms = 0.0;
      s.load = s.time < arrival ? 50.0 : 30.0;  // the flow the answer arrives with
      const double risen = 14.7 * (1 - std::exp((arrival - s.time) / 0.08));
      s.afr = s.time < arrival ? 14.7 : std::min(20.0, 14.7 + risen);
    });
    const std::vector<DelayStep> steps = FindDelaySteps(cut.samples, StepSettings());
    ASSERT_EQ(steps.size(), 1u);
    EXPECT_NEAR(steps[0].delay, delay, 0.3 * tune_testing::kFrameStep);
    EXPECT_GT(steps[0].flow, 2000.0 * 30.0 - 1.0);
    EXPECT_LT(steps[0].flow, 2000.0 * 50.0 + 1.0);
  }
}

TEST(DelayModel, FallsWithFlowAndStaysInBounds) {
  const DelayModel model{0.05, 5000.0};
  EXPECT_LT(model.At(6000, 100), model.At(1000, 50));
  EXPECT_EQ(model.At(0, 50), kMaxDelaySeconds);  // a stopped engine moves no exhaust
  EXPECT_EQ(model.At(100, 1), kMaxDelaySeconds);
}

// The exhaust arrives when the delay at the flow of that moment has run out: with the flow
// halving mid-way the pairing comes later than the sample's own flow says; the sensor's lag is
// added; a gap or the log's end falls back to the sample's own delay.
TEST(ArrivalTime, FollowsTheFlowOfTheArrivalAndStopsAtAGap) {
  std::vector<TuneSample> samples;
  for (int i = 0; i < 100; ++i) {
    samples.push_back({.time = 0.01 * i, .rpm = i < 20 ? 4000.0 : 2000.0, .load = 50.0});
  }
  const DelayModel delay{0.05, 10000.0};  // 0.10 s at 4000 x 50, 0.15 s at 2000 x 50
  EXPECT_NEAR(ArrivalTime(samples, 0, delay), 0.10, 1e-9);
  EXPECT_NEAR(ArrivalTime(samples, 15, delay), 0.30, 1e-9);  // 0.15 + 0.15, not 0.25
  DelayModel lagged = delay;
  lagged.lag_s = 0.08;
  EXPECT_NEAR(ArrivalTime(samples, 15, lagged), 0.38, 1e-9);
  for (std::size_t i = 25; i < samples.size(); ++i) samples[i].lost_before = 1;
  EXPECT_NEAR(ArrivalTime(samples, 20, delay), 0.35, 1e-9);
}

}  // namespace
}  // namespace vela
