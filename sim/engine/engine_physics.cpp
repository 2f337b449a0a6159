#include "sim/engine/engine_physics.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "calibration/map_axes.h"
#include "tune/target/target_table.h"

namespace vela::sim {

namespace {

constexpr std::array<double, 7> kOpeningUs = {1500, 1300, 1100, 950, 820, 720, 640};  // 10-16 V
constexpr std::array<double, 8> kColdNeed = {90, 60, 35, 18, 8, 0, 0, 0};  // -20 to 120 C

double Table(std::span<const double> points, double x) {
  const double at = std::clamp(x, 0.0, points.size() - 1.0);
  const auto i = std::min(static_cast<std::size_t>(at), points.size() - 2);
  return points[i] + (points[i + 1] - points[i]) * (at - static_cast<double>(i));
}

bool Number(std::string_view text, double& out) {
  const char* end = text.data() + text.size();
  auto [ptr, ec] = std::from_chars(text.data(), end, out);
  return ec == std::errc() && ptr == end && std::isfinite(out);
}

// "A-B" with A < B, both at least zero.
bool Range(std::string_view text, double& low, double& high) {
  const std::size_t dash = text.find('-', 1);
  return dash != std::string_view::npos && Number(text.substr(0, dash), low) &&
         Number(text.substr(dash + 1), high) && low >= 0 && low < high;
}

}  // namespace

double AirMgPerCycle(double rpm, double map_kpa) {
  const double kpa = std::max(map_kpa, 0.0);
  const double breathing = 0.72 + 0.26 * (1.0 - std::exp(-std::max(rpm, 0.0) / 2500.0));
  const double fuel_ms = 1.0 + 7.0 * kpa / 100.0 * breathing;
  const double target = std::round(DefaultTargetAfr(kpa) * 10.0) / 10.0;
  return kInjectorMgPerMs * fuel_ms * target;
}

double VolumetricEfficiency(double rpm, double map_kpa) {
  const double cubic_metres = kCylinderLitres / 1000.0;
  const double ideal_mg = map_kpa * 1000.0 * cubic_metres / (kAirGasConstant * kChargeKelvin) * 1e6;
  return ideal_mg > 0 ? AirMgPerCycle(rpm, map_kpa) / ideal_mg : 0.0;
}

double InjectorOpeningUs(double battery_v) { return Table(kOpeningUs, battery_v - 10.0); }

double ColdNeedPercent(double water_c) { return Table(kColdNeed, (water_c + 20.0) / 20.0); }

double SteadyManifoldKpa(double throttle_pct, double rpm) {
  const double open = std::clamp(throttle_pct, 0.0, 100.0) / 100.0;
  const double area = kIdleAirArea + std::pow(open, kThrottleExponent);
  const double demand = kPumpingArea * std::max(rpm, 0.0) / 6000.0;
  const double kpa = area + demand > 0 ? kAtmosphereKpa * area / (area + demand) : kAtmosphereKpa;
  return std::clamp(kpa, kMinManifoldKpa, kAtmosphereKpa);
}

double ThrottleForManifold(double map_kpa, double rpm) {
  const double ratio = std::clamp(map_kpa / kAtmosphereKpa, 0.0, 0.999);
  const double demand = kPumpingArea * std::max(rpm, 0.0) / 6000.0;
  const double area = demand * ratio / (1.0 - ratio);
  const double throttle_area = area - kIdleAirArea;
  if (throttle_area <= 0) return 0.0;
  return std::min(100.0 * std::pow(throttle_area, 1.0 / kThrottleExponent), 100.0);
}

std::optional<FuelError> ParseFuelError(std::string_view text) {
  const std::size_t at = text.find('@');
  const std::size_t comma = text.find(',');
  if (at == std::string_view::npos || comma == std::string_view::npos || comma < at) {
    return std::nullopt;
  }
  FuelError error;
  if (!Number(text.substr(0, at), error.percent) || error.percent <= -90 || error.percent > 200 ||
      !Range(text.substr(at + 1, comma - at - 1), error.rpm_low, error.rpm_high) ||
      !Range(text.substr(comma + 1), error.load_low, error.load_high) || error.load_high > 100) {
    return std::nullopt;
  }
  return error;
}

double FuelErrorFactorAtSite(std::span<const FuelError> errors, double rpm, double load_pct) {
  double factor = 1.0;
  for (const FuelError& e : errors) {
    if (rpm >= e.rpm_low && rpm <= e.rpm_high && load_pct >= e.load_low &&
        load_pct <= e.load_high) {
      factor *= 1.0 + e.percent / 100.0;
    }
  }
  return factor;
}

double FuelErrorFactor(std::span<const FuelError> errors, const CalibrationImage& image,
                       double rpm_site, double load_site) {
  if (errors.empty()) return 1.0;
  const std::array<int, kMapRows> rpms = RpmSites(image.Byte(FieldPos("RpmSitesSetup")));
  const int sites = image.FuelLoadSites();
  const double r = std::clamp(rpm_site, 0.0, kMapRows - 1.0);
  const double c = std::clamp(load_site, 0.0, sites - 1.0);
  const int r0 = std::min(static_cast<int>(r), kMapRows - 2);
  const int c0 = std::min(static_cast<int>(c), sites - 2);
  auto at = [&](int row, int column) {
    return FuelErrorFactorAtSite(errors, rpms[row], 100.0 * column / (sites - 1));
  };
  const double fr = r - r0;
  const double fc = c - c0;
  const double low = at(r0, c0) * (1 - fc) + at(r0, c0 + 1) * fc;
  const double high = at(r0 + 1, c0) * (1 - fc) + at(r0 + 1, c0 + 1) * fc;
  return low * (1 - fr) + high * fr;
}

}  // namespace vela::sim
