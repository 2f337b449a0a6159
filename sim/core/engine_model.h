// A small model of a running engine, stepped in fixed 10 ms steps so that its values depend on
// the seed and the number of steps only. A driver alternates idling, cruising, short throttle
// blips and pulls; engine speed, manifold pressure and temperatures follow with their own lags.
// Injection time and advance are looked up in the calibration image at the current RPM and load
// site, so a change written into the image shows in the next live frame.
#pragma once

#include <cstdint>

#include "calibration/calibration_image.h"
#include "sim/core/random.h"

namespace vela::sim {

struct EngineState {
  double elapsed_s = 0;
  double rpm = 0;
  double throttle_pct = 0;
  double map_kpa = 0;
  double injection_us = 0;
  double advance_deg = 0;
  double water_c = 0;
  double air_c = 0;
  double battery_v = 0;
  double lambda = 1.0;
  double idle_duty_pct = 0;
  double idle_target_rpm = 0;
  double throttle_pump_us = 0;
  double rpm_site = 0;   // zero-based position between the RPM rows, 0 to 10
  double load_site = 0;  // zero-based position between the fuel load-site columns
  bool limiter = false;
  bool fan_on = false;
  // The live frame's fault fields, which the ECU fills from the codes it holds.
  std::uint8_t error_count = 0;
  std::uint8_t last_error = 0;
};

// Lookups the ECU makes in its calibration; positions are zero-based and may fall between
// sites, in which case the neighbouring cells are blended.
double RpmSitePosition(const CalibrationImage& image, double rpm);
double LoadFraction(const CalibrationImage& image, double map_kpa, double throttle_pct);
double FuelMapUs(const CalibrationImage& image, int map, double rpm_site, double load_site);
double IgnMapDegrees(const CalibrationImage& image, double rpm_site, double load_fraction);
// A temperature sensor's reading (10-bit divider count, ratio x 1024) at `celsius`, from the
// eight calibration points (ratio x 256) starting at `first_position` (-20 to 120 C, 20 C apart).
std::uint16_t SensorReading(const CalibrationImage& image, int first_position, double celsius);
// Engine speeds held as periods (microseconds per revolution); `fallback` when out of range.
double RpmOfPeriodField(std::uint32_t period_us, double fallback);

class EngineModel {
 public:
  static constexpr std::int64_t kStepUs = 10'000;

  explicit EngineModel(std::uint64_t seed);

  void Step(const CalibrationImage& image);
  const EngineState& State() const { return state_; }

 private:
  enum class Phase { kIdle, kCruise, kBlip, kPull };

  void StepDriver();
  void StartPhase(Phase phase);
  void StepSpeed(const CalibrationImage& image);
  void StepManifold();
  void StepTemperatures();
  void StepElectrics();
  void StepIdle(const CalibrationImage& image);
  void StepThrottlePump(const CalibrationImage& image, double throttle_change);
  void StepMixture(double throttle_change);
  void StepFuelAndSpark(const CalibrationImage& image);

  Rng rng_;
  EngineState state_;
  Phase phase_ = Phase::kIdle;
  double phase_left_s_ = 0;
  double throttle_target_ = 0;
  double ambient_c_ = 20;
};

}  // namespace vela::sim
