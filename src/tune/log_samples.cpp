#include "tune/log_samples.h"

#include <algorithm>
#include <cmath>

namespace vela {

namespace {

constexpr int kChannelFuel = 3;
constexpr int kChannelWater = 6;
constexpr int kChannelPump = 10;
constexpr double kAfrScale = 10.0;  // the AFR channel holds ten times the ratio

double ChannelAt(const DatalogLog& log, int channel, std::size_t record) {
  const std::vector<float>& values = log.Series(channel).values;
  return record < values.size() ? static_cast<double>(values[record]) : std::nan("");
}

}  // namespace

TuneSample SampleAt(const DatalogLog& log, LoadBasis basis, std::size_t record) {
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

SampleLog SamplesOf(const DatalogLog& log, LoadBasis basis) {
  SampleLog out;
  const std::vector<double>& times = log.Times();
  const std::size_t count = times.size();
  if (count >= 2) out.step = (times.back() - times.front()) / static_cast<double>(count - 1);
  out.samples.resize(count);
  std::size_t next_gap = 0;
  double lost_time = 0.0;
  int gaps = 0;
  for (std::size_t i = 0; i < count; ++i) {
    while (next_gap < log.Gaps().size() && log.Gaps()[next_gap].record <= i) {
      lost_time += out.step * log.Gaps()[next_gap].missing_frames;
      ++gaps;
      ++next_gap;
    }
    TuneSample& sample = out.samples[i];
    sample = SampleAt(log, basis, i);
    sample.time = times[i] + lost_time;
    sample.lost_before = gaps;
  }
  return out;
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
