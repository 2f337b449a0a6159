// The recorded datalog: one ascending time array (the log time, which counts frames at the chosen
// frame rate), the arrival time of every record on the program's clock beside it, one contiguous
// value array per channel, the gaps where the link lost frames, the markers the tuner or the
// program dropped, and the time axis the chart shows. A channel that was off for a record holds
// NaN there (no point); a channel never recorded holds nothing. The chart reads straight from
// here; nothing copies the log.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "datalog/channels.h"
#include "datalog/chart/minmax_pyramid.h"
#include "datalog/log_gaps.h"

namespace vela {

// A channel's value where it has no point (it was off for that record).
inline constexpr float kNoPoint = std::numeric_limits<float>::quiet_NaN();

struct LogMarker {
  double time = 0.0;
  std::string text;
  bool operator==(const LogMarker&) const = default;
};

// The chart's horizontal axis, in seconds.
struct TimeAxis {
  double min = 0.0;
  double max = 20.0;
  bool operator==(const TimeAxis&) const = default;
};

// Records [begin, end) of a log.
struct RecordRange {
  std::size_t begin = 0;
  std::size_t end = 0;
  std::size_t size() const { return end > begin ? end - begin : 0; }
  bool operator==(const RecordRange&) const = default;
};
// Every record of a log of `records` records.
inline RecordRange WholeLog(std::size_t records) { return {0, records}; }
// The records whose time lies in [t0, t1] (either order) of ascending `times`.
RecordRange RecordsInSpan(const std::vector<double>& times, double t0, double t1);

struct LogSeries {
  bool active = false;  // drawn: exactly while its channel is enabled
  ChannelColour colour;
  std::vector<float> values;  // aligned with the log's times; may be shorter (missing = no point)
  MinMaxPyramid summaries;
  std::size_t points = 0;
};

using ChannelValues = std::array<double, kChannelCount>;
using ChannelMask = std::uint16_t;  // bit n: channel n has a value

class DatalogLog {
 public:
  DatalogLog();

  // Points and markers go; the series keep their colours and active states.
  void Clear();
  // Everything taken from `other` (a log read from a file); the revision still moves on.
  void ReplaceWith(DatalogLog&& other);

  // One record at log time `time` that arrived at `arrival` (seconds since logging started; NaN
  // when unknown) with the channels of `mask`; a record with no channel adds nothing.
  void Append(double time, double arrival, const ChannelValues& values, ChannelMask mask);
  // Several records at once (files): `values[n]` points at `times.size()` values of channel n,
  // or is null when channel n has none in these records; `arrivals` is empty when unknown.
  void AppendRecords(std::span<const double> times, std::span<const double> arrivals,
                     const std::array<const float*, kChannelCount>& values);
  // No more records follow (logging stopped, a file read): the last gaps are decided.
  void CloseGaps();

  // A marker at the time of the newest record (0 before any), or at `time`.
  void AddMarker(std::string text);
  void AddMarkerAt(double time, std::string text);
  // The text of marker `index` (in time order) replaced; false for no such marker.
  bool SetMarkerText(std::size_t index, std::string text);

  std::size_t RecordCount() const { return times_.size(); }
  const std::vector<double>& Times() const { return times_; }
  double EndTime() const { return times_.empty() ? 0.0 : times_.back(); }
  // Arrival times, one per record (NaN where unknown: logs of older files).
  const std::vector<double>& Arrivals() const { return arrivals_; }
  // The arrival time of the last record, when known.
  std::optional<double> ClockEnd() const;
  // Where the link lost frames, in record order (decided a settle window after each, or when
  // the log closes).
  const std::vector<LogGap>& Gaps() const { return gap_finder_.gaps(); }
  std::uint64_t MissingFrames() const { return gap_finder_.MissingFrames(); }
  const LogSeries& Series(int channel) const { return series_[channel]; }
  void SetActive(int channel, bool active) { series_[channel].active = active; }
  void SetColour(int channel, ChannelColour colour) { series_[channel].colour = colour; }
  const std::vector<LogMarker>& Markers() const { return markers_; }
  // True when any channel holds a point.
  bool HasPoints() const;

  // The index of the last record at or before `time`, or nullopt before the first.
  std::optional<std::size_t> IndexAtOrBefore(double time) const;
  // Channel `channel` at the last record at or before `time`; nullopt when it has no point there.
  std::optional<double> ValueAt(int channel, double time) const;
  // The arrival time of the last record at or before `time`, when known.
  std::optional<double> ArrivalAt(double time) const;
  // The summary of records [begin, end) of one channel.
  ColumnSummary Summarize(int channel, std::size_t begin, std::size_t end) const;

  TimeAxis axis;
  // Counts every change, so that a viewer knows when to draw again.
  std::uint64_t Revision() const { return revision_; }
  void Touch() { ++revision_; }

 private:
  void PadTo(LogSeries& series, std::size_t size);

  std::vector<double> times_;
  std::vector<double> arrivals_;
  GapFinder gap_finder_;
  std::array<LogSeries, kChannelCount> series_;
  std::vector<LogMarker> markers_;
  std::uint64_t revision_ = 0;
};

}  // namespace vela
