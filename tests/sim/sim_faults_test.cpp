#include <gtest/gtest.h>

#include "sim/core/base_calibration.h"
#include "sim/core/ecu_simulator.h"
#include "sim/core/live_encoder.h"
#include "sim_test_support.h"

namespace vela::sim {
namespace {

using testing::At;
using testing::RunUntil;
using testing::Send;
using testing::Split;

EcuSimulator MakeSim(const FaultOptions& faults) {
  SimOptions options;
  options.faults = faults;
  return EcuSimulator(options, EmbeddedBaseCalibration());
}

void RequestUpload(EcuSimulator& sim) { Send(sim, 1, kUploadRequestAddress, kUploadRequestValue); }

TEST(SimFaultsTest, StrayBytesGoBetweenFramesAndSpellNoMarker) {
  EcuSimulator sim = MakeSim({.garbage_every = 1, .garbage_max_bytes = 5});
  const auto bytes = RunUntil(sim, 5'000'000);
  const auto stream = Split(bytes);
  EXPECT_EQ(stream.frames.size(), 49u);  // every frame arrives whole; the 50th is on its way
  EXPECT_GE(stream.stray, 50u);
  EXPECT_LE(stream.stray, 250u);
  EXPECT_FALSE(At(bytes, 0, "START"));  // the first frame, too, has stray bytes before it
}

TEST(SimFaultsTest, SmallChunksLeaveWithPausesAndStillMakeWholeFrames) {
  EcuSimulator sim = MakeSim({.chunk_max_bytes = 3, .chunk_gap_us = 2000});
  std::size_t largest = 0;
  const auto stream = Split(RunUntil(sim, 3'000'000, 1000, &largest));
  EXPECT_LE(largest, 3u);
  EXPECT_GE(stream.frames.size(), 29u);
  EXPECT_EQ(stream.stray, 0u);
}

TEST(SimFaultsTest, SilenceSendsNothingAndLeavesUploadRequestsUnanswered) {
  EcuSimulator sim = MakeSim({.silence_after_us = 1'000'000, .silence_for_us = 2'000'000});
  EXPECT_EQ(Split(RunUntil(sim, 1'000'000)).frames.size(), 9u);
  RunUntil(sim, 1'000'001);  // a frame cut off by the silence may end here
  EXPECT_TRUE(sim.Silent());
  RequestUpload(sim);
  EXPECT_TRUE(RunUntil(sim, 2'999'999).empty());
  const auto after = Split(RunUntil(sim, 5'000'000));
  EXPECT_FALSE(sim.Silent());
  EXPECT_NEAR(static_cast<double>(after.frames.size()), 20.0, 1.0);
  EXPECT_TRUE(after.replies.empty());
}

TEST(SimFaultsTest, CutReplyEndsEarlyWithoutDoneAndTheNextReplyIsWhole) {
  EcuSimulator sim = MakeSim({.upload_cut_bytes = 600});
  RequestUpload(sim);
  auto stream = Split(RunUntil(sim, 500'000));
  ASSERT_EQ(stream.replies.size(), 1u);
  EXPECT_FALSE(stream.replies[0].has_done);
  EXPECT_EQ(stream.replies[0].body.size(), 600u);
  RequestUpload(sim);
  stream = Split(RunUntil(sim, 1'000'000));
  ASSERT_EQ(stream.replies.size(), 1u);
  EXPECT_TRUE(stream.replies[0].has_done);
  EXPECT_EQ(stream.replies[0].body, sim.Image().ToVector());
}

TEST(SimFaultsTest, DoneShiftMovesDoneAwayFromItsDistanceOf1026) {
  for (int shift : {-1, 2}) {
    EcuSimulator sim = MakeSim({.done_shift = shift, .faulty_uploads = 0});  // every reply
    for (int i = 0; i < 2; ++i) {
      RequestUpload(sim);
      const auto stream = Split(RunUntil(sim, sim.NowUs() + 400'000));
      ASSERT_EQ(stream.replies.size(), 1u);
      ASSERT_TRUE(stream.replies[0].has_done);
      EXPECT_EQ(static_cast<int>(stream.replies[0].body.size()) + 3, 1026 + shift);
    }
  }
}

TEST(SimFaultsTest, BurstArrivesAllAtOnceAsWholeFrames) {
  EcuSimulator sim = MakeSim({.burst_every_us = 1'000'000, .burst_bytes = 500});
  std::size_t largest = 0;
  EXPECT_EQ(Split(RunUntil(sim, 2'500'000, 1000, &largest)).stray, 0u);
  EXPECT_GE(largest, 500u);
  EXPECT_EQ(sim.Counters().bursts, 2u);
}

TEST(SimFaultsTest, LiveDataNeverSpellsAMarker) {
  live::Frame f{};
  const std::string_view data = "xxENDxALLxDONExxSTARTxxxxxxxxxxxxxDON";  // 37 bytes
  std::copy(data.begin(), data.end(), f.begin() + 5);
  KeepMarkersOut(f);
  std::vector<std::uint8_t> tail(f.begin() + 5, f.begin() + 42);
  tail.push_back('E');
  EXPECT_EQ(FindMarker(tail), std::string_view::npos);
  EXPECT_EQ(f[5], 'x');  // bytes that spell nothing stay as they were
}

}  // namespace
}  // namespace vela::sim
