// The whole program as its composition root builds it, on a data folder and a serial device of
// the test's choosing, with the questions and file dialogs answered from a script.
#pragma once

#include <QFile>
#include <QPushButton>
#include <QString>
#include <QtTest>
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

// Loads and shows the window at `size`, active.
inline bool ShowActive(TestProgram& program, QSize size = {1280, 720}) {
  if (!program.window->Load()) return false;
  program.window->resize(size);
  program.window->show();
  program.window->activateWindow();
  return QTest::qWaitForWindowActive(program.window.get());
}

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

// The widget at `size` (when given), kept as a picture in the folder VELA_SHOTS names, if any.
inline void KeepShot(QWidget* widget, const QString& name, QSize size = {}) {
  if (size.isValid()) {
    widget->resize(size);
    QTest::qWait(150);
  }
  const QString folder = qEnvironmentVariable("VELA_SHOTS");
  if (folder.isEmpty()) return;
  widget->grab().save(
      QString("%1/%2-%3x%4.png").arg(folder, name).arg(widget->width()).arg(widget->height()));
}

// The widget kept at the two sizes a tuner's laptop and netbook give, then at the first again.
inline void KeepShots(QWidget* widget, const QString& name) {
  KeepShot(widget, name, {1024, 600});
  KeepShot(widget, name, {1280, 720});
}

}  // namespace vela::testing
