// The texts the pages and read-outs show for the live values. The link delivers numbers and
// flags (LiveData); every page that shows a live value asks LiveText for it, so that a value
// reads the same wherever it appears.
#pragma once

#include <string>
#include <string_view>

#include "link/live/live_data.h"

namespace vela {

enum class LiveQuantity {
  kEngineRpm,     // whole RPM
  kInjection,     // ms, two decimals; kOverText beyond kInjectionDisplayLimitMs
  kInjectorDuty,  // %, two decimals; kCappedText beyond kDutyDisplayLimit
  kIgnition,      // degrees, one decimal
  kMap,           // kPa, one decimal; kOverText beyond the sensor's range
  kBoost,         // bar, two decimals; kCappedText beyond the sensor's range or the boost limit
  kTps,           // %, one decimal
  kAfr,           // AfrText of the lambda in the display mode
  kWaterTemp,     // SensorTemperatureText
  kAirTemp,
  kIdleValve,     // %, one decimal
  kBattery,       // V, two decimals
  kThrottlePump,  // %, one decimal
  kEngineStatus,  // "Active" or empty
  kFuelMap,       // "Fuel Map 1", "Fuel Map 2" or empty; stays last
};
inline constexpr int kLiveQuantityCount = static_cast<int>(LiveQuantity::kFuelMap) + 1;

struct LiveTextStyle {
  char separator = '.';  // the computer's decimal separator
  int afr_mode = 0;      // the air-fuel display choice (kAfrModeTexts)
};

inline constexpr double kInjectionDisplayLimitMs = 50.0;
inline constexpr double kDutyDisplayLimit = 99.99;
inline constexpr std::string_view kOverText = "Over";
inline constexpr std::string_view kCappedText = "99.99 ";  // with its blank

std::string LiveText(const LiveData& live, LiveQuantity quantity, const LiveTextStyle& style);

// `value` rounded to `decimals` places (a half to the even neighbour) with `separator`.
std::string FixedText(double value, int decimals, char separator);

// A temperature sensor: "Error" when the ECU flags the sensor, "999" when the divider count sits
// at a rail (sensor shorted or open), ">120" beyond the hottest calibration point and "<-20"
// beyond the coldest (the sentinels of SensorTemperature), otherwise whole degrees.
std::string SensorTemperatureText(std::uint16_t reading, bool fault, double degrees);

}  // namespace vela
