// The per-channel autoscale, the chart layout and its text, the marker list, and the file saved
// beside a log.
#include <gtest/gtest.h>

#include "datalog/review/chart_layout.h"
#include "datalog/review/marker_list.h"
#include "datalog/review/review_file.h"
#include "datalog/review/review_test_support.h"

namespace vela::review {
namespace {

TEST(Autoscale, NiceRangesAroundTheValues) {
  EXPECT_EQ(NiceRange(0, 100), (AxisRange{0, 100, 20}));
  EXPECT_EQ(NiceRange(812, 6430), (AxisRange{0, 8000, 2000}));
  EXPECT_EQ(NiceRange(-3, -1), (AxisRange{-3, -1, 0.5}));
  EXPECT_EQ(NiceRange(0, 0), (AxisRange{-1, 1, 0.5}));
  EXPECT_EQ(NiceRange(50, 50), (AxisRange{40, 60, 5}));
  for (const auto& [low, high] : {std::pair{0.013, 0.0171}, {-512.0, 1e6}, {99.9, 100.1}}) {
    const AxisRange range = NiceRange(low, high);
    // Containing, up to the rounding of a bound that is itself on a step.
    EXPECT_LE(range.low, low + 1e-9 * range.step);
    EXPECT_GE(range.high, high - 1e-9 * range.step);
    EXPECT_LE((range.high - range.low) / range.step, kAxisTicks + 1.5) << low << " " << high;
  }
}

TEST(Autoscale, RangeOfTheRecordsInViewOrTheFixedScale) {
  // A spike at record 1000 of 4000 (0.01 s apart), NaN at 2000, the rest within 10..20.
  std::vector<double> values(4000);
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = 10 + static_cast<double>(i % 11);
  values[1000] = 95;
  values[2000] = std::nan("");
  const DatalogLog log = testing::LogOf(testing::Steps(4000, 0.01), {{0, values}});
  const ColumnView column = RecordedColumn(log, 0);
  EXPECT_EQ(ScaleInView({}, column, log.Times(), 0, 40), (AxisRange{0, 100, 20}));
  EXPECT_EQ(ScaleInView({}, column, log.Times(), 10.005, 40), (AxisRange{10, 20, 2}));
  EXPECT_EQ(ScaleInView({}, column, log.Times(), 20.001, 20.009), std::nullopt);  // no record
  EXPECT_EQ(ScaleInView({false, 0, 250}, column, log.Times(), 0, 40), (AxisRange{0, 250, 50}));
  EXPECT_EQ(ScaleInView({false, 7.5, 7.5}, column, log.Times(), 0, 40), (AxisRange{7.5, 7.5, 1}));
}

TEST(ChartLayout, PanelsAndScalesEditedAndKeptInText) {
  ChartLayout layout;
  ASSERT_EQ(layout.Panels().size(), 1u);
  EXPECT_EQ(layout.Panels()[0].channels.size(), 12u);
  for (int i = 0; i < 4; ++i) layout.AddPanel();
  EXPECT_EQ(layout.Panels().size(), 4u);
  EXPECT_TRUE(layout.Place("AFR", 1));
  EXPECT_TRUE(layout.Place("AFR Error", 1));
  EXPECT_TRUE(layout.Place("Throttle Pump Addition", 3));
  EXPECT_FALSE(layout.Place("MAP", 4));
  EXPECT_TRUE(layout.SetScale("map", {false, 0, 250}));
  EXPECT_TRUE(layout.SetScale("AFR Error", {false, -2.5, 2.5}));
  EXPECT_FALSE(layout.SetScale("Boost", {false, 0, 1}));
  layout.Select("AFR Error");
  EXPECT_EQ(layout.PanelOf("afr"), 1);
  const std::string text = LayoutText(layout);
  EXPECT_NE(text.find("panel AFR \"AFR Error\"=-2.5:2.5\n"), std::string::npos) << text;
  EXPECT_NE(text.find(" MAP=0:250 "), std::string::npos) << text;
  const LayoutRead read = ReadLayout(text);
  EXPECT_TRUE(read.problems.empty());
  EXPECT_EQ(read.layout, layout);
  // Removing a panel hands its channels to the one above; the last panel stays.
  EXPECT_TRUE(layout.RemovePanel(1));
  EXPECT_EQ(layout.PanelOf("AFR Error"), 0);
  while (layout.Panels().size() > 1) layout.RemovePanel(0);
  EXPECT_FALSE(layout.RemovePanel(0));
  EXPECT_EQ(layout.Panels()[0].channels.size(), 13u);
}

TEST(ChartLayout, BadLinesAreSkippedWithTheirReasons) {
  const LayoutRead read = ReadLayout(
      "# mine\r\npanel RPM MAP=5:1\npanel RPM TPS\n\npanel \"AFR\nwhat\npanel\npanel Fuel Fuel\n"
      "panel a\npanel b\npanel c\nselect \"Duty %\"\n");
  EXPECT_EQ(read.problems, (std::vector<std::string>{
                               "line 2: a fixed scale is written =MIN:MAX with MIN below MAX",
                               "line 5: a quoted name is not closed", "line 6: not a layout line",
                               "line 8: Fuel is shown twice", "line 11: more than 4 panels"}));
  ASSERT_EQ(read.layout.Panels().size(), 4u);
  EXPECT_EQ(read.layout.Panels()[0].channels.size(), 2u);
  EXPECT_TRUE(read.layout.Panels()[1].channels.empty());
  EXPECT_EQ(read.layout.Selected(), "Duty");
  EXPECT_EQ(ReadLayout("nothing usable").layout.Panels(), ChartLayout().Panels());
}

TEST(ChartLayout, CheckBoxCaptionsPlaceTheRecordedChannels) {
  const LayoutRead read =
      ReadLayout("panel RPM \"duty %\"=0:100\npanel \"AFR Ratio (x10)\"\nselect \"Idle %\"\n");
  ASSERT_TRUE(read.problems.empty());
  EXPECT_EQ(read.layout.PanelOf("Duty"), 0);
  EXPECT_EQ(read.layout.PanelOf("AFR"), 1);
  ASSERT_NE(read.layout.Find("Duty %"), nullptr);
  EXPECT_FALSE(read.layout.Find("DUTY")->scale.automatic);
  EXPECT_EQ(read.layout.Selected(), "Idle");
  EXPECT_EQ(LayoutText(read.layout), "panel RPM Duty=0:100\npanel AFR\nselect Idle\n");
  // Either name of one channel is that channel once: the second is refused.
  EXPECT_EQ(ReadLayout("panel AFR \"afr ratio (x10)\"\n").problems,
            (std::vector<std::string>{"line 1: AFR is shown twice"}));
}

TEST(MarkerList, TunersFaultsAndGapsInTimeOrder) {
  // 60 frames a second; 10 frames lost before record 100.
  DatalogLog log;
  ChannelValues values{};
  for (int i = 0; i < 300; ++i) {
    const double time = (i + 1) / 60.0;
    log.Append(time, time + (i >= 100 ? 10 / 60.0 : 0.0), values, 1);
  }
  log.CloseGaps();
  log.AddMarkerAt(1.0, "Mark 1");
  log.AddMarkerAt(log.Times()[100], "Fault 37:Trigger Angle Error");
  log.AddMarkerAt(0.5, "Fault line");
  const std::vector<MarkerEntry> list = BuildMarkerList(log);
  ASSERT_EQ(list.size(), 4u);
  EXPECT_EQ(list[0].kind, MarkerKind::kTuner);  // "Fault line" is no fault
  EXPECT_EQ(list[1].text, "Mark 1");
  EXPECT_EQ(list[2].kind, MarkerKind::kFault);
  EXPECT_EQ(list[3].kind, MarkerKind::kGap);  // same time as the fault, after it
  EXPECT_EQ(list[3].text.substr(0, 26), "Gap: 10 frames missing, 0.");
  EXPECT_FALSE(list[3].Editable());
  EXPECT_EQ(NextMarker(list, 0.5), 1u);
  EXPECT_EQ(NextMarker(list, list[3].time), std::nullopt);
  EXPECT_EQ(PreviousMarker(list, 1.0), 0u);
  EXPECT_EQ(PreviousMarker(list, 0.5), std::nullopt);
  EXPECT_TRUE(log.SetMarkerText(list[1].source, "Launch"));
  EXPECT_EQ(BuildMarkerList(log)[1].text, "Launch");
  EXPECT_FALSE(log.SetMarkerText(3, "none"));
}

TEST(ReviewFile, MathChannelsAndLayoutSavedBesideTheLog) {
  ReviewState state;
  state.math = {{"Injector Duty", "100 * Fuel * RPM / 120000"}, {"Lean", "AFR / 10 > 15"}};
  state.hidden = {"Injector Duty"};
  state.layout.AddPanel();
  state.layout.Place("Lean", 1);
  state.layout.SetScale("Lean", {false, 0, 1});
  const std::string text = ReviewFileText(state);
  EXPECT_EQ(text.substr(0, text.find("panel")),
            "VELA review 1\nmath \"Injector Duty\" = 100 * Fuel * RPM / 120000\n"
            "math Lean = AFR / 10 > 15\nhide \"Injector Duty\"\n");
  const ReviewRead read = ReadReviewFile(text);
  EXPECT_TRUE(read.recognised);
  EXPECT_TRUE(read.problems.empty());
  EXPECT_EQ(read.state, state);

  const ReviewRead damaged = ReadReviewFile(
      "VELA review 1\r\nmath RPM = 1\nmath X 2\nmath \"Y = 3\nmath Z = MAP +\nmath z = 1\n"
      "hide z\nhide Lean\nhide z 2\n");
  EXPECT_EQ(damaged.problems.size(), 6u);
  EXPECT_EQ(damaged.state.hidden, std::vector<std::string>{"z"});
  ASSERT_EQ(damaged.state.math.size(), 1u);
  EXPECT_EQ(damaged.state.math[0].expression, "MAP +");  // kept as written
  EXPECT_FALSE(ReadReviewFile("VELA review 2\n").recognised);
  EXPECT_FALSE(ReadReviewFile(std::string(kMaxReviewFileBytes + 1, '\n')).recognised);
  EXPECT_EQ(ReviewPathFor("/logs/run.1.SL1"), "/logs/run.1.review");
  EXPECT_EQ(ReviewPathFor("/logs/run"), "/logs/run.review");
}

}  // namespace
}  // namespace vela::review
