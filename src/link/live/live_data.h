// The live data set: the engine's values as the receive handlers decode them from the latest
// live frame, as numbers and flags; the pages and read-outs make their texts (LiveText).
// Cleared when the link is lost.
#pragma once

#include <array>
#include <cstdint>

namespace vela {

struct LiveData {
  // Handler 1: engine speed from the revolution period (positions 6-8).
  std::uint32_t engine_period_us = 0;
  double engine_rpm = 0.0;
  // Handler 2: injector open time (9-10).
  double injection_ms = 0.0;
  // Handler 3: ignition advance (11-12).
  double ignition_advance_deg = 0.0;
  // Handler 4: manifold pressure (13-14), and whether it lies beyond the installed sensor's
  // range (the read-outs then show no number); handler 6 reads the same field as boost above the
  // atmosphere in bar.
  double map_kpa = 0.0;
  bool map_over_range = false;
  double boost_bar = 0.0;
  // Handler 5: throttle position (15-16).
  double tps_percent = 0.0;
  // Handler 7: the oxygen sensor (24-25); 0 means no reading.
  double lambda = 0.0;
  // The air-fuel value in the display mode the tuner chose: the ratio for the chosen fuel,
  // lambda itself, or the CO equivalent; 0 with no reading or the display off.
  double afr = 0.0;
  // Handlers 8 and 14: the sites the ECU runs on (26, 28), fractions of a column and a row.
  double load_site = 0.0;
  double rpm_site = 0.0;
  // Handlers 9 and 10: the sensor readings (10-bit divider counts), fault bits, temperatures
  // (degrees C, or the sentinels of SensorTemperature).
  std::uint16_t water_reading = 0;
  bool water_fault = false;
  double water_temp_c = 0.0;
  std::uint16_t air_reading = 0;
  bool air_fault = false;
  double air_temp_c = 0.0;
  // Handler 11: idle valve duty (23).
  double idle_valve_percent = 0.0;
  // Handler 12: battery (21-22).
  double battery_volts = 0.0;
  // Handlers 13 and 17 to 19: the idle controller (31-33).
  int idle_step = 0;
  bool idle_active = false;
  int idle_target_rpm = 0;
  // Handlers 15 and 16: throttle pump addition (29, 30), percent of the fuel.
  double throttle_pump_percent = 0.0;
  // Handlers 20 and 21: bit n = output / input n + 1.
  std::uint8_t gpo_states = 0;
  std::uint8_t gpi_states = 0;
  // Handler 22.
  std::uint8_t status = 0;
  bool throttle_pump_active = false;
  bool limiter_active = false;
  // Handlers 24 to 28.
  int firmware_version = 0;
  int firmware_build = 0;
  bool live_tune = false;
  int frames_per_second = 0;
  int error_count = 0;  // fault codes the ECU holds
  int last_error = 0;   // the newest of them
  // Trailing handler: the injector duty from the injection time and engine speed, and how many
  // times the displays were refreshed since the last reset (0: no frame has arrived since).
  double injector_duty_percent = 0.0;
  std::uint32_t refresh_count = 0;

  void Clear() { *this = LiveData{}; }
};

namespace live {

// The boost read-out is the manifold pressure above this, in bar.
inline constexpr double kAtmosphereKpa = 101.3;
// Boost beyond this many bar has no number on the read-outs.
inline constexpr double kBoostDisplayLimitBar = 99.99;

// The temperature of a 10-bit divider count through the sensor's eight calibration points
// (ratio bytes, -20 to 120 C): degrees, or the sentinels of SensorTemperature.
double SensorTemperatureOf(std::uint16_t reading, const std::array<double, 8>& points);

}  // namespace live
}  // namespace vela
