#include "program/first_run_setup.h"

#include "base/program_settings.h"
#include "program/program_setup.h"

namespace vela {

std::string ConfigFileText(const FirstRunChoice& choice) {
  return "Port =" + FilePrintNumber(choice.port) + "\r\n" +
         "Port2 =" + FilePrintNumber(choice.port2) + "\r\n";
}

bool CompleteFirstRunSetup(const FirstRunChoice& choice, bool already_open, SerialPort& test_port,
                           FileSystem& files, const std::string& config_path,
                           MessageSink& messages) {
  if (!already_open) {
    if (!test_port.Open(choice.port)) {
      ShowCommportError(messages);
      return false;
    }
    test_port.Close();
  }
  const int error = files.WriteFile(config_path, ConfigFileText(choice));
  if (error != kFileErrorNone) {
    ShowSettingsSaveError(messages, error, config_path, files.LastWriteReason());
    return false;
  }
  messages.Show(MessageIcon::kInformation, "MORVANE Engine Managements",
                {"Your System is now setup and is ready to run.      "});
  return true;
}

}  // namespace vela
