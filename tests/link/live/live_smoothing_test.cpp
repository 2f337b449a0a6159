// The smoothing of the live read-outs and the words and colours the window shows for the link.
#include "link/live/live_smoothing.h"

#include <gtest/gtest.h>

#include <cmath>

#include "link/program_status.h"

namespace vela {
namespace {

LiveData LiveFrame(double rpm, double map_kpa, double lambda, int fps) {
  LiveData live;
  live.engine_rpm = rpm;
  live.map_kpa = map_kpa;
  live.boost_bar = (map_kpa - live::kAtmosphereKpa) / 100.0;
  live.lambda = lambda;
  live.afr = lambda * 14.7;
  live.frames_per_second = fps;
  return live;
}

const SmoothingChoice kAll{true, true, true};

// The shown RPM after `seconds` of frames at `fps` following a step from 1000 to 2000 RPM.
double RpmAfterStep(int fps, double seconds) {
  LiveSmoothing smoothing;
  smoothing.Add(LiveFrame(1000, 50, 1.0, fps));
  LiveData last;
  for (int i = 0; i < static_cast<int>(std::lround(seconds * fps)); ++i) {
    last = LiveFrame(2000, 50, 1.0, fps);
    smoothing.Add(last);
  }
  return smoothing.Apply(last, kAll, nullptr).engine_rpm;
}

TEST(LiveSmoothingTest, AStepIsFollowedByTheTimeConstantWhateverTheFrameRate) {
  const double tau = LiveSmoothing::kRpmTimeConstantS;
  const double one_tau = 2000 - 1000 * std::exp(-1.0);  // 63 % of the step
  EXPECT_NEAR(RpmAfterStep(60, tau), one_tau, 0.5);
  EXPECT_NEAR(RpmAfterStep(10, tau), one_tau, 0.5);
}

TEST(LiveSmoothingTest, OnlyTheChosenQuantitiesAreSmoothedAndWhatFollowsThemToo) {
  LiveSmoothing smoothing;
  smoothing.Add(LiveFrame(1000, 40, 0.8, 60));
  const LiveData raw = LiveFrame(3000, 100, 1.2, 60);
  smoothing.Add(raw);
  const LiveData none = smoothing.Apply(raw, {}, nullptr);
  EXPECT_EQ(none.engine_rpm, 3000);
  EXPECT_EQ(none.map_kpa, 100);
  const LiveData map_only = smoothing.Apply(raw, {false, true, false}, nullptr);
  EXPECT_EQ(map_only.engine_rpm, 3000);
  EXPECT_GT(map_only.map_kpa, 40);
  EXPECT_LT(map_only.map_kpa, 100);
  EXPECT_DOUBLE_EQ(map_only.boost_bar, (map_only.map_kpa - live::kAtmosphereKpa) / 100.0);
  EXPECT_EQ(map_only.lambda, 1.2);
  const LiveData all = smoothing.Apply(raw, kAll, [](double lambda) { return lambda; });
  EXPECT_LT(all.engine_rpm, 3000);
  EXPECT_GT(all.lambda, 0.8);
  EXPECT_LT(all.lambda, 1.2);
  EXPECT_DOUBLE_EQ(all.afr, all.lambda);
}

TEST(LiveSmoothingTest, SentinelsAndTheFirstValueAfterAGapAreShownAsTheyCome) {
  LiveSmoothing smoothing;
  smoothing.Add(LiveFrame(1000, 40, 1.0, 60));
  LiveData over = LiveFrame(1000, 500, 0.0, 60);
  over.map_over_range = true;
  smoothing.Add(over);
  const LiveData shown = smoothing.Apply(over, kAll, nullptr);
  EXPECT_EQ(shown.map_kpa, 500);
  EXPECT_TRUE(shown.map_over_range);
  EXPECT_EQ(shown.lambda, 0.0);
  // The oxygen reading comes back: its first value is shown as it is.
  const LiveData back = LiveFrame(1000, 40, 0.9, 60);
  smoothing.Add(back);
  EXPECT_DOUBLE_EQ(smoothing.Apply(back, kAll, nullptr).lambda, 0.9);
  // After the link is lost the first frame is taken as it is.
  smoothing.Add(LiveFrame(6000, 90, 1.0, 60));
  smoothing.Reset();
  const LiveData fresh = LiveFrame(800, 30, 1.0, 60);
  smoothing.Add(fresh);
  EXPECT_DOUBLE_EQ(smoothing.Apply(fresh, kAll, nullptr).engine_rpm, 800);
}

TEST(ProgramStatusTest, TheLinkStateNamesTheFirstStateThatApplies) {
  ProgramStatus s;
  EXPECT_EQ(LinkStateLook(s).text, "Not connected");
  s.connected = true;
  EXPECT_EQ(LinkStateLook(s).text, "Connected");
  EXPECT_EQ(LinkStateLook(s).background, kConnectedGreen);
  s.sends_stalled = true;
  EXPECT_EQ(LinkStateLook(s).text, "Connected, sends stalled");
  s.reading_calibration = true;
  EXPECT_EQ(LinkStateLook(s).text, "Reading calibration");
  s.connected = false;
  EXPECT_EQ(LinkStateLook(s).text, "Not connected");
  s.downloading = true;
  s.download_percent = 45;
  EXPECT_EQ(LinkStateLook(s).text, "Downloading 45 %");
  s.offline = true;
  s.connected = true;
  EXPECT_EQ(LinkStateLook(s).text, "Off-line");  // whatever the ECU does, nothing is sent
  EXPECT_FALSE(LiveValuesShown(ProgramStatus{}));
}

TEST(ProgramStatusTest, LiveTuneAndFaultsReadTheSameEverywhere) {
  EXPECT_EQ(LiveTuneLook(true).text, "Live Tune ON");
  EXPECT_EQ(LiveTuneLook(true).background, LinkStateLook({.connected = true}).background);
  EXPECT_EQ(LiveTuneLook(false).text, "Live Tune OFF");
  EXPECT_EQ(FaultLook(66).text, "ECU fault 66: Missing RPM Pulse");
  EXPECT_EQ(FaultLook(16).text, "ECU fault 16");
  EXPECT_EQ(FaultLook(200).text, "ECU fault 200: Unknown Code");
}

}  // namespace
}  // namespace vela
