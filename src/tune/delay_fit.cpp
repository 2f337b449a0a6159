#include "tune/delay_fit.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace vela {

namespace {

constexpr double kTenPercentLags = 0.10536;  // -ln(0.9): lags to go 10 % of a step
constexpr double kLagsBetweenMarks = 1.0 - kTenPercentLags;
constexpr double kMinOutlierSeconds = 0.02;
constexpr int kMinFitSteps = 3;

struct Level {
  double mean = 0.0;
  bool steady = false;
};

// The mean of a field over samples [begin, end) and whether every one lies near it.
template <typename Field>
Level LevelOf(const std::vector<TuneSample>& samples, std::size_t begin, std::size_t end,
              double share, double floor, Field field) {
  if (begin >= end) return {};
  double sum = 0.0;
  for (std::size_t i = begin; i < end; ++i) sum += field(samples[i]);
  const double mean = sum / static_cast<double>(end - begin);
  const double allowed = std::max(std::abs(mean) * share, floor);
  bool steady = std::isfinite(mean);
  for (std::size_t i = begin; i < end && steady; ++i) {
    steady = std::abs(field(samples[i]) - mean) <= allowed;
  }
  return {mean, steady};
}

// The first time after `from` that the AFR has gone `part` of the way from `start` by `change`.
std::optional<double> CrossingTime(const std::vector<TuneSample>& samples, std::size_t from,
                                   std::size_t end, double start, double change, double part) {
  const double mark = start + part * change;
  for (std::size_t i = from + 1; i < end; ++i) {
    const double a = samples[i - 1].afr - mark;
    const double b = samples[i].afr - mark;
    if ((change > 0 ? b >= 0 : b <= 0)) {
      const double share = a == b ? 1.0 : a / (a - b);
      return samples[i - 1].time + share * (samples[i].time - samples[i - 1].time);
    }
  }
  return std::nullopt;
}

// When an answer that runs off the scale (a cut) began, `t10` being where it crossed a tenth of
// its way. When the first record that shows it is still on the scale, the sensor's rise is
// seen: t10, straight between the records around it. When that record is off the scale
// already, it is a jump within the record: half-way. (Half-way every time made each delay a
// whole number of frames, and the floor fitted through a few of them missed by up to 40 %.)
double OffScaleStart(const std::vector<TuneSample>& samples, std::size_t from, double t10,
                     const StepSettings& settings) {
  const std::size_t moved = std::max(SampleAtOrAfter(samples, t10, from), from);
  const double seen = samples[moved].afr;
  if (seen >= settings.min_afr && seen <= settings.max_afr) return t10;
  return (samples[moved - 1].time + samples[moved].time) / 2.0;
}

// RPM x load at `time`, straight between the records around it (in a decel it falls fast).
double FlowAt(const std::vector<TuneSample>& samples, double time, std::size_t from) {
  const std::size_t at = std::clamp(SampleAtOrAfter(samples, time, from),
                                    std::max<std::size_t>(from, 1), samples.size() - 1);
  const TuneSample& after = samples[at];
  const TuneSample& prior = samples[at - 1];
  const double share = std::clamp((time - prior.time) / (after.time - prior.time), 0.0, 1.0);
  return prior.rpm * prior.load + share * (after.rpm * after.load - prior.rpm * prior.load);
}

// The step at sample `i`, when it is a clean one with an answer.
std::optional<DelayStep> StepAt(const std::vector<TuneSample>& samples, std::size_t i,
                                const StepSettings& settings) {
  const double t0 = samples[i].time;
  const std::size_t before = SampleAtOrAfter(samples, t0 - settings.before_s, 0);
  const std::size_t held = SampleAtOrAfter(samples, t0 + settings.hold_s, i);
  const std::size_t end = SampleAtOrAfter(samples, t0 + kMaxDelaySeconds, i);
  if (before + 2 > i || end >= samples.size()) return std::nullopt;
  if (samples[before].lost_before != samples[end].lost_before) return std::nullopt;
  const auto fuel = [](const TuneSample& s) { return s.fuel_ms; };
  const auto afr = [](const TuneSample& s) { return s.afr; };
  const Level fuel0 = LevelOf(samples, before, i, settings.steady_share, 0.05, fuel);
  const Level fuel1 = LevelOf(samples, i, held, settings.steady_share * 2, 0.05, fuel);
  const Level afr0 = LevelOf(samples, before, i, settings.steady_share, 0.1, afr);
  if (!fuel0.steady || !fuel1.steady || !afr0.steady) return std::nullopt;
  const double fuel_change = fuel1.mean - fuel0.mean;
  const double fuel_share = std::abs(fuel_change) / std::max(fuel0.mean, fuel1.mean);
  if (!(fuel_share >= settings.min_fuel_change)) return std::nullopt;
  // The air must stay: when the load moves with the fuel (a tip-in), the mixture's answer is the
  // port walls' and the pump's, not the fuel step's.
  const auto load = [](const TuneSample& s) { return s.load; };
  const double load0 = LevelOf(samples, before, i, 1.0, 0.0, load).mean;
  const double load1 = LevelOf(samples, i, held, 1.0, 0.0, load).mean;
  if (!(std::abs(load1 - load0) / std::max(load0, load1) < fuel_share * settings.max_load_share)) {
    return std::nullopt;
  }
  // More fuel makes the mixture richer: the AFR's answer goes the other way.
  double extreme = afr0.mean;
  for (std::size_t j = i; j < end; ++j) {
    const double a = samples[j].afr;
    if (fuel_change > 0 ? a < extreme : a > extreme) extreme = a;
  }
  const double change = extreme - afr0.mean;
  if (std::abs(change) < settings.min_afr_change) return std::nullopt;
  // A reading off the scale hides where the mixture is: no timing from one.
  if (!(afr0.mean >= settings.min_afr && afr0.mean <= settings.max_afr)) return std::nullopt;
  const auto t10 = CrossingTime(samples, i, end, afr0.mean, change, 0.1);
  const auto t63 = CrossingTime(samples, i, end, afr0.mean, change, 1.0 - std::exp(-1.0));
  if (!t10 || !t63) return std::nullopt;
  DelayStep step;
  // The injection changed somewhere between the record before and this one: half-way, on the
  // mean.
  step.time = (samples[i - 1].time + t0) / 2.0;
  if (extreme < settings.min_afr || extreme > settings.max_afr) {
    step.delay = OffScaleStart(samples, i, *t10, settings) - step.time;
  } else {
    step.lag = std::max((*t63 - *t10) / kLagsBetweenMarks, 0.0);
    step.delay = *t10 - kTenPercentLags * step.lag - step.time;
  }
  if (step.delay <= 0.0) return std::nullopt;
  // The gas reaching the sensor is carried by the flow of that moment.
  step.flow = FlowAt(samples, step.time + step.delay, i);
  if (!(step.flow > 0.0)) return std::nullopt;
  return step;
}

struct Line {
  double floor = 0.0;
  double k = 0.0;
  bool ok = false;
};

Line LeastSquares(std::span<const DelayStep> steps) {
  const double n = static_cast<double>(steps.size());
  double sx = 0, sy = 0, sxx = 0, sxy = 0;
  for (const DelayStep& step : steps) {
    const double x = 1.0 / step.flow;
    sx += x;
    sy += step.delay;
    sxx += x * x;
    sxy += x * step.delay;
  }
  const double spread = n * sxx - sx * sx;
  if (steps.size() < 2 || !(spread > 1e-12 * n * sxx)) return {};
  const double k = (n * sxy - sx * sy) / spread;
  return {(sy - k * sx) / n, k, true};
}

double Residual(const Line& line, const DelayStep& step) {
  return step.delay - (line.floor + line.k / step.flow);
}

}  // namespace

double DelayModel::At(double rpm, double load) const {
  const double flow = rpm * load;
  const double delay = flow > 0.0 ? floor_s + k / flow : kMaxDelaySeconds;
  return std::clamp(delay, 0.0, kMaxDelaySeconds);
}

double ArrivalTime(const std::vector<TuneSample>& samples, std::size_t from,
                   const DelayModel& delay) {
  const TuneSample& sample = samples[from];
  double before = 0.0;  // the record before's departure time less the sample's time
  for (std::size_t j = from; j < samples.size(); ++j) {
    const TuneSample& at = samples[j];
    if (at.lost_before != sample.lost_before) break;
    const double after = at.time - delay.At(at.rpm, at.load) - sample.time;
    if (after >= 0.0) {
      if (j == from) return at.time + delay.lag_s;
      const TuneSample& previous = samples[j - 1];
      return previous.time + (at.time - previous.time) * (-before / (after - before)) + delay.lag_s;
    }
    before = after;
  }
  return sample.time + delay.At(sample.rpm, sample.load) + delay.lag_s;
}

std::vector<DelayStep> FindDelaySteps(const std::vector<TuneSample>& samples,
                                      const StepSettings& settings) {
  std::vector<DelayStep> steps;
  for (std::size_t i = 1; i < samples.size(); ++i) {
    const double jump = std::abs(samples[i].fuel_ms - samples[i - 1].fuel_ms);
    const double level = std::max(samples[i].fuel_ms, samples[i - 1].fuel_ms);
    if (!(jump >= settings.min_fuel_change * level * 0.5)) continue;
    if (const std::optional<DelayStep> step = StepAt(samples, i, settings)) {
      steps.push_back(*step);
      i = SampleAtOrAfter(samples, step->time + step->delay + step->lag * 3.0, i);
    }
  }
  return steps;
}

DelayFit FitDelay(std::span<const DelayStep> steps) {
  DelayFit fit;
  Line line = LeastSquares(steps);
  std::vector<DelayStep> kept(steps.begin(), steps.end());
  if (line.ok) {
    std::vector<double> distances;
    for (const DelayStep& step : steps) distances.push_back(std::abs(Residual(line, step)));
    std::nth_element(distances.begin(), distances.begin() + distances.size() / 2, distances.end());
    const double limit = std::max(3.0 * distances[distances.size() / 2], kMinOutlierSeconds);
    std::erase_if(kept,
                  [&](const DelayStep& step) { return std::abs(Residual(line, step)) > limit; });
    line = LeastSquares(kept);
  }
  fit.steps = static_cast<int>(kept.size());
  fit.dropped = static_cast<int>(steps.size() - kept.size());
  if (kept.size() < kMinFitSteps || !line.ok) {
    fit.why_not = "too few clean steps of injection time (" + std::to_string(kept.size()) +
                  "; at least 3 at two flows or more are needed)";
    return fit;
  }
  if (line.floor < 0.0 || line.k < 0.0) {
    fit.why_not = "the steps give a negative floor or k";
    return fit;
  }
  double squares = 0.0;
  for (const DelayStep& step : kept) squares += Residual(line, step) * Residual(line, step);
  fit.rms_residual_s = std::sqrt(squares / static_cast<double>(kept.size()));
  std::vector<double> lags;
  for (const DelayStep& step : kept) lags.push_back(step.lag);
  std::nth_element(lags.begin(), lags.begin() + lags.size() / 2, lags.end());
  fit.model = {line.floor, line.k, lags[lags.size() / 2]};
  fit.fitted = true;
  return fit;
}

}  // namespace vela
