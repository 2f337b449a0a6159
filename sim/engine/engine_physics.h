// The engine itself, as the ECU cannot see it: how much air a cylinder takes in (from engine
// speed, manifold pressure and a volumetric efficiency surface of its own), what its injectors
// deliver, how much more fuel it needs while cold, how the manifold pressure follows the throttle,
// and the fuel errors it can be told to have against its calibration. The base calibration's
// fuel map is this engine's true map at the default target (sim/engine/true_map.h), so with no
// fuel error the calibration fuels it exactly.
#pragma once

#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "calibration/calibration_image.h"

namespace vela::sim {

// A four-cylinder engine of 1.6 litres, one injection per cylinder and cycle, of injectors
// flowing 4.0 mg of fuel a millisecond once open (the battery table's opening time is exactly
// what they take to open).
inline constexpr int kEngineCylinders = 4;
inline constexpr double kCylinderLitres = 0.4;
inline constexpr double kInjectorMgPerMs = 4.0;
inline constexpr double kStoichiometricAfr = 14.7;
inline constexpr double kAtmosphereKpa = 101.3;
// The charge is taken at a constant 40 C: the air temperature does not change the air taken in,
// so the ECU's air temperature table is left out of the fuel.
inline constexpr double kChargeKelvin = 313.15;
inline constexpr double kAirGasConstant = 287.05;  // J / (kg K)

// Air a cylinder takes in per cycle, milligrams. The engine breathes so that the base
// calibration's fuel map is its true map at the default target: air = kInjectorMgPerMs x
// (1 + 7 x kPa / 100 x (0.72 + 0.26 x (1 - e^(-RPM / 2500)))) ms x the default target at that
// manifold pressure (load in percent of a 1-bar span), rounded to one decimal as its cells are.
double AirMgPerCycle(double rpm, double map_kpa);
// The volumetric efficiency that air means: air / (kPa x the cylinder's volume / (kAirGasConstant
// x kChargeKelvin)); for showing, the model works with the air.
double VolumetricEfficiency(double rpm, double map_kpa);
// The injectors' opening time at `battery_v`, microseconds (the base calibration's battery
// table holds exactly these: 1.50 ms at 10 V down to 0.64 ms at 16 V).
double InjectorOpeningUs(double battery_v);
// Extra fuel the engine needs while cold, percent: 90 at -20 C, 60 at 0, 35 at 20, 18 at 40,
// 8 at 60, none from 80 C. A little more than the base calibration's warm-up enrichment gives,
// so a cold engine runs somewhat lean.
double ColdNeedPercent(double water_c);

// Manifold pressure: the throttle and the idle air let air in, the engine pumps it out.
// Open area = kIdleAirArea + (throttle / 100)^kThrottleExponent; demand = kPumpingArea x RPM /
// 6000; pressure = atmosphere x area / (area + demand), held to kMinManifoldKpa and more.
inline constexpr double kIdleAirArea = 0.0014;
inline constexpr double kThrottleExponent = 2.2;
inline constexpr double kPumpingArea = 0.02;
inline constexpr double kMinManifoldKpa = 20.0;
double SteadyManifoldKpa(double throttle_pct, double rpm);
// The throttle that holds `map_kpa` at `rpm` (0 to 100 %).
double ThrottleForManifold(double map_kpa, double rpm);

// "P@RPM1-RPM2,L1-L2": the engine needs P percent more fuel than the calibration gives where
// the engine speed lies in RPM1..RPM2 and the load in L1..L2 percent of the load axis's span:
// it takes in 1 + P / 100 times the air, so it needs that many times the map's injector time.
struct FuelError {
  double percent = 0;
  double rpm_low = 0;
  double rpm_high = 0;
  double load_low = 0;
  double load_high = 0;
  bool operator==(const FuelError&) const = default;
};
std::optional<FuelError> ParseFuelError(std::string_view text);

// The factor the errors put on the fuel the engine needs at a site of the calibration's grid
// (the product of 1 + P / 100 of every error whose ranges hold the site), and between sites
// read from the four around the point as the ECU reads its map. So an error holds exactly where
// all four sites lie in its ranges and fades out over the cells on its edges.
double FuelErrorFactorAtSite(std::span<const FuelError> errors, double rpm, double load_pct);
double FuelErrorFactor(std::span<const FuelError> errors, const CalibrationImage& image,
                       double rpm_site, double load_site);

}  // namespace vela::sim
