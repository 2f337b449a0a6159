#include "link/live/live_data.h"

#include "calibration/conversions.h"
#include "link/live/live_frame.h"

namespace vela::live {

double SensorTemperatureOf(std::uint16_t reading, const std::array<double, 8>& points) {
  return SensorTemperature(reading / kSensorCountsPerPoint, points);
}

}  // namespace vela::live
