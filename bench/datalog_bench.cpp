// The datalog's figures on logs of an hour and of four hours at 60 frames a second with all
// twelve channels (2.6 M and 10.4 M points): a full-view repaint of the chart, beside QtCharts
// given the same points; saving and loading the chart file; one frame's capture. It draws real
// widgets, so it runs under a display (scripts/run.sh starts a virtual one when there is none).
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QImage>
#include <QTemporaryDir>
#if VELA_HAVE_QTCHARTS
#include <QtCharts/QChart>
#include <QtCharts/QChartView>
#include <QtCharts/QLineSeries>
#include <QtCharts/QValueAxis>
#endif
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <map>
#include <memory>

#include "base/file_system.h"
#include "bench_timing.h"
#include "datalog/datalog_capture.h"
#include "datalog/files/datalog_files.h"
#include "datalog/files/log_file.h"
#include "datalog/qt/datalog_chart.h"

namespace {

constexpr int kFramesPerSecond = 60;
constexpr int kWidth = 1600;
constexpr int kHeight = 700;

// A log of `hours` that looks like driving: slow swells, fast ripple and a rare spike, with
// frames arriving up to 25 ms late and 20 frames lost every two minutes.
std::unique_ptr<vela::DatalogLog> DrivingLog(double hours) {
  auto log = std::make_unique<vela::DatalogLog>();
  const auto records = static_cast<std::size_t>(hours * 3600 * kFramesPerSecond);
  vela::ChannelValues values{};
  std::uint32_t noise = 12345;
  double lost_s = 0.0;
  for (std::size_t i = 0; i < records; ++i) {
    const double t = static_cast<double>(i) / kFramesPerSecond;
    if (i % 7200 == 7199) lost_s += 20.0 / kFramesPerSecond;
    noise = noise * 1664525u + 1013904223u;
    const double ripple = (noise >> 16) / 65536.0;
    for (int n = 0; n < vela::kChannelCount; ++n) {
      const double swell = std::sin(t / (7.0 + n)) * 0.5 + 0.5;
      values[n] = (n + 1) * 100.0 * swell + 10.0 * ripple + (i % 50021 == 0 ? 500.0 : 0.0);
    }
    log->Append(t, t + lost_s + 0.025 * (noise >> 24) / 256.0, values, 0x0FFF);
  }
  log->CloseGaps();
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

// The mean of each case, for the summary: the time on the clock, and the processor time of the
// thread that did the work (what the case costs the program whatever else runs on the machine).
using vela::bench::Mean;
using vela::bench::MeanMs;

std::map<std::string, Mean> g_ms;

void Note(benchmark::State& state, const std::string& name, Mean mean) {
  g_ms[name] = mean;
  state.counters["ms"] = mean.wall_ms;
  state.counters["cpu_ms"] = mean.cpu_ms;
}

// The chart shown at `width` x `height`, drawn once to settle, then timed drawing it again.
Mean RepaintMs(benchmark::State& state, vela::DatalogChart& chart, int width, int height) {
  chart.resize(width, height);
  chart.show();
  QApplication::processEvents();
  QImage image(width, height, QImage::Format_RGB32);
  chart.render(&image);
  return MeanMs(state, [&] { chart.render(&image); });
}

void BM_ChartFullViewRepaint(benchmark::State& state) {
  const double hours = static_cast<double>(state.range(0));
  vela::DatalogLog& log = LogOf(hours);
  vela::DatalogChart chart(log);
  Note(state, hours == 1 ? "chart 1 h" : "chart 4 h", RepaintMs(state, chart, kWidth, kHeight));
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
  Note(state, "live 30 s", RepaintMs(state, chart, 950, 500));
}
BENCHMARK(BM_ChartLiveRepaint)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(100);

// The four-hour log in 4 stacked panels (three channels each, every scale automatic from the
// values in view) beside the same log in one panel: each panel plans its own scales and is
// drawn over a quarter of the height.
void BM_ChartStackedRepaint(benchmark::State& state) {
  const int panels = static_cast<int>(state.range(0));
  vela::DatalogLog& log = LogOf(4);
  vela::DatalogChart chart(log);
  vela::review::ChartLayout layout;
  for (int p = 1; p < panels; ++p) layout.AddPanel();
  for (int n = 0; n < vela::kChannelCount; ++n) {
    layout.Place(vela::LayoutNameOf(n), n * panels / vela::kChannelCount);
  }
  chart.SetLayout(layout);
  Note(state, panels == 1 ? "panels 1" : "panels 4", RepaintMs(state, chart, kWidth, kHeight));
}
BENCHMARK(BM_ChartStackedRepaint)
    ->Arg(1)
    ->Arg(4)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(100);

#if VELA_HAVE_QTCHARTS
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
#endif

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

// The dialog's answer and the message boxes of a load, for the program's own load path.
struct ChosenFile : vela::FileDialogs {
  std::string path;
  std::optional<std::string> AskOpenPath(const std::string&, const std::string&,
                                         const std::string&) override {
    return path;
  }
  std::optional<std::string> AskSavePath(const std::string&, const std::string&,
                                         const std::string&) override {
    return path;
  }
};
struct NoMessages : vela::MessageSink {
  vela::MessageAnswer Show(vela::MessageIcon, const std::string&, const std::vector<std::string>&,
                           vela::MessageButtons) override {
    return vela::MessageAnswer::kOk;
  }
};

// The load as the DataLogging tab runs it: the file read from the disk, decoded, and put in the
// place of the log shown.
void BM_LoadLog(benchmark::State& state) {
  QTemporaryDir dir;
  const std::string folder = dir.path().toStdString() + "/";
  vela::DiskFileSystem disk;
  ChosenFile dialog;
  dialog.path = folder + "hour.SL1";
  disk.WriteFile(dialog.path, vela::EncodeLogFile(LogOf(1)));
  NoMessages messages;
  const vela::ProgramFolders folders{folder, folder, folder + "Maps/", folder};
  std::string dialog_folder;
  vela::DatalogFiles files(disk, dialog, messages, folders, dialog_folder);
  auto shown = std::make_unique<vela::DatalogLog>();
  Note(state, "load 1 h", MeanMs(state, [&] {
         const vela::DatalogLoadResult loaded = files.LoadDatalog(*shown);
         if (loaded.result != vela::DatalogFileResult::kDone || !loaded.report.Intact()) {
           state.SkipWithError("the file did not read back");
         }
         benchmark::DoNotOptimize(shown->RecordCount());
       }));
}
BENCHMARK(BM_LoadLog)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(10);

// One frame recorded into a log that already holds an hour.
void BM_CaptureFrame(benchmark::State& state) {
  vela::DatalogLog log;
  vela::DatalogCapture capture(log);
  for (int n = 0; n < vela::kChannelCount; ++n) capture.SetChannelEnabled(n, true);
  capture.StartLogging(20, 0.0);
  capture.FramesPerSecond = kFramesPerSecond;
  vela::live::Frame frame{};
  frame[vela::live::kEnginePeriod - 1] = 0x20;
  frame[vela::live::kEnginePeriod] = 0x4E;
  const vela::ChannelInputs inputs{14.7, 85.0, 30.0, 40.0};
  double now = 0.0;
  for (int i = 0; i < 3600 * kFramesPerSecond; ++i) {
    now += 1.0 / kFramesPerSecond;
    capture.CaptureFrame(frame, inputs, 1.0, true, now);
  }
  for (auto _ : state) {
    now += 1.0 / kFramesPerSecond;
    capture.CaptureFrame(frame, inputs, 1.0, true, now);
  }
}
BENCHMARK(BM_CaptureFrame)->Unit(benchmark::kMicrosecond);

void PrintSummary() {
  const auto ms = [](const char* name) { return g_ms.count(name) ? g_ms[name] : Mean{}; };
  const double qt = ms("qtcharts 1 h").wall_ms;
  const auto line = [&](const char* what, const char* name) {
    std::printf("  %-44s %7.2f ms  (processor %7.2f ms)\n", what, ms(name).wall_ms,
                ms(name).cpu_ms);
  };
  std::printf("\nDatalog figures (1600 x 700 px, 12 channels at 60 frames/s):\n");
  line("full-view repaint, 1 h (2.6 M points):", "chart 1 h");
  if (qt > 0) {
    std::printf("  %-44s %7.1f ms  (%.0f x the chart's)\n", "QtCharts, 1 h:", qt,
                qt / ms("chart 1 h").wall_ms);
  }
  line("full-view repaint, 4 h (10.4 M points):", "chart 4 h");
  line("repaint while logging (30 s, 950 x 500 px):", "live 30 s");
  line("4 h in one panel, scales from the view:", "panels 1");
  line("4 h in 4 stacked panels:", "panels 4");
  if (ms("panels 1").wall_ms > 0) {
    std::printf("  %-44s %7.2f x  (goal: 1.5 at most)\n",
                "4 panels against one:", ms("panels 4").wall_ms / ms("panels 1").wall_ms);
  }
  line("save the 1 h chart file:", "save 1 h");
  line("load the 1 h chart file:", "load 1 h");
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
