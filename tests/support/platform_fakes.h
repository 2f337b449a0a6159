// Scripted stand-ins for the platform interfaces (messages, files, folders, the serial port),
// shared by every test program and the fuzz targets.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "base/file_system.h"
#include "base/platform.h"
#include "link/serial_port.h"

namespace vela::testing {

struct ShownMessage {
  MessageIcon icon;
  std::string title;
  std::vector<std::string> lines;
};

class RecordingMessages : public MessageSink {
 public:
  MessageAnswer Show(MessageIcon icon, const std::string& title,
                     const std::vector<std::string>& lines, MessageButtons) override {
    shown.push_back({icon, title, lines});
    return MessageAnswer::kOk;
  }
  std::vector<ShownMessage> shown;
};

// Files and folders in memory; every call is logged, and writes can be made to fail.
class MemoryFileSystem : public FileSystem {
 public:
  bool IsDirectory(const std::string& path) override { return folders.count(path) > 0; }
  bool CreateDirectory(const std::string& path) override {
    log.push_back("mkdir " + path);
    folders[path] = true;
    return true;
  }
  std::optional<std::string> ReadFile(const std::string& path) override {
    auto it = files.find(path);
    if (it == files.end()) return std::nullopt;
    return it->second;
  }
  int WriteFile(const std::string& path, const std::string& content) override {
    log.push_back("write " + path);
    if (write_error != kFileErrorNone) return write_error;
    files[path] = content;
    return kFileErrorNone;
  }
  std::string LastWriteReason() const override { return write_reason; }

  std::map<std::string, bool> folders;
  std::map<std::string, std::string> files;
  std::vector<std::string> log;
  int write_error = kFileErrorNone;
  std::string write_reason;
};

class ScriptedPort : public SerialPort {
 public:
  bool Open(int port_number) override {
    opened.push_back(port_number);
    open_ = opens_succeed;
    return open_;
  }
  void Close() override { open_ = false; }
  bool IsOpen() const override { return open_; }
  std::size_t BytesWaiting() const override { return 0; }
  std::vector<std::uint8_t> ReadAll() override { return {}; }
  void ClearInput() override {}
  bool WriteByte(std::uint8_t) override { return open_; }

  bool opens_succeed = true;
  std::vector<int> opened;

 private:
  bool open_ = false;
};

}  // namespace vela::testing
