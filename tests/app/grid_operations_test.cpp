// The workbench on the map grids against the simulated ECU, from the keyboard alone: a block
// selected with the selection keys, a typed operation, undo and redo, a paste from a
// spreadsheet, interpolation and a fill. After each step the ECU's calibration read back equals
// the editors' image, and the frames on the wire are exactly the cells that changed. Set
// VELA_SHOTS to a folder to keep pictures of the typed line at 1280x720 and 1024x600.
#include "app/workbench/grid_operations.h"

#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QLineEdit>
#include <QTableWidget>
#include <QtTest>
#include <algorithm>

#include "app/pages/map_pages.h"
#include "editors/mapgrid/qt/map_grid.h"
#include "editors/workbench/edit_journal.h"
#include "running_program.h"
#include "support/gui_test_main.h"
#include "support/wire_log.h"

using namespace vela;
using vela::testing::SentFrame;

// The file's own namespace: the test programs are compiled several files at a time.
namespace grid_operations_test {

constexpr auto kExtend = Qt::ControlModifier | Qt::ShiftModifier;

// The single-value writes that carry the cells changed between two images, in position order.
std::vector<SentFrame> FramesOfChange(const CalibrationImage& before,
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

std::vector<SentFrame> Sorted(std::vector<SentFrame> frames) {
  std::sort(frames.begin(), frames.end(), [](const SentFrame& a, const SentFrame& b) {
    return a.address != b.address ? a.address < b.address : a.value < b.value;
  });
  return frames;
}

class GridOperationsTest : public QObject {
  Q_OBJECT

  testing::WireLog wire_;
  std::unique_ptr<testing::RunningProgram> p_;
  int read_backs_ = 0;
  CalibrationImage read_back_;

  void Key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QTest::keyClick(QApplication::focusWidget(), key, modifiers);
  }

  // The calibration read from the ECU with an upload. The editors take it as well: a read-back
  // of the calibration they hold is no step of the history, so the undo that follows still puts
  // the ECU back.
  bool ReadBack(CalibrationImage& image) {
    const int before = read_backs_;
    const std::size_t entries = p_->editors().history().journal().Entries().size();
    p_->link().ForceUpload();
    if (!QTest::qWaitFor([&] { return read_backs_ > before; }, 10000)) return false;
    image = read_back_;
    return p_->editors().history().journal().Entries().size() == entries &&
           QTest::qWaitFor([&] { return p_->Live(); }, 5000);
  }

  // Runs `step` from the keyboard, waits until its cells are out, and checks the wire and the
  // ECU's calibration.
  void Step(const char* what, const std::function<void()>& step) {
    EditorSession& editors = p_->editors();
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
    QVERIFY2(p_->ecu->ImageSnapshot().Bytes() == editors.image().Bytes(), what);
  }

  void KeepShot(const QString& name, QSize size) {
    p_->window().resize(size);
    QTest::qWait(150);
    const QString folder = qEnvironmentVariable("VELA_SHOTS");
    if (!folder.isEmpty()) {
      p_->window().grab().save(
          QString("%1/%2-%3x%4.png").arg(folder, name).arg(size.width()).arg(size.height()));
    }
  }

 private slots:
  void init() {
    testing::RunningOptions options;
    options.log = wire_.Hook();
    options.size = {1280, 720};
    p_ = std::make_unique<testing::RunningProgram>(options);
    QVERIFY2(p_->started, p_->error.c_str());
    QVERIFY(p_->Run());
    QVERIFY(QTest::qWaitFor([&] { return p_->Live(); }, 5000));
    connect(&p_->link(), &LinkSession::CalibrationReceived, this,
            [this](const CalibrationImage& image) {
              read_back_ = image;
              ++read_backs_;
            });
  }
  void cleanup() { p_.reset(); }

  void aBlockScaledUndoneRedoneAndPastedReachesTheEcuCellForCell() {
    MapGrid* grid = p_->window().map_pages().page(0)->grid();
    OperationLine* line = p_->window().map_pages().page(0)->operation_line();
    grid->SetCurrentCell(4, 3);
    QVERIFY(p_->Activate());
    grid->setFocus();
    for (int i = 0; i < 2; ++i) Key(Qt::Key_Down, kExtend);
    for (int i = 0; i < 3; ++i) Key(Qt::Key_Right, kExtend);
    Key(Qt::Key_Left, kExtend);
    QCOMPARE(grid->Model().Selection(), (MapCellRect{4, 3, 6, 5}));
    QVERIFY(grid->selectionModel()->isSelected(grid->model()->index(6, 5)));

    Step("*1.05", [&] {
      Key(Qt::Key_Asterisk);
      QVERIFY(line->IsOpen());
      QCOMPARE(line->edit()->text(), QString("*"));
      QTest::keyClicks(QApplication::focusWidget(), "1.05");
      QVERIFY2(line->preview()->text().contains("9 cells change"),
               qPrintable(line->preview()->text()));
      KeepShot("typed-line", {1280, 720});
      KeepShot("typed-line", {1024, 600});
      p_->window().resize(1280, 720);
      Key(Qt::Key_Return);
      QVERIFY(!line->IsOpen());
      QCOMPARE(QApplication::focusWidget(), grid);
    });
    QCOMPARE(p_->editors().history().journal().Entries().back().kind, EditKind::kTypedOperation);
    Step("Ctrl-Z", [&] { Key(Qt::Key_Z, Qt::ControlModifier); });
    Step("Ctrl-Y", [&] { Key(Qt::Key_Y, Qt::ControlModifier); });
    // A block from a spreadsheet lands at the top left of the selection.
    Step("Ctrl-V", [&] {
      QGuiApplication::clipboard()->setText("3.1\t3.2\r\n3.3\t3.4\r\n");
      Key(Qt::Key_V, Qt::ControlModifier);
    });
    QCOMPARE(grid->Model().Value(4, 3), 3.1);
    QCOMPARE(grid->Model().Value(5, 4), 3.4);
    QCOMPARE(p_->editors().history().journal().Entries().back().kind, EditKind::kPaste);
    // Shaping, one entry each: both ways from the corners, then the live point's cell.
    Step("Ctrl-B", [&] { Key(Qt::Key_B, Qt::ControlModifier); });
    QCOMPARE(p_->editors().history().journal().Entries().back().kind, EditKind::kInterpolation);
    Step("Ctrl-E", [&] { Key(Qt::Key_E, Qt::ControlModifier); });
    QCOMPARE(p_->editors().history().journal().Entries().back().kind, EditKind::kFill);
    QCOMPARE(grid->Model().Value(4, 3), grid->Model().Value(6, 5));
  }

  // Escape leaves the line without a change; a refused text stays on the line with its reason.
  void escapeLeavesTheTypedLineAndARefusalChangesNothing() {
    MapGrid* grid = p_->window().map_pages().page(0)->grid();
    OperationLine* line = p_->window().map_pages().page(0)->operation_line();
    QVERIFY(p_->Activate());
    grid->setFocus();
    const CalibrationImage before = p_->editors().image();
    Key(Qt::Key_Equal);
    QTest::keyClicks(QApplication::focusWidget(), "1x");
    QVERIFY(line->preview()->text().contains("\"x\""));
    Key(Qt::Key_Return);
    QVERIFY(line->IsOpen());
    Key(Qt::Key_Escape);
    QVERIFY(!line->IsOpen());
    QCOMPARE(QApplication::focusWidget(), grid);
    QVERIFY(p_->editors().image().Bytes() == before.Bytes());
  }

  // A whole map changed at once: its cells carry the waiting mark until they have gone out, and
  // a copy gives the spreadsheet text of the selection.
  void waitingCellsAreMarkedUntilSentAndACopyIsTabSeparated() {
    MapGrid* grid = p_->window().map_pages().page(2)->grid();
    QVERIFY(p_->Press(Qt::Key_I));
    QVERIFY(p_->Activate());
    grid->setFocus();
    Key(Qt::Key_A, Qt::ControlModifier);
    QCOMPARE(grid->Model().Selection(), (MapCellRect{1, 1, 11, grid->Model().LoadSites()}));
    p_->link().SetCommsDelayEnabled(true);  // frames paced as on a serial line
    Key(Qt::Key_Plus);
    QTest::keyClicks(QApplication::focusWidget(), "1");
    Key(Qt::Key_Return);
    QVERIFY(!grid->WaitingCells().empty());
    if (qEnvironmentVariableIsSet("VELA_SHOTS")) {
      grid->grab().save(qEnvironmentVariable("VELA_SHOTS") + "/waiting-cells.png");
    }
    QTRY_VERIFY_WITH_TIMEOUT(grid->WaitingCells().empty(), 20000);
    QVERIFY(p_->editors().send_queue().Empty());

    grid->SetCurrentCell(11, 1);
    Key(Qt::Key_Right, kExtend);
    Key(Qt::Key_C, Qt::ControlModifier);
    const QString text = QGuiApplication::clipboard()->text();
    QCOMPARE(text.count('\t'), 1);
    QCOMPARE(text.count('\n'), 1);
    QVERIFY(text.startsWith(grid->CellText(11, 1)));
  }

  void theHelpPageListsTheWorkbenchKeysBesideTheKeystrokes() {
    auto* keys = p_->Find<QTableWidget>("WorkbenchKeys");
    auto* keystrokes = p_->Find<QTableWidget>("KeystrokeTable");
    QVERIFY(keys && keystrokes);
    QVERIFY(!keystrokes->isAncestorOf(keys));
    QVERIFY(p_->Press(Qt::Key_H));
    KeepShot("help-keys", {1024, 600});
    QCOMPARE(keystrokes->rowCount(), 23);
    QStringList listed;
    for (int row = 0; row < keys->rowCount(); ++row) listed << keys->item(row, 0)->text();
    for (const char* key : {"Ctrl-Shift-Arrows", "Ctrl-A", "Ctrl-B", "Ctrl-R", "Ctrl-Shift-R",
                            "Ctrl-W", "Ctrl-E", "Ctrl-C", "Ctrl-Shift-C", "Ctrl-V", "Ctrl-Z",
                            "Ctrl-Y", "Ctrl-Shift-Z", "Ctrl-J", "Ctrl-Q", "Ctrl-Shift-Q"}) {
      QVERIFY2(listed.contains(key), key);
    }
  }
};

VELA_GUI_TEST(GridOperationsTest)

}  // namespace grid_operations_test

#include "grid_operations_test.moc"
