// `DatalogSetup.txt`: twelve lines "Channel 0 =" to "Channel 11 =", each followed by the channel's
// check box as a signed number text (" 1" checked, " 0" clear), made with every channel on when
// missing, read at start and written on every change of a check box.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "base/file_system.h"
#include "base/platform.h"
#include "datalog/channels.h"

namespace vela {

using ChannelChecks = std::array<bool, kChannelCount>;

inline constexpr std::string_view kDatalogSetupFileName = "DatalogSetup.txt";

// The file's text for `checks` ("Channel n =" and " 1" or " 0", CR LF after each line).
std::string DatalogSetupText(const ChannelChecks& checks);
// The file made when there is none: every channel on.
std::string DefaultDatalogSetupText();

// The checks a file's text gives. Channel n takes the n-th line: the text from two characters
// after its first "=" to the end is "1" for on, anything else is off. When the file ends early,
// the line buffer keeps the last line read, so the remaining channels read that line again (an
// empty file turns every channel off).
ChannelChecks ReadDatalogSetupText(std::string_view text);

class DatalogSettings {
 public:
  DatalogSettings(FileSystem& files, MessageSink& messages, std::string path)
      : files_(files), messages_(messages), path_(std::move(path)) {}

  // Makes the file with every channel on when it cannot be read (" Error Creating DatalogSetup
  // Settings, " when that fails too) and reads the channels from it. A file that can be neither
  // read nor made gives the default channels.
  ChannelChecks LoadDatalogSettings();
  // Rewrites the file; " Error Saving Program Settings, " under "Save Datalog Settings" when
  // that fails.
  void SaveDatalogSettings(const ChannelChecks& checks);

  const std::string& path() const { return path_; }

 private:
  FileSystem& files_;
  MessageSink& messages_;
  std::string path_;
};

}  // namespace vela
