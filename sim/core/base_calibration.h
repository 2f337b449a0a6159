// The base calibration the simulated ECU starts with: a four-cylinder engine on a 36-1 trigger
// wheel with a MAP sensor, 17 fuel and 6 ignition load sites. BuildBaseCalibration is the
// generator behind sim/data/base.sm1; the simulator itself loads the bytes of that file, built
// into the program, so that it never depends on the working directory.
#pragma once

#include <optional>
#include <string>

#include "calibration/calibration_image.h"

namespace vela::sim {

// Engine speeds held in the image (rev limiters, idle target) are engine periods in
// microseconds per crank revolution, the unit of the live frame's first field.
inline constexpr std::uint32_t PeriodUsOfRpm(double rpm) {
  return static_cast<std::uint32_t>(60'000'000.0 / rpm + 0.5);
}

// Fuel and ignition load sites spread evenly over this manifold pressure range, first site at
// the low end.
inline constexpr double kLoadAxisLowKpa = 20.0;
inline constexpr double kLoadAxisHighKpa = 100.0;

// RPM site spacing for RpmSitesSetup codes 0 to 3; block row r stands for (r - 1) x spacing.
inline constexpr int kRpmSiteSpacing[4] = {750, 900, 1000, 1200};
inline constexpr int kDefaultRpmSiteSpacing = 750;

CalibrationImage BuildBaseCalibration();

// The bytes of sim/data/base.sm1 as built into the program.
CalibrationImage EmbeddedBaseCalibration();

// A calibration image read from a file of exactly 1023 bytes; nullopt and a reason otherwise.
std::optional<CalibrationImage> LoadCalibrationFile(const std::string& path, std::string* error);

}  // namespace vela::sim
