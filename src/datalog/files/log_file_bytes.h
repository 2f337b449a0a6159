// The chart file's byte layout shared by its writer and its reader: little-endian numbers put
// and got at any offset, and the size a records block's payload must have.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "base/file_bytes.h"
#include "datalog/files/log_file.h"

namespace vela::log_bytes {

using file_bytes::Get;
using file_bytes::Put;

// A records block's payload: first index (u64), count (u32), mask (u16), flags (u16), then the
// log times, the arrival times when the flags say so, and each masked channel's values.
inline constexpr std::size_t kRecordsHead = 16;

inline std::size_t RecordsPayloadSize(std::uint64_t count, ChannelMask mask, std::uint16_t flags) {
  const std::size_t per_record = 8 + ((flags & kRecordsWithArrivals) ? 8 : 0) +
                                 4 * static_cast<std::size_t>(std::popcount(mask));
  return kRecordsHead + static_cast<std::size_t>(count) * per_record;
}

}  // namespace vela::log_bytes
