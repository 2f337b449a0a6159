#include "program/program_setup.h"

#include <utility>

namespace vela {

ProgramSetup::ProgramSetup(ProgramFolders folders, FileSystem& files, MessageSink& messages,
                           StartupTrace& trace)
    : folders_(std::move(folders)), files_(files), messages_(messages), trace_(trace) {}

void ShowCommportError(MessageSink& messages) {
  messages.Show(MessageIcon::kInformation, "Commport Error",
                {"The current Commport could not be opened.",
                 "Please check if the correct commport has been selected.           "});
}

void ShowSettingsSaveError(MessageSink& messages, int error_number, const std::string& path,
                           const std::string& reason) {
  messages.Show(MessageIcon::kInformation, "Save Program Settings",
                {" Error Saving Program Settings, " + std::to_string(error_number) + "  ",
                 FileErrorLine(path, reason)});
}

void ProgramSetup::MakeDefaultSetup() {
  for (const auto& folder : folders_.InCreationOrder()) {
    if (!files_.IsDirectory(folder)) files_.CreateDirectory(folder);
  }
  if (files_.ReadFile(SetupFilePath())) return;
  const int error = files_.WriteFile(SetupFilePath(), DefaultSetupFileText());
  if (error != kFileErrorNone) {
    ShowSettingsSaveError(messages_, error, SetupFilePath(), files_.LastWriteReason());
  }
}

void ProgramSetup::ReadProgramSettings(SerialPort& port) {
  LoadingSetup = true;
  trace_.Show("Read Setup.txt Started");
  MakeDefaultSetup();
  const std::string text = files_.ReadFile(SetupFilePath()).value_or(std::string());
  SetupFileReader reader(text);

  reader.ReadLine(SetupLine);
  ApplySetupLine(1, SetupLine, settings, CommPortNumber);
  if (!port.Open(CommPortNumber)) ShowCommportError(messages_);

  for (int line = 2; line <= kSetupLineCount; ++line) {
    reader.ReadLine(SetupLine);
    ApplySetupLine(line, SetupLine, settings, CommPortNumber);
  }
  trace_.Show("Read Setup.txt Complete");
  settings.language_first = true;
  if (on_settings_read_) on_settings_read_();
  LoadingSetup = false;
}

void ProgramSetup::SaveProgramSettings() {
  const int error = files_.WriteFile(SetupFilePath(), SetupFileText(settings));
  if (error == kFileErrorNone || save_error_open_) return;
  save_error_open_ = true;
  ShowSettingsSaveError(messages_, error, SetupFilePath(), files_.LastWriteReason());
  save_error_open_ = false;
}

void ProgramSetup::SettingChanged() {
  if (SuppressChangeEvents || LoadingSetup) return;
  SaveProgramSettings();
}

}  // namespace vela
