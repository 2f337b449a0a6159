// The fault code request and its reply. The program asks with one command frame; the ECU answers
// with 16 printable characters: "CODE", the number of codes it holds, its four newest codes
// (newest first, 0 where it holds fewer) and a check, each number as two upper-case hexadecimal
// digits. Hexadecimal digits can never spell a marker of the link ("START", "END", "ALL",
// "DONE"), so a reply is never taken for a live frame or a calibration reply, and the frame
// search passes over it like stray bytes. Both the program and the simulated ECU use this
// header.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vela::fault_reply {

// The request: command 9 at address 1040, value 0.
inline constexpr int kRequestCommand = 9;
inline constexpr int kRequestAddress = 1040;
inline constexpr int kRequestValue = 0;

inline constexpr std::string_view kMarker = "CODE";
inline constexpr int kCodesPerReply = 4;
// "CODE", held (2), four codes (8), check (2).
inline constexpr std::size_t kLength = 4 + 2 + 2 * kCodesPerReply + 2;

struct Reply {
  int held = 0;                             // codes the ECU holds (0 to 255)
  std::array<int, kCodesPerReply> codes{};  // the newest first; 0 where the ECU holds fewer
  bool operator==(const Reply&) const = default;
};

namespace detail {

inline constexpr std::string_view kHexDigits = "0123456789ABCDEF";

inline void AppendHex(std::string& out, int byte) {
  out += kHexDigits[static_cast<std::size_t>(byte >> 4)];
  out += kHexDigits[static_cast<std::size_t>(byte & 0x0F)];
}

inline std::optional<int> HexByte(std::string_view text, std::size_t at) {
  int value = 0;
  for (std::size_t i = at; i < at + 2; ++i) {
    const std::size_t digit = kHexDigits.find(text[i]);
    if (digit == std::string_view::npos) return std::nullopt;
    value = value * 16 + static_cast<int>(digit);
  }
  return value;
}

inline int Check(const Reply& reply) {
  int sum = reply.held;
  for (int code : reply.codes) sum += code;
  return sum & 0xFF;
}

}  // namespace detail

// The 16 characters of `reply` (every number taken modulo 256).
inline std::string Encode(const Reply& reply) {
  Reply reduced;
  reduced.held = reply.held & 0xFF;
  for (int i = 0; i < kCodesPerReply; ++i) reduced.codes[i] = reply.codes[i] & 0xFF;
  std::string out(kMarker);
  detail::AppendHex(out, reduced.held);
  for (int code : reduced.codes) detail::AppendHex(out, code);
  detail::AppendHex(out, detail::Check(reduced));
  return out;
}

// The reply held in exactly the 16 characters at the start of `text`, or nothing when they are
// fewer, do not begin with the marker, hold anything but upper-case hexadecimal digits after it,
// or fail the check (the sum of the five numbers modulo 256).
inline std::optional<Reply> Decode(std::string_view text) {
  if (text.size() < kLength || text.substr(0, kMarker.size()) != kMarker) return std::nullopt;
  std::array<int, 2 + kCodesPerReply> numbers{};
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    const std::optional<int> number = detail::HexByte(text, kMarker.size() + 2 * i);
    if (!number) return std::nullopt;
    numbers[i] = *number;
  }
  Reply reply;
  reply.held = numbers[0];
  for (int i = 0; i < kCodesPerReply; ++i) reply.codes[i] = numbers[1 + i];
  if (detail::Check(reply) != numbers.back()) return std::nullopt;
  return reply;
}

}  // namespace vela::fault_reply
