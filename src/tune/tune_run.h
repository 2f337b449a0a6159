// One correction pass from start to end: logs and a map file in, the transport delay (set or
// fitted), the evidence per fuel cell and the proposal out.
#pragma once

#include <optional>
#include <span>

#include "datalog/datalog_log.h"
#include "tune/fuel_proposal.h"

namespace vela {

// Used when no delay is set and the logs give no fit.
inline constexpr DelayModel kDefaultDelay{0.08, 4000.0};

struct TuneSettings {
  FilterSettings filters;  // limiter_rpm 0 takes the map file's first rev limiter
  StepSettings steps;
  ProposalSettings proposal;
  std::optional<DelayModel> delay;  // set: used as it is; otherwise fitted from the logs
};

struct TuneRun {
  DelayFit fit;      // the fit tried (nothing tried when the delay was set)
  DelayModel delay;  // the delay used
  bool delay_set = false;
  Evidence evidence;  // on the fuel axes
  FuelProposal proposal;
};

// The rev limiter's speed of a map file (its first limiter), 0 when it holds none.
double LimiterRpmOf(const CalibrationImage& image);

// The water temperature from which the warm-up enrichment of a map file adds nothing (its
// table's points lie 20 C apart from -20 C); -20 when it adds nothing anywhere. Below it a
// sample's mixture tells of the warm-up table, not of the fuel map.
double WarmFromC(const CalibrationImage& image);

// `filters` as they apply to the logs of `image`: its first rev limiter when none is set, and a
// cold engine up to where its warm-up enrichment adds nothing.
FilterSettings FiltersFor(const CalibrationImage& image, FilterSettings filters);

// The delay to use: the set one, else the fit of every log's steps when it succeeds, else the
// default.
DelayModel ChooseDelay(std::span<const SampleLog> logs, const TuneSettings& settings,
                       DelayFit& fit);

// Evidence of `logs` on `axes` (the fuel or the ignition map's).
Evidence GatherEvidence(std::span<const SampleLog> logs, const TuneAxes& axes,
                        const TargetTable& targets, const FilterSettings& filters,
                        const DelayModel& delay, const FitCheck* check = nullptr);

// The check of a first proposal's fit, with the filters' limit.
FitCheck CheckOf(const FuelProposal& proposal, const FilterSettings& filters);

TuneRun RunTune(std::span<const DatalogLog* const> logs, const CalibrationImage& image,
                const TargetTable& targets, const TuneSettings& settings);
// The same from copies of logs' columns (a computation apart from the logs).
TuneRun RunTune(std::span<const LogColumns* const> logs, const CalibrationImage& image,
                const TargetTable& targets, const TuneSettings& settings);

}  // namespace vela
