#include "editors/setup/setup_notes.h"

#include <cmath>
#include <cstdio>

#include "calibration/conversions.h"
#include "editors/setup/setup_editor.h"
#include "editors/setup/setup_options.h"

namespace vela {

namespace {

constexpr int kHomeDisabled = 0;
constexpr int kSparkCoilPerCylinder = 2;
constexpr int kImpedanceLow = 0;
constexpr int kImpedanceHigh = 2;
constexpr double kLongChargeMs = 5.0;
constexpr double kLongDutyChargeMs = 6.0;
constexpr double kDefaultIdleRpm = 1000.0;

std::string Rpm(double rpm) {
  char text[32];
  std::snprintf(text, sizeof text, "%.0f", rpm);
  return text;
}

std::string Ms(double ms) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f", ms);
  return text;
}

std::string LimiterAboveRange(int limiter, std::uint16_t period, int top) {
  const double rpm = RpmFromEnginePeriod(period);
  if (period == 0 || std::lround(rpm) <= top) return {};
  return "Rev Limiter " + std::to_string(limiter) + " (" + Rpm(rpm) +
         " RPM) is above the maps' RPM range, which ends at " + std::to_string(top) +
         " RPM: above it the engine runs on the top row's fuel and timing.";
}

}  // namespace

std::string RevLimiterNote(const EngineSetup& setup) {
  if (setup.rpm_sites_code < 0 ||
      setup.rpm_sites_code >= static_cast<int>(kRpmSiteRangeTop.size())) {
    return {};
  }
  const int top = kRpmSiteRangeTop[static_cast<std::size_t>(setup.rpm_sites_code)];
  std::string note = LimiterAboveRange(1, setup.rev_limit1_period, top);
  const std::string second = LimiterAboveRange(2, setup.rev_limit2_period, top);
  if (!note.empty() && !second.empty()) note += " ";
  return note + second;
}

std::string InjectionNote(const EngineSetup& setup) {
  if (setup.fuel_mode != kFuelModeSequential || setup.home_pattern != kHomeDisabled) return {};
  return "Sequential injection without a home position: the ECU cannot tell the strokes apart "
         "and injects un-phased. Choose a home position for full sequential injection.";
}

std::string SparkModeNote(const EngineSetup& setup) {
  if (setup.spark_mode != kSparkCoilPerCylinder || setup.home_pattern != kHomeDisabled) return {};
  return "Coil per cylinder without a home position: a coil can fire on the wrong stroke. "
         "Choose a home position before running the engine.";
}

std::string ImpedanceNote(const EngineSetup& setup) {
  if (setup.injector_impedance == kImpedanceHigh) {
    return "High: only for injectors of about 12 ohms or more. Low resistance injectors on "
           "this drive overheat the ECU's injector drivers.";
  }
  if (setup.injector_impedance == kImpedanceLow) {
    return "Low: peak-and-hold drive for injectors of about 0.5 to 3 ohms. Check the "
           "injectors' resistance before running.";
  }
  return {};
}

std::optional<double> DutyChargeTimeMs(const EngineSetup& setup, double rpm) {
  if (setup.cylinders_code < 0 ||
      setup.cylinders_code >= static_cast<int>(kCylinderCounts.size()) || !(rpm > 0.0)) {
    return std::nullopt;
  }
  const int cylinders = kCylinderCounts[static_cast<std::size_t>(setup.cylinders_code)];
  double sparks_per_coil = 0;  // sparks each coil gives in one engine cycle
  switch (setup.spark_mode) {
    case 0:
      sparks_per_coil = cylinders;
      break;
    case 1:
      sparks_per_coil = 2;
      break;
    case 2:
      sparks_per_coil = 1;
      break;
    case 3:
      sparks_per_coil = std::max(cylinders / 2, 1);
      break;
    default:
      return std::nullopt;
  }
  const double interval_ms = kMsRpmPerEngineCycle / rpm / sparks_per_coil;
  return interval_ms * DwellValueOf(setup.dwell) / 100.0;
}

std::string DwellNote(const EngineSetup& setup, const IdleControl& idle) {
  if (DwellModeOf(setup.dwell) == 1) {
    const double ms = DwellValueOf(setup.dwell) / 10.0;
    if (ms <= kLongChargeMs) return {};
    return "A charge time of " + Ms(ms) +
           " ms is long for most coils and can overheat coils and igniters (most want 2.5 to "
           "4 ms).";
  }
  const double rpm =
      idle.IdleTargetRpm != 0 ? RpmFromEnginePeriod(idle.IdleTargetRpm) : kDefaultIdleRpm;
  const std::optional<double> ms = DutyChargeTimeMs(setup, rpm);
  if (!ms || *ms <= kLongDutyChargeMs) return {};
  return "At " + Rpm(rpm) + " RPM this duty charges each coil for " + Ms(*ms) +
         " ms: long charges overheat coils and igniters (most want 2.5 to 4 ms). Constant "
         "Charge Time avoids it.";
}

std::string_view InjectionModeName(const EngineSetup& setup) {
  switch (setup.fuel_mode) {
    case 0:
    case 1:
      return kInjectionModeNames[static_cast<std::size_t>(setup.fuel_mode)];
    case kFuelModeSequential:
      if (setup.home_pattern == kHomeDisabled) return kInjectionModeNames[2];
      if (setup.home_pattern > 0 &&
          setup.home_pattern < static_cast<int>(kHomePatternTexts.size())) {
        return kInjectionModeNames[3];
      }
      return kUnknownInjectionMode;
    default:
      return kUnknownInjectionMode;
  }
}

std::string LoadSitesNote() {
  return "A change of the load sites does not convert the maps: the ECU reads the same map "
         "bytes in the new layout. Re-tune, or load a map made for it, before running.";
}

}  // namespace vela
