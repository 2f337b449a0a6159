#include "tools/vela_map/map_report.h"

#include <array>
#include <span>

#include "calibration/conversions.h"
#include "calibration/setup_fields.h"
#include "editors/editor_state.h"
#include "editors/setup/map_sensor.h"
#include "editors/setup/setup_choice_table.h"
#include "editors/setup/setup_notes.h"
#include "tools/vela_map/map_sheets.h"

namespace vela::mapfile {

namespace {

// The choices a tuner reads first, in the order of the set-up pages.
constexpr std::array kSaidChoices = {
    SetupChoice::kCylinders,        SetupChoice::kFuelMode,       SetupChoice::kInjectorImpedance,
    SetupChoice::kFuelLoadSites,    SetupChoice::kIgnLoadSites,   SetupChoice::kRpmSites,
    SetupChoice::kMapSelection,     SetupChoice::kTriggerPattern, SetupChoice::kTriggerSensorType,
    SetupChoice::kTriggerInputEdge, SetupChoice::kHomePattern,    SetupChoice::kHomeSensorType,
    SetupChoice::kSparkMode,        SetupChoice::kDwellMode,      SetupChoice::kLimiterMode,
    SetupChoice::kLoadSensing,      SetupChoice::kMapSensorType,  SetupChoice::kMapScale,
};

// The editors' reading of every field that choices live in, in the table's order (the MAP
// sensor type before the scaling that depends on it).
EditorState DecodedState(const CalibrationImage& image) {
  EditorState state;
  for (const SetupChoiceDescription& d : SetupChoiceDescriptions()) {
    DecodeChoices(d.field, image, state);
  }
  return state;
}

std::string Trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  const auto last = text.find_last_not_of(' ');
  return std::string(text.substr(first, last - first + 1));
}

std::string ChoiceWords(SetupChoice choice, const EditorState& state,
                        const CalibrationImage& image) {
  const SetupChoiceDescription& d = Describe(choice);
  const int entry = ShownChoice(choice, state, image);
  const int byte = image.Byte(FindSetupField(d.field)->position);
  if (entry == kNoEntry) {
    return "none of the entries (byte " + std::to_string(FindSetupField(d.field)->position) +
           " holds " + std::to_string(byte) + ")";
  }
  if (choice == SetupChoice::kMapScale) {
    return Trimmed(MapScaleTexts(state.sensors.map_sensor_type)[static_cast<std::size_t>(entry)]);
  }
  return Trimmed(d.texts[static_cast<std::size_t>(entry)]);
}

std::string RpmText(std::uint32_t period) {
  if (period == 0) return "none (0)";
  return std::to_string(static_cast<long>(RpmFromEnginePeriod(period) + 0.5)) + " RPM";
}

std::string ListText(std::span<const double> values) {
  std::string out;
  for (double value : values) out += (out.empty() ? "" : ", ") + AxisText(value);
  return out;
}

}  // namespace

std::vector<std::pair<std::string, std::string>> SetupInWords(const CalibrationImage& image) {
  const EditorState state = DecodedState(image);
  std::vector<std::pair<std::string, std::string>> lines;
  for (SetupChoice choice : kSaidChoices) {
    lines.emplace_back(std::string(Describe(choice).caption), ChoiceWords(choice, state, image));
  }
  lines.emplace_back("Injection", std::string(InjectionModeName(state.setup)));
  const SheetAxes fuel = AxesOf(image, MapId::kFuel1);
  const std::vector<double> rpm(fuel.rpm.rbegin(), fuel.rpm.rend());
  lines.emplace_back("RPM sites", ListText(rpm));
  lines.emplace_back("Fuel load sites (" + fuel.load_unit + ")", ListText(fuel.loads));
  lines.emplace_back("Ignition load sites (" + fuel.load_unit + ")",
                     ListText(AxesOf(image, MapId::kIgnition).loads));
  lines.emplace_back("Rev limit 1", RpmText(image.RevLimit1()));
  lines.emplace_back("Rev limit 2", RpmText(image.RevLimit2()));
  lines.emplace_back("ECU number", std::to_string(image.EcuNumber()));
  lines.emplace_back("Firmware byte (909)",
                     std::to_string(image.FirmwareVersion()) +
                         " (loading the map puts the connected ECU's version here)");
  return lines;
}

std::string InfoText(const std::string& path, const CalibrationImage& image,
                     const std::vector<std::string>& failures) {
  std::string out = "File: " + path + "\nMap file: 1023 bytes\n";
  if (failures.empty()) {
    out += "Checks: all passed\n";
  } else {
    out += "Checks: " + std::to_string(failures.size()) + " failed\n";
    for (const std::string& failure : failures) out += "  " + failure + "\n";
  }
  out += "Set-up:\n";
  for (const auto& [caption, words] : SetupInWords(image)) {
    out += "  " + caption + ": " + words + "\n";
  }
  return out;
}

}  // namespace vela::mapfile
