// Histogram and scatter binning against a brute-force count, over the whole log and a span, and
// the record nearest to a click.
#include "datalog/review/distribution.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "datalog/review/review_test_support.h"

namespace vela::review {
namespace {

// 3000 records 0.01 s apart: RPM a noisy ramp, AFR a noisy function of it with some records
// off, MAP whole numbers 20 to 120 (values on bin edges).
DatalogLog NoisyLog() {
  std::mt19937 random(7);
  std::normal_distribution<double> noise(0.0, 1.0);
  std::vector<double> rpm, afr, map;
  for (int i = 0; i < 3000; ++i) {
    rpm.push_back(800 + 2 * i + 150 * noise(random));
    afr.push_back(i % 37 == 0 ? std::nan("") : 130 + 10 * std::sin(i / 100.0) + noise(random));
    map.push_back(20 + (i * 7) % 101);
  }
  return testing::LogOf(testing::Steps(3000, 0.01),
                        {{kChannelRpm, rpm}, {kChannelAfr, afr}, {kChannelMap, map}});
}

TEST(Histogram, BinsCountEveryValueAsABruteForceCountDoes) {
  const DatalogLog log = NoisyLog();
  for (int channel : {kChannelRpm, kChannelAfr, kChannelMap}) {
    const ColumnView column = RecordedColumn(log, channel);
    for (const RecordRange records :
         {WholeLog(log.RecordCount()), RecordsInSpan(log.Times(), 5.005, 12.5)}) {
      const Histogram h = ComputeHistogram(column, records, 25);
      std::vector<std::uint32_t> brute(h.bins.count, 0);
      std::uint64_t values = 0;
      for (std::size_t i = records.begin; i < records.end; ++i) {
        const float v = column.values[i];
        if (std::isnan(v)) continue;
        ++values;
        for (int b = 0; b < h.bins.count; ++b) {
          const double lo = h.bins.low + b * h.bins.width;
          const bool last = b == h.bins.count - 1;
          if (v >= lo && (v < lo + h.bins.width || (last && v <= lo + h.bins.width))) ++brute[b];
        }
      }
      EXPECT_EQ(h.counts, brute) << channel;
      EXPECT_EQ(h.values, values);
      EXPECT_EQ(h.below + h.above, 0u);  // bins chosen from the range hold every value
    }
  }
}

TEST(Histogram, BinsChosenFromTheRangeOrGiven) {
  EXPECT_EQ(BinsForRange(0, 100, 10), (HistogramBins{0, 10, 10}));
  EXPECT_EQ(BinsForRange(13, 87, 10), (HistogramBins{10, 10, 8}));
  EXPECT_EQ(BinsForRange(-3.2, 4.1, 7), (HistogramBins{-4, 2, 5}));
  EXPECT_EQ(BinsForRange(5, 5), (HistogramBins{4.75, 0.5, 1}));
  EXPECT_EQ(BinsForRange(0, 1e9, 1000000), (HistogramBins{0, 5e5, 2000}));  // at most kMaxBins
  // Given bins: values outside are counted apart; the upper edge belongs to the last bin.
  const DatalogLog log = testing::LogOf(testing::Steps(6, 1), {{0, {-1, 0, 0.5, 1.99, 2, 2.5}}});
  const Histogram h = ComputeHistogram(RecordedColumn(log, 0), WholeLog(6), HistogramBins{0, 1, 2});
  EXPECT_EQ(h.counts, (std::vector<std::uint32_t>{2, 2}));
  EXPECT_EQ(h.below, 1u);
  EXPECT_EQ(h.above, 1u);
  // A channel with no point in the span gives empty bins, not a crash.
  EXPECT_EQ(ComputeHistogram(RecordedColumn(log, 5), WholeLog(6)).values, 0u);
}

TEST(Scatter, DensityAndMeanColourMatchABruteForceBinning) {
  const DatalogLog log = NoisyLog();
  const RecordRange records = RecordsInSpan(log.Times(), 3.0, 25.0);
  // AFR against RPM by MAP, and MAP against RPM by AFR (a colour channel with holes).
  for (const auto& [y_channel, z_channel] :
       {std::pair{kChannelAfr, kChannelMap}, {kChannelMap, kChannelAfr}}) {
    const ColumnView x = RecordedColumn(log, kChannelRpm);
    const ColumnView y = RecordedColumn(log, y_channel);
    const ColumnView z = RecordedColumn(log, z_channel);
    const ScatterGrid grid = *GridForColumns(x, y, records, 64, 48);
    const ScatterDensity density = ComputeScatter(x, y, z, records, grid);
    std::vector<std::uint32_t> counts(64 * 48, 0), z_counts(64 * 48, 0);
    std::vector<double> z_sum(64 * 48, 0.0);
    for (std::size_t i = records.begin; i < records.end; ++i) {
      if (std::isnan(y.values[i])) continue;
      const double fx = (x.values[i] - grid.x_low) / (grid.x_high - grid.x_low) * 64;
      const double fy = (grid.y_high - y.values[i]) / (grid.y_high - grid.y_low) * 48;
      const std::size_t pixel = static_cast<std::size_t>(fy) * 64 + static_cast<std::size_t>(fx);
      ++counts[pixel];
      if (!std::isnan(z.values[i])) z_sum[pixel] += z.values[i], ++z_counts[pixel];
    }
    EXPECT_EQ(density.counts, counts);
    EXPECT_EQ(density.outside, 0u);  // the grid was made from the span's own ranges
    for (std::size_t p = 0; p < counts.size(); ++p) {
      if (z_counts[p] == 0) {
        EXPECT_TRUE(std::isnan(density.z_mean[p]));
      } else {
        EXPECT_NEAR(density.z_mean[p], z_sum[p] / z_counts[p], 1e-3);
      }
    }
  }
}

TEST(Scatter, PointsOutsideAGivenGridAndEdges) {
  const DatalogLog log =
      testing::LogOf(testing::Steps(5, 1), {{0, {0, 10, 5, 11, 10}}, {1, {0, 10, 5, 5, -1}}});
  const ScatterGrid grid{10, 10, 0, 10, 0, 10};
  const ScatterDensity density =
      ComputeScatter(RecordedColumn(log, 0), RecordedColumn(log, 1), {}, WholeLog(5), grid);
  EXPECT_EQ(density.points, 3u);
  EXPECT_EQ(density.outside, 2u);
  EXPECT_EQ(density.At(0, 9), 1u);  // (0, 0): left, bottom
  EXPECT_EQ(density.At(9, 0), 1u);  // (10, 10): right, top
  EXPECT_EQ(density.At(5, 5), 1u);
  EXPECT_TRUE(density.z_mean.empty());
}

TEST(Scatter, NearestRecordIsMeasuredInPixels) {
  // X spans 0..1000 over 100 pixels, Y 0..10 over 100: record 1 is nearer in values, record 2
  // in pixels.
  const DatalogLog log =
      testing::LogOf(testing::Steps(4, 1), {{0, {0, 500, 530, 900}}, {1, {0, 8, 5, 1}}});
  const ScatterGrid grid{100, 100, 0, 1000, 0, 10};
  const ColumnView x = RecordedColumn(log, 0);
  const ColumnView y = RecordedColumn(log, 1);
  EXPECT_EQ(NearestRecord(x, y, WholeLog(4), grid, 50, 50), 2u);
  EXPECT_EQ(NearestRecord(x, y, WholeLog(4), grid, 50, 21), 1u);
  EXPECT_EQ(NearestRecord(x, y, RecordRange{3, 4}, grid, 50, 50), 3u);
  EXPECT_EQ(NearestRecord(x, y, RecordRange{2, 2}, grid, 50, 50), std::nullopt);
}

}  // namespace
}  // namespace vela::review
