#include "tune/view/proposal_view.h"

#include <charconv>
#include <cmath>
#include <cstdio>

#include "base/text_fields.h"
#include "editors/map_file.h"
#include "editors/mapgrid/grid_setup.h"
#include "editors/workbench/cell_selection.h"

namespace vela {

namespace {

std::string Fixed(double value, int decimals) {
  char text[48];
  std::snprintf(text, sizeof text, "%.*f", decimals, value);
  return text;
}

// A number as the settings file writes it: up to six decimals, trailing zeros dropped.
std::string Plain(double value) {
  std::string text = Fixed(value, 6);
  while (!text.empty() && text.back() == '0') text.pop_back();
  if (!text.empty() && text.back() == '.') text.pop_back();
  return text;
}

std::string Trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(" \t\r");
  if (first == std::string_view::npos) return {};
  const auto last = text.find_last_not_of(" \t\r");
  return std::string(text.substr(first, last - first + 1));
}

// Every setting the file keeps, in the order it writes them.
const TuneSettingField kFields[] = {
    {"min_water_c", "Cold engine: water below (C)",
     [](TuneSettings& s) -> double& { return s.filters.min_water_c; }, -40, 130, 1, 0},
    {"cut_tps_percent", "Decel cut: throttle at most (%)",
     [](TuneSettings& s) -> double& { return s.filters.cut_tps_percent; }, 0, 50, 1, 1},
    {"cut_fuel_ms", "Decel cut: injection at most (ms)",
     [](TuneSettings& s) -> double& { return s.filters.cut_fuel_ms; }, 0, 10, 1, 2},
    {"max_pump", "Throttle pump: addition above",
     [](TuneSettings& s) -> double& { return s.filters.max_pump; }, 0, 100, 1, 2},
    {"limiter_margin_rpm", "Rev limiter: within (RPM) below it",
     [](TuneSettings& s) -> double& { return s.filters.limiter_margin_rpm; }, 0, 3000, 1, 0},
    {"max_rpm_rate", "Steady RPM: change at most (RPM/s)",
     [](TuneSettings& s) -> double& { return s.filters.max_rpm_rate; }, 1, 100000, 1, 0},
    {"max_tps_rate", "Steady throttle: change at most (%/s)",
     [](TuneSettings& s) -> double& { return s.filters.max_tps_rate; }, 1, 10000, 1, 0},
    {"rate_window_s", "Steadiness judged over (s)",
     [](TuneSettings& s) -> double& { return s.filters.rate_window_s; }, 0.01, 5, 1, 2},
    {"settle_s", "Settling after a dropped sample (s)",
     [](TuneSettings& s) -> double& { return s.filters.settle_s; }, 0, 10, 1, 2},
    {"min_afr", "Wideband valid from (AFR)",
     [](TuneSettings& s) -> double& { return s.filters.min_afr; }, 5, 30, 1, 1},
    {"max_afr", "Wideband valid to (AFR)",
     [](TuneSettings& s) -> double& { return s.filters.max_afr; }, 5, 30, 1, 1},
    {"max_change_percent", "Per-pass limit (%)",
     [](TuneSettings& s) -> double& { return s.proposal.max_change; }, 1, 50, 100.0, 1},
    {"min_samples", "Evidence: samples at least",
     [](TuneSettings& s) -> double& { return s.proposal.min_samples; }, 1, 1e6, 1, 0},
    {"min_time_s", "Evidence: time at least (s)",
     [](TuneSettings& s) -> double& { return s.proposal.min_time_s; }, 0, 3600, 1, 1},
    {"min_pinned", "Evidence: pinned samples at least",
     [](TuneSettings& s) -> double& { return s.proposal.min_pinned; }, 0, 1e6, 1, 1},
    {"max_off_fit_percent", "Drop samples off the fit by more than (%)",
     [](TuneSettings& s) -> double& { return s.filters.max_off_fit; }, 0, 50, 100.0, 1},
};

std::optional<double> NumberOf(const std::string& text) {
  double value = 0.0;
  const char* end = text.data() + text.size();
  const auto [at, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || at != end || !std::isfinite(value)) return std::nullopt;
  return value;
}

void ReadSetting(const std::string& name, const std::string& value, TuneSettings& settings) {
  if (name == "delay") {
    if (value == "fit") settings.delay.reset();
    const std::optional<double> floor = NumberOf(value);
    if (floor && *floor >= 0.0 && *floor <= kMaxDelaySeconds)
      settings.delay = DelayModel{*floor, 0};
    return;
  }
  for (const TuneSettingField& field : kFields) {
    if (name != field.name) continue;
    const std::optional<double> number = NumberOf(value);
    if (number && *number >= field.low && *number <= field.high) {
      field.field(settings) = *number / field.shown;
    }
  }
}

}  // namespace

std::span<const TuneSettingField> TuneSettingFields() { return kFields; }

CalibrationImage ProposedImage(const CalibrationImage& image, const FuelProposal& proposal) {
  MapGridModel grid = FuelGridOf(image, proposal.fuel_map);
  const CellTarget target = [&proposal](int row, int column, double) {
    const ProposedCell* cell = proposal.Cell(row, column);
    if (!cell || cell->state != CellProposalState::kProposed) return std::nan("");
    return cell->after_ms;
  };
  ApplyTargets(grid, WholeMap(grid), target, DutyOfImage(image));
  CalibrationImage proposed = image;
  proposed.WriteFuelMap(proposal.fuel_map, grid.ToMapValues());
  return proposed;
}

void MarkTooLittle(GridOverlay& overlay, const FuelProposal& proposal) {
  if (overlay.Empty() && !proposal.cells.empty()) {
    overlay = GridOverlay(proposal.cells.back().row, proposal.cells.back().column);
  }
  for (const ProposedCell& cell : proposal.cells) {
    if (cell.state != CellProposalState::kTooLittle) continue;
    const CellOverlay* look = overlay.At(cell.row, cell.column);
    if (!look || look->mark) continue;
    CellOverlay marked = *look;
    marked.mark = kTooLittleMark;
    overlay.Set({cell.row, cell.column}, std::move(marked));
  }
}

std::string StateText(const ProposedCell& cell) {
  switch (cell.state) {
    case CellProposalState::kNoEvidence:
      return "no evidence";
    case CellProposalState::kTooLittle:
      return "too little evidence";
    case CellProposalState::kUnchanged:
      return "unchanged";
    case CellProposalState::kProposed:
      break;
  }
  return cell.limited ? "limited" : "proposed";
}

std::string EvidenceText(const ProposedCell& cell, const TuneAxes& axes) {
  const CellEvidence& e = cell.evidence;
  std::string text = "RPM " + Fixed(axes.RowRpm(cell.row), 0) + ", " +
                     Plain(axes.ColumnLoad(cell.column)) + " " + std::string(axes.LoadUnit()) +
                     ": ";
  text += Fixed(e.samples, 1) + " samples, " + Fixed(e.time_s, 1) + " s";
  if (e.samples > 0.0) {
    text += ", mean AFR " + Fixed(e.MeanAfr(), 2) + ", target " + Fixed(cell.target_afr, 2) +
            ", factor " + Fixed(cell.factor, 3);
  } else {
    text += ", target " + Fixed(cell.target_afr, 2);
  }
  text += ", " + StateText(cell);
  if (cell.state == CellProposalState::kProposed && cell.before_ms > 0.0) {
    const double change = (cell.after_ms / cell.before_ms - 1.0) * 100.0;
    text += std::string(" ") + (change >= 0.0 ? "+" : "") + Fixed(change, 1) + " %";
  }
  return text;
}

std::string SamplesText(const VerdictCounts& counts) {
  std::size_t total = 0;
  for (std::size_t count : counts) total += count;
  std::string out = "Samples: " + std::to_string(total);
  for (int v = 0; v < kSampleVerdicts; ++v) {
    if (counts[static_cast<std::size_t>(v)] == 0) continue;
    out += "; " + std::string(VerdictName(static_cast<SampleVerdict>(v))) + " " +
           std::to_string(counts[static_cast<std::size_t>(v)]);
  }
  return out;
}

std::string CoarseFitText(const DelayFit& fit) {
  if (!CoarseDelayFit(fit)) return "";
  return "Logged at " + Fixed(1.0 / fit.record_step_s, 0) +
         " frames/s: each step is timed only to a frame (" + Fixed(fit.record_step_s * 1000.0, 0) +
         " ms); log at 60 for a surer delay";
}

std::string DelayText(const TuneRun& run) {
  const std::string model =
      Fixed(run.delay.floor_s, 3) + " s + " + Fixed(run.delay.k, 0) + " / (RPM x load)";
  if (run.delay_set) return "Delay set: " + Fixed(run.delay.floor_s, 3) + " s";
  if (run.fit.fitted) {
    return "Delay fitted: " + model + "; " + std::to_string(run.fit.steps) + " steps used, " +
           std::to_string(run.fit.dropped) + " left out, RMS " +
           Fixed(run.fit.rms_residual_s * 1000.0, 1) + " ms";
  }
  return "Delay default: " + model + " (" +
         (run.fit.why_not.empty() ? std::string("no fit") : run.fit.why_not) + ")";
}

std::string SummaryText(const FuelProposal& proposal) {
  int proposed = 0, limited = 0, too_little = 0, none = 0;
  for (const ProposedCell& cell : proposal.cells) {
    proposed += cell.state == CellProposalState::kProposed;
    limited += cell.state == CellProposalState::kProposed && cell.limited;
    too_little += cell.state == CellProposalState::kTooLittle;
    none += cell.state == CellProposalState::kNoEvidence;
  }
  return std::to_string(proposed) + (proposed == 1 ? " cell" : " cells") + " proposed (" +
         std::to_string(limited) + " limited), " + std::to_string(too_little) +
         " with too little evidence, " + std::to_string(none) + " without";
}

std::string TuneSettingsText(const TuneSettings& settings) {
  TuneSettings copy = settings;
  std::string text = "delay = " + (settings.delay ? Plain(settings.delay->floor_s) : "fit") + "\n";
  for (const TuneSettingField& field : kFields) {
    text += std::string(field.name) + " = " + Plain(field.field(copy) * field.shown) + "\n";
  }
  return text;
}

TuneSettings ReadTuneSettingsText(std::string_view text) {
  TuneSettings settings;
  while (!text.empty()) {
    const std::string_view line = TakeLine(text);
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) continue;
    ReadSetting(Trimmed(line.substr(0, equals)), Trimmed(line.substr(equals + 1)), settings);
  }
  return settings;
}

}  // namespace vela
