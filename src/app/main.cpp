// The composition root: builds the program's objects once and hands them down.
#include <QApplication>
#include <QDir>
#include <QTimer>
#include <cstdio>
#include <optional>

#include "app/app_options.h"
#include "app/display_guard.h"
#include "app/main_window.h"
#include "app/sessions/link_session.h"
#include "base/file_system.h"
#include "base/qt/qt_platform.h"
#include "link/qt/qt_serial_port.h"
#include "program/qt/single_instance.h"
#include "sim/pty_runner.h"

namespace {

#ifdef Q_OS_WIN
constexpr bool kWindows = true;
#else
constexpr bool kWindows = false;
#endif

vela::ProgramFolders FoldersFor(const vela::AppOptions& options) {
  if (!options.data_root.isEmpty()) {
    QDir().mkpath(options.data_root);  // a root named on the command line is made if missing
    return vela::ProgramFoldersUnder(QDir(options.data_root).absolutePath().toStdString());
  }
  if (kWindows) return vela::WindowsProgramFolders();
  return vela::ProgramFoldersUnder(QDir::homePath().toStdString());
}

// The simulated ECU's options, or nothing (with the reason printed) when they do not read.
std::optional<vela::sim::SimCommandLine> SimulatorOptions(const vela::AppOptions& options) {
  std::vector<std::string> texts;
  for (const QString& arg : options.sim_args) texts.push_back(arg.toStdString());
  std::vector<std::string_view> args(texts.begin(), texts.end());
  std::string error;
  auto command_line = vela::sim::ParseSimCommandLine(args, &error);
  if (!command_line) std::fprintf(stderr, "morvane-vela: --sim-args: %s\n", error.c_str());
  return command_line;
}

// Starts the simulated ECU on a pseudo-terminal and points the port at it. False (with the
// reason printed) when it cannot start.
bool StartSimulator(const vela::sim::SimCommandLine& command_line,
                    vela::sim::InProcessSimulator& simulator, vela::QtSerialPort& port) {
  std::string error;
  if (!simulator.Start(command_line, &error)) {
    std::fprintf(stderr, "morvane-vela: the simulated ECU could not start: %s\n", error.c_str());
    return false;
  }
  port.set_device_override(QString::fromStdString(simulator.SlavePath()));
  return true;
}

}  // namespace

int main(int argc, char* argv[]) {
  // The command line is read before any window system is touched, so that --help and a wrong
  // option answer on a machine with no display.
  QStringList arguments;
  for (int i = 1; i < argc; ++i) arguments << QString::fromLocal8Bit(argv[i]);
  const vela::AppOptions options =
      vela::ParseAppOptions(arguments, qEnvironmentVariable("MORVANE_VELA_DATA_DIR"));
  if (options.show_help || !options.error.isEmpty()) {
    if (!options.error.isEmpty()) std::fprintf(stderr, "%s\n", qPrintable(options.error));
    std::fputs(qPrintable(vela::AppUsage()), options.show_help ? stdout : stderr);
    return options.show_help ? 0 : 2;
  }
  std::optional<vela::sim::SimCommandLine> sim_options;
  if (options.simulate && !(sim_options = SimulatorOptions(options))) return 2;
  vela::DisplayGuard display_guard;
  QApplication app(argc, argv);
  display_guard.Opened();
  QApplication::setApplicationName("morvane-vela");

  const vela::ProgramFolders folders = FoldersFor(options);
  vela::DiskFileSystem files;
  vela::QtMessageSink messages;
  vela::StartupTrace trace;
  vela::ProgramSetup setup(folders, files, messages, trace);
  vela::QtSerialPort port(kWindows);
  port.set_device_override(options.port_device);
  vela::SingleInstanceLock instance_lock(QString::fromStdString(folders.program));
  vela::sim::InProcessSimulator simulator;
  if (options.simulate && !StartSimulator(*sim_options, simulator, port)) return 1;

  vela::LinkSession link(port, trace);
  // A pseudo-terminal needs no gap between bytes: the simulated ECU paces its own line.
  if (options.simulate) link.SetCommsDelayEnabled(false);
  vela::MainWindow window({setup, trace, port, messages, files, link,
                           [&instance_lock] { return instance_lock.Acquire(); }});
  messages.set_parent(&window);
  if (!window.Load()) return 0;
  window.ShowOnScreen();
  const int result = app.exec();
  link.Close();
  port.Close();
  return result;
}
