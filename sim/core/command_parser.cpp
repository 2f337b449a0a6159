#include "sim/core/command_parser.h"

#include <algorithm>

namespace vela::sim {

namespace {

std::uint8_t ChecksumOf(std::span<const std::uint8_t> five) {
  unsigned sum = 0;
  for (std::uint8_t b : five) sum += b;
  return static_cast<std::uint8_t>(sum & 0xFF);
}

}  // namespace

std::array<std::uint8_t, kCommandFrameLength> EncodeCommandFrame(const CommandFrame& frame) {
  std::array<std::uint8_t, kCommandFrameLength> bytes = {
      frame.code,
      static_cast<std::uint8_t>(frame.address & 0xFF),
      static_cast<std::uint8_t>(frame.address >> 8),
      static_cast<std::uint8_t>(frame.value & 0xFF),
      static_cast<std::uint8_t>(frame.value >> 8),
      0};
  bytes[5] = ChecksumOf(std::span(bytes).first(5));
  return bytes;
}

std::optional<CommandFrame> DecodeCommandFrame(std::span<const std::uint8_t, 6> bytes) {
  if (ChecksumOf(bytes.first(5)) != bytes[5]) return std::nullopt;
  CommandFrame frame;
  frame.code = bytes[0];
  frame.address = static_cast<std::uint16_t>(bytes[1] | (bytes[2] << 8));
  frame.value = static_cast<std::uint16_t>(bytes[3] | (bytes[4] << 8));
  return frame;
}

std::vector<CommandFrame> CommandParser::Feed(std::span<const std::uint8_t> bytes) {
  std::vector<CommandFrame> frames;
  for (std::uint8_t b : bytes) {
    window_[count_++] = b;
    if (count_ < kCommandFrameLength) continue;
    if (auto frame = DecodeCommandFrame(std::span<const std::uint8_t, 6>(window_))) {
      frames.push_back(*frame);
      count_ = 0;
      continue;
    }
    // Out of step: drop the oldest byte and try again from the next one.
    std::shift_left(window_.begin(), window_.end(), 1);
    --count_;
    ++discarded_;
  }
  return frames;
}

}  // namespace vela::sim
