#include "tune/tune_run.h"

#include <algorithm>
#include <cmath>

#include "calibration/conversions.h"
#include "calibration/setup_fields.h"

namespace vela {

double LimiterRpmOf(const CalibrationImage& image) {
  const std::uint32_t period = image.RevLimit1();
  return period == 0 ? 0.0 : RpmFromEnginePeriod(period);
}

double WarmFromC(const CalibrationImage& image) {
  constexpr int kPoints = 8;
  const int first = FieldPos("WaterComp");
  int warm = kPoints;
  while (warm > 0 && image.Byte(first + warm - 1) == 0) --warm;
  return warm == kPoints ? 120.0 : -20.0 + 20.0 * warm;
}

FilterSettings FiltersFor(const CalibrationImage& image, FilterSettings filters) {
  if (filters.limiter_rpm <= 0.0) filters.limiter_rpm = LimiterRpmOf(image);
  filters.min_water_c = std::max(filters.min_water_c, WarmFromC(image));
  return filters;
}

DelayModel ChooseDelay(std::span<const SampleLog> logs, const TuneSettings& settings,
                       DelayFit& fit) {
  if (settings.delay) return *settings.delay;
  std::vector<DelayStep> steps;
  for (const SampleLog& log : logs) {
    const std::vector<DelayStep> found = FindDelaySteps(log.samples, settings.steps);
    steps.insert(steps.end(), found.begin(), found.end());
  }
  fit = FitDelay(steps);
  for (const SampleLog& log : logs) fit.record_step_s = std::max(fit.record_step_s, log.step);
  return fit.fitted ? fit.model : kDefaultDelay;
}

Evidence GatherEvidence(std::span<const SampleLog> logs, const TuneAxes& axes,
                        const TargetTable& targets, const FilterSettings& filters,
                        const DelayModel& delay, const FitCheck* check) {
  Evidence evidence{CellGrid(axes), {}};
  for (const SampleLog& log : logs) AddEvidence(log, targets, filters, delay, evidence, check);
  return evidence;
}

FitCheck CheckOf(const FuelProposal& proposal, const FilterSettings& filters) {
  FitCheck check;
  check.limit = filters.max_off_fit;
  for (const ProposedCell& cell : proposal.cells) {
    check.before.push_back(cell.before_ms);
    check.fitted.push_back(std::isfinite(cell.fitted_ms) && cell.fitted_ms > 0.0 ? cell.fitted_ms
                                                                                 : cell.before_ms);
  }
  return check;
}

namespace {

TuneRun RunTuneOn(const std::vector<SampleLog>& samples, const CalibrationImage& image,
                  const TargetTable& targets, const TuneSettings& settings) {
  const TuneAxes axes = FuelAxesOf(image);
  const FilterSettings filters = FiltersFor(image, settings.filters);
  TuneRun run{{}, {}, settings.delay.has_value(), Evidence{CellGrid(axes), {}}, {}};
  run.delay = ChooseDelay(samples, settings, run.fit);
  run.evidence = GatherEvidence(samples, axes, targets, filters, run.delay);
  run.proposal = ProposeFuel(image, run.evidence.cells, targets, settings.proposal);
  if (filters.max_off_fit > 0.0) {
    const FitCheck check = CheckOf(run.proposal, filters);
    run.evidence = GatherEvidence(samples, axes, targets, filters, run.delay, &check);
    run.proposal = ProposeFuel(image, run.evidence.cells, targets, settings.proposal);
  }
  return run;
}

// Either kind of log (a whole log, or the copy of its columns) as samples on the fuel maps' load.
template <typename Log>
TuneRun RunTuneOver(std::span<const Log* const> logs, const CalibrationImage& image,
                    const TargetTable& targets, const TuneSettings& settings) {
  const LoadBasis basis = FuelAxesOf(image).basis;
  std::vector<SampleLog> samples;
  for (const Log* log : logs) samples.push_back(SamplesOf(*log, basis));
  return RunTuneOn(samples, image, targets, settings);
}

}  // namespace

TuneRun RunTune(std::span<const DatalogLog* const> logs, const CalibrationImage& image,
                const TargetTable& targets, const TuneSettings& settings) {
  return RunTuneOver(logs, image, targets, settings);
}

TuneRun RunTune(std::span<const LogColumns* const> logs, const CalibrationImage& image,
                const TargetTable& targets, const TuneSettings& settings) {
  return RunTuneOver(logs, image, targets, settings);
}

}  // namespace vela
