#include "sim/core/engine_model.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "sim/core/base_calibration.h"

namespace vela::sim {

namespace {

constexpr double kDt = EngineModel::kStepUs / 1e6;
constexpr double kPercentPerCount = 0.390625;  // 100 / 256
// Wall wetting: a rise in manifold pressure of one atmosphere a second makes the port walls take
// up kFilmGain of the fuel, fading with time constant kFilmTauS.
constexpr double kFilmGain = 0.05;
constexpr double kFilmTauS = 0.25;
constexpr double kManifoldTauS = 0.06;
constexpr double kSensorNoiseLambda = 0.003;

// Moves `value` toward `target` with time constant `tau_s` over one step.
double Lag(double value, double target, double tau_s) {
  return value + (target - value) * std::min(1.0, kDt / tau_s);
}

double Byte(const CalibrationImage& image, std::string_view field, int offset = 0) {
  return image.Byte(FindSetupField(field)->position + offset);
}

}  // namespace

EngineModel::EngineModel(std::uint64_t seed, std::vector<FuelError> fuel_errors)
    : rng_(seed), driver_(seed), wideband_(kDt, 1.0), fuel_errors_(std::move(fuel_errors)) {
  ambient_c_ = rng_.Range(12.0, 24.0);
  state_.water_c = ambient_c_;
  state_.air_c = ambient_c_ + 3.0;
  state_.rpm = 1100;
  state_.map_kpa = manifold_kpa_;
  state_.battery_v = 14.0;
  state_.idle_duty_pct = 35;
}

void EngineModel::Step(const CalibrationImage& image) {
  const double previous_manifold = manifold_kpa_;
  state_.elapsed_s += kDt;
  const DriverWish wish = driver_.Step(
      kDt, {state_.rpm, state_.throttle_pct, state_.idle_target_rpm, state_.idle_duty_pct});
  state_.phase = wish.phase;
  const double throttle_change = StepThrottle(wish);
  StepIdle(image);
  StepSpeed(image, wish);
  StepManifold();
  StepTemperatures();
  StepElectrics();
  StepThrottlePump(image, throttle_change);
  StepDecelCut();
  StepFuelAndSpark(image);
  StepCombustion(image, manifold_kpa_ - previous_manifold);
}

double EngineModel::StepThrottle(const DriverWish& wish) {
  const double before = state_.throttle_pct;
  const double most = wish.throttle_rate * kDt;
  state_.throttle_pct += std::clamp(wish.throttle_pct - before, -most, most);
  state_.throttle_pct = std::clamp(state_.throttle_pct, 0.0, 100.0);
  return state_.throttle_pct - before;
}

void EngineModel::StepSpeed(const CalibrationImage& image, const DriverWish& wish) {
  const double rev_limit = RpmOfPeriodField(image.RevLimit1(), 6800);
  if (wish.phase == DrivePhase::kIdle) {
    double target = state_.idle_target_rpm;
    target += 15.0 * std::sin(2 * std::numbers::pi * state_.elapsed_s / 1.3);  // idle hunting
    state_.rpm = Lag(state_.rpm, target, target > state_.rpm ? 0.35 : 0.7);
  } else {
    const double most = wish.rpm_rate * kDt;
    state_.rpm += std::clamp(wish.rpm - state_.rpm, -most, most);
  }
  state_.rpm += rng_.Range(-1.0, 1.0) * (6.0 + state_.rpm * 0.002);
  state_.limiter = state_.rpm >= rev_limit;
  if (state_.limiter) {
    state_.rpm = rev_limit - rng_.Range(50.0, 150.0);  // the limiter cuts fuel
  }
  state_.rpm = std::max(state_.rpm, 400.0);
}

void EngineModel::StepManifold() {
  const double target = SteadyManifoldKpa(state_.throttle_pct, state_.rpm);
  manifold_kpa_ = Lag(manifold_kpa_, target, kManifoldTauS);
  state_.map_kpa = std::clamp(manifold_kpa_ + rng_.Range(-0.3, 0.3), 15.0, kAtmosphereKpa);
}

void EngineModel::StepTemperatures() {
  const double thermostat = 88.0 + 1.5 * std::sin(state_.elapsed_s / 40.0);
  const double rate = 0.008 + 0.02 * std::min(state_.rpm / 6000.0, 1.0);
  if (state_.water_c < thermostat) {
    state_.water_c += (thermostat + 5.0 - state_.water_c) * rate * kDt;
  } else {
    state_.water_c = Lag(state_.water_c, thermostat, 20.0);
  }
  if (state_.water_c >= 89.5) state_.fan_on = true;
  if (state_.water_c < 88.0) state_.fan_on = false;
  const double air_target = ambient_c_ + 4.0 + 3.0 * std::sin(state_.elapsed_s / 90.0);
  state_.air_c = Lag(state_.air_c, air_target, 30.0);
}

void EngineModel::StepElectrics() {
  const double ripple = 0.12 * std::sin(2 * std::numbers::pi * state_.elapsed_s / 0.73);
  const double volts = 14.0 + ripple + rng_.Range(-0.05, 0.05);
  state_.battery_v = std::clamp(volts, 13.8, 14.2);
}

void EngineModel::StepIdle(const CalibrationImage& image) {
  const double cold = std::clamp((60.0 - state_.water_c) / 80.0, 0.0, 1.0);
  state_.idle_target_rpm = RpmOfPeriodField(image.IdleTargetRpm(), 900) + 400.0 * cold;
  double low = Byte(image, "IdleMinMax") / 2.55;
  double high = Byte(image, "IdleMinMax", 1) / 2.55;
  if (low > high) std::swap(low, high);
  double duty = state_.idle_duty_pct;
  if (state_.throttle_pct < 1.5) {
    duty += (state_.idle_target_rpm - state_.rpm) * 0.02 * kDt + rng_.Range(-0.05, 0.05);
  } else {
    duty = Lag(duty, low + 10.0, 0.5);  // hold some air open for the throttle's return
  }
  state_.idle_duty_pct = std::clamp(duty, low, high);
}

void EngineModel::StepThrottlePump(const CalibrationImage& image, double throttle_change) {
  const double increase = Byte(image, "ThrottlePumpValues", 0) * kPercentPerCount;
  const double decay = Byte(image, "ThrottlePumpValues", 1) * kPercentPerCount;
  const double dead_band = Byte(image, "ThrottlePumpValues", 2) * kPercentPerCount;
  // " De-activate Over" on a throttle basis: throttle percent x 10.23, as the editor stores it.
  const double off_above = Byte(image, "Setting951") / 10.23;
  double pump = state_.throttle_pump_us * (1.0 - decay / 100.0 * 0.3);
  if (throttle_change > dead_band && state_.throttle_pct <= off_above) {
    pump += (throttle_change - dead_band) * increase * 6.0;
  }
  state_.throttle_pump_us = pump < 20.0 ? 0.0 : std::min(pump, 10'000.0);
}

void EngineModel::StepDecelCut() {
  const double over_idle = state_.rpm - state_.idle_target_rpm;
  const bool closed = state_.throttle_pct < kDecelCutThrottlePct;
  state_.decel_cut = state_.decel_cut ? closed && over_idle >= kDecelCutResumeAboveIdle
                                      : closed && over_idle > kDecelCutAboveIdle;
}

void EngineModel::StepFuelAndSpark(const CalibrationImage& image) {
  const double load = LoadFraction(image, state_.map_kpa, state_.throttle_pct);
  state_.load_pct = 100.0 * load;
  state_.rpm_site = RpmSitePosition(image, state_.rpm);
  state_.load_site = load * (image.FuelLoadSites() - 1);
  const bool cut = state_.decel_cut || state_.limiter;
  state_.injection_us = InjectionAt(image, state_.rpm_site, state_.load_site, state_.water_c,
                                    state_.battery_v, state_.throttle_pump_us, cut)
                            .total_us;
  state_.advance_deg = IgnMapDegrees(image, state_.rpm_site, load);
}

void EngineModel::StepCombustion(const CalibrationImage& image, double manifold_rise_kpa) {
  const double rise_per_s = std::max(manifold_rise_kpa, 0.0) / kAtmosphereKpa / kDt;
  film_ = Lag(film_, kFilmGain * rise_per_s, kFilmTauS);
  state_.fuel_error_factor =
      FuelErrorFactor(fuel_errors_, image, state_.rpm_site, state_.load_site);
  const double air_mg = AirMgPerCycle(state_.rpm, manifold_kpa_) * state_.fuel_error_factor;
  const double open_ms =
      std::max(state_.injection_us - InjectorOpeningUs(state_.battery_v), 0.0) / 1000.0;
  const double burnt_mg = open_ms * kInjectorMgPerMs /
                          ((1.0 + ColdNeedPercent(state_.water_c) / 100.0) * (1.0 + film_));
  state_.exhaust_lambda = burnt_mg > 0 ? air_mg / (burnt_mg * kStoichiometricAfr)
                                       : std::numeric_limits<double>::infinity();
  const double reading = wideband_.Step(state_.exhaust_lambda, state_.rpm, state_.load_pct);
  state_.delay_s = wideband_.DelayS();
  state_.lambda = std::clamp(reading + rng_.Range(-kSensorNoiseLambda, kSensorNoiseLambda),
                             kSensorMinLambda, kSensorMaxLambda);
}

}  // namespace vela::sim
