#include "link/live/live_data.h"

#include "calibration/conversions.h"
#include "calibration/rounding.h"
#include "link/live/live_frame.h"

namespace vela::live_text {

namespace {
// A divider count within this distance of either rail is a shorted or open sensor.
constexpr std::uint16_t kSensorRailCounts = 4;
}  // namespace

std::string Fixed(double value, int decimals, char separator) {
  return FormatFixed(value, decimals, separator, nullptr);
}

std::string OnOff(bool on) { return on ? "ON" : "OFF"; }

std::string InjectionText(double milliseconds, char separator) {
  if (milliseconds > kInjectionDisplayLimitMs) return "Over";
  return Fixed(milliseconds, 2, separator);
}

std::string DutyText(double percent, char separator) {
  if (percent > kDutyDisplayLimit) return "99.99 ";
  return Fixed(percent, 2, separator);
}

std::string SensorTemperatureText(std::uint16_t reading, bool fault, double degrees) {
  if (fault) return "Error";
  if (reading < kSensorRailCounts || reading > live::kSensorReadingMask - kSensorRailCounts) {
    return "999";
  }
  if (degrees == kTemperatureBeyondHot) return ">120";
  if (degrees == kTemperatureBeyondCold) return "<-20";
  return std::to_string(static_cast<int>(RoundHalfEven(degrees)));
}

double SensorTemperatureOf(std::uint16_t reading, const std::array<double, 8>& points) {
  return SensorTemperature(reading / live::kSensorCountsPerPoint, points);
}

std::string StatusText(std::uint8_t status) {
  return (status & live::kStatusEngineActive) ? "Active" : "";
}

std::string FuelMapText(std::uint8_t status) {
  if (status & live::kStatusFuelMap2) return "Fuel Map 2";
  if (status & live::kStatusFuelMap1) return "Fuel Map 1";
  return "";
}

}  // namespace vela::live_text
