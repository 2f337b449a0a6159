#include "sim/core/ecu_simulator.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "link/link_timing.h"
#include "sim/core/base_calibration.h"
#include "sim/core/frame_rate.h"
#include "sim_test_support.h"

namespace vela::sim {
namespace {

using testing::RunUntil;
using testing::Send;
using testing::Split;

CalibrationImage PatternImage() {
  CalibrationImage image;
  for (int p = 1; p <= kImageLength; ++p) image.SetByte(p, static_cast<std::uint8_t>(p * 7 + 3));
  return image;
}

SimOptions Options(std::uint64_t seed = 1) {
  SimOptions options;
  options.seed = seed;
  return options;
}

TEST(EcuWritesTest, SingleWriteTakesAWholeFuelCellAndOneByteElsewhere) {
  EcuSimulator sim(Options(), CalibrationImage{});
  Send(sim, kCodeWriteByte, 1, 0x1234);    // fuel map 1, first cell
  Send(sim, kCodeWriteByte, 747, 0x00C8);  // fuel map 2, last cell: the high byte 0 goes too
  Send(sim, kCodeWriteByte, 500, 0x0077);  // even position inside a fuel map: one byte
  Send(sim, kCodeWriteByte, 751, 0x1299);  // ignition cell: the low byte only
  Send(sim, kCodeWriteByte, 1023, 0x00AB);
  CalibrationImage expected;
  for (const auto& [p, v] :
       {std::pair{1, 0x34}, {2, 0x12}, {747, 0xC8}, {500, 0x77}, {751, 0x99}, {1023, 0xAB}}) {
    expected.SetByte(p, static_cast<std::uint8_t>(v));
  }
  EXPECT_EQ(sim.Image().Bytes(), expected.Bytes());
  Send(sim, kCodeWriteByte, 747 + 1, 0x55);  // the next byte is written alone
  expected.SetByte(748, 0x55);
  EXPECT_EQ(sim.Image().Bytes(), expected.Bytes());
}

TEST(EcuWritesTest, WritesOutsideTheImageAndTheRateRegisterLeaveTheImageAlone) {
  const CalibrationImage start = PatternImage();
  EcuSimulator sim(Options(), start);
  Send(sim, kCodeWriteByte, 0, 9);
  Send(sim, kCodeWriteByte, 1024, 9);
  Send(sim, kCodeWriteByte, kRateAddress, 8);
  Send(sim, 7, 309, 1);
  EXPECT_EQ(sim.Image().Bytes(), start.Bytes());
  EXPECT_EQ(sim.Counters().ignored, 3u);
  EXPECT_EQ(sim.RateValue(), 8);
}

TEST(EcuUploadTest, EveryRequestCodeIsAnsweredWithAllTheImageAndDone) {
  for (std::uint8_t k = 1; k <= 5; ++k) {
    EcuSimulator sim(Options(), PatternImage());
    sim.Advance(50'000);
    Send(sim, kCodeWriteByte, 42, 0x99);  // a write before the request shows in the reply
    Send(sim, k, kUploadRequestAddress, kUploadRequestValue);
    const auto stream = Split(RunUntil(sim, 400'000));
    ASSERT_EQ(stream.replies.size(), 1u) << "code " << int{k};
    EXPECT_TRUE(stream.replies[0].has_done);
    CalibrationImage expected = PatternImage();
    expected.SetByte(42, 0x99);
    EXPECT_EQ(stream.replies[0].body, expected.ToVector());
    EXPECT_EQ(stream.stray, 0u);
  }
}

TEST(EcuUploadTest, AByteWriteOfAddress770IsAWriteNotARequest) {
  EcuSimulator sim(Options(), CalibrationImage{});
  Send(sim, kCodeWriteByte, kUploadRequestAddress, 5);
  EXPECT_EQ(sim.Image().Byte(770), 5);
  EXPECT_TRUE(Split(RunUntil(sim, 300'000)).replies.empty());
}

// Read from the program's own list: each entry's value (sent as Int(C) when one frame goes out
// per tick) selects the rate the entry names.
TEST(EcuRateTest, EachOfTheProgramsRateValuesSelectsItsOwnRate) {
  for (const LiveFrameRate& rate : kLiveFrameRates) {
    const auto value = static_cast<std::uint16_t>(std::floor(rate.constant));
    EXPECT_EQ(FramesPerSecondForValue(value), std::stoi(std::string(rate.text))) << rate.text;
  }
  // Between two constants the nearer wins; exactly halfway, the faster.
  EXPECT_EQ(FramesPerSecondForValue(0), 60);
  EXPECT_EQ(FramesPerSecondForValue(4), 60);
  EXPECT_EQ(FramesPerSecondForValue(55), 6);
  EXPECT_EQ(FramesPerSecondForValue(56), 4);
  EXPECT_EQ(FramesPerSecondForValue(65535), 4);
  for (int v = 1; v < 200; ++v)
    EXPECT_LE(FramesPerSecondForValue(v), FramesPerSecondForValue(v - 1));
}

TEST(EcuLiveFrameTest, StreamsWellFormedFramesAtTheRateSetOverSimulatedTime) {
  for (const auto& [value, fps] : {std::pair{3, 60}, {8, 30}, {27, 10}, {66, 4}}) {
    EcuSimulator sim(Options(), EmbeddedBaseCalibration());
    Send(sim, kCodeWriteByte, kRateAddress, static_cast<std::uint16_t>(value));
    const auto stream = Split(RunUntil(sim, 10'000'000));
    EXPECT_NEAR(static_cast<double>(stream.frames.size()), fps * 10.0, 1.0) << "value " << value;
    EXPECT_EQ(stream.stray, 0u);
    for (const live::Frame& f : stream.frames) {
      EXPECT_EQ(live::At(f, live::kFramesPerSecond), fps);
      EXPECT_EQ(live::At(f, live::kFirmwareVersion), 3);
      EXPECT_GT(live::U24(f, live::kEnginePeriod), 0u);
    }
  }
}

TEST(EcuLiveFrameTest, StartsAtTenFramesASecondAndBytesLeaveAtLineSpeed) {
  EcuSimulator sim(Options(), EmbeddedBaseCalibration());
  EXPECT_EQ(sim.FramesPerSecond(), 10);
  EXPECT_TRUE(sim.Advance(99'999).empty());
  // The first frame falls due at 100 ms; one millisecond later 12 of its bytes are out.
  EXPECT_EQ(sim.Advance(101'000).size(), 12u);
  EXPECT_EQ(sim.Advance(110'000).size(), 33u);
}

TEST(EcuLiveFrameTest, FuelAndIgnitionWrittenDuringRunningShowInTheNextFrames) {
  CalibrationImage image = EmbeddedBaseCalibration();
  for (int p = 979; p <= 986; ++p) image.SetByte(p, 0);   // no warm-up enrichment
  for (int p = 999; p <= 1010; ++p) image.SetByte(p, 0);  // no opening time added
  EcuSimulator sim(Options(), image);
  RunUntil(sim, 2'000'000);
  for (int p = 1; p <= 374; p += 2) Send(sim, kCodeWritePair, static_cast<std::uint16_t>(p), 5000);
  for (int p = 751; p <= 816; ++p)
    Send(sim, kCodeWriteByte, static_cast<std::uint16_t>(p), 2 * (99 - 20));
  const auto stream = Split(RunUntil(sim, 4'000'000));
  ASSERT_FALSE(stream.frames.empty());
  for (const live::Frame& f : stream.frames) {
    EXPECT_DOUBLE_EQ(live::InjectionMs(f), 5.0);
    EXPECT_DOUBLE_EQ(live::AdvanceDegrees(f), 20.0);
  }
}

TEST(EcuDeterminismTest, SameSeedGivesTheSameBytesHoweverTheCallsAreSpaced) {
  auto run = [](std::uint64_t seed, std::int64_t step_us) {
    EcuSimulator sim(Options(seed), EmbeddedBaseCalibration());
    Send(sim, kCodeWriteByte, kRateAddress, 3);
    return RunUntil(sim, 3'000'000, step_us);
  };
  const auto reference = run(5, 1000);
  EXPECT_EQ(run(5, 137), reference);
  EXPECT_EQ(run(5, 3'000'000), reference);
  EXPECT_NE(run(6, 1000), reference);
}

}  // namespace
}  // namespace vela::sim
