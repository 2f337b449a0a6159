#include "datalog/log_gaps.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vela {

namespace {

constexpr double kNoLag = std::numeric_limits<double>::infinity();

double SettleSeconds(double step) { return std::max(kGapSettleSeconds, kGapSettleSteps * step); }

// How far record `i` arrived ahead of its log time (NaN when its arrival is unknown).
double Lag(const std::vector<double>& times, const std::vector<double>& arrivals, std::size_t i) {
  return arrivals[i] - times[i];
}

}  // namespace

void GapFinder::Update(const std::vector<double>& times, const std::vector<double>& arrivals) {
  const std::size_t count = std::min(times.size(), arrivals.size());
  for (std::size_t i = std::max<std::size_t>(next_, 1); i < count; ++i) {
    const double step = times[i] - times[i - 1];
    const double late = arrivals[i] - arrivals[i - 1] - step;
    // No step (no frame rate) gives no time base to judge by; NaN compares false.
    if (step > 0.0 && late >= std::max(kGapCandidateSeconds, step / 2)) pending_.push_back(i);
  }
  next_ = std::max(next_, count);
  if (count == 0) return;
  const double newest = arrivals[count - 1];
  std::size_t decided = 0;
  while (decided < pending_.size()) {
    const std::size_t c = pending_[decided];
    if (!(newest > arrivals[c] + SettleSeconds(times[c] - times[c - 1]))) break;
    Decide(c, times, arrivals);
    ++decided;
  }
  pending_.erase(pending_.begin(), pending_.begin() + static_cast<std::ptrdiff_t>(decided));
}

void GapFinder::Close(const std::vector<double>& times, const std::vector<double>& arrivals) {
  Update(times, arrivals);
  for (std::size_t c : pending_) Decide(c, times, arrivals);
  pending_.clear();
}

void GapFinder::Decide(std::size_t c, const std::vector<double>& times,
                       const std::vector<double>& arrivals) {
  const double step = times[c] - times[c - 1];
  const double settle = SettleSeconds(step);
  const std::size_t count = std::min(times.size(), arrivals.size());
  double before = kNoLag;
  for (std::size_t j = c; j-- > floor_ && !(arrivals[j] < arrivals[c - 1] - settle);) {
    before = std::min(before, Lag(times, arrivals, j));
  }
  double after = kNoLag;
  for (std::size_t j = c; j < count && !(arrivals[j] > arrivals[c] + settle); ++j) {
    after = std::min(after, Lag(times, arrivals, j));
  }
  if (before == kNoLag || after == kNoLag) return;
  const double missing = std::round((after - before) / step);
  if (!(missing >= 1.0)) return;
  const auto frames = static_cast<std::uint32_t>(std::min(missing, 4.0e9));
  gaps_.push_back(LogGap{c, frames, arrivals[c] - arrivals[c - 1]});
  missing_frames_ += frames;
  floor_ = c;
}

}  // namespace vela
