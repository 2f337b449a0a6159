// Files and folders as the program's cores use them. Every write replaces the file whole through
// a temporary file in the same folder, so a crash or a full disk never leaves half a file.
#pragma once

#include <optional>
#include <string>

namespace vela {

// Error numbers reported for failed file work; a message shows them to the user.
inline constexpr int kFileErrorNone = 0;
inline constexpr int kFileErrorNotFound = 53;
inline constexpr int kFileErrorDiskFull = 61;
inline constexpr int kFileErrorAccess = 75;
inline constexpr int kFileErrorPathNotFound = 76;

class FileSystem {
 public:
  virtual ~FileSystem() = default;
  virtual bool IsDirectory(const std::string& path) = 0;
  virtual bool CreateDirectory(const std::string& path) = 0;
  // The whole content, or nothing when the file cannot be read.
  virtual std::optional<std::string> ReadFile(const std::string& path) = 0;
  // Replaces the file's content; returns kFileErrorNone or one of the error numbers above.
  virtual int WriteFile(const std::string& path, const std::string& content) = 0;
};

// Files on the local disk.
class DiskFileSystem : public FileSystem {
 public:
  bool IsDirectory(const std::string& path) override;
  bool CreateDirectory(const std::string& path) override;
  std::optional<std::string> ReadFile(const std::string& path) override;
  int WriteFile(const std::string& path, const std::string& content) override;
};

}  // namespace vela
