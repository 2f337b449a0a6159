// The smoothing choices of the map pages (`RPMSmoothing`, `MAPSmoothing`, `AFRSmoothing`): each
// quantity runs through a first-order low-pass filter, frame by frame, with a time constant in
// seconds, so that the read-outs and the live point on the maps stop flickering with every
// frame and still follow a change within about three time constants (95 %). The time between
// frames is the ECU's rate in force, so the filter does the same at 4 as at 60 frames a second.
// The filters always run; a choice only decides whether the shown value is the filtered one.
#pragma once

#include <optional>

#include "link/live/live_data.h"
#include "link/receive/receive_handlers.h"

namespace vela {

// y += (x - y) x (1 - exp(-dt / tau)): the share of a step still missing after t is exp(-t / tau).
class LowPassFilter {
 public:
  explicit LowPassFilter(double time_constant_s) : time_constant_s_(time_constant_s) {}
  // The first value after a reset is taken as it is.
  double Add(double value, double dt_s);
  void Reset() { value_.reset(); }
  std::optional<double> Value() const { return value_; }

 private:
  double time_constant_s_;
  std::optional<double> value_;
};

struct SmoothingChoice {
  bool rpm = false;
  bool map = false;
  bool afr = false;
};

class LiveSmoothing {
 public:
  static constexpr double kRpmTimeConstantS = 0.3;
  static constexpr double kMapTimeConstantS = 0.3;
  static constexpr double kLambdaTimeConstantS = 0.5;
  // Taken when the frame carries no rate.
  static constexpr double kDefaultFrameSeconds = 0.1;

  // One new frame's values, as the receive handlers decoded them.
  void Add(const LiveData& frame);
  // The link was lost: the next frame starts the filters afresh.
  void Reset();

  // `raw` with the chosen quantities replaced by the filtered ones. The air-fuel value follows
  // the filtered lambda through `afr_value` (as the handlers compute it). A pressure over the
  // sensor's range or a boost beyond the read-outs' limit stays as it came, and so does a
  // missing oxygen reading (lambda 0).
  LiveData Apply(const LiveData& raw, const SmoothingChoice& choice,
                 const ReceiveHandlers::AfrValue& afr_value) const;

 private:
  LowPassFilter rpm_{kRpmTimeConstantS};
  LowPassFilter map_{kMapTimeConstantS};
  LowPassFilter lambda_{kLambdaTimeConstantS};
};

}  // namespace vela
