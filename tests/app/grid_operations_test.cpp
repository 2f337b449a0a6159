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

#include "app/pages/map_pages.h"
#include "editors/mapgrid/qt/map_grid.h"
#include "support/gui_test_main.h"
#include "workbench_rig.h"

using namespace vela;
using vela::testing::kExtend;
using vela::testing::Key;

// The file's own namespace: the test programs are compiled several files at a time.
namespace grid_operations_test {

class GridOperationsTest : public QObject {
  Q_OBJECT

  testing::WorkbenchRig rig_;

 private slots:
  void init() { QVERIFY(rig_.Start()); }
  void cleanup() { rig_.p.reset(); }

  void aBlockScaledUndoneRedoneAndPastedReachesTheEcuCellForCell() {
    MapGrid* grid = rig_.p->window().map_pages().page(0)->grid();
    OperationLine* line = rig_.p->window().map_pages().page(0)->operation_line();
    grid->SetCurrentCell(4, 3);
    QVERIFY(rig_.p->Activate());
    grid->setFocus();
    for (int i = 0; i < 2; ++i) Key(Qt::Key_Down, kExtend);
    for (int i = 0; i < 3; ++i) Key(Qt::Key_Right, kExtend);
    Key(Qt::Key_Left, kExtend);
    QCOMPARE(grid->Model().Selection(), (MapCellRect{4, 3, 6, 5}));
    QVERIFY(grid->selectionModel()->isSelected(grid->model()->index(6, 5)));

    rig_.Step("*1.05", [&] {
      Key(Qt::Key_Asterisk);
      QVERIFY(line->IsOpen());
      QCOMPARE(line->edit()->text(), QString("*"));
      QTest::keyClicks(QApplication::focusWidget(), "1.05");
      QVERIFY2(line->preview()->text().contains("9 cells change"),
               qPrintable(line->preview()->text()));
      testing::KeepShots(&rig_.p->window(), "typed-line");
      Key(Qt::Key_Return);
      QVERIFY(!line->IsOpen());
      QCOMPARE(QApplication::focusWidget(), grid);
    });
    QCOMPARE(rig_.p->editors().history().journal().Entries().back().kind,
             EditKind::kTypedOperation);
    rig_.Step("Ctrl-Z", [&] { Key(Qt::Key_Z, Qt::ControlModifier); });
    rig_.Step("Ctrl-Y", [&] { Key(Qt::Key_Y, Qt::ControlModifier); });
    // A block from a spreadsheet lands at the top left of the selection.
    rig_.Step("Ctrl-V", [&] {
      QGuiApplication::clipboard()->setText("3.1\t3.2\r\n3.3\t3.4\r\n");
      Key(Qt::Key_V, Qt::ControlModifier);
    });
    QCOMPARE(grid->Model().Value(4, 3), 3.1);
    QCOMPARE(grid->Model().Value(5, 4), 3.4);
    QCOMPARE(rig_.p->editors().history().journal().Entries().back().kind, EditKind::kPaste);
    // Shaping, one entry each: both ways from the corners, then the live point's cell.
    rig_.Step("Ctrl-B", [&] { Key(Qt::Key_B, Qt::ControlModifier); });
    QCOMPARE(rig_.p->editors().history().journal().Entries().back().kind, EditKind::kInterpolation);
    rig_.Step("Ctrl-E", [&] { Key(Qt::Key_E, Qt::ControlModifier); });
    QCOMPARE(rig_.p->editors().history().journal().Entries().back().kind, EditKind::kFill);
    QCOMPARE(grid->Model().Value(4, 3), grid->Model().Value(6, 5));
  }

  // The Help page lists the workbench's keys beside the keystrokes. A whole map changed at once:
  // its cells carry the waiting mark until they have gone out, and a copy gives the spreadsheet
  // text of the selection.
  void waitingCellsAreMarkedUntilSentAndACopyIsTabSeparated() {
    auto* keys = rig_.p->Find<QTableWidget>("WorkbenchKeys");
    auto* keystrokes = rig_.p->Find<QTableWidget>("KeystrokeTable");
    QVERIFY(keys && keystrokes);
    QVERIFY(!keystrokes->isAncestorOf(keys));
    QVERIFY(rig_.p->Press(Qt::Key_H));
    testing::KeepShot(&rig_.p->window(), "help-keys", {1024, 600});
    QStringList listed;
    for (int row = 0; row < keys->rowCount(); ++row) listed << keys->item(row, 0)->text();
    // The table's ends and a plain chord (the rows come from the workbench's own key table).
    for (const char* key : {"Ctrl-Shift-Arrows", "Ctrl-R", "Ctrl-Shift-Q"}) {
      QVERIFY2(listed.contains(key), key);
    }

    MapGrid* grid = rig_.p->window().map_pages().page(2)->grid();
    QVERIFY(rig_.p->Press(Qt::Key_I));
    QVERIFY(rig_.p->Activate());
    grid->setFocus();
    Key(Qt::Key_A, Qt::ControlModifier);
    QCOMPARE(grid->Model().Selection(), (MapCellRect{1, 1, 11, grid->Model().LoadSites()}));
    rig_.p->link().SetCommsDelayEnabled(true);  // frames paced as on a serial line
    Key(Qt::Key_Plus);
    QTest::keyClicks(QApplication::focusWidget(), "1");
    Key(Qt::Key_Return);
    QVERIFY(!grid->WaitingCells().empty());
    if (qEnvironmentVariableIsSet("VELA_SHOTS")) {
      grid->grab().save(qEnvironmentVariable("VELA_SHOTS") + "/waiting-cells.png");
    }
    QTRY_VERIFY_WITH_TIMEOUT(grid->WaitingCells().empty(), 20000);
    QVERIFY(rig_.p->editors().send_queue().Empty());

    grid->SetCurrentCell(11, 1);
    Key(Qt::Key_Right, kExtend);
    Key(Qt::Key_C, Qt::ControlModifier);
    const QString text = QGuiApplication::clipboard()->text();
    QCOMPARE(text.count('\t'), 1);
    QCOMPARE(text.count('\n'), 1);
    QVERIFY(text.startsWith(grid->CellText(11, 1)));
  }
};

VELA_GUI_TEST(GridOperationsTest)

}  // namespace grid_operations_test

#include "grid_operations_test.moc"
