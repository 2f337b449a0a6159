// The DataLogging tab from the keyboard in the whole window: G gives the chart the keyboard, the
// chart's keys reach it through the window's routing, what it shows is read through its
// accessible interface, the exports write what is seen, the Help page lists the keys, and the
// status strip's recording sign is read by accessibility tools.
#include <QAccessible>
#include <QApplication>
#include <QFile>
#include <QImage>
#include <QMenu>
#include <QPushButton>
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
#include "program_fixture.h"
#include "support/gui_test_main.h"

using namespace vela;

class DatalogKeysTest : public QObject {
  Q_OBJECT

  // 30 s of records every 0.1 s (RPM climbing), markers at 8 s and 21 s, saved as a chart file
  // and loaded through the tab's Load button.
  static void LoadKnownLog(testing::TestProgram& program, const QString& folder) {
    DatalogLog log;
    ChannelValues values{};
    for (int i = 1; i <= 300; ++i) {
      values[kChannelRpm] = 1000.0 + 10.0 * i;
      log.Append(i * 0.1, i * 0.1, values, 0b1);
    }
    log.AddMarkerAt(8.0, "shift");
    log.AddMarkerAt(21.0, "lean");
    log.SetActive(kChannelRpm, true);
    const std::string path = (folder + "/known.SL1").toStdString();
    QFile file(QString::fromStdString(path));
    QVERIFY(file.open(QIODevice::WriteOnly));
    const std::string bytes = EncodeLogFile(log);
    file.write(bytes.data(), static_cast<qint64>(bytes.size()));
    file.close();
    program.dialogs.paths.push_back(path);
    program.window->findChild<QPushButton*>("Command6_1")->click();
    QCOMPARE(program.window->datalog_page().log().RecordCount(), std::size_t{300});
  }

  static QString ChartValue(QWidget* chart) {
    QAccessibleInterface* face = QAccessible::queryAccessibleInterface(chart);
    return face ? face->text(QAccessible::Value) : QString();
  }

  static void Press(QWidget* to, char typed) { QTest::keyClick(to, typed); }

 private slots:
  void theChartTakesTheKeyboardAndItsKeysAndExportsWhatItShows() {
    QTemporaryDir dir;
    testing::TestProgram program(dir.path(), "/dev/no-such-tty");
    QVERIFY(program.window->Load());
    program.window->resize(1280, 720);
    program.window->show();
    program.window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(program.window.get()));
    LoadKnownLog(program, dir.path());
    DatalogChart* chart = program.window->datalog_page().chart();
    QTest::keyClick(program.window.get(), Qt::Key_G);
    QTRY_COMPARE(QApplication::focusWidget(), static_cast<QWidget*>(chart));

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
    QTest::keyClick(chart, Qt::Key_Z);
    const double between = std::abs(*chart->CursorB() - *chart->CursorA());
    QCOMPARE(chart->View().axis.max - chart->View().axis.min,
             between * (1.0 + 2.0 * kCursorSpanRoomShare));
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

    if (const QString keep = qEnvironmentVariable("VELA_SHOTS"); !keep.isEmpty()) {
      // A recording's sign as the status strip shows it on every tab.
      const auto shot = [&program, &keep](QSize size, const QString& name) {
        program.window->resize(size);
        QTest::qWait(50);
        program.window->findChild<StatusStrip*>()->ShowDatalog(true, 754.2, 45210);
        program.window->grab().save(keep + "/" + name);
      };
      shot({1280, 720}, "datalog-keys-1280x720.png");
      shot({1024, 600}, "datalog-keys-1024x600.png");
      program.window->tabs()->setCurrentIndex(8);
      shot({1024, 600}, "help-1024x600.png");
      shot({1280, 720}, "help-1280x720.png");
    }
  }

  void theHelpPageListsTheChartKeysAndTheRecordingSignIsAccessible() {
    QTemporaryDir dir;
    testing::TestProgram program(dir.path(), "/dev/no-such-tty");
    QVERIFY(program.window->Load());
    auto* table = program.window->findChild<QTableWidget*>("ChartKeys");
    QVERIFY(table);
    QCOMPARE(table->rowCount(), static_cast<int>(kChartKeyRows.size()));
    QCOMPARE(table->item(8, 0)->text(), QString("Z"));
    QCOMPARE(table->horizontalHeaderItem(0)->text(), QString(" Chart Key"));

    auto* strip = program.window->findChild<StatusStrip*>();
    auto* sign = program.window->findChild<QLabel*>("DatalogState");
    strip->ShowDatalog(true, 12.34, 740);
    QVERIFY(!sign->isHidden());
    QAccessibleInterface* face = QAccessible::queryAccessibleInterface(sign);
    QVERIFY(face);
    QCOMPARE(face->text(QAccessible::Name), QString("Datalog recording"));
    QCOMPARE(face->text(QAccessible::Value), QString("Logging 12.3 s, 740 records"));
    QVERIFY(face->valueInterface());
    strip->ShowDatalog(false, 0.0, 0);
    QVERIFY(sign->isHidden());
  }
};

VELA_GUI_TEST(DatalogKeysTest)
#include "datalog_keys_test.moc"
