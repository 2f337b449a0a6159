// The driver of the simulated engine: a drive that visits most of the fuel map and warms the
// engine from cold. After kOpeningIdleS of idling from cold it works through a lattice of
// cruise points (engine speeds kCruiseRpmLow to kCruiseRpmHigh in steps of kCruiseRpmStep, loads
// kCruiseLoadLow to kCruiseLoadHigh percent of a 1-bar span in steps of kCruiseLoadStep), in an
// order shuffled by the seed and again after each round. It holds somewhere about each point
// (within half a step either way, drawn by the seed: no driver holds round numbers) steadily
// for 3 to 5 s, then, by the seed's draw: a tip-in (25 to 60 % more throttle, quickly, for 1 to 2
// s; 25 %), a steady pull (fixed throttle for 50 to 100 % load, the engine speed rising 500 to 900
// RPM a second to 6,000 to 6,900 RPM, which now and then meets the rev limiter; 20 %), a lift-off
// to idle (decel, 25 %), or straight on to the next point. A pull always ends in a lift-off; a
// lift-off idles 2 to 4 s. The engine speed follows the driver's wish at a limited rate, as if the
// driver chose the gear.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "sim/core/random.h"

namespace vela::sim {

inline constexpr double kOpeningIdleS = 20.0;
inline constexpr double kCruiseRpmLow = 1000.0;
inline constexpr double kCruiseRpmHigh = 6500.0;
inline constexpr double kCruiseRpmStep = 500.0;
inline constexpr double kCruiseLoadLow = 20.0;
inline constexpr double kCruiseLoadHigh = 100.0;
inline constexpr double kCruiseLoadStep = 10.0;

enum class DrivePhase { kIdle, kCruise, kTipIn, kPull, kDecel };

// What the driver wants this step.
struct DriverWish {
  DrivePhase phase = DrivePhase::kIdle;
  double throttle_pct = 0;     // where the foot goes
  double throttle_rate = 300;  // how fast it may get there, percent a second
  double rpm = 0;              // the engine speed wanted (ignored at idle)
  double rpm_rate = 800;       // how fast the speed may change, RPM a second
};

// What the driver sees of the engine.
struct DriverView {
  double rpm = 0;
  double throttle_pct = 0;
  double idle_target_rpm = 0;
  double idle_duty_pct = 0;
};

class DriveCycle {
 public:
  explicit DriveCycle(std::uint64_t seed);

  DriverWish Step(double dt_s, const DriverView& engine);
  DrivePhase Phase() const { return wish_.phase; }

 private:
  struct Point {
    double rpm;
    double load_pct;
  };

  void Shuffle();
  void NextPoint(const DriverView& engine);
  void AfterCruise(const DriverView& engine);
  void StartIdle(double seconds);
  void StartDecel();
  void StepCruise(double dt_s, const DriverView& engine);

  Rng rng_;
  std::vector<Point> lattice_;
  std::size_t next_ = 0;
  DriverWish wish_;
  double phase_left_s_ = kOpeningIdleS;
  double cruise_load_kpa_ = 0;
};

}  // namespace vela::sim
