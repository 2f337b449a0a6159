// The MAP sensor set-up: the scalings of `ComboMAPScale` that each sensor type of `ComboMAP`
// offers (the catalogue is calibration/map_axes.h), and the sensor's line from pressure to the
// ECU's 0 to 4.98 V input.
//
// The type is kept in bits 0 to 2 of byte 955 (the flags of that byte are bits 5, 6 and 7), the
// scaling code in byte 956. A scaling narrows the sensor's span so that the load sites cover
// a smaller pressure range more finely; each entry's text gives the span it leaves.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "calibration/map_axes.h"

namespace vela {

// The `ComboMAPScale` entries of a sensor type (kNoEntry or an unknown type counts as type 0).
std::vector<std::string> MapScaleTexts(int sensor_type);

// The span in bar that a type and scaling entry leave: the number in the entry's text; nullopt
// when the type offers no such entry.
std::optional<double> MapSensorSpanBar(int sensor_type, int scale_entry);

// The ECU's MAP input: volts = (kPa x slope - offset) x 4.98 / span, with the sensor read as a
// straight line from 0 kPa absolute (0 V) to its span (4.98 V): slope 1, offset 0 kPa, span the
// chosen span in kPa. The ECU counts the input in 128 steps of its range.
struct MapSensorLine {
  double slope = 1.0;
  double offset_kpa = 0.0;
  double span_kpa = 100.0;
};
inline constexpr double kMapInputVolts = 4.98;
inline constexpr double kMapInputCounts = 128.0;

// The line of a type and scaling entry; nullopt when the type offers no such entry.
std::optional<MapSensorLine> MapSensorLineOf(int sensor_type, int scale_entry);

}  // namespace vela
