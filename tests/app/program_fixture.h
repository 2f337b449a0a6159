// The whole program as its composition root builds it, on a data folder and a serial device of
// the test's choosing, with the questions and file dialogs answered from a script.
#pragma once

#include <QString>
#include <memory>

#include "app/main_window.h"
#include "app/sessions/link_session.h"
#include "base/file_system.h"
#include "link/qt/qt_serial_port.h"
#include "program/qt/single_instance.h"
#include "support/platform_fakes.h"

namespace vela::testing {

struct TestProgram {
  TestProgram(const QString& root, const QString& device)
      : folders(ProgramFoldersUnder(root.toStdString())),
        setup(folders, files, messages, trace),
        port(false),
        lock(QString::fromStdString(folders.program)),
        link(port, trace) {
    port.set_device_override(device);
    window = std::make_unique<MainWindow>(MainWindowParts{
        setup, trace, port, messages, files, link, [this] { return lock.Acquire(); }, &dialogs});
  }

  ProgramFolders folders;
  DiskFileSystem files;
  ScriptedMessages messages;
  ScriptedDialogs dialogs;
  StartupTrace trace;
  ProgramSetup setup;
  QtSerialPort port;
  SingleInstanceLock lock;
  LinkSession link;
  std::unique_ptr<MainWindow> window;
};

}  // namespace vela::testing
