// A second log on the first's time axis: aligned at a marker or a time, read at the first's
// times, and the delta column.
#include "datalog/review/two_logs.h"

#include <gtest/gtest.h>

#include <cmath>

#include "datalog/review/review_test_support.h"

namespace vela::review {
namespace {

// The first log: records every 0.1 s from 0, RPM 100 x record, a marker "Launch" at 1.0 s.
// The second: every 0.2 s from 0, RPM 1000 + 100 x record, "Launch" at 0.4 s, "Mark 1" at 0.
struct TwoLogs {
  DatalogLog first = testing::LogOf(testing::Steps(30, 0.1), {{kChannelRpm, Ramp(30, 0, 100)}});
  DatalogLog second =
      testing::LogOf(testing::Steps(10, 0.2), {{kChannelRpm, Ramp(10, 1000, 100)}, {1, {5}}});
  TwoLogs() {
    first.AddMarkerAt(1.0, "Launch");
    second.AddMarkerAt(0.0, "Mark 1");
    second.AddMarkerAt(0.4, "Launch");
  }
  static std::vector<double> Ramp(int n, double start, double step) {
    std::vector<double> values;
    for (int i = 0; i < n; ++i) values.push_back(start + step * i);
    return values;
  }
};

TEST(TwoLogs, AlignedAtAMarkerByTextOrIndexOrAtATime) {
  const TwoLogs logs;
  const auto by_text =
      AlignAtMarkers(logs.first, MarkerRef::Text("Launch"), logs.second, MarkerRef::Text("Launch"));
  ASSERT_TRUE(by_text);
  EXPECT_DOUBLE_EQ(by_text->offset, 0.6);
  EXPECT_DOUBLE_EQ(by_text->ToFirst(0.4), 1.0);
  const auto by_index =
      AlignAtMarkers(logs.first, MarkerRef::Index(0), logs.second, MarkerRef::Index(0));
  EXPECT_DOUBLE_EQ(by_index->offset, 1.0);
  EXPECT_FALSE(AlignAtMarkers(logs.first, MarkerRef::Text("Mark 1"), logs.second,
                              MarkerRef::Text("Mark 1")));
  EXPECT_FALSE(AlignAtMarkers(logs.first, MarkerRef::Index(1), logs.second, MarkerRef::Index(0)));
  EXPECT_DOUBLE_EQ(AlignAtTimes(2.0, 0.5).offset, 1.5);
}

TEST(TwoLogs, SecondLogReadAtTheFirstsTimes) {
  const TwoLogs logs;
  const LogAlignment aligned{0.6};  // second's 0.4 s ("Launch") at first's 1.0 s
  // Before the second log starts, at its records, between them (the last at or before), at
  // its end and past it by more than a step.
  EXPECT_EQ(SecondRecordAt(logs.second, aligned, 0.5), std::nullopt);
  EXPECT_EQ(SecondRecordAt(logs.second, aligned, 0.6), 0u);
  EXPECT_EQ(SecondRecordAt(logs.second, aligned, 1.0), 2u);
  EXPECT_EQ(SecondRecordAt(logs.second, aligned, 1.1), 2u);
  EXPECT_EQ(SecondRecordAt(logs.second, aligned, 2.4), 9u);
  EXPECT_EQ(SecondRecordAt(logs.second, aligned, 2.7), std::nullopt);
  EXPECT_EQ(SecondValueAt(logs.second, aligned, kChannelRpm, 1.05), 1200.0);
  EXPECT_EQ(SecondValueAt(logs.second, aligned, 1, 0.6), 5.0);
  EXPECT_EQ(SecondValueAt(logs.second, aligned, 1, 1.0), std::nullopt);  // MAP only at its first
  EXPECT_EQ(SecondValueAt(logs.second, aligned, 7, 1.0), std::nullopt);  // never recorded
}

TEST(TwoLogs, DeltaColumnPerRecordOfTheFirst) {
  const TwoLogs logs;
  const std::vector<float> delta =
      DeltaColumn(logs.first, logs.second, LogAlignment{0.6}, kChannelRpm);
  ASSERT_EQ(delta.size(), logs.first.RecordCount());
  for (std::size_t i = 0; i < delta.size(); ++i) {
    const double t = 0.1 * static_cast<double>(i);
    const auto second = SecondValueAt(logs.second, LogAlignment{0.6}, kChannelRpm, t);
    if (!second) {
      EXPECT_TRUE(std::isnan(delta[i])) << i;
    } else {
      EXPECT_FLOAT_EQ(delta[i], 100.0 * static_cast<double>(i) - *second) << i;
    }
  }
  // A negative offset: the second log drawn earlier than its own times.
  const std::vector<float> early =
      DeltaColumn(logs.first, logs.second, LogAlignment{-0.4}, kChannelRpm);
  EXPECT_FLOAT_EQ(early[0], 0 - 1200);
  EXPECT_TRUE(std::isnan(early[20]));
  EXPECT_EQ(DeltaColumn(logs.first, DatalogLog(), LogAlignment{}, kChannelRpm).size(), 30u);
}

}  // namespace
}  // namespace vela::review
