// The log on the map grids, for a one-hour log at 60 frames a second (216,000 records) with a
// lost stretch: every fuel cell's figures from the whole log at once (a log loaded), one second
// of new records taken while a log of an hour is being recorded, and the stretches the engine
// spent in a selection of cells (Ctrl-M).
#include <benchmark/benchmark.h>

#include <memory>

#include "synthetic_drive.h"
#include "tune/log_heat.h"
#include "tune/view/heat_overlay.h"

namespace {

using vela::tune_testing::DriveShape;

constexpr DriveShape kHour{3600.0, 60.0, 1800.0, 20};

// 11 RPM sites by 17 load sites: the largest fuel grid.
vela::TuneAxes FuelAxes() {
  vela::TuneAxes axes;
  for (int i = 0; i < 11; ++i) axes.rpm.push_back(500.0 + 650.0 * i);
  for (int i = 0; i < 17; ++i) axes.loads.push_back(10.0 + 12.5 * i);
  return axes;
}

const vela::DatalogLog& HourLog() {
  static const std::unique_ptr<vela::DatalogLog> log = [] {
    auto made = std::make_unique<vela::DatalogLog>();
    vela::tune_testing::FillDrive(*made, kHour);
    return made;
  }();
  return *log;
}

void BM_HeatOfAnHourLog(benchmark::State& state) {
  const vela::DatalogLog& log = HourLog();
  const vela::TuneAxes axes = FuelAxes();
  for (auto _ : state) {
    vela::LogHeat heat(axes, vela::TargetTable(axes), {});
    heat.Follow(log, false);
    benchmark::DoNotOptimize(heat.Cells().At(6, 6).time_s);
  }
  state.counters["records"] = static_cast<double>(log.RecordCount());
}
BENCHMARK(BM_HeatOfAnHourLog)->Unit(benchmark::kMillisecond);

// The overlay of a whole grid from the figures (the colours and the texts of every cell).
void BM_HeatOverlayOfAGrid(benchmark::State& state) {
  const vela::TuneAxes axes = FuelAxes();
  vela::LogHeat heat(axes, vela::TargetTable(axes), {});
  heat.Follow(HourLog(), false);
  for (auto _ : state) {
    const vela::GridOverlay overlay =
        vela::HeatOverlay(heat.Cells(), heat.Targets(), vela::HeatLayer::kError, {3, 4});
    benchmark::DoNotOptimize(overlay.At(3, 4));
  }
}
BENCHMARK(BM_HeatOverlayOfAGrid)->Unit(benchmark::kMicrosecond);

// Recording: the log has reached an hour; each round one more second of records arrives and
// the figures take it.
void BM_HeatFollowsOneSecondOfRecording(benchmark::State& state) {
  const vela::TuneAxes axes = FuelAxes();
  const DriveShape shape{kHour.seconds + 600.0, 60.0};
  vela::DatalogLog log;
  std::size_t records = vela::tune_testing::DriveRecords(kHour);
  vela::tune_testing::AppendDrive(log, shape, 0, records);
  vela::LogHeat heat(axes, vela::TargetTable(axes), {});
  heat.Follow(log, true);
  for (auto _ : state) {
    state.PauseTiming();
    vela::tune_testing::AppendDrive(log, shape, records, records + 60);
    records += 60;
    state.ResumeTiming();
    heat.Follow(log, true);
  }
}
BENCHMARK(BM_HeatFollowsOneSecondOfRecording)->Unit(benchmark::kMicrosecond)->Iterations(300);

void BM_SpansOfASelection(benchmark::State& state) {
  const vela::DatalogLog& log = HourLog();
  const vela::TuneAxes axes = FuelAxes();
  for (auto _ : state) {
    const std::vector<vela::CellStretch> spans =
        vela::CellSpans(log, vela::LoadBasis::kMap, axes, {4, 3, 6, 8});
    benchmark::DoNotOptimize(spans.data());
  }
}
BENCHMARK(BM_SpansOfASelection)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
