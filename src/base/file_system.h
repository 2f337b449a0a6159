// Files and folders as the program's cores use them. Every write replaces the file whole through
// a temporary file in the same folder, so a crash or a full disk never leaves half a file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vela {

// Error numbers reported for failed file work; a message shows them to the user.
inline constexpr int kFileErrorNone = 0;
inline constexpr int kFileErrorNotFound = 53;
inline constexpr int kFileErrorDiskFull = 61;
inline constexpr int kFileErrorAccess = 75;
inline constexpr int kFileErrorPathNotFound = 76;

// The beginning of a file and what it is, read without reading the rest: a file that has to be
// exactly some size is judged from its first bytes and its size, however large it is, and a
// pipe or a device is never opened.
struct FileHead {
  enum class Kind { kFile, kMissing, kFolder, kNotAFile, kUnreadable };
  Kind kind = Kind::kMissing;
  std::uint64_t size = 0;  // the whole file's size in bytes (kFile)
  std::string bytes;       // its first bytes, at most as many as asked for (kFile)
  std::string reason;      // the system's words for a file that could not be read
};

class FileSystem {
 public:
  virtual ~FileSystem() = default;
  virtual bool IsDirectory(const std::string& path) = 0;
  [[nodiscard]] virtual bool CreateDirectory(const std::string& path) = 0;
  // The whole content, or nothing when the file cannot be read.
  [[nodiscard]] virtual std::optional<std::string> ReadFile(const std::string& path) = 0;
  // At most `max_bytes` of the file's beginning, its size and kind. The default reads the
  // whole file, for stores that hold their files in memory.
  virtual FileHead ReadHead(const std::string& path, std::size_t max_bytes) {
    FileHead head;
    if (IsDirectory(path)) {
      head.kind = FileHead::Kind::kFolder;
      return head;
    }
    const std::optional<std::string> content = ReadFile(path);
    if (!content) return head;
    head.kind = FileHead::Kind::kFile;
    head.size = content->size();
    head.bytes = content->substr(0, max_bytes);
    return head;
  }
  // Replaces the file's content; returns kFileErrorNone or one of the error numbers above.
  [[nodiscard]] virtual int WriteFile(const std::string& path, const std::string& content) = 0;
  // The system's words for why the last write failed (empty when it gave none).
  virtual std::string LastWriteReason() const { return {}; }
  // The names of the plain files in a folder (no sub-folders), in no set order; none when the
  // folder cannot be read.
  virtual std::vector<std::string> FileNames(const std::string& folder) = 0;
  // Removes one file; false when it is still there.
  [[nodiscard]] virtual bool RemoveFile(const std::string& path) = 0;
};

// The line a file error shows after its fixed text: the file, and the system's reason.
inline std::string FileErrorLine(const std::string& path, const std::string& reason) {
  return reason.empty() ? path : path + ": " + reason;
}

// Files on the local disk.
class DiskFileSystem : public FileSystem {
 public:
  bool IsDirectory(const std::string& path) override;
  bool CreateDirectory(const std::string& path) override;
  std::optional<std::string> ReadFile(const std::string& path) override;
  FileHead ReadHead(const std::string& path, std::size_t max_bytes) override;
  // Written to "<name>.saving" in the same folder, flushed to the disk, renamed over the old
  // file, and the folder flushed too, so that a power cut leaves the old file or the new one.
  int WriteFile(const std::string& path, const std::string& content) override;
  std::string LastWriteReason() const override { return last_write_reason_; }
  std::vector<std::string> FileNames(const std::string& folder) override;
  bool RemoveFile(const std::string& path) override;

 private:
  int Fail(int error, const std::string& reason);
  std::string last_write_reason_;
};

}  // namespace vela
