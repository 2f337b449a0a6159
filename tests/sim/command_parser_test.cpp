#include "sim/core/command_parser.h"

#include <gtest/gtest.h>

#include <vector>

#include "sim/core/random.h"

namespace vela::sim {
namespace {

std::vector<std::uint8_t> Concat(const std::vector<CommandFrame>& frames) {
  std::vector<std::uint8_t> bytes;
  for (const CommandFrame& f : frames) {
    const auto b = EncodeCommandFrame(f);
    bytes.insert(bytes.end(), b.begin(), b.end());
  }
  return bytes;
}

const std::vector<CommandFrame> kFrames = {{4, 864, 8},     {1, 770, 1284}, {2, 1, 0x1234},
                                           {4, 1023, 0xFF}, {6, 1025, 0},   {7, 309, 65535}};

TEST(CommandFrameTest, LaysOutAddressAndValueLowByteFirstWithByteSumChecksum) {
  EXPECT_EQ(EncodeCommandFrame({1, 770, 1284}), (std::array<std::uint8_t, 6>{1, 2, 3, 4, 5, 15}));
  EXPECT_EQ(EncodeCommandFrame({4, 300, 0}), (std::array<std::uint8_t, 6>{4, 44, 1, 0, 0, 49}));
  // 0xFF + 0xFF + 0x03 + 0xFF + 0xFF = 1023: the checksum keeps the low eight bits.
  EXPECT_EQ(EncodeCommandFrame({255, 1023, 65535})[5], 1023 % 256);
}

TEST(CommandParserTest, GetsBackInStepAfterStrayBytesInRandomChunks) {
  std::vector<std::uint8_t> stream = {0xFF, 0x00, 0x13};
  const auto good = Concat(kFrames);
  stream.insert(stream.end(), good.begin(), good.end());
  Rng rng(7);
  for (int trial = 0; trial < 50; ++trial) {
    CommandParser parser;
    std::vector<CommandFrame> got;
    for (std::size_t i = 0; i < stream.size();) {
      const auto n = std::min<std::size_t>(rng.Int(1, 9), stream.size() - i);
      const auto frames = parser.Feed(std::span(stream).subspan(i, n));
      got.insert(got.end(), frames.begin(), frames.end());
      i += n;
    }
    EXPECT_EQ(got, kFrames);
    EXPECT_EQ(parser.DiscardedBytes(), 3u);
  }
}

TEST(CommandParserTest, DropsAFrameWithABadChecksumAndKeepsTheNext) {
  std::vector<std::uint8_t> stream = Concat({{4, 100, 1}, {4, 101, 2}, {4, 102, 3}});
  stream[6 + 5] ^= 0x40;  // damage the second frame's checksum
  CommandParser parser;
  const auto frames = parser.Feed(stream);
  EXPECT_EQ(frames, (std::vector<CommandFrame>{{4, 100, 1}, {4, 102, 3}}));
  EXPECT_EQ(parser.DiscardedBytes(), 6u);
}

}  // namespace
}  // namespace vela::sim
