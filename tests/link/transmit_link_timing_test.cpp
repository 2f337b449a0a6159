#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "link/link_timing.h"
#include "support/platform_fakes.h"
#include "support/recording_sender.h"

namespace vela {
namespace {

using ::testing::ElementsAre;
using testing::SentFrame;

struct RecordingLabel : StatusLabel {
  void SetText(const std::string& text) override { log.push_back(text); }
  void SetColour(LabelColour c) override {
    log.push_back(std::to_string(c.red) + "," + std::to_string(c.green) + "," +
                  std::to_string(c.blue));
  }
  std::vector<std::string> log;
};

class LinkTimingTest : public ::testing::Test {
 protected:
  testing::FakeClock clock_;
  LinkState link_;
  DelayLoop loop_{clock_, link_};
  testing::RecordingSender sender_;
  LinkTiming timing_{loop_, link_, sender_};
  StartupTrace trace_;
  RecordingLabel label_;
};

// A fast PC is measured quickly four times; the live-frame rate is then the run's first frame,
// sent before the upload timer can prepare the link.
TEST_F(LinkTimingTest, FastPcMeasuresQuicklyFourTimesSendsTheRateThenEnablesUpload) {
  EXPECT_FALSE(link_.PacingReady);
  clock_.script = {0, 10, 10, 20, 20, 30, 30, 41};
  timing_.ComputeCommsSpeed(4);
  std::size_t sent_when_enabled = 99;
  timing_.CountsPerMSTimer(trace_, label_, [&] {
    sent_when_enabled = sender_.frames.size();
    trace_.Show("upload on");
  });
  EXPECT_THAT(trace_.texts(),
              ElementsAre("Entered CountsPerMSTimer", "Confirm1MSDelay1 Started",
                          "Confirm1MSDelay2 Started", "Confirm1MSDelay3 Started",
                          "Confirm1MSDelay Full Final Started", "Confirm1MSDelay Complete",
                          "upload on", "UploadTimer Enabled"));
  EXPECT_THAT(label_.log,
              ElementsAre("Testing...", "255,50,30", "11  45590", "128,128,128", "128,255,128"));
  EXPECT_EQ(clock_.events_run, 4);
  EXPECT_TRUE(link_.PacingReady);
  EXPECT_THAT(sender_.frames, ElementsAre(SentFrame{4, 864, 13}));
  EXPECT_THAT(sender_.pre_waits, ElementsAre(true));
  EXPECT_EQ(sent_when_enabled, 1u);
}

TEST_F(LinkTimingTest, SlowPcSwitchesToFullNonResponsiveMeasurements) {
  clock_.script = {0, 400, 400, 2000, 2000, 3600, 3600, 5200};
  timing_.CountsPerMSTimer(trace_, label_, {});
  // The full measurement's count over 1600 ms shown; a quick one would read about a quarter.
  EXPECT_EQ(label_.log[2], "1600  1253");
  EXPECT_EQ(clock_.events_run, 1);
}

TEST_F(LinkTimingTest, RateValueIsConstantOverDispatchPowerAndIsSentTo864) {
  timing_.ComputeCommsSpeed(10);
  EXPECT_EQ(link_.CommsSpeedValue, 66);
  link_.DispatchPerTick = 2.0f;
  timing_.ComputeCommsSpeed(7);  // 27 / 2^1.033 = 13.19
  EXPECT_EQ(link_.CommsSpeedValue, 13);
  timing_.ComputeCommsSpeed(11);
  link_.CommsSuspended = true;
  timing_.ComputeCommsSpeed(0);
  EXPECT_EQ(link_.CommsSpeedValue, 13);
  timing_.TimerCommsSpeed();
  EXPECT_THAT(sender_.frames, ElementsAre(SentFrame{4, 864, 13}));
  EXPECT_THAT(sender_.pre_waits, ElementsAre(true));
}

}  // namespace
}  // namespace vela
