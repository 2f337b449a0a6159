// The File Options tab's map actions over memory files, with every dialog answered with one path
// and every question answered Yes, against a connected ECU on a recording line.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "editors/editor_fakes.h"
#include "editors/map_file.h"
#include "recording_line.h"

namespace vela::fuzz {

// What the line carries when `image` is downloaded: a code 2 frame for each pair of positions
// 1-2 to 1021-1022, a code 4 frame for position 1023 and the closing code 6 frame at 1025.
std::vector<std::uint8_t> DownloadLineBytes(const CalibrationImage& image);

// A download's callbacks that find the line ready while `port` is open.
DownloadCallbacks ReadyWhileOpen(const SerialPort& port);

// Every byte of `state`'s editors that a map file keeps.
CalibrationImage::Block BuiltBytes(const EditorState& state);

class MapFileBench {
 public:
  static constexpr char kMapPath[] = "/maps/fuzz.sm1";

  // The editors hold the calibration of a connected ECU whose firmware version is `ecu_firmware`.
  explicit MapFileBench(std::uint8_t ecu_firmware);

  // Stores `content` as the map file, loads it and, when the load starts a download, runs the
  // download to its end. A download that does not end within its frames fails.
  MapFileResult LoadAndDownload(const std::string& content);
  // Saves what the editors hold as the map file; its content, or nothing when none was written.
  std::optional<std::string> Save();

  RecordingLine line;
  editor_testing::MemoryFiles files;
  editor_testing::ScriptedDialogs dialogs;
  editor_testing::ScriptedMessages messages;
  FileDialogMemory memory;
  ProgramMode mode;
  CalibrationImage program_image;
  EditorState state;
  StartupTrace status;
  bool suppress_change_events = false;
  ApplyEnvironment apply{status, messages, line.sender, line.link, suppress_change_events, {}, {}};
  Download download{line.sender, line.link, ReadyWhileOpen(line.port)};

 private:
  MapFiles map_files_;
  MapDownloadTarget target_;
};

}  // namespace vela::fuzz
