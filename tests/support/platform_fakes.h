// Scripted stand-ins for the platform interfaces (messages, files, folders, the serial port),
// shared by every test program and the fuzz targets.
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <optional>
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
  MessageButtons buttons;
};

// Records every box and answers it with OK.
class RecordingMessages : public MessageSink {
 public:
  MessageAnswer Show(MessageIcon icon, const std::string& title,
                     const std::vector<std::string>& lines, MessageButtons buttons) override {
    shown.push_back({icon, title, lines, buttons});
    return MessageAnswer::kOk;
  }
  std::vector<ShownMessage> shown;
};

// Records every box and answers the questions from a script (Yes when the script is empty); a
// box with only OK takes no answer. `while_open`, when set, runs while a box is open, as a modal
// box lets the program's events run.
class ScriptedMessages : public RecordingMessages {
 public:
  MessageAnswer Show(MessageIcon icon, const std::string& title,
                     const std::vector<std::string>& lines, MessageButtons buttons) override {
    RecordingMessages::Show(icon, title, lines, buttons);
    if (while_open) while_open(title);
    if (buttons == MessageButtons::kOk) return MessageAnswer::kOk;
    if (answers.empty()) return MessageAnswer::kYes;
    const MessageAnswer answer = answers.front();
    answers.pop_front();
    return answer;
  }
  std::deque<MessageAnswer> answers;
  std::function<void(const std::string& title)> while_open;
};

struct DialogCall {
  std::string filter;
  std::string title;
  std::string initial_folder;
};

// Answers each dialog with the next of `paths`; once they are used up, with `path` (nullopt:
// cancelled). Every call is recorded.
class ScriptedDialogs : public FileDialogs {
 public:
  std::optional<std::string> AskOpenPath(const std::string& filter, const std::string& title,
                                         const std::string& initial_folder) override {
    opened.push_back({filter, title, initial_folder});
    return Next();
  }
  std::optional<std::string> AskSavePath(const std::string& filter, const std::string& title,
                                         const std::string& initial_folder) override {
    saved.push_back({filter, title, initial_folder});
    return Next();
  }
  std::deque<std::string> paths;
  std::optional<std::string> path;
  std::vector<DialogCall> opened;
  std::vector<DialogCall> saved;

 private:
  std::optional<std::string> Next() {
    if (paths.empty()) return path;
    std::string next = paths.front();
    paths.pop_front();
    return next;
  }
};

// Files and folders in memory; every call is logged, and writes can be made to fail (a failing
// write leaves the stored file as it was).
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
    ++writes;
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
  int writes = 0;
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
