// The log on the map pages, on the whole program against the simulated ECU: a drive of the
// simulated engine loaded as a chart file, the overlay's layers stepped through with Ctrl-H and
// read through the grid's accessible interface, the chart cursor's cell outlined on the map, the
// selected cells' times shaded on the chart with Ctrl-M, and a log being recorded followed. Set
// VELA_SHOTS to a folder to keep pictures of the heat map at 1280x720 and 1024x600.
#include <QAccessible>
#include <QAccessibleTableInterface>
#include <QPushButton>
#include <QRegularExpression>
#include <QtTest>

#include "app/pages/datalog_page.h"
#include "app/sessions/target_session.h"
#include "app/workbench/map_log_overlay.h"
#include "editors/mapgrid/qt/map_grid.h"
#include "running_program.h"
#include "support/gui_test_main.h"

using namespace vela;

namespace log_overlay_test {

class LogOverlayTest : public QObject {
  Q_OBJECT

  std::unique_ptr<testing::RunningProgram> p_;

  MapGrid* Grid(int page = 0) { return p_->window().map_pages().page(page)->grid(); }
  MapLogOverlay& Overlay() { return p_->window().log_overlay(); }

  bool Chord(Qt::Key key) {
    if (!p_->Activate()) return false;
    QTest::keyClick(&p_->window(), key, Qt::ControlModifier);
    return true;
  }

  // A drive of an engine that needs 12 % more fuel than the map gives at high speed and load,
  // 8 % less at a light cruise, loaded as the tuner loads one.
  bool LoadDrive(double seconds) {
    return p_->LoadDrive("drive.sl1", seconds,
                         {{12.0, 4000.0, 9000.0, 60.0, 100.0}, {-8.0, 1500.0, 3500.0, 20.0, 50.0}});
  }

  // The cell with the most time on the time layer.
  MapCell BusiestCell() {
    MapCell best{1, 1};
    double most = -1.0;
    const GridOverlay& overlay = Grid()->LogOverlay();
    for (int row = 1; row <= overlay.Rows(); ++row) {
      for (int column = 1; column <= overlay.Columns(); ++column) {
        const std::optional<std::string>& text = overlay.At(row, column)->description;
        const double seconds = text ? std::stod(*text) : 0.0;
        if (seconds > most) most = seconds, best = {row, column};
      }
    }
    return best;
  }

  // The mean of the errors of the cells of `rect` with 20 kept samples or more, as the cells'
  // descriptions give them.
  double MeanError(MapCellRect rect) {
    const QRegularExpression figures(R"(([\d.]+) samples.*error ([-+][\d.]+))");
    double sum = 0.0;
    int cells = 0;
    for (int row = rect.top; row <= rect.bottom; ++row) {
      for (int column = rect.left; column <= rect.right; ++column) {
        const QString text = CellDescription(Grid(), {row, column});
        const QRegularExpressionMatch match = figures.match(text);
        if (!match.hasMatch() || match.captured(1).toDouble() < 20.0) continue;
        sum += match.captured(2).toDouble();
        ++cells;
      }
    }
    return cells > 0 ? sum / cells : std::nan("");
  }

  QString Description(QWidget* widget) {
    return testing::AccessibleText(widget, QAccessible::Description);
  }

  QString CellDescription(MapGrid* grid, MapCell cell) {
    QAccessibleInterface* face = QAccessible::queryAccessibleInterface(grid);
    QAccessibleTableInterface* table = face ? face->tableInterface() : nullptr;
    QAccessibleInterface* item = table ? table->cellAt(cell.row, cell.column) : nullptr;
    return item ? item->text(QAccessible::Description) : QString();
  }

  // The cell the datalog page names for cursor A ("... (row 4, column 7)").
  MapCell NamedCell() {
    const QString text = p_->Text("DatalogFuelCell");
    const QRegularExpressionMatch match =
        QRegularExpression(R"(\(row (\d+), column (\d+)\))").match(text);
    return match.hasMatch() ? MapCell{match.captured(1).toInt(), match.captured(2).toInt()}
                            : MapCell{0, 0};
  }

  std::optional<MapCell> Outlined(MapGrid* grid) {
    const GridOverlay& overlay = grid->LogOverlay();
    for (int row = 1; row <= overlay.Rows(); ++row) {
      for (int column = 1; column <= overlay.Columns(); ++column) {
        if (overlay.At(row, column)->mark) return MapCell{row, column};
      }
    }
    return std::nullopt;
  }

 private slots:
  void init() {
    p_ = std::make_unique<testing::RunningProgram>(
        testing::RunningOptions::Paced({}, QSize(1280, 720)));
    QVERIFY2(p_->started, p_->error.c_str());
    QVERIFY(p_->Run());
    QVERIFY(QTest::qWaitFor([&] { return p_->Live(); }, 5000));
  }
  void cleanup() { p_.reset(); }

  // Then, on the same drive, the chart cursor's cell outlined and Ctrl-M's shading.
  void ctrlHStepsThroughTheLayersAndTheGridTellsTheCursorCellsFigures() {
    QVERIFY(LoadDrive(400.0));
    p_->window().tabs()->setCurrentIndex(kPageFuelMap1);
    QVERIFY(Chord(Qt::Key_H));
    QCOMPARE(Overlay().Layer(), HeatLayer::kTime);
    QLabel* line = Overlay().line(0);
    QVERIFY(line->isVisible());

    const MapCell busiest = BusiestCell();
    Grid()->SetCurrentCell(busiest.row, busiest.column);
    const std::string figures = *Grid()->LogOverlay().At(busiest.row, busiest.column)->description;
    QVERIFY(line->text().startsWith("Log overlay: time spent. cell "));
    QVERIFY(line->text().contains(QString::fromStdString(figures)));
    QVERIFY2(line->text().contains(QRegularExpression(" records, delay (fitted|default): ")),
             qPrintable(line->text()));
    QCOMPARE(Description(Grid()), line->text());
    QCOMPARE(CellDescription(Grid(), busiest), QString::fromStdString(figures));
    // The cells keep the map's values; the busiest is coloured.
    QCOMPARE(Grid()->CellText(busiest.row, busiest.column),
             QString::fromStdString(Grid()->Model().Text(busiest.row, busiest.column)));
    QVERIFY(Grid()->LogOverlay().At(busiest.row, busiest.column)->ground != kNoFiguresGround);
    QVERIFY(Grid(2)->LogOverlay().At(busiest.row, 1) != nullptr);  // the ignition grid too
    testing::KeepShots(&p_->window(), "heat-time");

    const char* names[] = {"mean AFR", "AFR spread", "AFR error against target"};
    for (const char* name : names) {
      QVERIFY(Chord(Qt::Key_H));
      QVERIFY2(line->text().startsWith(QString("Log overlay: %1. ").arg(name)), name);
    }
    QCOMPARE(Overlay().Layer(), HeatLayer::kError);
    // Lean where the engine needs more fuel (red), rich where it needs less (blue).
    QVERIFY(MeanError({1, 13, 3, 17}) > 0.6);
    QVERIFY(MeanError({6, 5, 8, 7}) < -0.4);
    testing::KeepShots(&p_->window(), "heat-error");
    // Targets half a ratio richer everywhere: every error grows by that half.
    const double lean_before = MeanError({1, 13, 3, 17});
    TargetTable richer = p_->window().targets().table();
    for (int row = 1; row <= richer.Axes().Rows(); ++row) {
      for (int column = 1; column <= richer.Axes().Columns(); ++column) {
        richer.Set(row, column, richer.At(row, column) - 0.5);
      }
    }
    QVERIFY(p_->window().targets().Change(richer, "richer"));
    QVERIFY(std::abs(MeanError({1, 13, 3, 17}) - lean_before - 0.5) < 0.02);
    QVERIFY(Chord(Qt::Key_H));
    QCOMPARE(Overlay().Layer(), HeatLayer::kOff);
    QVERIFY(!line->isVisible());
    QVERIFY(Description(Grid()).isEmpty());
    QVERIFY(Grid()->LogOverlay().Empty());

    DatalogChart* chart = p_->window().datalog_page().chart();
    chart->SetCursors(95.5, std::nullopt);
    const MapCell named = NamedCell();
    QVERIFY(named.row > 0);
    QCOMPARE(Outlined(Grid(0)), std::optional<MapCell>(named));
    QVERIFY(Outlined(Grid(2)).has_value());

    p_->window().tabs()->setCurrentIndex(kPageFuelMap1);
    const MapCell at = NamedCell();
    const MapCellRect rect{std::max(at.row - 1, 1), std::max(at.column - 1, 1), at.row, at.column};
    Grid()->Model().Select(rect, at);
    Grid()->ShowSelection();
    QVERIFY(Chord(Qt::Key_M));
    const std::vector<std::pair<double, double>> spans = chart->ShadedSpans();
    QVERIFY(!spans.empty());
    // A stretch starts in a selected cell, as the datalog page names it (where each stretch
    // starts and ends: HeatOverlayTest's own tests).
    chart->SetCursors(spans.front().first, std::nullopt);
    QVERIFY(rect.Contains(NamedCell()));
    QVERIFY(Chord(Qt::Key_M));
    QVERIFY(chart->ShadedSpans().empty());
  }

  void aLogBeingRecordedIsFollowed() {
    p_->window().tabs()->setCurrentIndex(kPageFuelMap1);
    QVERIFY(p_->Press(Qt::Key_L));
    QVERIFY(p_->window().datalog_page().Logging());
    p_->window().tabs()->setCurrentIndex(kPageFuelMap1);
    QVERIFY(Chord(Qt::Key_H));
    QLabel* line = Overlay().line(0);
    QTRY_VERIFY_WITH_TIMEOUT(line->text().contains(" records, delay default"), 6000);
    const auto records = [&] {
      return line->text().section(". ", 2, 2).section(' ', 0, 0).toInt();
    };
    const int first = records();
    QTRY_VERIFY_WITH_TIMEOUT(records() > first, 3000);
    QVERIFY(records() < static_cast<int>(p_->window().datalog_page().log().RecordCount()));
  }
};

VELA_GUI_TEST(LogOverlayTest)

}  // namespace log_overlay_test

#include "log_overlay_test.moc"
