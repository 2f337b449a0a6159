#include "invariant.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace vela::fuzz {

void Fail(std::string_view invariant) {
  std::fprintf(stderr, "invariant broken: %.*s\n", static_cast<int>(invariant.size()),
               invariant.data());
  std::abort();
}

std::vector<FrameBytes> CommandFramesOf(std::span<const std::uint8_t> written) {
  const std::size_t frame_length = std::tuple_size_v<FrameBytes>;
  Require(written.size() % frame_length == 0, "the port took whole six-byte frames only");
  std::vector<FrameBytes> frames(written.size() / frame_length);
  for (std::size_t f = 0; f < frames.size(); ++f) {
    const auto bytes = written.subspan(f * frame_length, frame_length);
    std::copy(bytes.begin(), bytes.end(), frames[f].begin());
    const int sum = bytes[0] + bytes[1] + bytes[2] + bytes[3] + bytes[4];
    Require(bytes[5] == sum % 256, "every frame's checksum is its first five bytes modulo 256");
  }
  return frames;
}

std::vector<std::uint8_t> LineBytesOf(std::span<const FrameBytes> frames) {
  std::vector<std::uint8_t> bytes;
  for (const FrameBytes& frame : frames) bytes.insert(bytes.end(), frame.begin(), frame.end());
  return bytes;
}

}  // namespace vela::fuzz
