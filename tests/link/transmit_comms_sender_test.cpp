#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "link/comms_sender.h"
#include "transmit_fakes.h"

namespace vela {
namespace {

using ::testing::ElementsAre;

// CountsPerMS 2000, EngineRate 3000 (delay 4.0, 1 step): command 5 has a frame time of 4.65 ms
// and waits 4.65 x 2000 / 7 = 1329 iterations after each byte.
constexpr std::int64_t kByteWait = 1329;

class CommsSenderTest : public ::testing::Test {
 protected:
  CommsSenderTest() {
    link_.CountsPerMS = 2000;
    link_.PacingReady = true;
    link_.EngineRate = 3000.0f;
    port_.on_write = [this] { marks_.push_back(loop_.iterations_run()); };
  }
  // Sends and returns the iterations waited before the first byte and after each byte.
  std::vector<std::int64_t> Send(int command, bool pre_wait = false, bool slower = false,
                                 int command2 = 0) {
    marks_ = {loop_.iterations_run()};
    bool reserved = false;
    sender_.CommsSend(command, 300, 1000, pre_wait, reserved, command2, 7, 9, slower);
    marks_.push_back(loop_.iterations_run());
    std::vector<std::int64_t> waits;
    for (std::size_t i = 1; i < marks_.size(); ++i) waits.push_back(marks_[i] - marks_[i - 1]);
    return waits;
  }

  transmit_testing::FakeClock clock_;
  transmit_testing::ScriptedPort port_;
  LinkState link_;
  DelayLoop loop_{clock_, link_};
  CommsSender sender_{port_, clock_, link_, loop_};
  std::vector<std::int64_t> marks_;
};

TEST_F(CommsSenderTest, WritesSixBytesEachFollowedByItsWait) {
  EXPECT_THAT(Send(5),
              ElementsAre(0, kByteWait, kByteWait, kByteWait, kByteWait, kByteWait, kByteWait));
  EXPECT_THAT(port_.written, ElementsAre(5, 44, 1, 232, 3, 29));
  link_.CommsRepeat = 2;
  EXPECT_EQ(Send(5)[1], 2 * kByteWait);
  link_.CommsRepeat = 0;  // still waits once
  EXPECT_EQ(Send(5, false, /*slower=*/true)[1], 1993);
  link_.CountsPerMS = 0;
  EXPECT_EQ(Send(5)[1], 100);
}

TEST_F(CommsSenderTest, PreWaitComesFirstAndShortensByteWaits) {
  link_.CommsPreWaitCount = 2;
  const auto waits = Send(5, /*pre_wait=*/true);
  EXPECT_EQ(waits[0], 12 * 2325);  // 10 + 2 steps of 4.65 x 2000 / 4
  EXPECT_EQ(waits[1], 1240);       // divided by 1 x 1.5 + 6
}

TEST_F(CommsSenderTest, SecondFrameHasItsOwnFrameTime) {
  const auto waits = Send(5, false, false, /*command2=*/2);
  EXPECT_THAT(port_.written, ElementsAre(5, 44, 1, 232, 3, 29, 2, 7, 0, 9, 0, 18));
  EXPECT_EQ(waits[6], kByteWait);
  EXPECT_EQ(waits[7], 2543);  // 8.9 x 2000 / 7
}

TEST_F(CommsSenderTest, InfiniteRateCountsAsZeroAndSlowSendLengthensTheDelay) {
  link_.EngineRate = std::numeric_limits<float>::infinity();
  link_.SlowSend = true;
  EXPECT_EQ(Send(5)[1], 2025);  // (1.05 x (3.6 x 1.2 + 2) + 0.45) x 2000 / 7
  EXPECT_EQ(link_.EngineRate, 0.0f);
  EXPECT_FLOAT_EQ(sender_.comms_byte_delay(), 6.32f);
}

TEST_F(CommsSenderTest, DelaysOffShrinkFrameTimeUnlessForced) {
  link_.CommsDelayEnabled = false;
  EXPECT_EQ(Send(6)[1], 100);
  link_.ForcedDelay = true;
  EXPECT_EQ(Send(5)[1], kByteWait);
}

TEST_F(CommsSenderTest, ClosedPortOrSuspendedLinkSendsNothing) {
  port_.open = false;
  Send(5, true);
  EXPECT_EQ(clock_.reads, 0);
  port_.open = true;
  link_.CommsSuspended = true;
  Send(5, true);
  EXPECT_TRUE(port_.written.empty());
  EXPECT_EQ(loop_.iterations_run(), 0);
}

TEST_F(CommsSenderTest, WriteOver350MsAbortsTheRestOfTheCall) {
  link_.CommsSendAborted = 1;
  port_.on_write = [this] { clock_.now += 350; };  // exactly 350 ms is not too long
  Send(5);
  EXPECT_EQ(link_.CommsSendAborted, 0);
  port_.written.clear();
  port_.on_write = [this] {
    marks_.push_back(loop_.iterations_run());
    if (port_.written.size() == 3) clock_.now += 351;
  };
  EXPECT_THAT(Send(5, false, false, 2), ElementsAre(0, kByteWait, kByteWait, 0));
  EXPECT_EQ(port_.written.size(), 3u);
  EXPECT_EQ(link_.CommsSendAborted, 1);
  EXPECT_EQ(link_.StallCounter, 100);
  EXPECT_EQ(clock_.events_run, 1);
}

// A port that does not take a byte (the write reports failure after its own timeout) stalls the
// link just as a slow write does.
TEST_F(CommsSenderTest, APortThatRefusesAByteAbortsTheCallAndMarksTheStall) {
  port_.refuse_from = 2;
  Send(5, false, false, 2);
  EXPECT_EQ(port_.written.size(), 2u);
  EXPECT_EQ(link_.CommsSendAborted, 1);
  EXPECT_EQ(link_.StallCounter, 100);
  port_.refuse_from = -1;
  Send(5);
  EXPECT_EQ(link_.CommsSendAborted, 0);
}

TEST_F(CommsSenderTest, NothingIsSentBeforeThePcHasBeenMeasured) {
  link_.PacingReady = false;
  Send(5);
  sender_.SendClosingCommand();
  EXPECT_TRUE(port_.written.empty());
}

TEST_F(CommsSenderTest, ClosingCommandIsCodeSixThenTheShortDelayUnlessLocked) {
  link_.TLock = true;
  sender_.SendClosingCommand();
  EXPECT_TRUE(port_.written.empty());
  link_.TLock = false;
  sender_.SendClosingCommand();
  EXPECT_THAT(port_.written, ElementsAre(6, 0, 0, 0, 0, 6));
  EXPECT_EQ(loop_.iterations_run(), 6 * 2986 + 22'000);  // 10.45 x 2000 / 7; 20 x 0.55 x 2000
}

}  // namespace
}  // namespace vela
