// The program against the simulated ECU with the wire heard, for the workbench tests driven from
// the keyboard: each step's frames are checked against exactly the cells it changed, and the
// ECU's calibration is read back with an upload and compared with the editors' image.
#pragma once

#include <QApplication>
#include <QtTest>
#include <algorithm>
#include <functional>
#include <memory>

#include "editors/workbench/edit_journal.h"
#include "running_program.h"
#include "support/wire_log.h"

namespace vela::testing {

// The single-value writes that carry the cells changed between two images, in position order.
inline std::vector<SentFrame> FramesOfChange(const CalibrationImage& before,
                                             const CalibrationImage& after) {
  std::vector<ByteWrite> writes;
  for (const ByteChange& change : DiffImages(before, after)) {
    writes.push_back({change.position, change.after});
  }
  std::vector<SentFrame> frames;
  for (const CellWrite& cell : CellsToSend(writes, after)) {
    frames.push_back({kSingleValueWrite, cell.position, static_cast<std::int32_t>(cell.value)});
  }
  return frames;
}

inline std::vector<SentFrame> Sorted(std::vector<SentFrame> frames) {
  std::sort(frames.begin(), frames.end(), [](const SentFrame& a, const SentFrame& b) {
    return a.address != b.address ? a.address < b.address : a.value < b.value;
  });
  return frames;
}

class WorkbenchRig {
 public:
  // Runs the program at 1280 x 720, live, with every calibration it receives kept.
  bool Start() {
    RunningOptions options;
    options.log = wire_.Hook();
    options.size = {1280, 720};
    p = std::make_unique<RunningProgram>(options);
    if (!p->started || !p->Run() || !QTest::qWaitFor([&] { return p->Live(); }, 5000)) {
      return false;
    }
    QObject::connect(&p->link(), &LinkSession::CalibrationReceived, &context_,
                     [this](const CalibrationImage& image) {
                       read_back_ = image;
                       ++read_backs_;
                     });
    return true;
  }

  // The calibration read from the ECU with an upload. The editors take it as well: a read-back
  // of the calibration they hold is no step of the history, so an undo that follows still puts
  // the ECU back.
  bool ReadBack(CalibrationImage& image) {
    const int before = read_backs_;
    const std::size_t entries = p->editors().history().journal().Entries().size();
    p->link().ForceUpload();
    if (!QTest::qWaitFor([&] { return read_backs_ > before; }, 10000)) return false;
    image = read_back_;
    return p->editors().history().journal().Entries().size() == entries &&
           QTest::qWaitFor([&] { return p->Live(); }, 5000);
  }

  // Runs `step` from the keyboard, waits until its cells are out, and checks that the wire
  // carried exactly the changed cells and that the ECU's calibration equals the editors' image.
  void Step(const char* what, const std::function<void()>& step) {
    EditorSession& editors = p->editors();
    const CalibrationImage before = editors.image();
    const std::size_t mark = wire_.Mark();
    step();
    const std::vector<SentFrame> expected = FramesOfChange(before, editors.image());
    QVERIFY2(!expected.empty(), what);
    QVERIFY2(QTest::qWaitFor([&] { return editors.send_queue().Empty(); }, 10000), what);
    QVERIFY2(
        QTest::qWaitFor([&] { return wire_.WritesSince(mark).size() >= expected.size(); }, 5000),
        what);
    QTest::qWait(200);  // for any frame that should not come
    QVERIFY2(Sorted(wire_.WritesSince(mark)) == Sorted(expected), what);
    CalibrationImage ecu;
    QVERIFY2(ReadBack(ecu), what);
    QVERIFY2(ecu.Bytes() == editors.image().Bytes(), what);
  }

  std::unique_ptr<RunningProgram> p;

 private:
  WireLog wire_;
  QObject context_;
  int read_backs_ = 0;
  CalibrationImage read_back_;
};

}  // namespace vela::testing
