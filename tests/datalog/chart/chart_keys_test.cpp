// The chart's keys: which press is which key, zooming around cursor A, pans held within the
// log, cursor steps by record and by second (over holes in the log), marker jumps and the view
// following a cursor.
#include "datalog/chart/chart_keys.h"

#include <gtest/gtest.h>

#include "datalog/chart/chart_view.h"
#include "datalog/datalog_test_support.h"

namespace vela {
namespace {

using Named = ChartKeyPress::Named;

ChartKeyPress Typed(char text) { return {Named::kNone, text, false, false}; }
ChartKeyPress Control(Named named) { return {named, 0, true, false}; }

// Records every 0.1 s from 0.1 to 20.0 s.
struct Log10Hz {
  DatalogLog log = testing::PatternLog(200);
};

TEST(ChartKeyOf, TheChartTakesItsKeysAndLeavesPageLettersAndOtherChordsAlone) {
  EXPECT_EQ(ChartKeyOf(Typed('=')), ChartKey::kZoomIn);
  EXPECT_EQ(ChartKeyOf(Typed('z')), ChartKey::kZoomToCursors);
  EXPECT_EQ(ChartKeyOf(Control(Named::kPageUp)), ChartKey::kPanBackView);
  EXPECT_EQ(ChartKeyOf({Named::kNone, 'I', true, false}), ChartKey::kExportPicture);
  EXPECT_FALSE(ChartKeyOf({Named::kLeft, 0, false, false}));  // the grid's, not a pan
  EXPECT_FALSE(ChartKeyOf({Named::kNone, '+', false, true}));
  EXPECT_FALSE(ChartKeyOf({Named::kNone, 'Z', true, false}));  // the undo
  for (char letter : std::string("FITCMSHDOGNPLUKfitcmshdognplukxi")) {
    EXPECT_FALSE(ChartKeyOf(Typed(letter))) << letter;
  }
}

TEST(ChartKeys, ZoomKeepsCursorAUnderItsPlaceOrCentresOnItWhenOffScreen) {
  Log10Hz f;
  const ChartView view{{0.0, 10.0}, 2.5, std::nullopt};
  const ChartView in = ApplyChartKey(f.log, view, ChartKey::kZoomIn);
  EXPECT_DOUBLE_EQ((2.5 - in.axis.min) / (in.axis.max - in.axis.min), 0.25);
  EXPECT_DOUBLE_EQ(in.axis.max - in.axis.min, 5.0);
  const ChartView out = ApplyChartKey(f.log, in, ChartKey::kZoomOut);
  EXPECT_DOUBLE_EQ(out.axis.min, 0.0);
  EXPECT_DOUBLE_EQ(out.axis.max, 10.0);

  const ChartView no_cursor = ApplyChartKey(f.log, {{4.0, 8.0}}, ChartKey::kZoomIn);
  EXPECT_EQ(no_cursor.axis, (TimeAxis{5.0, 7.0}));

  const ChartView off = ApplyChartKey(f.log, {{0.0, 4.0}, 12.0}, ChartKey::kZoomIn);
  EXPECT_EQ(off.axis, (TimeAxis{11.0, 13.0}));
}

TEST(ChartKeys, ZoomingOutStopsAtTheWholeLogAndNeverLeavesIt) {
  Log10Hz f;
  const TimeAxis whole = WholeLogAxis(f.log);
  ChartView view{{18.0, 20.0}};
  for (int i = 0; i < 8; ++i) view = ApplyChartKey(f.log, view, ChartKey::kZoomOut);
  EXPECT_EQ(view.axis, whole);
  // A view already wider than the log (while logging) is never narrowed by zooming out.
  const ChartView wide = ApplyChartKey(f.log, {{0.0, 60.0}}, ChartKey::kZoomOut);
  EXPECT_DOUBLE_EQ(wide.axis.max - wide.axis.min, 60.0);
  EXPECT_DOUBLE_EQ(wide.axis.min, whole.min);
}

TEST(ChartKeys, PansMoveByATenthOrAWholeViewAndClampAtTheLogsEnds) {
  Log10Hz f;
  const TimeAxis whole = WholeLogAxis(f.log);
  const TimeAxis step = ApplyChartKey(f.log, {{4.0, 8.0}}, ChartKey::kPanForwardStep).axis;
  EXPECT_NEAR(step.min, 4.4, 1e-12);
  EXPECT_NEAR(step.max, 8.4, 1e-12);
  EXPECT_EQ(ApplyChartKey(f.log, {{4.0, 8.0}}, ChartKey::kPanBackView).axis, (TimeAxis{0.0, 4.0}));
  EXPECT_EQ(ApplyChartKey(f.log, {{1.0, 5.0}}, ChartKey::kPanBackView).axis,
            (TimeAxis{whole.min, whole.min + 4.0}));
  const ChartView end = ApplyChartKey(f.log, {{15.0, 19.0}}, ChartKey::kPanForwardView);
  EXPECT_DOUBLE_EQ(end.axis.max, whole.max);
  EXPECT_NEAR(end.axis.max - end.axis.min, 4.0, 1e-12);
  // At the end already, a further pan changes nothing.
  EXPECT_EQ(ApplyChartKey(f.log, end, ChartKey::kPanForwardStep).axis, end.axis);
}

TEST(ChartKeys, CursorsAppearAtTheMiddleThenStepByRecordAndStopAtTheEnds) {
  Log10Hz f;
  ChartView view = ApplyChartKey(f.log, {{4.0, 8.03}}, ChartKey::kBRecordForward);
  ASSERT_TRUE(view.b);
  EXPECT_DOUBLE_EQ(*view.b, f.log.Times()[59]);  // 6.0, the record nearest 6.015
  EXPECT_FALSE(view.a);
  view = ApplyChartKey(f.log, view, ChartKey::kBRecordForward);
  EXPECT_DOUBLE_EQ(*view.b, f.log.Times()[60]);
  // A cursor between records (a click) steps to the records either side of it.
  view.a = 3.05;
  EXPECT_DOUBLE_EQ(*ApplyChartKey(f.log, view, ChartKey::kARecordBack).a, f.log.Times()[29]);
  EXPECT_DOUBLE_EQ(*ApplyChartKey(f.log, view, ChartKey::kARecordForward).a, f.log.Times()[30]);
  view.a = f.log.Times().back();
  EXPECT_EQ(ApplyChartKey(f.log, view, ChartKey::kASecondForward).a, view.a);
  view.a = f.log.Times().front();
  EXPECT_EQ(ApplyChartKey(f.log, view, ChartKey::kARecordBack).a, view.a);
}

TEST(ChartKeys, ASecondsStepCrossesAHoleInTheLogAndNeverSticksInIt) {
  // Records 0.0 .. 2.0 s and 5.0 .. 7.0 s every 0.1 s, nothing between (frames without a channel).
  DatalogLog log;
  const ChannelValues values{};
  for (int i = 0; i <= 20; ++i) log.Append(i * 0.1, i * 0.1, values, 1);
  for (int i = 50; i <= 70; ++i) log.Append(i * 0.1, i * 0.1, values, 1);
  ChartView view{{0.0, 8.0}, 1.5};
  view = ApplyChartKey(log, view, ChartKey::kASecondForward);
  EXPECT_NEAR(*view.a, 5.0, 1e-9);  // the first record a second or more on
  view = ApplyChartKey(log, view, ChartKey::kASecondForward);
  EXPECT_NEAR(*view.a, 6.0, 1e-9);
  view = ApplyChartKey(log, view, ChartKey::kASecondBack);
  EXPECT_NEAR(*view.a, 5.0, 1e-9);
  view = ApplyChartKey(log, view, ChartKey::kASecondBack);
  EXPECT_NEAR(*view.a, 2.0, 1e-9);  // the last record a second or more before
}

TEST(ChartKeys, MarkerKeysOrATimeChosenMoveCursorAAndTheViewFollowsIt) {
  Log10Hz f;
  f.log.AddMarkerAt(3.0, "one");
  f.log.AddMarkerAt(12.0, "two");
  ChartView view{{0.0, 5.0}, 3.0, 2.0};
  view = ApplyChartKey(f.log, view, ChartKey::kANextMarker);
  // Moved just enough to show it, a twentieth of the view inside the right edge.
  EXPECT_EQ(view, (ChartView{{7.25, 12.25}, 12.0, 2.0}));
  // A marker chosen in the list, or a scatter point, inside the view: only the cursor moves.
  EXPECT_EQ(CursorAAt(f.log, view, 9.0), (ChartView{{7.25, 12.25}, 9.0, 2.0}));
  // No marker further on: nothing moves.
  EXPECT_EQ(ApplyChartKey(f.log, view, ChartKey::kANextMarker), view);
  view = ApplyChartKey(f.log, view, ChartKey::kAPreviousMarker);
  EXPECT_DOUBLE_EQ(*view.a, 3.0);
  EXPECT_DOUBLE_EQ(view.axis.min, 2.75);
  // Without cursor A the view's middle is where the search starts.
  const ChartView fresh = ApplyChartKey(f.log, {{10.0, 20.0}}, ChartKey::kAPreviousMarker);
  EXPECT_DOUBLE_EQ(*fresh.a, 12.0);
}

TEST(ChartKeys, ZoomToTheCursorsLeavesRoomForBothLines) {
  Log10Hz f;
  const TimeAxis span =
      ApplyChartKey(f.log, {{0.0, 20.0}, 9.0, 4.0}, ChartKey::kZoomToCursors).axis;
  EXPECT_NEAR(span.min, 3.9, 1e-12);  // a fiftieth of the span's room either side
  EXPECT_NEAR(span.max, 9.1, 1e-12);
  // Cursors on one record: the narrowest axis around them. One cursor: nothing.
  const TimeAxis narrow =
      ApplyChartKey(f.log, {{0.0, 20.0}, 4.0, 4.0}, ChartKey::kZoomToCursors).axis;
  EXPECT_NEAR(narrow.max - narrow.min, kNarrowestAxisSeconds, 1e-12);
  EXPECT_EQ(ApplyChartKey(f.log, {{0.0, 20.0}, 4.0}, ChartKey::kZoomToCursors).axis,
            (TimeAxis{0.0, 20.0}));
}

}  // namespace
}  // namespace vela
