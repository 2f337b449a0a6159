// The composition root: builds the program's objects once and hands them down.
#include <QApplication>
#include <QDir>
#include <QTimer>
#include <cstdio>

#include "app/app_options.h"
#include "app/main_window.h"
#include "link/qt/qt_serial_port.h"
#include "shell/file_system.h"
#include "shell/qt/qt_platform.h"
#include "shell/qt/single_instance.h"

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

}  // namespace

int main(int argc, char* argv[]) {
  QApplication app(argc, argv);
  QApplication::setApplicationName("morvane-vela");
  const vela::AppOptions options =
      vela::ParseAppOptions(app.arguments().mid(1), qEnvironmentVariable("MORVANE_VELA_DATA_DIR"));
  if (options.show_help || !options.error.isEmpty()) {
    if (!options.error.isEmpty()) std::fprintf(stderr, "%s\n", qPrintable(options.error));
    std::fputs(qPrintable(vela::AppUsage()), options.show_help ? stdout : stderr);
    return options.show_help ? 0 : 2;
  }

  const vela::ProgramFolders folders = FoldersFor(options);
  vela::DiskFileSystem files;
  vela::QtMessageSink messages;
  vela::StartupTrace trace;
  vela::ProgramSetup setup(folders, files, messages, trace);
  vela::QtSerialPort port(kWindows);
  port.set_device_override(options.port_device);
  vela::SingleInstanceLock instance_lock(QString::fromStdString(folders.program));

  vela::MainWindow window({setup, trace, port, messages, files,
                           [&instance_lock] { return instance_lock.Acquire(); }});
  messages.set_parent(&window);
  if (!window.Load()) return 0;
  window.show();
  const int result = app.exec();
  port.Close();
  return result;
}
