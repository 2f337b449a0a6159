// The receive timer and the dispatcher: the frame search, the buffer limits and the guards.
#include <gtest/gtest.h>

#include "support/receive_rig.h"

namespace vela::testing {
namespace {

using Periods = std::vector<std::uint32_t>;

TEST(FrameSearch, ThirtySixDataBytesAreADamagedFrameDroppedOnlyBeyond20500) {
  ReceiveRig rig;
  rig.Buffer() = Frames(1, 7);
  rig.Dispatch();
  const std::string damaged = "START" + std::string(36, '\1') + "END";
  rig.Buffer() = damaged + std::string(20'500 - damaged.size(), 'y');
  rig.Dispatch();
  EXPECT_EQ(rig.periods, Periods{7});
  EXPECT_EQ(rig.refreshes, 2);  // again on the previous frame
  EXPECT_EQ(rig.live.engine_period_us, 7u);
  EXPECT_EQ(rig.Buffer().size(), 20'500u);
  rig.Buffer() += "y";
  rig.Dispatch();
  EXPECT_EQ(rig.Buffer(), "");
}

TEST(FrameSearch, TrimsABacklogBeyond147600CharactersToTheLastFrameStart) {
  ReceiveRig rig;
  const std::string tail = std::string(38, 'b') + "START" + std::string(10, 'c');
  rig.Buffer() = Frames(1) + std::string(147'600 - tail.size(), 'a') + tail;
  rig.Dispatch();
  EXPECT_EQ(rig.Buffer().size(), 147'600u);
  rig.Buffer() = Frames(1) + std::string(147'601 - tail.size(), 'a') + tail;
  rig.Dispatch();
  EXPECT_EQ(rig.Buffer(), tail);
  // The first frame start of the last 61 characters counts; the last 71 characters stay.
  const std::string starts = "bbbbbSTART" + std::string(30, 'c') + "START" + std::string(15, 'd');
  const std::string backlog = std::string(147'601 - starts.size(), 'a') + starts;
  rig.Buffer() = Frames(1) + backlog;
  rig.Dispatch();
  EXPECT_EQ(rig.Buffer(), backlog.substr(backlog.size() - 71));
}

TEST(FrameSearch, AFrameCounterLimitOfTwoTakesTheFrameOnTheSecondDispatch) {
  ReceiveRig rig;
  rig.dispatcher.SetFrameCounterLimit(2);
  rig.Buffer() = Frames(1);
  rig.Dispatch();
  EXPECT_TRUE(rig.periods.empty());
  EXPECT_EQ(rig.refreshes, 1);
  rig.Dispatch();
  EXPECT_EQ(rig.periods, Periods{1});
}

TEST(Dispatcher, IgnoresACallMadeWhileItRunsAndWithNothingPendingEmptiesTheBuffer) {
  ReceiveRig rig;
  rig.on_refreshed = [&] { rig.Dispatch(); };  // a handler that lets events run
  rig.Buffer() = Frames(2);
  rig.Dispatch();
  EXPECT_EQ(rig.periods, Periods{1});
  rig.on_refreshed = nullptr;
  rig.state.RxPending = 0;
  rig.Dispatch();
  EXPECT_EQ(rig.Buffer(), "");
  EXPECT_EQ(rig.display.receive_indicator, (LabelLook{"0", kIndicatorGrey}));
}

TEST(TimerCommProcess, RunsOneToSixDispatchesByDispatchPerTickWhileDataArrives) {
  const std::pair<float, std::size_t> cases[] = {{1.0f, 1}, {2.49f, 2}, {2.5f, 3}, {9.0f, 6}};
  for (auto [per_tick, dispatches] : cases) {
    ReceiveRig rig;
    rig.state.DispatchPerTick = per_tick;
    rig.Buffer() = Frames(8);
    rig.dispatcher.TimerCommProcess();
    EXPECT_EQ(rig.periods.size(), dispatches) << per_tick;
  }
  ReceiveRig rig;
  rig.state.RxThreshold = rig.state.RxPending;
  rig.Buffer() = Frames(1);
  rig.dispatcher.TimerCommProcess();
  EXPECT_TRUE(rig.periods.empty());
  EXPECT_EQ(rig.display.tick_count, 0);
}

// A port whose device is gone: the tick tries at once (letting events run, the indicator pink,
// nothing taken), then waits longer after each failure, up to a second between tries. That the
// port opens once it is back, and a later loss is tried at once, the end-to-end link tests walk.
TEST(TimerCommProcess, TriesAPortThatWillNotOpenLessAndLessOften) {
  ReceiveRig rig;
  rig.dispatcher.SetPortNumber(4);
  rig.port.open = rig.port.opens_succeed = false;
  rig.Buffer() = Frames(1);
  std::vector<std::int64_t> tries;
  for (rig.clock.now = 0; rig.clock.now <= 5000; rig.clock.now += 8) {
    const std::size_t before = rig.port.opened.size();
    rig.dispatcher.TimerCommProcess();
    if (rig.port.opened.size() > before) tries.push_back(rig.clock.now);
  }
  ASSERT_GE(tries.size(), 6u);
  EXPECT_EQ(tries[0], 0);
  EXPECT_EQ(rig.port.opened[0], 4);
  EXPECT_EQ(rig.clock.events_run, static_cast<int>(tries.size()));
  EXPECT_EQ(rig.display.receive_indicator.colour, kIndicatorPink);
  EXPECT_TRUE(rig.periods.empty());
  for (std::size_t i = 1; i < tries.size(); ++i) {
    const std::int64_t wait = std::min<std::int64_t>(125 << (i - 1), 1000);
    EXPECT_GE(tries[i] - tries[i - 1], wait) << i;
    EXPECT_LT(tries[i] - tries[i - 1], wait + 8) << i;
  }
  EXPECT_LE(tries.size(), 9u);  // instead of 626 tries, one a tick
  EXPECT_GT(rig.dispatcher.MsUntilReopen(), 0);
}

// The ticks rest between arrivals: once the dispatcher waits for data, a further tick would take
// nothing and leave the buffer as it is; while a whole or damaged frame or a closed port is
// there, it never rests.
TEST(TimerCommProcess, RestsOnlyWhenAFurtherTickWouldChangeNothing) {
  ReceiveRig rig;
  const std::string third = Frames(1, 3);
  rig.Receive(Frames(2) + third.substr(0, 20));
  int ticks = 0;
  while (!rig.dispatcher.WaitsForData() && ticks < 10) {
    rig.dispatcher.TimerCommProcess();
    ++ticks;
  }
  EXPECT_EQ(ticks, 2);  // one frame a tick
  EXPECT_EQ(rig.periods, (Periods{1, 2}));
  const std::string waiting = rig.Buffer();
  const int refreshes = rig.refreshes;
  rig.dispatcher.TimerCommProcess();
  EXPECT_EQ(rig.Buffer(), waiting);
  EXPECT_EQ(rig.refreshes, refreshes);
  rig.Receive(third.substr(20));
  EXPECT_FALSE(rig.dispatcher.WaitsForData());
  rig.dispatcher.TimerCommProcess();
  EXPECT_EQ(rig.periods, (Periods{1, 2, 3}));
  EXPECT_TRUE(rig.dispatcher.WaitsForData());

  rig.Buffer() = "START" + std::string(36, '\1') + "END";  // damaged: handlers run every tick
  EXPECT_FALSE(rig.dispatcher.WaitsForData());
  rig.Buffer().clear();
  rig.port.open = false;  // the tick reopens it
  EXPECT_FALSE(rig.dispatcher.WaitsForData());
  rig.port.open = true;
  rig.state.RxPending = 0;  // not connected: a tick does nothing
  rig.Buffer() = Frames(1);
  EXPECT_TRUE(rig.dispatcher.WaitsForData());
}

}  // namespace
}  // namespace vela::testing
