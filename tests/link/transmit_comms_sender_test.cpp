// The command frame's bytes, the pacing table and the sender that paces the bytes on the line.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "link/comms_sender.h"
#include "support/platform_fakes.h"

namespace vela {
namespace {

using ::testing::AllOf;
using ::testing::DoubleNear;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::SizeIs;

TEST(CommandFrameTest, SplitsAddressReducesValueAndSumsModulo256) {
  EXPECT_THAT(BuildFrameBytes({6, 0, 0}), ElementsAre(6, 0, 0, 0, 0, 6));
  EXPECT_THAT(BuildFrameBytes({4, 300, 1000}), ElementsAre(4, 44, 1, 232, 3, 28));
  EXPECT_THAT(BuildFrameBytes({200, 300, 0x10FF}), ElementsAre(200, 44, 1, 255, 16, 4));
  EXPECT_THAT(BuildFrameBytes({4, 0, 65'535}), ElementsAre(4, 0, 0, 255, 255, 2));
  EXPECT_THAT(BuildFrameBytes({4, 0, 65'536}), ElementsAre(4, 0, 0, 0, 0, 4));
  // 16,777,217 loses 1 (the quotient) and is then a multiple of 65,536.
  EXPECT_THAT(BuildFrameBytes({4, 0, 16'777'217}), ElementsAre(4, 0, 0, 0, 0, 4));
  // 3 x 16,777,216 + 5 loses 3, not 3 x 16,777,216: 2 remains after the modulo.
  EXPECT_THAT(BuildFrameBytes({4, 0, 50'331'653}), ElementsAre(4, 0, 0, 2, 0, 6));
  EXPECT_THAT(BuildFrameBytes({1, -1, -2}), ElementsAre(1, 255, 255, 254, 255, 252));
}

TEST(PacingTest, RowsHaveExclusiveBounds) {
  EXPECT_EQ(PacingRowFor(2999.9f).byte_delay, 3.6f);
  EXPECT_EQ(PacingRowFor(3000.0f).byte_delay, 4.0f);
  EXPECT_EQ(PacingRowFor(325'000.0f).byte_delay, 14.0f);
  EXPECT_EQ(PacingRowFor(325'000.0f).steps, 5);
  EXPECT_EQ(PacingRowFor(379'999.0f).byte_delay, 35.0f);
  EXPECT_EQ(PacingRowFor(380'000.0f).byte_delay, 40.0f);
}

// Within a tenth of a microsecond: one delay-loop iteration at this PC's speed.
constexpr double kTolerance = 0.0001;
constexpr std::int32_t kCountsPerMs = 10'000;

// The line as an analyser on it sees it: when each byte left, and the quiet after it. Time is
// the PC's measured busy-wait time (iterations over `CountsPerMS`), the only clock the pacing has.
class CommsSenderTest : public ::testing::Test {
 protected:
  CommsSenderTest() {
    port_.open = true;
    link_.CountsPerMS = kCountsPerMs;
    link_.PacingReady = true;
    link_.EngineRate = 3000.0f;  // byte delay 4.0 ms, 1 step
    port_.on_write = [this] { left_at_.push_back(Now()); };
  }
  double Now() const { return static_cast<double>(loop_.iterations_run()) / link_.CountsPerMS; }

  SendResult Send(const CommandFrame& frame) {
    left_at_.clear();
    sent_at_ = Now();
    const SendResult result = sender_.Send(frame);
    done_at_ = Now();
    return result;
  }
  // The quiet after each byte written, up to the end of the call.
  std::vector<double> Gaps() const {
    std::vector<double> gaps;
    for (std::size_t i = 0; i < left_at_.size(); ++i) {
      gaps.push_back((i + 1 < left_at_.size() ? left_at_[i + 1] : done_at_) - left_at_[i]);
    }
    return gaps;
  }
  double QuietBeforeFirstByte() const { return left_at_.front() - sent_at_; }

  testing::FakeClock clock_;
  testing::ScriptedPort port_;
  LinkState link_;
  DelayLoop loop_{clock_, link_};
  CommsSender sender_{port_, clock_, link_, loop_};
  std::vector<double> left_at_;
  double sent_at_ = 0.0;
  double done_at_ = 0.0;
};

// Command 5 at a standing engine: 4.65 ms of frame time spread over 6 + 1 steps.
TEST_F(CommsSenderTest, EveryByteIsFollowedByItsShareOfTheFrameTime) {
  const SendResult result = Send({5, 300, 1000});
  EXPECT_EQ(result.outcome, SendOutcome::kSent);
  EXPECT_FLOAT_EQ(result.byte_delay_ms, 4.0f);
  EXPECT_EQ(result.delay_steps, 1);
  EXPECT_THAT(port_.written, ElementsAre(5, 44, 1, 232, 3, 29));
  EXPECT_DOUBLE_EQ(QuietBeforeFirstByte(), 0.0);
  EXPECT_THAT(Gaps(), AllOf(SizeIs(6), Each(DoubleNear(4.65 / 7, kTolerance))));
  Send({2, 1, 0});  // a pair write takes 8.9 ms, the closing command always 10.45
  EXPECT_THAT(Gaps(), Each(DoubleNear(8.9 / 7, kTolerance)));
  Send({6, 0, 0});
  EXPECT_THAT(Gaps(), Each(DoubleNear(10.45 / 7, kTolerance)));
}

TEST_F(CommsSenderTest, CommsMultiplyRepeatsTheGapAndZeroStillGivesOne) {
  link_.CommsRepeat = 2;
  Send({5, 300, 1000});
  EXPECT_THAT(Gaps(), Each(DoubleNear(2 * 4.65 / 7, kTolerance)));
  link_.CommsRepeat = 0;  // still one gap
  Send({5, 300, 1000});
  EXPECT_THAT(Gaps(), Each(DoubleNear(4.65 / 7, kTolerance)));
}

// The pre-frame wait: (CommsPreWaitCount + 10) quarter frame times of quiet, then the frame
// time spread over 6 + 1.5 x steps.
TEST_F(CommsSenderTest, PreWaitGivesQuietBeforeTheFrameAndShortensTheGaps) {
  link_.CommsPreWaitCount = 2;
  EXPECT_TRUE(Send({.command = 5, .address = 300, .value = 1000, .pre_wait = true}).sent());
  EXPECT_NEAR(QuietBeforeFirstByte(), 12 * 4.65 / 4, kTolerance);
  EXPECT_THAT(Gaps(), Each(DoubleNear(4.65 / 7.5, kTolerance)));
  link_.CommsPreWaitCount = 0;  // the live-rate command's quiet is longer than a live frame
  Send({.command = 4, .address = 864, .value = 27, .pre_wait = true});
  EXPECT_GT(QuietBeforeFirstByte(), 10.5);
}

TEST_F(CommsSenderTest, InfiniteRateCountsAsZeroAndSlowSendLengthensTheDelay) {
  link_.EngineRate = std::numeric_limits<float>::infinity();
  link_.SlowSend = true;
  const SendResult result = Send({5, 300, 1000});
  EXPECT_EQ(link_.EngineRate, 0.0f);
  EXPECT_FLOAT_EQ(result.byte_delay_ms, 6.32f);  // 3.6 x 1.2 + 2
  EXPECT_THAT(Gaps(), Each(DoubleNear((1.05 * 6.32 + 0.45) / 7, kTolerance)));
}

TEST_F(CommsSenderTest, DelaysOffShrinkTheGapsToTheFloorUnlessForced) {
  link_.CommsDelayEnabled = false;
  Send({6, 0, 0});
  EXPECT_THAT(Gaps(),
              Each(DoubleNear(DelayLoop::kMinIterations / double{kCountsPerMs}, kTolerance)));
  link_.ForcedDelay = true;
  Send({5, 300, 1000});
  EXPECT_THAT(Gaps(), Each(DoubleNear(4.65 / 7, kTolerance)));
}

TEST_F(CommsSenderTest, ClosedPortSuspendedLinkOrUnmeasuredPcSendsNothing) {
  port_.open = false;
  EXPECT_EQ(Send({.command = 5, .pre_wait = true}).outcome, SendOutcome::kNotSent);
  EXPECT_EQ(clock_.reads, 0);
  port_.open = true;
  link_.CommsSuspended = true;
  EXPECT_EQ(Send({.command = 5, .pre_wait = true}).outcome, SendOutcome::kNotSent);
  EXPECT_EQ(loop_.iterations_run(), 0);  // not even the pre-frame wait
  link_.CommsSuspended = false;
  link_.PacingReady = false;
  EXPECT_EQ(Send({5, 300, 1000}).outcome, SendOutcome::kNotSent);
  sender_.SendClosingCommand();
  EXPECT_TRUE(port_.written.empty());
}

TEST_F(CommsSenderTest, AWriteOver350MsAbortsTheRestOfTheFrameAndMarksTheStall) {
  link_.CommsSendAborted = 1;
  port_.on_write = [this] { clock_.now += kWriteTimeoutMs; };  // exactly 350 ms is not too long
  EXPECT_TRUE(Send({5, 300, 1000}).sent());
  EXPECT_EQ(link_.CommsSendAborted, 0);
  port_.written.clear();
  port_.on_write = [this] {
    left_at_.push_back(Now());
    if (port_.written.size() == 3) clock_.now += kWriteTimeoutMs + 1;
  };
  EXPECT_EQ(Send({5, 300, 1000}).outcome, SendOutcome::kAborted);
  EXPECT_EQ(port_.written.size(), 3u);
  EXPECT_THAT(Gaps(),
              ElementsAre(DoubleNear(4.65 / 7, kTolerance), DoubleNear(4.65 / 7, kTolerance), 0.0));
  EXPECT_EQ(link_.CommsSendAborted, 1);
  EXPECT_EQ(link_.StallCounter, 100);
  EXPECT_EQ(clock_.events_run, 1);
}

// A port that does not take a byte (the write reports failure after its own timeout) stalls the
// link just as a slow write does.
TEST_F(CommsSenderTest, APortThatRefusesAByteAbortsTheFrameAndMarksTheStall) {
  port_.refuse_from = 2;
  EXPECT_EQ(Send({5, 300, 1000}).outcome, SendOutcome::kAborted);
  EXPECT_EQ(port_.written.size(), 2u);
  EXPECT_EQ(link_.CommsSendAborted, 1);
  EXPECT_EQ(link_.StallCounter, 100);
  port_.refuse_from = -1;
  EXPECT_TRUE(Send({5, 300, 1000}).sent());
  EXPECT_EQ(link_.CommsSendAborted, 0);
}

// Shutdown: command 6, then DelayMs(20), which spins 0.55 of the time (its clock readings take
// the rest), so that the ECU takes the command before the port closes.
TEST_F(CommsSenderTest, ClosingCommandIsCodeSixThenAQuietSpellUnlessLocked) {
  link_.TLock = true;
  sender_.SendClosingCommand();
  EXPECT_TRUE(port_.written.empty());
  link_.TLock = false;
  sender_.SendClosingCommand();
  EXPECT_THAT(port_.written, ElementsAre(6, 0, 0, 0, 0, 6));
  EXPECT_NEAR(Now() - left_at_.back(), 10.45 / 7 + 0.55 * kClosingDelayMs, kTolerance);
}

}  // namespace
}  // namespace vela
