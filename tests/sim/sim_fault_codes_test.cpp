// The simulated ECU's fault codes: what it holds, the rev limiter's code, and silence. Injected
// codes reaching the live frame and the answer are read through the program's own window tests.
#include <gtest/gtest.h>

#include <algorithm>

#include "link/faults/fault_reply.h"
#include "sim/core/base_calibration.h"
#include "sim/core/fault_memory.h"
#include "sim_test_support.h"

namespace vela::sim {
namespace {

using testing::RunUntil;
using testing::Send;
using testing::Split;

// The fault replies in the ECU's output.
std::vector<fault_reply::Reply> FaultReplies(const std::vector<std::uint8_t>& out) {
  const std::string text(out.begin(), out.end());
  std::vector<fault_reply::Reply> replies;
  for (std::size_t at = text.find("CODE"); at != std::string::npos;
       at = text.find("CODE", at + 1)) {
    if (auto reply = fault_reply::Decode(std::string_view(text).substr(at))) {
      replies.push_back(*reply);
    }
  }
  return replies;
}

void AskForCodes(EcuSimulator& sim) {
  Send(sim, fault_reply::kRequestCommand, fault_reply::kRequestAddress, fault_reply::kRequestValue);
}

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

TEST(SimFaultCodesTest, ASilentEcuLeavesFaultRequestsUnansweredButKeepsStreaming) {
  SimOptions options;
  options.fault_codes = {{8, 0}};
  options.answer_fault_requests = false;
  EcuSimulator sim(options, EmbeddedBaseCalibration());
  RunUntil(sim, 500'000);
  AskForCodes(sim);
  const auto out = RunUntil(sim, 1'500'000);
  EXPECT_TRUE(FaultReplies(out).empty());
  EXPECT_GE(Split(out).frames.size(), 9u);
  EXPECT_EQ(sim.Counters().fault_requests, 1u);
}

}  // namespace
}  // namespace vela::sim
