// Flushing to the disk: the one place where the program asks the operating system for more than
// the C++ library gives, so that a file replaced by a rename survives a power cut.
#pragma once

#include <string>

namespace vela {

// Flushes the file's content and the folder's entry for it to the disk; false when the system
// refused. A folder that cannot be flushed (some file systems cannot) is not an error.
[[nodiscard]] bool FlushFileToDisk(const std::string& path);
[[nodiscard]] bool FlushFolderToDisk(const std::string& folder);

}  // namespace vela
