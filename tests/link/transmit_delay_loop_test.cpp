#include <gtest/gtest.h>

#include "link/delay_loop.h"
#include "support/platform_fakes.h"

namespace vela {
namespace {

class DelayLoopTest : public ::testing::Test {
 protected:
  testing::FakeClock clock_;
  LinkState link_;
  DelayLoop loop_{clock_, link_};
};

TEST_F(DelayLoopTest, MeasurementDividesIterationsByElapsedTicks) {
  clock_.script = {5000, 6600};
  EXPECT_EQ(loop_.MeasureCountsPerMS(false, false), 1600);
  EXPECT_EQ(link_.CountsPerMS, 1253);
  EXPECT_EQ(clock_.events_run, 0);

  clock_.script = {0, 400};  // quick: a quarter of the iterations
  loop_.MeasureCountsPerMS(true, true);
  EXPECT_EQ(link_.CountsPerMS, 1253);
  EXPECT_EQ(clock_.events_run, 1);

  clock_.script = {70, 71};
  loop_.MeasureCountsPerMS(false, true);
  const std::int32_t one_ms = link_.CountsPerMS;
  clock_.script = {70, 70};  // no tick passed: counts as 1 ms
  EXPECT_EQ(loop_.MeasureCountsPerMS(false, true), 0);
  EXPECT_EQ(link_.CountsPerMS, one_ms);
}

// What DelayMs spins (0.55 of the asked time, times the repeat, never below the floor) is seen as
// the gaps on the wire in the comms sender's tests.
TEST_F(DelayLoopTest, DelayGivesUpAfterTenTimesTheAskedTime) {
  link_.CountsPerMS = 2006;
  link_.CommsRepeat = 2;
  clock_.step_per_read = 1;
  loop_.DelayMs(10);
  EXPECT_EQ(loop_.iterations_run(), 101);  // the 101st reading is past 100 ms
}

}  // namespace
}  // namespace vela
