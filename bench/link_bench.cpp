// Wall-clock behaviour of the link's busy-waits and the cost of building a frame. The delay
// loop is calibrated once against a real steady clock, as the start-up measurement does.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdint>

#include "base/platform.h"
#include "link/comms_sender.h"
#include "link/delay_loop.h"
#include "link/link_state.h"

namespace {

class SteadyClock : public vela::Clock {
 public:
  std::int64_t NowMs() override {
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
  }
  void LetEventsRun() override {}
};

struct CalibratedLoop {
  CalibratedLoop() : loop(clock, link) {
    for (int i = 0; i < 3; ++i) loop.MeasureCountsPerMS(false, false);
  }
  SteadyClock clock;
  vela::LinkState link;
  vela::DelayLoop loop;
};

CalibratedLoop& Calibrated() {
  static CalibratedLoop calibrated;
  return calibrated;
}

void BM_DelayMs(benchmark::State& state) {
  CalibratedLoop& c = Calibrated();
  const int milliseconds = static_cast<int>(state.range(0));
  for (auto _ : state) c.loop.DelayMs(milliseconds);
  state.counters["CountsPerMS"] = c.link.CountsPerMS;
}
BENCHMARK(BM_DelayMs)->Arg(1)->Arg(10)->Unit(benchmark::kMillisecond)->UseRealTime();

// The clock-free wait that paces bytes: one millisecond's worth of iterations.
void BM_SpinOneMillisecond(benchmark::State& state) {
  CalibratedLoop& c = Calibrated();
  for (auto _ : state) c.loop.Spin(c.link.CountsPerMS);
}
BENCHMARK(BM_SpinOneMillisecond)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_BuildFrameBytes(benchmark::State& state) {
  std::int32_t value = 0;
  for (auto _ : state) {
    vela::FrameBytes frame = vela::BuildFrameBytes({4, 300, value++});
    benchmark::DoNotOptimize(frame);
  }
}
BENCHMARK(BM_BuildFrameBytes);

}  // namespace

BENCHMARK_MAIN();
