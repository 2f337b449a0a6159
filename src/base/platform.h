// The small interfaces through which the plain C++ cores reach the outside world. The Qt side
// implements them with QMessageBox, QFileDialog, QElapsedTimer and the event loop; tests give
// scripted versions.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vela {

// Modal message boxes: an icon, a fixed title, fixed lines (shown one under the other) and the
// buttons offered. Titles and lines are shown exactly as given, trailing blanks included.
enum class MessageIcon { kInformation, kExclamation, kQuestion, kCritical, kNone };
// kYesNoDefaultNo: Yes and No with No as the default, for a question whose Yes risks something.
enum class MessageButtons { kOk, kOkCancel, kYesNo, kYesNoCancel, kYesNoDefaultNo };
enum class MessageAnswer { kOk, kCancel, kYes, kNo };

// The title of the program's warnings and refusals.
inline constexpr std::string_view kWarningTitle = "MORVANE Warning";

class MessageSink {
 public:
  virtual ~MessageSink() = default;
  virtual MessageAnswer Show(MessageIcon icon, const std::string& title,
                             const std::vector<std::string>& lines,
                             MessageButtons buttons = MessageButtons::kOk) = 0;
};

// File dialogs: a filter in the "Description|*.ext" form, a title and an initial folder.
class FileDialogs {
 public:
  virtual ~FileDialogs() = default;
  virtual std::optional<std::string> AskOpenPath(const std::string& filter,
                                                 const std::string& title,
                                                 const std::string& initial_folder) = 0;
  virtual std::optional<std::string> AskSavePath(const std::string& filter,
                                                 const std::string& title,
                                                 const std::string& initial_folder) = 0;

  // An entry of an open dialog's filter that lists files by their content as well as by their
  // name: entry `filter_index` (0 first) also lists every file whose first `head_bytes` bytes
  // `matches` accepts, whatever its name.
  struct ContentListing {
    int filter_index = 0;
    std::size_t head_bytes = 0;
    std::function<bool(std::string_view head)> matches;
  };
  // The open dialog with such an entry. A dialog that cannot look into files lists by name.
  virtual std::optional<std::string> AskOpenPathListing(const std::string& filter,
                                                        const std::string& title,
                                                        const std::string& initial_folder,
                                                        const ContentListing& listing) {
    (void)listing;
    return AskOpenPath(filter, title, initial_folder);
  }
};

// A millisecond tick counter and the hook that lets pending user events run during long waits.
class Clock {
 public:
  virtual ~Clock() = default;
  virtual std::int64_t NowMs() = 0;
  virtual void LetEventsRun() = 0;
};

}  // namespace vela
