// The target AFR table as the tuner meets it: a map file opened with its targets beside it, the
// targets edited in their window with the value keys, the typed line and undo, each change on
// disk at once and none of it sent to the ECU; a refused target file keeps the default and says
// why. Set VELA_SHOTS to a folder to keep pictures of the window at 1280x720 and 1024x600.
#include "app/pages/target_panel.h"

#include <QAccessible>
#include <QApplication>
#include <QFile>
#include <QtTest>

#include "app/pages/map_pages.h"
#include "app/sessions/target_session.h"
#include "app/workbench/operation_line.h"
#include "editors/mapgrid/qt/map_grid.h"
#include "running_program.h"
#include "support/gui_test_main.h"
#include "tune/target/target_table.h"

using namespace vela;

namespace target_panel_test {

using testing::Key;

class TargetPanelTest : public QObject {
  Q_OBJECT

  std::unique_ptr<testing::RunningProgram> p_;

  TargetSession& Targets() { return p_->window().targets(); }
  QString MapPath(const QString& name) const { return p_->dir.path() + "/" + name + ".sm1"; }
  QString TargetPath(const QString& name = "street") const {
    return p_->dir.path() + "/" + name + ".afr.csv";
  }

  static std::string Read(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : std::string();
  }
  // The targets on disk, read as the program reads them.
  std::optional<TargetTable> OnDisk() {
    return ReadTargetCsv(Read(TargetPath()), Targets().table().Axes()).table;
  }

  // The editors' calibration saved as the map file `name` with `targets` beside it, then opened.
  bool OpenMapWith(const std::string& targets, const QString& name = "street") {
    if (!testing::WriteImageFile(MapPath(name), p_->editors().image()) ||
        !testing::WriteBytes(TargetPath(name), targets)) {
      return false;
    }
    p_->program->dialogs.paths.push_back(MapPath(name).toStdString());
    p_->program->messages.answers.push_back(MessageAnswer::kYes);
    p_->editors().LoadAndDownloadMap();
    return QTest::qWaitFor([this] { return !p_->editors().download().running(); }, 30000);
  }

  TargetPanel* OpenPanel() {
    if (!p_->Activate()) return nullptr;
    p_->window().tabs()->setCurrentIndex(0);
    QTest::keyClick(&p_->window(), Qt::Key_T, Qt::ControlModifier);
    TargetPanel* panel = &p_->window().target_panel();
    if (!QTest::qWaitFor([panel] { return QApplication::activeWindow() == panel; }, 3000)) {
      return nullptr;
    }
    return panel;
  }

 private slots:
  void init() {
    p_ = std::make_unique<testing::RunningProgram>();
    QVERIFY2(p_->started, p_->error.c_str());
    QVERIFY(p_->Run());
  }
  void cleanup() { p_.reset(); }

  void targetsBesideTheMapFileAreEditedAndSavedAtOnce() {
    // Read from the ECU, with no map file: the program folder's default file.
    QCOMPARE(QString::fromStdString(Targets().path()),
             QString::fromStdString(DefaultTargetPath(p_->program->folders.program)));
    TargetTable beside(FuelAxesOf(p_->editors().image()));
    beside.Set(2, 3, 13.05);
    beside.Set(1, 4, 12.2);
    QVERIFY(OpenMapWith(TargetCsv(beside)));
    QCOMPARE(QString::fromStdString(Targets().path()), TargetPath());
    QVERIFY(Targets().table() == beside);
    const std::size_t entries = p_->editors().history().journal().Entries().size();
    const auto image = p_->editors().image().Bytes();

    TargetPanel* panel = OpenPanel();
    QVERIFY(panel != nullptr);
    MapGrid* grid = panel->grid();
    QCOMPARE(QApplication::focusWidget(), grid);
    QVERIFY(panel->where()->text().contains("street.afr.csv"));
    QCOMPARE(grid->CellText(2, 3), QString("13.05"));

    // A value key: 0.1 up, written at once.
    grid->SetCurrentCell(2, 3);
    Key(Qt::Key_Up);
    QVERIFY(OnDisk().has_value());
    QCOMPARE(OnDisk()->At(2, 3), 13.15);

    // The typed line over a selection of three cells of the top row.
    grid->SetCurrentCell(1, 1);
    grid->setFocus();
    Key(Qt::Key_Right, testing::kExtend);
    Key(Qt::Key_Right, testing::kExtend);
    Key(Qt::Key_Equal);
    QVERIFY(panel->operation_line()->IsOpen());
    QTest::keyClicks(QApplication::focusWidget(), "13.5");
    QVERIFY2(panel->operation_line()->preview()->text().contains("3 cells change"),
             qPrintable(panel->operation_line()->preview()->text()));
    testing::KeepShots(panel, "target-panel");
    Key(Qt::Key_Return);
    std::optional<TargetTable> disk = OnDisk();
    QVERIFY(disk.has_value());
    for (int column = 1; column <= 3; ++column) QCOMPARE(disk->At(1, column), 13.5);
    QCOMPARE(disk->At(1, 4), 12.2);

    // A screen reader hears a cell's value and what its colour means.
    QAccessibleInterface* table = QAccessible::queryAccessibleInterface(grid);
    QVERIFY(table != nullptr && table->tableInterface() != nullptr);
    QAccessibleInterface* cell = table->tableInterface()->cellAt(1, 1);
    QVERIFY(cell != nullptr);
    QCOMPARE(cell->text(QAccessible::Description), QString("1.20 richer than stoichiometric"));

    // Undo and redo in the window are the targets' own; the file follows each.
    Key(Qt::Key_Z, Qt::ControlModifier);
    QCOMPARE(OnDisk()->At(1, 1), beside.At(1, 1));
    QCOMPARE(OnDisk()->At(2, 3), 13.15);
    Key(Qt::Key_Y, Qt::ControlModifier);
    QCOMPARE(OnDisk()->At(1, 1), 13.5);

    // Default: one step back to the default targets, and one undo away.
    QTest::mouseClick(panel->default_button(), Qt::LeftButton);
    QVERIFY(OnDisk() == TargetTable(Targets().table().Axes()));
    Key(Qt::Key_Z, Qt::ControlModifier);
    QCOMPARE(OnDisk()->At(1, 1), 13.5);

    // Nothing of it reached the editors' calibration or their history.
    QCOMPARE(p_->editors().history().journal().Entries().size(), entries);
    QVERIFY(p_->editors().image().Bytes() == image);

    // Ctrl-T again closes the window.
    Key(Qt::Key_T, Qt::ControlModifier);
    QVERIFY(!panel->isVisible());

    // A refused target file keeps the default and says why.
    std::string csv = TargetCsv(TargetTable(beside.Axes()));
    csv.replace(csv.rfind("14.7"), 4, "abc");
    const std::size_t shown = p_->program->messages.shown.size();
    QVERIFY(OpenMapWith(csv, "refused"));
    QVERIFY(Targets().table() == TargetTable(beside.Axes()));
    QCOMPARE(Read(TargetPath("refused")), csv);  // left as it was
    const auto& messages = p_->program->messages.shown;
    const auto refusal = std::find_if(
        messages.begin() + static_cast<std::ptrdiff_t>(shown), messages.end(),
        [](const testing::ShownMessage& message) { return message.title == "Target AFR Table"; });
    QVERIFY(refusal != messages.end());
    QVERIFY(refusal->lines.size() >= 3);
    QVERIFY(refusal->lines.front().find("refused.afr.csv") != std::string::npos);
    QVERIFY2(refusal->lines[1].find("abc") != std::string::npos, refusal->lines[1].c_str());
    QVERIFY(refusal->lines.back().find("default targets are used") != std::string::npos);
  }
};

}  // namespace target_panel_test

using target_panel_test::TargetPanelTest;
VELA_GUI_TEST(TargetPanelTest)
#include "target_panel_test.moc"
