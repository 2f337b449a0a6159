// A file that grows by appends and is pushed to the disk after each one, so that a crash or a
// power cut keeps everything written before the last push: the journals of recording and editing.
#pragma once

#include <string>
#include <string_view>

namespace vela {

// The journal's file: created empty, appended to, pushed to the disk, removed.
class JournalFile {
 public:
  virtual ~JournalFile() = default;
  // An empty file at `path`, replacing any file there.
  virtual bool Create(const std::string& path) = 0;
  virtual bool Append(std::string_view bytes) = 0;
  // What was appended is on the disk, not only in the system's buffers.
  [[nodiscard]] virtual bool Sync() = 0;
  virtual void Close() = 0;
  virtual bool Remove(const std::string& path) = 0;
};

}  // namespace vela
