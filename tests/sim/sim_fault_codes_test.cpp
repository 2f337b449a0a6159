// The simulated ECU's fault codes: what it holds and the rev limiter's code. Injected codes
// reaching the live frame and the answer, and an ECU that leaves the request unanswered, are read
// through the program's own window tests.
#include <gtest/gtest.h>

#include "link/faults/fault_reply.h"
#include "sim/core/base_calibration.h"
#include "sim/core/fault_memory.h"
#include "sim_test_support.h"

namespace vela::sim {
namespace {

using testing::RunUntil;

TEST(SimFaultMemoryTest, HoldsEachCodeOnceNewestLastAndAnswersWithTheFourNewest) {
  FaultMemory memory;
  for (int code : {8, 66, 8, 0, 256, 3, 139, 21}) memory.Record(code);
  EXPECT_EQ(memory.Held(), 5);
  EXPECT_EQ(memory.Newest(), 21);
  EXPECT_EQ(memory.Reply(), (fault_reply::Reply{5, {21, 139, 3, 66}}));
  EXPECT_EQ(FaultMemory().Reply(), (fault_reply::Reply{0, {0, 0, 0, 0}}));
}

TEST(SimFaultCodesTest, TheRevLimiterRecordsItsCode) {
  CalibrationImage image = EmbeddedBaseCalibration();
  image.SetByte(949, 0xFF);  // a rev limit period of 65 ms: about 920 RPM, under the idle speed
  image.SetByte(950, 0xFF);
  EcuSimulator sim(SimOptions{}, image);
  RunUntil(sim, 3'000'000);
  EXPECT_EQ(sim.Faults().Newest(), kRevLimiterFault);
}

}  // namespace
}  // namespace vela::sim
