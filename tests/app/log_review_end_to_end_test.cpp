// A drive of the simulated engine reviewed from the keyboard alone on the DataLogging tab: the
// cursors moved and the view zoomed to the span between them, a math channel added in its
// dialog, stacked in a second panel from the layout bar and exported with the span, the scatter
// of AFR against RPM coloured by MAP and the histogram, a second drive loaded, aligned at its
// marker and compared in the "A - 2nd" column. Set VELA_SHOTS to a folder to keep pictures of
// the panels, the scatter and the second log at 1280x720 and 1024x600.
#include <QAccessible>
#include <QComboBox>
#include <QFile>
#include <QPushButton>
#include <QSpinBox>
#include <QTableWidget>
#include <QtTest>
#include <cmath>
#include <functional>

#include "app/pages/datalog_page.h"
#include "app/review/distribution_view.h"
#include "app/review/math_channel_dialog.h"
#include "app/review/second_log_dialog.h"
#include "app/sessions/review_session.h"
#include "datalog/files/log_export.h"
#include "datalog/files/log_file.h"
#include "running_program.h"
#include "sim/engine/drive_log.h"
#include "support/gui_test_main.h"
#include "support/when_modal.h"

using namespace vela;

namespace log_review_end_to_end_test {

constexpr int kMathRow = kChannelCount + 2;  // the read-out's first math channel row

QString Accessible(QObject* object, QAccessible::Text text) {
  QAccessibleInterface* face = QAccessible::queryAccessibleInterface(object);
  return face ? face->text(text) : QString();
}

class LogReviewEndToEndTest : public QObject {
  Q_OBJECT

  std::unique_ptr<testing::RunningProgram> p_;

  DatalogPage& Page() { return p_->window().datalog_page(); }
  DatalogChart* Chart() { return Page().chart(); }

  // A drive of `seconds` as a chart file with a marker "Launch" at `launch` seconds.
  std::string WriteDrive(const QString& name, double seconds, double launch, double fuel_error) {
    const std::string path = (p_->dir.path() + "/" + name).toStdString();
    sim::SimOptions engine;
    engine.fuel_errors = {{fuel_error, 500.0, 9000.0, 0.0, 250.0}};
    std::string error;
    if (!sim::WriteDriveLog(engine, p_->editors().image(), seconds, path, &error)) return {};
    DatalogLog log = ReadLog(path);
    log.AddMarkerAt(launch, "Launch");
    QFile file(QString::fromStdString(path));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) return {};
    file.write(QByteArray::fromStdString(EncodeLogFile(log)));
    return path;
  }
  static DatalogLog ReadLog(const std::string& path) {
    DatalogLog log;
    QFile file(QString::fromStdString(path));
    if (file.open(QIODevice::ReadOnly)) DecodeLogFile(file.readAll().toStdString(), log);
    return log;
  }

  template <class T>
  void WhenModal(std::function<void(T*)> act) {
    gui_test::WhenModal<T>(this, std::move(act));
  }

  // Where keys typed into `window` go.
  static QWidget* In(QWidget* window) {
    return window->focusWidget() ? window->focusWidget() : window;
  }
  void Key(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QTest::keyClick(In(&p_->window()), static_cast<Qt::Key>(key), modifiers);
  }
  void Typed(char c, int times = 1) {
    for (int i = 0; i < times; ++i) QTest::keyClick(Chart(), c);
  }

  QString Cell(int row, int column) {
    const QTableWidgetItem* item = p_->Find<QTableWidget>("DatalogCursorValues")->item(row, column);
    return item ? item->text() : QString();
  }

  void KeepShots(QWidget* widget, const QString& name) {
    const QString folder = qEnvironmentVariable("VELA_SHOTS");
    for (const QSize size : {QSize(1280, 720), QSize(1024, 600)}) {
      widget->resize(size);
      QTest::qWait(150);
      if (!folder.isEmpty()) {
        widget->grab().save(
            QString("%1/%2-%3x%4.png").arg(folder, name).arg(size.width()).arg(size.height()));
      }
    }
    widget->resize(1280, 720);
    QTest::qWait(50);
  }

 private slots:
  void init() {
    testing::RunningOptions options;
    options.size = QSize(1280, 720);
    p_ = std::make_unique<testing::RunningProgram>(options);
    QVERIFY2(p_->started, p_->error.c_str());
    QVERIFY(p_->Run());
  }
  void cleanup() { p_.reset(); }

  void driveReviewedFromTheKeyboard() {
    const std::string first = WriteDrive("first.sl1", 60.0, 20.0, 0.0);
    QVERIFY(!first.empty());
    p_->program->dialogs.paths.push_back(first);
    p_->Find<QPushButton>("Command6_1")->click();
    QVERIFY(Page().log().RecordCount() > 1000);
    QVERIFY(p_->Activate());
    Key(Qt::Key_G, Qt::AltModifier);  // the "DataLo&gging" tab
    QCOMPARE(p_->window().tabs()->currentWidget(), Page().parentWidget());
    Chart()->setFocus();

    // Cursors by record and by second, then the view zoomed to the span between them.
    Key(Qt::Key_Home);
    Typed('.');
    QVERIFY(Chart()->CursorA());
    const double a_start = *Chart()->CursorA();
    Typed('<', 10);
    Typed(']');
    Typed('}', 5);
    const double a = *Chart()->CursorA();
    const double b = *Chart()->CursorB();
    QVERIFY(std::abs(a - (a_start - 10.0)) < 0.1);
    QVERIFY(b - a > 14.0 && b - a < 16.0);
    Typed('Z');
    const double room = (b - a) * kCursorSpanRoomShare;
    QVERIFY(std::abs(Page().log().axis.min - (a - room)) < 1e-6);
    QVERIFY(std::abs(Page().log().axis.max - (b + room)) < 1e-6);
    QVERIFY(Accessible(Chart(), QAccessible::Value).contains("panel"));

    AddMathChannelByKeys();
    StackInSecondPanelByKeys();
    ExportSpanByKeys(a, b);
    ScatterAndHistogramByKeys(a, b);
    SecondLogByKeys();
  }

 private:
  void AddMathChannelByKeys() {
    QString focus_at_start;
    WhenModal<MathChannelsDialog>([this, &focus_at_start](MathChannelsDialog* list) {
      WhenModal<MathChannelEditor>([&focus_at_start](MathChannelEditor* editor) {
        QApplication::setActiveWindow(editor);
        focus_at_start = In(editor)->objectName();
        QTest::keyClicks(In(editor), "AFR Dev");
        QTest::keyClick(In(editor), Qt::Key_Tab);
        QTest::keyClicks(In(editor), "AFR / 10 - 14.7");
        QTest::keyClick(In(editor), Qt::Key_Return);
      });
      QApplication::setActiveWindow(list);
      QTest::keyClick(In(list), Qt::Key_A, Qt::AltModifier);
      QTest::keyClick(In(list), Qt::Key_C, Qt::AltModifier);
    });
    Key(Qt::Key_E, Qt::ControlModifier | Qt::ShiftModifier);
    QCOMPARE(focus_at_start, QString("MathChannelName"));
    ReviewSession& review = Page().review();
    QCOMPARE(review.math().size(), std::size_t{3});
    QCOMPARE(review.math()[2].expression, std::string("AFR / 10 - 14.7"));
    // A check box after the recorded channels' and an entry in the Axis box.
    QCOMPARE(p_->Find<QCheckBox>("DatalogMathCheck_2")->text(), QString("AFR Dev"));
    QVERIFY(p_->Find<QCheckBox>("DatalogMathCheck_2")->isChecked());
    auto* axis = p_->Find<QComboBox>("DatalogAxisChannel");
    QCOMPARE(axis->itemText(kChannelCount + 2), QString("AFR Dev"));
    QCOMPARE(Cell(kMathRow + 2, 0), QString("AFR Dev"));
  }

  // Tab from the chart along the layout bar: two panels, AFR Dev chosen and put in panel 2.
  void StackInSecondPanelByKeys() {
    QApplication::setActiveWindow(&p_->window());
    Chart()->setFocus();
    Key(Qt::Key_Tab);
    QCOMPARE(In(&p_->window())->objectName(), QString("ChartPanels"));
    Key(Qt::Key_Up);
    Key(Qt::Key_Tab);
    QCOMPARE(In(&p_->window())->objectName(), QString("ChartLayoutChannel"));
    Key(Qt::Key_End);  // the last line: the newest math channel
    Key(Qt::Key_Tab);
    QCOMPARE(In(&p_->window())->objectName(), QString("ChartChannelPanel"));
    Key(Qt::Key_Up);
    const QString value = Accessible(Chart(), QAccessible::Value);
    QVERIFY2(value.contains("2 panels, AFR Dev in panel 2"), qPrintable(value));
    QCOMPARE(p_->Find<QComboBox>("DatalogAxisChannel")->currentText(), QString("AFR Dev"));
    QCOMPARE(Page().review().layout().PanelOf("AFR Dev"), 1);
    Chart()->setFocus();
    KeepShots(&p_->window(), "review-panels");
  }

  // Ctrl-X: the span between the cursors as CSV, the math channels after the recorded ones.
  void ExportSpanByKeys(double a, double b) {
    const QString csv = p_->dir.path() + "/span.csv";
    p_->program->dialogs.paths.push_back(csv.toStdString());
    Chart()->setFocus();
    Key(Qt::Key_X, Qt::ControlModifier);
    QFile exported(csv);
    QVERIFY(exported.open(QIODevice::ReadOnly));
    const QByteArray header = exported.readLine().trimmed();
    QVERIFY2(header.contains(",AFR (x10),Injector Duty,AFR Error,AFR Dev,"), header.constData());
    const QList<QByteArray> names = header.split(',');
    const QList<QByteArray> row = exported.readLine().trimmed().split(',');
    QCOMPARE(row.size(), names.size());
    const double time = row[0].toDouble();
    QVERIFY(time >= a - 0.001 && time <= b);  // written to the millisecond
    const double afr = row[names.indexOf("AFR (x10)")].toDouble();
    QVERIFY(std::abs(row[names.indexOf("AFR Dev")].toDouble() - (afr / 10.0 - 14.7)) < 0.002);
  }

  void ScatterAndHistogramByKeys(double a, double b) {
    Key(Qt::Key_D, Qt::ControlModifier | Qt::ShiftModifier);
    auto* view = p_->window().findChild<DistributionView*>("DatalogDistribution");
    QVERIFY(view && view->isVisible());
    QVERIFY(QTest::qWaitForWindowExposed(view));
    QCOMPARE(Accessible(view->plot(), QAccessible::Name),
             QString("Scatter of AFR against RPM coloured by MAP"));
    auto* span = view->findChild<QComboBox*>("DistributionSpan");
    span->setFocus();
    QTest::keyClick(span, Qt::Key_Down);  // Records: between the cursors
    const review::RecordRange records = view->Records();
    const std::vector<double>& times = Page().log().Times();
    QVERIFY(records.end > records.begin);
    QVERIFY(records.end - records.begin < times.size() / 2);
    QVERIFY(times[records.begin] >= a - 0.06 && times[records.end - 1] <= b + 0.06);
    QVERIFY2(Accessible(view->plot(), QAccessible::Value)
                 .startsWith(QString("%1 records drawn").arg(records.end - records.begin)),
             qPrintable(Accessible(view->plot(), QAccessible::Value)));
    KeepShots(view, "review-scatter");
    auto* mode = view->findChild<QComboBox*>("DistributionMode");
    mode->setFocus();
    QTest::keyClick(mode, Qt::Key_Down);  // Plot: Histogram
    QCOMPARE(Accessible(view->plot(), QAccessible::Name), QString("Histogram of RPM"));
    QTest::keyClick(mode, Qt::Key_Escape);
    QVERIFY(!view->isVisible());
  }

  // Ctrl-Shift-O: a second drive laid over the first and aligned at both "Launch" markers.
  void SecondLogByKeys() {
    const std::string second_path = WriteDrive("second.sl1", 50.0, 12.0, 10.0);
    p_->program->dialogs.paths.push_back(second_path);
    WhenModal<SecondLogDialog>([](SecondLogDialog* dialog) {
      QApplication::setActiveWindow(dialog);
      QTest::keyClick(In(dialog), Qt::Key_Return);
    });
    QVERIFY(p_->Activate());
    QApplication::setActiveWindow(&p_->window());
    Chart()->setFocus();
    Key(Qt::Key_O, Qt::ControlModifier | Qt::ShiftModifier);
    ReviewSession& review = Page().review();
    QVERIFY(review.HasSecond());
    QCOMPARE(review.alignment().offset, 8.0);
    auto* table = p_->Find<QTableWidget>("DatalogCursorValues");
    QCOMPARE(table->horizontalHeaderItem(5)->text(), QString("A - 2nd"));
    // Cursor A one second on; the second drive's record at 8 s less, read from its file apart.
    Typed('>');
    const double at = *Chart()->CursorA();
    const std::optional<double> theirs = ReadLog(second_path).ValueAt(kChannelAfr, at - 8.0);
    const std::optional<double> mine = Page().log().ValueAt(kChannelAfr, at);
    QVERIFY(theirs && mine);
    const int decimals = kChannels[kChannelAfr].decimals;
    QCOMPARE(Cell(2 + kChannelAfr, 5),
             QString::fromStdString(FixedText(*mine - *theirs, decimals)));
    // The math channel over the second drive: AFR Dev's difference is the AFR's over ten.
    QCOMPARE(Cell(kMathRow + 2, 5), QString::fromStdString(FixedText((*mine - *theirs) / 10, 3)));
    QVERIFY(Cell(kMathRow + 2, 4) != "-");
    KeepShots(&p_->window(), "review-second-log");
  }
};

VELA_GUI_TEST(LogReviewEndToEndTest)

}  // namespace log_review_end_to_end_test

#include "log_review_end_to_end_test.moc"
