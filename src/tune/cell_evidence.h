// Where the engine ran and what the mixture was there, per map cell: every sample counts towards
// the four cells around its operating point by its shares (tune_axes.h). Time counts every
// running sample; the AFR figures count only the samples the filters keep, each paired with the
// AFR its exhaust gave one transport delay later.
#pragma once

#include <array>
#include <cmath>
#include <vector>

#include "tune/delay_fit.h"
#include "tune/log_samples.h"
#include "tune/sample_filter.h"
#include "tune/target/target_table.h"
#include "tune/tune_axes.h"

namespace vela {

struct CellEvidence {
  double time_s = 0.0;   // time the engine spent here, shared out
  double samples = 0.0;  // kept samples, shared out (their weights added)
  double afr_sum = 0.0;  // weighted
  double afr_squares = 0.0;
  double ratio_sum = 0.0;  // weighted measured / target AFR
  double error_sum = 0.0;  // weighted measured - target AFR
  // For fitting the map's values (cell_fit.h): over the kept samples, this cell's share times
  // the share each neighbour took of the same sample (slot (row offset + 1) x 3 + column offset
  // + 1; slot 4 is the cell itself), plain and times the sample's measured / target AFR.
  std::array<double, 9> share_products{};
  std::array<double, 9> ratio_products{};

  double MeanAfr() const { return samples > 0.0 ? afr_sum / samples : std::nan(""); }
  // The weighted standard deviation of the measured AFR.
  double AfrSpread() const;
  // Measured over target AFR: above 1 the cell runs lean and needs more fuel.
  double Factor() const { return samples > 0.0 ? ratio_sum / samples : std::nan(""); }
  double MeanError() const { return samples > 0.0 ? error_sum / samples : std::nan(""); }
};

class CellGrid {
 public:
  explicit CellGrid(TuneAxes axes);
  const TuneAxes& Axes() const { return axes_; }
  // By grid row (1 = the highest RPM site) and column (1 = the first load site).
  const CellEvidence& At(int row, int column) const { return cells_[Index(row, column)]; }
  CellEvidence& At(int row, int column) { return cells_[Index(row, column)]; }

 private:
  std::size_t Index(int row, int column) const {
    return static_cast<std::size_t>((row - 1) * axes_.Columns() + (column - 1));
  }
  TuneAxes axes_;
  std::vector<CellEvidence> cells_;
};

using VerdictCounts = std::array<std::size_t, kSampleVerdicts>;

// What the samples of one or more logs add up to.
struct Evidence {
  CellGrid cells;
  VerdictCounts verdicts{};  // samples by verdict
};

// One sample's part of the figures: `step` seconds of time, or a kept AFR reading against the
// target at its operating point, shared out over the four cells around it.
void ShareTime(CellGrid& cells, const TuneSample& sample, double step);
void ShareAfr(CellGrid& cells, const TuneSample& sample, double afr, double target);

// Whether a sample has an operating point on the map (a running engine's speed and a load).
bool Placed(const TuneSample& sample);

// What becomes of a kept sample with the reading paired with it: still kKept when the reading
// counts, otherwise why it does not.
SampleVerdict PairedVerdict(const PairedAfr& paired, const FilterSettings& filters);

// Only the time spent per cell (the heat map): no filters, no pairing.
void AddTime(const SampleLog& log, CellGrid& cells);

// A first fit of the cells to check samples against: a sample's measured / target AFR should be
// what the fitted values' blend at its point asks of the present values' blend.
struct FitCheck {
  std::vector<double> before;  // per cell, rows top to bottom: the present values
  std::vector<double> fitted;  // the values the fit gives (the present ones where none)
  double limit = 0.0;          // the share a sample may lie off it (FilterSettings::max_off_fit)
};

// Time per cell and, for the samples the filters keep, the AFR their exhaust gave `delay`
// later against the target at their operating point; with a `check`, without the samples too
// far off it.
void AddEvidence(const SampleLog& log, const TargetTable& targets, const FilterSettings& filters,
                 const DelayModel& delay, Evidence& evidence, const FitCheck* check = nullptr);

}  // namespace vela
