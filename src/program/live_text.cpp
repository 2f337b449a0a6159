#include "program/live_text.h"

#include "calibration/conversions.h"
#include "calibration/rounding.h"
#include "link/live/live_frame.h"
#include "program/afr_display.h"

namespace vela {

namespace {

// A divider count within this distance of either rail is a shorted or open sensor.
constexpr std::uint16_t kSensorRailCounts = 4;

// The quantities that are a number with fixed decimals and nothing else.
struct FixedQuantity {
  LiveQuantity quantity;
  double LiveData::*value;
  int decimals;
};
constexpr FixedQuantity kFixedQuantities[] = {
    {LiveQuantity::kEngineRpm, &LiveData::engine_rpm, 0},
    {LiveQuantity::kIgnition, &LiveData::ignition_advance_deg, 1},
    {LiveQuantity::kTps, &LiveData::tps_percent, 1},
    {LiveQuantity::kIdleValve, &LiveData::idle_valve_percent, 1},
    {LiveQuantity::kBattery, &LiveData::battery_volts, 2},
    {LiveQuantity::kThrottlePump, &LiveData::throttle_pump_percent, 1},
};

std::string EngineStatusText(std::uint8_t status) {
  return (status & live::kStatusEngineActive) ? "Active" : "";
}

std::string FuelMapText(std::uint8_t status) {
  if (status & live::kStatusFuelMap2) return "Fuel Map 2";
  if (status & live::kStatusFuelMap1) return "Fuel Map 1";
  return "";
}

// The quantities with a text of their own beyond a limit or for a state.
std::string MarkedText(const LiveData& live, LiveQuantity quantity, const LiveTextStyle& style) {
  const char sep = style.separator;
  switch (quantity) {
    case LiveQuantity::kInjection:
      if (live.injection_ms > kInjectionDisplayLimitMs) return std::string(kOverText);
      return FixedText(live.injection_ms, 2, sep);
    case LiveQuantity::kInjectorDuty:
      if (live.injector_duty_percent > kDutyDisplayLimit) return std::string(kCappedText);
      return FixedText(live.injector_duty_percent, 2, sep);
    case LiveQuantity::kMap:
      return live.map_over_range ? std::string(kOverText) : FixedText(live.map_kpa, 1, sep);
    case LiveQuantity::kBoost:
      if (live.map_over_range || live.boost_bar > live::kBoostDisplayLimitBar) {
        return std::string(kCappedText);
      }
      return FixedText(live.boost_bar, 2, sep);
    case LiveQuantity::kAfr:
      return AfrText(live.lambda, style.afr_mode, sep);
    case LiveQuantity::kWaterTemp:
      return SensorTemperatureText(live.water_reading, live.water_fault, live.water_temp_c);
    case LiveQuantity::kAirTemp:
      return SensorTemperatureText(live.air_reading, live.air_fault, live.air_temp_c);
    case LiveQuantity::kEngineStatus:
      return EngineStatusText(live.status);
    case LiveQuantity::kFuelMap:
      return FuelMapText(live.status);
    default:
      return "";
  }
}

}  // namespace

std::string LiveText(const LiveData& live, LiveQuantity quantity, const LiveTextStyle& style) {
  for (const FixedQuantity& fixed : kFixedQuantities) {
    if (fixed.quantity == quantity) {
      return FixedText(live.*fixed.value, fixed.decimals, style.separator);
    }
  }
  return MarkedText(live, quantity, style);
}

std::string FixedText(double value, int decimals, char separator) {
  return FormatFixed(value, decimals, separator, nullptr);
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

}  // namespace vela
