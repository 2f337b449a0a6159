// The fuel proposal as the map pages show it and the program keeps its settings: the map the
// proposal makes of an image, the marks of the cells with too little evidence, the words for a
// cell's evidence and for the delay used, and the settings as a small text file.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "editors/mapgrid/cell_overlay.h"
#include "tune/tune_run.h"

namespace vela {

// The mark of a cell whose evidence is too little to propose anything: amber, apart from the
// comparison's red, blue and purple.
inline constexpr Rgb kTooLittleMark{235, 160, 0};

// `image` with the proposed value of every proposed cell put in its fuel map (as values, not
// factors: an image that already holds them is given back unchanged), under the rules of any
// bulk change (the stored step, the range, the duty cap walked up each changed column).
CalibrationImage ProposedImage(const CalibrationImage& image, const FuelProposal& proposal);

// Marks every cell with too little evidence that carries no other mark.
void MarkTooLittle(GridOverlay& overlay, const FuelProposal& proposal);

// "proposed", "limited", "unchanged", "too little evidence", "no evidence".
std::string StateText(const ProposedCell& cell);

// One line for a cell on `axes` (the fuel map's): "RPM 3000, 60 kPa: 84.2 samples, 5.1 s, mean
// AFR 13.92, target 13.90, factor 1.001, proposed +0.1 %" (the figures its state has).
std::string EvidenceText(const ProposedCell& cell, const TuneAxes& axes);

// The delay used: set, fitted with its quality, or the default and why.
std::string DelayText(const TuneRun& run);
// What became of the logs' samples: "Samples: 12000; kept 7293; cold engine 1881; ..." (the
// verdicts with none left out), so that a proposal with little evidence says why.
std::string SamplesText(const VerdictCounts& counts);
// A warning when the delay was fitted from logs too slow for a sure fit; empty otherwise.
std::string CoarseFitText(const DelayFit& fit);

// The cells by state: "31 cells proposed (4 limited), 12 with too little evidence, 144 without".
std::string SummaryText(const FuelProposal& proposal);

// A setting the tuner may change (besides the delay): its name in the settings file, its label,
// the field, its range as the tuner sees it, the tuner's number per unit of the field (100 for a
// share shown in percent) and the decimals shown.
struct TuneSettingField {
  const char* name;
  const char* label;
  double& (*field)(TuneSettings&);
  double low;
  double high;
  double shown;
  int decimals;
};
std::span<const TuneSettingField> TuneSettingFields();

// The settings a tuner may change, as "name = value" lines; a delay set says its floor, a delay
// fitted says "delay = fit".
std::string TuneSettingsText(const TuneSettings& settings);
// Read back over the defaults: an unknown name, a value that is no number or lies outside its
// range leaves that setting as it was.
TuneSettings ReadTuneSettingsText(std::string_view text);

}  // namespace vela
