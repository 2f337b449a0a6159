// The live data set: the engine's values as the receive handlers decode them from the latest
// live frame, each with the text the live displays show. Cleared when the link is lost.
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace vela {

struct LiveData {
  // Handler 1: engine speed from the revolution period.
  std::uint32_t engine_period_us = 0;
  double engine_rpm = 0.0;
  std::string engine_rpm_text = "0";
  // Handlers 2 and 3.
  double map_kpa = 0.0;
  std::string map_text = "0.0";
  double tps_percent = 0.0;
  std::string tps_text = "0.0";
  // Handler 4: injector open time; handler 6: its share of the revolution.
  double injection_ms = 0.0;
  std::string injection_text = "0.00";
  double injector_duty_percent = 0.0;
  std::string injector_duty_text = "0.00";
  // Handler 5.
  double ignition_advance_deg = 0.0;
  std::string ignition_text = "0.0";
  // Handlers 7 and 8.
  double idle_valve_percent = 0.0;
  std::string idle_valve_text = "0.0";
  double throttle_pump_ms = 0.0;
  std::string throttle_pump_text = "0.00";
  // Handlers 9 and 10: sensor divider ratios (x 256), fault bits and temperatures.
  std::uint8_t water_ratio = 0;
  bool water_fault = false;
  std::string water_temp_text;
  std::uint8_t air_ratio = 0;
  bool air_fault = false;
  std::string air_temp_text;
  double load_site = 0.0;  // fraction of a column of the fuel map
  // Handler 11: 0 means no sensor reading.
  double lambda = 0.0;
  std::string lambda_text = "0.00";
  double afr = 0.0;
  std::string afr_text = "0.0";
  // Handler 12.
  double battery_volts = 0.0;
  std::string battery_text = "0.00";
  // Handlers 13 to 19.
  int idle_step = 0;
  double rpm_site = 0.0;  // fraction of a row of the fuel map
  int error_count = 0;
  int last_error = 0;
  std::string idle_step_text = "0";
  bool idle_active = false;
  std::string idle_active_text = "OFF";
  int idle_target_rpm = 0;
  std::string idle_target_text = "0";
  // Handlers 20 and 21: bit n = output / input n + 1.
  std::uint8_t gpo_states = 0;
  std::uint8_t gpi_states = 0;
  // Handler 22.
  std::uint8_t status = 0;
  std::string engine_status_text;
  std::string fuel_map_text;
  bool throttle_pump_active = false;
  bool limiter_active = false;
  // Handlers 24 to 28.
  int firmware_version = 0;
  int firmware_build = 0;
  std::string firmware_text = "0.0";
  bool live_tune = false;
  std::string live_tune_text = "OFF";
  int frames_per_second = 0;
  std::array<std::uint8_t, 2> spare = {0, 0};  // positions 41 and 42
  // Trailing handler: how many times the displays were refreshed since the last reset.
  std::uint32_t refresh_count = 0;

  void Clear() { *this = LiveData{}; }
};

// Display texts. `separator` is the computer's decimal separator.
namespace live_text {

inline constexpr double kInjectionDisplayLimitMs = 50.0;
inline constexpr double kDutyDisplayLimit = 99.99;

std::string Fixed(double value, int decimals, char separator);
std::string OnOff(bool on);
// The injector time in ms with two decimals, "Over" beyond kInjectionDisplayLimitMs.
std::string InjectionText(double milliseconds, char separator);
// The duty cycle in percent with two decimals, "99.99 " beyond kDutyDisplayLimit.
std::string DutyText(double percent, char separator);
// A temperature sensor: "Error" when the ECU flags the sensor, "999" when the divider sits at a
// rail (sensor shorted or open), "Over" beyond the hottest calibration point, otherwise the
// temperature through the sensor's eight calibration points (ratio bytes, -20 to 120 C).
std::string SensorTemperatureText(std::uint8_t ratio, bool fault,
                                  const std::array<double, 8>& points);
std::string StatusText(std::uint8_t status);   // "Active" or empty
std::string FuelMapText(std::uint8_t status);  // "Fuel Map 1", "Fuel Map 2" or empty

}  // namespace live_text
}  // namespace vela
