// The proposal as the map pages show it: the proposed image (values, never factors applied
// twice), the amber marks, the words for a cell and the delay, and the settings file.
#include "tune/view/proposal_view.h"

#include <gtest/gtest.h>

#include "tune/tune_test_support.h"

namespace vela {
namespace {

using ProposalViewTest = tune_testing::FlatFuelTest;

TEST_F(ProposalViewTest, ProposedImageHoldsTheProposedValuesOnceOnly) {
  Evidence(5, 3, 120, 1.10);
  Evidence(8, 3, 10, 1.30);  // too little
  const FuelProposal proposal = Propose();
  const CalibrationImage proposed = ProposedImage(image_, proposal);
  EXPECT_NEAR(Ms(proposed, 5, 3), 5.5, 0.001);
  // The cell with too little evidence, those without any and the other maps stay as they were.
  EXPECT_EQ(DifferingMapCells(proposed, image_), 1);
  // An image that holds the proposal already is given back as it is: taking it twice does not
  // multiply the correction.
  EXPECT_EQ(ProposedImage(proposed, proposal).Bytes(), proposed.Bytes());
  // An image edited elsewhere keeps the edit; only the proposed cell is set.
  CalibrationImage edited = image_;
  edited.SetFuelMs(1, BlockRowOfGridRow(2), 2, 4.0);
  const CalibrationImage over_edit = ProposedImage(edited, proposal);
  EXPECT_EQ(Ms(over_edit, 2, 2), 4.0);
  EXPECT_NEAR(Ms(over_edit, 5, 3), 5.5, 0.001);
}

TEST_F(ProposalViewTest, TooLittleEvidenceIsMarkedAmberWithoutHidingOtherMarks) {
  Evidence(8, 3, 10, 1.30);
  Evidence(8, 4, 10, 1.30);
  Evidence(5, 3, 120, 1.10);
  const FuelProposal proposal = Propose();
  GridOverlay overlay(kMapRows, 9);
  CellOverlay framed;
  framed.mark = Rgb{1, 2, 3};
  overlay.Set({8, 4}, framed);
  MarkTooLittle(overlay, proposal);
  EXPECT_EQ(overlay.At(8, 3)->mark, kTooLittleMark);
  EXPECT_EQ(overlay.At(8, 4)->mark, (Rgb{1, 2, 3}));
  EXPECT_FALSE(overlay.At(5, 3)->mark.has_value());
  GridOverlay empty;
  MarkTooLittle(empty, proposal);
  ASSERT_FALSE(empty.Empty());
  EXPECT_EQ(empty.At(8, 3)->mark, kTooLittleMark);
}

TEST_F(ProposalViewTest, EvidenceTextsSayTheStateAndTheFiguresItHas) {
  Evidence(5, 3, 120, 1.10);
  Evidence(6, 3, 120, 1.40);
  Evidence(8, 3, 10, 1.30);
  const FuelProposal proposal = Propose();
  const TuneAxes axes = FuelAxesOf(image_);
  const std::string proposed = EvidenceText(*proposal.Cell(5, 3), axes);
  EXPECT_NE(proposed.find("120.0 samples"), std::string::npos) << proposed;
  EXPECT_NE(proposed.find("factor 1.100, proposed +10.0 %"), std::string::npos) << proposed;
  EXPECT_NE(EvidenceText(*proposal.Cell(6, 3), axes).find("limited +15.0 %"), std::string::npos);
  EXPECT_NE(EvidenceText(*proposal.Cell(8, 3), axes).find("too little evidence"),
            std::string::npos);
  const std::string none = EvidenceText(*proposal.Cell(1, 1), axes);
  EXPECT_EQ(none.find("mean AFR"), std::string::npos) << none;
  EXPECT_NE(none.find("no evidence"), std::string::npos) << none;
  EXPECT_EQ(SummaryText(proposal),
            "2 cells proposed (1 limited), 1 with too little evidence, 96 without");
}

TEST(ProposalTexts, SamplesSayWhatBecameOfThemLeavingOutVerdictsWithNone) {
  VerdictCounts counts{};
  EXPECT_EQ(SamplesText(counts), "Samples: 0");
  counts[static_cast<std::size_t>(SampleVerdict::kCold)] = 880;
  counts[static_cast<std::size_t>(SampleVerdict::kDecelCut)] = 21;
  EXPECT_EQ(SamplesText(counts), "Samples: 901; cold engine 880; decel cut 21");
  counts[static_cast<std::size_t>(SampleVerdict::kKept)] = 99;
  EXPECT_EQ(SamplesText(counts), "Samples: 1000; kept 99; cold engine 880; decel cut 21");
}

TEST(ProposalTexts, DelaySaysSetFittedOrDefaultAndWhy) {
  TuneRun run{{}, {0.1, 0.0}, true, Evidence{CellGrid(TuneAxes{}), {}}, {}};
  EXPECT_EQ(DelayText(run), "Delay set: 0.100 s");
  run.delay_set = false;
  run.fit = DelayFit{true, {0.05, 12000.0}, 14, 2, 0.0123, "", 1.0 / 60.0};
  run.delay = run.fit.model;
  EXPECT_EQ(DelayText(run),
            "Delay fitted: 0.050 s + 12000 / (RPM x load); 14 steps used, 2 left out, RMS 12.3 ms");
  // From logs slower than 30 frames a second each step is timed only to a record.
  run.fit.record_step_s = 1.002 / 30.0;
  EXPECT_EQ(CoarseFitText(run.fit), "");
  run.fit.record_step_s = 1.002 / 20.0;
  EXPECT_EQ(CoarseFitText(run.fit),
            "Logged at 20 frames/s: each step is timed only to a frame (50 ms); log at 60 for a "
            "surer delay");
  run.fit = DelayFit{false, {}, 0, 0, 0.0, "only 2 steps", 0.05};
  run.delay = kDefaultDelay;
  EXPECT_EQ(DelayText(run), "Delay default: 0.080 s + 4000 / (RPM x load) (only 2 steps)");
  EXPECT_EQ(CoarseFitText(run.fit), "");  // nothing fitted, nothing to warn of
}

TEST(TuneSettingsFile, RoundTripsAndIgnoresWhatItCannotUse) {
  TuneSettings settings;
  settings.delay = DelayModel{0.12, 0.0};
  settings.filters.min_water_c = 60.0;
  settings.proposal.max_change = 0.1;
  settings.proposal.min_samples = 45.0;
  settings.proposal.min_pinned = 7.5;
  settings.filters.max_off_fit = 0.0;  // the check against the fit off
  const TuneSettings read = ReadTuneSettingsText(TuneSettingsText(settings));
  EXPECT_EQ(read.delay, settings.delay);
  EXPECT_EQ(TuneSettingsText(read), TuneSettingsText(settings));
  EXPECT_NE(TuneSettingsText(settings).find("max_change_percent = 10\n"), std::string::npos);
  EXPECT_NE(TuneSettingsText(TuneSettings{}).find("min_pinned = 15\nmax_off_fit_percent = 3\n"),
            std::string::npos);

  // Defaults stay where a line is unknown, no number, out of range or without "=".
  const TuneSettings odd = ReadTuneSettingsText(
      "delay = soon\r\nmin_water_c = 1e9\nmax_change_percent = 12abc\nnonsense = 4\n"
      "min_samples\n  min_time_s\t=  2.5 \r\nmax_off_fit_percent = 60\nmin_pinned = -1\n");
  TuneSettings expected;
  expected.proposal.min_time_s = 2.5;
  EXPECT_EQ(TuneSettingsText(odd), TuneSettingsText(expected));
  EXPECT_FALSE(ReadTuneSettingsText("delay = 0.2\ndelay = fit\n").delay.has_value());
  EXPECT_FALSE(ReadTuneSettingsText("delay = 3\n").delay.has_value());  // beyond 2 s
}

}  // namespace
}  // namespace vela
