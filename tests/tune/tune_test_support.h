// Synthetic samples for the correction's tests: a steady, warm engine at 60 frames a second,
// changed stretch by stretch; and a map to propose against, with evidence laid on a cell by hand.
#pragma once

#include <gtest/gtest.h>

#include <functional>

#include "editors/editor_fakes.h"
#include "tune/cell_evidence.h"
#include "tune/fuel_proposal.h"
#include "tune/log_samples.h"
#include "tune/target/target_table.h"

namespace vela::tune_testing {

inline constexpr double kFrameStep = 1.0 / 60.0;

inline SampleLog SteadyLog(double seconds) {
  SampleLog log;
  log.step = kFrameStep;
  const auto count = static_cast<std::size_t>(seconds / kFrameStep);
  for (std::size_t i = 0; i < count; ++i) {
    log.samples.push_back({.time = static_cast<double>(i) * kFrameStep,
                           .rpm = 3000.0,
                           .load = 60.0,
                           .fuel_ms = 5.0,
                           .tps = 30.0,
                           .water_c = 85.0,
                           .pump = 0.0,
                           .afr = 14.7});
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

// The sound calibration with every fuel 1 cell at 5 ms, no evidence yet and the default targets.
class FlatFuelTest : public ::testing::Test {
 protected:
  FlatFuelTest()
      : image_(editor_testing::SoundImage()),
        evidence_(FuelAxesOf(image_)),
        targets_(FuelAxesOf(image_)) {
    for (int row = 1; row <= kMapRows; ++row) {
      for (int column = 1; column <= 9; ++column) image_.SetFuelMs(1, row, column, 5.0);
    }
  }

  // Evidence at a cell of `samples` samples, every one on the site itself, asking for `factor`
  // times the fuel.
  void Evidence(int row, int column, double samples, double factor) {
    CellEvidence& cell = evidence_.At(row, column);
    cell.samples = samples;
    cell.time_s = samples / 60.0;
    cell.ratio_sum = samples * factor;
    cell.share_products[4] = samples;
    cell.ratio_products[4] = samples * factor;
    cell.afr_sum = samples * factor * targets_.At(row, column);
  }

  FuelProposal Propose() const {
    return ProposeFuel(image_, evidence_, targets_, ProposalSettings());
  }

  double Ms(const CalibrationImage& image, int grid_row, int column) const {
    return image.FuelMs(1, BlockRowOfGridRow(grid_row), column);
  }

  CalibrationImage image_;
  CellGrid evidence_;
  TargetTable targets_;
};

}  // namespace vela::tune_testing
