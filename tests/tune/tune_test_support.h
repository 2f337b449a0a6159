// Synthetic samples for the correction's tests: a steady, warm engine at 60 frames a second,
// changed stretch by stretch; and evidence laid on a cell by hand.
#pragma once

#include <functional>

#include "tune/cell_evidence.h"
#include "tune/log_samples.h"
#include "tune/target/target_table.h"

namespace vela::tune_testing {

inline constexpr double kFrameStep = 1.0 / 60.0;

inline SampleLog SteadyLog(double seconds) {
  SampleLog log;
  log.step = kFrameStep;
  const auto count = static_cast<std::size_t>(seconds / kFrameStep);
  for (std::size_t i = 0; i < count; ++i) {
    TuneSample sample;
    sample.time = static_cast<double>(i) * kFrameStep;
    sample.rpm = 3000.0;
    sample.load = 60.0;
    sample.fuel_ms = 5.0;
    sample.tps = 30.0;
    sample.water_c = 85.0;
    sample.pump = 0.0;
    sample.afr = 14.7;
    log.samples.push_back(sample);
  }
  return log;
}

// Applies `change` to every sample in [from, to) seconds.
inline void During(SampleLog& log, double from, double to,
                   const std::function<void(TuneSample&)>& change) {
  for (TuneSample& sample : log.samples) {
    if (sample.time >= from - 1e-9 && sample.time < to - 1e-9) change(sample);
  }
}

// Evidence at a cell of `samples` samples, every one on the site itself, asking for `factor`
// times the fuel.
inline void SiteEvidence(CellGrid& grid, const TargetTable& targets, int row, int column,
                         double samples, double factor) {
  CellEvidence& cell = grid.At(row, column);
  cell.samples = samples;
  cell.time_s = samples / 60.0;
  cell.ratio_sum = samples * factor;
  cell.share_products[4] = samples;
  cell.ratio_products[4] = samples * factor;
  cell.afr_sum = samples * factor * targets.At(row, column);
}

}  // namespace vela::tune_testing
