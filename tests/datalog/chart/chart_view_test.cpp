// The chart's arithmetic: the summaries keep a lone spike at any zoom, columns and raw points,
// channel scales, the narrowest zoom, ticks and the fuel map cell under the cursor.
#include "datalog/chart/chart_view.h"

#include <gtest/gtest.h>

#include <random>

#include "datalog/chart/minmax_pyramid.h"
#include "datalog/datalog_test_support.h"
#include "datalog/review/review_test_support.h"

namespace vela {
namespace {

TEST(MinMaxPyramid, AnyRangeGivesTheSameExtremesAsScanningItsSamples) {
  std::mt19937 random(7);
  std::uniform_real_distribution<float> value(-100.0f, 100.0f);
  std::vector<float> values;
  MinMaxPyramid pyramid;
  for (int i = 0; i < 20000; ++i) {
    values.push_back(i % 97 == 0 ? NAN : value(random));
    pyramid.Appended(values);
  }
  MinMaxPyramid built;
  built.Build(values);
  std::uniform_int_distribution<std::size_t> index(0, values.size());
  for (int trial = 0; trial < 2000; ++trial) {
    std::size_t a = index(random), b = index(random);
    if (a > b) std::swap(a, b);
    float min = INFINITY, max = -INFINITY;
    for (std::size_t i = a; i < b; ++i) {
      if (values[i] < min) min = values[i];
      if (values[i] > max) max = values[i];
    }
    for (const MinMaxPyramid* p : {&pyramid, &built}) {
      const ColumnSummary s = p->Summarize(values, a, b);
      ASSERT_EQ(s.any, min <= max) << a << ".." << b;
      if (!s.any) continue;
      EXPECT_EQ(s.min, min) << a << ".." << b;
      EXPECT_EQ(s.max, max) << a << ".." << b;
      EXPECT_TRUE(s.first == values[a] || std::isnan(values[a]));
    }
  }
}

TEST(MinMaxPyramid, ALoneSpikeInAnHourOfFlatDataShowsInTheColumnThatHoldsIt) {
  DatalogLog log;
  const std::size_t records = 216000;  // an hour at 60 frames a second
  const std::size_t spike = 123457;
  for (std::size_t i = 0; i < records; ++i) {
    ChannelValues values{};
    values[0] = i == spike ? 7200.0 : 3000.0;
    log.Append(static_cast<double>(i) / 60.0, NAN, values, 1);
  }
  for (int width : {1600, 977, 300, 2}) {
    std::vector<std::size_t> bounds = ColumnBounds(log.Times(), WholeLogAxis(log), width);
    ASSERT_FALSE(DrawRawPoints(bounds));
    if (width != 977) AlignToSummaryBlocks(bounds);
    int spikes = 0;
    for (int c = 0; c < width; ++c) {
      const ColumnSummary s = log.Summarize(0, bounds[c], bounds[c + 1]);
      if (s.any && s.max == 7200.0f) ++spikes;
      if (s.any) {
        EXPECT_EQ(s.min, 3000.0f);
      }
    }
    EXPECT_EQ(spikes, 1) << width << " columns";
  }
}

TEST(ChartView, ColumnsCoverTheAxisAndFewRecordsAreDrawnAsRawPoints) {
  const DatalogLog log = testing::PatternLog(100);  // 0.1 .. 10.0 s
  const std::vector<std::size_t> bounds = ColumnBounds(log.Times(), {0.0, 10.0}, 10);
  ASSERT_EQ(bounds.size(), 11u);
  EXPECT_EQ(bounds.front(), 0u);
  EXPECT_EQ(bounds[1], 9u);  // records at 0.1 .. 0.9 s lie before 1.0 s
  EXPECT_EQ(bounds.back(), 99u);
  EXPECT_FALSE(DrawRawPoints(bounds));
  EXPECT_TRUE(DrawRawPoints(ColumnBounds(log.Times(), {0.0, 10.0}, 60)));
}

TEST(ChartView, AChannelIsScaledOverItsWholeLogNeverLessThanZeroToTen) {
  const DatalogLog log = review::testing::LogOf({0.1, 0.2}, {{0, {3, 3}}, {1, {-20, 180}}});
  const ValueRange small = ChannelScale(log, 0);
  EXPECT_LT(small.low, 0.0);
  EXPECT_GT(small.high, 10.0);
  EXPECT_LT(small.high, 11.0);
  const ValueRange wide = ChannelScale(log, 1);
  EXPECT_LT(wide.low, -20.0);
  EXPECT_GT(wide.high, 180.0);
}

// Where the anchor stays and how a pan moves, the chart's keys pin through the same functions.
TEST(ChartView, ZoomStopsAtTheNarrowestAxis) {
  const TimeAxis narrow = ZoomAxis({10.0, 10.1}, 10.05, 0.01);
  EXPECT_NEAR(narrow.max - narrow.min, kNarrowestAxisSeconds, 1e-12);
}

TEST(ChartView, TicksFallOnOneTwoOrFiveTimesAPowerOfTen) {
  EXPECT_EQ(AxisTicks(0.0, 20.0, 10), (std::vector<double>{0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20}));
  EXPECT_EQ(AxisTicks(-3.0, 7.2, 4), (std::vector<double>{0, 5}));
  EXPECT_TRUE(AxisTicks(5.0, 5.0, 4).empty());
}

TEST(ChartView, TheFuelCellIsTheNearestLabelledRowAndLoadColumn) {
  FuelMapAxes axes;
  axes.rows = {{1, 7500}, {2, 6750}, {3, 6000}, {11, 0}};
  axes.loads_kpa = {20, 40, 60, 80, 100};
  const auto cell = NearestFuelCell(axes, 6500.0, 71.0);
  ASSERT_TRUE(cell);
  EXPECT_EQ(cell->row, 2);
  EXPECT_EQ(cell->column, 4);
  EXPECT_FALSE(NearestFuelCell(FuelMapAxes{}, 1000.0, 50.0));
}

}  // namespace
}  // namespace vela
