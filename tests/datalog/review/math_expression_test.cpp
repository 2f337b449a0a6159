// The math channels' language: what it accepts and computes, where values are undefined, and
// where and why it refuses an expression.
#include <gtest/gtest.h>

#include <cmath>

#include "datalog/review/math_channels.h"
#include "datalog/review/math_rename.h"
#include "datalog/review/review_test_support.h"

namespace vela::review {
namespace {

using testing::LogOf;
using testing::Steps;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// RPM 1000, 2000, ... 5000; MAP 50 60 0 80 90; TPS 0 10 20 30 40; Fuel off at record 2; Air never
// recorded; records 0.1 s apart from 1.0 s.
DatalogLog MathLog() {
  return LogOf(Steps(5, 0.1, 1.0), {{kChannelRpm, {1000, 2000, 3000, 4000, 5000}},
                                    {kChannelMap, {50, 60, 0, 80, 90}},
                                    {kChannelTps, {0, 10, 20, 30, 40}},
                                    {3, {2, 4, kNaN, 8, 10}}});
}

// The column of `text` over `log`; fails the test when it is refused.
std::vector<float> Column(const std::string& text, const DatalogLog& log = MathLog()) {
  const std::vector<MathColumn> columns = EvaluateMathChannels(log, {{"X", text}});
  EXPECT_FALSE(columns[0].error) << text << ": " << columns[0].error->reason;
  return columns[0].values;
}

// Where `text` is refused.
ExpressionError Refusal(const std::string& text) {
  const CompiledExpression compiled = CompileExpression(text, RecordedChannelNames());
  EXPECT_FALSE(compiled.expression) << text;
  return compiled.error.value_or(ExpressionError{999, "accepted"});
}

void ExpectColumn(const std::vector<float>& got, const std::vector<double>& want) {
  ASSERT_EQ(got.size(), want.size());
  for (std::size_t i = 0; i < want.size(); ++i) {
    if (std::isnan(want[i])) {
      EXPECT_TRUE(std::isnan(got[i])) << "record " << i << " is " << got[i];
    } else {
      EXPECT_NEAR(got[i], want[i], 1e-3) << "record " << i;
    }
  }
}

TEST(MathExpression, ArithmeticPrecedenceAndComparisons) {
  ExpectColumn(Column("1 + 2 * 3 - -4 / 2"), {9, 9, 9, 9, 9});
  ExpectColumn(Column("(1 + 2) * 3"), {9, 9, 9, 9, 9});
  ExpectColumn(Column("RPM / 1000 - 1 >= 2"), {0, 0, 1, 1, 1});
  ExpectColumn(Column("TPS < 20 == 1"), {1, 1, 0, 0, 0});
  ExpectColumn(Column("(MAP != 60) + (MAP == 0) + (TPS <= 10) + (TPS > 30)"), {2, 1, 2, 1, 2});
  ExpectColumn(Column("min(TPS, 15) + max(-TPS, -25) * abs(-1)"), {0, -0, -5, -10, -10});
  ExpectColumn(Column(".5 * TPS"), {0, 5, 10, 15, 20});
}

TEST(MathExpression, NamesByExportNameCaptionAnyCaseAndQuoted) {
  const DatalogLog log = LogOf(Steps(2, 0.1), {{kChannelDuty, {12, 14}}, {10, {1, 2}}});
  ExpectColumn(Column("Duty + \"Duty %\" + duty + \"Throttle Pump Addition\"", log), {37, 44});
}

TEST(MathExpression, LookBackIsUndefinedBeforeTheLogStarts) {
  ExpectColumn(Column("RPM[-1]"), {kNaN, 1000, 2000, 3000, 4000});
  ExpectColumn(Column("RPM[1]"), {2000, 3000, 4000, 5000, kNaN});
  ExpectColumn(Column("(RPM + TPS)[-1]"), {kNaN, 1000, 2010, 3020, 4030});
  // By time: the last record at or before the time looked at.
  ExpectColumn(Column("TPS@-0.2s"), {kNaN, kNaN, 0, 10, 20});
  ExpectColumn(Column("TPS@-150ms"), {kNaN, kNaN, 0, 10, 20});
  ExpectColumn(Column("TPS@+0.1s"), {10, 20, 30, 40, kNaN});
  ExpectColumn(Column("TPS@-0s"), {0, 10, 20, 30, 40});
}

TEST(MathExpression, DerivativeAndMovingAverages) {
  ExpectColumn(Column("d(TPS)"), {kNaN, 100, 100, 100, 100});
  ExpectColumn(Column("d(RPM[-1])"), {kNaN, kNaN, 10000, 10000, 10000});
  // The window holds the records of the last 0.2 s, this one included; a partial window at the
  // start averages what there is; a record without a point is left out.
  ExpectColumn(Column("avg(TPS, 0.2s)"), {0, 5, 15, 25, 35});
  ExpectColumn(Column("avg(Fuel, 3)"), {2, 3, 3, 6, 9});
  ExpectColumn(Column("avg(Fuel, 0.1s)"), {2, 4, kNaN, 8, 10});
}

TEST(MathExpression, UndefinedValues) {
  // Division by zero, a channel never recorded, a channel off for a record, and what follows.
  ExpectColumn(Column("TPS / MAP"), {0, 10.0 / 60, kNaN, 30.0 / 80, 40.0 / 90});
  ExpectColumn(Column("Air + 1"), {kNaN, kNaN, kNaN, kNaN, kNaN});
  ExpectColumn(Column("Fuel > 3"), {0, 1, kNaN, 1, 1});
  ExpectColumn(Column("min(Fuel, 100)"), {2, 4, kNaN, 8, 10});
  ExpectColumn(Column("d(Fuel)"), {kNaN, 20, kNaN, kNaN, 20});
  ExpectColumn(Column("target(RPM, MAP)"), {kNaN, kNaN, kNaN, kNaN, kNaN});
}

TEST(MathExpression, RefusedWithThePlaceOfTheFault) {
  const std::pair<std::string, std::size_t> cases[] = {
      {"RPM +", 5},        {"RPM * (MAP", 10}, {"Boost + 1", 0}, {"RPM + sqrt(2)", 6},
      {"RPM[-1.5]", 5},    {"RPM[x]", 4},      {"\"Duty %", 0},  {"RPM # 2", 4},
      {"RPM = 2", 4},      {"2s + RPM", 0},    {"TPS@-0.5", 5},  {"TPS@-0.5h", 8},
      {"avg(TPS, 0s)", 9}, {"avg(TPS, 0)", 9}, {"avg(TPS)", 7},  {"min(TPS)", 7},
      {"abs(TPS, 2)", 7},  {"RPM MAP", 4},     {"RPM)", 3},      {"", 0},
      {"\"\" + 1", 0},
  };
  for (const auto& [text, position] : cases) {
    const ExpressionError error = Refusal(text);
    EXPECT_EQ(error.position, position) << text << ": " << error.reason;
    EXPECT_FALSE(error.reason.empty()) << text;
  }
  EXPECT_EQ(Refusal("Boost + 1").reason, "no channel named \"Boost\"");
}

TEST(MathExpression, HostileTextIsRefusedNotFollowed) {
  EXPECT_EQ(Refusal(std::string(5000, '(') + "1" + std::string(5000, ')')).position,
            kMaxExpressionLength);
  const ExpressionError deep = Refusal(std::string(500, '-') + "1");
  EXPECT_NE(deep.reason.find("deeply"), std::string::npos);
  EXPECT_EQ(Refusal(std::string(300, '(') + "1" + std::string(300, ')')).reason,
            "nested too deeply");
  EXPECT_FALSE(Refusal("1" + std::string(400, '0') + " + RPM").reason.empty());
}

TEST(MathChannels, DefaultsFromTheRecordedValuesAndTheTarget) {
  // 10 ms at 6000 RPM is half of a cycle with one injection per cycle.
  const DatalogLog log = LogOf(Steps(2, 0.1), {{kChannelRpm, {6000, 3000}},
                                               {3, {10, 10}},
                                               {kChannelMap, {100, 40}},
                                               {kChannelAfr, {147, 132}}});
  const auto target = [](double rpm, double load) { return rpm > 4000 ? 12.5 : load / 4; };
  const std::vector<MathColumn> columns =
      EvaluateMathChannels(log, DefaultMathChannels(120000, true), target);
  ASSERT_EQ(columns.size(), 2u);
  EXPECT_EQ(columns[0].name, kDutyChannelName);
  ExpectColumn(columns[0].values, {50, 25});
  ExpectColumn(columns[1].values, {14.7 - 12.5, 13.2 - 10});
  // Two injections per cycle halve the base; a throttle-basis map looks the target up by TPS.
  ExpectColumn(Column(DutyExpression(60000), log), {100, 50});
  EXPECT_EQ(AfrErrorExpression(false), "AFR / 10 - target(RPM, TPS)");
}

TEST(MathChannels, LaterChannelsUseEarlierOnesAndNamesAreChecked) {
  const std::vector<MathColumn> columns =
      EvaluateMathChannels(MathLog(), {{"Load x2", "MAP * 2"},
                                       {"Twice", "\"Load x2\" + 1"},
                                       {"map", "1"},             // a recorded channel's name
                                       {"twice", "2"},           // repeats an earlier one
                                       {"Bad", "MAP +"},         // refused expression
                                       {"Uses bad", "Bad + 1"},  // reads a column without points
                                       {"avg", "1"}});
  ExpectColumn(columns[1].values, {101, 121, 1, 161, 181});
  for (int k : {2, 3, 6}) {
    ASSERT_TRUE(columns[k].error) << k;
    EXPECT_EQ(columns[k].error->position, 0u);
    EXPECT_TRUE(columns[k].values.empty());
  }
  EXPECT_EQ(columns[4].error->position, 5u);
  ExpectColumn(columns[5].values, {kNaN, kNaN, kNaN, kNaN, kNaN});
  EXPECT_TRUE(CompileAfter("Twice * 2", {{"Load x2", "MAP"}, {"Twice", "1"}}).expression);
  EXPECT_FALSE(CompileAfter("Twice * 2", {{"Load x2", "MAP"}}).expression);
  EXPECT_TRUE(RefuseMathName(std::string(41, 'a')));
  EXPECT_TRUE(RefuseMathName("a\"b"));
  EXPECT_FALSE(RefuseMathName("AFR lean %"));
}

TEST(MathChannels, EvaluatingAgainInKeptColumnsGivesWhatAFreshEvaluationGives) {
  // Working columns left over from other expressions, on a log of another length, must leave no
  // trace: every value is written again.
  const DatalogLog longer = LogOf(Steps(7, 0.1), {{kChannelRpm, {7, 6, 5, 4, 3, 2, 1}}});
  const std::vector<MathChannel> first = {{"A", "RPM[-3] * 2"}, {"B", "avg(A, 2)"}};
  const std::vector<MathChannel> second = {
      {"C", "Fuel@-0.1s + Air"}, {"D", "d(C) + 1"}, {"E", "MAP > 55"}};
  MathWorkspace workspace;
  std::vector<MathColumn> kept;
  EvaluateMathChannels(longer, first, {}, workspace, kept);
  EvaluateMathChannels(MathLog(), first, {}, workspace, kept);
  EvaluateMathChannels(MathLog(), second, {}, workspace, kept);
  const std::vector<MathColumn> fresh = EvaluateMathChannels(MathLog(), second);
  ASSERT_EQ(kept.size(), 3u);
  for (std::size_t k = 0; k < kept.size(); ++k) {
    EXPECT_EQ(kept[k].name, fresh[k].name);
    ExpectColumn(kept[k].values,
                 std::vector<double>(fresh[k].values.begin(), fresh[k].values.end()));
  }
}

TEST(MathChannels, ARenamedChannelsUsersAndLayoutFollow) {
  std::vector<MathChannel> channels = {{"Load", "MAP * 2"},
                                       {"Loaded", "load+\"LOAD\"[-1] - avg(Load, 200ms)"},
                                       {"Load x", "Load@-0.1s + 2.5 * \"Loaded\""},
                                       {"Unclosed", "Load + \"Load"}};
  ChartLayout layout;
  layout.AddPanel();
  layout.Place("Load", 1);
  layout.SetScale("Load", {false, 0, 200});
  layout.Select("load");
  const std::vector<MathColumn> before = EvaluateMathChannels(MathLog(), channels);
  RenameMathChannel(channels, layout, 0, "Boost kPa");
  EXPECT_EQ(channels[0].name, "Boost kPa");
  EXPECT_EQ(channels[1].expression, "\"Boost kPa\"+\"Boost kPa\"[-1] - avg(\"Boost kPa\", 200ms)");
  EXPECT_EQ(channels[2].expression, "\"Boost kPa\"@-0.1s + 2.5 * \"Loaded\"");
  EXPECT_EQ(channels[3].expression, "\"Boost kPa\" + \"Load");
  const std::vector<MathColumn> after = EvaluateMathChannels(MathLog(), channels);
  for (std::size_t k = 0; k < 3; ++k) {
    ASSERT_FALSE(after[k].error) << k;
    ExpectColumn(after[k].values,
                 std::vector<double>(before[k].values.begin(), before[k].values.end()));
  }
  EXPECT_EQ(layout.PanelOf("Boost kPa"), 1);
  EXPECT_FALSE(layout.Find("Boost kPa")->scale.automatic);
  EXPECT_FALSE(layout.PanelOf("Load"));
  EXPECT_EQ(layout.Selected(), "Boost kPa");
  // A channel after the renamed one is named in bare letters when it can be.
  RenameMathChannel(channels, layout, 0, "Boost");
  EXPECT_EQ(channels[2].expression, "Boost@-0.1s + 2.5 * \"Loaded\"");
}

}  // namespace
}  // namespace vela::review
