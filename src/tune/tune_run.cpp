#include "tune/tune_run.h"

#include "calibration/conversions.h"

namespace vela {

double LimiterRpmOf(const CalibrationImage& image) {
  const std::uint32_t period = image.RevLimit1();
  return period == 0 ? 0.0 : RpmFromEnginePeriod(period);
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
  return fit.fitted ? fit.model : kDefaultDelay;
}

Evidence GatherEvidence(std::span<const SampleLog> logs, const TuneAxes& axes,
                        const TargetTable& targets, const FilterSettings& filters,
                        const DelayModel& delay) {
  Evidence evidence{CellGrid(axes), {}};
  for (const SampleLog& log : logs) AddEvidence(log, targets, filters, delay, evidence);
  return evidence;
}

TuneRun RunTune(std::span<const DatalogLog* const> logs, const CalibrationImage& image,
                const TargetTable& targets, const TuneSettings& settings) {
  const TuneAxes axes = FuelAxesOf(image);
  std::vector<SampleLog> samples;
  for (const DatalogLog* log : logs) samples.push_back(SamplesOf(*log, axes.basis));
  FilterSettings filters = settings.filters;
  if (filters.limiter_rpm <= 0.0) filters.limiter_rpm = LimiterRpmOf(image);
  TuneRun run{{}, {}, settings.delay.has_value(), Evidence{CellGrid(axes), {}}, {}};
  run.delay = ChooseDelay(samples, settings, run.fit);
  run.evidence = GatherEvidence(samples, axes, targets, filters, run.delay);
  run.proposal = ProposeFuel(image, run.evidence.cells, targets, settings.proposal);
  return run;
}

}  // namespace vela
