// The map pages against the simulated ECU, as a tuner meets them: the live cross over a moving
// engine, the keyboard that never leaves the grid for a control that writes to the ECU, the fuel
// map selection that asks first (the AFR read-out against the Data Page: CalibrationRoadTest). Set
// VELA_SHOTS to a folder to keep pictures of the map pages at 1280x720 and 1024x600.
#include "app/pages/map_pages.h"

#include <QAbstractButton>
#include <QApplication>
#include <QButtonGroup>
#include <QCheckBox>
#include <QScreen>
#include <QTemporaryDir>
#include <QtTest>

#include "app/sessions/editor_session.h"
#include "editors/mapgrid/qt/map_grid.h"
#include "running_program.h"
#include "sim/pty_runner.h"
#include "support/gui_test_main.h"

using namespace vela;

// The file's own namespace: the test programs are compiled several files at a time.
namespace map_pages_test {

struct ShownProgram : testing::ShownProgram {
  explicit ShownProgram(const sim::SimCommandLine& options, QSize size = {1280, 720})
      : testing::ShownProgram(options, size) {}
  MapPage* page(int index) { return window().map_pages().page(index); }
  // What the screen shows of `widget` now, once every pending paint is done (and nothing else,
  // so that nothing moves between the paint and the picture).
  QImage OnScreen(QWidget* widget) {
    QCoreApplication::sendPostedEvents(nullptr, QEvent::UpdateRequest);
    const QPoint at = widget->mapTo(&window(), QPoint(0, 0));
    return QGuiApplication::primaryScreen()
        ->grabWindow(window().winId(), at.x(), at.y(), widget->width(), widget->height())
        .toImage();
  }
};

// Where dark lines run across (horizontal) or down a picture: the first line of each run of
// adjacent lines of pixels of which more than half are dark. Cells, their texts and the grid's
// own lines are light or short; only the cross's lines are dark the whole way.
QList<int> DarkLines(const QImage& image, bool horizontal) {
  const int length = horizontal ? image.height() : image.width();
  const int across = horizontal ? image.width() : image.height();
  QList<int> lines;
  bool in_line = false;
  for (int i = 0; i < length; ++i) {
    int dark = 0;
    for (int j = 0; j < across; ++j) {
      const QColor c = horizontal ? image.pixelColor(j, i) : image.pixelColor(i, j);
      if (c.red() < 90 && c.green() < 90 && c.blue() < 90) ++dark;
    }
    const bool line = dark * 2 > across;
    if (line && !in_line) lines << i;
    in_line = line;
  }
  return lines;
}

class MapPagesTest : public QObject {
  Q_OBJECT

 private slots:
  // The engine moves; every picture of the grid shows one RPM line and one load line, each
  // where the cross is, on the smallest screen the program is made for.
  void theLiveCrossStandsOnceWhereTheLivePointIs() {
    ShownProgram p({}, {1024, 600});
    QVERIFY(p.started && p.loaded);
    QTRY_VERIFY_WITH_TIMEOUT(p.Live(), 10000);
    MapGrid* grid = p.page(0)->grid();
    QTRY_VERIFY_WITH_TIMEOUT(grid->Cross().has_value(), 5000);
    int moves = 0;
    std::optional<CrossShape> before;
    for (int shot = 0; shot < 40; ++shot) {
      QTest::qWait(120);
      const QImage image = p.OnScreen(grid->viewport());
      const CrossShape cross = grid->Cross().value();
      QCOMPARE(DarkLines(image, true), QList<int>{cross.across.y});
      QCOMPARE(DarkLines(image, false), QList<int>{cross.down.x});
      moves += before && *before != cross;
      before = cross;
    }
    QVERIFY2(moves >= 5, "the engine hardly moved");
    testing::KeepShots(&p.window(), "fuel-map-1");
    p.window().findChild<QCheckBox*>("Numerical")->setChecked(false);
    p.window().tabs()->setCurrentIndex(2);
    QTest::qWait(1500);  // the graph draws itself
    testing::KeepShots(&p.window(), "ignition-graph");
  }

  // Tab, from the grid or from any control, gives the keyboard to the grid; the controls that
  // write to the ECU take it only from a click, and the fuel map selection asks first.
  void tabNeverLeavesTheGridForAControlThatWritesToTheEcu() {
    ShownProgram p({});
    QVERIFY(p.started && p.loaded);
    QVERIFY(p.Activate());
    QTRY_VERIFY_WITH_TIMEOUT(p.Live(), 10000);
    for (int index = 0; index < MapPages::kPages; ++index) {
      for (QAbstractButton* button : p.page(index)->findChildren<QAbstractButton*>()) {
        QVERIFY2(!(button->focusPolicy() & Qt::TabFocus), qPrintable(button->objectName()));
      }
    }
    MapGrid* grid = p.page(0)->grid();
    QTRY_COMPARE(QApplication::focusWidget(), static_cast<QWidget*>(grid));
    const int selection = p.window().editors().state().setup.fuel_map_selection;
    for (int i = 0; i < 4; ++i) {
      QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
      QCOMPARE(QApplication::focusWidget(), static_cast<QWidget*>(grid));
    }
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab);
    QCOMPARE(QApplication::focusWidget(), static_cast<QWidget*>(grid));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Down);
    QCOMPARE(p.window().editors().state().setup.fuel_map_selection, selection);
    QVERIFY(p.program->messages.shown.empty());

    QCheckBox* all_ranges = p.page(0)->all_ranges();
    QTest::mouseClick(all_ranges, Qt::LeftButton, {}, QPoint(8, all_ranges->height() / 2));
    QVERIFY(all_ranges->isChecked());
    QCOMPARE(QApplication::focusWidget(), static_cast<QWidget*>(all_ranges));
    QTest::keyClick(all_ranges, Qt::Key_Tab);
    QCOMPARE(QApplication::focusWidget(), static_cast<QWidget*>(grid));

    // A click on the fuel map selection asks before it is sent.
    QButtonGroup* group = p.page(0)->map_selection();
    const int other = selection == 1 ? 0 : 1;
    p.program->messages.answers = {MessageAnswer::kNo};
    group->button(other)->click();
    QCOMPARE(p.program->messages.shown.size(), std::size_t{1});
    QCOMPARE(p.program->messages.shown[0].title, std::string("Fuel Map Selection"));
    QCOMPARE(p.page(1)->map_selection()->checkedId(), selection);
    p.program->messages.answers = {MessageAnswer::kYes};
    group->button(other)->click();
    QCOMPARE(p.window().editors().state().setup.fuel_map_selection, other);
    QCOMPARE(p.page(1)->map_selection()->checkedId(), other);
  }
};

VELA_GUI_TEST(MapPagesTest)

}  // namespace map_pages_test

#include "map_pages_test.moc"
