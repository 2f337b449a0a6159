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
  void theChartHasTheKeyboardAndItsKeysMoveTheViewAndTheCursors() {
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
    QCOMPARE(program.window->tabs()->currentIndex(), 11);
    QTRY_COMPARE(QApplication::focusWidget(), static_cast<QWidget*>(chart));

    QTest::keyClick(chart, Qt::Key_Home);
    const TimeAxis whole = chart->View().axis;
    QCOMPARE(whole.min, 0.0);
    QVERIFY(whole.max > 30.0);
    // Cursor A appears on the record nearest the middle, then steps a record and a second.
    Press(chart, '.');
    QVERIFY(chart->CursorA());
    const double middle = (whole.min + whole.max) / 2.0;
    QVERIFY(std::abs(*chart->CursorA() - middle) <= 0.05 + 1e-9);
    const double start = *chart->CursorA();
    Press(chart, '.');
    Press(chart, '>');
    QVERIFY(std::abs(*chart->CursorA() - (start + 1.1)) < 1e-6);
    QVERIFY(ChartValue(chart).startsWith("A "));
    // Zooming in keeps A's time under it on screen.
    const double a = *chart->CursorA();
    const double share = (a - chart->View().axis.min) / (whole.max - whole.min);
    Press(chart, '+');
    const TimeAxis zoomed = chart->View().axis;
    QVERIFY(std::abs((zoomed.max - zoomed.min) - (whole.max - whole.min) / 2.0) < 1e-9);
    QVERIFY(std::abs((a - zoomed.min) / (zoomed.max - zoomed.min) - share) < 1e-9);
    QVERIFY(chart->AxisInHand());
    // Ctrl-PgDown pans a whole view, held at the log's end; Ctrl-Left a tenth back.
    QTest::keyClick(chart, Qt::Key_PageDown, Qt::ControlModifier);
    QTest::keyClick(chart, Qt::Key_PageDown, Qt::ControlModifier);
    QCOMPARE(program.window->tabs()->currentIndex(), 11);  // the tab bar never took it
    QVERIFY(std::abs(chart->View().axis.max - whole.max) < 1e-9);
    const TimeAxis at_end = chart->View().axis;
    QTest::keyClick(chart, Qt::Key_Left, Qt::ControlModifier);
    QVERIFY(std::abs(chart->View().axis.min - (at_end.min - (at_end.max - at_end.min) / 10.0)) <
            1e-9);
    // Markers: ' jumps A to the next one (21 s), ; back to 8 s; the view follows A.
    Press(chart, '\'');
    QVERIFY(std::abs(*chart->CursorA() - 21.0) < 1e-9);
    Press(chart, ';');
    QVERIFY(std::abs(*chart->CursorA() - 8.0) < 1e-9);
    QVERIFY(chart->View().axis.min <= 8.0 && chart->View().axis.max >= 8.0);
    // Cursor B, then Z zooms to the span between the two.
    Press(chart, ']');
    QVERIFY(chart->CursorB());
    Press(chart, '}');
    Press(chart, '}');
    const double b = *chart->CursorB();
    QTest::keyClick(chart, Qt::Key_Z);
    const double room = std::abs(b - 8.0) * kCursorSpanRoomShare;
    QVERIFY(std::abs(chart->View().axis.min - (std::min(8.0, b) - room)) < 1e-9);
    QVERIFY(std::abs(chart->View().axis.max - (std::max(8.0, b) + room)) < 1e-9);
    QVERIFY(ChartValue(chart).contains(", B "));
    // Still on the DataLogging tab: no key was a page letter's.
    QCOMPARE(program.window->tabs()->currentIndex(), 11);

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

  void theExportKeysWriteTheCursorsSpanAsCsvAndTheChartAsAPicture() {
    QTemporaryDir dir;
    testing::TestProgram program(dir.path(), "/dev/no-such-tty");
    QVERIFY(program.window->Load());
    program.window->show();
    program.window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(program.window.get()));
    LoadKnownLog(program, dir.path());
    DatalogChart* chart = program.window->datalog_page().chart();
    QTest::keyClick(program.window.get(), Qt::Key_G);
    QTRY_COMPARE(QApplication::focusWidget(), static_cast<QWidget*>(chart));
    chart->SetCursors(12.05, 10.0);

    const QString csv = dir.path() + "/span.csv";
    program.dialogs.paths.push_back(csv.toStdString());
    QTest::keyClick(chart, Qt::Key_X, Qt::ControlModifier);
    QFile csv_file(csv);
    QVERIFY(csv_file.open(QIODevice::ReadOnly));
    const QByteArray written = csv_file.readAll();
    QCOMPARE(written.toStdString(), CsvText(program.window->datalog_page().log(), 10.0, 12.05));
    QVERIFY(written.contains("\r\n10.000,") && written.contains("\r\n12.000,"));
    QVERIFY(!written.contains("\r\n12.100,") && !written.contains("\r\n9.900,"));

    const QString png = dir.path() + "/chart";
    program.dialogs.paths.push_back(png.toStdString());
    QTest::keyClick(chart, Qt::Key_I, Qt::ControlModifier);
    QImage picture(png + ".png");
    QVERIFY(!picture.isNull());
    QCOMPARE(picture.size(), chart->size() * chart->devicePixelRatio());

    // The page's "Export View" menu does the same, with visible text.
    auto* menu_button = program.window->findChild<QToolButton*>("DatalogExportView");
    QCOMPARE(menu_button->text(), QString("Export View"));
    auto* span_item = program.window->findChild<QAction*>("DatalogExportSpanCsv");
    QCOMPARE(span_item->text(), QString("Span as CSV...  (Ctrl-X)"));
    QVERIFY(menu_button->menu()->actions().contains(span_item));
    QVERIFY(program.window->findChild<QAction*>("DatalogExportPng")->text().startsWith("Chart"));
    program.dialogs.paths.push_back((dir.path() + "/again.csv").toStdString());
    span_item->trigger();
    QVERIFY(QFile::exists(dir.path() + "/again.csv"));
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
