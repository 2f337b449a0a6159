// The wideband oxygen sensor in the exhaust. The gas it reads left the cylinders a transport
// delay earlier, and the delay falls with the flow:
//
//   delay = kDelayFloorS + kDelayK / (RPM x load),  load in percent of the load axis's span,
//
// RPM held to kDelayMinRpm and more and load to kDelayMinLoadPct and more, and the delay to
// kDelayMaxS at most. The sensor then follows the delayed mixture with a first-order lag of
// time constant kSensorLagS, and reads only between kSensorMinLambda and kSensorMaxLambda (an air
// fuel ratio of 10.0 to 20.0 for gasoline): a reading at either end is off the scale (fuel cut
// reads the lean end).
#pragma once

#include <cstddef>
#include <vector>

namespace vela::sim {

inline constexpr double kDelayFloorS = 0.05;
inline constexpr double kDelayK = 12'000.0;  // seconds x RPM x percent
inline constexpr double kDelayMinRpm = 300.0;
inline constexpr double kDelayMinLoadPct = 5.0;
inline constexpr double kDelayMaxS = 2.0;
inline constexpr double kSensorLagS = 0.08;
inline constexpr double kSensorMinLambda = 10.0 / 14.7;
inline constexpr double kSensorMaxLambda = 20.0 / 14.7;

double TransportDelayS(double rpm, double load_pct);

class Wideband {
 public:
  // `step_s`: the time between calls of Step; `start_lambda`: the exhaust before the first.
  Wideband(double step_s, double start_lambda);

  // Takes the mixture leaving the cylinders now (lambda; infinity with no fuel) and returns the
  // sensor's reading now.
  double Step(double exhaust_lambda, double rpm, double load_pct);
  double Reading() const { return shown_; }
  double DelayS() const { return delay_s_; }

 private:
  double Past(double seconds_ago) const;

  double step_s_;
  std::vector<double> history_;  // a ring of the exhaust's lambda, one entry a step
  std::size_t newest_ = 0;
  double reading_;  // the lag's state, beyond the ends where the mixture is
  double shown_;
  double delay_s_ = kDelayFloorS;
};

}  // namespace vela::sim
