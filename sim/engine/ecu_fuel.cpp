#include "sim/engine/ecu_fuel.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "sim/core/base_calibration.h"

namespace vela::sim {

namespace {

constexpr int kWaterComp = 979;
constexpr int kBattComp = 999;
constexpr int kBattRows = 7;  // 10 to 16 V
constexpr double kBattLowestVolts = 10.0;
constexpr double kUsPerBattCount = 10.0;
constexpr double kPercentPerCount = 0.390625;  // 100 / 256

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

double WaterCompPercent(const CalibrationImage& image, double water_c) {
  return EightPointValue(image, kWaterComp, water_c) * kPercentPerCount;
}

double OpeningTimeUs(const CalibrationImage& image, double battery_v) {
  const double x = std::clamp(battery_v - kBattLowestVolts, 0.0, kBattRows - 1.0);
  const int i = std::min(static_cast<int>(x), kBattRows - 2);
  const double a = image.Byte(kBattComp + i);
  const double b = image.Byte(kBattComp + i + 1);
  return (a + (b - a) * (x - i)) * kUsPerBattCount;
}

EcuInjection InjectionAt(const CalibrationImage& image, double rpm_site, double load_site,
                         double water_c, double battery_v, double pump_us, bool cut) {
  EcuInjection fuel;
  fuel.map_us = FuelMapUs(image, 1, rpm_site, load_site);
  fuel.water_pct = WaterCompPercent(image, water_c);
  fuel.opening_us = OpeningTimeUs(image, battery_v);
  fuel.pump_us = pump_us;
  if (!cut) {
    const double total =
        fuel.map_us * (1.0 + fuel.water_pct / 100.0) + fuel.opening_us + fuel.pump_us;
    fuel.total_us = std::min(total, 65'535.0);
  }
  return fuel;
}

}  // namespace vela::sim
