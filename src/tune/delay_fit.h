// The exhaust's transport delay: the time from a fuel change at the injectors to its air-fuel
// ratio at the wideband. It falls with the flow: delay = floor + k / (RPM x load). It is either
// set, or fitted from the log: each clean step of injection time followed by the AFR's answer
// gives one delay at one flow, and the line through them is fitted by least squares.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "tune/log_samples.h"

namespace vela {

// The longest delay believed, in seconds.
inline constexpr double kMaxDelaySeconds = 2.0;

struct DelayModel {
  double floor_s = 0.08;
  double k = 4000.0;  // seconds x RPM x load unit
  // The sensor's own first-order lag, seconds: a mixture that changes steadily (a pull across
  // cells) shows this much later again. Fitted from the steps; 0 when the delay is set.
  double lag_s = 0.0;
  // The delay at an operating point, within 0 to kMaxDelaySeconds.
  double At(double rpm, double load) const;
  bool operator==(const DelayModel&) const = default;
};

// When the sensor shows the exhaust of sample `from`: its arrival, the first moment T at which T
// less the delay at T's flow has come to the sample's time, plus the sensor's lag. The sensor
// reads at T what left the cylinders one delay earlier, carried by the flow of T, so while the
// flow changes (a decel, a pull) the delay at the sample's own flow would pair it with another
// sample's exhaust. Between two records the moment is interpolated. When the log or the samples
// without a gap end first: the sample's time plus the delay at its own flow and the lag.
double ArrivalTime(const std::vector<TuneSample>& samples, std::size_t from,
                   const DelayModel& delay);

struct StepSettings {
  double min_fuel_change = 0.2;  // a step changes injection time by at least this share
  double before_s = 0.5;         // injection time and AFR steady this long before the step
  double steady_share = 0.08;    // "steady": within this share of the level
  double hold_s = 0.3;           // the new injection time holds this long after the step
  double min_afr_change = 0.8;   // the AFR's answer moves at least this much (AFR)
  double max_load_share = 0.5;   // the load moves by less than this part of the fuel's change
  double min_afr = 9.0;          // the sensor's valid range: no step from a reading outside it,
  double max_afr = 19.0;         // and an answer running out of it is timed as a jump
};

// One step: when the injection time changed (half-way between the records around the change),
// the flow that carried it to the sensor (RPM x load when the answer arrives), the delay and the
// sensor's own lag measured on it.
struct DelayStep {
  double time = 0.0;
  double flow = 0.0;   // RPM x load
  double delay = 0.0;  // seconds
  double lag = 0.0;    // the sensor's first-order time constant, seconds
};

// The steps of one log. The AFR's answer is read as a dead time and a first-order lag: the
// times it has gone 10 % and 63.2 % of its way give both, so the lag does not lengthen the
// delay found.
std::vector<DelayStep> FindDelaySteps(const std::vector<TuneSample>& samples,
                                      const StepSettings& settings);

struct DelayFit {
  bool fitted = false;
  DelayModel model;
  int steps = 0;              // steps the line was fitted through
  int dropped = 0;            // steps left out as far off the first line
  double rms_residual_s = 0;  // of the steps used
  std::string why_not;        // when not fitted
  double record_step_s = 0;   // the longest time between two records of the logs fitted
};

// Below this many frames a second a step's answer is timed only to within one record, which is
// as long as the exhaust's whole delay at high flow: a fit from such logs is coarse there.
inline constexpr double kSureFitFramesPerSecond = 30.0;

// Whether `fit` came from logs too slow for a sure delay at high flow.
inline bool CoarseDelayFit(const DelayFit& fit) {
  // Log time runs 1.002 / rate a frame: 30 frames a second itself counts as fast enough.
  return fit.fitted && fit.record_step_s * kSureFitFramesPerSecond > 1.01;
}

// The least-squares line delay = floor + k x (1 / flow) through the steps, fitted twice: the
// second time without steps more than three times the median distance (and 20 ms) off the
// first line. Needs three steps at two flows or more, and a floor and k that are not negative.
// The lag is the median of the kept steps' lags.
DelayFit FitDelay(std::span<const DelayStep> steps);

}  // namespace vela
