// Processor time the program spends per second while it is connected to the simulated ECU at 60
// live frames a second: every thread of the program (the user-interface thread, the window
// system's and the 3D graph's), and the user-interface thread alone. The simulated ECU runs on a
// thread of its own in the same process; its time is left out.
//
//   vela-link-cpu [SECONDS]                  the link alone (the window built but never shown)
//   vela-link-cpu --window [--tab N] [--graph] [--record] [SECONDS]
//                                            the whole window with page N in front (a map page
//                                            with its graph with --graph), recording a datalog
//                                            meanwhile with --record
//   vela-link-cpu --pages [--rounds N] [SECONDS]
//                                            the whole window, every page in front in turn, then
//                                            the map pages again with their graphs shown; N
//                                            rounds (default 3), each page's median printed
// It says whether the toolkit's accessibility bridge was active: run it under
// scripts/with-accessibility-bus.sh to measure the program as a screen reader's desktop runs it
// (scripts/bench-pages.sh measures every page both ways).
// The thread's load swings with what the simulated engine does and with the timing of the line,
// so the pages take turns and the median of the rounds is the figure.
#include <sys/resource.h>
#include <unistd.h>

#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "app/pages/datalog_page.h"
#include "app/sessions/link_session.h"
#include "program_fixture.h"
#include "sim/pty_runner.h"

namespace {

double ThreadCpuSeconds() {
  rusage usage{};
  getrusage(RUSAGE_THREAD, &usage);
  return usage.ru_utime.tv_sec + usage.ru_stime.tv_sec +
         (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

double ProcessCpuSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_utime.tv_sec + usage.ru_stime.tv_sec +
         (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

// The simulated ECU's thread's processor time, from /proc (0 where there is none).
double SimulatorCpuSeconds() {
  namespace fs = std::filesystem;
  std::error_code error;
  for (const auto& task : fs::directory_iterator("/proc/self/task", error)) {
    std::ifstream comm(task.path() / "comm");
    std::string name;
    std::getline(comm, name);
    if (name != vela::sim::kInProcessThreadName) continue;
    std::ifstream stat_file(task.path() / "stat");
    std::string stat((std::istreambuf_iterator<char>(stat_file)), {});
    const std::size_t after_name = stat.rfind(')');
    if (after_name == std::string::npos) return 0.0;
    std::istringstream fields(stat.substr(after_name + 2));
    std::string field;
    double ticks = 0.0;
    // Fields 3 on: state, ..., utime is the 14th and stime the 15th of the whole line.
    for (int i = 3; i <= 15 && (fields >> field); ++i) {
      if (i == 14 || i == 15) ticks += std::stod(field);
    }
    return ticks / static_cast<double>(sysconf(_SC_CLK_TCK));
  }
  return 0.0;
}

double ProgramCpuSeconds() { return ProcessCpuSeconds() - SimulatorCpuSeconds(); }

class QuietStatus : public vela::StatusLabel {
 public:
  void SetText(const std::string&) override {}
  void SetColour(vela::LabelColour) override {}
};

struct Options {
  enum class Mode { kLink, kWindow, kPages } mode = Mode::kLink;
  int tab = 0;
  bool record = false;
  bool graph = false;
  int seconds = 10;
  int rounds = 1;
};

Options ParseOptions(int argc, char* argv[]) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--window") == 0) {
      options.mode = Options::Mode::kWindow;
    } else if (std::strcmp(argv[i], "--pages") == 0) {
      options.mode = Options::Mode::kPages;
      options.rounds = std::max(options.rounds, 3);
    } else if (std::strcmp(argv[i], "--rounds") == 0 && i + 1 < argc) {
      options.rounds = std::max(1, std::atoi(argv[++i]));
    } else if (std::strcmp(argv[i], "--graph") == 0) {
      options.graph = true;
    } else if (std::strcmp(argv[i], "--record") == 0) {
      options.record = true;
    } else if (std::strcmp(argv[i], "--tab") == 0 && i + 1 < argc) {
      options.tab = std::atoi(argv[++i]);
    } else {
      options.seconds = std::atoi(argv[i]);
    }
  }
  return options;
}

// One measurement: what to put in front, and its name.
struct Step {
  QString name;
  std::function<void()> show;
};

// Runs the steps one after another, `rounds` times: each one settles for a second, then is
// measured. The median of each step's rounds is printed at the end.
class Measurement {
 public:
  Measurement(vela::LinkSession& link, std::vector<Step> steps, int seconds, int rounds)
      : link_(link),
        steps_(std::move(steps)),
        seconds_(seconds),
        rounds_(rounds),
        percent_(steps_.size()),
        thread_percent_(steps_.size()) {
    QObject::connect(&link_, &vela::LinkSession::LiveDataChanged, [this] { ++frames_; });
  }

  void Start() { Next(0); }

 private:
  void Next(std::size_t turn) {
    if (turn >= steps_.size() * static_cast<std::size_t>(rounds_)) {
      Print();
      QCoreApplication::quit();
      return;
    }
    const std::size_t index = turn % steps_.size();
    steps_[index].show();
    QTimer::singleShot(1000, [this, turn, index] {
      const double cpu_start = ProgramCpuSeconds();
      const double thread_start = ThreadCpuSeconds();
      const int frames_start = frames_;
      wall_.start();
      QTimer::singleShot(
          seconds_ * 1000, [this, turn, index, cpu_start, thread_start, frames_start] {
            const double elapsed = wall_.elapsed() / 1000.0;
            percent_[index].push_back(100.0 * (ProgramCpuSeconds() - cpu_start) / elapsed);
            thread_percent_[index].push_back(100.0 * (ThreadCpuSeconds() - thread_start) / elapsed);
            frame_rate_ = (frames_ - frames_start) / elapsed;
            Next(turn + 1);
          });
    });
  }

  void Print() {
    std::printf("(%.1f live frames/s; median of %d rounds of %d s", frame_rate_, rounds_, seconds_);
    std::printf(rounds_ > 1 ? ", lowest to highest)\n" : ")\n");
    std::printf("(accessibility bridge %s)\n", QAccessible::isActive() ? "active" : "inactive");
    std::printf("  %-44s %-22s %s\n", "", "all threads", "user-interface thread");
    for (std::size_t i = 0; i < steps_.size(); ++i) {
      std::printf("  %-44s", qPrintable(steps_[i].name));
      PrintFigure(percent_[i]);
      PrintFigure(thread_percent_[i]);
      std::printf("\n");
    }
  }

  void PrintFigure(std::vector<double> values) const {
    std::sort(values.begin(), values.end());
    std::printf(" %5.2f %%", values[values.size() / 2]);
    if (values.size() > 1) {
      std::printf(" (%.2f-%.2f) ", values.front(), values.back());
    } else {
      std::printf("             ");
    }
  }

  vela::LinkSession& link_;
  std::vector<Step> steps_;
  int seconds_;
  int rounds_;
  std::vector<std::vector<double>> percent_;
  std::vector<std::vector<double>> thread_percent_;
  int frames_ = 0;
  double frame_rate_ = 0.0;
  QElapsedTimer wall_;
};

std::vector<Step> StepsFor(const Options& options, vela::MainWindow& window) {
  QTabWidget* tabs = window.tabs();
  auto* numerical = window.findChild<QCheckBox*>("Numerical");
  // Page `tab` in front, the maps shown as numbers (`Numerical`, as a new installation has it) or
  // with their graphs.
  auto page = [tabs, numerical](int tab, bool graphs = false) {
    return Step{"whole program, " + tabs->tabText(tab).remove('&') +
                    (graphs ? QString(" with its graph") : QString()),
                [tabs, tab, numerical, graphs] {
                  if (numerical != nullptr) numerical->setChecked(!graphs);
                  tabs->setCurrentIndex(tab);
                }};
  };
  switch (options.mode) {
    case Options::Mode::kLink:
      return {{"link alone", [] {}}};
    case Options::Mode::kWindow: {
      Step step = page(options.tab, options.graph);
      if (options.record) {
        step.name += ", recording a datalog";
        step.show = [show = step.show, &window] {
          show();
          if (!window.datalog_page().Logging()) window.datalog_page().StartStopLogging();
        };
      }
      return {step};
    }
    case Options::Mode::kPages:
      break;
  }
  std::vector<Step> steps;
  for (int tab = 0; tab < tabs->count(); ++tab) steps.push_back(page(tab));
  for (int tab = 0; tab < 3; ++tab) steps.push_back(page(tab, true));
  return steps;
}

}  // namespace

int main(int argc, char* argv[]) {
  QApplication app(argc, argv);
  const Options options = ParseOptions(argc, argv);
  vela::sim::InProcessSimulator ecu;
  std::string error;
  if (!ecu.Start({}, &error)) {
    std::fprintf(stderr, "simulated ECU: %s\n", error.c_str());
    return 1;
  }
  QTemporaryDir dir;
  vela::testing::TestProgram program(dir.path(), QString::fromStdString(ecu.SlavePath()));
  vela::LinkSession& link = program.link;
  if (options.mode == Options::Mode::kLink) {
    program.port.Open(1);
    link.Start();
    static QuietStatus status;
    link.StartCountsPerMsTimer(status);
  } else {
    if (!program.window->Load()) return 1;
    program.window->show();
  }
  Measurement measurement(link, StepsFor(options, *program.window), options.seconds,
                          options.rounds);
  // Once connected and uploaded, ask for 60 frames a second and measure from then on.
  bool started = false;
  QObject::connect(&link, &vela::LinkSession::CalibrationReceived, [&] {
    if (started) return;
    started = true;
    // As the rate list does: the setting (the datalog's time base) and the link's rate.
    program.setup.settings.frames_per_second_index = 0;
    link.RateChosen(0);
    measurement.Start();
  });
  QTimer::singleShot(20'000, &app, [&] {
    if (link.upload().UploadExpected()) {
      std::fprintf(stderr, "no calibration arrived\n");
      app.exit(1);
    }
  });
  std::printf("Processor time of the program, connected at 60 live frames a second:\n");
  const int result = app.exec();
  link.Close();
  return result;
}
