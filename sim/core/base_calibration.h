// The base calibration the simulated ECU starts with: a four-cylinder engine on a 36-1 trigger
// wheel with a MAP sensor, 17 fuel and 6 ignition load sites. BuildBaseCalibration is the
// generator behind sim/data/base.sm1; the simulator itself loads the bytes of that file, built
// into the program, so that it never depends on the working directory.
#pragma once

#include <optional>
#include <string>

#include "calibration/calibration_image.h"
#include "calibration/map_axes.h"

namespace vela::sim {

// Engine speeds held in the image (rev limiters, idle target) are engine periods in
// microseconds per crank revolution, the unit of the live frame's first field.
inline constexpr std::uint32_t PeriodUsOfRpm(double rpm) {
  return static_cast<std::uint32_t>(60'000'000.0 / rpm + 0.5);
}

// The ECU reads its maps on the axes the program labels them with (calibration/map_axes.h):
// the RPM sites of byte 946 and the load sites of byte 955's load sensing and byte 956's MAP
// scaling, on the MAP sensor type the image names.
int MapSensorTypeOf(const CalibrationImage& image);
LoadAxis LoadAxisOfImage(const CalibrationImage& image);

CalibrationImage BuildBaseCalibration();

// The bytes of sim/data/base.sm1 as built into the program.
CalibrationImage EmbeddedBaseCalibration();

// A calibration image read from a file of exactly 1023 bytes; nullopt and a reason otherwise.
std::optional<CalibrationImage> LoadCalibrationFile(const std::string& path, std::string* error);

}  // namespace vela::sim
