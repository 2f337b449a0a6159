#include "datalog/datalog_settings.h"

#include "base/program_settings.h"

namespace vela {

namespace {

std::string ErrorLine(std::string_view text, int error_number) {
  return std::string(text) + std::to_string(error_number) + "  ";
}

}  // namespace

std::string DatalogSetupText(const ChannelChecks& checks) {
  std::string text;
  for (int n = 0; n < kChannelCount; ++n) {
    text += "Channel " + std::to_string(n) + " =" + (checks[n] ? " 1" : " 0") + "\r\n";
  }
  return text;
}

std::string DefaultDatalogSetupText() {
  ChannelChecks all_on;
  all_on.fill(true);
  return DatalogSetupText(all_on);
}

ChannelChecks ReadDatalogSetupText(std::string_view text) {
  ChannelChecks checks{};
  SetupFileReader reader(text);
  std::string line;
  for (int n = 0; n < kChannelCount; ++n) {
    reader.ReadLine(line);  // at the end of the file the buffer keeps the last line
    // Two characters after the "=", counted from where a missing "=" would stand (before the
    // line), so a line without one is read from its second character.
    const std::size_t equals = line.find('=');
    const std::size_t start = (equals == std::string::npos ? 0 : equals + 1) + 1;
    checks[n] = start <= line.size() && line.substr(start) == "1";
  }
  return checks;
}

ChannelChecks DatalogSettings::LoadDatalogSettings() {
  std::optional<std::string> text = files_.ReadFile(path_);
  if (!text) {
    const int error = files_.WriteFile(path_, DefaultDatalogSetupText());
    if (error != kFileErrorNone) {
      messages_.Show(MessageIcon::kInformation, "Save Config Settings",
                     {ErrorLine(" Error Creating DatalogSetup Settings, ", error)});
    }
    text = files_.ReadFile(path_);
  }
  return ReadDatalogSetupText(text ? *text : DefaultDatalogSetupText());
}

void DatalogSettings::SaveDatalogSettings(const ChannelChecks& checks) {
  const int error = files_.WriteFile(path_, DatalogSetupText(checks));
  if (error != kFileErrorNone) {
    messages_.Show(MessageIcon::kInformation, "Save Datalog Settings",
                   {ErrorLine(" Error Saving Program Settings, ", error)});
  }
}

}  // namespace vela
