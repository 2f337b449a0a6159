// A small model of a running engine and of the ECU fuelling it, stepped in fixed 10 ms steps so
// that its values depend on the seed and the number of steps only. A driver (drive_cycle.h)
// idles it from cold and drives it across the map; engine speed, manifold pressure and
// temperatures follow with their own lags. Every step the ECU reads its calibration image at the
// operating point (ecu_fuel.h), so a cell written into the image fuels the very next step; the
// engine burns what the injectors deliver against the air it takes in (engine_physics.h), and
// the wideband reads the mixture after the exhaust's transport delay (wideband.h).
#pragma once

#include <cstdint>
#include <vector>

#include "calibration/calibration_image.h"
#include "sim/core/random.h"
#include "sim/engine/drive_cycle.h"
#include "sim/engine/ecu_fuel.h"
#include "sim/engine/engine_physics.h"
#include "sim/engine/wideband.h"

namespace vela::sim {

struct EngineState {
  double elapsed_s = 0;
  double rpm = 0;
  double throttle_pct = 0;
  double map_kpa = 0;  // as the ECU's sensor reads it
  double injection_us = 0;
  double advance_deg = 0;
  double water_c = 0;
  double air_c = 0;
  double battery_v = 0;
  double lambda = 1.0;  // the wideband's reading, as the live frame carries it
  double idle_duty_pct = 0;
  double idle_target_rpm = 0;
  double throttle_pump_us = 0;
  double rpm_site = 0;   // zero-based position between the RPM rows, 0 to 10
  double load_site = 0;  // zero-based position between the fuel load-site columns
  double load_pct = 0;   // load in percent of the load axis's span
  bool limiter = false;
  bool fan_on = false;
  // Fuel cut on a closing throttle at speed (the injection time is then 0).
  bool decel_cut = false;
  // What the engine knows and the program does not: the mixture leaving the cylinders now
  // (infinity with no fuel), the transport delay to the sensor now, the fuel error's factor.
  double exhaust_lambda = 1.0;
  double delay_s = 0;
  double fuel_error_factor = 1.0;
  DrivePhase phase = DrivePhase::kIdle;
  // The live frame's fault fields, which the ECU fills from the codes it holds.
  std::uint8_t error_count = 0;
  std::uint8_t last_error = 0;
};

class EngineModel {
 public:
  static constexpr std::int64_t kStepUs = 10'000;

  explicit EngineModel(std::uint64_t seed, std::vector<FuelError> fuel_errors = {});

  void Step(const CalibrationImage& image);
  const EngineState& State() const { return state_; }

 private:
  double StepThrottle(const DriverWish& wish);
  void StepSpeed(const CalibrationImage& image, const DriverWish& wish);
  void StepManifold();
  void StepTemperatures();
  void StepElectrics();
  void StepIdle(const CalibrationImage& image);
  void StepThrottlePump(const CalibrationImage& image, double throttle_change);
  void StepDecelCut();
  void StepFuelAndSpark(const CalibrationImage& image);
  void StepCombustion(const CalibrationImage& image, double manifold_rise_kpa);

  Rng rng_;
  DriveCycle driver_;
  Wideband wideband_;
  std::vector<FuelError> fuel_errors_;
  EngineState state_;
  double manifold_kpa_ = 35;  // the true pressure, without the sensor's noise
  double film_ = 0;           // fuel the port walls take up after a rise in load, a fraction
  double ambient_c_ = 20;
};

}  // namespace vela::sim
