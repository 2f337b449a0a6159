// How the benchmarks time a body: its mean wall time (what the tuner waits) and the processor
// time of this thread (what it costs on a loaded machine), both in milliseconds.
#pragma once

#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>
#include <ctime>

namespace vela::bench {

struct Mean {
  double wall_ms = NAN;
  double cpu_ms = NAN;
};

inline double ThreadCpuMs() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1000.0 + static_cast<double>(now.tv_nsec) / 1e6;
}

// Runs `body` once per iteration of `state` (manual time: the wall time of the body alone).
template <typename Body>
Mean MeanMs(benchmark::State& state, Body body) {
  double wall = 0;
  double cpu = 0;
  for (auto _ : state) {
    const auto start = std::chrono::steady_clock::now();
    const double cpu_start = ThreadCpuMs();
    body();
    cpu += ThreadCpuMs() - cpu_start;
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    state.SetIterationTime(took.count());
    wall += took.count() * 1000.0;
  }
  const auto n = static_cast<double>(state.iterations());
  return {wall / n, cpu / n};
}

}  // namespace vela::bench
