#include "datalog/datalog_log.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vela {

namespace {
constexpr float kNoPoint = std::numeric_limits<float>::quiet_NaN();
}  // namespace

DatalogLog::DatalogLog() {
  for (int n = 0; n < kChannelCount; ++n) series_[n].colour = kChannels[n].colour;
}

void DatalogLog::Clear() {
  times_.clear();
  for (LogSeries& s : series_) {
    s.values.clear();
    s.summaries.Clear();
    s.points = 0;
  }
  markers_.clear();
  Touch();
}

void DatalogLog::ReplaceWith(DatalogLog&& other) {
  const std::uint64_t revision = std::max(revision_, other.revision_) + 1;
  *this = std::move(other);
  revision_ = revision;
}

void DatalogLog::PadTo(LogSeries& series, std::size_t size) {
  while (series.values.size() < size) {
    series.values.push_back(kNoPoint);
    series.summaries.Appended(series.values);
  }
}

void DatalogLog::Append(double time, const ChannelValues& values, ChannelMask mask) {
  if (mask == 0) return;
  const std::size_t index = times_.size();
  times_.push_back(time);
  for (int n = 0; n < kChannelCount; ++n) {
    if ((mask & (1u << n)) == 0) continue;
    LogSeries& s = series_[n];
    PadTo(s, index);
    s.values.push_back(static_cast<float>(values[n]));
    s.summaries.Appended(s.values);
    ++s.points;
  }
  Touch();
}

void DatalogLog::AppendRecords(std::span<const double> times,
                               const std::array<const float*, kChannelCount>& values) {
  const std::size_t first = times_.size();
  times_.insert(times_.end(), times.begin(), times.end());
  for (int n = 0; n < kChannelCount; ++n) {
    if (values[n] == nullptr) continue;
    LogSeries& s = series_[n];
    PadTo(s, first);
    for (std::size_t i = 0; i < times.size(); ++i) {
      const float v = values[n][i];
      s.values.push_back(v);
      s.summaries.Appended(s.values);
      if (!std::isnan(v)) ++s.points;
    }
  }
  Touch();
}

void DatalogLog::AddMarker(std::string text) { AddMarkerAt(EndTime(), std::move(text)); }

void DatalogLog::AddMarkerAt(double time, std::string text) {
  const auto at = std::upper_bound(markers_.begin(), markers_.end(), time,
                                   [](double t, const LogMarker& m) { return t < m.time; });
  markers_.insert(at, LogMarker{time, std::move(text)});
  Touch();
}

bool DatalogLog::HasPoints() const {
  return std::any_of(series_.begin(), series_.end(), [](const LogSeries& s) { return s.points; });
}

std::optional<std::size_t> DatalogLog::IndexAtOrBefore(double time) const {
  const auto after = std::upper_bound(times_.begin(), times_.end(), time);
  if (after == times_.begin()) return std::nullopt;
  return static_cast<std::size_t>(after - times_.begin()) - 1;
}

std::optional<double> DatalogLog::ValueAt(int channel, double time) const {
  const std::optional<std::size_t> index = IndexAtOrBefore(time);
  const std::vector<float>& values = series_[channel].values;
  if (!index || *index >= values.size() || std::isnan(values[*index])) return std::nullopt;
  return values[*index];
}

ColumnSummary DatalogLog::Summarize(int channel, std::size_t begin, std::size_t end) const {
  const LogSeries& s = series_[channel];
  return s.summaries.Summarize(s.values, begin, end);
}

}  // namespace vela
