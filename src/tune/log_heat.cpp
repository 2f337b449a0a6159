#include "tune/log_heat.h"

#include <algorithm>

namespace vela {

namespace {

double StepOf(const std::vector<double>& times) {
  return times.size() >= 2 ? (times.back() - times.front()) / static_cast<double>(times.size() - 1)
                           : 0.0;
}

}  // namespace

LogHeat::LogHeat(TuneAxes axes, TargetTable targets, HeatSettings settings)
    : axes_(std::move(axes)),
      targets_(std::move(targets)),
      settings_(settings),
      evidence_{CellGrid(axes_), {}} {}

void LogHeat::Reset() {
  evidence_ = Evidence{CellGrid(axes_), {}};
  samples_.clear();
  verdicts_.clear();
  base_ = 0;
  gaps_taken_ = 0;
  lost_time_ = 0.0;
  gap_count_ = 0;
  next_pair_ = 0;
  cursor_ = 0;
}

// The records taken so far are still the log's, with the same gaps among them.
bool LogHeat::SameLog(const DatalogLog& log) const {
  const std::size_t taken = RecordsTaken();
  if (taken == 0) return true;
  if (log.RecordCount() < taken) return false;
  const std::vector<double>& times = log.Times();
  if (times.front() != first_time_ || times[taken - 1] + lost_time_ != samples_.back().time) {
    return false;
  }
  const std::vector<LogGap>& gaps = log.Gaps();
  if (gaps.size() < gaps_taken_) return false;
  return gaps.size() == gaps_taken_ || gaps[gaps_taken_].record >= taken;
}

void LogHeat::Follow(const DatalogLog& log, bool open) {
  if (!SameLog(log)) Reset();
  std::size_t end = log.RecordCount();
  if (open) {
    const std::vector<double>& times = log.Times();
    const double settled = log.EndTime() - kHeatSettleSeconds;
    end = static_cast<std::size_t>(std::upper_bound(times.begin(), times.end(), settled) -
                                   times.begin());
  }
  // In slices, forgetting what no later sample looks back at: a long log never needs all its
  // samples at once.
  while (RecordsTaken() < end) {
    const std::size_t begin = samples_.size();
    Take(log, std::min(end, RecordsTaken() + kHeatSlice));
    Judge(begin);
    Pair(open || RecordsTaken() < log.RecordCount());
    Forget();
  }
  Pair(open);
}

void LogHeat::Forget() {
  if (samples_.empty()) return;
  const double reach = settings_.filters.rate_window_s + settings_.filters.settle_s + 0.1;
  const double from_time = samples_.back().time - reach;
  std::size_t keep = next_pair_;
  while (keep > 0 && samples_[keep - 1].time >= from_time) --keep;
  keep = std::min(keep, next_pair_);
  if (keep < kHeatSlice) return;
  samples_.erase(samples_.begin(), samples_.begin() + static_cast<std::ptrdiff_t>(keep));
  verdicts_.erase(verdicts_.begin(), verdicts_.begin() + static_cast<std::ptrdiff_t>(keep));
  base_ += keep;
  next_pair_ -= keep;
  cursor_ = cursor_ > keep ? cursor_ - keep : 0;
}

// Records [taken, end) as samples, each moved on by the frames lost before it.
void LogHeat::Take(const DatalogLog& log, std::size_t end) {
  const double step = StepOf(log.Times());
  const std::vector<LogGap>& gaps = log.Gaps();
  if (RecordsTaken() == 0) first_time_ = log.Times().front();
  // A slice and what is kept back from the last one fit without growing.
  samples_.reserve(2 * kHeatSlice);
  for (std::size_t i = RecordsTaken(); i < end; ++i) {
    while (gaps_taken_ < gaps.size() && gaps[gaps_taken_].record <= i) {
      lost_time_ += step * gaps[gaps_taken_].missing_frames;
      ++gap_count_;
      ++gaps_taken_;
    }
    TuneSample sample = SampleAt(log, settings_.basis, i);
    sample.time = log.Times()[i] + lost_time_;
    sample.lost_before = gap_count_;
    samples_.push_back(sample);
  }
  step_ = step;
}

// The verdicts of samples [begin, end) on their operating points. A verdict looks back over the
// rate window and the settling time only, so the samples that far back are judged again with
// them and their own verdicts kept as they were.
void LogHeat::Judge(std::size_t begin) {
  const FilterSettings& filters = settings_.filters;
  const double reach = filters.rate_window_s + filters.settle_s + 0.1;
  const double from_time = samples_[begin].time - reach;
  const auto first = std::lower_bound(
      samples_.begin(), samples_.begin() + static_cast<std::ptrdiff_t>(begin), from_time,
      [](const TuneSample& sample, double time) { return sample.time < time; });
  const std::size_t context = static_cast<std::size_t>(first - samples_.begin());
  const std::vector<SampleVerdict> judged =
      context == 0 ? PointVerdicts(samples_, filters)
                   : PointVerdicts(std::vector<TuneSample>(first, samples_.end()), filters);
  verdicts_.insert(verdicts_.end(), judged.begin() + static_cast<std::ptrdiff_t>(begin - context),
                   judged.end());
  for (std::size_t i = begin; i < samples_.size(); ++i) {
    if (verdicts_[i] != SampleVerdict::kNotRunning && Placed(samples_[i])) {
      ShareTime(evidence_.cells, samples_[i], step_);
    }
  }
}

// Each kept sample with the reading its exhaust gave; while open, a sample whose reading is not
// in yet waits, and so does every sample after it.
void LogHeat::Pair(bool open) {
  const FilterSettings& filters = settings_.filters;
  for (; next_pair_ < samples_.size(); ++next_pair_) {
    const TuneSample& sample = samples_[next_pair_];
    SampleVerdict verdict = verdicts_[next_pair_];
    if (verdict == SampleVerdict::kKept) {
      const TuneSample& newest = samples_.back();
      const bool same_run = newest.lost_before == sample.lost_before;
      const double departed = newest.time - settings_.delay.At(newest.rpm, newest.load);
      if (open && same_run && departed < sample.time) return;  // not arrived yet
      const double time = ArrivalTime(samples_, next_pair_, settings_.delay);
      if (open && newest.time < time && same_run) return;
      const PairedAfr paired =
          AfrAt(samples_, next_pair_, time, filters.min_afr, filters.max_afr, cursor_);
      verdict = PairedVerdict(paired, filters);
      if (verdict == SampleVerdict::kKept) {
        ShareAfr(evidence_.cells, sample, paired.afr, targets_.AtPoint(sample.rpm, sample.load));
      }
    }
    ++evidence_.verdicts[static_cast<std::size_t>(verdict)];
  }
}

}  // namespace vela
