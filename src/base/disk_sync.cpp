#include "base/disk_sync.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <fcntl.h>
#include <unistd.h>
#endif

namespace vela {

#ifdef _WIN32

bool FlushFileToDisk(const std::string& path) {
  HANDLE file = CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                            nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  const bool flushed = FlushFileBuffers(file) != 0;
  CloseHandle(file);
  return flushed;
}

// Windows keeps a folder's entries with the file system's own journal.
bool FlushFolderToDisk(const std::string&) { return true; }

#else

bool FlushFileToDisk(const std::string& path) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return false;
  const bool flushed = ::fsync(fd) == 0;
  ::close(fd);
  return flushed;
}

bool FlushFolderToDisk(const std::string& folder) {
  const int fd = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return true;
  ::fsync(fd);
  ::close(fd);
  return true;
}

#endif

}  // namespace vela
