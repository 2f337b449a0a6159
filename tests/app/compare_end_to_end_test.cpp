// Comparing the editors' image with the ECU's calibration, a map file and a restore point, by
// keyboard against the simulated ECU: the views, the counts, taking the other side's values and
// sending the differing cells.
#include <QApplication>
#include <QListWidget>
#include <QtTest>

#include "app/main_window.h"
#include "app/pages/map_pages.h"
#include "app/sessions/compare_session.h"
#include "app/workbench/compare_bar.h"
#include "app/workbench/compare_chooser.h"
#include "app/workbench/compare_pages.h"
#include "calibration/map_axes.h"
#include "editors/mapgrid/qt/map_grid_table.h"
#include "running_program.h"
#include "support/gui_test_main.h"

using namespace vela;

// The file's own namespace: the test programs are compiled several files at a time.
namespace compare_end_to_end_test {

using vela::testing::RunningProgram;

QString Shown(MapGrid* grid, int row, int column) {
  return grid->model()->index(row, column).data().toString();
}

int FuelPosition(const CalibrationImage& image, int row, int column) {
  return image.FuelCellPosition(1, BlockRowOfGridRow(row), column);
}

bool SameCell(const CalibrationImage& a, const CalibrationImage& b, int position) {
  return a.Read16(position) == b.Read16(position);
}

// A map file holding `image`, in the program's folder, which the next file dialog gives.
bool OfferMapFile(RunningProgram& p, const std::string& name, const CalibrationImage& image) {
  const std::string path = (p.dir.path() + "/").toStdString() + name;
  const std::vector<std::uint8_t> bytes = image.ToVector();
  p.program->dialogs.path = path;
  return p.program->files.WriteFile(path, std::string(bytes.begin(), bytes.end())) == 0;
}

using testing::Key;

// Ctrl-Shift-Q: the chooser, its first list with the keyboard.
bool OpenChooser() {
  Key(Qt::Key_Q, Qt::ControlModifier | Qt::ShiftModifier);
  return QTest::qWaitFor([] {
    return qobject_cast<CompareChooser*>(qApp->activeModalWidget()) &&
           QApplication::focusWidget() &&
           QApplication::focusWidget()->objectName() == "CompareChoices";
  });
}

// The focused list's line `row` taken with Home, Down and Enter.
void TakeLine(int row) {
  Key(Qt::Key_Home);
  for (int i = 0; i < row; ++i) Key(Qt::Key_Down);
  Key(Qt::Key_Return);
}

// The chooser closed and the window active again.
bool Chosen(RunningProgram& p) {
  return QTest::qWaitFor([] { return qApp->activeModalWidget() == nullptr; }) && p.Activate();
}

// The chooser's line `row` compared with the editors.
bool Choose(RunningProgram& p, int row) {
  if (!OpenChooser()) return false;
  TakeLine(row);
  return Chosen(p);
}

// Left to the first list, its line `base` taken, and the second list's line `other`.
bool ChoosePair(RunningProgram& p, int base, int other) {
  if (!OpenChooser()) return false;
  testing::KeepShot(qApp->activeModalWidget(), "compare-chooser");
  Key(Qt::Key_Left);
  TakeLine(base);
  TakeLine(other);
  return Chosen(p);
}

class CompareEndToEndTest : public QObject {
  Q_OBJECT

 private slots:
  void comparesWithTheEcuTakesItsValuesAndSendsDifferences() {
    RunningProgram p;
    QVERIFY2(p.started && p.Run(), p.error.c_str());
    MapGrid* grid = p.window().map_pages().page(0)->grid();
    QVERIFY(QTest::qWaitFor([&] { return grid->hasFocus(); }));
    const CalibrationImage read = *p.editors().ecu_image();
    const MapCell a{grid->CurrentRow(), grid->CurrentColumn()};
    Key(Qt::Key_Up);
    Key(Qt::Key_Up);  // +0.200 ms
    Key(Qt::Key_Right);
    const MapCell b{grid->CurrentRow(), grid->CurrentColumn()};
    Key(Qt::Key_Down);  // -0.100 ms
    const QString ours_a = Shown(grid, a.row, a.column);

    QVERIFY(Choose(p, 0));  // ECU as last read
    QCOMPARE(p.Text("CompareView"), "Current: the editors' values, compared with ECU as last read");
    QCOMPARE(p.Text("CompareCount"), "2 cells differ from ECU as last read");
    QVERIFY(grid->model()->index(a.row, a.column).data(MapGridTable::kCellMarkRole).isValid());
    QVERIFY(!grid->model()->index(6, 6).data(MapGridTable::kCellMarkRole).isValid());

    Key(Qt::Key_Q, Qt::ControlModifier);
    QCOMPARE(p.Text("CompareView"), "Other side: ECU as last read");
    const QString theirs_a = Shown(grid, a.row, a.column);
    QCOMPARE(QLocale::c().toDouble(QString(theirs_a).replace(',', '.')) + 0.2,
             QLocale::c().toDouble(QString(ours_a).replace(',', '.')));
    Key(Qt::Key_Q, Qt::ControlModifier);
    QCOMPARE(p.Text("CompareView"), "Difference: editors minus ECU as last read");
    QCOMPARE(Shown(grid, a.row, a.column).replace(',', '.'), "+0.200");
    QCOMPARE(grid->CellText(a.row, a.column), ours_a);  // the editors' values stay in the grid
    Screenshots(p);

    // (A value key in a view it would not change: CompareTwoSides, below.)
    const std::size_t entries = p.editors().history().journal().Entries().size();

    // The ECU's values for the selection (the cursor's cell b): one entry, and the ECU gets them.
    Key(Qt::Key_R, Qt::AltModifier);
    // A mnemonic clicks its button a moment later, as a click shows.
    QVERIFY(QTest::qWaitFor(
        [&] { return p.editors().history().journal().Entries().size() == entries + 1; }));
    QCOMPARE(p.editors().history().journal().Entries().back().kind, EditKind::kTakeOther);
    const int at_b = FuelPosition(read, b.row, b.column);
    QVERIFY(SameCell(p.editors().image(), read, at_b));
    QVERIFY(QTest::qWaitFor([&] { return SameCell(p.ecu->ImageSnapshot(), read, at_b); }));
    QCOMPARE(p.Text("CompareCount"), "1 cell differs from ECU as last read");

    // The ECU's cell a is changed behind the program's back; sending the differences puts the
    // editors' value there again.
    const int at_a = FuelPosition(read, a.row, a.column);
    p.ecu->WriteImageByte(at_a, 0x11);
    QVERIFY(QTest::qWaitFor([&] { return p.ecu->ImageSnapshot().Byte(at_a) == 0x11; }));
    Key(Qt::Key_Y, Qt::AltModifier);
    QVERIFY(QTest::qWaitFor(
        [&] { return SameCell(p.ecu->ImageSnapshot(), p.editors().image(), at_a); }));
    QCOMPARE(p.editors().history().journal().Entries().size(), entries + 1);

    // The whole map: the editors' map is the ECU's as read, and so is the ECU's.
    Key(Qt::Key_W, Qt::AltModifier);
    QVERIFY(QTest::qWaitFor(
        [&] { return p.Text("CompareCount") == "No cell differs from ECU as last read"; }));
    QVERIFY(
        QTest::qWaitFor([&] { return SameCell(p.ecu->ImageSnapshot(), read, at_a) && p.Live(); }));
    QCOMPARE(p.ecu->ImageSnapshot().Bytes(), p.editors().image().Bytes());

    // Back to the current values, where an edit and a new read of the ECU's calibration (which
    // the editors take) are followed on both sides; stopping hides the bar.
    Key(Qt::Key_Q, Qt::ControlModifier);
    QVERIFY(p.Text("CompareView").startsWith("Current"));
    grid->setFocus();
    Key(Qt::Key_Up);
    QCOMPARE(p.Text("CompareCount"), "1 cell differs from ECU as last read");
    const int position = FuelPosition(read, 5, 5);
    p.ecu->WriteImageByte(position, static_cast<std::uint8_t>(read.Byte(position) ^ 0x08));
    QVERIFY(QTest::qWaitFor(
        [&] { return p.ecu->ImageSnapshot().Byte(position) != read.Byte(position); }));
    QVERIFY(p.Press(Qt::Key_U));
    QVERIFY(QTest::qWaitFor(
        [&] { return p.editors().ecu_image()->Byte(position) != read.Byte(position); }, 10000));
    QCOMPARE(p.Text("CompareCount"), "No cell differs from ECU as last read");
    QCOMPARE(p.Text("CompareCountSetupMainSetup"), "No set-up byte differs from ECU as last read");

    QVERIFY(Choose(p, 2));
    QVERIFY(!p.Find<CompareBar>("CompareBar")->isVisible());
    QVERIFY(!grid->model()->index(a.row, a.column).data(MapGridTable::kCellMarkRole).isValid());

    // A file that is no map goes through the map checks and is refused.
    const std::string short_file = (p.dir.path() + "/short.sm1").toStdString();
    QCOMPARE(p.program->files.WriteFile(short_file, std::string(100, '\0')), 0);
    p.program->dialogs.path = short_file;
    QVERIFY(Choose(p, 1));
    QVERIFY(!p.window().compare().Comparing());
    QCOMPARE(p.program->messages.shown.back().title, "Compare with a Map File");
    CompareTwoSides(p, grid);
  }

 private:
  // The ECU as last read compared with a map file and then a restore point while the editors
  // differ from both: the grid shows the ECU's values, the counts are the two sides', and
  // nothing the comparison would change is done.
  void CompareTwoSides(RunningProgram& p, MapGrid* grid) {
    QVERIFY(p.Activate());
    grid->setFocus();
    const CalibrationImage read = *p.editors().ecu_image();
    const QString ecu_file_cell = Shown(grid, 3, 2);
    const MapCell a{grid->CurrentRow(), grid->CurrentColumn()};
    const QString ecu_a = Shown(grid, a.row, a.column);
    Key(Qt::Key_Up);  // the editors differ from the ECU and from the file at a
    QVERIFY(Shown(grid, a.row, a.column) != ecu_a);
    CalibrationImage file = read;
    file.Write16(FuelPosition(file, 3, 2), 4321);
    QVERIFY(OfferMapFile(p, "good.sm1", file));

    QVERIFY(ChoosePair(p, 1, 1));  // ECU as last read, with a map file
    QCOMPARE(p.Text("CompareView"), "Current: ECU as last read, compared with map file good.sm1");
    QCOMPARE(p.Text("CompareCount"), "1 cell differs from map file good.sm1");
    QCOMPARE(Shown(grid, a.row, a.column), ecu_a);
    QCOMPARE(Shown(grid, 3, 2), ecu_file_cell);
    QVERIFY(grid->model()->index(3, 2).data(MapGridTable::kCellMarkRole).isValid());
    QVERIFY(!grid->model()->index(a.row, a.column).data(MapGridTable::kCellMarkRole).isValid());

    // Neither a value key nor taking nor sending changes anything, and each says why.
    const CalibrationImage::Block editors = p.editors().image().Bytes();
    const std::size_t entries = p.editors().history().journal().Entries().size();
    Key(Qt::Key_Up);
    QVERIFY(p.Text("EditNote").startsWith("Nothing changed"));
    Key(Qt::Key_W, Qt::AltModifier);
    QVERIFY(QTest::qWaitFor([&] { return p.Text("EditNote").startsWith("Nothing taken"); }));
    Key(Qt::Key_Y, Qt::AltModifier);
    QVERIFY(QTest::qWaitFor([&] { return p.Text("EditNote").startsWith("Nothing sent"); }));
    QCOMPARE(p.editors().history().journal().Entries().size(), entries);
    QCOMPARE(p.editors().image().Bytes(), editors);
    QCOMPARE(p.Text("CompareCount"), "1 cell differs from map file good.sm1");

    Key(Qt::Key_Q, Qt::ControlModifier);
    Key(Qt::Key_Q, Qt::ControlModifier);
    QCOMPARE(p.Text("CompareView"), "Difference: ECU as last read minus map file good.sm1");
    QCOMPARE(Shown(grid, a.row, a.column).replace(',', '.'), "0.000");
    Key(Qt::Key_Q, Qt::ControlModifier);
    testing::KeepShot(&p.window(), "compare-two-sides");

    // A restore point is compared with the first side chosen last.
    CalibrationImage point = read;
    point.Write16(FuelPosition(point, 4, 4), 1234);
    point.Write16(FuelPosition(point, 5, 5), 1234);
    p.window().compare().CompareWith("2024-01-31 14:25:30", point);
    QCOMPARE(p.Text("CompareCount"), "2 cells differ from restore point 2024-01-31 14:25:30");
    QVERIFY(Choose(p, 2));
    QVERIFY(!p.window().compare().Comparing());
    QVERIFY(p.window().compare().Editable());
  }

  // The difference view, in numbers and as a graph, at the two window sizes.
  void Screenshots(RunningProgram& p) {
    for (const bool graph : {false, true}) {
      p.window().map_pages().SetNumerical(!graph);
      testing::KeepShots(&p.window(), graph ? "compare-difference-graph" : "compare-difference");
    }
    p.window().map_pages().SetNumerical(true);
  }
};

VELA_GUI_TEST(CompareEndToEndTest)

}  // namespace compare_end_to_end_test

#include "compare_end_to_end_test.moc"
