// The fuel correction proposal against the simulated ECU, from the keyboard: a ten-minute drive
// of an engine that needs other fuel than its calibration gives is the datalog page's log;
// Ctrl-P shows what it proposes as a comparison, taking a selection changes only its proposed
// cells (one journal entry, the frames on the wire exactly those cells), undo puts them back,
// and the cells with too little evidence are never taken. Set VELA_SHOTS to a folder to keep
// pictures of the proposal at 1280x720 and 1024x600.
#include <QApplication>
#include <QDialog>
#include <QDoubleSpinBox>
#include <QtTest>
#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <mutex>

#include "app/pages/datalog_page.h"
#include "app/pages/map_pages.h"
#include "app/sessions/proposal_session.h"
#include "app/sessions/target_session.h"
#include "app/workbench/proposal_bar.h"
#include "app/workbench/proposal_pages.h"
#include "editors/workbench/edit_journal.h"
#include "sim/engine/drive_log.h"
#include "support/gui_test_main.h"
#include "workbench_rig.h"

using namespace vela;

// The file's own namespace: the test programs are compiled several files at a time.
namespace proposal_end_to_end_test {

using vela::testing::Key;

// The smallest rectangle holding a proposed cell and a cell with too little evidence.
MapCellRect RectOfBoth(const FuelProposal& proposal) {
  MapCellRect best{1, 1, kMapRows, 99};
  int best_area = 1 << 30;
  for (const ProposedCell& a : proposal.cells) {
    if (a.state != CellProposalState::kProposed) continue;
    for (const ProposedCell& b : proposal.cells) {
      if (b.state != CellProposalState::kTooLittle) continue;
      const MapCellRect rect{std::min(a.row, b.row), std::min(a.column, b.column),
                             std::max(a.row, b.row), std::max(a.column, b.column)};
      const int area = (rect.bottom - rect.top + 1) * (rect.right - rect.left + 1);
      if (area < best_area) best = rect, best_area = area;
    }
  }
  return best;
}

class ProposalEndToEndTest : public QObject {
  Q_OBJECT

  testing::WorkbenchRig rig_;
  std::unique_ptr<testing::RunningProgram>& p_ = rig_.p;

  MapGrid* Grid() { return p_->window().map_pages().page(0)->grid(); }
  const FuelProposal* Proposal() {
    const TuneRun* run = p_->window().proposal().Run();
    return run ? &run->proposal : nullptr;
  }

  // A drive of `seconds` of an engine that needs 12 % more fuel at high load above 4,000 RPM
  // and 8 % less at light cruise, as the datalog page's log.
  void LoadDrive(double seconds) {
    sim::SimOptions options;
    options.fuel_errors = {{12, 4000, 9000, 60, 100}, {-8, 1500, 3500, 20, 50}};
    DatalogLog log;
    sim::RunDrive(options, p_->editors().image(), seconds, log);
    p_->window().datalog_page().log().ReplaceWith(std::move(log));
  }

  // The largest change the proposal shown makes to a cell.
  double LargestChange() {
    double largest = 0.0;
    for (const ProposedCell& cell : Proposal()->cells) {
      if (cell.state == CellProposalState::kProposed)
        largest = std::max(largest, std::abs(cell.applied - 1.0));
    }
    return largest;
  }

  // Holds every later working-out of the proposal until the test opens the gate once for it,
  // or the session says the result is no longer wanted.
  struct Gate {
    std::mutex mutex;
    std::condition_variable changed;
    int opened = 0;
    std::atomic<int> started{0};
    std::atomic<int> dropped{0};
    void Open() {
      {
        std::lock_guard lock(mutex);
        ++opened;
      }
      changed.notify_all();
    }
  };
  std::shared_ptr<Gate> HoldComputations(ProposalSession& session) {
    auto gate = std::make_shared<Gate>();
    session.SetCompute([gate](const ProposalInputs& inputs, const std::atomic<bool>& closing) {
      const int mine = ++gate->started;
      std::unique_lock lock(gate->mutex);
      while (gate->opened < mine && !closing) {
        gate->changed.wait_for(lock, std::chrono::milliseconds(5));
      }
      if (closing) ++gate->dropped;
      return ComputeProposal(inputs, closing);
    });
    return gate;
  }

 private slots:
  void init() {
    QVERIFY(rig_.Start());
    QVERIFY(QTest::qWaitFor([&] { return Grid()->hasFocus(); }));
  }
  void cleanup() { p_.reset(); }

  void ctrlPShowsTheProposalAndTakesTheSelectionAsOneEntry() {
    LoadDrive(600);
    const CalibrationImage before = p_->editors().image();
    Key(Qt::Key_P, Qt::ControlModifier);
    const FuelProposal* proposal = Proposal();
    QVERIFY(proposal);
    // The bar's texts (their wording: ProposalView's own tests).
    QCOMPARE(p_->Text("CompareView"), "Current: the editors' values, compared with fuel proposal");
    QVERIFY(p_->Text("ProposalSummary").startsWith("Fuel proposal: "));
    // The drive was logged at 20 frames a second: the bar says the delay is coarse at that rate.
    QVERIFY(p_->Find<QLabel>("ProposalDelayNote")->isVisible());

    // The cursor's cell tells its evidence, on the screen and to a screen reader.
    const MapCellRect rect = RectOfBoth(*proposal);
    const ProposedCell* too_little = nullptr;
    for (const ProposedCell& cell : proposal->cells) {
      if (cell.state == CellProposalState::kTooLittle && rect.Contains({cell.row, cell.column})) {
        too_little = &cell;
      }
    }
    QVERIFY(too_little);
    Grid()->SetCurrentCell(too_little->row, too_little->column);
    auto* evidence = p_->window().findChild<QLabel*>("ProposalEvidence");
    QVERIFY(evidence->text().endsWith("too little evidence"));
    QCOMPARE(evidence->accessibleName(), evidence->text());

    testing::KeepShots(&p_->window(), "proposal");

    // The selection: a proposed cell and one with too little evidence.
    Grid()->SetCurrentCell(rect.top, rect.left);
    for (int i = rect.top; i < rect.bottom; ++i) Key(Qt::Key_Down, testing::kExtend);
    for (int i = rect.left; i < rect.right; ++i) Key(Qt::Key_Right, testing::kExtend);
    const FuelProposal shown = *proposal;
    const std::size_t entries = p_->editors().history().journal().Entries().size();
    rig_.Step("Alt-R", [&] {
      Key(Qt::Key_R, Qt::AltModifier);  // a mnemonic clicks its button a moment later
      QVERIFY(QTest::qWaitFor(
          [&] { return p_->editors().history().journal().Entries().size() == entries + 1; }));
    });
    QCOMPARE(p_->editors().history().journal().Entries().back().source,
             std::string("fuel proposal"));
    for (const ProposedCell& cell : shown.cells) {
      const bool taken =
          rect.Contains({cell.row, cell.column}) && cell.state == CellProposalState::kProposed;
      const double now = p_->editors().image().FuelMs(1, BlockRowOfGridRow(cell.row), cell.column);
      QVERIFY2(now == (taken ? cell.after_ms : cell.before_ms),
               qPrintable(QString("cell %1,%2").arg(cell.row).arg(cell.column)));
    }
    // Undo puts the map back, on the ECU too.
    rig_.Step("Ctrl-Z", [&] { Key(Qt::Key_Z, Qt::ControlModifier); });
    QVERIFY(p_->editors().image().Bytes() == before.Bytes());
  }

  // The settings dialog changes the per-pass limit: the proposal follows and the file keeps it;
  // then the tuner's targets change, and the proposal aims at them.
  void theSettingsLimitTheProposalAndAreKept() {
    LoadDrive(600);
    Key(Qt::Key_P, Qt::ControlModifier);
    QVERIFY(Proposal());
    p_->window().proposal_pages().bar(0)->findChild<QPushButton*>("ProposalSettings")->click();
    QVERIFY(QTest::qWaitFor([] { return qobject_cast<QDialog*>(qApp->activeModalWidget()); }));
    QWidget* dialog = qApp->activeModalWidget();
    testing::KeepShot(dialog, "proposal-settings-dialog");
    dialog->findChild<QDoubleSpinBox*>("ProposalSetting_max_change_percent")->setValue(5.0);
    qobject_cast<QDialog*>(dialog)->accept();
    QVERIFY(QTest::qWaitFor([] { return qApp->activeModalWidget() == nullptr; }));
    QCOMPARE(p_->window().proposal().Settings().proposal.max_change, 0.05);
    QVERIFY(QTest::qWaitFor([&] { return !p_->window().proposal().Computing(); }));
    QVERIFY(LargestChange() <= 0.05 + 1e-12);
    const std::optional<std::string> file =
        p_->program->files.ReadFile(p_->program->folders.program + std::string(kTuneSetupFileName));
    QVERIFY(file && file->find("max_change_percent = 5\n") != std::string::npos);

    // The tuner's target table is what the proposal aims at, and a change of it is followed.
    TargetTable richer = p_->window().targets().table();
    for (int row = 1; row <= richer.Axes().Rows(); ++row) {
      for (int column = 1; column <= richer.Axes().Columns(); ++column)
        richer.Set(row, column, 12.0);
    }
    QVERIFY(p_->window().targets().Change(richer, "all 12.0"));
    QVERIFY(QTest::qWaitFor([&] { return !p_->window().proposal().Computing(); }));
    QVERIFY(Proposal());
    for (const ProposedCell& cell : Proposal()->cells) QCOMPARE(cell.target_afr, 12.0);
  }

  // Working the proposal out again runs beside the tuner: the call returns before the result,
  // a result whose settings or log changed meanwhile is never shown, and the newest wins; the
  // program closes while one is worked out.
  void aRecomputeRunsApartAndAStaleResultIsDropped() {
    LoadDrive(600);
    Key(Qt::Key_P, Qt::ControlModifier);
    QVERIFY(Proposal());
    QVERIFY(LargestChange() > 0.05);  // the default limit lets more than 5 % through
    ProposalSession& session = p_->window().proposal();
    auto gate = HoldComputations(session);
    TuneSettings settings = session.Settings();
    settings.proposal.max_change = 0.02;
    session.SetSettings(settings);
    QVERIFY(session.Computing());
    QVERIFY(LargestChange() > 0.05);
    settings.proposal.max_change = 0.05;
    session.SetSettings(settings);  // the one under way (2 %) is stale now
    gate->Open();
    QVERIFY(QTest::qWaitFor([&] { return gate->started == 2; }));
    QVERIFY(LargestChange() > 0.05);  // the stale result was not shown
    gate->Open();
    QVERIFY(QTest::qWaitFor([&] { return !session.Computing(); }));
    QVERIFY(LargestChange() > 0.02 && LargestChange() <= 0.05 + 1e-12);

    // A log replaced while its proposal is worked out: that result is dropped, the new log's shown.
    settings.proposal.max_change = 0.02;
    session.SetSettings(settings);
    LoadDrive(60);
    gate->Open();
    QVERIFY(QTest::qWaitFor([&] { return gate->started == 4; }));
    QVERIFY(LargestChange() > 0.02);  // neither the stale result nor the new one yet
    gate->Open();
    QVERIFY(QTest::qWaitFor([&] { return !session.Computing(); }));
    QVERIFY(LargestChange() <= 0.02 + 1e-12);
    double seconds = 0.0;
    for (const ProposedCell& cell : Proposal()->cells) seconds += cell.evidence.time_s;
    QVERIFY2(seconds > 40.0 && seconds < 61.0, qPrintable(QString::number(seconds)));

    // Closing the program while a proposal is worked out waits for nothing it cannot end.
    const int dropped = gate->dropped;
    session.SetSettings(session.Settings());
    QVERIFY(QTest::qWaitFor([&] { return gate->started == 5; }));
    p_.reset();
    QCOMPARE(gate->dropped.load(), dropped + 1);
  }

  // While a log is being recorded the proposal follows it, keeping the tuner's cursor.
  void theProposalFollowsALogBeingRecorded() {
    p_->window().datalog_page().StartStopLogging();
    QVERIFY(QTest::qWaitFor([&] { return p_->window().datalog_page().log().RecordCount() > 5; }));
    Grid()->SetCurrentCell(3, 4);
    Key(Qt::Key_P, Qt::ControlModifier);
    QVERIFY(Proposal());
    auto time_seen = [&] {
      double seconds = 0.0;
      for (const ProposedCell& cell : Proposal()->cells) seconds += cell.evidence.time_s;
      return seconds;
    };
    const double first = time_seen();
    QVERIFY(QTest::qWaitFor([&] { return time_seen() > first + 1.0; },
                            3 * ProposalSession::kLiveIntervalMs + 1000));
    QCOMPARE(Grid()->CurrentRow(), 3);
    QCOMPARE(Grid()->CurrentColumn(), 4);
    p_->window().datalog_page().StartStopLogging();
  }
};

VELA_GUI_TEST(ProposalEndToEndTest)

}  // namespace proposal_end_to_end_test

#include "proposal_end_to_end_test.moc"
