// Math channels brought up to a log that grows while recording: whatever the steps it grows by,
// the columns and their summaries must be those of evaluating the whole log, and nothing before
// the record said to be the first changed may have moved.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "datalog/review/math_channels.h"
#include "datalog/review/review_test_support.h"

namespace vela::review {
namespace {

constexpr double kHole = std::numeric_limits<double>::quiet_NaN();

// A drive of `count` records with uneven steps (a lost frame now and then): RPM, MAP and AFR
// throughout, TPS with holes, Fuel only from the middle on.
std::vector<std::pair<double, ChannelValues>> Drive(std::size_t count, unsigned seed) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  std::vector<std::pair<double, ChannelValues>> records;
  double time = 0.0;
  for (std::size_t i = 0; i < count; ++i) {
    time += unit(random) < 0.05 ? 0.15 : 0.05;
    ChannelValues values{};
    values[kChannelRpm] = 2000 + 1500 * std::sin(time / 3) + 100 * unit(random);
    values[kChannelMap] = 60 + 30 * std::sin(time / 2);
    values[kChannelTps] = unit(random) < 0.1 ? kHole : 40 + 30 * std::cos(time);
    values[3] = i < count / 2 ? kHole : 2 + unit(random);
    values[kChannelAfr] = 140 + 10 * unit(random);
    records.emplace_back(time, values);
  }
  return records;
}

void AppendTo(DatalogLog& log, const std::pair<double, ChannelValues>& record) {
  ChannelMask mask = 0;
  for (int n = 0; n < kChannelCount; ++n) {
    if (record.second[n] != 0.0 && !std::isnan(record.second[n])) mask |= 1u << n;
  }
  log.Append(record.first, record.first, record.second, mask);
}

// Every way an expression reaches around its record, and channels that read each other.
const std::vector<MathChannel> kChannels = {
    {"Sum", "RPM / 100 + MAP * 2"},
    {"Ahead", "TPS@+0.35s - TPS"},
    {"Both", "RPM[3] - RPM[-2]"},
    {"Back", "avg(MAP, 0.5s)"},
    {"Slope", "avg(d(RPM), 8)"},
    {"Chain", "Ahead + Slope[-1] + Both@-200ms"},
    {"Compare", "max(Sum, 20) > Back"},
    {"Late", "Fuel * 2 - abs(-TPS)"},
    {"Error", "AFR / 10 - target(RPM, MAP)"},
    {"Refused", "RPM +"},
    {"Sum", "1"},
    {"AfterRefused", "Chain * 2"},
};

double Target(double rpm, double load) { return 12.0 + rpm / 10000 + load / 1000; }

bool Same(float a, float b) {
  if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
  // Running averages begun later may differ in the last bits.
  return std::fabs(a - b) <= 1e-5f * std::max(1.0f, std::fabs(b));
}

void ExpectSame(const std::vector<MathColumn>& grown, const std::vector<MathColumn>& whole,
                const std::string& where) {
  ASSERT_EQ(grown.size(), whole.size());
  for (std::size_t k = 0; k < whole.size(); ++k) {
    SCOPED_TRACE(where + ", channel " + whole[k].name);
    EXPECT_EQ(grown[k].error, whole[k].error);
    ASSERT_EQ(grown[k].values.size(), whole[k].values.size());
    for (std::size_t i = 0; i < whole[k].values.size(); ++i) {
      ASSERT_TRUE(Same(grown[k].values[i], whole[k].values[i]))
          << "record " << i << ": " << grown[k].values[i] << " against " << whole[k].values[i];
    }
    // The summaries the chart draws from, over whole blocks and loose ends alike.
    const std::size_t n = whole[k].values.size();
    for (const auto& [begin, end] : {std::pair{std::size_t{0}, n}, {n / 3, n - n / 5}, {17, n}}) {
      if (begin >= end) continue;
      const ColumnSummary a = grown[k].summaries.Summarize(grown[k].values, begin, end);
      const ColumnSummary b = whole[k].summaries.Summarize(whole[k].values, begin, end);
      EXPECT_EQ(a.any, b.any);
      EXPECT_TRUE(Same(a.min, b.min) && Same(a.max, b.max) && Same(a.first, b.first) &&
                  Same(a.last, b.last))
          << begin << ".." << end;
    }
  }
}

TEST(MathGrowthTest, AGrowingLogEndsWithTheColumnsOfTheWholeLog) {
  const auto drive = Drive(1000, 3);
  for (const std::size_t step : {1u, 7u, 16u, 45u, 400u}) {
    DatalogLog log;
    MathWorkspace workspace;
    std::vector<MathColumn> columns;
    std::size_t evaluated = 0;
    for (std::size_t i = 0; i < drive.size(); ++i) {
      AppendTo(log, drive[i]);
      if ((i + 1) % step != 0 && i + 1 != drive.size()) continue;
      const std::vector<MathColumn> before = columns;
      const std::size_t first =
          ExtendMathChannels(log, kChannels, Target, workspace, columns, evaluated);
      ASSERT_LE(first, evaluated);
      for (std::size_t k = 0; k < before.size(); ++k) {
        for (std::size_t r = 0; r < first && r < before[k].values.size(); ++r) {
          ASSERT_TRUE(Same(before[k].values[r], columns[k].values[r]) &&
                      std::isnan(before[k].values[r]) == std::isnan(columns[k].values[r]))
              << "step " << step << ", " << columns[k].name << " moved at " << r
              << " before the first changed record " << first;
        }
      }
      evaluated = log.RecordCount();
      if (evaluated % 300 < step || evaluated == drive.size()) {
        ExpectSame(columns, EvaluateMathChannels(log, kChannels, Target),
                   "step " + std::to_string(step) + " at " + std::to_string(evaluated));
      }
    }
  }
}

// How little is evaluated again is the follow benchmark's to measure; evaluating too little shows
// in the growing log's test. Here: what the columns kept cannot be extended from.
TEST(MathGrowthTest, OtherChannelsOrNoEvaluationToExtendAreEvaluatedWhole) {
  const auto drive = Drive(300, 9);
  DatalogLog log;
  for (const auto& record : drive) AppendTo(log, record);
  MathWorkspace workspace;
  std::vector<MathColumn> columns = EvaluateMathChannels(log, {{"A", "RPM"}}, Target);
  EXPECT_EQ(ExtendMathChannels(log, {{"A", "RPM"}, {"B", "MAP"}}, Target, workspace, columns, 300),
            0u);
  EXPECT_EQ(ExtendMathChannels(log, {{"A", "RPM"}}, Target, workspace, columns, 0), 0u);
  // Said to be evaluated further than the log reaches.
  EXPECT_EQ(ExtendMathChannels(log, {{"A", "RPM"}}, Target, workspace, columns, 301), 0u);
}

}  // namespace
}  // namespace vela::review
