// The live data set: the engine's values as the receive handlers decode them from the latest
// live frame, each with the text the live displays show. Cleared when the link is lost.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace vela {

struct LiveData {
  // Handler 1: engine speed from the revolution period (positions 6-8).
  std::uint32_t engine_period_us = 0;
  double engine_rpm = 0.0;
  std::string engine_rpm_text = "0";
  // Handler 2: injector open time (9-10).
  double injection_ms = 0.0;
  std::string injection_text = "0.00";
  // Handler 3: ignition advance (11-12).
  double ignition_advance_deg = 0.0;
  std::string ignition_text = "0.0";
  // Handler 4: manifold pressure (13-14), "Over" beyond the installed sensor's range; handler 6
  // reads the same field as boost above the atmosphere in bar, "99.99 " beyond the range.
  double map_kpa = 0.0;
  std::string map_text = "0.0";
  double boost_bar = 0.0;
  std::string boost_text = "0.00";
  // Handler 5: throttle position (15-16).
  double tps_percent = 0.0;
  std::string tps_text = "0.0";
  // Handler 7: the oxygen sensor (24-25); 0 means no reading.
  double lambda = 0.0;
  std::string lambda_text = "0.000";
  // The air-fuel read-out as the display choice shows it (`ComboAFRMode`): the ratio for the
  // chosen fuel, lambda itself, or the CO equivalent; 0 with no reading or the display off.
  double afr = 0.0;
  std::string afr_text = "0.0";
  // Handlers 8 and 14: the sites the ECU runs on (26, 28), fractions of a column and a row.
  double load_site = 0.0;
  double rpm_site = 0.0;
  // Handlers 9 and 10: the sensor readings (10-bit divider counts), fault bits, temperatures
  // (degrees C, or the sentinels of SensorTemperature) and their texts.
  std::uint16_t water_reading = 0;
  bool water_fault = false;
  double water_temp_c = 0.0;
  std::string water_temp_text;
  std::uint16_t air_reading = 0;
  bool air_fault = false;
  double air_temp_c = 0.0;
  std::string air_temp_text;
  // Handler 11: idle valve duty (23).
  double idle_valve_percent = 0.0;
  std::string idle_valve_text = "0.0";
  // Handler 12: battery (21-22).
  double battery_volts = 0.0;
  std::string battery_text = "0.00";
  // Handlers 13 and 17 to 19: the idle controller (31-33).
  int idle_step = 0;
  std::string idle_step_text = "0";
  bool idle_active = false;
  std::string idle_active_text = "OFF";
  int idle_target_rpm = 0;
  std::string idle_target_text = "0";
  // Handlers 15 and 16: throttle pump addition (29, 30), percent of the fuel.
  double throttle_pump_percent = 0.0;
  std::string throttle_pump_text = "0.0";
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
  // The version text the link shows: "ECU Firmware Ver. " and the version, so that its 19th
  // character begins the version number (a map file loaded into this ECU keeps its version).
  // Empty until a frame has arrived.
  std::string firmware_text;
  bool live_tune = false;
  std::string live_tune_text = "OFF";
  int frames_per_second = 0;
  int error_count = 0;  // fault codes the ECU holds
  int last_error = 0;   // the newest of them
  // Trailing handler: the injector duty from the injection time and engine speed, and how many
  // times the displays were refreshed since the last reset.
  double injector_duty_percent = 0.0;
  std::string injector_duty_text = "0.00";
  std::uint32_t refresh_count = 0;

  void Clear() { *this = LiveData{}; }
};

// Display texts. `separator` is the computer's decimal separator.
namespace live_text {

inline constexpr double kInjectionDisplayLimitMs = 50.0;
// The boost read-out is the manifold pressure above this, in bar.
inline constexpr double kAtmosphereKpa = 101.3;
inline constexpr double kDutyDisplayLimit = 99.99;

std::string Fixed(double value, int decimals, char separator);
std::string OnOff(bool on);
// The injector time in ms with two decimals, "Over" beyond kInjectionDisplayLimitMs.
std::string InjectionText(double milliseconds, char separator);
// The duty cycle in percent with two decimals, "99.99 " beyond kDutyDisplayLimit.
std::string DutyText(double percent, char separator);
inline constexpr std::string_view kFirmwareTextPrefix = "ECU Firmware Ver. ";
// A temperature sensor: "Error" when the ECU flags the sensor, "999" when the divider count sits
// at a rail (sensor shorted or open), ">120" beyond the hottest calibration point and "<-20"
// beyond the coldest (the temperature texts of the calibration's conversions), otherwise
// `degrees` as whole degrees.
std::string SensorTemperatureText(std::uint16_t reading, bool fault, double degrees);
// The temperature of a 10-bit divider count through the sensor's eight calibration points
// (ratio bytes, -20 to 120 C): degrees, or the sentinels of SensorTemperature.
double SensorTemperatureOf(std::uint16_t reading, const std::array<double, 8>& points);
std::string StatusText(std::uint8_t status);   // "Active" or empty
std::string FuelMapText(std::uint8_t status);  // "Fuel Map 1", "Fuel Map 2" or empty

}  // namespace live_text
}  // namespace vela
