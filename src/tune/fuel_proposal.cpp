#include "tune/fuel_proposal.h"

#include <algorithm>

#include "editors/map_file.h"
#include "editors/mapgrid/grid_setup.h"
#include "editors/workbench/cell_selection.h"
#include "tune/cell_fit.h"

namespace vela {

namespace {

ProposedCell Judge(const CellEvidence& evidence, int row, int column, double before_ms,
                   double target_afr, const ProposalSettings& settings) {
  ProposedCell cell;
  cell.row = row;
  cell.column = column;
  cell.evidence = evidence;
  cell.target_afr = target_afr;
  cell.before_ms = before_ms;
  cell.after_ms = before_ms;
  cell.factor = evidence.Factor();
  cell.applied = 1.0;
  if (!(evidence.samples > 0.0)) return cell;
  cell.state = CellProposalState::kTooLittle;
  if (evidence.samples < settings.min_samples || evidence.time_s < settings.min_time_s) {
    return cell;
  }
  cell.state = CellProposalState::kProposed;
  return cell;
}

// The factors of the fit over every cell with evidence, held to the per-pass limit; a cell the
// samples do not pin firmly enough has too little evidence.
void FitFactors(const CellGrid& evidence, const ProposalSettings& settings,
                std::vector<ProposedCell>& cells) {
  std::vector<double> values;
  std::vector<bool> free;
  for (const ProposedCell& cell : cells) {
    values.push_back(cell.before_ms);
    free.push_back(cell.state != CellProposalState::kNoEvidence);
  }
  const CellFit fit = FitCells(evidence, values, free);
  const double limit = std::max(settings.max_change, 0.0);
  for (std::size_t i = 0; i < cells.size(); ++i) {
    ProposedCell& cell = cells[i];
    cell.pinned = fit.pinned[i];
    cell.fitted_ms = cell.before_ms * (free[i] ? fit.factors[i] : 1.0);
    if (cell.state != CellProposalState::kProposed) continue;
    if (cell.pinned < settings.min_pinned) {
      cell.state = CellProposalState::kTooLittle;
      continue;
    }
    cell.factor = fit.factors[i];
    cell.applied = std::clamp(cell.factor, 1.0 - limit, 1.0 + limit);
    cell.limited = cell.applied != cell.factor;
  }
}

}  // namespace

const ProposedCell* FuelProposal::Cell(int row, int column) const {
  for (const ProposedCell& cell : cells) {
    if (cell.row == row && cell.column == column) return &cell;
  }
  return nullptr;
}

MapGridModel FuelGridOf(const CalibrationImage& image, int fuel_map) {
  MapGridModel grid(MapKind::kFuel, image.FuelLoadSites());
  FillFuelGrid(grid, image, fuel_map);
  grid.SetRpmSites(RpmSites(image.Byte(FieldPos("RpmSitesSetup"))));
  return grid;
}

FuelProposal ProposeFuel(const CalibrationImage& image, const CellGrid& evidence,
                         const TargetTable& targets, const ProposalSettings& settings) {
  FuelProposal proposal;
  proposal.fuel_map = settings.fuel_map == 2 ? 2 : 1;
  const MapGridModel grid = FuelGridOf(image, proposal.fuel_map);
  const TuneAxes& axes = evidence.Axes();
  for (int row = 1; row <= axes.Rows(); ++row) {
    for (int column = 1; column <= axes.Columns(); ++column) {
      proposal.cells.push_back(Judge(evidence.At(row, column), row, column, grid.Value(row, column),
                                     targets.At(row, column), settings));
    }
  }
  FitFactors(evidence, settings, proposal.cells);
  proposal.corrected = TakeProposal(image, proposal, WholeMap(grid), &proposal.change);
  const MapGridModel after = FuelGridOf(proposal.corrected, proposal.fuel_map);
  for (ProposedCell& cell : proposal.cells) {
    cell.after_ms = after.Value(cell.row, cell.column);
    if (cell.state == CellProposalState::kProposed && cell.after_ms == cell.before_ms) {
      cell.state = CellProposalState::kUnchanged;
    }
  }
  return proposal;
}

DutyContext DutyOfImage(const CalibrationImage& image) {
  EngineSetup setup;
  setup.fuel_mode = image.Byte(FieldPos("InjectionMode")) & 0x03;
  SetupIgnitionDivide(setup);
  return {setup.ignition_divide, setup.fuel_mode == kFuelModeSequential};
}

CellTarget ProposalTarget(const FuelProposal& proposal) {
  return [&proposal](int row, int column, double current) {
    const ProposedCell* cell = proposal.Cell(row, column);
    if (!cell || cell->state == CellProposalState::kNoEvidence ||
        cell->state == CellProposalState::kTooLittle) {
      return std::nan("");
    }
    return current * cell->applied;
  };
}

CalibrationImage TakeProposal(const CalibrationImage& image, const FuelProposal& proposal,
                              const CellRect& rect, BulkChange* change) {
  MapGridModel grid = FuelGridOf(image, proposal.fuel_map);
  const BulkChange done = ApplyTargets(grid, rect, ProposalTarget(proposal), DutyOfImage(image));
  CalibrationImage corrected = image;
  corrected.WriteFuelMap(proposal.fuel_map, grid.ToMapValues());
  if (change) *change = done;
  return corrected;
}

}  // namespace vela
