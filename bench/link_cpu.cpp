// Processor time the program's user-interface thread spends per second while it is connected to
// the simulated ECU at 60 live frames a second. The simulated ECU runs on its own thread in the
// same process; only the program's thread is measured. With --window the whole main window runs
// (map pages, graphs and read-outs refreshed as the tuner sees them; --tab N puts page N in
// front), otherwise the link alone. --record (with --window) records a datalog meanwhile.
#include <sys/resource.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTimer>
#include <cstdio>
#include <cstring>

#include "app/datalog_page.h"
#include "app/link_session.h"
#include "program_fixture.h"
#include "sim/pty_runner.h"

namespace {

double ThreadCpuSeconds() {
  rusage usage{};
  getrusage(RUSAGE_THREAD, &usage);
  return usage.ru_utime.tv_sec + usage.ru_stime.tv_sec +
         (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

class QuietStatus : public vela::StatusLabel {
 public:
  void SetText(const std::string&) override {}
  void SetColour(vela::LabelColour) override {}
};

}  // namespace

int main(int argc, char* argv[]) {
  QApplication app(argc, argv);
  bool whole_window = false;
  bool record = false;
  int tab = 0;
  int seconds = 10;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--window") == 0) {
      whole_window = true;
    } else if (std::strcmp(argv[i], "--record") == 0) {
      record = true;
    } else if (std::strcmp(argv[i], "--tab") == 0 && i + 1 < argc) {
      tab = std::atoi(argv[++i]);
    } else {
      seconds = std::atoi(argv[i]);
    }
  }
  vela::sim::InProcessSimulator ecu;
  std::string error;
  if (!ecu.Start({}, &error)) {
    std::fprintf(stderr, "simulated ECU: %s\n", error.c_str());
    return 1;
  }
  QTemporaryDir dir;
  vela::testing::TestProgram program(dir.path(), QString::fromStdString(ecu.SlavePath()));
  vela::LinkSession& link = program.link;
  if (whole_window) {
    if (!program.window->Load()) return 1;
    program.window->show();
    program.window->tabs()->setCurrentIndex(tab);
  } else {
    program.port.Open(1);
    link.Start();
    static QuietStatus status;
    link.StartCountsPerMsTimer(status);
  }
  int frames = 0;
  QObject::connect(&link, &vela::LinkSession::LiveDataChanged, [&] { ++frames; });

  double cpu_start = 0;
  int frames_start = 0;
  QElapsedTimer wall;
  // Once connected and uploaded, ask for 60 frames a second and measure from then on.
  QObject::connect(&link, &vela::LinkSession::CalibrationReceived, [&] {
    link.RateChosen(0);
    QTimer::singleShot(1000, [&] {
      if (record && whole_window) program.window->datalog_page().StartStopLogging();
      cpu_start = ThreadCpuSeconds();
      frames_start = frames;
      wall.start();
      QTimer::singleShot(seconds * 1000, &app, &QCoreApplication::quit);
    });
  });
  QTimer::singleShot((seconds + 20) * 1000, &app, [&] {
    std::fprintf(stderr, "no calibration arrived\n");
    app.exit(1);
  });
  if (app.exec() != 0) return 1;
  const double elapsed = wall.elapsed() / 1000.0;
  const double cpu = ThreadCpuSeconds() - cpu_start;
  const bool recorded = record && whole_window && program.window->datalog_page().Logging();
  std::printf(
      "%s%s%s connected at %.1f live frames/s: %.1f ms of processor time per second (%.2f %%)\n",
      whole_window ? "whole program" : "link alone",
      whole_window ? QString(", tab %1").arg(tab).toLocal8Bit().constData() : "",
      recorded ? ", recording a datalog," : "", (frames - frames_start) / elapsed,
      1000.0 * cpu / elapsed, 100.0 * cpu / elapsed);
  link.Close();
  return 0;
}
