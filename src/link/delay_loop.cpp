#include "link/delay_loop.h"

#include <algorithm>
#include <cmath>

namespace vela {
namespace {

constexpr double kStartValue = 10000.0;
constexpr std::int64_t kQuickCount = 500'000;
constexpr std::int64_t kFullCount = 2'000'000;
constexpr double kMeasureFactor = 1.003;
constexpr double kDelayFactor = 0.55;
constexpr std::int64_t kEscapeFactor = 10;

}  // namespace

void DelayLoop::Iterate() {
  const double x = x_;
  const double root = std::sqrt(x * 555.0 / 555.0);
  x_ = std::nearbyint(root * root);
}

void DelayLoop::Spin(std::int64_t iterations) {
  x_ = kStartValue;
  for (std::int64_t i = 0; i < iterations; ++i) Iterate();
  if (iterations > 0) iterations_run_ += iterations;
}

std::int64_t DelayLoop::MeasureCountsPerMS(bool keep_responsive, bool quick) {
  const std::int64_t count = quick ? kQuickCount : kFullCount;
  const std::int64_t first = clock_.NowMs();
  Spin(count);
  if (keep_responsive) clock_.LetEventsRun();
  const std::int64_t elapsed = clock_.NowMs() - first;
  const double divisor = elapsed > 0 ? static_cast<double>(elapsed) : 1.0;
  link_.CountsPerMS = static_cast<std::int32_t>(std::floor(count / divisor * kMeasureFactor));
  return elapsed;
}

void DelayLoop::DelayMs(int milliseconds) {
  const double delay = milliseconds * kDelayFactor;
  const std::int64_t iterations =
      std::max(kMinIterations, static_cast<std::int64_t>(std::floor(delay * link_.CountsPerMS)));
  const std::int64_t limit = static_cast<std::int64_t>(milliseconds) * kEscapeFactor;
  const std::int64_t start = clock_.NowMs();
  for (std::int32_t repeat = 0; repeat < link_.CommsRepeat; ++repeat) {
    x_ = kStartValue;
    for (std::int64_t i = 0; i < iterations; ++i) {
      Iterate();
      ++iterations_run_;
      if (clock_.NowMs() - start > limit) return;
    }
  }
}

}  // namespace vela
