#include "sim/core/engine_model.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "sim/core/base_calibration.h"

namespace vela::sim {

namespace {

constexpr double kDt = EngineModel::kStepUs / 1e6;
constexpr int kWaterComp = 979;
constexpr double kPercentPerCount = 0.390625;  // 100 / 256

// Moves `value` toward `target` with time constant `tau_s` over one step.
double Lag(double value, double target, double tau_s) {
  return value + (target - value) * std::min(1.0, kDt / tau_s);
}

double Byte(const CalibrationImage& image, std::string_view field, int offset = 0) {
  return image.Byte(FindSetupField(field)->position + offset);
}

// Linear interpolation in eight points 20 C apart starting at -20 C.
double EightPointValue(const CalibrationImage& image, int first_position, double celsius) {
  const double x = std::clamp((celsius + 20.0) / 20.0, 0.0, 7.0);
  const int i = std::min(static_cast<int>(x), 6);
  const double a = image.Byte(first_position + i);
  const double b = image.Byte(first_position + i + 1);
  return a + (b - a) * (x - i);
}

}  // namespace

double RpmSitePosition(const CalibrationImage& image, double rpm) {
  const std::array<int, kMapRows> sites = RpmSites(image.Byte(FieldPos("RpmSitesSetup")));
  const std::vector<double> points(sites.begin(), sites.end());
  return AxisPosition(points, rpm);
}

double LoadFraction(const CalibrationImage& image, double map_kpa, double throttle_pct) {
  const LoadAxis axis = LoadAxisOfImage(image);
  const double load = axis.basis == LoadBasis::kMap ? map_kpa : throttle_pct;
  return axis.top > 0.0 ? std::clamp(load / axis.top, 0.0, 1.0) : 0.0;
}

double FuelMapUs(const CalibrationImage& image, int map, double rpm_site, double load_site) {
  const int sites = image.FuelLoadSites();
  const double r = std::clamp(rpm_site, 0.0, kMapRows - 1.0);
  const double c = std::clamp(load_site, 0.0, sites - 1.0);
  const int r0 = std::min(static_cast<int>(r), kMapRows - 2);
  const int c0 = std::min(static_cast<int>(c), sites - 2);
  auto cell = [&](int row, int column) {
    return static_cast<double>(image.Read16(image.FuelCellPosition(map, row + 1, column + 1)));
  };
  const double fr = r - r0;
  const double fc = c - c0;
  const double low = cell(r0, c0) * (1 - fc) + cell(r0, c0 + 1) * fc;
  const double high = cell(r0 + 1, c0) * (1 - fc) + cell(r0 + 1, c0 + 1) * fc;
  return low * (1 - fr) + high * fr;
}

double IgnMapDegrees(const CalibrationImage& image, double rpm_site, double load_fraction) {
  const int sites = image.IgnLoadSites();
  const double r = std::clamp(rpm_site, 0.0, kMapRows - 1.0);
  const double c = std::clamp(load_fraction, 0.0, 1.0) * (sites - 1);
  const int r0 = std::min(static_cast<int>(r), kMapRows - 2);
  const int c0 = std::min(static_cast<int>(c), sites - 2);
  auto cell = [&](int row, int column) { return image.IgnDegrees(row + 1, column + 1); };
  const double fr = r - r0;
  const double fc = c - c0;
  const double low = cell(r0, c0) * (1 - fc) + cell(r0, c0 + 1) * fc;
  const double high = cell(r0 + 1, c0) * (1 - fc) + cell(r0 + 1, c0 + 1) * fc;
  return low * (1 - fr) + high * fr;
}

std::uint16_t SensorReading(const CalibrationImage& image, int first_position, double celsius) {
  const double counts = EightPointValue(image, first_position, celsius) * 4.0;
  return static_cast<std::uint16_t>(std::clamp(std::lround(counts), 0L, 1023L));
}

double RpmOfPeriodField(std::uint32_t period_us, double fallback) {
  if (period_us == 0) return fallback;
  const double rpm = 60'000'000.0 / period_us;
  return rpm >= 300 && rpm <= 15'000 ? rpm : fallback;
}

EngineModel::EngineModel(std::uint64_t seed) : rng_(seed) {
  ambient_c_ = rng_.Range(12.0, 24.0);
  state_.water_c = ambient_c_;
  state_.air_c = ambient_c_ + 3.0;
  state_.rpm = 1100;
  state_.map_kpa = 35;
  state_.battery_v = 14.0;
  state_.idle_duty_pct = 35;
  StartPhase(Phase::kIdle);
  phase_left_s_ = 3.0;  // settle at idle first
}

void EngineModel::Step(const CalibrationImage& image) {
  const double previous_throttle = state_.throttle_pct;
  state_.elapsed_s += kDt;
  StepDriver();
  const double throttle_change = state_.throttle_pct - previous_throttle;
  StepIdle(image);
  StepSpeed(image);
  StepManifold();
  StepTemperatures();
  StepElectrics();
  StepThrottlePump(image, throttle_change);
  StepMixture(throttle_change);
  StepFuelAndSpark(image);
}

void EngineModel::StartPhase(Phase phase) {
  phase_ = phase;
  switch (phase) {
    case Phase::kIdle:
      throttle_target_ = 0;
      phase_left_s_ = rng_.Range(2.0, 6.0);
      break;
    case Phase::kCruise:
      throttle_target_ = rng_.Range(8.0, 35.0);
      phase_left_s_ = rng_.Range(2.0, 6.0);
      break;
    case Phase::kBlip:
      throttle_target_ = rng_.Range(15.0, 50.0);
      phase_left_s_ = rng_.Range(0.3, 0.8);
      break;
    case Phase::kPull:
      throttle_target_ = rng_.Range(55.0, 95.0);
      phase_left_s_ = rng_.Range(1.0, 2.5);
      break;
  }
}

void EngineModel::StepDriver() {
  phase_left_s_ -= kDt;
  if (phase_left_s_ <= 0) {
    const double pick = rng_.Uniform();
    StartPhase(pick < 0.35   ? Phase::kIdle
               : pick < 0.7  ? Phase::kCruise
               : pick < 0.85 ? Phase::kBlip
                             : Phase::kPull);
  }
  double target = throttle_target_;
  if (phase_ == Phase::kCruise) target += rng_.Range(-0.4, 0.4);  // an unsteady foot
  const double step = target - state_.throttle_pct;
  state_.throttle_pct += std::clamp(step, -200.0 * kDt, 300.0 * kDt);
  state_.throttle_pct = std::clamp(state_.throttle_pct, 0.0, 100.0);
}

void EngineModel::StepSpeed(const CalibrationImage& image) {
  const double rev_limit = RpmOfPeriodField(image.RevLimit1(), 6800);
  const double open = std::pow(state_.throttle_pct / 100.0, 0.8);
  double target = state_.idle_target_rpm + open * 5600.0;
  if (state_.throttle_pct < 1.5) {
    target += 15.0 * std::sin(2 * std::numbers::pi * state_.elapsed_s / 1.3);  // idle hunting
  }
  state_.rpm = Lag(state_.rpm, target, target > state_.rpm ? 0.35 : 0.7);
  state_.rpm += rng_.Range(-1.0, 1.0) * (6.0 + state_.rpm * 0.002);
  state_.limiter = state_.rpm >= rev_limit;
  if (state_.limiter) {
    state_.rpm = rev_limit - rng_.Range(50.0, 150.0);  // the limiter cuts fuel
  }
  state_.rpm = std::max(state_.rpm, 400.0);
}

void EngineModel::StepManifold() {
  const double open = state_.throttle_pct / 100.0;
  const double pumping = 8.0 * std::min(state_.rpm / 6000.0, 1.0) * (1.0 - open);
  const double target = 33.0 + 67.0 * std::pow(open, 0.55) - pumping;
  state_.map_kpa = Lag(state_.map_kpa, target, 0.06) + rng_.Range(-0.3, 0.3);
  state_.map_kpa = std::clamp(state_.map_kpa, 15.0, 101.3);
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

void EngineModel::StepMixture(double throttle_change) {
  double target = 1.0;
  if (state_.water_c < 50.0) target = 0.95;
  if (state_.throttle_pct > 70.0) target = 0.87;
  if (state_.throttle_pump_us > 300.0) target = 0.92;
  if (throttle_change < -1.0) target = 1.08;  // fuel cut on a closing throttle
  state_.lambda = Lag(state_.lambda, target, 0.2) + rng_.Range(-0.01, 0.01);
  state_.lambda = std::clamp(state_.lambda, 0.7, 1.3);
}

void EngineModel::StepFuelAndSpark(const CalibrationImage& image) {
  const double load = LoadFraction(image, state_.map_kpa, state_.throttle_pct);
  state_.rpm_site = RpmSitePosition(image, state_.rpm);
  state_.load_site = load * (image.FuelLoadSites() - 1);
  const double warm_up = EightPointValue(image, kWaterComp, state_.water_c) * kPercentPerCount;
  const double base_us = FuelMapUs(image, 1, state_.rpm_site, state_.load_site);
  state_.injection_us = std::min(base_us * (1.0 + warm_up / 100.0), 65'535.0);
  state_.advance_deg = IgnMapDegrees(image, state_.rpm_site, load);
}

}  // namespace vela::sim
