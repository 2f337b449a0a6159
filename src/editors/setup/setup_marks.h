// What the set-up pages say beside a control whose byte it cannot show: the value the ECU holds,
// as it is, and the check it fails. A control never shows a plausible value for such a byte (a
// list shows no entry, a number field its true value or "Not set"), and nothing is sent until
// the tuner changes that control. Also the notes on choices the calibration cannot tell apart.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "calibration/calibration_image.h"
#include "editors/editor_state.h"
#include "editors/setup/setup_editor.h"

namespace vela {

// The mark beside a group or list that shows no entry: "The ECU holds byte 902 = 9, which no
// entry stands for: it fails "Trigger Pattern Invalid" (byte 902 is above 5)." Empty otherwise.
std::string ChoiceMark(SetupChoice choice, const EditorState& state, const CalibrationImage& image);

// A number field: the range the tuner can set, the held value in the field's unit (nullopt:
// "Not set", a speed of 0), and the mark when the field cannot take the held value. A field
// shows a held value outside its range as it is (its range widens to hold it); a change the
// tuner makes there lands on the nearest end of the range (ClampInto).
struct NumberShow {
  double low = 0.0;
  double high = 0.0;
  std::optional<double> value;
  std::string mark;
};
inline constexpr int kMinRevLimitRpm = 916;  // the longest period 16 bits hold, 65,535 us
inline constexpr int kMaxSpeedFieldRpm = 20000;
inline constexpr int kMinIdleTargetRpm = 4;  // the longest period 24 bits hold
NumberShow RevLimiterShow(int limiter, const EngineSetup& setup);
NumberShow IdleTargetShow(std::uint32_t period);
NumberShow TriggerOffsetShow(std::uint8_t raw);
// The dwell value in its mode's unit (percent, or milliseconds of charge time); nullopt with a
// mark when bit 7 is set, which neither dwell control sets.
NumberShow DwellShow(std::uint8_t dwell);
double ClampInto(double value, const NumberShow& show);

// Notes on choices the calibration cannot tell apart.
inline constexpr std::string_view kAuxOutputNote =
    "\"Idle Control\", \"Trigger Signal Pass-Through\" and the second \"Rev Counter Signal\" all "
    "leave bit 5 of byte 942 clear: the calibration cannot tell them apart, so one read from the "
    "ECU or a map file shows as \"Idle Control\". Only the first \"Rev Counter Signal\" sets it.";
inline constexpr std::string_view kSparkPullUpNote =
    "Byte 942 keeps only the spark output's edge (bit 2): \"Pull-up Enabled\" and \"Pull-up "
    "Disabled\" are not kept, write the edge bit clear (as \"Falling (Default)\"), and read back "
    "from the ECU or a map file as \"Falling (Default)\".";
// Beside the battery table's bytes that have no voltage row.
inline constexpr std::string_view kUnshownBattNote =
    "No voltage row of the table shows these bytes. \"Battery Voltage Compensation Invalid\" "
    "counts them: it fails when any of bytes 1000 to 1010 is above 200 (2.00 ms), so they take "
    "0 to 200.";

}  // namespace vela
