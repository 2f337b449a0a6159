// Scripted stand-ins and a sound calibration for the editors' core tests.
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/file_system.h"
#include "base/platform.h"
#include "calibration/calibration_image.h"
#include "editors/edit_parts.h"
#include "link/link_state.h"
#include "support/recording_sender.h"

namespace vela::editor_testing {

using ::vela::testing::RecordingSender;
using ::vela::testing::SentFrame;

struct ShownMessage {
  MessageIcon icon;
  std::string title;
  std::vector<std::string> lines;
  MessageButtons buttons;
};

// Records every box; answers from `answers` in turn, then kYes.
struct ScriptedMessages : MessageSink {
  MessageAnswer Show(MessageIcon icon, const std::string& title,
                     const std::vector<std::string>& lines, MessageButtons buttons) override {
    shown.push_back({icon, title, lines, buttons});
    if (on_show) on_show();
    if (answers.empty()) return MessageAnswer::kYes;
    const MessageAnswer answer = answers.front();
    answers.pop_front();
    return answer;
  }
  std::vector<ShownMessage> shown;
  std::deque<MessageAnswer> answers;
  std::function<void()> on_show;
};

struct DialogCall {
  std::string filter;
  std::string title;
  std::string initial_folder;
};

// Answers every dialog with `path` (nullopt: cancelled).
struct ScriptedDialogs : FileDialogs {
  std::optional<std::string> AskOpenPath(const std::string& filter, const std::string& title,
                                         const std::string& initial_folder) override {
    opened.push_back({filter, title, initial_folder});
    return path;
  }
  std::optional<std::string> AskSavePath(const std::string& filter, const std::string& title,
                                         const std::string& initial_folder) override {
    saved.push_back({filter, title, initial_folder});
    return path;
  }
  std::optional<std::string> path;
  std::vector<DialogCall> opened;
  std::vector<DialogCall> saved;
};

// Files in memory; a failing write leaves the stored file as it was.
struct MemoryFiles : FileSystem {
  bool IsDirectory(const std::string& path) override { return folders.count(path) > 0; }
  bool CreateDirectory(const std::string& path) override {
    folders[path] = true;
    return true;
  }
  std::optional<std::string> ReadFile(const std::string& path) override {
    const auto it = files.find(path);
    if (it == files.end()) return std::nullopt;
    return it->second;
  }
  int WriteFile(const std::string& path, const std::string& content) override {
    ++writes;
    if (write_error != kFileErrorNone) return write_error;
    files[path] = content;
    return kFileErrorNone;
  }
  std::string LastWriteReason() const override { return write_reason; }
  std::map<std::string, bool> folders;
  std::map<std::string, std::string> files;
  int write_error = kFileErrorNone;
  std::string write_reason;
  int writes = 0;
};

// A calibration that passes every check: 4 cylinders, 9 fuel and 5 ignition load sites, a
// 36-1 trigger wheel, falling NTC sensor curves, firmware 2.
// An editor's surroundings: state, image, a recording sender and scripted messages.
struct EditFixture {
  EditorState state;
  CalibrationImage image;
  RecordingSender sender;
  ScriptedMessages messages;
  bool suppress = false;
  EditParts Parts() { return {state, image, sender, messages, suppress}; }
};

inline CalibrationImage SoundImage() {
  CalibrationImage image;
  const std::pair<int, int> bytes[] = {
      {947, 3},   {946, 1},  {995, 0x20}, {959, 40},  {909, 2},    {901, 5},   {902, 3},  {903, 1},
      {852, 100}, {904, 1},  {853, 100},  {906, 1},   {907, 65},   {908, 10},  {884, 1},  {910, 2},
      {926, 3},   {942, 64}, {950, 4},    {952, 1},   {955, 64},   {956, 64},  {1022, 1}, {1023, 2},
      {958, 50},  {998, 5},  {1012, 19},  {1014, 20}, {1015, 200}, {1018, 40}, {867, 2}};
  for (auto [position, value] : bytes) image.SetByte(position, static_cast<std::uint8_t>(value));
  const int curve[8] = {252, 246, 218, 170, 120, 75, 50, 35};
  for (int i = 0; i < 8; ++i) {
    image.SetByte(971 + i, static_cast<std::uint8_t>(curve[i]));
    image.SetByte(987 + i, static_cast<std::uint8_t>(curve[i]));
  }
  for (int p = 999; p <= 1010; ++p) image.SetByte(p, 100);
  return image;
}

}  // namespace vela::editor_testing
