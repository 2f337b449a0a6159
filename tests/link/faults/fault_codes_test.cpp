// The fault code request and reply: the reply's layout, the reader on the receive side (among
// live frames, however the line chunks it; in a calibration reply: the upload's tests) and the
// faults seen.
#include "link/faults/fault_codes.h"

#include <gtest/gtest.h>

#include <random>

#include "link/faults/fault_watch.h"
#include "support/receive_rig.h"

namespace vela::testing {
namespace {

using fault_reply::Reply;

TEST(FaultReplyLayout, HoldsMarkerCountCodesAndCheckAsHexDigits) {
  const std::string text = fault_reply::Encode({3, {139, 66, 1, 0}});
  EXPECT_EQ(text, "CODE038B420100D1");  // 3 + 139 + 66 + 1 = 209 = 0xD1
  EXPECT_EQ(text.size(), fault_reply::kLength);
  EXPECT_EQ(fault_reply::Decode(text), (Reply{3, {139, 66, 1, 0}}));
}

TEST(FaultReplyLayout, AnythingButAWholeUndamagedReplyIsRefused) {
  const std::string good = fault_reply::Encode({2, {8, 18, 0, 0}});
  EXPECT_FALSE(fault_reply::Decode(good.substr(0, 15)));
  std::string bad_check = good;
  bad_check[15] = bad_check[15] == '0' ? '1' : '0';
  EXPECT_FALSE(fault_reply::Decode(bad_check));
  std::string lower = good;
  lower[7] = 'a';
  EXPECT_FALSE(fault_reply::Decode(lower));
  EXPECT_FALSE(fault_reply::Decode("XODE" + good.substr(4)));
}

TEST(FaultReplyLayout, NoReplySpellsALinkMarker) {
  std::mt19937 random(7);
  for (int i = 0; i < 2000; ++i) {
    Reply reply{static_cast<int>(random() % 256), {}};
    for (int& code : reply.codes) code = static_cast<int>(random() % 256);
    const std::string text = "END" + fault_reply::Encode(reply) + "START";
    for (std::string_view marker : {"ALL", "DONE"}) {
      EXPECT_EQ(text.find(marker), std::string::npos) << text;
    }
    EXPECT_EQ(text.find("END", 1), std::string::npos) << text;
    EXPECT_EQ(text.find("START"), text.size() - 5) << text;
  }
}

struct FaultReaderTest : ::testing::Test {
  FaultReaderTest() {
    reader.SetCallbacks({[this](const Reply& r) { replies.push_back(r); }, [this] { ++silences; }});
    rig.dispatcher.SetReplyHandler(
        [this](std::string& buffer) { reader.FaultReplyHandler(buffer); });
  }
  ReceiveRig rig;
  FaultCodeReader reader{rig.sender, rig.clock};
  std::vector<Reply> replies;
  int silences = 0;
};

TEST_F(FaultReaderTest, AsksWithOneFrameAndNotAgainWhileTheAnswerIsAwaited) {
  reader.Request();
  reader.Request();
  EXPECT_EQ(rig.sender.frames, (std::vector<SentFrame>{{9, 1040, 0}}));
  EXPECT_TRUE(reader.Waiting());
}

TEST_F(FaultReaderTest, AReplyCutIntoPiecesIsTakenOnceWholeFromBetweenLiveFrames) {
  reader.Request();
  const std::string stream =
      Frames(1, 10) + fault_reply::Encode({2, {66, 3, 0, 0}}) + Frames(2, 11);
  for (char c : stream) {
    rig.Receive(std::string(1, c));
    rig.Dispatch();
  }
  ASSERT_EQ(replies.size(), 1u);
  EXPECT_EQ(replies[0], (Reply{2, {66, 3, 0, 0}}));
  EXPECT_EQ(rig.periods, (std::vector<std::uint32_t>{10, 11, 12}));
  EXPECT_TRUE(rig.Buffer().empty());
  EXPECT_FALSE(reader.Waiting());
}

// A live frame's data may spell a whole, valid reply: the frame stays whole (even while its end
// is still on its way) and the reply that follows it is the one taken.
TEST_F(FaultReaderTest, AReplySpelledByAFramesDataStaysTheFrames) {
  reader.Request();
  FrameBuilder spelling;
  const std::string inside = fault_reply::Encode({1, {37, 0, 0, 0}});
  std::copy(inside.begin(), inside.end(), spelling.frame.begin() + 10);
  const std::string frame = spelling.U24(live::kEnginePeriod, 8).Str();
  rig.Receive(frame.substr(0, 30));
  rig.Dispatch();
  rig.Receive(frame.substr(30) + fault_reply::Encode({1, {66, 0, 0, 0}}));
  rig.Dispatch();
  ASSERT_EQ(replies.size(), 1u);
  EXPECT_EQ(replies[0].codes[0], 66);
  EXPECT_EQ(rig.periods, (std::vector<std::uint32_t>{8}));
}

TEST_F(FaultReaderTest, ADamagedReplyIsPassedOverAndTheNextWholeOneTaken) {
  reader.Request();
  std::string damaged = fault_reply::Encode({1, {8, 0, 0, 0}});
  damaged[9] = 'Z';
  rig.Receive(damaged + Frames(1, 5) + fault_reply::Encode({1, {9, 0, 0, 0}}));
  rig.Dispatch();
  ASSERT_EQ(replies.size(), 1u);
  EXPECT_EQ(replies[0].codes[0], 9);
  rig.Dispatch();
  EXPECT_EQ(rig.periods, (std::vector<std::uint32_t>{5}));
}

TEST_F(FaultReaderTest, NoAnswerWithinTheWaitIsSilenceAndALateReplyIsLeftToTheFrameSearch) {
  reader.Request();
  rig.clock.now = FaultCodeReader::kAnswerWaitMs - 1;
  reader.Tick();
  EXPECT_EQ(silences, 0);
  rig.clock.now = FaultCodeReader::kAnswerWaitMs;
  reader.Tick();
  reader.Tick();
  EXPECT_EQ(silences, 1);
  EXPECT_FALSE(reader.Waiting());
  rig.Receive(fault_reply::Encode({0, {}}) + Frames(1, 3));
  rig.Dispatch();
  EXPECT_TRUE(replies.empty());
  EXPECT_EQ(rig.periods, (std::vector<std::uint32_t>{3}));
  reader.Request();  // a new request goes out
  EXPECT_EQ(rig.sender.frames.size(), 2u);
}

TEST(FaultWatchTest, AFrameTellsOfANewFaultWhenItsNewestCodeOrItsCountChanges) {
  FaultWatch watch;
  EXPECT_EQ(watch.ObserveFrame(0, 0, 10), std::nullopt);
  EXPECT_EQ(watch.ObserveFrame(1, 66, 20), 66);
  EXPECT_EQ(watch.ObserveFrame(1, 66, 30), std::nullopt);  // the same fault, still held
  EXPECT_EQ(watch.ObserveFrame(2, 3, 40), 3);
  EXPECT_EQ(watch.ObserveFrame(3, 3, 50), 3);             // reported again
  EXPECT_EQ(watch.ObserveFrame(0, 0, 60), std::nullopt);  // cleared
  EXPECT_EQ(watch.ObserveFrame(1, 66, 70), 66);
  EXPECT_EQ(watch.Seen(), (std::vector<SeenFault>{{66, 20, 2}, {3, 40, 2}}));
}

TEST(FaultWatchTest, CodesReadFromTheEcuAddOnlyWhatWasNotSeen) {
  FaultWatch watch;
  watch.ObserveFrame(3, 66, 1);
  const std::vector<int> codes = {66, 8, 0, 8};
  EXPECT_EQ(watch.ObserveCodes(codes, 2), (std::vector<int>{8}));
  EXPECT_EQ(watch.Seen(), (std::vector<SeenFault>{{66, 1, 1}, {8, 2, 1}}));
  EXPECT_EQ(watch.Unacknowledged(), 66);
}

}  // namespace
}  // namespace vela::testing
