// Scripted stand-ins for the platform interfaces (messages, files, folders, the serial port),
// shared by every test program and the fuzz targets.
#pragma once

#include <cstdint>
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
  // The files whose path is `folder` followed by a name without a separator.
  std::vector<std::string> FileNames(const std::string& folder) override {
    std::vector<std::string> names;
    for (const auto& [path, content] : files) {
      if (path.size() <= folder.size() || path.compare(0, folder.size(), folder) != 0) continue;
      const std::string name = path.substr(folder.size());
      if (name.find_first_of("/\\") == std::string::npos) names.push_back(name);
    }
    return names;
  }
  bool RemoveFile(const std::string& path) override {
    log.push_back("remove " + path);
    if (remove_fails) return files.count(path) == 0;
    files.erase(path);
    return true;
  }

  std::map<std::string, bool> folders;
  std::map<std::string, std::string> files;
  std::vector<std::string> log;
  int write_error = kFileErrorNone;
  std::string write_reason;
  int writes = 0;
  bool remove_fails = false;
};

// Time stands still unless the test moves it (`now`, or `step_per_read` per reading); scripted
// readings, when given, come first.
struct FakeClock : Clock {
  std::int64_t NowMs() override {
    ++reads;
    if (script.empty()) return (now += step_per_read) - step_per_read;
    now = script.front();
    script.pop_front();
    return now;
  }
  void LetEventsRun() override { ++events_run; }
  std::int64_t now = 0;
  std::int64_t step_per_read = 0;
  std::deque<std::int64_t> script;
  int reads = 0;
  int events_run = 0;
};

// A serial port in memory: the test fills its input and reads what was written; opening and
// writing can be made to fail. It starts closed.
class ScriptedPort : public SerialPort {
 public:
  bool Open(int port_number) override {
    opened.push_back(port_number);
    open = opens_succeed;
    return open;
  }
  void Close() override { open = false; }
  bool IsOpen() const override { return open; }
  std::size_t BytesWaiting() const override { return input.size(); }
  std::vector<std::uint8_t> ReadAll() override {
    if (on_read) on_read();  // may call back into the code under test
    std::vector<std::uint8_t> bytes(input.begin(), input.end());
    input.clear();
    return bytes;
  }
  void ClearInput() override { input.clear(); }
  bool WriteByte(std::uint8_t byte) override {
    if (!open) return false;
    if (refuse_from >= 0 && static_cast<int>(written.size()) >= refuse_from) return false;
    written.push_back(byte);
    if (on_write) on_write();
    return true;
  }

  bool open = false;
  bool opens_succeed = true;
  std::vector<int> opened;
  std::string input;
  std::function<void()> on_read;
  int refuse_from = -1;  // the port takes no byte from this count on (-1: every byte)
  std::vector<std::uint8_t> written;
  std::function<void()> on_write;
};

}  // namespace vela::testing
