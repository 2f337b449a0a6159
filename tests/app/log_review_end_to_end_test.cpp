// A drive of the simulated engine reviewed from the keyboard alone on the DataLogging tab: the
// cursors moved and the view zoomed to the span between them, a math channel refused and then
// added in its dialog (the layout bar and the span's export by keys: DatalogChartTest), the
// scatter of AFR against RPM coloured by MAP and the histogram, a second drive loaded, aligned at
// its marker and compared in the "A - 2nd" column, the marker list and the second log removed, the
// math channel kept beside the log, a click on the scatter on the way, and a math channel renamed
// in its dialog. Set VELA_SHOTS to a folder to keep pictures at 1280x720 and 1024x600.
#include <QAccessible>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFile>
#include <QPushButton>
#include <QSpinBox>
#include <QTableWidget>
#include <QtTest>
#include <cmath>
#include <functional>

#include "app/pages/datalog_page.h"
#include "app/review/distribution_view.h"
#include "app/review/marker_list_panel.h"
#include "app/review/math_channel_dialog.h"
#include "app/review/second_log_dialog.h"
#include "app/sessions/review_session.h"
#include "datalog/files/log_export.h"
#include "datalog/files/log_file.h"
#include "datalog/review/distribution.h"
#include "datalog/review/log_span.h"
#include "datalog/review/review_file.h"
#include "running_program.h"
#include "support/gui_test_main.h"
#include "support/when_modal.h"

using namespace vela;

namespace log_review_end_to_end_test {

constexpr int kMathRow = kChannelCount + 2;  // the read-out's first math channel row

using testing::AccessibleText;

class LogReviewEndToEndTest : public QObject {
  Q_OBJECT

  std::unique_ptr<testing::RunningProgram> p_;

  DatalogPage& Page() { return p_->window().datalog_page(); }
  DatalogChart* Chart() { return Page().chart(); }

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

  bool LoadFile(const std::string& path) { return testing::LoadLogFile(*p_->program, path); }
  // A chord of the review keys on the chart, from the DataLogging tab.
  bool PageChord(Qt::Key key) {
    if (!p_->Activate()) return false;
    // A dialog or view closed before may leave the application without an active window while
    // the display still counts the main window active: the chords' shortcuts need it.
    QApplication::setActiveWindow(&p_->window());
    p_->window().tabs()->setCurrentWidget(Page().parentWidget());
    Chart()->setFocus();
    QTest::keyClick(Chart(), key, Qt::ControlModifier | Qt::ShiftModifier);
    return true;
  }

  QString Cell(int row, int column) {
    const QTableWidgetItem* item = p_->Find<QTableWidget>("DatalogCursorValues")->item(row, column);
    return item ? item->text() : QString();
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
    QVERIFY(p_->LoadDrive("first.sl1", 60.0, {}, 20.0));
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
    Typed('Z');  // the room left beside the span: the chart keys' own tests
    const TimeAxis& view = Page().log().axis;
    QVERIFY(view.min < a && view.max > b && view.max - view.min < 1.5 * (b - a));

    AddMathChannelByKeys();
    ScatterAndHistogramByKeys(a, b);
    SecondLogByKeys();

    // The math channel saved beside the log and read back with it.
    const std::string first = (p_->dir.path() + "/first.sl1").toStdString();
    p_->program->dialogs.paths.push_back(first);
    p_->Find<QPushButton>("Command6_2")->click();
    QFile side(QString::fromStdString(review::ReviewPathFor(first)));
    QVERIFY(side.open(QIODevice::ReadOnly));
    QVERIFY(side.readAll().contains("\nmath \"AFR Dev\" = AFR / 10 - 14.7"));
    Page().review().SetMath({});
    QVERIFY(LoadFile(first));
    QCOMPARE(Page().review().math()[2].name, std::string("AFR Dev"));
    RenameMathChannel();
  }

 private:
  // A math channel renamed in its dialog (refused under a later channel's name) is renamed in
  // the page's lists and drawn under its new name; removed, it leaves them.
  void RenameMathChannel() {
    ReviewSession& review = Page().review();
    std::vector<review::MathChannel> math = review.math();
    math.push_back({"Duty x2", "\"Injector Duty\" * 2"});
    review.SetMath(math);
    QString refusal_of_taken;
    MathChannelsDialog dialog(review, &p_->window());
    WhenModal<MathChannelEditor>([&](MathChannelEditor* editor) {
      auto* name = editor->findChild<QLineEdit*>("MathChannelName");
      name->clear();
      QTest::keyClicks(name, "duty X2");  // a later channel's name
      refusal_of_taken = editor->Refusal();
      name->clear();
      QTest::keyClicks(name, "Duty Calc");
      if (editor->Refusal().isEmpty()) editor->accept();
    });
    dialog.Edit(0);
    QVERIFY2(refusal_of_taken.contains("another math channel"), qPrintable(refusal_of_taken));
    QCOMPARE(p_->Find<QCheckBox>("DatalogMathCheck_0")->text(), QString("Duty Calc"));
    auto* axis = p_->Find<QComboBox>("DatalogAxisChannel");
    QCOMPARE(axis->itemText(kChannelCount), QString("Duty Calc"));
    // Unticked, it leaves the chart; removed, it leaves the lists.
    p_->Find<QCheckBox>("DatalogMathCheck_0")->setChecked(false);
    const auto drawn = [this](const std::string& name) {
      for (const PlannedLine& line : Page().chart()->Plan().lines) {
        if (line.name == name) return true;
      }
      return false;
    };
    QVERIFY(!drawn("Duty Calc") && drawn("Duty x2"));
    dialog.list()->setCurrentRow(0);
    dialog.findChild<QPushButton*>("MathChannelsRemove")->click();
    QCOMPARE(axis->count(), kChannelCount + 2);  // AFR Error, AFR Dev: Duty x2 now refused
    QCOMPARE(p_->Find<QCheckBox>("DatalogMathCheck_0")->text(), QString("AFR Error"));
  }

  // The editor refuses an expression at the place of its fault, and takes it mended.
  void AddMathChannelByKeys() {
    QString focus_at_start;
    QString check_text;
    bool ok_while_refused = true;
    WhenModal<MathChannelsDialog>([&, this](MathChannelsDialog* list) {
      WhenModal<MathChannelEditor>([&](MathChannelEditor* editor) {
        QApplication::setActiveWindow(editor);
        focus_at_start = In(editor)->objectName();
        QTest::keyClicks(In(editor), "AFR Dev");
        QTest::keyClick(In(editor), Qt::Key_Tab);
        QTest::keyClicks(In(editor), "AFR / 10 - 14.7 + #");
        check_text = editor->findChild<QLabel*>("MathChannelCheck")->text();
        ok_while_refused =
            editor->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok)->isEnabled();
        for (int i = 0; i < 4; ++i) QTest::keyClick(In(editor), Qt::Key_Backspace);
        QTest::keyClick(In(editor), Qt::Key_Return);
      });
      QApplication::setActiveWindow(list);
      QTest::keyClick(In(list), Qt::Key_A, Qt::AltModifier);
      QTest::keyClick(In(list), Qt::Key_C, Qt::AltModifier);
    });
    Key(Qt::Key_E, Qt::ControlModifier | Qt::ShiftModifier);
    QCOMPARE(focus_at_start, QString("MathChannelName"));
    QVERIFY2(check_text.contains("character 19"), qPrintable(check_text));  // the '#'
    QVERIFY(!ok_while_refused);
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

  void ScatterAndHistogramByKeys(double a, double b) {
    QVERIFY(PageChord(Qt::Key_D));
    auto* view = p_->window().findChild<DistributionView*>("DatalogDistribution");
    QVERIFY(view && view->isVisible());
    QVERIFY(QTest::qWaitForWindowExposed(view));
    QCOMPARE(AccessibleText(view->plot(), QAccessible::Name),
             QString("Scatter of AFR against RPM coloured by MAP"));
    auto* span = view->findChild<QComboBox*>("DistributionSpan");
    span->setFocus();
    QTest::keyClick(span, Qt::Key_Down);  // Records: between the cursors
    const review::RecordRange records = view->Records();
    const std::vector<double>& times = Page().log().Times();
    QVERIFY(records.end > records.begin);
    QVERIFY(records.end - records.begin < times.size() / 2);
    QVERIFY(times[records.begin] >= a - 0.06 && times[records.end - 1] <= b + 0.06);
    QVERIFY2(AccessibleText(view->plot(), QAccessible::Value)
                 .startsWith(QString("%1 records drawn").arg(records.end - records.begin)),
             qPrintable(AccessibleText(view->plot(), QAccessible::Value)));
    testing::KeepShots(view, "review-scatter");
    // A click puts cursor A on the record nearest to it, of the records and grid as drawn when
    // clicked (cursor A then changes the span).
    const QRect plot = view->plot()->PlotRect();
    const QPoint click(plot.left() + plot.width() / 4, plot.top() + plot.height() / 2);
    const std::optional<std::size_t> nearest = review::NearestRecord(
        review::RecordedColumn(Page().log(), kChannelRpm),
        review::RecordedColumn(Page().log(), kChannelAfr), records, view->density().grid,
        click.x() - plot.left(), click.y() - plot.top());
    QTest::mouseClick(view->plot(), Qt::LeftButton, {}, click);
    QVERIFY(nearest);
    QCOMPARE(*Chart()->CursorA(), times[*nearest]);
    auto* mode = view->findChild<QComboBox*>("DistributionMode");
    mode->setFocus();
    QTest::keyClick(mode, Qt::Key_Down);  // Plot: Histogram
    QCOMPARE(AccessibleText(view->plot(), QAccessible::Name), QString("Histogram of RPM"));
    QTest::keyClick(mode, Qt::Key_Escape);
    QVERIFY(!view->isVisible());
  }

  // Ctrl-Shift-O: a second drive laid over the first and aligned at both "Launch" markers; the
  // marker list and the align dialog, which removes it again.
  void SecondLogByKeys() {
    const std::string second_path =
        p_->WriteDrive("second.sl1", 50.0, {{10.0, 500.0, 9000.0, 0.0, 250.0}}, 12.0);
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
    // The second log's own value in its column.
    QCOMPARE(Cell(2 + kChannelAfr, 4), QString::fromStdString(FixedText(*theirs, decimals)));

    // Enter in the marker list moves cursor A to the marker.
    MarkerListPanel* markers = Page().marker_list();
    QCOMPARE(markers->item(0, 2)->text(), QString("Launch"));
    QVERIFY(PageChord(Qt::Key_L));
    QTRY_VERIFY(markers->hasFocus());
    markers->setCurrentCell(0, 0);
    QTest::keyClick(markers, Qt::Key_Return);
    QCOMPARE(*Page().chart()->CursorA(), 20.0);
    testing::KeepShots(&p_->window(), "review-second-log");
    // The align dialog names the second log and takes it away again.
    WhenModal<SecondLogDialog>([](SecondLogDialog* dialog) {
      QCOMPARE(dialog->windowTitle(), QString("Align Second Log: second.sl1"));
      dialog->findChild<QPushButton*>("SecondLogRemove")->click();
    });
    QVERIFY(PageChord(Qt::Key_A));
    QVERIFY(!review.HasSecond());
    QCOMPARE(table->columnCount(), 4);
  }
};

VELA_GUI_TEST(LogReviewEndToEndTest)

}  // namespace log_review_end_to_end_test

#include "log_review_end_to_end_test.moc"
