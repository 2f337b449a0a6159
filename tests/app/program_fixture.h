// The whole program as its composition root builds it, on a data folder and a serial device of
// the test's choosing, with the questions and file dialogs answered from a script.
#pragma once

#include <QFile>
#include <QPushButton>
#include <QString>
#include <memory>
#include <string>

#include "app/main_window.h"
#include "app/pages/datalog_page.h"
#include "app/sessions/link_session.h"
#include "base/file_system.h"
#include "datalog/files/log_file.h"
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

inline bool WriteBytes(const QString& path, const std::string& bytes) {
  QFile file(path);
  return file.open(QIODevice::WriteOnly) &&
         file.write(bytes.data(), static_cast<qint64>(bytes.size())) ==
             static_cast<qint64>(bytes.size());
}

// The chart file at `path` loaded as the tuner loads one, with the DataLogging tab's Load button.
inline bool LoadLogFile(TestProgram& program, const std::string& path) {
  program.dialogs.paths.push_back(path);
  program.window->findChild<QPushButton*>("Command6_1")->click();
  return program.window->datalog_page().log().RecordCount() > 0;
}

// `log` saved as a chart file at `path` and loaded.
inline bool LoadLog(TestProgram& program, const QString& path, const DatalogLog& log) {
  return WriteBytes(path, EncodeLogFile(log)) && LoadLogFile(program, path.toStdString()) &&
         program.window->datalog_page().log().RecordCount() == log.RecordCount();
}

}  // namespace vela::testing
