// `Setup.txt`: sixteen positional lines, CRLF ended. Line n always carries setting n, whatever its
// key says; each value is taken from a fixed character position of its line.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vela {

// The state of the controls that `Setup.txt` stands for, as the controls hold it.
struct ProgramSettings {
  int port_index = 3;               // port list position; "CommPort N" is N - 1
  int frames_per_second_index = 4;  // list position of the live-frame rate choice
  int datalog_time_scale = 20;      // `DatalogTimeScale`, seconds
  int afr_display_mode = 0;         // list position of the air-fuel ratio display mode
  bool fuel_map_numerical = true;   // `Numerical`: first choice of the fuel map display type
  bool gpo_name_enable = false;     // `GPONameEnable`: first choice of the output display type
  bool gpo_change_confirm = true;   // `GPOChange`
  bool map_integrity = true;        // `MapIntegrity`
  bool instant_help = true;         // `InstantHelp`
  int comms_packet_speed = 0;       // `CommsPacketSpeedOption`: 0..5 stands for 1..6
  int reduce_comms_sending = 0;     // `CheckSlowSend`: 0 or 1
  int rpm_smoothing = 0;            // `RPMSmoothing`: 0 or 1
  int map_smoothing = 0;            // `MAPSmoothing`: 0 or 1
  int afr_smoothing = 0;            // `AFRSmoothing`: 0 or 1
  bool language_first = true;       // the first choice of the language pair
  int scale = 0;                    // `HScroll6`, saved plus 50

  bool operator==(const ProgramSettings&) const = default;
};

// The ranges the controls accept; a value read outside them leaves the control unchanged.
inline constexpr int kPortCount = 10;
inline constexpr int kFramesPerSecondChoices = 11;
inline constexpr int kDatalogTimeScaleMin = 1;
inline constexpr int kDatalogTimeScaleMax = 3600;
inline constexpr int kAfrDisplayModes = 8;  // `ComboAFRMode` entries (afr_display.h)
inline constexpr int kPacketSpeedChoices = 6;
inline constexpr int kScaleMin = -50;
inline constexpr int kScaleMax = 50;
inline constexpr int kSetupLineCount = 16;

// A number as the file-print convention writes it: a blank (or "-") for the sign, the digits and
// one trailing blank, so 4 is " 4 ".
std::string FilePrintNumber(double value);

// A number read back from line text: surrounding blanks are ignored; anything else that is not
// part of the number makes the conversion fail.
std::optional<double> ParseSetupNumber(std::string_view text);

// The file written when none exists (its line 16 is "Settings = 0").
std::string DefaultSetupFileText();

// The whole file written from the current controls.
std::string SetupFileText(const ProgramSettings& settings);

// Reads lines 1 to 16 into `settings` with every quirk of the positional format: a line that
// cannot be read leaves `setup_line` as it was, so the next setting is parsed from the previous
// line's text; a value that does not convert, or lies outside its control's range, leaves that
// control unchanged. Line 1 also sets `comm_port_number` when its value converts. Line 15 is read
// from character 17, past any written value, and so always selects the second language choice
// (start-up selects the first one again afterwards).
class SetupFileReader {
 public:
  explicit SetupFileReader(std::string_view file_text);

  // Reads the next line into `setup_line`; false (and `setup_line` unchanged) at the end.
  bool ReadLine(std::string& setup_line);

 private:
  std::string_view rest_;
};

// Applies line n's value (n = 1..16), taken from `setup_line` at the line's own position.
void ApplySetupLine(int line_number, const std::string& setup_line, ProgramSettings& settings,
                    int& comm_port_number);

}  // namespace vela
