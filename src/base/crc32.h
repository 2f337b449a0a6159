// CRC-32 (the polynomial of zip and PNG), the check on every block of the datalog and edit
// journal files.
#pragma once

#include <cstdint>
#include <string_view>

namespace vela {

// The CRC of `bytes` continued from `crc` (0 to start).
std::uint32_t Crc32(std::string_view bytes, std::uint32_t crc = 0);

}  // namespace vela
