// The whole program started against a simulated ECU on a pseudo-terminal, for the end-to-end
// tests: the ECU first, then the program on the ECU's line, with waits for what a tuner waits for.
#pragma once

#include <QApplication>
#include <QLabel>
#include <QSize>
#include <QString>
#include <QTemporaryDir>
#include <QtTest>
#include <functional>
#include <memory>

#include "app/sessions/editor_session.h"
#include "program_fixture.h"
#include "program_views.h"
#include "sim/engine/drive_log.h"
#include "sim/pty_runner.h"

namespace vela::testing {

// Writes `image` as a map file at `path`.
inline bool WriteImageFile(const QString& path, const CalibrationImage& image) {
  const auto& bytes = image.Bytes();
  return WriteBytes(path, std::string(bytes.begin(), bytes.end()));
}

constexpr auto kExtend = Qt::ControlModifier | Qt::ShiftModifier;  // extends a selection

// A key to whichever widget has the focus, as the keyboard gives it.
inline void Key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
  QTest::keyClick(QApplication::focusWidget(), key, modifiers);
}

// How a RunningProgram is started.
struct RunningOptions {
  sim::SimCommandLine ecu;  // the simulated ECU's options
  // The ECU behind a fixed path (a symbolic link to its terminal), so that it can be unplugged
  // and plugged in again while the program keeps its port.
  bool fixed_line = false;
  bool paced = false;  // keeps the link's pacing gaps, which a pseudo-terminal does not need
  QSize size;          // the window's size, when given
  std::function<void(const std::string&)> log;  // hears the ECU's verbose log

  // The link paced as on a serial line, the window at `size` when given.
  static RunningOptions Paced(const sim::SimCommandLine& ecu = {}, QSize size = {}) {
    RunningOptions options;
    options.ecu = ecu;
    options.paced = true;
    options.size = size;
    return options;
  }
};

// The whole program started against a simulated ECU on a pseudo-terminal, in a folder of its own:
// the ECU first, then the program on the ECU's line.
struct RunningProgram {
  using Options = RunningOptions;

  explicit RunningProgram(Options given = {}) : options(std::move(given)) {
    if (options.fixed_line) options.ecu.link_path = (dir.path() + "/ecu").toStdString();
    if (options.log) options.ecu.verbose = true;
    started = Plug();
    const std::string line = options.fixed_line ? options.ecu.link_path : ecu->SlavePath();
    program = std::make_unique<TestProgram>(dir.path(), QString::fromStdString(line));
    if (!options.paced) program->link.SetCommsDelayEnabled(false);
  }
  // Starts a new simulated ECU with the options as they stand now.
  bool Plug() {
    ecu = std::make_unique<sim::InProcessSimulator>();
    return ecu->Start(options.ecu, &error, options.log);
  }
  // Loads and shows the window.
  bool Show() {
    if (!window().Load()) return false;
    if (options.size.isValid()) window().resize(options.size);
    window().show();
    return true;
  }
  // Shown and active, with the ECU's calibration taken and the chosen rate (20 frames a second).
  bool Run() {
    return Show() && Activate() &&
           QTest::qWaitFor([this] { return window().editors().has_calibration(); }, 10000) &&
           QTest::qWaitFor([this] { return link().live().frames_per_second == 20; }, 3000);
  }
  bool Activate() {
    window().activateWindow();
    return QTest::qWaitForWindowActive(&window());
  }
  // A key as the tuner types it: the main window sees keys only while it is the active window.
  bool Press(Qt::Key key) {
    if (!Activate()) return false;
    QTest::keyClick(&window(), key);
    return true;
  }
  // Connected, and no upload still to come.
  bool Live() {
    return link().state().Caption == kCaptionConnected && !link().upload().UploadExpected();
  }
  MainWindow& window() { return *program->window; }
  EditorSession& editors() { return window().editors(); }
  LinkSession& link() { return program->link; }
  template <typename T>
  T* Find(const QString& name) {
    return window().findChild<T*>(name);
  }
  QString Text(const QString& label) { return Find<QLabel>(label)->text(); }
  // A drive of the simulated engine on the editors' calibration, from a cold start, whose engine
  // needs `errors` in its fuel, written as the chart file `name` in the program's folder, with a
  // marker "Launch" at `launch` seconds when given. The file's path, or empty.
  std::string WriteDrive(const QString& name, double seconds,
                         std::vector<sim::FuelError> errors = {},
                         std::optional<double> launch = {}) {
    sim::SimOptions engine;
    engine.fuel_errors = std::move(errors);
    DatalogLog log;
    sim::RunDrive(engine, editors().image(), seconds, log);
    if (launch) log.AddMarkerAt(*launch, "Launch");
    const QString path = dir.path() + "/" + name;
    return WriteBytes(path, EncodeLogFile(log)) ? path.toStdString() : std::string();
  }
  // The same drive loaded as the tuner loads one.
  bool LoadDrive(const QString& name, double seconds, std::vector<sim::FuelError> errors = {},
                 std::optional<double> launch = {}) {
    const std::string path = WriteDrive(name, seconds, std::move(errors), launch);
    return !path.empty() && LoadLogFile(*program, path);
  }

  QTemporaryDir dir;
  Options options;
  std::string error;
  std::unique_ptr<sim::InProcessSimulator> ecu;
  bool started = false;
  std::unique_ptr<TestProgram> program;
};

// The program loaded and shown against a simulated ECU of the given options, its link paced as
// on a serial line.
struct ShownProgram : RunningProgram {
  explicit ShownProgram(const sim::SimCommandLine& ecu = {}, QSize size = {})
      : RunningProgram(RunningOptions::Paced(ecu, size)) {
    loaded = Show();
  }
  bool loaded = false;
};

}  // namespace vela::testing
