// The simulated ECU's command parser. The frame layout it reads is the program's own (pinned by
// the link's frame tests); that it reads the program's frames the end-to-end walks show.
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
