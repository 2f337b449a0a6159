#include "sim/engine/drive_cycle.h"

#include <algorithm>
#include <cmath>

#include "sim/engine/engine_physics.h"

namespace vela::sim {

namespace {
constexpr std::uint64_t kDriverSeedSalt = 0x2545F4914F6CDD1DULL;
constexpr double kOnSpeedRpm = 150.0;  // a cruise's time counts once the speed is this close
constexpr double kIdleReachedRpm = 200.0;
constexpr double kDecelRate = 900.0;
}  // namespace

DriveCycle::DriveCycle(std::uint64_t seed) : rng_(seed ^ kDriverSeedSalt) {
  for (double rpm = kCruiseRpmLow; rpm <= kCruiseRpmHigh; rpm += kCruiseRpmStep) {
    for (double load = kCruiseLoadLow; load <= kCruiseLoadHigh; load += kCruiseLoadStep) {
      lattice_.push_back({rpm, load});
    }
  }
  Shuffle();
  wish_.phase = DrivePhase::kIdle;
}

void DriveCycle::Shuffle() {
  for (std::size_t i = lattice_.size(); i > 1; --i) {
    const auto j = static_cast<std::size_t>(rng_.Int(0, static_cast<int>(i) - 1));
    std::swap(lattice_[i - 1], lattice_[j]);
  }
}

void DriveCycle::StartIdle(double seconds) {
  wish_ = DriverWish{};
  wish_.phase = DrivePhase::kIdle;
  phase_left_s_ = seconds;
}

void DriveCycle::StartDecel() {
  wish_.phase = DrivePhase::kDecel;
  wish_.throttle_pct = 0;
  wish_.throttle_rate = 300;
  wish_.rpm_rate = kDecelRate;
}

void DriveCycle::NextPoint(const DriverView& engine) {
  const Point point = lattice_[next_];
  if (++next_ == lattice_.size()) {
    Shuffle();
    next_ = 0;
  }
  wish_.phase = DrivePhase::kCruise;
  // A driver holds a speed and a load somewhere about the point, not the point itself.
  wish_.rpm = point.rpm + rng_.Range(-kCruiseRpmStep / 2, kCruiseRpmStep / 2);
  wish_.rpm_rate = 1000;
  wish_.throttle_rate = 150;
  // A 1-bar span: percent and kPa agree.
  cruise_load_kpa_ = point.load_pct + rng_.Range(-kCruiseLoadStep / 2, kCruiseLoadStep / 2);
  wish_.throttle_pct = ThrottleForManifold(cruise_load_kpa_, engine.rpm);
  phase_left_s_ = rng_.Range(3.0, 5.0);
}

void DriveCycle::AfterCruise(const DriverView& engine) {
  const double pick = rng_.Uniform();
  if (pick < 0.25) {
    wish_.phase = DrivePhase::kTipIn;
    wish_.throttle_pct = std::min(100.0, engine.throttle_pct + rng_.Range(25.0, 60.0));
    wish_.throttle_rate = 600;
    wish_.rpm = engine.rpm + 600;
    wish_.rpm_rate = 400;
    phase_left_s_ = rng_.Range(1.0, 2.0);
  } else if (pick < 0.45) {
    wish_.phase = DrivePhase::kPull;
    wish_.throttle_pct = ThrottleForManifold(rng_.Range(50.0, 100.0), engine.rpm);
    wish_.throttle_rate = 300;
    wish_.rpm = rng_.Range(6000.0, 6900.0);
    wish_.rpm_rate = rng_.Range(500.0, 900.0);
    phase_left_s_ = std::max(wish_.rpm - engine.rpm, 0.0) / wish_.rpm_rate + 1.5;
  } else if (pick < 0.70) {
    StartDecel();
  } else {
    NextPoint(engine);
  }
}

void DriveCycle::StepCruise(double dt_s, const DriverView& engine) {
  const double wobble = rng_.Range(-0.3, 0.3);  // an unsteady foot
  const double hold = ThrottleForManifold(cruise_load_kpa_, engine.rpm);
  wish_.throttle_pct = std::clamp(hold + wobble, 0.0, 100.0);
  if (std::abs(engine.rpm - wish_.rpm) < kOnSpeedRpm) phase_left_s_ -= dt_s;
  if (phase_left_s_ <= 0) AfterCruise(engine);
}

DriverWish DriveCycle::Step(double dt_s, const DriverView& engine) {
  switch (wish_.phase) {
    case DrivePhase::kIdle:
      phase_left_s_ -= dt_s;
      if (phase_left_s_ <= 0) NextPoint(engine);
      break;
    case DrivePhase::kCruise:
      StepCruise(dt_s, engine);
      break;
    case DrivePhase::kTipIn:
      phase_left_s_ -= dt_s;
      if (phase_left_s_ <= 0) NextPoint(engine);
      break;
    case DrivePhase::kPull:
      phase_left_s_ -= dt_s;
      if (phase_left_s_ <= 0 || engine.rpm >= wish_.rpm - 60) StartDecel();
      break;
    case DrivePhase::kDecel:
      wish_.rpm = engine.idle_target_rpm;
      if (engine.rpm < engine.idle_target_rpm + kIdleReachedRpm) StartIdle(rng_.Range(2.0, 4.0));
      break;
  }
  return wish_;
}

}  // namespace vela::sim
