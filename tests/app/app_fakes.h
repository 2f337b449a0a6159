// Scripted answers for the program's questions and file dialogs in the window tests.
#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <string>

#include "support/platform_fakes.h"

namespace vela::testing {

// Records every message and answers the questions from a script (Yes when the script is empty).
// `while_open`, when set, runs while a box is open, as a modal box lets the program's events run.
class AnsweringMessages : public RecordingMessages {
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

// Answers every dialog with the next path of the script, or cancels when none is left.
class ScriptedDialogs : public FileDialogs {
 public:
  std::optional<std::string> AskOpenPath(const std::string&, const std::string&,
                                         const std::string&) override {
    return Next();
  }
  std::optional<std::string> AskSavePath(const std::string&, const std::string&,
                                         const std::string&) override {
    return Next();
  }
  std::deque<std::string> paths;

 private:
  std::optional<std::string> Next() {
    if (paths.empty()) return std::nullopt;
    std::string path = paths.front();
    paths.pop_front();
    return path;
  }
};

}  // namespace vela::testing
