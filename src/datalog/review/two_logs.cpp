#include "datalog/review/two_logs.h"

#include <cmath>

namespace vela::review {

namespace {

// Past the last record by more than this, a log has ended: its mean step (0 for one record).
double EndAllowance(const std::vector<double>& times) {
  if (times.size() < 2) return 0.0;
  return (times.back() - times.front()) / static_cast<double>(times.size() - 1);
}

constexpr double kAlignSameTime = 1e-9;

}  // namespace

std::optional<double> MarkerTime(const DatalogLog& log, const MarkerRef& marker) {
  const std::vector<LogMarker>& markers = log.Markers();
  if (marker.index) {
    if (*marker.index >= markers.size()) return std::nullopt;
    return markers[*marker.index].time;
  }
  for (const LogMarker& m : markers) {
    if (m.text == marker.text) return m.time;
  }
  return std::nullopt;
}

std::optional<LogAlignment> AlignAtMarkers(const DatalogLog& first, const MarkerRef& in_first,
                                           const DatalogLog& second, const MarkerRef& in_second) {
  const std::optional<double> a = MarkerTime(first, in_first);
  const std::optional<double> b = MarkerTime(second, in_second);
  if (!a || !b) return std::nullopt;
  return AlignAtTimes(*a, *b);
}

std::optional<std::size_t> SecondRecordAt(const DatalogLog& second, const LogAlignment& alignment,
                                          double first_time) {
  const std::vector<double>& times = second.Times();
  const double t = alignment.ToSecond(first_time);
  if (times.empty() || t > times.back() + EndAllowance(times) + kAlignSameTime) return std::nullopt;
  return second.IndexAtOrBefore(t + kAlignSameTime);
}

std::optional<double> SecondValueAt(const DatalogLog& second, const LogAlignment& alignment,
                                    int channel, double first_time) {
  if (channel < 0 || channel >= kChannelCount) return std::nullopt;
  const std::optional<std::size_t> record = SecondRecordAt(second, alignment, first_time);
  if (!record) return std::nullopt;
  const float value = ValueOr(second.Series(channel).values, *record);
  if (std::isnan(value)) return std::nullopt;
  return value;
}

std::vector<float> DeltaColumn(const std::vector<double>& first_times,
                               std::span<const float> first_column,
                               const std::vector<double>& second_times,
                               std::span<const float> second_column,
                               const LogAlignment& alignment) {
  std::vector<float> delta(first_times.size(), kNoPoint);
  if (second_times.empty()) return delta;
  const double last = second_times.back() + EndAllowance(second_times) + kAlignSameTime;
  std::size_t j = 0;
  for (std::size_t i = 0; i < first_times.size(); ++i) {
    const double t = alignment.ToSecond(first_times[i]) + kAlignSameTime;
    if (t < second_times.front() || t > last) continue;
    while (j + 1 < second_times.size() && second_times[j + 1] <= t) ++j;
    delta[i] = ValueOr(first_column, i) - ValueOr(second_column, j);
  }
  return delta;
}

std::vector<float> DeltaColumn(const DatalogLog& first, const DatalogLog& second,
                               const LogAlignment& alignment, int channel) {
  if (channel < 0 || channel >= kChannelCount)
    return std::vector<float>(first.RecordCount(), kNoPoint);
  return DeltaColumn(first.Times(), first.Series(channel).values, second.Times(),
                     second.Series(channel).values, alignment);
}

}  // namespace vela::review
