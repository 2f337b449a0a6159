// The fuel correction against an engine whose true needs are known: the base calibration on an
// engine that needs 12 % more fuel at high load and speed and 8 % less at light cruise, two
// ten-minute drives, each followed by the whole proposal taken. The table of every cell with
// evidence is printed for the record (docs/tuning.md, "The proof").
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <vector>

#include "sim/core/base_calibration.h"
#include "sim/engine/drive_log.h"
#include "sim/engine/true_map.h"
#include "sim/engine/wideband.h"
#include "tune/tune_run.h"

namespace vela::sim {
namespace {

constexpr double kDriveSeconds = 600.0;

std::vector<FuelError> KnownErrors() {
  return {*ParseFuelError("12@4000-9000,60-100"), *ParseFuelError("-8@1500-3500,20-50")};
}

struct Pass {
  TuneRun run;
  CalibrationImage after;
};

// One drive on `image` and the whole proposal taken (ProposeFuel takes it over the whole map
// through the bulk change rules, the duty cap included).
Pass DriveAndTake(const CalibrationImage& image, std::uint64_t seed) {
  SimOptions options;
  options.seed = seed;
  options.fuel_errors = KnownErrors();
  DatalogLog log;
  RunDrive(options, image, kDriveSeconds, log);
  const DatalogLog* logs[] = {&log};
  const TargetTable targets(FuelAxesOf(image));
  TuneRun run = RunTune(logs, image, targets, TuneSettings{});
  CalibrationImage after = run.proposal.corrected;
  return {std::move(run), std::move(after)};
}

double CellMs(const CalibrationImage& image, int row, int column) {
  return FuelGridOf(image, 1).Value(row, column);
}

bool Enough(const ProposedCell& cell) {
  return cell.state == CellProposalState::kProposed || cell.state == CellProposalState::kUnchanged;
}

double Percent(double value, double truth) { return 100.0 * (value / truth - 1.0); }

void PrintTable(const CalibrationImage& base, const CalibrationImage& truth, const Pass& first,
                const Pass& second) {
  std::printf(
      "row,column,rpm,load,true_ms,base_ms,pass1_ms,pass2_ms,base_err,pass1_err,"
      "pass2_err,evidence1,evidence2\n");
  for (const ProposedCell& cell : first.run.proposal.cells) {
    const ProposedCell& again = *second.run.proposal.Cell(cell.row, cell.column);
    if (!Enough(cell) && !Enough(again)) continue;
    const TuneAxes& axes = first.run.evidence.cells.Axes();
    const double t = CellMs(truth, cell.row, cell.column);
    const double b = CellMs(base, cell.row, cell.column);
    const double p1 = CellMs(first.after, cell.row, cell.column);
    const double p2 = CellMs(second.after, cell.row, cell.column);
    std::printf("%d,%d,%.0f,%.1f,%.3f,%.3f,%.3f,%.3f,%+.1f%%,%+.1f%%,%+.1f%%,%.0f,%.0f\n", cell.row,
                cell.column, axes.RowRpm(cell.row), axes.ColumnLoad(cell.column), t, b, p1, p2,
                Percent(b, t), Percent(p1, t), Percent(p2, t), cell.evidence.samples,
                again.evidence.samples);
  }
}

// Every cell the pass had enough evidence for within `percent` of the truth; every other cell
// as it was before the pass.
void ExpectPassLands(const Pass& pass, const CalibrationImage& before,
                     const CalibrationImage& truth, double percent, const char* name) {
  int proposed = 0;
  for (const ProposedCell& cell : pass.run.proposal.cells) {
    const double after = CellMs(pass.after, cell.row, cell.column);
    if (Enough(cell)) {
      ++proposed;
      EXPECT_NEAR(Percent(after, CellMs(truth, cell.row, cell.column)), 0.0, percent)
          << name << " cell " << cell.row << "," << cell.column;
    } else {
      EXPECT_EQ(after, CellMs(before, cell.row, cell.column))
          << name << " changed cell " << cell.row << "," << cell.column << " without evidence";
    }
  }
  EXPECT_GT(proposed, 60) << name;
}

// Not yet met: see docs/tuning.md, "The proof".
TEST(TuningProofTest, DISABLED_TwoDrivesBringTheBaseCalibrationToTheEnginesTrueMap) {
  const CalibrationImage base = EmbeddedBaseCalibration();
  const TargetTable targets(FuelAxesOf(base));
  const CalibrationImage truth = WithTrueFuelMap(base, KnownErrors(), targets);
  const Pass first = DriveAndTake(base, 1);
  const Pass second = DriveAndTake(first.after, 2);
  PrintTable(base, truth, first, second);
  ExpectPassLands(first, base, truth, 3.0, "pass 1");
  ExpectPassLands(second, first.after, truth, 1.5, "pass 2");
  for (const Pass* pass : {&first, &second}) {
    const DelayFit& fit = pass->run.fit;
    ASSERT_TRUE(fit.fitted) << fit.why_not;
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
