// `CommsTimer`: the caption and the reset on a lost link. That a lost link re-arms the upload,
// so that an ECU coming back is read again, the end-to-end link tests walk.
#include <gtest/gtest.h>

#include "support/receive_rig.h"

namespace vela::testing {
namespace {

struct SupervisionTest : ::testing::Test {
  void SetUp() override {
    rig.state.Caption = std::string(kCaptionNotConnected);
    rig.state.RxPending = 0;
    rig.supervisor.SetCallbacks({[this](const std::string& c) { captions.push_back(c); },
                                 [this] { ++resets; }, [this] { ++refills; }, nullptr});
  }
  ReceiveRig rig;
  std::vector<std::string> captions;
  int resets = 0;
  int refills = 0;
};

TEST_F(SupervisionTest, ShowsTheLossOnTheTickAfterRxLevelTicks) {
  rig.state.RxLevel = 3;
  rig.Receive("x");
  for (int tick = 1; tick <= 3; ++tick) {
    rig.supervisor.CommsTimer();
    EXPECT_EQ(rig.state.Caption, "MORVANE Engine Management System  -  Connected") << tick;
  }
  rig.supervisor.CommsTimer();
  rig.supervisor.CommsTimer();
  EXPECT_EQ(rig.state.Caption, "MORVANE Engine Management System  - Not  Connected");
  EXPECT_EQ(captions.size(), 2u);  // set only when it changes
}

TEST_F(SupervisionTest, ALostLinkResetsTheDisplaysUnlessHeld) {
  rig.live.map_kpa = 101.3;
  rig.display.status = {"ERR", kLabelRed};
  rig.supervisor.CommsTimer();
  EXPECT_EQ(rig.live.map_kpa, 0.0);
  EXPECT_EQ(rig.display.status, (LabelLook{"ERR", kLabelGreen}));
  EXPECT_EQ(resets, 1);
  EXPECT_EQ(refills, 1);
  EXPECT_EQ(rig.display.datalog_button_text, "Start DataLogging");
  rig.supervisor.SetHoldDisplay(true);
  rig.live.map_kpa = 101.3;
  rig.supervisor.CommsTimer();
  EXPECT_EQ(rig.live.map_kpa, 101.3);
}

TEST_F(SupervisionTest, LabelsShowTheWatchdogCountAndRecentSendAborts) {
  rig.state.StallCounter = 20;
  rig.Receive("x");
  rig.supervisor.CommsTimer();
  EXPECT_EQ(rig.display.status.text, std::to_string(kDefaultRxLevel - 1));
  EXPECT_EQ(rig.display.link_indicator.text, "Stalled");
  rig.supervisor.CommsTimer();
  EXPECT_EQ(rig.display.link_indicator.text, "Connected");
  for (const char* kept : {"UPLOAD", "ERR"}) {
    rig.display.status.text = kept;
    rig.supervisor.CommsTimer();
    EXPECT_EQ(rig.display.status.text, kept);
  }
}

}  // namespace
}  // namespace vela::testing
