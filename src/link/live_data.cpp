#include "link/live_data.h"

#include "calibration/conversions.h"
#include "link/live_frame.h"

namespace vela::live_text {

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

std::string SensorTemperatureText(std::uint8_t ratio, bool fault,
                                  const std::array<double, 8>& points) {
  if (fault) return "Error";
  if (ratio == 0 || ratio == 255) return "999";
  std::string text = TemperatureText(ratio, points);
  return text == ">120" ? "Over" : text;
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
