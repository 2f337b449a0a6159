// File names as the file actions see them: where the name part of a path begins (after the last
// '/' or '\', whichever system wrote the path).
#pragma once

#include <cstddef>
#include <string>

namespace vela {

// The most dots a file name may hold; the map and datalog file actions refuse a name with more.
inline constexpr int kMaxDotsInFileName = 4;

inline std::size_t NameStart(const std::string& path) {
  const std::size_t separator = path.find_last_of("/\\");
  return separator == std::string::npos ? 0 : separator + 1;
}

}  // namespace vela
