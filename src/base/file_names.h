// File names as the file actions see them: where the name part of a path begins (after the last
// '/' or '\', whichever system wrote the path).
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vela {

// The most dots a file name may hold; the map and datalog file actions refuse a name with more.
inline constexpr int kMaxDotsInFileName = 4;

// The title of the box that says a file action's folder is missing.
inline constexpr std::string_view kFolderNotFoundTitle = "Folder not Found";

// The question both file actions ask before a save replaces a file that exists.
inline constexpr std::string_view kOverwriteTitle = "Overwrite file";
inline constexpr std::string_view kOverwriteLine = "Do you want to overwrite the file?";

inline std::size_t NameStart(const std::string& path) {
  const std::size_t separator = path.find_last_of("/\\");
  return separator == std::string::npos ? 0 : separator + 1;
}

}  // namespace vela
