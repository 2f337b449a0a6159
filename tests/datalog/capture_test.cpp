// Logging's time base (the rate the link chose, never a byte of the frame) and records with their
// arrival times, each channel decoded from a frame built by hand, and the time axis following the
// newest point.
#include <gtest/gtest.h>

#include "datalog/chart/axis_follow.h"
#include "datalog/datalog_capture.h"
#include "datalog/datalog_test_support.h"

namespace vela {
namespace {

using testing::FrameBuilder;

// A frame whose byte 40 holds `byte40` (an ECU may put its own rate there, or nothing).
live::Frame FrameAt(int byte40) { return FrameBuilder().Put(40, byte40, 1).frame; }

// Logging at the chosen rate `fps`, each frame arriving on the clock one nominal period after the
// one before.
struct Logging {
  explicit Logging(int fps = 10) : capture(log) {
    for (int n = 0; n < kChannelCount; ++n) capture.SetChannelEnabled(n, true);
    capture.FramesPerSecond = static_cast<std::int16_t>(fps);
    capture.StartLogging(20.0, start_s);
    now_s = start_s;
  }
  void Frames(int count, const live::Frame& frame, double k = 1.0, bool follow = true) {
    for (int i = 0; i < count; ++i) {
      now_s += capture.FramesPerSecond ? 1.0 / capture.FramesPerSecond : 0.1;
      capture.CaptureFrame(frame, inputs, k, follow, now_s);
    }
  }
  DatalogLog log;
  DatalogCapture capture;
  ChannelInputs inputs;
  double start_s = 1000.0;  // the program's clock when logging starts
  double now_s = 0.0;
};

TEST(DatalogTimeBase, TheRateOfTheChosenListEntryIsTheTimeBase) {
  EXPECT_EQ(FramesPerSecondOfChoice(0), 60);
  EXPECT_EQ(FramesPerSecondOfChoice(10), 4);
  EXPECT_EQ(FramesPerSecondOfChoice(11), 0);
  EXPECT_EQ(FramesPerSecondOfChoice(-1), 0);
}

TEST(DatalogTimeBase, AnEcuThatSendsZeroAtByteFortyStillGetsTheChosenRatesTimes) {
  Logging logging(60);
  logging.Frames(120, FrameAt(0));
  logging.Frames(60, FrameAt(20));  // nor does another number there change the time base
  ASSERT_EQ(logging.log.RecordCount(), 180u);
  EXPECT_NEAR(logging.log.Times()[0], 1.002 / 60, 1e-12);
  EXPECT_NEAR(logging.capture.DatalogTime, 180 * 1.002 / 60, 1e-9);
}

TEST(DatalogTimeBase, WithoutARateAFrameIsRecordedAtTheTimeOfTheOneBefore) {
  Logging logging(10);
  logging.Frames(3, FrameAt(10));
  logging.capture.FramesPerSecond = 0;
  logging.Frames(2, FrameAt(10));
  EXPECT_EQ(logging.capture.DatalogRecordCount, 5.0f);
  EXPECT_NEAR(logging.log.Times()[4], 0.3006, 1e-12);
  EXPECT_EQ(logging.log.Times()[3], logging.log.Times()[2]);
}

TEST(DatalogTimeBase, EveryRecordKeepsItsArrivalOnTheClockFromTheStartOfLogging) {
  Logging logging(10);
  logging.Frames(3, FrameAt(0));
  logging.now_s += 2.5;  // the link lost 25 frames
  logging.Frames(2, FrameAt(0));
  const std::vector<double>& arrivals = logging.log.Arrivals();
  ASSERT_EQ(arrivals.size(), 5u);
  EXPECT_NEAR(arrivals[0], 0.1, 1e-9);
  EXPECT_NEAR(arrivals[3], 2.9, 1e-9);
  EXPECT_NEAR(logging.log.Times()[3], 0.4008, 1e-9);  // the log time counts frames
  logging.capture.StopLogging();
  ASSERT_EQ(logging.log.Gaps().size(), 1u);
  EXPECT_EQ(logging.log.Gaps()[0].record, 3u);
  EXPECT_EQ(logging.log.Gaps()[0].missing_frames, 25u);
}

// A disabled channel stays inactive and gains no points; with every channel clear the time and
// the count still advance.
TEST(DatalogCapture, ADisabledChannelGainsNoPointsButTimeAndCountAdvance) {
  Logging logging;
  logging.capture.SetChannelEnabled(5, false);
  logging.Frames(4, FrameAt(10));
  EXPECT_FALSE(logging.log.Series(5).active);
  EXPECT_EQ(logging.log.Series(5).points, 0u);
  EXPECT_EQ(logging.log.Series(4).points, 4u);
  for (int n = 0; n < kChannelCount; ++n) logging.capture.SetChannelEnabled(n, false);
  logging.capture.StartLogging(20.0, logging.now_s);
  logging.Frames(10, FrameAt(10));
  EXPECT_EQ(logging.capture.DatalogRecordCount, 10.0f);
  EXPECT_NEAR(logging.capture.DatalogTime, 1.002, 1e-9);
  EXPECT_FALSE(logging.log.HasPoints());
}

// A start clears the last log and draws exactly the enabled channels in their own colours,
// whatever a log loaded from a file showed.
TEST(DatalogCapture, NothingIsRecordedOutsideLoggingAndAStartBeginsAfresh) {
  Logging logging;
  logging.Frames(5, FrameAt(10));
  logging.capture.StopLogging();
  logging.Frames(5, FrameAt(10));
  EXPECT_EQ(logging.log.RecordCount(), 5u);
  logging.log.AddMarker("pull");
  logging.capture.SetChannelEnabled(2, false);
  logging.log.SetActive(2, true);
  logging.log.SetActive(5, false);
  logging.log.SetColour(0, ChannelColour{1, 2, 3});
  logging.capture.StartLogging(30.0, 0.0);
  EXPECT_EQ(logging.log.RecordCount(), 0u);
  EXPECT_TRUE(logging.log.Markers().empty());
  EXPECT_EQ(logging.capture.DatalogTime, 0.0);
  EXPECT_EQ(logging.log.axis, (TimeAxis{0.0, 30.0}));
  EXPECT_FALSE(logging.log.Series(2).active);
  EXPECT_TRUE(logging.log.Series(5).active);
  EXPECT_EQ(logging.log.Series(0).colour, kChannels[0].colour);
}

TEST(DatalogCapture, ChannelLimitsStartFromTenAndZeroAtEveryRecord) {
  Logging logging;
  logging.Frames(1, FrameBuilder().Put(6, 20000, 3).Put(11, 0xFFFF & -2765, 2).frame);
  EXPECT_EQ(logging.capture.ChannelMax[kChannelRpm], 3000);
  EXPECT_EQ(logging.capture.ChannelMin[5], -5);  // -5.4 degrees, a whole number
  logging.Frames(1, FrameBuilder().Put(6, 120000, 3).frame);
  EXPECT_EQ(logging.capture.ChannelMax[kChannelRpm], 500);
  EXPECT_EQ(logging.capture.ChannelMin[5], 0);
  EXPECT_EQ(logging.capture.ChannelMax[20], 10);
}

// Each channel from a frame whose bytes are written by hand at the positions the table gives.
TEST(DatalogChannels, EachChannelIsDecodedFromItsFramePositions) {
  const live::Frame frame = FrameBuilder()
                                .Put(6, 20000, 3)  // 60,000,000 / 20000 = 3000 RPM
                                .Put(9, 1234, 2)   // 12.34 ms
                                .Put(11, 6298, 2)  // 12.30 degrees
                                .Put(13, 1013, 2)  // 101.3 kPa
                                .Put(15, 512, 2)   // 50.05 %
                                .Put(21, 1384, 2)  // 13.84 V
                                .Put(23, 64, 1)    // 25 %
                                .Put(29, 155, 2)   // 15.5 %
                                .frame;
  const ChannelInputs inputs{14.73, 85.26, -7.35, 42.0};
  const double expected[kChannelCount] = {3000.0, 101.3, 50.0,  12.34, 42.0, 12.3,
                                          85.3,   -7.4,  13.84, 25.0,  15.5, 147.3};
  for (int n = 0; n < kChannelCount; ++n) {
    EXPECT_NEAR(DecodeChannel(n, frame, inputs), expected[n], 1e-9) << kChannels[n].caption;
  }
}

// The engine speed is 0 once the period's high character is 0x28 or more; a duty of 200 or more
// is recorded as 200.
TEST(DatalogChannels, SpeedAndDutyHoldTheirLimits) {
  EXPECT_NEAR(DecodeChannel(0, FrameBuilder().Put(6, 0x27FFFF, 3).frame, {}), 22.89, 1e-9);
  EXPECT_EQ(DecodeChannel(0, FrameBuilder().Put(6, 0x280000, 3).frame, {}), 0.0);
  EXPECT_EQ(DecodeChannel(kChannelDuty, FrameBuilder().frame, {0, 0, 0, 250.0}), 200.0);
  EXPECT_EQ(DecodeChannel(kChannelDuty, FrameBuilder().frame, {0, 0, 0, 199.5}), 199.5);
}

TEST(AxisFollow, TheLookAheadClimbsTheLadderOfThePacketSpeedFactor) {
  // Each step on both sides of where it changes.
  const std::pair<double, double> ladder[] = {{1.0, 0.16}, {1.24, 0.16}, {1.25, 0.18}, {4.49, 0.18},
                                              {4.5, 0.21}, {5.49, 0.21}, {5.5, 0.22},  {6.0, 0.22}};
  for (const auto& [k, look_ahead] : ladder) EXPECT_EQ(AxisLookAhead(k), look_ahead) << k;
}

TEST(AxisFollow, TheFirstMoveComesPastNineteenEightyFiveAndOnlyWhileFollowing) {
  Logging logging;
  logging.Frames(198, FrameAt(10));  // 19.8396 s
  EXPECT_EQ(logging.log.axis, (TimeAxis{0.0, 20.0}));
  logging.Frames(1, FrameAt(10));  // 19.9398 s
  EXPECT_NEAR(logging.log.axis.max, 19.9398 + 0.16 + 0.1, 1e-9);
  EXPECT_EQ(logging.log.axis.min, 0.0);
  const double moved = logging.log.axis.max;
  logging.Frames(1, FrameAt(10));  // 20.04 s: still 0.15 s inside the new end
  EXPECT_EQ(logging.log.axis.max, moved);
  logging.Frames(300, FrameAt(10), 1.0, false);  // not following: the axis stays
  EXPECT_EQ(logging.log.axis.max, moved);
}

}  // namespace
}  // namespace vela
