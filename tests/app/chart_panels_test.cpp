// The datalog chart's panels from the whole window: the layout bar driven by the keyboard from
// the chart, the panels' geometry and scales as the chart plans them, a rectangle zoom by mouse,
// the accessible value naming panels and scale, and the default layout kept across a restart.
#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QPushButton>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QtTest>

#include "app/pages/datalog_page.h"
#include "app/sessions/review_session.h"
#include "datalog/files/log_file.h"
#include "datalog/qt/chart_painter.h"
#include "program_fixture.h"
#include "support/gui_test_main.h"

using namespace vela;

class ChartPanelsTest : public QObject {
  Q_OBJECT

  // 30 s every 0.1 s: RPM climbing 1010..4000, MAP steady at 50 then 90 kPa.
  static void LoadLog(testing::TestProgram& program, const QString& folder) {
    DatalogLog log;
    ChannelValues values{};
    for (int i = 1; i <= 300; ++i) {
      values[kChannelRpm] = 1000.0 + 10.0 * i;
      values[kChannelMap] = i <= 150 ? 50.0 : 90.0;
      log.Append(i * 0.1, i * 0.1, values, 0b11);
    }
    log.AddMarkerAt(8.0, "Fault 3:Low battery");
    log.SetActive(kChannelRpm, true);
    log.SetActive(kChannelMap, true);
    const std::string path = (folder + "/panels.SL1").toStdString();
    QFile file(QString::fromStdString(path));
    QVERIFY(file.open(QIODevice::WriteOnly));
    const std::string bytes = EncodeLogFile(log);
    file.write(bytes.data(), static_cast<qint64>(bytes.size()));
    file.close();
    program.dialogs.paths.push_back(path);
    program.window->findChild<QPushButton*>("Command6_1")->click();
    QCOMPARE(program.window->datalog_page().log().RecordCount(), std::size_t{300});
  }

  static void Start(testing::TestProgram& program) {
    QVERIFY(program.window->Load());
    program.window->resize(1280, 720);
    program.window->show();
    program.window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(program.window.get()));
  }

  static QString ChartValue(QWidget* chart) {
    QAccessibleInterface* face = QAccessible::queryAccessibleInterface(chart);
    return face ? face->text(QAccessible::Value) : QString();
  }

  static const PlannedLine* LineNamed(const ChartPlan& plan, const std::string& name) {
    for (const PlannedLine& line : plan.lines) {
      if (line.name == name) return &line;
    }
    return nullptr;
  }

  static void Keep(QWidget* widget, const QString& name) {
    const QString keep = qEnvironmentVariable("VELA_SHOTS");
    if (!keep.isEmpty()) widget->grab().save(keep + "/" + name);
  }

 private slots:
  void theLayoutBarIsDrivenFromTheChartByKeyboard() {
    QTemporaryDir dir;
    testing::TestProgram program(dir.path(), "/dev/no-such-tty");
    Start(program);
    LoadLog(program, dir.path());
    DatalogChart* chart = program.window->datalog_page().chart();
    QTest::keyClick(program.window.get(), Qt::Key_G);
    QTRY_COMPARE(QApplication::focusWidget(), static_cast<QWidget*>(chart));
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

    // Two panels split the plot; RPM's axis labels in the lower, MAP's in the upper, each scale
    // automatic over the values in view.
    const std::vector<QRect> rects = chart->PanelRects();
    QCOMPARE(rects.size(), std::size_t{2});
    QVERIFY(rects[0].bottom() < rects[1].top());
    QCOMPARE(rects[0].top(), chart->PlotRect().top());
    QCOMPARE(rects[1].bottom(), chart->PlotRect().bottom());
    const ChartPlan plan = chart->Plan();
    const PlannedLine* rpm = LineNamed(plan, "RPM");
    const PlannedLine* map = LineNamed(plan, "MAP");
    QVERIFY(rpm && map);
    QCOMPARE(rpm->panel, 1);
    QCOMPARE(map->panel, 0);
    QVERIFY(rpm->range.low <= 1010 && rpm->range.high >= 4000 && rpm->range.high <= 5000);
    QVERIFY(map->range.low <= 50 && map->range.high >= 90 && map->range.high <= 100);
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
    Keep(program.window.get(), "panels-1280x720.png");
    program.window->resize(1024, 600);
    QApplication::processEvents();
    Keep(program.window.get(), "panels-1024x600.png");
  }

  void aDraggedRectangleZoomsTimeAndThePanelsScales() {
    QTemporaryDir dir;
    testing::TestProgram program(dir.path(), "/dev/no-such-tty");
    Start(program);
    LoadLog(program, dir.path());
    DatalogChart* chart = program.window->datalog_page().chart();
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
    const TimeAxis after = chart->View().axis;
    const double span = before.max - before.min;
    QVERIFY(std::abs(after.min - (before.min + span / 4)) < span / plot.width() * 2);
    QVERIFY(std::abs(after.max - (before.min + span / 2)) < span / plot.width() * 2);
    QVERIFY(chart->AxisInHand());
    const review::PanelChannel* rpm = chart->Layout().Find("RPM");
    QVERIFY(rpm && !rpm->scale.automatic);
    const double value_span = range.high - range.low;
    QVERIFY(std::abs(rpm->scale.max - (range.low + value_span * 3 / 4)) < value_span / 50);
    QVERIFY(std::abs(rpm->scale.min - (range.low + value_span / 4)) < value_span / 50);
    QVERIFY(!chart->CursorA());  // a zoom sets no cursor

    // A click-sized rectangle changes nothing.
    const review::ChartLayout layout = chart->Layout();
    QVERIFY(!chart->ZoomToRectangle(from, from + QPoint(1, 1)));
    QVERIFY(chart->Layout() == layout);
  }

  // The layout goes to the review file beside a saved log and comes back when the log is read;
  // math channels and a second log are drawn from the session.
  void theReviewSessionCarriesTheLayoutAndItsLines() {
    QTemporaryDir dir;
    testing::TestProgram program(dir.path(), "/dev/no-such-tty");
    Start(program);
    LoadLog(program, dir.path());
    DatalogPage& page = program.window->datalog_page();
    DatalogChart* chart = page.chart();
    chart->ShowWholeLog();
    ReviewSession session(page.log(), program.files);
    page.DrawReview(session);

    session.SetMath({{"Twice", "RPM * 2"}, {"Broken", "RPM +"}});
    const ChartPlan with_math = chart->Plan();
    const PlannedLine* twice = LineNamed(with_math, "Twice");
    QVERIFY(twice && !twice->second_log);
    QVERIFY(twice->range.high >= 8000 && twice->range.low <= 2020);
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
    QVERIFY(rpm2->range == rpm->range && rpm2->panel == rpm->panel);
    QVERIFY(!LineNamed(with_second, "MAP (2)"));  // never recorded in the second log
    Keep(&page, "review-lines-page.png");

    review::ChartLayout layout = chart->Layout();
    QVERIFY(layout.AddPanel());
    QVERIFY(layout.Place("Twice", 1));
    QVERIFY(layout.SetScale("MAP", {false, 0, 250}));
    layout.Select("Twice");
    chart->SetLayout(layout);
    QVERIFY(session.layout() == layout);
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
  }

  void theDefaultLayoutIsKeptAcrossARestart() {
    QTemporaryDir dir;
    {
      testing::TestProgram program(dir.path(), "/dev/no-such-tty");
      Start(program);
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
    Start(program);
    const review::ChartLayout& shown = program.window->datalog_page().chart()->Layout();
    QCOMPARE(shown.Panels().size(), std::size_t{2});
    QCOMPARE(shown.PanelOf("AFR"), std::optional<int>(1));
    QCOMPARE(shown.Find("AFR")->scale.max, 200.0);
  }
};

VELA_GUI_TEST(ChartPanelsTest)
#include "chart_panels_test.moc"
