// The log review's figures on a four-hour log at 60 frames a second with all twelve channels
// (864,000 records): the scatter of two channels coloured by a third, a histogram, math channels
// over the whole log and following a recording, an autoscale in view and the delta column against a
// second log. Plain core code: no display needed.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <map>
#include <memory>
#include <string>

#include "bench_timing.h"
#include "datalog/review/autoscale.h"
#include "datalog/review/distribution.h"
#include "datalog/review/math_channels.h"
#include "datalog/review/two_logs.h"

namespace {

constexpr int kFramesPerSecond = 60;
constexpr double kHours = 4.0;

// Four hours that look like driving: each channel a slow swell with ripple, on its own scale.
const vela::DatalogLog& FourHourLog() {
  static std::unique_ptr<vela::DatalogLog> log;
  if (log) return *log;
  log = std::make_unique<vela::DatalogLog>();
  const auto records = static_cast<std::size_t>(kHours * 3600 * kFramesPerSecond);
  vela::ChannelValues values{};
  std::uint32_t noise = 12345;
  for (std::size_t i = 0; i < records; ++i) {
    const double t = static_cast<double>(i) * 1.002 / kFramesPerSecond;
    noise = noise * 1664525u + 1013904223u;
    const double ripple = (noise >> 16) / 65536.0;
    for (int n = 0; n < vela::kChannelCount; ++n) {
      values[n] = (n + 1) * 100.0 * (std::sin(t / (7.0 + n)) * 0.5 + 0.5) + 10.0 * ripple;
    }
    values[vela::kChannelRpm] = 800 + 6000 * (std::sin(t / 9.0) * 0.5 + 0.5) + 50 * ripple;
    values[vela::kChannelAfr] = 125 + 25 * std::sin(t / 5.0) + 5 * ripple;
    log->Append(t, t, values, 0x0FFF);
  }
  log->CloseGaps();
  return *log;
}

using vela::bench::Mean;

std::map<std::string, Mean> g_ms;

template <typename Body>
void Measure(benchmark::State& state, const std::string& name, Body body) {
  const Mean mean = vela::bench::MeanMs(state, body);
  g_ms[name] = mean;
  state.counters["ms"] = mean.wall_ms;
  state.counters["cpu_ms"] = mean.cpu_ms;
}

using vela::review::RecordedColumn;
using vela::review::WholeLog;

void BM_Scatter(benchmark::State& state) {
  const vela::DatalogLog& log = FourHourLog();
  const auto x = RecordedColumn(log, vela::kChannelRpm);
  const auto y = RecordedColumn(log, vela::kChannelAfr);
  const auto z = RecordedColumn(log, vela::kChannelMap);
  // The view keeps its density and recomputes into it (a new span, new channels).
  vela::review::ScatterDensity density;
  Measure(state, "scatter", [&] {
    const auto records = WholeLog(log.RecordCount());
    const auto grid = vela::review::GridForColumns(x, y, records, 800, 600);
    vela::review::ComputeScatter(x, y, z, records, *grid, density);
    benchmark::DoNotOptimize(density.points);
  });
}
BENCHMARK(BM_Scatter)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(20);

void BM_Histogram(benchmark::State& state) {
  const vela::DatalogLog& log = FourHourLog();
  const auto column = RecordedColumn(log, vela::kChannelRpm);
  Measure(state, "histogram", [&] {
    benchmark::DoNotOptimize(vela::review::ComputeHistogram(column, WholeLog(log.RecordCount())));
  });
}
BENCHMARK(BM_Histogram)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(50);

const std::map<std::string, std::string> kExpressions = {
    {"math duty", vela::review::DutyExpression(120000)},
    {"math heavy", "avg(d(TPS), 0.5s) > 30 * (RPM[-1] > 2000) + abs(MAP@-0.2s - MAP)"},
};

void BM_MathChannel(benchmark::State& state) {
  const vela::DatalogLog& log = FourHourLog();
  const auto entry = std::next(kExpressions.begin(), state.range(0));
  // The view keeps its columns and workspace and evaluates into them again.
  vela::review::MathWorkspace workspace;
  std::vector<vela::review::MathColumn> columns;
  Measure(state, entry->first, [&] {
    vela::review::EvaluateMathChannels(log, {{"X", entry->second}}, {}, workspace, columns);
    benchmark::DoNotOptimize(columns[0].values.data());
  });
}
BENCHMARK(BM_MathChannel)
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(10);

// While recording, the math channels follow the log once a second: the default two and a heavy
// one brought up to a four-hour log that grew by a second's records.
void BM_MathFollowsRecording(benchmark::State& state) {
  const vela::DatalogLog& log = FourHourLog();
  std::vector<vela::review::MathChannel> channels = vela::review::DefaultMathChannels(120000, true);
  channels.push_back({"Heavy", kExpressions.at("math heavy")});
  const vela::review::TargetLookup target = [](double, double) { return 13.0; };
  vela::review::MathWorkspace workspace;
  std::vector<vela::review::MathColumn> columns;
  vela::review::EvaluateMathChannels(log, channels, target, workspace, columns);
  Measure(state, "math follows", [&] {
    benchmark::DoNotOptimize(vela::review::ExtendMathChannels(
        log, channels, target, workspace, columns, log.RecordCount() - kFramesPerSecond));
  });
}
BENCHMARK(BM_MathFollowsRecording)->Unit(benchmark::kMicrosecond)->UseManualTime()->Iterations(200);

void BM_AutoscaleInView(benchmark::State& state) {
  const vela::DatalogLog& log = FourHourLog();
  const auto column = RecordedColumn(log, vela::kChannelRpm);
  Measure(state, "autoscale", [&] {
    benchmark::DoNotOptimize(
        vela::review::ScaleInView({}, column, log.Times(), 1234.5, log.EndTime() - 100.0));
  });
}
BENCHMARK(BM_AutoscaleInView)->Unit(benchmark::kMicrosecond)->UseManualTime()->Iterations(1000);

void BM_DeltaColumn(benchmark::State& state) {
  const vela::DatalogLog& log = FourHourLog();
  Measure(state, "delta", [&] {
    benchmark::DoNotOptimize(
        vela::review::DeltaColumn(log, log, vela::review::LogAlignment{1.5}, vela::kChannelRpm));
  });
}
BENCHMARK(BM_DeltaColumn)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(10);

void PrintSummary() {
  const auto line = [](const char* what, const std::string& name, double goal_ms) {
    const Mean m = g_ms.count(name) ? g_ms[name] : Mean{};
    std::printf("  %-46s %8.3f ms  (processor %8.3f ms)", what, m.wall_ms, m.cpu_ms);
    if (goal_ms > 0) std::printf("  goal %g ms%s", goal_ms, m.wall_ms <= goal_ms ? "" : ": OVER");
    std::printf("\n");
  };
  std::printf("\nReview figures (4 h at 60 frames/s, 864,000 records, 12 channels):\n");
  line("scatter AFR x RPM by MAP, 800 x 600 px:", "scatter", 30);
  line("histogram of RPM, bins from its range:", "histogram", 10);
  line("math channel, injector duty:", "math duty", 100);
  line("math channel, look-backs, d() and avg():", "math heavy", 100);
  line("3 math channels following a second's growth:", "math follows", 1);
  line("autoscale of RPM in view:", "autoscale", 0);
  line("delta column of RPM against a second log:", "delta", 0);
}

}  // namespace

int main(int argc, char* argv[]) {
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  PrintSummary();
  return 0;
}
