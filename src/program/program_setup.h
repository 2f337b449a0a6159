// The program settings module: the folder tree, `Setup.txt` made, read and saved, the port opened
// at start, and the guards that keep start-up from rewriting the file.
#pragma once

#include <functional>
#include <string>

#include "base/file_system.h"
#include "base/platform.h"
#include "base/program_folders.h"
#include "base/program_settings.h"
#include "base/startup_trace.h"
#include "link/serial_port.h"

namespace vela {

class ProgramSetup {
 public:
  ProgramSetup(ProgramFolders folders, FileSystem& files, MessageSink& messages,
               StartupTrace& trace);

  // Creates the missing folders in order and, when `Setup.txt` cannot be read, the default file.
  void MakeDefaultSetup();
  // Reads `Setup.txt` into the controls and opens `port` with the number of line 1.
  void ReadProgramSettings(SerialPort& port);
  // Writes the whole of `Setup.txt` from the controls.
  void SaveProgramSettings();
  // What the change handler of every setting control calls: saves unless a guard is up.
  void SettingChanged();

  std::string SetupFilePath() const { return folders_.program + "Setup.txt"; }
  std::string ConfigFilePath() const { return folders_.program + "Config.txt"; }

  // Called inside ReadProgramSettings after the values are read and before `LoadingSetup` drops,
  // so that the Qt side can push them into its widgets.
  void set_on_settings_read(std::function<void()> hook) { on_settings_read_ = std::move(hook); }

  ProgramSettings settings;
  const ProgramFolders& folders() const { return folders_; }
  const std::string& ProgramInfoFolder() const { return folders_.program; }

  bool LoadingSetup = false;
  bool SuppressChangeEvents = false;
  int CommPortNumber = 0;
  std::string SetupLine;

 private:
  ProgramFolders folders_;
  FileSystem& files_;
  MessageSink& messages_;
  StartupTrace& trace_;
  std::function<void()> on_settings_read_;
  // True while a failed save's message is open: a change made meanwhile (a control that repeats
  // under the open box) is saved without a second message.
  bool save_error_open_ = false;
};

// The "Commport Error" message shown when the port cannot be opened.
void ShowCommportError(MessageSink& messages);
// The "Save Program Settings" message shown when a settings file cannot be written.
// The settings-file error: the fixed text with the error number, then a line naming the file
// and the system's reason.
void ShowSettingsSaveError(MessageSink& messages, int error_number, const std::string& path,
                           const std::string& reason);

}  // namespace vela
