#include "base/program_settings.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace vela {

namespace {

struct SetupLineFormat {
  const char* key;
  const char* default_line;
  int read_from;  // 1-based character position of the value
};

constexpr std::array<SetupLineFormat, kSetupLineCount> kLines = {{
    {"Port =", "Port = 4", 8},
    {"Frames per Second =", "Frames per Second = 4", 21},
    {"Datalog TimeScale =", "Datalog TimeScale = 20", 21},
    {"AFR Display Mode =", "AFR Display Mode = 0", 20},
    {"Fuel Map Display Type = ", "Fuel Map Display Type = True", 25},
    {"GPO Display Type = ", "GPO Display Type = False", 20},
    {"Confirm GPO Change = ", "Confirm GPO Change = True", 22},
    {"Map Upload Integrity = ", "Map Upload Integrity = True", 24},
    {"Show Instant Help = ", "Show Instant Help = True", 21},
    {"Comms Multiply = ", "Comms Multiply = 1", 18},
    {"Reduce Comms Sending =", "Reduce Comms Sending = 0", 24},
    {"RPM Smoothing =", "RPM Smoothing = 0", 17},
    {"MAP Smoothing =", "MAP Smoothing = 0", 17},
    {"AFR Smoothing =", "AFR Smoothing = 0", 17},
    {"Language = ", "Language = True", 17},
    {"Scale = ", "Settings = 0", 10},
}};

constexpr char kLineEnd[] = "\r\n";

std::string TruthText(bool value) { return value ? "True" : "False"; }

// Mid$(line, position): everything from the 1-based position, or nothing past the end.
std::string_view ValueText(const std::string& line, int position) {
  const auto start = static_cast<std::size_t>(position - 1);
  if (start >= line.size()) return {};
  return std::string_view(line).substr(start);
}

// Whole numbers for list positions and control values, a half going to the even neighbour.
std::optional<int> WholeNumber(std::string_view text) {
  const auto number = ParseSetupNumber(text);
  if (!number || std::fabs(*number) > 1e9) return std::nullopt;
  return static_cast<int>(std::nearbyint(*number));
}

void SetIfInRange(std::string_view text, int low, int high, int& control) {
  const auto value = WholeNumber(text);
  if (value && *value >= low && *value <= high) control = *value;
}

void SetTruth(std::string_view text, bool& first_choice) { first_choice = (text == "True"); }

// Where a line's value goes: a yes/no field, or a number field whose file value (the field plus
// `offset`) is taken when it lies within low to high. The port line is read on its own.
struct SetupLineField {
  bool ProgramSettings::*truth = nullptr;
  int ProgramSettings::*number = nullptr;
  int low = 0;
  int high = 0;
  int offset = 0;
};

SetupLineField TruthLine(bool ProgramSettings::*field) { return {field, nullptr, 0, 0, 0}; }
SetupLineField NumberLine(int ProgramSettings::*field, int low, int high, int offset = 0) {
  return {nullptr, field, low, high, offset};
}

const std::array<SetupLineField, kSetupLineCount> kLineFields = {{
    {},  // the port
    NumberLine(&ProgramSettings::frames_per_second_index, 0, kFramesPerSecondChoices - 1),
    NumberLine(&ProgramSettings::datalog_time_scale, kDatalogTimeScaleMin, kDatalogTimeScaleMax),
    NumberLine(&ProgramSettings::afr_display_mode, 0, kAfrDisplayModes - 1),
    TruthLine(&ProgramSettings::fuel_map_numerical),
    TruthLine(&ProgramSettings::gpo_name_enable),
    TruthLine(&ProgramSettings::gpo_change_confirm),
    TruthLine(&ProgramSettings::map_integrity),
    TruthLine(&ProgramSettings::instant_help),
    NumberLine(&ProgramSettings::comms_packet_speed, 1, kPacketSpeedChoices, 1),
    NumberLine(&ProgramSettings::reduce_comms_sending, 0, 1),
    NumberLine(&ProgramSettings::rpm_smoothing, 0, 1),
    NumberLine(&ProgramSettings::map_smoothing, 0, 1),
    NumberLine(&ProgramSettings::afr_smoothing, 0, 1),
    TruthLine(&ProgramSettings::language_first),
    NumberLine(&ProgramSettings::scale, kScaleMin + 50, kScaleMax + 50, 50),
}};

}  // namespace

std::string FilePrintNumber(double value) {
  char digits[64];
  const double magnitude = std::fabs(value);
  if (magnitude == std::floor(magnitude) && magnitude < 1e15) {
    std::snprintf(digits, sizeof digits, "%.0f", magnitude);
  } else {
    std::snprintf(digits, sizeof digits, "%.15g", magnitude);
  }
  return std::string(value < 0 ? "-" : " ") + digits + " ";
}

std::optional<double> ParseSetupNumber(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  if (text.empty()) return std::nullopt;
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value)) {
    return std::nullopt;
  }
  return value;
}

std::string DefaultSetupFileText() {
  std::string text;
  for (const auto& line : kLines) text += std::string(line.default_line) + kLineEnd;
  return text;
}

std::string SetupFileText(const ProgramSettings& s) {
  const std::array<std::string, kSetupLineCount> values = {
      FilePrintNumber(s.port_index + 1),
      FilePrintNumber(s.frames_per_second_index),
      FilePrintNumber(s.datalog_time_scale),
      FilePrintNumber(s.afr_display_mode),
      TruthText(s.fuel_map_numerical),
      TruthText(s.gpo_name_enable),
      TruthText(s.gpo_change_confirm),
      TruthText(s.map_integrity),
      TruthText(s.instant_help),
      std::to_string(s.comms_packet_speed + 1),
      FilePrintNumber(s.reduce_comms_sending),
      FilePrintNumber(s.rpm_smoothing),
      FilePrintNumber(s.map_smoothing),
      FilePrintNumber(s.afr_smoothing),
      TruthText(s.language_first),
      FilePrintNumber(s.scale + 50),
  };
  std::string text;
  for (int i = 0; i < kSetupLineCount; ++i) text += kLines[i].key + values[i] + kLineEnd;
  return text;
}

SetupFileReader::SetupFileReader(std::string_view file_text) : rest_(file_text) {}

bool SetupFileReader::ReadLine(std::string& setup_line) {
  if (rest_.empty()) return false;
  const auto end = rest_.find_first_of("\r\n");
  if (end == std::string_view::npos) {
    setup_line.assign(rest_);
    rest_ = {};
    return true;
  }
  setup_line.assign(rest_.substr(0, end));
  std::size_t next = end + 1;
  if (rest_[end] == '\r' && next < rest_.size() && rest_[next] == '\n') ++next;
  rest_.remove_prefix(next);
  return true;
}

void ApplySetupLine(int line_number, const std::string& setup_line, ProgramSettings& s,
                    int& comm_port_number) {
  if (line_number < 1 || line_number > kSetupLineCount) return;
  const std::string_view v = ValueText(setup_line, kLines[line_number - 1].read_from);
  if (line_number == 1) {
    if (const auto port = WholeNumber(v)) {
      if (*port >= 1 && *port <= kPortCount) s.port_index = *port - 1;
      comm_port_number = *port;
    }
    return;
  }
  const SetupLineField& field = kLineFields[line_number - 1];
  if (field.truth) {
    SetTruth(v, s.*field.truth);
    return;
  }
  int value = s.*field.number + field.offset;
  SetIfInRange(v, field.low, field.high, value);
  s.*field.number = value - field.offset;
}

}  // namespace vela
