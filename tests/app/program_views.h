// The program's window shown and kept as pictures, for the tests that look at it (these need
// Qt Test, which the benchmarks sharing the program fixture do not link).
#pragma once

#include <QAccessible>
#include <QSize>
#include <QString>
#include <QWidget>
#include <QtTest>

#include "program_fixture.h"

namespace vela::testing {

// What accessibility tools read of `object` as `text` (empty when it has no interface).
inline QString AccessibleText(QObject* object, QAccessible::Text text) {
  QAccessibleInterface* face = QAccessible::queryAccessibleInterface(object);
  return face ? face->text(text) : QString();
}

// Loads and shows the window at `size`, active.
inline bool ShowActive(TestProgram& program, QSize size = {1280, 720}) {
  if (!program.window->Load()) return false;
  program.window->resize(size);
  program.window->show();
  program.window->activateWindow();
  return QTest::qWaitForWindowActive(program.window.get());
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
