// A second log laid over the first on the first's time axis: shifted by an offset so that a
// moment of the second (a marker, or a chosen time) falls on a moment of the first. Then any
// channel of the second can be read at a time of the first (the second's own cursor value), and
// a delta column (first less second) made for any channel, record by record of the first.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "datalog/datalog_log.h"
#include "datalog/review/log_span.h"

namespace vela::review {

// A time of the second log + offset = the time of the first log it is drawn at.
struct LogAlignment {
  double offset = 0.0;
  double ToFirst(double second_time) const { return second_time + offset; }
  double ToSecond(double first_time) const { return first_time - offset; }
  bool operator==(const LogAlignment&) const = default;
};

// A marker named by its index in the log's markers (time order) or by its text (the first
// marker with exactly that text).
struct MarkerRef {
  std::optional<std::size_t> index;
  std::string text;
  static MarkerRef Index(std::size_t i) { return {i, {}}; }
  static MarkerRef Text(std::string_view t) { return {std::nullopt, std::string(t)}; }
};
std::optional<double> MarkerTime(const DatalogLog& log, const MarkerRef& marker);

// The second log's marker drawn at the first log's marker; nullopt when either is missing.
std::optional<LogAlignment> AlignAtMarkers(const DatalogLog& first, const MarkerRef& in_first,
                                           const DatalogLog& second, const MarkerRef& in_second);
// The second log's time `second_time` drawn at the first's `first_time` (0 and 0: both logs
// from their starts).
inline LogAlignment AlignAtTimes(double first_time, double second_time) {
  return {first_time - second_time};
}

// The second log's record shown at `first_time` of the first: its last record at or before the
// aligned time; nullopt before its first record or after its end (beyond the last record by more
// than the second log's mean record step).
std::optional<std::size_t> SecondRecordAt(const DatalogLog& second, const LogAlignment& alignment,
                                          double first_time);
// A channel of the second log at `first_time`; nullopt where it has no point.
std::optional<double> SecondValueAt(const DatalogLog& second, const LogAlignment& alignment,
                                    int channel, double first_time);

// For every record of the first log: its value of `first_column` less the second log's
// `second_column` at the same aligned time (NaN where either has none). Both logs are walked
// once, side by side.
std::vector<float> DeltaColumn(const std::vector<double>& first_times,
                               std::span<const float> first_column,
                               const std::vector<double>& second_times,
                               std::span<const float> second_column, const LogAlignment& alignment);
// The delta column of recorded channel `channel`.
std::vector<float> DeltaColumn(const DatalogLog& first, const DatalogLog& second,
                               const LogAlignment& alignment, int channel);

}  // namespace vela::review
