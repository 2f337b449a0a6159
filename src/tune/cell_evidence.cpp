#include "tune/cell_evidence.h"

namespace vela {

namespace {

bool OffTheFit(const FitCheck& check, const TuneAxes& axes, const TuneSample& sample,
               double ratio) {
  double before = 0.0;
  double fitted = 0.0;
  for (const CellShare& share : SharesAt(axes, sample.rpm, sample.load)) {
    const auto cell = static_cast<std::size_t>((share.row - 1) * axes.Columns() + share.column - 1);
    before += share.weight * check.before[cell];
    fitted += share.weight * check.fitted[cell];
  }
  if (!(before > 0.0) || !(fitted > 0.0)) return false;
  return std::abs(ratio / (fitted / before) - 1.0) > check.limit;
}

}  // namespace

bool Placed(const TuneSample& sample) {
  return std::isfinite(sample.rpm) && std::isfinite(sample.load) && sample.rpm > 0.0;
}

SampleVerdict PairedVerdict(const PairedAfr& paired, const FilterSettings& filters) {
  if (paired.beyond) return SampleVerdict::kNoPairedAfr;
  if (!AfrValid(paired.afr, filters)) return SampleVerdict::kAfrInvalid;
  return SampleVerdict::kKept;
}

void ShareTime(CellGrid& cells, const TuneSample& sample, double step) {
  for (const CellShare& share : SharesAt(cells.Axes(), sample.rpm, sample.load)) {
    cells.At(share.row, share.column).time_s += share.weight * step;
  }
}

void ShareAfr(CellGrid& cells, const TuneSample& sample, double afr, double target) {
  const CellShares shares = SharesAt(cells.Axes(), sample.rpm, sample.load);
  const double ratio = afr / target;
  for (const CellShare& share : shares) {
    if (share.weight <= 0.0) continue;
    CellEvidence& cell = cells.At(share.row, share.column);
    cell.samples += share.weight;
    cell.afr_sum += share.weight * afr;
    cell.afr_squares += share.weight * afr * afr;
    cell.ratio_sum += share.weight * ratio;
    cell.error_sum += share.weight * (afr - target);
    for (const CellShare& other : shares) {
      const auto slot = static_cast<std::size_t>((other.row - share.row + 1) * 3 +
                                                 (other.column - share.column + 1));
      cell.share_products[slot] += share.weight * other.weight;
      cell.ratio_products[slot] += share.weight * other.weight * ratio;
    }
  }
}

double CellEvidence::AfrSpread() const {
  if (!(samples > 0.0)) return std::nan("");
  const double mean = afr_sum / samples;
  return std::sqrt(std::max(afr_squares / samples - mean * mean, 0.0));
}

CellGrid::CellGrid(TuneAxes axes)
    : axes_(std::move(axes)), cells_(static_cast<std::size_t>(axes_.Rows() * axes_.Columns())) {}

void AddTime(const SampleLog& log, CellGrid& cells) {
  for (const TuneSample& sample : log.samples) {
    if (Placed(sample)) ShareTime(cells, sample, log.step);
  }
}

void AddEvidence(const SampleLog& log, const TargetTable& targets, const FilterSettings& filters,
                 const DelayModel& delay, Evidence& evidence, const FitCheck* check) {
  const std::vector<TuneSample>& samples = log.samples;
  const std::vector<SampleVerdict> verdicts = PointVerdicts(samples, filters);
  std::size_t cursor = 0;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const TuneSample& sample = samples[i];
    SampleVerdict verdict = verdicts[i];
    if (verdict != SampleVerdict::kNotRunning && Placed(sample)) {
      ShareTime(evidence.cells, sample, log.step);
    }
    if (verdict == SampleVerdict::kKept) {
      const PairedAfr paired = AfrAt(samples, i, ArrivalTime(samples, i, delay), filters.min_afr,
                                     filters.max_afr, cursor);
      verdict = PairedVerdict(paired, filters);
      if (verdict == SampleVerdict::kKept) {
        const double target = targets.AtPoint(sample.rpm, sample.load);
        if (check && OffTheFit(*check, evidence.cells.Axes(), sample, paired.afr / target)) {
          verdict = SampleVerdict::kOffTheFit;
        } else {
          ShareAfr(evidence.cells, sample, paired.afr, target);
        }
      }
    }
    ++evidence.verdicts[static_cast<std::size_t>(verdict)];
  }
}

}  // namespace vela
