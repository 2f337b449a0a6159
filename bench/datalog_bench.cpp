// The datalog's figures on logs of an hour and of four hours at 60 frames a second with all
// twelve channels (2.6 M and 10.4 M points): a full-view repaint of the chart, beside QtCharts
// given the same points; saving and loading the chart file; one frame's capture. It draws real
// widgets, so it runs under a display (scripts/run.sh starts a virtual one when there is none).
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QImage>
#include <QTemporaryDir>
#include <QtCharts/QChart>
#include <QtCharts/QChartView>
#include <QtCharts/QLineSeries>
#include <QtCharts/QValueAxis>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <map>
#include <memory>

#include "datalog/datalog_capture.h"
#include "datalog/log_file.h"
#include "datalog/qt/datalog_chart.h"
#include "shell/file_system.h"

namespace {

constexpr int kFramesPerSecond = 60;
constexpr int kWidth = 1600;
constexpr int kHeight = 700;

// A log of `hours` that looks like driving: slow swells, fast ripple and a rare spike.
std::unique_ptr<vela::DatalogLog> DrivingLog(double hours) {
  auto log = std::make_unique<vela::DatalogLog>();
  const auto records = static_cast<std::size_t>(hours * 3600 * kFramesPerSecond);
  vela::ChannelValues values{};
  std::uint32_t noise = 12345;
  for (std::size_t i = 0; i < records; ++i) {
    const double t = static_cast<double>(i) / kFramesPerSecond;
    noise = noise * 1664525u + 1013904223u;
    const double ripple = (noise >> 16) / 65536.0;
    for (int n = 0; n < vela::kChannelCount; ++n) {
      const double swell = std::sin(t / (7.0 + n)) * 0.5 + 0.5;
      values[n] = (n + 1) * 100.0 * swell + 10.0 * ripple + (i % 50021 == 0 ? 500.0 : 0.0);
    }
    log->Append(t, values, 0x0FFF);
  }
  for (int n = 0; n < vela::kChannelCount; ++n) log->SetActive(n, true);
  log->axis = vela::TimeAxis{0.0, log->EndTime()};
  return log;
}

vela::DatalogLog& LogOf(double hours) {
  static std::map<double, std::unique_ptr<vela::DatalogLog>> logs;
  auto& log = logs[hours];
  if (!log) log = DrivingLog(hours);
  return *log;
}

std::map<std::string, double> g_ms;  // the mean of each case, for the summary

void Note(benchmark::State& state, const std::string& name, double ms) {
  g_ms[name] = ms;
  state.counters["ms"] = ms;
}

template <typename Body>
double MeanMs(benchmark::State& state, Body body) {
  double total = 0;
  for (auto _ : state) {
    const auto start = std::chrono::steady_clock::now();
    body();
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    state.SetIterationTime(took.count());
    total += took.count() * 1000.0;
  }
  return total / static_cast<double>(state.iterations());
}

void BM_ChartFullViewRepaint(benchmark::State& state) {
  const double hours = static_cast<double>(state.range(0));
  vela::DatalogLog& log = LogOf(hours);
  vela::DatalogChart chart(log);
  chart.resize(kWidth, kHeight);
  chart.show();
  QApplication::processEvents();
  QImage image(kWidth, kHeight, QImage::Format_RGB32);
  chart.render(&image);
  const double ms = MeanMs(state, [&] { chart.render(&image); });
  Note(state, hours == 1 ? "chart 1 h" : "chart 4 h", ms);
}
BENCHMARK(BM_ChartFullViewRepaint)
    ->Arg(1)
    ->Arg(4)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(100);

// While logging: half a minute of log on the chart as it sits in the window, redrawn as it grows.
void BM_ChartLiveRepaint(benchmark::State& state) {
  vela::DatalogLog& log = LogOf(30.0 / 3600);
  vela::DatalogChart chart(log);
  chart.resize(950, 500);
  chart.show();
  QApplication::processEvents();
  QImage image(950, 500, QImage::Format_RGB32);
  Note(state, "live 30 s", MeanMs(state, [&] { chart.render(&image); }));
}
BENCHMARK(BM_ChartLiveRepaint)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(100);

// QtCharts with every point: its repaint once the series hold the data.
void BM_QtChartsFullViewRepaint(benchmark::State& state) {
  vela::DatalogLog& log = LogOf(1);
  auto* chart = new QChart;
  chart->legend()->hide();
  auto* x = new QValueAxis;
  auto* y = new QValueAxis;
  chart->addAxis(x, Qt::AlignBottom);
  chart->addAxis(y, Qt::AlignLeft);
  x->setRange(0, log.EndTime());
  y->setRange(0, 1800);
  for (int n = 0; n < vela::kChannelCount; ++n) {
    QList<QPointF> points;
    points.reserve(static_cast<qsizetype>(log.RecordCount()));
    for (std::size_t i = 0; i < log.RecordCount(); ++i) {
      points.append(QPointF(log.Times()[i], log.Series(n).values[i]));
    }
    auto* series = new QLineSeries;
    series->replace(points);
    chart->addSeries(series);
    series->attachAxis(x);
    series->attachAxis(y);
  }
  QChartView view(chart);
  view.resize(kWidth, kHeight);
  view.show();
  QApplication::processEvents();
  QImage image(kWidth, kHeight, QImage::Format_RGB32);
  view.QWidget::render(&image);
  Note(state, "qtcharts 1 h", MeanMs(state, [&] { view.QWidget::render(&image); }));
}
BENCHMARK(BM_QtChartsFullViewRepaint)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(3);

void BM_SaveLog(benchmark::State& state) {
  vela::DatalogLog& log = LogOf(1);
  QTemporaryDir dir;
  const std::string path = (dir.path() + "/hour.SL1").toStdString();
  vela::DiskFileSystem disk;
  Note(state, "save 1 h", MeanMs(state, [&] {
         if (disk.WriteFile(path, vela::EncodeLogFile(log)) != vela::kFileErrorNone) {
           state.SkipWithError("the file could not be written");
         }
       }));
}
BENCHMARK(BM_SaveLog)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(10);

void BM_LoadLog(benchmark::State& state) {
  QTemporaryDir dir;
  const std::string path = (dir.path() + "/hour.SL1").toStdString();
  vela::DiskFileSystem disk;
  disk.WriteFile(path, vela::EncodeLogFile(LogOf(1)));
  Note(state, "load 1 h", MeanMs(state, [&] {
         vela::DatalogLog loaded;
         const auto bytes = disk.ReadFile(path);
         if (!bytes || !vela::DecodeLogFile(*bytes, loaded).Intact()) {
           state.SkipWithError("the file did not read back");
         }
         benchmark::DoNotOptimize(loaded.RecordCount());
       }));
}
BENCHMARK(BM_LoadLog)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(10);

// One frame recorded into a log that already holds an hour.
void BM_CaptureFrame(benchmark::State& state) {
  vela::DatalogLog log;
  vela::DatalogCapture capture(log);
  for (int n = 0; n < vela::kChannelCount; ++n) capture.SetChannelEnabled(n, true);
  capture.StartLogging(20);
  vela::live::Frame frame{};
  frame[vela::live::kFramesPerSecond - 1] = kFramesPerSecond;
  frame[vela::live::kEnginePeriod - 1] = 0x20;
  frame[vela::live::kEnginePeriod] = 0x4E;
  const vela::ChannelInputs inputs{14.7, 85.0, 30.0, 40.0};
  for (int i = 0; i < 3600 * kFramesPerSecond; ++i) capture.CaptureFrame(frame, inputs, 1.0, true);
  for (auto _ : state) capture.CaptureFrame(frame, inputs, 1.0, true);
}
BENCHMARK(BM_CaptureFrame)->Unit(benchmark::kMicrosecond);

void PrintSummary() {
  const auto ms = [](const char* name) { return g_ms.count(name) ? g_ms[name] : NAN; };
  const double qt = ms("qtcharts 1 h");
  std::printf("\nDatalog figures (1600 x 700 px, 12 channels at 60 frames/s):\n");
  std::printf("  full-view repaint, 1 h (2.6 M points):   %7.2f ms  (QtCharts %8.1f ms: %.0f x)\n",
              ms("chart 1 h"), qt, qt / ms("chart 1 h"));
  std::printf("  full-view repaint, 4 h (10.4 M points):  %7.2f ms\n", ms("chart 4 h"));
  std::printf("  repaint while logging (30 s, 950 x 500 px): %5.2f ms\n", ms("live 30 s"));
  std::printf("  save the 1 h chart file:                 %7.2f ms\n", ms("save 1 h"));
  std::printf("  load the 1 h chart file:                 %7.2f ms\n", ms("load 1 h"));
}

}  // namespace

int main(int argc, char* argv[]) {
  QApplication app(argc, argv);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  PrintSummary();
  return 0;
}
