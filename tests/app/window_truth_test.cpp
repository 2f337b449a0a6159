// The window against the simulated ECU, as a tuner reads it: the ECU's fault codes listed and a
// new fault in the status strip, silence and the no-error branch of the error-code button, the
// link state in one place, read-outs that show no stale value once the ECU is gone, and the
// keyboard in the map grid.
#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QtTest>

#include "app/pages/data_page.h"
#include "app/pages/fault_panel.h"
#include "app/pages/map_pages.h"
#include "app/sessions/fault_monitor.h"
#include "editors/mapgrid/qt/map_graph.h"
#include "editors/mapgrid/qt/map_grid.h"
#include "editors/mapgrid/qt/map_readout.h"
#include "link/connection_supervisor.h"
#include "running_program.h"
#include "sim/pty_runner.h"
#include "support/gui_test_main.h"

using namespace vela;

// The file's own namespace: the test programs are compiled several files at a time.
namespace window_truth_test {

struct ShownProgram : testing::ShownProgram {
  using testing::ShownProgram::ShownProgram;
  bool Connected() { return program->link.state().Caption == kCaptionConnected; }
  QStringList GridRows() {
    QStringList rows;
    auto* grid = Find<QTableWidget>("OBDGrid");
    for (int row = 0; row < grid->rowCount(); ++row) rows << grid->item(row, 0)->text();
    return rows;
  }
  void ReadCodes() { QTest::mouseClick(Find<QPushButton>("Command9"), Qt::LeftButton); }
};

sim::SimCommandLine WithFaults(std::vector<sim::InjectedFault> faults) {
  sim::SimCommandLine options;
  options.sim.fault_codes = std::move(faults);
  return options;
}

class WindowTruthTest : public QObject {
  Q_OBJECT

 private slots:
  void injectedFaultsAreListedAndANewOneTurnsTheStripRed() {
    ShownProgram p(WithFaults({{66, 0}, {139, 4'000'000}}));
    QVERIFY(p.started && p.loaded);
    // The fault the ECU already holds is new to the tuner.
    QTRY_VERIFY_WITH_TIMEOUT(p.Text("FaultIndicator").startsWith("ECU fault 66"), 8000);
    QVERIFY(p.Find<QLabel>("FaultIndicator")->isVisible());
    QTRY_VERIFY_WITH_TIMEOUT(p.Text("FaultIndicator").startsWith("ECU fault 139"), 8000);

    p.ReadCodes();
    QTRY_COMPARE_WITH_TIMEOUT(
        p.GridRows(),
        QStringList({" 139  -  Injector Duty Cycle too High", "   66  -  Missing RPM Pulse",
                     "     0  -  No Error", "     0  -  No Error"}),
        3000);

    // A click on the strip opens the list of faults seen and calms the strip.
    QTest::mouseClick(p.Find<QLabel>("FaultIndicator"), Qt::LeftButton);
    QCOMPARE(p.window().tabs()->currentIndex(), 9);
    QTableWidget* list = p.Find<QTableWidget>("FaultsSeen");
    QCOMPARE(list->rowCount(), 2);
    QCOMPARE(list->item(1, 2)->text(), QString("Injector Duty Cycle too High"));
    QTRY_COMPARE(p.Text("FaultIndicator"), QString("2 faults seen"));
  }

  // Unanswered, the request the program sends by itself on a new fault leaves rows 1 to 3 saying
  // so and row 4 empty, as the button's does: no earlier "No Error" stands under the red strip.
  void anEcuThatDoesNotAnswerLeavesCommsInterruptedInRowsOneToThree() {
    sim::SimCommandLine options = WithFaults({{8, 3'000'000}});
    options.sim.answer_fault_requests = false;
    ShownProgram p(options);
    QVERIFY(p.started && p.loaded);
    QTRY_VERIFY_WITH_TIMEOUT(p.Connected() && p.program->link.live().refresh_count > 0, 8000);
    QCOMPARE(p.program->link.live().error_count, 0);
    p.ReadCodes();
    QCOMPARE(p.GridRows(), QStringList(4, "     0  -  No Error"));
    const QStringList interrupted = {" ** Comms interrupted **", " ** Comms interrupted **",
                                     " ** Comms interrupted **", ""};
    QTRY_COMPARE_WITH_TIMEOUT(p.GridRows(), interrupted, 8000);
    QVERIFY(p.Text("FaultIndicator").startsWith("ECU fault 8"));

    p.ReadCodes();
    QCOMPARE(p.GridRows(), QStringList({"", "", "", ""}));
    QTRY_COMPARE_WITH_TIMEOUT(p.GridRows(), interrupted, 3000);
  }

  // Five codes held: the grid lists the four newest and says that there are more.
  void fiveCodesHeldAreSaidToBeMoreThanTheFourListed() {
    ShownProgram p(WithFaults({{66, 0}, {8, 0}, {13, 0}, {139, 0}, {20, 0}}));
    QVERIFY(p.started && p.loaded);
    auto* note = p.Find<QLabel>("MoreCodesHeld");
    QTRY_VERIFY_WITH_TIMEOUT(!note->isHidden(), 8000);
    QCOMPARE(note->text(), QString("The ECU holds 5 codes: only the four newest are listed."));
    QCOMPARE(p.GridRows().first(), QString::fromStdString(ErrorRowText(20)));
    p.window().tabs()->setCurrentIndex(9);
    testing::KeepShot(&p.window(), "five-codes");
  }

  void readOutsShowNoStaleValueOnceTheEcuIsGone() {
    sim::SimCommandLine options;
    options.sim.faults.silence_after_us = 5'000'000;
    options.sim.faults.silence_for_us = 60'000'000;
    ShownProgram p(options);
    QVERIFY(p.started && p.loaded);
    auto* readout = p.Find<MapReadout>("FuelMap1A");
    QTRY_VERIFY_WITH_TIMEOUT(readout->Value(Readout::kRpm).toInt() > 400, 8000);
    QTRY_COMPARE_WITH_TIMEOUT(p.Text("LinkState"), QString("Not connected"), 8000);
    for (int i = 0; i < static_cast<int>(kReadoutLabels.size()); ++i) {
      QCOMPARE(readout->Value(static_cast<Readout>(i)), QString("--"));
    }
    p.window().tabs()->setCurrentIndex(9);
    auto* data_page = p.window().findChild<DataPage*>();
    QCOMPARE(data_page->Value("DataRPM"), QString("--"));
    QCOMPARE(p.Text("DataStatus"), QString("Not connected: no live values"));
  }

  // One session with an ECU holding no codes: the keyboard in the map grid, the error-code
  // button's no-error branch, the link state beside the caption, and the graphs folded away.
  void aPlainSessionReadsAsTheTunerExpects() {
    ShownProgram p;
    QVERIFY(p.started && p.loaded);
    QVERIFY(p.Activate());
    QTRY_VERIFY_WITH_TIMEOUT(!p.program->link.upload().UploadExpected(), 8000);
    MapPages& maps = p.window().map_pages();
    QTRY_COMPARE(QApplication::focusWidget(), static_cast<QWidget*>(maps.page(0)->grid()));
    QTest::keyClick(&p.window(), Qt::Key_I);
    QCOMPARE(p.window().tabs()->currentIndex(), 2);
    MapGrid* ignition = maps.page(2)->grid();
    QTRY_COMPARE(QApplication::focusWidget(), static_cast<QWidget*>(ignition));
    const int column = ignition->CurrentColumn();
    const double before = ignition->Model().Value(ignition->CurrentRow(), column);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Up);
    QCOMPARE(ignition->Model().Value(ignition->CurrentRow(), column), before + 1.0);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Right);
    QCOMPARE(ignition->CurrentColumn(), column + 1);
    QCOMPARE(p.window().tabs()->currentIndex(), 2);

    QTRY_VERIFY_WITH_TIMEOUT(p.Connected() && p.program->link.live().refresh_count > 0, 8000);
    p.ReadCodes();
    QVERIFY(!p.window().faults().Waiting());
    QCOMPARE(p.GridRows(), QStringList(4, "     0  -  No Error"));
    QCOMPARE(p.window().fault_panel().Explanation(), QString());
    p.Find<QTableWidget>("OBDGrid")->setCurrentCell(3, 0);
    QCOMPARE(p.window().fault_panel().Explanation(), QString("No Errors Present."));

    // A calibration read may still be under way after the codes: the state says so until done.
    QTRY_COMPARE_WITH_TIMEOUT(p.Text("LinkState"), QString("Connected"), 8000);
    QCOMPARE(p.Text("LiveTuneState"), QString("Live Tune OFF"));
    p.Find<QPushButton>("OfflineButton")->click();
    QTRY_COMPARE(p.Text("LinkState"), QString("Off-line"));
    QCOMPARE(p.window().windowTitle(), QString("MORVANE Engine Management System  -  Connected"));
    p.Find<QPushButton>("OfflineButton")->click();
    QTRY_COMPARE(p.Text("LinkState"), QString("Connected"));

    p.window().tabs()->setCurrentIndex(0);
    auto* numerical = p.Find<QCheckBox>("Numerical");
    MapGraph* graph = maps.page(0)->graph();
    numerical->setChecked(false);
    QVERIFY(graph->isVisible());
    numerical->setChecked(true);
    QVERIFY(!graph->isVisible());
  }
};

VELA_GUI_TEST(WindowTruthTest)

}  // namespace window_truth_test

#include "window_truth_test.moc"
