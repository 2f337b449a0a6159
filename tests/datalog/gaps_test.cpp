// Gaps where the link lost frames: found from the records' arrival times against their log
// times, counted in frames, and not invented by frames that only waited in the receive path.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "datalog/datalog_log.h"

namespace vela {
namespace {

// An ECU streaming at `fps` for `frames` frames; frame k is sent at k / fps. `lost(k)` drops it,
// `wait(k)` is how long it waits before the program takes it. The log's time counts the frames
// taken at the chosen rate, as capture does.
struct Stream {
  int fps = 60;
  std::function<bool(int)> lost = [](int) { return false; };
  std::function<double(int)> wait = [](int) { return 0.0; };

  void Run(DatalogLog& log, int frames, bool close = true) const {
    ChannelValues values{};
    double arrived_last = -1.0;
    for (int k = 0; k < frames; ++k) {
      if (lost(k)) continue;
      // Frames are taken in order: one that waited holds back those behind it.
      const double arrival = std::max(arrived_last, (k + 1.0) / fps + wait(k));
      arrived_last = arrival;
      const double time = (log.RecordCount() + 1) * 1.002 / fps;
      log.Append(time, arrival, values, 1);
    }
    if (close) log.CloseGaps();
  }
};

// The receive path's gathering: frames are handed on at the end of every 25 ms window.
double WindowWait(int k, int fps) {
  const double sent = (k + 1.0) / fps;
  return std::ceil(sent / 0.025) * 0.025 - sent;
}

TEST(LogGaps, AStreamThatLosesNothingHasNoGapsWhateverTheReceiveWindows) {
  for (int fps : {60, 20, 4}) {
    DatalogLog log;
    Stream stream;
    stream.fps = fps;
    stream.wait = [fps](int k) { return WindowWait(k, fps); };
    stream.Run(log, fps * 120);
    EXPECT_TRUE(log.Gaps().empty()) << fps << " frames a second";
    EXPECT_EQ(log.MissingFrames(), 0u);
  }
}

// The log's own time counts only the frames it holds; the clock shows its real length.
TEST(LogGaps, ABurstOfLostFramesIsOneGapWithItsFrameCountAndClockTime) {
  DatalogLog log;
  Stream stream;
  stream.lost = [](int k) { return k >= 600 && k < 622; };  // a trimmed backlog: 22 frames
  stream.wait = [](int k) { return WindowWait(k, 60); };
  stream.Run(log, 1800);  // 30 s on the clock
  ASSERT_EQ(log.Gaps().size(), 1u);
  const LogGap& gap = log.Gaps()[0];
  EXPECT_EQ(gap.record, 600u);  // the first record after the gap
  EXPECT_EQ(gap.missing_frames, 22u);
  EXPECT_NEAR(gap.clock_s, 23.0 / 60, 0.026);
  EXPECT_NEAR(log.EndTime(), 1778 * 1.002 / 60, 1e-9);
  ASSERT_TRUE(log.ClockEnd().has_value());
  EXPECT_NEAR(*log.ClockEnd(), 30.0, 0.03);
  EXPECT_EQ(log.RecordCount() + log.MissingFrames(), 1800u);
}

TEST(LogGaps, FramesThatOnlyWaitedAndArriveBunchedAreNoGap) {
  DatalogLog log;
  Stream stream;
  // The program was busy for 0.35 s: the frames waited and were taken one every 8 ms after.
  stream.wait = [](int k) {
    return k >= 300 && k < 330 ? 0.35 - (k - 300) * (1.0 / 60 - 0.008) : 0;
  };
  stream.Run(log, 1200);
  EXPECT_TRUE(log.Gaps().empty());
  EXPECT_EQ(log.RecordCount(), 1200u);
}

TEST(LogGaps, TwoGapsCloserThanTheSettleWindowAreEachCountedOnce) {
  DatalogLog log;
  Stream stream;
  stream.fps = 20;
  stream.lost = [](int k) { return k == 100 || k == 101 || k == 105; };
  stream.Run(log, 300);
  ASSERT_EQ(log.Gaps().size(), 2u);
  EXPECT_EQ(log.Gaps()[0].missing_frames, 2u);
  EXPECT_EQ(log.Gaps()[1].missing_frames, 1u);
  EXPECT_EQ(log.Gaps()[1].record, 103u);
}

TEST(LogGaps, AGapIsDecidedASettleWindowLaterOrWhenTheLogCloses) {
  DatalogLog log;
  Stream stream;
  stream.fps = 10;
  stream.lost = [](int k) { return k == 50; };
  stream.Run(log, 55, false);
  EXPECT_TRUE(log.Gaps().empty());  // 0.4 s after it: not yet decided
  DatalogLog longer;
  stream.Run(longer, 70, false);
  EXPECT_EQ(longer.Gaps().size(), 1u);
  log.CloseGaps();
  ASSERT_EQ(log.Gaps().size(), 1u);
  EXPECT_EQ(log.Gaps()[0].missing_frames, 1u);
}

TEST(LogGaps, WithoutArrivalTimesOrARateNothingIsJudged) {
  DatalogLog old_file;
  ChannelValues values{};
  for (int i = 0; i < 100; ++i) old_file.Append(i * 0.1, NAN, values, 1);
  old_file.CloseGaps();
  EXPECT_TRUE(old_file.Gaps().empty());
  EXPECT_FALSE(old_file.ClockEnd().has_value());
  DatalogLog no_rate;  // every record at the same log time
  for (int i = 0; i < 100; ++i) no_rate.Append(0.0, i * (i == 50 ? 5.0 : 0.1), values, 1);
  no_rate.CloseGaps();
  EXPECT_TRUE(no_rate.Gaps().empty());
}

}  // namespace
}  // namespace vela
