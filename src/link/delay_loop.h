// The link's calibrated busy-wait. Waits are counted in iterations of one fixed computation, and
// `CountsPerMS` (measured once at start-up) turns milliseconds into iterations, so a wait lasts
// the same time on any PC without depending on the coarse tick counter.
#pragma once

#include <cstdint>

#include "base/platform.h"
#include "link/link_state.h"

namespace vela {

class DelayLoop {
 public:
  // No wait, however short its time, runs fewer iterations than this.
  static constexpr std::int64_t kMinIterations = 100;

  DelayLoop(Clock& clock, LinkState& link) : clock_(clock), link_(link) {}

  // Runs N iterations (500,000 when `quick`, else 2,000,000) between two readings of the tick
  // counter, letting pending events run before the second reading when `keep_responsive`; sets
  // `CountsPerMS` = Int(N / elapsed * 1.003) and returns the elapsed milliseconds. An elapsed
  // time of 0 counts as 1 ms.
  std::int64_t MeasureCountsPerMS(bool keep_responsive, bool quick);

  // Waits about `milliseconds` x 0.55 x `CountsPerMS` iterations (at least 100), repeated
  // `CommsRepeat` times; reads the tick counter after every iteration and gives up once more than
  // ten times the asked time has passed.
  void DelayMs(int milliseconds);

  // Runs `iterations` iterations without looking at the clock (the pacing waits).
  void Spin(std::int64_t iterations);

  // Every iteration run so far, by any wait: lets tests and diagnostics see how long a wait was
  // meant to be without timing it.
  std::int64_t iterations_run() const { return iterations_run_; }

 private:
  // One iteration: x := round((sqrt(x * 555 / 555))^2), through a volatile so that the optimiser
  // can neither fold nor drop it.
  void Iterate();

  Clock& clock_;
  LinkState& link_;
  volatile double x_ = 10000.0;
  std::int64_t iterations_run_ = 0;
};

}  // namespace vela
