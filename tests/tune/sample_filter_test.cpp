// The filters: each condition that makes the mixture meaningless drops its samples (and the
// settling time after it), and nothing else is dropped.
#include "tune/sample_filter.h"

#include <gtest/gtest.h>

#include "tune/cell_evidence.h"
#include "tune/tune_test_support.h"

namespace vela {
namespace {

using tune_testing::During;
using tune_testing::SteadyLog;

// The verdicts of the samples in [from, to) seconds.
std::vector<SampleVerdict> VerdictsIn(const SampleLog& log, const std::vector<SampleVerdict>& all,
                                      double from, double to) {
  std::vector<SampleVerdict> out;
  for (std::size_t i = 0; i < log.samples.size(); ++i) {
    if (log.samples[i].time >= from && log.samples[i].time < to) out.push_back(all[i]);
  }
  return out;
}

int Kept(const std::vector<SampleVerdict>& verdicts) {
  return static_cast<int>(std::count(verdicts.begin(), verdicts.end(), SampleVerdict::kKept));
}

TEST(SampleFilter, DecelCutIsDroppedAndSettledAfter) {
  SampleLog log = SteadyLog(8.0);
  // Throttle shut and the injectors cut: nothing in the log flags it but those two channels.
  During(log, 3.0, 4.0, [](TuneSample& s) { s.tps = 0.0, s.fuel_ms = 0.0, s.afr = 22.0; });
  const std::vector<SampleVerdict> verdicts = PointVerdicts(log.samples, FilterSettings());
  for (SampleVerdict v : VerdictsIn(log, verdicts, 3.0, 4.0))
    EXPECT_EQ(v, SampleVerdict::kDecelCut);
  EXPECT_EQ(Kept(VerdictsIn(log, verdicts, 3.0, 4.5)), 0);
  EXPECT_EQ(Kept(VerdictsIn(log, verdicts, 0.0, 3.0)), 180);
  EXPECT_GT(Kept(VerdictsIn(log, verdicts, 5.0, 8.0)), 170);
  // Closed throttle at idle with fuel flowing is no cut.
  SampleLog idle = SteadyLog(2.0);
  During(idle, 0.0, 2.0, [](TuneSample& s) { s.tps = 0.0, s.fuel_ms = 1.8, s.rpm = 900.0; });
  EXPECT_EQ(Kept(PointVerdicts(idle.samples, FilterSettings())),
            static_cast<int>(idle.samples.size()));
}

TEST(SampleFilter, TipInWithThrottlePumpIsDropped) {
  SampleLog log = SteadyLog(8.0);
  During(log, 4.0, 8.0, [](TuneSample& s) { s.tps = 80.0, s.load = 95.0, s.fuel_ms = 8.0; });
  During(log, 4.0, 4.6, [](TuneSample& s) { s.pump = 25.0; });
  const std::vector<SampleVerdict> verdicts = PointVerdicts(log.samples, FilterSettings());
  EXPECT_EQ(Kept(VerdictsIn(log, verdicts, 4.0, 5.05)), 0);  // pump ends 4.6, settles 0.5 s
  EXPECT_EQ(VerdictsIn(log, verdicts, 4.1, 4.2).front(), SampleVerdict::kThrottlePump);
  EXPECT_GT(Kept(VerdictsIn(log, verdicts, 6.0, 8.0)), 110);
  // The same tip-in without a pump reading is still caught by the throttle's rate.
  SampleLog bare = SteadyLog(8.0);
  During(bare, 4.0, 8.0, [](TuneSample& s) { s.tps = 80.0; });
  const std::vector<SampleVerdict> bare_verdicts = PointVerdicts(bare.samples, FilterSettings());
  EXPECT_EQ(VerdictsIn(bare, bare_verdicts, 4.0, 4.1).front(), SampleVerdict::kUnsteadyThrottle);
  EXPECT_EQ(Kept(VerdictsIn(bare, bare_verdicts, 4.0, 4.6)), 0);
}

TEST(SampleFilter, ColdEngineLimiterAndRevvingAreDropped) {
  SampleLog log = SteadyLog(12.0);
  During(log, 0.0, 3.0, [](TuneSample& s) { s.water_c = 25.0; });
  During(log, 5.0, 6.0, [](TuneSample& s) { s.rpm = 7950.0; });
  // A climb of 3000 RPM a second, faster than the default 2000.
  During(log, 8.0, 9.0, [](TuneSample& s) { s.rpm = 3000.0 + 3000.0 * (s.time - 8.0); });
  FilterSettings settings;
  settings.limiter_rpm = 8000.0;
  const std::vector<SampleVerdict> verdicts = PointVerdicts(log.samples, settings);
  for (SampleVerdict v : VerdictsIn(log, verdicts, 0.0, 3.0)) EXPECT_EQ(v, SampleVerdict::kCold);
  EXPECT_GT(Kept(VerdictsIn(log, verdicts, 3.0, 5.0)), 110);  // warm: kept at once
  EXPECT_EQ(VerdictsIn(log, verdicts, 5.0, 6.0).front(), SampleVerdict::kRevLimiter);
  EXPECT_EQ(VerdictsIn(log, verdicts, 8.3, 8.4).front(), SampleVerdict::kUnsteadyRpm);
  // No limiter known: the same speed is kept.
  EXPECT_EQ(VerdictsIn(log, PointVerdicts(log.samples, FilterSettings()), 5.8, 5.9).front(),
            SampleVerdict::kKept);
}

TEST(SampleFilter, DeadSensorAndMissingAfrAddNoEvidence) {
  SampleLog log = SteadyLog(10.0);
  During(log, 0.0, 10.0, [](TuneSample& s) { s.load = 50.0; });
  During(log, 0.0, 5.0, [](TuneSample& s) { s.afr = 0.0; });  // the sensor not yet alive
  During(log, 5.0, 10.0, [](TuneSample& s) { s.afr = 16.17; });
  TuneAxes axes{{0, 1000, 2000, 3000, 4000}, {0, 50, 100}, LoadBasis::kMap};
  const TargetTable targets(axes);
  Evidence evidence{CellGrid(axes), {}};
  AddEvidence(log, targets, FilterSettings(), DelayModel{0.1, 0.0}, evidence);
  const auto count = [&](SampleVerdict v) {
    return evidence.verdicts[static_cast<std::size_t>(v)];
  };
  EXPECT_NEAR(static_cast<double>(count(SampleVerdict::kAfrInvalid)), 294, 2);
  EXPECT_NEAR(static_cast<double>(count(SampleVerdict::kNoPairedAfr)), 6,
              1);  // the last 0.1 s has no exhaust reading
  // The samples that were kept read 16.17 only: the dead sensor left no trace in the mean.
  const CellEvidence& cell = evidence.cells.At(2, 2);  // 3000 RPM, 50 kPa
  EXPECT_NEAR(cell.MeanAfr(), 16.17, 1e-9);
  EXPECT_NEAR(cell.time_s, 10.0, 0.05);  // time counts every running sample
}

TEST(SampleFilter, PairsEachPointWithTheExhaustADelayLater) {
  // The AFR answers a change of operating point 0.5 s late: with that delay, each point is
  // paired with its own exhaust, and the lean stretch lands in the lean point's cell.
  SampleLog log = SteadyLog(12.0);
  During(log, 0.0, 6.0, [](TuneSample& s) { s.load = 50.0; });
  During(log, 6.0, 12.0, [](TuneSample& s) { s.load = 100.0; });
  During(log, 6.5, 12.0, [](TuneSample& s) { s.afr = 13.0; });
  TuneAxes axes{{0, 1000, 2000, 3000, 4000}, {0, 50, 100}, LoadBasis::kMap};
  FilterSettings settings;
  settings.max_tps_rate = 1000.0;
  Evidence evidence{CellGrid(axes), {}};
  AddEvidence(log, TargetTable(axes), settings, DelayModel{0.5, 0.0}, evidence);
  EXPECT_NEAR(evidence.cells.At(2, 2).MeanAfr(), 14.7, 1e-9);
  EXPECT_NEAR(evidence.cells.At(2, 3).MeanAfr(), 13.0, 1e-9);
}

}  // namespace
}  // namespace vela
