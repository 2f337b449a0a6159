// The proposal: bilinear shares, the per-pass limit, cells without enough evidence left alone,
// and taking a selection of it.
#include <gtest/gtest.h>

#include "editors/editor_fakes.h"
#include "editors/map_file.h"
#include "editors/workbench/cell_selection.h"
#include "tune/cell_fit.h"
#include "tune/fuel_proposal.h"
#include "tune/tune_test_support.h"

namespace vela {
namespace {

TEST(CellShares, FourCellsShareEachPointAndAddUpToOne) {
  const TuneAxes axes = FuelAxesOf(editor_testing::SoundImage());
  for (double rpm : {-50.0, 0.0, 950.0, 3333.0, 8200.0, 9999.0}) {
    for (double load : {-1.0, 0.0, 12.5, 40.0, 99.9, 100.0, 250.0}) {
      double sum = 0.0;
      for (const CellShare& share : SharesAt(axes, rpm, load)) {
        EXPECT_GE(share.weight, 0.0);
        EXPECT_TRUE(share.row >= 1 && share.row <= 11 && share.column >= 1 && share.column <= 9);
        sum += share.weight;
      }
      EXPECT_NEAR(sum, 1.0, 1e-12) << rpm << " RPM, " << load << " kPa";
    }
  }
  // Halfway between two RPM sites and two load sites: a quarter each, to the right cells.
  const double rpm = (axes.RowRpm(5) + axes.RowRpm(6)) / 2;
  const CellShares shares = SharesAt(axes, rpm, 31.25);
  for (const CellShare& share : shares) {
    EXPECT_DOUBLE_EQ(share.weight, 0.25);
    EXPECT_TRUE(share.row == 5 || share.row == 6);
    EXPECT_TRUE(share.column == 3 || share.column == 4);
  }
  // On a site: that cell takes it all.
  double own = 0.0;
  for (const CellShare& share : SharesAt(axes, axes.RowRpm(4), 50.0)) {
    if (share.row == 4 && share.column == 5) own += share.weight;
  }
  EXPECT_DOUBLE_EQ(own, 1.0);
}

using FuelProposalTest = tune_testing::FlatFuelTest;

TEST_F(FuelProposalTest, ChangesNothingWithoutAndOnlyCellsWithEnoughEvidenceWithinTheLimit) {
  const FuelProposal none = Propose();
  EXPECT_EQ(none.corrected.Bytes(), image_.Bytes());
  EXPECT_TRUE(none.change.changed.empty());
  Evidence(5, 3, 120, 1.10);  // lean by 10 %
  Evidence(6, 3, 120, 1.40);  // lean by 40 %: held to 15 %
  Evidence(7, 3, 120, 0.50);  // rich by half: held to -15 %
  Evidence(8, 3, 10, 1.30);   // too little evidence
  const FuelProposal proposal = Propose();
  EXPECT_DOUBLE_EQ(Ms(proposal.corrected, 5, 3), 5.5);
  EXPECT_DOUBLE_EQ(Ms(proposal.corrected, 6, 3), 5.75);
  EXPECT_DOUBLE_EQ(Ms(proposal.corrected, 7, 3), 4.25);
  EXPECT_TRUE(proposal.Cell(6, 3)->limited);
  EXPECT_EQ(proposal.Cell(8, 3)->state, CellProposalState::kTooLittle);
  EXPECT_NEAR(proposal.Cell(8, 3)->factor, 1.3, 1e-12);  // shown, with what it has
  EXPECT_EQ(proposal.Cell(1, 1)->state, CellProposalState::kNoEvidence);
  EXPECT_EQ(proposal.change.changed.size(), 3u);
  EXPECT_EQ(DifferingMapCells(proposal.corrected, image_), 3);
}

TEST_F(FuelProposalTest, ASelectionTakesOnlyItsCellsAndTheDutyCapHolds) {
  Evidence(5, 3, 120, 1.10);
  Evidence(5, 4, 120, 1.10);
  Evidence(1, 9, 120, 1.15);  // top RPM row: its duty limit lies below 5.75 ms
  image_.SetFuelMs(1, BlockRowOfGridRow(1), 9, 8.0);
  const FuelProposal proposal = Propose();
  const std::array<int, kMapRows> limits = FuelDutyLimits(image_);
  EXPECT_LE(proposal.corrected.Read16(proposal.corrected.FuelCellPosition(1, kMapRows, 9)),
            static_cast<std::uint32_t>(limits[kMapRows - 1]));
  EXPECT_EQ(proposal.change.capped, 1);

  const CalibrationImage taken = TakeProposal(image_, proposal, CellRect{5, 3, 5, 3});
  EXPECT_DOUBLE_EQ(Ms(taken, 5, 3), 5.5);
  EXPECT_DOUBLE_EQ(Ms(taken, 5, 4), 5.0);
  EXPECT_DOUBLE_EQ(Ms(taken, 1, 9), 8.0);
}

// The engine needs 10 % more fuel from column 5 on, and ran only between sites: averaging each
// cell's samples would smear the step into columns 4 and 6; the fit puts it where it is.
TEST_F(FuelProposalTest, AStepInTheNeedStaysBetweenTheCellsWhereItIs) {
  const TuneAxes axes = FuelAxesOf(image_);
  const auto need = [](int column) { return column >= 5 ? 5.5 : 5.0; };
  SampleLog log = tune_testing::SteadyLog(0.0);
  log.step = tune_testing::kFrameStep;
  double time = 0.0;
  for (double load : {31.25, 40.0, 43.75, 56.25, 60.0, 68.75}) {
    const auto [left, right] =
        std::pair{static_cast<int>(load / 12.5) + 1, static_cast<int>(load / 12.5) + 2};
    const double part = load / 12.5 + 1 - left;
    const double needed = need(left) * (1 - part) + need(right) * part;
    SampleLog stretch = tune_testing::SteadyLog(5.0);
    for (TuneSample& sample : stretch.samples) {
      sample.time += time;
      sample.rpm = axes.RowRpm(5);
      sample.load = load;
      sample.afr = targets_.AtPoint(sample.rpm, load) * needed / 5.0;
      log.samples.push_back(sample);
    }
    time += 5.0;
  }
  vela::Evidence gathered{CellGrid(axes), {}};
  AddEvidence(log, targets_, FilterSettings(), DelayModel{0.0, 0.0}, gathered);
  const FuelProposal proposal = ProposeFuel(image_, gathered.cells, targets_, ProposalSettings());
  for (int column = 3; column <= 7; ++column) {
    EXPECT_NEAR(Ms(proposal.corrected, 5, column), need(column), 0.05) << column;  // 1 %
  }
}

// Samples only ever halfway between two cells fix their blend, not either cell: however many
// there are, neither cell is pinned, and neither is proposed. Samples on a site pin it.
TEST(CellFit, SamplesHalfwayPinNeitherCellAndSamplesOnASitePinIt) {
  const TuneAxes axes = FuelAxesOf(editor_testing::SoundImage());
  const TargetTable targets(axes);
  CellGrid grid(axes);
  const TuneSample halfway{.rpm = (axes.RowRpm(5) + axes.RowRpm(6)) / 2,
                           .load = axes.ColumnLoad(3)};
  TuneSample on_site = halfway;
  on_site.rpm = axes.RowRpm(8);
  for (int i = 0; i < 200; ++i) {
    ShareAfr(grid, halfway, 14.0, 14.0);
    ShareAfr(grid, on_site, 14.0, 14.0);
  }
  const std::vector<double> values(static_cast<std::size_t>(axes.Rows() * axes.Columns()), 5.0);
  std::vector<bool> free(values.size(), false);
  const auto index = [&](int row, int column) {
    return static_cast<std::size_t>((row - 1) * axes.Columns() + column - 1);
  };
  for (int row : {5, 6, 8}) free[index(row, 3)] = true;
  const CellFit fit = FitCells(grid, values, free);
  EXPECT_LT(fit.pinned[index(5, 3)], 15.0);
  EXPECT_LT(fit.pinned[index(6, 3)], 15.0);
  EXPECT_GT(fit.pinned[index(8, 3)], 150.0);
  EXPECT_NEAR(fit.factors[index(8, 3)], 1.0, 1e-9);
  EXPECT_EQ(fit.pinned[index(7, 3)], 0.0);  // not solved for
}

}  // namespace
}  // namespace vela
