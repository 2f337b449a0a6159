// The DataLogging tab's chart in the whole window. From the keyboard: G gives the chart the
// keyboard, the chart's keys reach it through the window's routing, the exports write what is
// seen, the layout bar is driven from the chart, and what the chart shows (panels, scales) is
// read through its accessible interface. A rectangle zoom by mouse; the layout kept beside a
// saved log and the default layout across a restart; the Help page lists the keys, and the
// status strip's recording sign is read by accessibility tools.
#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QImage>
#include <QMenu>
#include <QPushButton>
#include <QSpinBox>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QToolButton>
#include <QtTest>
#include <cmath>

#include "app/pages/datalog_page.h"
#include "app/sessions/review_session.h"
#include "app/widgets/status_strip.h"
#include "datalog/files/log_export.h"
#include "datalog/files/log_file.h"
#include "datalog/qt/chart_painter.h"
#include "program_views.h"
#include "support/gui_test_main.h"

using namespace vela;

class DatalogChartTest : public QObject {
  Q_OBJECT

  // Started at 1280 x 720 with 30 s every 0.1 s loaded: RPM climbing 1010..4000, MAP steady at
  // 50 then 90 kPa, markers at 8 s and 21 s.
  static void StartWithLog(testing::TestProgram& program, const QString& folder) {
    QVERIFY(testing::ShowActive(program));
    DatalogLog log;
    ChannelValues values{};
    for (int i = 1; i <= 300; ++i) {
      values[kChannelRpm] = 1000.0 + 10.0 * i;
      values[kChannelMap] = i <= 150 ? 50.0 : 90.0;
      log.Append(i * 0.1, i * 0.1, values, 0b11);
    }
    log.AddMarkerAt(8.0, "shift");
    log.AddMarkerAt(21.0, "lean");
    log.SetActive(kChannelRpm, true);
    log.SetActive(kChannelMap, true);
    QVERIFY(testing::LoadLog(program, folder + "/panels.SL1", log));
  }

  // The same, then G: the DataLogging tab in front with the keyboard on its chart.
  static DatalogChart* StartOnChart(testing::TestProgram& program, const QString& folder) {
    StartWithLog(program, folder);
    DatalogChart* chart = program.window->datalog_page().chart();
    QTest::keyClick(program.window.get(), Qt::Key_G);
    if (!QTest::qWaitFor([chart] { return QApplication::focusWidget() == chart; })) return nullptr;
    return chart;
  }

  static QString ChartValue(QWidget* chart) {
    return testing::AccessibleText(chart, QAccessible::Value);
  }

  static const PlannedLine* LineNamed(const ChartPlan& plan, const std::string& name) {
    for (const PlannedLine& line : plan.lines) {
      if (line.name == name) return &line;
    }
    return nullptr;
  }

 private slots:
  void theChartTakesTheKeyboardAndItsKeysAndExportsWhatItShows() {
    QTemporaryDir dir;
    testing::TestProgram program(dir.path(), "/dev/no-such-tty");
    DatalogChart* chart = StartOnChart(program, dir.path());
    QVERIFY(chart);

    // Each key passes the window's routing and reaches the chart (the rules: chart_keys_test).
    QTest::keyClick(chart, Qt::Key_Home);
    const TimeAxis whole = chart->View().axis;
    QTest::keyClick(chart, '.');  // A appears mid-view
    QVERIFY(chart->CursorA() && ChartValue(chart).startsWith("A "));
    QTest::keyClick(chart, '+');
    QCOMPARE(chart->View().axis.max - chart->View().axis.min, (whole.max - whole.min) / 2.0);
    QTest::keyClick(chart, Qt::Key_PageDown, Qt::ControlModifier);
    QTest::keyClick(chart, Qt::Key_PageDown, Qt::ControlModifier);
    QCOMPARE(chart->View().axis.max, whole.max);
    QTest::keyClick(chart, ';');
    QCOMPARE(*chart->CursorA(), 8.0);  // the marker before it, the view following
    QVERIFY(chart->View().axis.min <= 8.0);
    QTest::keyClick(chart, '}');
    QVERIFY(ChartValue(chart).contains(", B "));
    const double span = chart->View().axis.max - chart->View().axis.min;
    QTest::keyClick(chart, Qt::Key_Z);
    QVERIFY(chart->View().axis.max - chart->View().axis.min < span);
    QCOMPARE(program.window->tabs()->currentIndex(), 11);  // neither the tab bar nor a letter

    // Ctrl-X: the records between the cursors; the menu item does the same. Ctrl-I: the chart.
    chart->SetCursors(12.05, 10.0);
    const QString csv = dir.path() + "/span.csv";
    program.dialogs.paths.push_back(csv.toStdString());
    QTest::keyClick(chart, Qt::Key_X, Qt::ControlModifier);
    QFile csv_file(csv);
    QVERIFY(csv_file.open(QIODevice::ReadOnly));
    const QByteArray written = csv_file.readAll();
    // The recorded channels, then the log's math channels.
    std::vector<CsvColumn> math;
    for (const review::MathColumn& column :
         program.window->datalog_page().review().math_columns()) {
      if (!column.error) math.push_back({column.name, column.values, 3});
    }
    QCOMPARE(written.toStdString(),
             CsvText(program.window->datalog_page().log(), 10.0, 12.05, math));
    auto* span_item = program.window->findChild<QAction*>("DatalogExportSpanCsv");
    QVERIFY(program.window->findChild<QToolButton*>("DatalogExportView")
                ->menu()
                ->actions()
                .contains(span_item));
    program.dialogs.paths.push_back((dir.path() + "/again.csv").toStdString());
    span_item->trigger();
    QVERIFY(QFile::exists(dir.path() + "/again.csv"));
    program.dialogs.paths.push_back((dir.path() + "/chart").toStdString());
    QTest::keyClick(chart, Qt::Key_I, Qt::ControlModifier);
    QCOMPARE(QImage(dir.path() + "/chart.png").size(), chart->size() * chart->devicePixelRatio());

    // A recording's sign as the status strip shows it on every tab, read by accessibility tools.
    auto* strip = program.window->findChild<StatusStrip*>();
    auto* sign = program.window->findChild<QLabel*>("DatalogState");
    strip->ShowDatalog(true, 754.2, 45210);
    QAccessibleInterface* face = QAccessible::queryAccessibleInterface(sign);
    QVERIFY(face && face->valueInterface());
    QCOMPARE(face->text(QAccessible::Name), QString("Datalog recording"));
    QCOMPARE(face->text(QAccessible::Value), QString("Logging 754.2 s, 45210 records"));
    testing::KeepShots(program.window.get(), "datalog-keys");
    // The Help page lists the chart's keys.
    program.window->tabs()->setCurrentIndex(8);
    auto* keys = program.window->findChild<QTableWidget*>("ChartKeys");
    QVERIFY(keys);
    QCOMPARE(keys->horizontalHeaderItem(0)->text(), QString(" Chart Key"));
    testing::KeepShots(program.window.get(), "help");
  }

  void theLayoutBarIsDrivenFromTheChartByKeyboard() {
    QTemporaryDir dir;
    testing::TestProgram program(dir.path(), "/dev/no-such-tty");
    DatalogChart* chart = StartOnChart(program, dir.path());
    QVERIFY(chart);
    QTest::keyClick(chart, Qt::Key_Home);  // the whole log
    QVERIFY(ChartValue(chart).contains("1 panel, RPM in panel 1, scale auto"));

    // Tab leads from the chart along the bar: panels, channel, its panel, its scale.
    QTest::keyClick(chart, Qt::Key_Tab);
    auto* panels = program.window->findChild<QSpinBox*>("ChartPanels");
    QTRY_COMPARE(QApplication::focusWidget(), static_cast<QWidget*>(panels));
    QTest::keyClick(panels, Qt::Key_Up);
    QCOMPARE(chart->Layout().Panels().size(), std::size_t{2});
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);  // the channel: RPM
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    auto* in_panel = program.window->findChild<QSpinBox*>("ChartChannelPanel");
    QCOMPARE(QApplication::focusWidget(), static_cast<QWidget*>(in_panel));
    QTest::keyClick(in_panel, Qt::Key_Up);
    QCOMPARE(chart->Layout().PanelOf("RPM"), std::optional<int>(1));
    QVERIFY(ChartValue(chart).contains("2 panels, RPM in panel 2, scale auto"));

    // Two panels (how they share the plot: PanelGeometry's own tests); RPM's axis labels in the
    // lower, MAP in the upper.
    QCOMPARE(chart->PanelRects().size(), std::size_t{2});
    const ChartPlan plan = chart->Plan();
    const PlannedLine* rpm = LineNamed(plan, "RPM");
    QVERIFY(rpm && LineNamed(plan, "MAP"));
    QCOMPARE(LineNamed(plan, "MAP")->panel, 0);
    QCOMPARE(plan.lines[static_cast<std::size_t>(plan.axis_line[1])].name, std::string("RPM"));

    // Fixed: from the range drawn now, then as typed.
    QTest::keyClick(in_panel, Qt::Key_Tab);
    auto* scale = program.window->findChild<QComboBox*>("ChartChannelScale");
    QCOMPARE(QApplication::focusWidget(), static_cast<QWidget*>(scale));
    QTest::keyClick(scale, Qt::Key_Down);
    const review::PanelChannel* fixed = chart->Layout().Find("RPM");
    QVERIFY(fixed && !fixed->scale.automatic);
    QCOMPARE(fixed->scale.max, rpm->range.high);
    auto* max = program.window->findChild<QDoubleSpinBox*>("ChartScaleMax");
    max->setValue(6000);
    QCOMPARE(chart->Layout().Find("RPM")->scale.max, 6000.0);
    QCOMPARE(LineNamed(chart->Plan(), "RPM")->range.high, 6000.0);
    QVERIFY(ChartValue(chart).contains("RPM in panel 2, scale fixed"));
    QCOMPARE(program.window->findChild<QComboBox*>("DatalogAxisChannel")->currentIndex(),
             kChannelRpm);
    testing::KeepShots(program.window.get(), "panels");
  }

  // The layout goes to the review file beside a saved log and comes back when the log is read;
  // math channels and a second log are drawn from the session.
  void theReviewSessionCarriesTheLayoutAndItsLines() {
    QTemporaryDir dir;
    testing::TestProgram program(dir.path(), "/dev/no-such-tty");
    StartWithLog(program, dir.path());
    DatalogPage& page = program.window->datalog_page();
    DatalogChart* chart = page.chart();
    chart->ShowWholeLog();
    ReviewSession session(page.log(), program.files);
    page.DrawReview(session);

    session.SetMath({{"Twice", "RPM * 2"}, {"Broken", "RPM +"}});
    const ChartPlan with_math = chart->Plan();
    const PlannedLine* twice = LineNamed(with_math, "Twice");
    QVERIFY(twice && !twice->second_log);
    QVERIFY(!LineNamed(with_math, "Broken"));  // refused: nothing to draw

    DatalogLog second;
    ChannelValues values{};
    for (int i = 1; i <= 100; ++i) {
      values[kChannelRpm] = 2000.0;
      second.Append(i * 0.1, i * 0.1, values, 0b1);
    }
    session.SetSecond(std::move(second), "");
    session.SetAlignment({5.0});
    const ChartPlan with_second = chart->Plan();
    const PlannedLine* rpm = LineNamed(with_second, "RPM");
    const PlannedLine* rpm2 = LineNamed(with_second, "RPM (2)");
    QVERIFY(rpm && rpm2 && rpm2->second_log);
    QCOMPARE(rpm2->offset, 5.0);
    QCOMPARE(rpm2->panel, rpm->panel);
    QVERIFY(!LineNamed(with_second, "MAP (2)"));  // never recorded in the second log
    testing::KeepShot(&page, "review-lines-page");

    review::ChartLayout layout = chart->Layout();
    QVERIFY(layout.AddPanel());
    QVERIFY(layout.Place("Twice", 1));
    QVERIFY(layout.SetScale("MAP", {false, 0, 250}));
    layout.Select("Twice");
    chart->SetLayout(layout);
    const std::string path = (dir.path() + "/panels.SL1").toStdString();
    QVERIFY(session.LogSaved(path));
    QVERIFY(QFile::exists(dir.path() + "/panels.review"));

    chart->SetLayout(review::ChartLayout());
    session.LogReplaced(path);
    QVERIFY(chart->Layout() == layout);
    QVERIFY(ChartValue(chart).contains("2 panels, Twice in panel 2, scale auto"));
    // A log without a review file gets the tuner's default.
    session.LogReplaced((dir.path() + "/other.SL1").toStdString());
    QVERIFY(chart->Layout() == page.DefaultLayout());

    // A rectangle dragged with Shift zooms the time and the scale of the panel's channels.
    chart->ShowWholeLog();
    const QRect plot = chart->PanelRects().front();
    const TimeAxis before = chart->View().axis;
    const PlannedLine* drawn = LineNamed(chart->Plan(), "RPM");
    QVERIFY(drawn);
    const review::AxisRange range = drawn->range;
    const QPoint from(plot.left() + plot.width() / 4, plot.top() + plot.height() / 4);
    const QPoint to(plot.left() + plot.width() / 2, plot.top() + plot.height() * 3 / 4);
    QTest::mousePress(chart, Qt::LeftButton, Qt::ShiftModifier, from);
    QTest::mouseMove(chart, to);
    QTest::mouseRelease(chart, Qt::LeftButton, Qt::ShiftModifier, to);
    // Within the span and the scale dragged over (to the pixel: PanelGeometry's own tests).
    const TimeAxis after = chart->View().axis;
    QVERIFY(after.min > before.min && after.max < before.max);
    const review::PanelChannel* zoomed = chart->Layout().Find("RPM");
    QVERIFY(zoomed && !zoomed->scale.automatic);
    QVERIFY(zoomed->scale.min > range.low && zoomed->scale.max < range.high);
    QVERIFY(!chart->CursorA());  // a zoom sets no cursor
  }

  void theDefaultLayoutIsKeptAcrossARestart() {
    QTemporaryDir dir;
    {
      testing::TestProgram program(dir.path(), "/dev/no-such-tty");
      QVERIFY(testing::ShowActive(program));
      DatalogPage& page = program.window->datalog_page();
      review::ChartLayout layout = page.chart()->Layout();
      QVERIFY(layout.AddPanel());
      QVERIFY(layout.Place("AFR", 1));
      QVERIFY(layout.SetScale("AFR", {false, 100, 200}));
      page.chart()->SetLayout(layout);
      program.window->findChild<QPushButton*>("ChartLayoutSaveDefault")->click();
      QVERIFY(page.DefaultLayout() == layout);
    }
    testing::TestProgram program(dir.path(), "/dev/no-such-tty");
    QVERIFY(testing::ShowActive(program));
    const review::ChartLayout& shown = program.window->datalog_page().chart()->Layout();
    QCOMPARE(shown.Panels().size(), std::size_t{2});
    QCOMPARE(shown.PanelOf("AFR"), std::optional<int>(1));
    QCOMPARE(shown.Find("AFR")->scale.max, 200.0);
  }
};

VELA_GUI_TEST(DatalogChartTest)
#include "datalog_chart_test.moc"
