// The chart file's byte layout shared by its writer and its reader: little-endian numbers put
// and got at any offset, and the size a records block's payload must have.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "datalog/files/log_file.h"

namespace vela::log_bytes {

// Numbers are stored little-endian; arrays of them are copied as they lie in memory.
static_assert(std::endian::native == std::endian::little, "the datalog file is little-endian");

template <typename T>
void Put(std::string& out, T value) {
  char bytes[sizeof(T)];
  std::memcpy(bytes, &value, sizeof(T));
  out.append(bytes, sizeof(T));
}

template <typename T>
T Get(std::string_view bytes, std::size_t at) {
  T value;
  std::memcpy(&value, bytes.data() + at, sizeof(T));
  return value;
}

// A records block's payload: first index (u64), count (u32), mask (u16), flags (u16), then the
// log times, the arrival times when the flags say so, and each masked channel's values.
inline constexpr std::size_t kRecordsHead = 16;

inline std::size_t RecordsPayloadSize(std::uint64_t count, ChannelMask mask, std::uint16_t flags) {
  const std::size_t per_record = 8 + ((flags & kRecordsWithArrivals) ? 8 : 0) +
                                 4 * static_cast<std::size_t>(std::popcount(mask));
  return kRecordsHead + static_cast<std::size_t>(count) * per_record;
}

}  // namespace vela::log_bytes
