// The fuel correction a log proposes for one fuel map: per cell the factor its evidence asks for
// (measured over target AFR: a lean cell gets more fuel), held to a limit per pass, and the map
// those factors give under the rules of any bulk change (the stored step, the map's range, the
// duty cap walked up each changed column). A cell with too little evidence is shown with what
// it has but never changed.
#pragma once

#include <vector>

#include "calibration/calibration_image.h"
#include "editors/workbench/bulk_change.h"
#include "tune/cell_evidence.h"

namespace vela {

struct ProposalSettings {
  int fuel_map = 1;           // 1 or 2
  double max_change = 0.15;   // no cell moves by more than this share in one pass
  double min_samples = 30.0;  // evidence a cell needs: kept samples, shared out...
  double min_time_s = 0.5;    // ...and time spent there...
  double min_pinned = 15.0;   // ...and samples that pin its value (cell_fit.h)
};

enum class CellProposalState {
  kNoEvidence,  // no kept sample
  kTooLittle,   // some, below one of the settings' minimums: shown, never proposed
  kProposed,    // the map changes here
  kUnchanged,   // enough evidence, but the factor rounds to the value the cell has
};

struct ProposedCell {
  int row = 1;     // grid row: 1 = the highest RPM site
  int column = 1;  // 1 = the first load site
  CellEvidence evidence;
  double target_afr = 0.0;  // the cell's own target
  double pinned = 0.0;      // the samples that pin its value in the fit (cell_fit.h)
  double fitted_ms = 0.0;   // the value the fit gives it (before_ms where nothing was fitted)
  double factor = 1.0;      // what the evidence asks for (NaN without evidence)
  double applied = 1.0;     // after the per-pass limit
  bool limited = false;     // the limit held the factor back
  double before_ms = 0.0;
  double after_ms = 0.0;
  CellProposalState state = CellProposalState::kNoEvidence;
};

struct FuelProposal {
  int fuel_map = 1;
  std::vector<ProposedCell> cells;  // every cell, rows top to bottom, columns left to right
  CalibrationImage corrected;       // the image with every proposed cell taken
  BulkChange change;                // the cells that changed, in sending order
  const ProposedCell* Cell(int row, int column) const;
};

// The proposal for `image`'s fuel map from `evidence` (gathered on the fuel axes of `image`).
FuelProposal ProposeFuel(const CalibrationImage& image, const CellGrid& evidence,
                         const TargetTable& targets, const ProposalSettings& settings);

// What taking the proposal does to a grid: the proposed value of each proposed cell, NaN
// (untouched) for every other, for ApplyTargets over the tuner's selection or the whole map.
CellTarget ProposalTarget(const FuelProposal& proposal);

// The duty cap's context under the image's own engine set-up.
DutyContext DutyOfImage(const CalibrationImage& image);

// The fuel map of `image` as a grid the bulk change rules can work on (its RPM sites set).
MapGridModel FuelGridOf(const CalibrationImage& image, int fuel_map);

// `image` with the proposal taken over `rect` (grid cells) only.
CalibrationImage TakeProposal(const CalibrationImage& image, const FuelProposal& proposal,
                              const CellRect& rect, BulkChange* change = nullptr);

}  // namespace vela
