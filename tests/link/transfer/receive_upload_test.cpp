// The calibration upload: preparing the link, the request back-off and the reply rules.
#include <gtest/gtest.h>

#include <algorithm>

#include "link/faults/fault_codes.h"
#include "support/receive_rig.h"

namespace vela::testing {
namespace {

std::string Block() {
  std::string block(kImageLength, '\0');
  for (int i = 0; i < kImageLength; ++i) block[i] = static_cast<char>(i * 7 + 3);
  return block;
}

// A rig whose upload hands each block it takes to `blocks`.
struct UploadRig : ReceiveRig {
  UploadRig() {
    upload.SetCallbacks({[this](const CalibrationImage& i) { blocks.push_back(i); }, nullptr});
  }
  std::vector<CalibrationImage> blocks;
};

struct UploadTest : ::testing::Test {
  void SetUp() override { rig.upload.EnableTimer(); }
  void Reply(const std::string& text) {
    rig.Buffer() = text;
    rig.upload.UploadReplyHandler(rig.Buffer());
  }
  UploadRig rig;
  std::vector<CalibrationImage>& blocks = rig.blocks;
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
  EXPECT_EQ(rig.sender.frames,
            (std::vector<SentFrame>{{4, 864, 8}, {4, 864, 15}, {1, 770, 1284}, {3, 770, 1284}}));
  EXPECT_EQ(rig.display.orange_block, "Upload Requested 3");
}

TEST_F(UploadTest, BacksOffTo1600And2200Milliseconds) {
  std::int64_t now = 0;
  std::vector<std::int64_t> request_times;
  rig.upload.UploadTimer();  // prepares the link
  while (request_times.size() < 105) {
    now += rig.upload.TimerIntervalMs();
    const std::size_t before = rig.sender.frames.size();
    rig.upload.UploadTimer();
    if (rig.sender.frames.size() > before) request_times.push_back(now);
  }
  for (std::size_t n = 1; n < request_times.size(); ++n) {  // the gap before request n + 1
    EXPECT_EQ(request_times[n] - request_times[n - 1], n < 10 ? 800 : n < 20 ? 1600 : 2200) << n;
  }
  EXPECT_EQ(rig.display.orange_block, "Upload Requested 100");  // the count stops at 100
}

TEST_F(UploadTest, TakesACompleteBlockByteForByteAndStopsTheTimer) {
  Reply("xxALL" + Block() + "DONE" + Frames(1));
  ASSERT_EQ(blocks.size(), 1u);  // byte for byte: the chunking test
  EXPECT_EQ(rig.display.orange_block, "Upload Received");
  EXPECT_FALSE(rig.upload.TimerEnabled());
  EXPECT_EQ(rig.Buffer(), Frames(1));
  Reply("ALL" + Block() + "DONE");  // no longer expected
  EXPECT_EQ(blocks.size(), 1u);
}

// While held (a download runs, or the program is off-line) the ticks send nothing and the upload
// goes on where it stood afterwards. A calibration from elsewhere ends it: a reply then on its
// way is not taken (a lost link re-arms it: the supervision's tests).
TEST_F(UploadTest, HeldTicksSendNothingAndAnUploadEndedElsewhereTakesNoReply) {
  bool held = true;
  rig.upload.SetHeld([&] { return held; });
  rig.upload.UploadTimer();
  rig.upload.UploadTimer();
  EXPECT_TRUE(rig.sender.frames.empty());
  held = false;
  rig.upload.UploadTimer();
  rig.upload.UploadTimer();
  EXPECT_EQ(rig.sender.frames, (std::vector<SentFrame>{{4, 864, 15}, {1, 770, 1284}}));

  rig.upload.Complete();
  EXPECT_FALSE(rig.upload.TimerEnabled());
  Reply("ALL" + Block() + "DONE");
  EXPECT_TRUE(blocks.empty());
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

TEST_F(UploadTest, DecidesOnlyOnceAWholeReplyCouldBeThere) {
  Reply("ALL" + std::string(1022, 'a') + "DONE");  // 1029 characters: it may go on
  EXPECT_EQ(rig.Buffer().size(), 1029u);
  EXPECT_TRUE(blocks.empty());
  Reply("ALL" + std::string(1022, 'a') + "DONE" + "START");  // "DONE" one short: damaged
  EXPECT_EQ(rig.Buffer(), "START");
  Reply("ALL" + std::string(1023, 'a'));  // waits for more
  EXPECT_EQ(rig.display.status, (LabelLook{"UPLOAD", kLabelGreen}));
  rig.upload.UploadTimer();  // sends nothing while a reply is arriving
  EXPECT_TRUE(rig.sender.frames.empty());
  Reply("ALL" + std::string(1030, 'a'));  // no "DONE" where the block should end
  EXPECT_EQ(rig.display.status, (LabelLook{"ERR", kLabelRed}));
  EXPECT_EQ(rig.Buffer(), "aaa");
  EXPECT_TRUE(blocks.empty());
}

// Two fuel cells of 20.292 ms and 17.742 ms spell "DONE" inside the block.
std::string BlockSpellingDone(int at) {
  std::string block = Block();
  block.replace(static_cast<std::size_t>(at), 4, "DONE");
  return block;
}

// Cells that spell a whole live frame inside the block, its engine period kPeriodInBlock.
constexpr std::uint32_t kPeriodInBlock = 4242;
std::string BlockSpellingAFrame(int at) {
  std::string block = Block();
  block.replace(static_cast<std::size_t>(at), live::kFrameLength,
                FrameBuilder().U24(live::kEnginePeriod, kPeriodInBlock).Str());
  return block;
}

// The reply arrives in equal chunks of every size from 1 byte to the whole reply at once,
// after live frames and followed by more, with dispatcher ticks and watchdog ticks between
// the chunks: it is taken every time, whole, and the frames around it still get through. Bytes
// of the block that spell "DONE" or a whole live frame are the block's, never a frame.
TEST(UploadChunking, EveryChunkSizeTakesTheReplyEvenWithMarkersInsideTheBlock) {
  for (const std::string& block : {Block(), BlockSpellingDone(0), BlockSpellingDone(1018),
                                   BlockSpellingAFrame(0), BlockSpellingAFrame(500)}) {
    const std::string stream = Frames(2, 100) + "ALL" + block + "DONE" + Frames(3, 200);
    for (std::size_t size = 1; size <= 1030; ++size) {
      SCOPED_TRACE(size);
      UploadRig rig;
      for (std::size_t at = 0; at < stream.size(); at += size) {
        rig.Receive(stream.substr(at, size));
        rig.dispatcher.TimerCommProcess();
        if (at % (7 * size) == 0) {  // a pause: the dispatcher and the watchdog tick on
          rig.dispatcher.TimerCommProcess();
          rig.supervisor.CommsTimer();
        }
      }
      for (int i = 0; i < 5; ++i) rig.dispatcher.TimerCommProcess();
      ASSERT_EQ(rig.blocks.size(), 1u);
      const auto& bytes = rig.blocks[0].Bytes();
      ASSERT_EQ(std::string(bytes.begin(), bytes.end()), block);
      ASSERT_FALSE(rig.periods.empty());
      EXPECT_EQ(rig.periods.back(), 202u);
      EXPECT_EQ(std::ranges::count(rig.periods, kPeriodInBlock), 0);
      EXPECT_LE(rig.Buffer().size(), ReceiveBuffer::kReplyHoldLimit);
    }
  }
}

// While a reply is expected, "ALL" (even split across two chunks) starts it: the long chunk is
// kept whole from "ALL" on. Without a reply expected the receive limits stand as they are: a
// burst is cut to 500 (the receive event's tests pin the rest of them).
TEST(UploadChunking, OnlyAReplyUnderWayLiftsTheLimits) {
  ReceiveRig rig;
  rig.Buffer() = std::string(990, 'x') + "AL";
  rig.Receive("L" + std::string(600, 'y'));
  EXPECT_EQ(rig.Buffer(), "ALL" + std::string(600, 'y'));
  EXPECT_EQ(rig.display.overflow_count, 0);

  ReceiveRig idle;
  idle.upload.SetCallbacks({[](const CalibrationImage&) {}, nullptr});
  idle.Receive("ALL" + Block() + "DONE");
  idle.dispatcher.TimerCommProcess();
  EXPECT_FALSE(idle.upload.UploadExpected());
  idle.Buffer().clear();
  idle.Receive("ALL" + std::string(600, 'z'));
  EXPECT_EQ(idle.Buffer().size(), 500u);  // a burst cut to 500
}

// A standing engine's frame: its period bytes 41 4C 4C spell "ALL" (5,000,257 us a turn). The
// idle target tells the frames apart.
std::string StandingFrame(std::uint16_t tag) {
  return FrameBuilder().Byte(6, 'A').Byte(7, 'L').Byte(8, 'L').U16(live::kIdleTarget, tag).Str();
}

int Requests(const ReceiveRig& rig) {
  return static_cast<int>(std::ranges::count_if(rig.sender.frames, [](const SentFrame& c) {
    return c.address == CalibrationUpload::kRequestAddress;
  }));
}

// Frames whose data spell "ALL" while the calibration is awaited are frames: each is taken the
// moment it is whole, even when it arrives in two pieces split inside the marker, the requests go
// on at their pace, and a reply that follows such a frame is still taken.
TEST(StrayMarkers, FramesWhoseDataSpellAllAreTakenAndTheUploadGoesOn) {
  UploadRig rig;
  rig.upload.UploadTimer();  // the link preparation
  for (std::uint16_t i = 0; i < 20; ++i) {
    const std::string frame = StandingFrame(i);
    rig.Receive(frame.substr(0, 7));
    rig.dispatcher.TimerCommProcess();
    rig.Receive(frame.substr(7));
    rig.dispatcher.TimerCommProcess();
    if (i % 5 == 0) rig.upload.UploadTimer();
    rig.clock.now += 250;
  }
  EXPECT_EQ(rig.periods.size(), 20u);
  EXPECT_EQ(rig.live.idle_target_rpm, 19);
  EXPECT_FALSE(rig.upload.UploadStarted());
  EXPECT_EQ(Requests(rig), 4);
  rig.Receive(StandingFrame(20) + "ALL" + Block() + "DONE" + StandingFrame(21));
  for (int i = 0; i < 3; ++i) rig.dispatcher.TimerCommProcess();
  ASSERT_EQ(rig.blocks.size(), 1u);
  EXPECT_EQ(std::string(rig.blocks[0].Bytes().begin(), rig.blocks[0].Bytes().end()), Block());
  EXPECT_EQ(rig.live.idle_target_rpm, 21);
}

// An "ALL" that is no frame's data (here a frame whose start was lost) may begin a reply, so the
// frames behind it wait; once a whole reply could have arrived (kReplyTimeMs) it is given up
// with what came in that time, the frames after it are taken and the requests go on. (A real
// reply arriving in pieces at the line's speed is taken: the end-to-end link tests.)
TEST(StrayMarkers, AStartNoReplyFollowsIsGivenUpInTheReplysTime) {
  ReceiveRig rig;
  rig.upload.UploadTimer();  // the link preparation
  rig.Receive(StandingFrame(1).substr(3));
  rig.dispatcher.TimerCommProcess();
  EXPECT_TRUE(rig.upload.UploadStarted());
  rig.clock.now = 60;
  rig.Receive(Frames(1, 100));
  rig.dispatcher.TimerCommProcess();
  rig.clock.now = CalibrationUpload::kReplyTimeMs;  // a reply could still end now
  rig.dispatcher.TimerCommProcess();
  rig.upload.UploadTimer();
  EXPECT_TRUE(rig.periods.empty());
  EXPECT_EQ(Requests(rig), 0);
  rig.clock.now = CalibrationUpload::kReplyTimeMs + 1;
  rig.upload.UploadTimer();  // no longer held back
  EXPECT_EQ(Requests(rig), 1);
  rig.Receive(Frames(1, 200));
  rig.dispatcher.TimerCommProcess();
  EXPECT_FALSE(rig.upload.UploadStarted());
  EXPECT_EQ(rig.periods, std::vector<std::uint32_t>{200});
  EXPECT_EQ(rig.display.status, (LabelLook{"ERR", kLabelRed}));
}

// Inside the block: "DONE", a whole live frame saying the ECU holds fault 37, and a fault code
// reply saying the same.
std::string BlockSpellingFaults() {
  std::string block = Block();
  block.replace(100, 4, "DONE");
  const std::string frame = FrameBuilder()
                                .U24(live::kEnginePeriod, kPeriodInBlock)
                                .Byte(live::kFaultCount, 1)
                                .Byte(live::kNewestFault, 37)
                                .Str();
  block.replace(200, frame.size(), frame);
  block.replace(400, fault_reply::kLength, fault_reply::Encode({1, {37, 0, 0, 0}}));
  return block;
}

// A damaged reply ("DONE" one early or one late, or the reply cut off and live frames coming
// again) goes whole: nothing of its block is taken as a live frame or as the fault code reply
// a request waits for, and the live frames after it are taken.
TEST(DamagedReply, GoesWholeSoItsBlockIsNeverReadAsFramesOrFaults) {
  const std::string block = BlockSpellingFaults();
  const std::string replies[] = {"ALL" + block.substr(0, 1022) + "DONE",
                                 "ALL" + block + "x" + "DONE", "ALL" + block.substr(0, 700)};
  for (const std::string& reply : replies) {
    SCOPED_TRACE(reply.size());
    UploadRig rig;
    FaultCodeReader reader(rig.sender, rig.clock);
    int fault_replies = 0;
    reader.SetCallbacks({[&](const fault_reply::Reply&) { ++fault_replies; }, nullptr});
    rig.dispatcher.SetReplyHandler([&](std::string& buffer) { reader.FaultReplyHandler(buffer); });
    reader.Request();
    const std::string stream = reply + Frames(12, 500);
    for (std::size_t at = 0; at < stream.size(); at += 100) {
      rig.Receive(stream.substr(at, 100));
      rig.dispatcher.TimerCommProcess();
    }
    for (int i = 0; i < 20; ++i) rig.dispatcher.TimerCommProcess();
    EXPECT_TRUE(rig.blocks.empty());
    EXPECT_EQ(std::ranges::count(rig.periods, kPeriodInBlock), 0);
    ASSERT_FALSE(rig.periods.empty());
    EXPECT_EQ(rig.periods.back(), 511u);
    EXPECT_NE(rig.live.last_error, 37);
    EXPECT_EQ(fault_replies, 0);
  }
}

}  // namespace
}  // namespace vela::testing
