// The calibration upload: preparing the link, the request back-off and the reply rules.
#include <gtest/gtest.h>

#include "receive_fakes.h"

namespace vela::receive_testing {
namespace {

std::string Block() {
  std::string block(kImageLength, '\0');
  for (int i = 0; i < kImageLength; ++i) block[i] = static_cast<char>(i * 7 + 3);
  return block;
}

struct UploadTest : ::testing::Test {
  void SetUp() override {
    rig.upload.SetCallbacks({[this](const CalibrationImage& i) { blocks.push_back(i); }, nullptr});
    rig.upload.EnableTimer();
  }
  void Reply(const std::string& text) {
    rig.Buffer() = text;
    rig.upload.UploadReplyHandler(rig.Buffer());
  }
  ReceiveRig rig;
  std::vector<CalibrationImage> blocks;
};

TEST_F(UploadTest, PreparesTheLinkThenRequestsWithTheSelectedCodeUnlessASendAborted) {
  rig.state.Caption = std::string(kCaptionNotConnected);
  rig.port.open = false;
  rig.upload.UploadTimer();  // a closed port leaves the preparation for later
  EXPECT_EQ(rig.upload.UploadStep(), 0);
  rig.port.open = true;
  rig.upload.UploadTimer();
  rig.upload.UploadTimer();
  rig.state.Caption = std::string(kCaptionConnected);
  rig.upload.UploadTimer();
  rig.upload.UploadTimer();
  rig.upload.SetRequestCode(3);
  rig.upload.SetRequestCode(0);  // none selected: the code stays
  rig.upload.UploadTimer();
  rig.state.CommsSendAborted = 1;
  rig.upload.UploadTimer();
  EXPECT_EQ(rig.sender.sent,
            (std::vector<SentCommand>{{4, 864, 8}, {4, 864, 15}, {1, 770, 1284}, {3, 770, 1284}}));
  EXPECT_EQ(rig.display.orange_block, "Upload Requested 3");
}

TEST_F(UploadTest, BacksOffTo1600And2200Milliseconds) {
  std::int64_t now = 0;
  std::vector<std::int64_t> request_times;
  rig.upload.UploadTimer();  // prepares the link
  while (request_times.size() < 105) {
    now += rig.upload.TimerIntervalMs();
    const std::size_t before = rig.sender.sent.size();
    rig.upload.UploadTimer();
    if (rig.sender.sent.size() > before) request_times.push_back(now);
  }
  for (std::size_t n = 1; n < request_times.size(); ++n) {  // the gap before request n + 1
    EXPECT_EQ(request_times[n] - request_times[n - 1], n < 10 ? 800 : n < 20 ? 1600 : 2200) << n;
  }
  EXPECT_EQ(rig.display.orange_block, "Upload Requested 100");  // the count stops at 100
}

TEST_F(UploadTest, TakesACompleteBlockByteForByteAndStopsTheTimer) {
  Reply("xxALL" + Block() + "DONE" + Frames(1));
  ASSERT_EQ(blocks.size(), 1u);
  EXPECT_EQ(std::string(blocks[0].Bytes().begin(), blocks[0].Bytes().end()), Block());
  EXPECT_EQ(rig.display.orange_block, "Upload Received");
  EXPECT_FALSE(rig.upload.TimerEnabled());
  EXPECT_EQ(rig.Buffer(), Frames(1));
  Reply("ALL" + Block() + "DONE");  // no longer expected
  EXPECT_EQ(blocks.size(), 1u);
}

TEST_F(UploadTest, ABlockedReplyIsPassedOverOnceWithItsMarkersRemoved) {
  rig.upload.SetUploadBlocked(true);
  Reply("ALL" + Block() + "DONE" + Frames(1));
  EXPECT_TRUE(blocks.empty());
  EXPECT_FALSE(rig.upload.UploadBlocked());
  EXPECT_TRUE(rig.upload.TimerEnabled());
  EXPECT_EQ(rig.Buffer(), Frames(1));
  Reply("ALL" + Block() + "DONE");
  EXPECT_EQ(blocks.size(), 1u);
}

TEST_F(UploadTest, TakesABlockWhoseOwnBytesSpellTheEndMarker) {
  Reply("ALL" + Block().replace(100, 4, "DONE") + "DONE");
  EXPECT_EQ(blocks.size(), 1u);
}

TEST_F(UploadTest, DropsADamagedReplyAndShowsErrForOneCutShort) {
  Reply("ALL" + std::string(1022, 'a') + "DONE");
  EXPECT_EQ(rig.Buffer(), "DONE");
  Reply("ALL" + std::string(1023, 'a'));  // waits for more
  EXPECT_EQ(rig.display.status, (LabelLook{"UPLOAD", kLabelGreen}));
  rig.upload.UploadTimer();  // sends nothing while a reply is arriving
  EXPECT_TRUE(rig.sender.sent.empty());
  Reply("ALL" + std::string(1024, 'a'));
  EXPECT_EQ(rig.display.status, (LabelLook{"ERR", kLabelRed}));
  EXPECT_EQ(rig.Buffer(), "");
  EXPECT_TRUE(blocks.empty());
}

TEST_F(UploadTest, AReplyInChunksThroughTheReceivePathArrivesWhole) {
  const std::string reply = "ALL" + Block() + "DONE";
  for (std::size_t at = 0; at < reply.size(); at += 400) {
    rig.Receive(reply.substr(at, 400));
    rig.dispatcher.TimerCommProcess();
  }
  ASSERT_EQ(blocks.size(), 1u);
  EXPECT_EQ(rig.display.upload_progress, 100);
}

}  // namespace
}  // namespace vela::receive_testing
