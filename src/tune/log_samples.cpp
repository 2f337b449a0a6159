#include "tune/log_samples.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace vela {

namespace {

constexpr int kChannelFuel = 3;
constexpr int kChannelWater = 6;
constexpr int kChannelPump = 10;
constexpr double kAfrScale = 10.0;  // the AFR channel holds ten times the ratio

// The channels the correction reads.
constexpr std::array<int, 7> kReadChannels = {
    kChannelRpm, kChannelMap, kChannelTps, kChannelFuel, kChannelWater, kChannelPump, kChannelAfr};

// A log's columns where they lie, in the log itself or in a copy of it.
struct ColumnView {
  std::span<const double> times;
  std::span<const LogGap> gaps;
  std::array<std::span<const float>, kChannelCount> values;
};

ColumnView ViewOf(const DatalogLog& log) {
  ColumnView view{log.Times(), log.Gaps(), {}};
  for (int channel : kReadChannels) view.values[channel] = log.Series(channel).values;
  return view;
}

ColumnView ViewOf(const LogColumns& log) {
  ColumnView view{log.times, log.gaps, {}};
  for (int channel : kReadChannels) view.values[channel] = log.values[channel];
  return view;
}

double ChannelAt(const ColumnView& log, int channel, std::size_t record) {
  const std::span<const float> values = log.values[channel];
  return record < values.size() ? static_cast<double>(values[record]) : std::nan("");
}

TuneSample SampleIn(const ColumnView& log, LoadBasis basis, std::size_t record) {
  TuneSample sample;
  sample.rpm = ChannelAt(log, kChannelRpm, record);
  sample.tps = ChannelAt(log, kChannelTps, record);
  sample.load = basis == LoadBasis::kMap ? ChannelAt(log, kChannelMap, record) : sample.tps;
  sample.fuel_ms = ChannelAt(log, kChannelFuel, record);
  sample.water_c = ChannelAt(log, kChannelWater, record);
  sample.pump = ChannelAt(log, kChannelPump, record);
  sample.afr = ChannelAt(log, kChannelAfr, record) / kAfrScale;
  return sample;
}

SampleLog SamplesIn(const ColumnView& log, LoadBasis basis) {
  SampleLog out;
  const std::span<const double> times = log.times;
  const std::size_t count = times.size();
  if (count >= 2) out.step = (times.back() - times.front()) / static_cast<double>(count - 1);
  out.samples.resize(count);
  std::size_t next_gap = 0;
  double lost_time = 0.0;
  int gaps = 0;
  for (std::size_t i = 0; i < count; ++i) {
    while (next_gap < log.gaps.size() && log.gaps[next_gap].record <= i) {
      lost_time += out.step * log.gaps[next_gap].missing_frames;
      ++gaps;
      ++next_gap;
    }
    TuneSample& sample = out.samples[i];
    sample = SampleIn(log, basis, i);
    sample.time = times[i] + lost_time;
    sample.lost_before = gaps;
  }
  return out;
}

}  // namespace

bool HoldsStartOf(const LogColumns& columns, const DatalogLog& log) {
  const std::vector<double>& times = log.Times();
  const std::size_t taken = columns.times.size();
  return taken > 0 && taken <= times.size() && times.front() == columns.times.front() &&
         times[taken - 1] == columns.times.back();
}

bool TakeColumns(const DatalogLog& log, LogColumns& columns) {
  const bool same = HoldsStartOf(columns, log);
  const std::size_t from = same ? columns.times.size() : 0;
  const std::vector<double>& times = log.Times();
  columns.times.resize(from);
  columns.times.insert(columns.times.end(), times.begin() + static_cast<std::ptrdiff_t>(from),
                       times.end());
  columns.gaps = log.Gaps();
  for (int channel : kReadChannels) {
    const std::vector<float>& values = log.Series(channel).values;
    std::vector<float>& copy = columns.values[channel];
    copy.resize(std::min(from, copy.size()));
    if (values.size() > copy.size()) {
      copy.insert(copy.end(), values.begin() + static_cast<std::ptrdiff_t>(copy.size()),
                  values.end());
    }
  }
  return same;
}

TuneSample SampleAt(const DatalogLog& log, LoadBasis basis, std::size_t record) {
  return SampleIn(ViewOf(log), basis, record);
}

SampleLog SamplesOf(const DatalogLog& log, LoadBasis basis) {
  return SamplesIn(ViewOf(log), basis);
}

SampleLog SamplesOf(const LogColumns& log, LoadBasis basis) {
  return SamplesIn(ViewOf(log), basis);
}

std::size_t SampleAtOrAfter(const std::vector<TuneSample>& samples, double time, std::size_t from) {
  if (from >= samples.size()) return samples.size();
  const auto found =
      std::lower_bound(samples.begin() + static_cast<std::ptrdiff_t>(from), samples.end(), time,
                       [](const TuneSample& sample, double t) { return sample.time < t; });
  return static_cast<std::size_t>(found - samples.begin());
}

PairedAfr AfrAt(const std::vector<TuneSample>& samples, std::size_t from, double time,
                double valid_low, double valid_high, std::size_t& cursor) {
  std::size_t at = std::max(cursor, from);
  while (at > from && samples[at - 1].time >= time) --at;
  cursor = SampleAtOrAfter(samples, time, at);
  if (cursor >= samples.size() || samples[cursor].lost_before != samples[from].lost_before) {
    return {std::nan(""), true};
  }
  const TuneSample& after = samples[cursor];
  if (after.time == time || cursor == from) return {after.afr, false};
  const TuneSample& before = samples[cursor - 1];
  const double share = (time - before.time) / (after.time - before.time);
  const auto valid = [&](double afr) { return afr >= valid_low && afr <= valid_high; };
  if (!valid(before.afr) || !valid(after.afr)) {
    return {share < 0.5 ? before.afr : after.afr, false};
  }
  return {before.afr + share * (after.afr - before.afr), false};
}

}  // namespace vela
