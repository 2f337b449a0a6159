#include "datalog/datalog_log.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vela {

RecordRange RecordsInSpan(const std::vector<double>& times, double t0, double t1) {
  if (t1 < t0) std::swap(t0, t1);
  const auto begin = std::lower_bound(times.begin(), times.end(), t0);
  const auto end = std::upper_bound(begin, times.end(), t1);
  return {static_cast<std::size_t>(begin - times.begin()),
          static_cast<std::size_t>(end - times.begin())};
}

DatalogLog::DatalogLog() {
  for (int n = 0; n < kChannelCount; ++n) series_[n].colour = kChannels[n].colour;
}

void DatalogLog::Clear() {
  times_.clear();
  arrivals_.clear();
  gap_finder_.Clear();
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
  const std::size_t old_size = series.values.size();
  if (old_size >= size) return;
  series.values.resize(size, kNoPoint);
  series.summaries.Extended(series.values, old_size);
}

void DatalogLog::Append(double time, double arrival, const ChannelValues& values,
                        ChannelMask mask) {
  if (mask == 0) return;
  const std::size_t index = times_.size();
  times_.push_back(time);
  arrivals_.push_back(arrival);
  for (int n = 0; n < kChannelCount; ++n) {
    if ((mask & (1u << n)) == 0) continue;
    LogSeries& s = series_[n];
    PadTo(s, index);
    s.values.push_back(static_cast<float>(values[n]));
    s.summaries.Appended(s.values);
    ++s.points;
  }
  gap_finder_.Update(times_, arrivals_);
  Touch();
}

void DatalogLog::AppendRecords(std::span<const double> times, std::span<const double> arrivals,
                               const std::array<const float*, kChannelCount>& values) {
  const std::size_t first = times_.size();
  times_.insert(times_.end(), times.begin(), times.end());
  if (arrivals.size() == times.size()) {
    arrivals_.insert(arrivals_.end(), arrivals.begin(), arrivals.end());
  } else {
    arrivals_.resize(times_.size(), std::numeric_limits<double>::quiet_NaN());
  }
  for (int n = 0; n < kChannelCount; ++n) {
    if (values[n] == nullptr) continue;
    LogSeries& s = series_[n];
    PadTo(s, first);
    s.values.insert(s.values.end(), values[n], values[n] + times.size());
    s.summaries.Extended(s.values, first);
    s.points += static_cast<std::size_t>(
        std::count_if(values[n], values[n] + times.size(), [](float v) { return !std::isnan(v); }));
  }
  gap_finder_.Update(times_, arrivals_);
  Touch();
}

void DatalogLog::CloseGaps() {
  gap_finder_.Close(times_, arrivals_);
  Touch();
}

void DatalogLog::AddMarker(std::string text) { AddMarkerAt(EndTime(), std::move(text)); }

void DatalogLog::AddMarkerAt(double time, std::string text) {
  const auto at = std::upper_bound(markers_.begin(), markers_.end(), time,
                                   [](double t, const LogMarker& m) { return t < m.time; });
  markers_.insert(at, LogMarker{time, std::move(text)});
  Touch();
}

bool DatalogLog::SetMarkerText(std::size_t index, std::string text) {
  if (index >= markers_.size()) return false;
  markers_[index].text = std::move(text);
  Touch();
  return true;
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

std::optional<double> DatalogLog::ArrivalAt(double time) const {
  const std::optional<std::size_t> index = IndexAtOrBefore(time);
  if (!index || std::isnan(arrivals_[*index])) return std::nullopt;
  return arrivals_[*index];
}

std::optional<double> DatalogLog::ClockEnd() const {
  if (arrivals_.empty() || std::isnan(arrivals_.back())) return std::nullopt;
  return arrivals_.back();
}

ColumnSummary DatalogLog::Summarize(int channel, std::size_t begin, std::size_t end) const {
  const LogSeries& s = series_[channel];
  return s.summaries.Summarize(s.values, begin, end);
}

}  // namespace vela
