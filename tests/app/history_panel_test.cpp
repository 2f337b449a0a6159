// The edit history against the simulated ECU, from the keyboard: Ctrl-J opens the history
// panel, whose "Return to here" puts several changes back in one step; a restore point restores one
// map; and after a session that ended without closing, the next start offers its calibration and
// history back.
#include "app/history/history_panel.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include "app/history/history_table_model.h"
#include "app/history/restore_points_tab.h"
#include "app/main_window.h"
#include "app/pages/map_pages.h"
#include "app/sessions/editor_session.h"
#include "running_program.h"
#include "support/gui_test_main.h"
#include "support/wire_log.h"

using namespace vela;

// The file's own namespace: the test programs are compiled several files at a time.
namespace history_panel_test {

class HistoryPanelTest : public QObject {
  Q_OBJECT

  testing::WireLog wire_;
  std::unique_ptr<testing::RunningProgram> p_;

  bool Start(QSize size = {}) {
    testing::RunningOptions options;
    options.log = wire_.Hook();
    options.size = size;
    p_ = std::make_unique<testing::RunningProgram>(options);
    return p_->started && p_->Run();
  }
  // The ECU holds what the editors hold (every queued cell has gone out).
  bool EcuInStep() {
    return QTest::qWaitFor(
        [this] {
          return p_->editors().send_queue().Empty() &&
                 p_->ecu->ImageSnapshot().Bytes() == p_->editors().image().Bytes();
        },
        5000);
  }
  // One key step up on Fuel Map 1's cell (row, column), from the keyboard.
  void StepUp(int row, int column) {
    MapGrid* grid = p_->window().map_pages().page(0)->grid();
    QVERIFY(p_->Activate());
    grid->SetCurrentCell(row, column);
    grid->setFocus();
    QTest::keyClick(grid, Qt::Key_Up);
  }
  HistoryPanel* OpenPanel() {
    if (!p_->Activate()) return nullptr;
    QTest::keyClick(&p_->window(), Qt::Key_J, Qt::ControlModifier);
    auto* panel = p_->Find<HistoryPanel>("EditHistory");
    if (panel == nullptr ||
        !QTest::qWaitFor([panel] { return QApplication::activeWindow() == panel; }, 3000)) {
      return nullptr;
    }
    return panel;
  }
  // The program ends without its journal's end record, as after a crash, and starts again (not
  // yet loaded) on the same folder and ECU.
  bool CrashAndRestart() {
    const QDir folder(QString::fromStdString(p_->program->folders.program));
    const QStringList files = folder.entryList({"Edits*.journal"}, QDir::Files);
    if (files.size() != 1) return false;
    const QString journal = folder.filePath(files.front());
    const QString aside = journal + ".aside";
    if (!QFile::copy(journal, aside)) return false;
    const std::string line = p_->ecu->SlavePath();
    p_->program.reset();  // the window closes and writes its end record
    if (!QFile::remove(journal) || !QFile::rename(aside, journal)) return false;
    p_->program =
        std::make_unique<testing::TestProgram>(p_->dir.path(), QString::fromStdString(line));
    p_->program->link.SetCommsDelayEnabled(false);
    return true;
  }
  bool Offered() {
    const auto& shown = p_->program->messages.shown;
    return std::any_of(shown.begin(), shown.end(),
                       [](const auto& m) { return m.title == "Edit History"; });
  }
 private slots:
  void cleanup() { p_.reset(); }

  // Ctrl-J opens the panel on its own; Enter on an earlier row undoes every change after it in
  // one step, on the ECU too; Enter on a later (greyed) row redoes them.
  void returnToHereInThePanelPutsSeveralChangesBackInOneStep() {
    QVERIFY(Start(QSize(1280, 720)));
    StepUp(5, 3);
    QVERIFY(EcuInStep());
    const CalibrationImage after_first = p_->editors().image();
    const std::size_t first = p_->editors().history().journal().Applied();
    StepUp(6, 4);
    StepUp(7, 5);
    StepUp(7, 5);
    QVERIFY(EcuInStep());
    const CalibrationImage after_all = p_->editors().image();
    const std::size_t all = p_->editors().history().journal().Applied();

    HistoryPanel* panel = OpenPanel();
    QVERIFY(panel != nullptr);
    QVERIFY(!panel->isModal());
    QCOMPARE(panel->model()->rowCount(), static_cast<int>(all) + 1);

    const std::size_t mark = wire_.Mark();
    for (int i = 0; i < 3; ++i) QTest::keyClick(panel->changes(), Qt::Key_Up);
    QTest::keyClick(panel->changes(), Qt::Key_Return);
    QCOMPARE(p_->editors().history().journal().Applied(), first);
    QVERIFY(EcuInStep());
    QVERIFY(p_->editors().image().Bytes() == after_first.Bytes());
    // The grid shows what the image holds again (only its own map was shown afresh).
    QVERIFY(p_->window().map_pages().page(0)->grid()->Model().ToMapValues() ==
            after_first.ReadFuelMap(1));
    // The cell stepped twice goes back once: one frame per cell that changed.
    QTRY_COMPARE(wire_.WritesSince(mark).size(), std::size_t{2});
    QVERIFY(panel->model()->index(static_cast<int>(all), 0).data(Qt::ForegroundRole).isValid());

    QTest::keyClick(panel->changes(), Qt::Key_End, Qt::ControlModifier);
    QTest::keyClick(panel->changes(), Qt::Key_Return);
    QVERIFY(EcuInStep());
    QVERIFY(p_->editors().image().Bytes() == after_all.Bytes());
    p_->window().resize(1024, 600);
    panel->move(p_->window().geometry().topLeft() + QPoint(60, 60));
    QTest::qWait(100);
    testing::KeepShot(panel, "history-panel");
    QVERIFY(p_->window().frameGeometry().contains(panel->frameGeometry()));
  }

  // A restore point taken on request, then one map restored from the point the ECU's calibration
  // left: one journal entry, the map's bytes back on the ECU, the other maps untouched.
  void oneMapIsRestoredFromARestorePoint() {
    QVERIFY(Start(QSize(1024, 600)));
    const CalibrationImage read = p_->editors().image();
    StepUp(5, 3);
    MapGrid* ign = p_->window().map_pages().page(2)->grid();
    p_->window().tabs()->setCurrentIndex(2);
    ign->SetCurrentCell(2, 2);
    ign->setFocus();
    QTest::keyClick(ign, Qt::Key_Up);
    QVERIFY(EcuInStep());
    const CalibrationImage edited = p_->editors().image();

    HistoryPanel* panel = OpenPanel();
    QVERIFY(panel != nullptr);
    QTest::keyClick(panel, Qt::Key_P, Qt::AltModifier);
    QCOMPARE(panel->tabs()->currentWidget(), panel->restore_points());
    QTableWidget* list = panel->restore_points()->list();
    QCOMPARE(list->rowCount(), 1);  // the calibration read from the ECU
    // A mnemonic presses its button the way a click does, a moment later.
    QTest::keyClick(panel, Qt::Key_T, Qt::AltModifier);
    QTRY_COMPARE(list->rowCount(), 2);
    QCOMPARE(list->item(0, 1)->text(), QString("Taken on request"));
    QCOMPARE(panel->findChild<QLabel*>("HistoryPanelNote")->text(),
             QString("Restore point taken."));
    testing::KeepShot(panel, "restore-points");

    list->setFocus();
    QTest::keyClick(list, Qt::Key_Down);  // the point of the calibration read
    const std::size_t entries = p_->editors().history().journal().Entries().size();
    QTest::keyClick(panel, Qt::Key_1, Qt::AltModifier);
    const auto& journal = p_->editors().history().journal();
    QTRY_COMPARE(journal.Entries().size(), entries + 1);
    QVERIFY(EcuInStep());
    QCOMPARE(journal.Entries().back().kind, EditKind::kRestore);
    QCOMPARE(journal.Entries().back().place, EditPlace::kFuelMap1);
    // (Which bytes a map's restore takes: RestoreWritesTest.)
    QVERIFY(p_->editors().image().ReadFuelMap(1) == read.ReadFuelMap(1));
    QVERIFY(p_->editors().image().ReadIgnMap() == edited.ReadIgnMap());
  }

  // Edits, then the session ends without its end record (as a crash leaves it): the next start
  // offers the last state back, and Yes brings back the image and the history.
  void theNextStartOffersTheLastSessionBack() {
    QVERIFY(Start());
    StepUp(5, 3);
    StepUp(6, 3);
    QVERIFY(EcuInStep());
    const CalibrationImage image = p_->editors().image();
    const std::vector<EditEntry> entries = p_->editors().history().journal().Entries();
    QVERIFY(CrashAndRestart());
    p_->program->messages.answers.push_back(MessageAnswer::kYes);
    QVERIFY(p_->Show());  // loaded, before the ECU has said anything
    QVERIFY(Offered());
    QVERIFY(p_->editors().image().Bytes() == image.Bytes());
    QVERIFY(p_->editors().history().journal().Entries() == entries);
    QVERIFY(p_->Activate());
    QTRY_VERIFY_WITH_TIMEOUT(p_->Live() && p_->editors().ecu_image().has_value(), 10000);
    // The ECU kept the edits: its calibration is taken, and the history goes on from there.
    QVERIFY(p_->editors().image().Bytes() == image.Bytes());
    const auto& journal_now = p_->editors().history().journal().Entries();
    QVERIFY(journal_now.size() >= entries.size());
    QVERIFY(std::equal(entries.begin(), entries.end(), journal_now.begin()));
  }

  // A session that only read the ECU's calibration holds nothing of the tuner's: no question.
  void aSessionWithoutEditsIsNotOfferedBack() {
    QVERIFY(Start());
    QVERIFY(CrashAndRestart());
    QVERIFY(p_->Run());
    QVERIFY(!Offered());
  }
};

}  // namespace history_panel_test

using history_panel_test::HistoryPanelTest;
VELA_GUI_TEST(HistoryPanelTest)

#include "history_panel_test.moc"
