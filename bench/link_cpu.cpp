// Processor time the program's user-interface thread spends per second while it is connected to
// the simulated ECU at 60 live frames a second. The simulated ECU runs on its own thread in the
// same process; only the program's thread is measured.
#include <sys/resource.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTimer>
#include <cstdio>

#include "app/link_session.h"
#include "link/connection_supervisor.h"
#include "link/qt/qt_serial_port.h"
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
  QCoreApplication app(argc, argv);
  const int seconds = argc > 1 ? std::atoi(argv[1]) : 10;
  vela::sim::InProcessSimulator ecu;
  std::string error;
  if (!ecu.Start({}, &error)) {
    std::fprintf(stderr, "simulated ECU: %s\n", error.c_str());
    return 1;
  }
  vela::QtSerialPort port(false);
  port.set_device_override(QString::fromStdString(ecu.SlavePath()));
  port.Open(1);
  vela::StartupTrace trace;
  QuietStatus status;
  vela::LinkSession link(port, trace);
  link.Start();
  link.StartCountsPerMsTimer(status);
  int frames = 0;
  QObject::connect(&link, &vela::LinkSession::LiveDataChanged, [&] { ++frames; });

  double cpu_start = 0;
  int frames_start = 0;
  QElapsedTimer wall;
  // Once connected and uploaded, ask for 60 frames a second and measure from then on.
  QObject::connect(&link, &vela::LinkSession::CalibrationReceived, [&] {
    link.RateChosen(0);
    QTimer::singleShot(1000, [&] {
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
  std::printf("connected at %.1f live frames/s: %.1f ms of processor time per second (%.2f %%)\n",
              (frames - frames_start) / elapsed, 1000.0 * cpu / elapsed, 100.0 * cpu / elapsed);
  link.Close();
  return 0;
}
