// `CommsTimer`: the caption, the reset on a lost link and the re-armed upload.
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
  for (int tick = 1; tick <= 3; ++tick) rig.supervisor.CommsTimer();
  EXPECT_EQ(rig.state.Caption, "MORVANE Engine Management System  -  Connected");
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

TEST_F(SupervisionTest, AReconnectionReArmsTheUploadSoAPowerCycledEcuIsReadAgain) {
  std::vector<std::uint8_t> first_bytes;
  rig.upload.SetCallbacks(
      {[&](const CalibrationImage& i) { first_bytes.push_back(i.Byte(1)); }, nullptr});
  rig.upload.EnableTimer();
  for (std::uint8_t fill : {0x11, 0x22}) {
    rig.Receive("x");
    rig.supervisor.CommsTimer();
    rig.upload.UploadTimer();  // prepares the link
    EXPECT_EQ(rig.upload.UploadStep(), 2);
    rig.Buffer() = "ALL" + std::string(kImageLength, static_cast<char>(fill)) + "DONE";
    rig.Dispatch();
    EXPECT_FALSE(rig.upload.TimerEnabled());
    for (int tick = 0; tick <= kDefaultRxLevel; ++tick) rig.supervisor.CommsTimer();  // lost
    EXPECT_TRUE(rig.upload.TimerEnabled());
    EXPECT_EQ(rig.upload.UploadStep(), 0);
  }
  EXPECT_EQ(first_bytes, (std::vector<std::uint8_t>{0x11, 0x22}));
}

}  // namespace
}  // namespace vela::testing
