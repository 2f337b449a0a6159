// The consistency checks of a calibration's setup values. Applying a calibration runs them step
// by step and lists every failure in the setup error list; saving a map runs the setup-error ones
// on the block it builds. docs/calibration-checks.md gives the condition of each check.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "calibration/calibration_image.h"
#include "calibration/map_axes.h"

namespace vela {

// Valid ranges the checks enforce (the docs explain each choice).
inline constexpr int kCylinderChoices = 9;             // "1" to "12", entries 0 to 8
inline constexpr int kGpoFunctionCodes = 16;           // output function codes 0 to 15
inline constexpr int kGpiFunctionCodes = 8;            // input function codes 0 to 7
inline constexpr int kMaxStartupPrime = 14;            // fuel pump prime, entries 0 to 14
inline constexpr int kMaxBattComp = 200;               // battery compensation cell, raw
inline constexpr int kMaxTriggerOffset = 120;          // half degrees
inline constexpr int kMaxSensorVoltage = 229;          // trigger and home thresholds, raw
inline constexpr std::uint8_t kSensorTypeMask = 0x7F;  // bits 0 to 6 of bytes 903 and 905

// What a check reads besides the block: the MAP sensor type chosen in `ComboMAP`.
struct CheckContext {
  int combo_map = -1;
};

struct SetupCheck {
  std::string_view message;
  // How many times the message is added (0 when the check passes; the sensor curve checks can
  // add theirs once for each failing pair of points).
  int (*failures)(const CalibrationImage& image, const CheckContext& context);
  // False for a notice that is not an error of the block ("Ignition Timing Lock Active"); the
  // save validation skips those.
  bool setup_error = true;
};

// The checks of one step of ApplyUploadedCalibration (3, 4, 5, 7, 8, 9, 10, 11), in order;
// empty for any other step. The version checks of step 6 live with the procedure itself.
std::span<const SetupCheck> ChecksOfStep(int step);

// Appends each failed check's message to `out`, as often as the check fails.
void RunChecks(std::span<const SetupCheck> checks, const CalibrationImage& image,
               const CheckContext& context, std::vector<std::string>& out);

// The setup validation of a save: the messages of every failed setup-error check of steps 3 to
// 11, in the order in which applying the block would list them.
std::vector<std::string> ValidateSetup(const CalibrationImage& image, const CheckContext& context);

// The test of the old-firmware branch: a version that is not 0 and below 1. No byte meets it,
// so the "Firmware Update" message never shows; the test is kept as the ECU family defines it.
bool FirmwareOlderThanSoftware(std::uint8_t version);

}  // namespace vela
