// The fuel correction's proposal for a one-hour log at 60 records a second: the delay fit over
// its steps, the evidence per cell and the proposal with its fit of the cell values. The log is
// the simulated engine's hour (recorded at 20 a second) with two records put between each pair,
// so the samples are read from a log, not made up.
#include <benchmark/benchmark.h>

#include <array>
#include <span>

#include "sim/core/base_calibration.h"
#include "sim/engine/drive_log.h"
#include "tune/tune_run.h"

namespace {

vela::SampleLog HourAt60(const vela::CalibrationImage& image) {
  vela::sim::SimOptions options;
  options.fuel_errors = {*vela::sim::ParseFuelError("12@4000-9000,60-100"),
                         *vela::sim::ParseFuelError("-8@1500-3500,20-50")};
  vela::DatalogLog log;
  vela::sim::RunDrive(options, image, 3600.0, log);
  const vela::SampleLog at20 = vela::SamplesOf(log, vela::FuelAxesOf(image).basis);
  vela::SampleLog at60;
  at60.step = at20.step / 3.0;
  for (std::size_t i = 0; i + 1 < at20.samples.size(); ++i) {
    for (int k = 0; k < 3; ++k) {
      vela::TuneSample sample = at20.samples[i];
      sample.time += at60.step * k;
      at60.samples.push_back(sample);
    }
  }
  return at60;
}

void BM_ProposalOfAnHour(benchmark::State& state) {
  const vela::CalibrationImage image = vela::sim::EmbeddedBaseCalibration();
  const std::vector<vela::SampleLog> logs = {HourAt60(image)};
  const vela::TargetTable targets(vela::FuelAxesOf(image));
  vela::TuneSettings settings;
  settings.filters.limiter_rpm = vela::LimiterRpmOf(image);
  for (auto _ : state) {
    vela::DelayFit fit;
    const vela::DelayModel delay = vela::ChooseDelay(logs, settings, fit);
    const vela::Evidence evidence =
        vela::GatherEvidence(logs, vela::FuelAxesOf(image), targets, settings.filters, delay);
    benchmark::DoNotOptimize(vela::ProposeFuel(image, evidence.cells, targets, settings.proposal));
  }
  state.counters["records"] = static_cast<double>(logs[0].samples.size());
}
BENCHMARK(BM_ProposalOfAnHour)->Unit(benchmark::kMillisecond);

// The simulated engine's hour recorded at 60 records a second, made once.
const vela::DatalogLog& RecordedHour() {
  static const vela::DatalogLog log = [] {
    vela::sim::SimOptions options;
    options.fuel_errors = {*vela::sim::ParseFuelError("12@4000-9000,60-100"),
                           *vela::sim::ParseFuelError("-8@1500-3500,20-50")};
    vela::DatalogLog made;
    vela::sim::RunDrive(options, vela::sim::EmbeddedBaseCalibration(), 3600.0, made, 60);
    return made;
  }();
  return log;
}

// What the program's proposal does from its copy of the log, on its own thread: samples, the
// delay fit, evidence, the proposal, the check against the fit, evidence and proposal again.
void BM_WholeRunFromCopiedColumns(benchmark::State& state) {
  const vela::CalibrationImage image = vela::sim::EmbeddedBaseCalibration();
  vela::LogColumns columns;
  vela::TakeColumns(RecordedHour(), columns);
  const vela::LogColumns* logs[] = {&columns};
  const vela::TargetTable targets(vela::FuelAxesOf(image));
  for (auto _ : state) {
    benchmark::DoNotOptimize(vela::RunTune(logs, image, targets, vela::TuneSettings{}));
  }
  state.counters["records"] = static_cast<double>(columns.times.size());
}
BENCHMARK(BM_WholeRunFromCopiedColumns)->Unit(benchmark::kMillisecond);

// What the GUI thread spends copying: the whole hour (the first time), and the two seconds a
// recording adds between two looks.
void BM_CopyOfTheLog(benchmark::State& state) {
  const vela::DatalogLog& log = RecordedHour();
  for (auto _ : state) {
    vela::LogColumns columns;
    vela::TakeColumns(log, columns);
    benchmark::DoNotOptimize(columns);
  }
}
BENCHMARK(BM_CopyOfTheLog)->Unit(benchmark::kMillisecond);

void BM_CopyOfTwoMoreSeconds(benchmark::State& state) {
  const vela::DatalogLog& log = RecordedHour();
  vela::DatalogLog growing;
  const std::size_t start = log.RecordCount() - 120;
  std::array<const float*, vela::kChannelCount> values{};
  for (int channel = 0; channel < vela::kChannelCount; ++channel) {
    const std::vector<float>& series = log.Series(channel).values;
    values[channel] = series.size() >= log.RecordCount() ? series.data() : nullptr;
  }
  growing.AppendRecords(std::span(log.Times()).first(start), std::span(log.Arrivals()).first(start),
                        values);
  vela::LogColumns held;
  vela::TakeColumns(growing, held);
  std::array<const float*, vela::kChannelCount> rest{};
  for (int channel = 0; channel < vela::kChannelCount; ++channel) {
    if (values[channel]) rest[channel] = values[channel] + start;
  }
  growing.AppendRecords(std::span(log.Times()).subspan(start),
                        std::span(log.Arrivals()).subspan(start), rest);
  for (auto _ : state) {
    state.PauseTiming();
    vela::LogColumns columns = held;
    state.ResumeTiming();
    vela::TakeColumns(growing, columns);
    benchmark::DoNotOptimize(columns);
  }
}
BENCHMARK(BM_CopyOfTwoMoreSeconds)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
