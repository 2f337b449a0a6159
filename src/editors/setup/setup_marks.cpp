#include "editors/setup/setup_marks.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

#include "calibration/conversions.h"
#include "editors/setup/map_sensor.h"
#include "editors/setup/setup_checks.h"
#include "editors/setup/setup_options.h"

namespace vela {

namespace {

constexpr int kChargeTimeTenthsPerMs = 10;

std::string Whole(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.0f", value);
  return text;
}

// "byte 902 = 9" for each position of a choice's field, joined.
std::string HeldBytes(SetupChoice choice, const CalibrationImage& image) {
  const std::optional<SetupField> field = FindSetupField(SetupFieldOf(choice));
  if (!field) return {};
  std::string text;
  for (int p = field->position; p <= field->LastPosition(); ++p) {
    if (!text.empty()) text += ", ";
    text += "byte " + std::to_string(p) + " = " + std::to_string(image.Byte(p));
  }
  return text;
}

// ": it fails "message" (rule)" for each failing check that reads `first` to `last`.
std::string FailedChecksText(const CalibrationImage& image, const CheckContext& context, int first,
                             int last) {
  std::vector<int> positions;
  for (int p = first; p <= last; ++p) positions.push_back(p);
  std::string text;
  for (const SetupCheck& check : FailedChecksReading(image, context, positions)) {
    text += text.empty() ? ": it fails " : "; and ";
    text += "\"" + std::string(check.message) + "\" (" + std::string(check.rule) + ")";
  }
  return text;
}

NumberShow SpeedShow(std::uint32_t period, int lowest_rpm, const std::string& name,
                     const std::string& unset_check) {
  NumberShow show{static_cast<double>(lowest_rpm), kMaxSpeedFieldRpm, std::nullopt, {}};
  if (period == 0) {
    show.mark = "Not set: the ECU holds 0, a period with no speed (it fails \"" + unset_check +
                "\"). Setting a speed writes it.";
    return show;
  }
  const double rpm = RpmFromEnginePeriod(period);
  show.value = std::round(rpm);
  if (*show.value > kMaxSpeedFieldRpm) {
    show.mark = "The ECU holds " + name + " of " + Whole(rpm) + " RPM (a period of " +
                std::to_string(period) + " us), above the " + std::to_string(kMaxSpeedFieldRpm) +
                " RPM this field takes: a change sets a speed from " + std::to_string(lowest_rpm) +
                " to " + std::to_string(kMaxSpeedFieldRpm) + " RPM.";
  }
  return show;
}

}  // namespace

std::string ChoiceMark(SetupChoice choice, const EditorState& state,
                       const CalibrationImage& image) {
  if (ShownChoice(choice, state, image) != kNoEntry) return {};
  const std::optional<SetupField> field = FindSetupField(SetupFieldOf(choice));
  if (!field) return {};
  return "The ECU holds " + HeldBytes(choice, image) + ", which no entry here stands for" +
         FailedChecksText(image, {state.sensors.map_sensor_type}, field->position,
                          field->LastPosition()) +
         ". Choosing an entry writes it.";
}

NumberShow RevLimiterShow(int limiter, const EngineSetup& setup) {
  const std::uint16_t period = limiter == 1 ? setup.rev_limit1_period : setup.rev_limit2_period;
  const std::string name = "Rev Limiter " + std::to_string(limiter);
  return SpeedShow(period, kMinRevLimitRpm, "a limiter", name + " Invalid");
}

NumberShow IdleTargetShow(std::uint32_t period) {
  return SpeedShow(period, kMinIdleTargetRpm, "an idle target", "Idle Target RPM Invalid");
}

NumberShow TriggerOffsetShow(std::uint8_t raw) {
  constexpr double kMaxDegrees = kMaxTriggerOffset / 2.0;
  NumberShow show{0.0, kMaxDegrees, TriggerOffsetFromRaw(raw), {}};
  if (raw > kMaxTriggerOffset) {
    show.mark = "The ECU holds " + std::to_string(raw) + " half degrees (" +
                std::to_string(raw / 2) + (raw % 2 ? ".5" : ".0") +
                " degrees), beyond the 60.0 this field takes (\"Trigger Offset Error\"): a "
                "change sets 0 to 60.0 degrees.";
  }
  return show;
}

NumberShow DwellShow(std::uint8_t dwell) {
  const bool charge = DwellModeOf(dwell) == 1;
  const double high = charge ? kMaxDwellValue / double{kChargeTimeTenthsPerMs} : kMaxDwellValue;
  const double value =
      charge ? DwellValueOf(dwell) / double{kChargeTimeTenthsPerMs} : DwellValueOf(dwell);
  NumberShow show{0.0, high, value, {}};
  if (dwell & kDwellUnusedBit) {
    show.value = std::nullopt;
    show.mark = "The ECU holds byte 958 = " + std::to_string(dwell) +
                ": bit 7 is set, which neither dwell control sets, so it stands for no dwell "
                "mode or value here (it fails \"Dwell Time Invalid\", 128 or more). Choosing a "
                "mode or a value writes the byte without it.";
  }
  return show;
}

double ClampInto(double value, const NumberShow& show) {
  return std::clamp(value, show.low, show.high);
}

}  // namespace vela
