// The fuel correction against an engine whose true needs are known: the base calibration on an
// engine that needs 12 % more fuel at high load and speed and 8 % less at light cruise, two
// ten-minute drives, each followed by the whole proposal taken. The table of every cell with
// evidence is printed for the record (docs/tuning.md, "The proof").
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "sim/core/base_calibration.h"
#include "sim/engine/drive_log.h"
#include "sim/engine/true_map.h"
#include "sim/engine/wideband.h"
#include "tune/tune_run.h"

namespace vela::sim {
namespace {

constexpr double kDriveSeconds = 600.0;
// The tuner logs for a correction at the fastest live-frame rate, three times the default, and
// asks three times the default evidence of a cell: the same seconds of it.
constexpr int kFramesPerSecond = 60;
constexpr double kRateOverDefault = 3.0;
// Cells proposed in each error region at the least, for a pass to prove anything.
constexpr int kCellsInEachRegion = 6;

std::vector<FuelError> KnownErrors() {
  return {*ParseFuelError("12@4000-9000,60-100"), *ParseFuelError("-8@1500-3500,20-50")};
}

struct Pass {
  DatalogLog log;
  DelayFit fit;  // over the steps of this drive and of the drive before it
  TuneRun run;
  CalibrationImage after;
};

// One drive on `image` and the whole proposal taken (ProposeFuel takes it over the whole map
// through the bulk change rules, the duty cap included). The exhaust is the same engine's in
// every drive, so the delay is fitted over the steps of the drive before too, as the tuner who
// adds the first log for the delay would; the evidence is this drive's alone.
Pass DriveAndTake(const CalibrationImage& image, std::uint64_t seed, const Pass* before) {
  SimOptions options;
  options.seed = seed;
  options.fuel_errors = KnownErrors();
  DatalogLog log;
  RunDrive(options, image, kDriveSeconds, log, kFramesPerSecond);
  std::vector<SampleLog> steps_from = {SamplesOf(log, LoadBasis::kMap)};
  if (before) steps_from.push_back(SamplesOf(before->log, LoadBasis::kMap));
  TuneSettings settings;
  settings.proposal.min_samples *= kRateOverDefault;
  settings.proposal.min_pinned *= kRateOverDefault;
  DelayFit fit;
  settings.delay = ChooseDelay(steps_from, settings, fit);
  const DatalogLog* logs[] = {&log};
  TuneRun run = RunTune(logs, image, TargetTable(FuelAxesOf(image)), settings);
  CalibrationImage after = run.proposal.corrected;
  return {std::move(log), fit, std::move(run), std::move(after)};
}

double CellMs(const CalibrationImage& image, int row, int column) {
  return FuelGridOf(image, 1).Value(row, column);
}

bool Enough(const ProposedCell& cell) {
  return cell.state == CellProposalState::kProposed || cell.state == CellProposalState::kUnchanged;
}

double Percent(double value, double truth) { return 100.0 * (value / truth - 1.0); }

std::string Evidence(const ProposedCell& cell) {
  char text[48];
  std::snprintf(text, sizeof text, "%.0f/%.0f%s", cell.evidence.samples, cell.pinned,
                Enough(cell) ? "*" : "");
  return text;
}

void PrintTable(const CalibrationImage& base, const CalibrationImage& truth, const Pass& first,
                const Pass& second) {
  std::printf(
      "row,column,rpm,load,true_ms,base_ms,pass1_ms,pass2_ms,base_err,pass1_err,"
      "pass2_err,evidence1,evidence2\n");
  std::printf("(evidence: kept samples/pinned samples, * when proposed)\n");
  for (const ProposedCell& cell : first.run.proposal.cells) {
    const ProposedCell& again = *second.run.proposal.Cell(cell.row, cell.column);
    if (!Enough(cell) && !Enough(again)) continue;
    const TuneAxes& axes = first.run.evidence.cells.Axes();
    const double t = CellMs(truth, cell.row, cell.column);
    const double b = CellMs(base, cell.row, cell.column);
    const double p1 = CellMs(first.after, cell.row, cell.column);
    const double p2 = CellMs(second.after, cell.row, cell.column);
    std::printf("%d,%d,%.0f,%.1f,%.3f,%.3f,%.3f,%.3f,%+.1f%%,%+.1f%%,%+.1f%%,%s,%s\n", cell.row,
                cell.column, axes.RowRpm(cell.row), axes.ColumnLoad(cell.column), t, b, p1, p2,
                Percent(b, t), Percent(p1, t), Percent(p2, t), Evidence(cell).c_str(),
                Evidence(again).c_str());
  }
}

// Every cell the pass had enough evidence for within `percent` of the truth; every other cell
// as it was before the pass.
void ExpectPassLands(const Pass& pass, const CalibrationImage& before,
                     const CalibrationImage& truth, double percent, const char* name) {
  for (const ProposedCell& cell : pass.run.proposal.cells) {
    const double after = CellMs(pass.after, cell.row, cell.column);
    if (Enough(cell)) {
      EXPECT_NEAR(Percent(after, CellMs(truth, cell.row, cell.column)), 0.0, percent)
          << name << " cell " << cell.row << "," << cell.column;
    } else {
      EXPECT_EQ(after, CellMs(before, cell.row, cell.column))
          << name << " changed cell " << cell.row << "," << cell.column << " without evidence";
    }
  }
}

// For the passes to prove anything, both error regions must have been corrected in many cells:
// counted are the cells one pass or the other proposed where the engine needs more (`sign` 1)
// or less (-1) fuel than the base calibration gives by more than 5 %.
int CorrectedInRegion(const Pass& first, const Pass& second, const CalibrationImage& base,
                      const CalibrationImage& truth, int sign) {
  int count = 0;
  for (const ProposedCell& cell : first.run.proposal.cells) {
    const double need =
        Percent(CellMs(truth, cell.row, cell.column), CellMs(base, cell.row, cell.column));
    const bool either = Enough(cell) || Enough(*second.run.proposal.Cell(cell.row, cell.column));
    count += either && sign * need > 5.0;
  }
  return count;
}

TEST(TuningProofTest, TwoDrivesBringTheBaseCalibrationToTheEnginesTrueMap) {
  const CalibrationImage base = EmbeddedBaseCalibration();
  const TargetTable targets(FuelAxesOf(base));
  const CalibrationImage truth = WithTrueFuelMap(base, KnownErrors(), targets);
  const Pass first = DriveAndTake(base, 1, nullptr);
  const Pass second = DriveAndTake(first.after, 2, &first);
  PrintTable(base, truth, first, second);
  ExpectPassLands(first, base, truth, 3.0, "pass 1");
  ExpectPassLands(second, first.after, truth, 1.5, "pass 2");
  EXPECT_GE(CorrectedInRegion(first, second, base, truth, 1), kCellsInEachRegion);
  EXPECT_GE(CorrectedInRegion(first, second, base, truth, -1), kCellsInEachRegion);
  for (const Pass* pass : {&first, &second}) {
    const DelayFit& fit = pass->fit;
    ASSERT_TRUE(fit.fitted) << fit.why_not;
    EXPECT_NEAR(fit.record_step_s, 1.002 / kFramesPerSecond, 1e-3);
    EXPECT_FALSE(CoarseDelayFit(fit));  // fast enough for a sure fit: no warning shown
    // The fit's load is the load axis's unit (kPa here); the engine's is percent of the axis's
    // span, which on this 0 to 100 kPa axis is the same number.
    const TuneAxes axes = FuelAxesOf(base);
    ASSERT_EQ(axes.loads.front(), 0.0);
    const double to_percent = 100.0 / axes.loads.back();
    const double points[][2] = {{900, 30}, {2500, 40}, {4000, 60}, {6000, 100}};
    for (const auto& [rpm, load] : points) {
      const double engine = TransportDelayS(rpm, load * to_percent);
      EXPECT_NEAR(fit.model.At(rpm, load) / engine, 1.0, 0.10)
          << "delay at " << rpm << " RPM, " << load << " kPa: fitted " << fit.model.floor_s
          << " s + " << fit.model.k << ", engine " << engine << " s";
    }
  }
}

}  // namespace
}  // namespace vela::sim
