// The consistency checks of a calibration's setup values. Applying a calibration runs them step
// by step and lists every failure in the setup error list; saving a map runs the setup-error ones
// on the block it builds; the set-up pages run the ones that read a byte before they write it,
// so that no choice writes a byte that fails (ChangeBreaks). docs/calibration-checks.md gives the
// condition of each check.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "calibration/calibration_image.h"
#include "calibration/map_axes.h"
#include "calibration/setup_fields.h"

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
  int map_sensor_type = -1;
};

// The image positions a check reads: up to two ranges, an unused one {0, -1}. A check's outcome
// depends on these bytes (and the context) only.
using CheckReads = std::array<PositionRange, 2>;

struct SetupCheck {
  std::string_view message;
  CheckReads reads;
  // 1 when the check fails, 0 when it passes.
  int (*failures)(const CalibrationImage& image, const CheckContext& context);
  // False for a notice that is not an error of the block ("Ignition Timing Lock Active"); the
  // save validation skips those.
  bool setup_error = true;
  // Set on every check after the first of a run that shares one message said at most once for
  // the run ("Battery Voltage Compensation Invalid": one check per byte, one line in the list).
  bool said_once = false;
  // When it fails, in the tuner's words: what the bytes it reads must be.
  std::string_view rule = {};

  bool Reads(int position) const;
};

// The checks of one step of ApplyUploadedCalibration (3, 4, 5, 7, 8, 9, 10, 11), in order;
// empty for any other step. The version checks of step 6 live with the procedure itself.
std::span<const SetupCheck> ChecksOfStep(int step);

// Appends each failed check's message to `out` (a run of `said_once` checks once).
void RunChecks(std::span<const SetupCheck> checks, const CalibrationImage& image,
               const CheckContext& context, std::vector<std::string>& out);

// Every check of steps 3 to 11 in order, notices included.
const std::vector<SetupCheck>& AllSetupChecks();

// The checks that read one of `positions` and fail on `image`, each once, in check order.
std::vector<SetupCheck> FailedChecksReading(const CalibrationImage& image,
                                            const CheckContext& context,
                                            std::span<const int> positions);

// The rule that decides whether the set-up pages may write bytes: a change that writes the
// bytes at `written` (already in `after`) is refused when a check that reads one of them fails
// on `after`. Checks that read no written byte keep their outcome, so a change never breaks a
// check, and a byte the tuner writes never fails one, even where the ECU's calibration already
// fails elsewhere. Returns the checks that refuse it; empty when the change may go ahead.
std::vector<SetupCheck> ChangeBreaks(const CalibrationImage& after, const CheckContext& context,
                                     std::span<const int> written);

// The setup validation of a save: the messages of every failed setup-error check of steps 3 to
// 11, in the order in which applying the block would list them.
std::vector<std::string> ValidateSetup(const CalibrationImage& image, const CheckContext& context);

// The test of the old-firmware branch: a version that is not 0 and below 1. No byte meets it,
// so the "Firmware Update" message never shows; the test is kept as the ECU family defines it.
bool FirmwareOlderThanSoftware(std::uint8_t version);

}  // namespace vela
