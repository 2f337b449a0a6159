// The workbench on the compensation tables against the simulated ECU, from the keyboard alone:
// rows selected with the selection keys, a typed operation, undo, a paste; the ECU gets exactly
// the changed bytes and its calibration read back equals the editors' image. A comparison with
// the ECU frames the rows that differ. Set VELA_SHOTS to a folder to keep pictures of the typed
// line on the page at 1280x720 and 1024x600.
#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QLineEdit>
#include <QtTest>

#include "app/pages/setup/compensation_page.h"
#include "app/pages/setup/setup_pages.h"
#include "app/sessions/compare_session.h"
#include "support/gui_test_main.h"
#include "workbench_rig.h"

using namespace vela;
using vela::testing::kExtend;
using vela::testing::Key;

// The file's own namespace: the test programs are compiled several files at a time.
namespace compensation_operations_test {

class CompensationOperationsTest : public QObject {
  Q_OBJECT

  testing::WorkbenchRig rig_;
  CompensationPage& Page() { return *rig_.p->window().setup_pages().compensation(); }

 private slots:
  void init() { QVERIFY(rig_.Start()); }
  void cleanup() { rig_.p.reset(); }

  void selectedRowsScaledReachTheEcuByteForByteAndUndoPutsThemBack() {
    SmallMapGrid* water = Page().grid(CompTable::kWaterMap);
    OperationLine* line = Page().operation_line(CompTable::kWaterMap);
    QVERIFY(rig_.p->Press(Qt::Key_C));
    water->SetCurrentRow(0);
    water->setFocus();
    for (int i = 0; i < 3; ++i) Key(Qt::Key_Down, kExtend);
    Key(Qt::Key_Up, kExtend);
    QCOMPARE(water->Model().SelectionFirst(), 0);
    QCOMPARE(water->Model().SelectionLast(), 2);
    const std::size_t entries = rig_.p->editors().history().journal().Entries().size();

    rig_.Step("*1.1", [&] {
      Key(Qt::Key_Asterisk);
      QVERIFY(line->IsOpen());
      QTest::keyClicks(QApplication::focusWidget(), "1.1");
      QVERIFY2(line->preview()->text().contains("cells change"),
               qPrintable(line->preview()->text()));
      testing::KeepShots(&rig_.p->window(), "compensation-typed-line");
      Key(Qt::Key_Return);
      QVERIFY(!line->IsOpen());
      QCOMPARE(QApplication::focusWidget(), water);
    });
    const auto& journal = rig_.p->editors().history().journal();
    QCOMPARE(journal.Entries().size(), entries + 1);
    QCOMPARE(journal.Entries().back().kind, EditKind::kTypedOperation);
    QCOMPARE(journal.Entries().back().place, EditPlace::kSetup);
    QCOMPARE(QString::fromStdString(journal.Entries().back().source),
             QString("Water temperature compensation: *1.1"));

    // Compared with the ECU as last read (the change read back): the undo makes the changed
    // rows differ until the ECU is read again, and they are framed meanwhile.
    QVERIFY(rig_.p->window().compare().Compare(CompareSession::Source::kEditors,
                                               CompareSession::Source::kEcu));
    QVERIFY(!water->Mark(0).isValid() && !water->Mark(2).isValid());
    rig_.Step("Ctrl-Z", [&] {
      Key(Qt::Key_Z, Qt::ControlModifier);
      int framed = 0;
      for (int row = 0; row < 3; ++row) framed += water->Mark(row).isValid() ? 1 : 0;
      QVERIFY(framed > 0);
      QVERIFY(!water->Mark(5).isValid());
    });
    QVERIFY(!water->Mark(0).isValid() && !water->Mark(1).isValid());
    QCOMPARE(journal.Applied(), entries);
  }

  // A column pasted onto the selected rows is one entry; a refused typed value changes nothing.
  void aPastedColumnIsOneEntryAndARefusalStaysOnTheLine() {
    SmallMapGrid* batt = Page().grid(CompTable::kBattMap);
    OperationLine* line = Page().operation_line(CompTable::kBattMap);
    QVERIFY(rig_.p->Press(Qt::Key_C));
    batt->SetCurrentRow(4);
    batt->setFocus();
    rig_.Step("Ctrl-V", [&] {
      QGuiApplication::clipboard()->setText("0.31\r\n0.27\r\n");
      Key(Qt::Key_V, Qt::ControlModifier);
    });
    QCOMPARE(batt->Model().Text(4), std::string("0.31"));
    QCOMPARE(batt->Model().Text(5), std::string("0.27"));
    QCOMPARE(rig_.p->editors().history().journal().Entries().back().kind, EditKind::kPaste);
    // Copied with the axis column and pasted higher up: the volts are checked and skipped.
    batt->SetCurrentRow(4);
    Key(Qt::Key_Down, Qt::ControlModifier | Qt::ShiftModifier);
    Key(Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
    const QString copied = QGuiApplication::clipboard()->text();
    QVERIFY2(copied.startsWith(QString::fromStdString(batt->Model().RowLabel(4)) + "\t"),
             qPrintable(copied));
    batt->SetCurrentRow(1);
    rig_.Step("Ctrl-V with the axis", [&] { Key(Qt::Key_V, Qt::ControlModifier); });
    QCOMPARE(batt->Model().Text(1), std::string("0.31"));
    QCOMPARE(batt->Model().Text(2), std::string("0.27"));

    const CalibrationImage before = rig_.p->editors().image();
    Key(Qt::Key_Equal);
    QTest::keyClicks(QApplication::focusWidget(), "2.5");
    QVERIFY2(line->preview()->text().contains("beyond"), qPrintable(line->preview()->text()));
    Key(Qt::Key_Return);
    QVERIFY(line->IsOpen());
    Key(Qt::Key_Escape);
    QVERIFY(!line->IsOpen());
    QCOMPARE(QApplication::focusWidget(), batt);
    QVERIFY(rig_.p->editors().image().Bytes() == before.Bytes());

    // The keyboard taken to another table closes the line and stays where the tuner put it.
    Key(Qt::Key_Plus);
    QVERIFY(line->IsOpen());
    SmallMapGrid* air = Page().grid(CompTable::kAirMap);
    air->setFocus(Qt::MouseFocusReason);
    QVERIFY(!line->IsOpen());
    QCOMPARE(QApplication::focusWidget(), air);
  }
};

VELA_GUI_TEST(CompensationOperationsTest)

}  // namespace compensation_operations_test

#include "compensation_operations_test.moc"
