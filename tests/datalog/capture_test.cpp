// Logging's time base and records, each channel decoded from a frame built by hand, and the time
// axis following the newest point.
#include <gtest/gtest.h>

#include "datalog/axis_follow.h"
#include "datalog/datalog_capture.h"
#include "datalog_test_support.h"

namespace vela {
namespace {

using testing::FrameBuilder;

live::Frame FrameAt(int frames_per_second) {
  return FrameBuilder().Put(40, frames_per_second, 1).frame;
}

struct Logging {
  Logging() : capture(log) {
    for (int n = 0; n < kChannelCount; ++n) capture.SetChannelEnabled(n, true);
    capture.StartLogging(20.0);
  }
  void Frames(int count, const live::Frame& frame, double k = 1.0, bool follow = true) {
    for (int i = 0; i < count; ++i) capture.CaptureFrame(frame, inputs, k, follow);
  }
  DatalogLog log;
  DatalogCapture capture;
  ChannelInputs inputs;
};

TEST(DatalogTimeBase, AtFourFramesASecondAHundredFramesEndAtTwentyFiveOhFive) {
  Logging logging;
  logging.Frames(100, FrameAt(4));
  EXPECT_NEAR(logging.capture.DatalogTime, 25.05, 1e-9);
  EXPECT_EQ(logging.capture.DatalogRecordCount, 100.0f);
  EXPECT_EQ(logging.log.RecordCount(), 100u);
  EXPECT_NEAR(logging.log.Times()[0], 1.002 / 4, 1e-12);
}

TEST(DatalogTimeBase, AFrameAtRateZeroIsRecordedAtTheTimeOfTheOneBefore) {
  Logging logging;
  logging.Frames(3, FrameAt(10));
  logging.Frames(2, FrameAt(0));
  EXPECT_EQ(logging.capture.DatalogRecordCount, 5.0f);
  EXPECT_NEAR(logging.log.Times()[4], 0.3006, 1e-12);
  EXPECT_EQ(logging.log.Times()[3], logging.log.Times()[2]);
}

TEST(DatalogTimeBase, TheTimeBaseFollowsTheRateTheFrameReports) {
  Logging logging;
  logging.Frames(60, FrameAt(60));
  logging.Frames(10, FrameAt(20));
  EXPECT_NEAR(logging.capture.DatalogTime, 1.002 + 0.501, 1e-9);
}

TEST(DatalogCapture, WithEveryChannelClearTimeAndCountAdvanceButNoPointIsAdded) {
  Logging logging;
  for (int n = 0; n < kChannelCount; ++n) logging.capture.SetChannelEnabled(n, false);
  logging.Frames(10, FrameAt(10));
  EXPECT_EQ(logging.capture.DatalogRecordCount, 10.0f);
  EXPECT_NEAR(logging.capture.DatalogTime, 1.002, 1e-9);
  EXPECT_FALSE(logging.log.HasPoints());
}

TEST(DatalogCapture, ADisabledChannelStaysInactiveAndGainsNoPoints) {
  Logging logging;
  logging.capture.SetChannelEnabled(5, false);
  logging.Frames(4, FrameAt(10));
  EXPECT_FALSE(logging.log.Series(5).active);
  EXPECT_EQ(logging.log.Series(5).points, 0u);
  EXPECT_TRUE(logging.log.Series(4).active);
  EXPECT_EQ(logging.log.Series(4).points, 4u);
  EXPECT_EQ(logging.capture.ChannelEnabled[5], 0);
  EXPECT_EQ(logging.capture.ChannelEnabled[4], -1);
}

TEST(DatalogCapture, NothingIsRecordedOutsideLoggingAndAStartClearsTheLastLog) {
  Logging logging;
  logging.Frames(5, FrameAt(10));
  logging.capture.StopLogging();
  logging.Frames(5, FrameAt(10));
  EXPECT_EQ(logging.log.RecordCount(), 5u);
  logging.log.AddMarker("pull");
  logging.capture.StartLogging(30.0);
  EXPECT_EQ(logging.log.RecordCount(), 0u);
  EXPECT_TRUE(logging.log.Markers().empty());
  EXPECT_EQ(logging.capture.DatalogTime, 0.0);
  EXPECT_EQ(logging.log.axis, (TimeAxis{0.0, 30.0}));
}

TEST(DatalogCapture, ChannelLimitsStartFromTenAndZeroAtEveryRecord) {
  Logging logging;
  logging.Frames(1,
                 FrameBuilder().Put(40, 10, 1).Put(6, 20000, 3).Put(11, 0xFFFF & -2765, 2).frame);
  EXPECT_EQ(logging.capture.ChannelMax[kChannelRpm], 3000);
  EXPECT_EQ(logging.capture.ChannelMin[5], -5);  // -5.4 degrees, a whole number
  logging.Frames(1, FrameBuilder().Put(40, 10, 1).Put(6, 120000, 3).frame);
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

TEST(DatalogChannels, EngineSpeedIsZeroWhenThePeriodsHighCharacterIsFortyOrMore) {
  EXPECT_NEAR(DecodeChannel(0, FrameBuilder().Put(6, 0x27FFFF, 3).frame, {}), 22.89, 1e-9);
  EXPECT_EQ(DecodeChannel(0, FrameBuilder().Put(6, 0x280000, 3).frame, {}), 0.0);
  EXPECT_EQ(DecodeChannel(0, FrameBuilder().Put(6, 0xFF0001, 3).frame, {}), 0.0);
}

TEST(DatalogChannels, ADutyOfTwoHundredOrMoreIsRecordedAsTwoHundred) {
  const live::Frame frame = FrameBuilder().frame;
  EXPECT_EQ(DecodeChannel(kChannelDuty, frame, {0, 0, 0, 250.0}), 200.0);
  EXPECT_EQ(DecodeChannel(kChannelDuty, frame, {0, 0, 0, 200.0}), 200.0);
  EXPECT_EQ(DecodeChannel(kChannelDuty, frame, {0, 0, 0, 199.5}), 199.5);
}

TEST(AxisFollow, TheLookAheadClimbsTheLadderOfThePacketSpeedFactor) {
  const std::pair<double, double> ladder[] = {{1.0, 0.16}, {1.24, 0.16}, {1.25, 0.18}, {2.0, 0.18},
                                              {3.0, 0.18}, {4.49, 0.18}, {4.5, 0.21},  {5.49, 0.21},
                                              {5.5, 0.22}, {6.0, 0.22}};
  for (const auto& [k, look_ahead] : ladder) EXPECT_EQ(AxisLookAhead(k), look_ahead) << k;
}

TEST(AxisFollow, TheFirstMoveComesWithTheFirstFrameWhoseTimePassesNineteenEightyFive) {
  Logging logging;
  logging.Frames(198, FrameAt(10));  // 19.8396 s
  EXPECT_EQ(logging.log.axis, (TimeAxis{0.0, 20.0}));
  logging.Frames(1, FrameAt(10));  // 19.9398 s
  EXPECT_NEAR(logging.log.axis.max, 19.9398 + 0.16 + 0.1, 1e-9);
  EXPECT_EQ(logging.log.axis.min, 0.0);
  const double moved = logging.log.axis.max;
  logging.Frames(1, FrameAt(10));  // 20.04 s: still 0.15 s inside the new end
  EXPECT_EQ(logging.log.axis.max, moved);
}

TEST(AxisFollow, WithFactorSixTheAxisLooksAheadTwentyTwoHundredthsAndOnlyWhileFollowing) {
  TimeAxis axis{0.0, 20.0};
  EXPECT_TRUE(FollowTimeAxis(axis, 19.9, 6.0));
  EXPECT_NEAR(axis.max, 19.9 + 0.22 + 0.1, 1e-12);
  Logging logging;
  logging.Frames(300, FrameAt(10), 1.0, false);
  EXPECT_EQ(logging.log.axis, (TimeAxis{0.0, 20.0}));
}

}  // namespace
}  // namespace vela
