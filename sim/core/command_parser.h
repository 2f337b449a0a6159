// The ECU's side of the command frame: six bytes (code, address low, address high, value low,
// value high, checksum = sum of the first five modulo 256), with no start marker. The parser
// takes bytes as they come, in chunks of any size, and finds its way back into step after a
// damaged frame by sliding one byte at a time until a checksum holds again.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace vela::sim {

inline constexpr int kCommandFrameLength = 6;

struct CommandFrame {
  std::uint8_t code = 0;
  std::uint16_t address = 0;
  std::uint16_t value = 0;

  bool operator==(const CommandFrame&) const = default;
};

// The six bytes of a frame, as the program sends them.
std::array<std::uint8_t, kCommandFrameLength> EncodeCommandFrame(const CommandFrame& frame);

// The frame held in exactly six bytes, or nullopt when the checksum does not hold.
std::optional<CommandFrame> DecodeCommandFrame(std::span<const std::uint8_t, 6> bytes);

class CommandParser {
 public:
  // Appends `bytes` and returns every frame completed by them, oldest first.
  std::vector<CommandFrame> Feed(std::span<const std::uint8_t> bytes);

  // Bytes thrown away while looking for a frame whose checksum holds.
  std::uint64_t DiscardedBytes() const { return discarded_; }
  // Bytes held back as the start of a frame not yet complete (0 to 5).
  int PendingBytes() const { return count_; }
  void Reset() { count_ = 0; }

 private:
  std::array<std::uint8_t, kCommandFrameLength> window_{};
  int count_ = 0;
  std::uint64_t discarded_ = 0;
};

}  // namespace vela::sim
