// What the ECU computes from its calibration at an operating point: where the point lies between
// the map's sites, the fuel map's injector time read between the four cells around it, the
// ignition advance, and the compensations it applies on top (the water temperature's warm-up
// enrichment and the injectors' opening time by battery volts). The engine model asks these
// every step, so a cell written into the image shows in the very next injection.
#pragma once

#include <cstdint>

#include "calibration/calibration_image.h"

namespace vela::sim {

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

// The warm-up enrichment of the water table (bytes 979 to 986, -20 to 120 C), percent of the
// map's fuel added, read between its points.
double WaterCompPercent(const CalibrationImage& image, double water_c);
// The injector opening time the battery table adds (bytes 999 to 1005 for 10 to 16 V, 10 us a
// count), read between its rows and held at its ends.
double OpeningTimeUs(const CalibrationImage& image, double battery_v);

// The ECU cuts fuel on a closed throttle (below kDecelCutThrottlePct) while the engine runs
// more than kDecelCutAboveIdle over its idle target, and fuels again once it falls to
// kDecelCutResumeAboveIdle over the target or the throttle opens.
inline constexpr double kDecelCutThrottlePct = 1.0;
inline constexpr double kDecelCutAboveIdle = 700.0;
inline constexpr double kDecelCutResumeAboveIdle = 350.0;

// One injection as the ECU makes it.
struct EcuInjection {
  double map_us = 0;      // the fuel map, read between the four cells around the point
  double water_pct = 0;   // warm-up enrichment, percent of the map's fuel
  double opening_us = 0;  // the battery table's opening time
  double pump_us = 0;     // throttle pump addition
  double total_us = 0;    // what the injector is held open for (0 while fuel is cut)
};

// map x (1 + water / 100) + opening + pump, or nothing at all when `cut`.
EcuInjection InjectionAt(const CalibrationImage& image, double rpm_site, double load_site,
                         double water_c, double battery_v, double pump_us, bool cut);

}  // namespace vela::sim
