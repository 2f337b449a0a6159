// The review views beside the datalog chart, on the whole program with a drive of the simulated
// engine loaded as a chart file: a math channel refused at the place of its fault and then
// accepted, kept beside the log and exported; a scatter of AFR against RPM over the cursors' span
// and a click on it; a second log aligned at a marker with its values and deltas in the cursor
// read-out. Set VELA_SHOTS to a folder to keep pictures at 1280x720 and 1024x600.
#include <QAccessible>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFile>
#include <QPushButton>
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
#include "running_program.h"
#include "sim/engine/drive_log.h"
#include "support/gui_test_main.h"
#include "support/when_modal.h"

using namespace vela;

namespace review_views_test {

class ReviewViewsTest : public QObject {
  Q_OBJECT

  std::unique_ptr<testing::RunningProgram> p_;

  DatalogPage& Page() { return p_->window().datalog_page(); }

  // A drive of `seconds` written as a chart file, with a marker "Launch" at `launch` seconds.
  std::string WriteDrive(const QString& name, double seconds, double launch, double fuel_error) {
    const std::string path = (p_->dir.path() + "/" + name).toStdString();
    sim::SimOptions engine;
    engine.fuel_errors = {{fuel_error, 500.0, 9000.0, 0.0, 250.0}};
    std::string error;
    if (!sim::WriteDriveLog(engine, p_->editors().image(), seconds, path, &error)) return {};
    QFile file(QString::fromStdString(path));
    if (!file.open(QIODevice::ReadOnly)) return {};
    DatalogLog log;
    DecodeLogFile(file.readAll().toStdString(), log);
    file.close();
    log.AddMarkerAt(launch, "Launch");
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) return {};
    file.write(QByteArray::fromStdString(EncodeLogFile(log)));
    return path;
  }

  bool Load(const std::string& path) {
    p_->program->dialogs.paths.push_back(path);
    p_->Find<QPushButton>("Command6_1")->click();
    return Page().log().RecordCount() > 0;
  }

  template <class T>
  void WhenModal(std::function<void(T*)> act) {
    gui_test::WhenModal<T>(this, std::move(act));
  }

  bool PageChord(Qt::Key key) {
    if (!p_->Activate()) return false;
    p_->window().tabs()->setCurrentWidget(Page().parentWidget());
    Page().chart()->setFocus();
    QTest::keyClick(Page().chart(), key, Qt::ControlModifier | Qt::ShiftModifier);
    return true;
  }

  QString Cell(int row, int column) {
    const QTableWidgetItem* item = p_->Find<QTableWidget>("DatalogCursorValues")->item(row, column);
    return item ? item->text() : QString();
  }

  void KeepShot(QWidget* widget, const QString& name, QSize size) {
    widget->resize(size);
    QTest::qWait(150);
    const QString folder = qEnvironmentVariable("VELA_SHOTS");
    if (!folder.isEmpty()) {
      widget->grab().save(
          QString("%1/%2-%3x%4.png").arg(folder, name).arg(size.width()).arg(size.height()));
    }
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

  void mathChannelIsRefusedAtItsFaultThenAcceptedKeptAndExported() {
    const std::string path = WriteDrive("drive.sl1", 60.0, 20.0, 0.0);
    QVERIFY(Load(path));
    ReviewSession& review = Page().review();
    // A log without a review file starts with the defaults.
    QCOMPARE(review.math().size(), std::size_t{2});
    int refused_at = -1;
    bool ok_while_refused = true;
    QString check_text;
    WhenModal<MathChannelsDialog>([&](MathChannelsDialog* list) {
      WhenModal<MathChannelEditor>([&](MathChannelEditor* editor) {
        auto* name = editor->findChild<QLineEdit*>("MathChannelName");
        auto* expression = editor->findChild<QLineEdit*>("MathChannelExpression");
        QTest::keyClicks(name, "Lean");
        QTest::keyClicks(expression, "AFR / 10 > 15 + # 2");
        refused_at = editor->RefusedAt();
        check_text = editor->findChild<QLabel*>("MathChannelCheck")->text();
        auto* box = editor->findChild<QDialogButtonBox*>();
        ok_while_refused = box->button(QDialogButtonBox::Ok)->isEnabled();
        expression->clear();
        QTest::keyClicks(expression, "AFR / 10 > 15 + RPM[-1] * 0");
        if (editor->Refusal().isEmpty()) box->button(QDialogButtonBox::Ok)->click();
      });
      list->findChild<QPushButton*>("MathChannelsAdd")->click();
      list->accept();
    });
    QVERIFY(PageChord(Qt::Key_E));
    QCOMPARE(refused_at, 16);  // the '#'
    QVERIFY2(check_text.contains("character 17"), qPrintable(check_text));
    QVERIFY(!ok_while_refused);
    QCOMPARE(review.math().size(), std::size_t{3});
    const review::MathColumn* lean = review.MathColumnNamed("lean");
    QVERIFY(lean && !lean->error);
    QCOMPARE(lean->values.size(), Page().log().RecordCount());
    // In the cursor read-out under the recorded channels.
    Page().chart()->SetCursors(30.0, std::nullopt);
    QCOMPARE(Cell(kChannelCount + 4, 0), QString("Lean"));
    QVERIFY(Cell(kChannelCount + 4, 1) == "0.000" || Cell(kChannelCount + 4, 1) == "1.000");

    // Exported like a recorded channel, after them.
    const QString csv = p_->dir.path() + "/drive.csv";
    p_->program->dialogs.paths.push_back(csv.toStdString());
    p_->Find<QPushButton>("DatalogExportCsv")->click();
    QFile exported(csv);
    QVERIFY(exported.open(QIODevice::ReadOnly));
    QVERIFY(exported.readLine().contains(",AFR (x10),Injector Duty,AFR Error,Lean,"));
    // Saved beside the log and read back with it.
    p_->program->dialogs.paths.push_back(path);
    p_->Find<QPushButton>("Command6_2")->click();
    QFile side(QString::fromStdString(review::ReviewPathFor(path)));
    QVERIFY(side.open(QIODevice::ReadOnly));
    QVERIFY(side.readAll().contains("math Lean = AFR / 10 > 15 + RPM[-1] * 0"));
    review.SetMath({});
    QVERIFY(Load(path));
    QCOMPARE(review.math().size(), std::size_t{3});
    QCOMPARE(review.math()[2].name, std::string("Lean"));
  }

  void scatterCountsTheSpanAndAClickPutsCursorAOnTheNearestRecord() {
    QVERIFY(Load(WriteDrive("drive.sl1", 120.0, 20.0, 0.0)));
    Page().chart()->SetCursors(10.0, 70.0);
    QVERIFY(PageChord(Qt::Key_D));
    DistributionView* view = Page().OpenDistribution();
    view->SetBetweenCursors(true);
    view->ShowScatter("RPM", "AFR", "MAP");
    const DatalogLog& log = Page().log();
    // Brute force: the records in [10, 70] with both RPM and AFR.
    std::uint64_t expected = 0;
    for (std::size_t i = 0; i < log.RecordCount(); ++i) {
      const double t = log.Times()[i];
      if (t >= 10.0 && t <= 70.0 && log.ValueAt(kChannelRpm, t) && log.ValueAt(kChannelAfr, t)) {
        ++expected;
      }
    }
    QVERIFY(expected > 1000);
    QCOMPARE(view->density().points + view->density().outside, expected);
    QCOMPARE(view->density().outside, std::uint64_t{0});
    QAccessibleInterface* face = QAccessible::queryAccessibleInterface(view->plot());
    QVERIFY(face);
    QCOMPARE(face->role(), QAccessible::Chart);
    QCOMPARE(face->text(QAccessible::Name), QString("Scatter of AFR against RPM coloured by MAP"));
    QVERIFY(face->text(QAccessible::Value).startsWith(QString("%1 records").arg(expected)));

    // A click a quarter of the way in: cursor A lands on a record no farther from the click than
    // any other record of the span (in pixels, as drawn).
    const review::ScatterGrid grid = view->density().grid;  // as drawn when clicked
    const QRect plot = view->plot()->PlotRect();
    const QPoint click(plot.left() + plot.width() / 4, plot.top() + plot.height() / 2);
    QTest::mouseClick(view->plot(), Qt::LeftButton, {}, click);
    QVERIFY(Page().chart()->CursorA());
    const auto distance = [&](std::size_t i) {
      if (i >= log.Series(kChannelRpm).values.size() || i >= log.Series(kChannelAfr).values.size())
        return std::nan("");
      const double x = (log.Series(kChannelRpm).values[i] - grid.x_low) /
                       (grid.x_high - grid.x_low) * grid.width;
      const double y = (grid.y_high - log.Series(kChannelAfr).values[i]) /
                       (grid.y_high - grid.y_low) * grid.height;
      return std::hypot(x - (click.x() - plot.left()), y - (click.y() - plot.top()));
    };
    double best = 1e300, chosen = -1.0;
    for (std::size_t i = 0; i < log.RecordCount(); ++i) {
      const double t = log.Times()[i];
      if (t < 10.0 || t > 70.0 || std::isnan(distance(i))) continue;
      best = std::min(best, distance(i));
      if (std::abs(t - *Page().chart()->CursorA()) < 1e-9) chosen = distance(i);
    }
    QVERIFY(chosen >= 0.0);
    QVERIFY(std::abs(chosen - best) < 1e-6);
    KeepShot(view, "scatter", {1024, 600});
    view->ShowHistogram("RPM");
    QVERIFY(face->text(QAccessible::Name) == "Histogram of RPM");
    KeepShot(view, "histogram", {1024, 600});
  }

  void renamedMathChannelIsFollowedByItsUsersTheLayoutAndTheLists() {
    QVERIFY(Load(WriteDrive("drive.sl1", 30.0, 10.0, 0.0)));
    ReviewSession& review = Page().review();
    std::vector<review::MathChannel> math = review.math();
    math.push_back({"Duty x2", "\"Injector Duty\" * 2"});
    review.SetMath(math);
    review::ChartLayout layout = review.layout();
    layout.AddPanel();
    layout.Place("Injector Duty", 1);
    review.SetLayout(layout);
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
    QCOMPARE(review.math()[0].name, std::string("Duty Calc"));
    QCOMPARE(review.math()[2].expression, std::string("\"Duty Calc\" * 2"));
    QVERIFY(!review.math_columns()[2].error);
    QCOMPARE(review.layout().PanelOf("Duty Calc"), 1);
    QCOMPARE(Page().chart()->Layout(), review.layout());
    QCOMPARE(p_->Find<QCheckBox>("DatalogMathCheck_0")->text(), QString("Duty Calc"));
    auto* axis = p_->Find<QComboBox>("DatalogAxisChannel");
    QCOMPARE(axis->itemText(kChannelCount), QString("Duty Calc"));
    QCOMPARE(axis->count(), kChannelCount + 3);
    // Unticked, it leaves the chart; removed, it leaves the layout and the lists.
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
    QVERIFY(!review.layout().PanelOf("Duty Calc"));
    QCOMPARE(axis->count(), kChannelCount + 1);  // Duty x2 now refused
    QCOMPARE(p_->Find<QCheckBox>("DatalogMathCheck_0")->text(), QString("AFR Error"));
    // A new channel under the removed one's name is a new channel: shown.
    math = review.math();
    math.push_back({"duty calc", "RPM / 2"});
    review.SetMath(math);
    QVERIFY(review.MathShown("duty calc") && drawn("duty calc"));
  }

  void secondLogAlignedAtAMarkerShowsItsValuesAndDeltas() {
    QVERIFY(Load(WriteDrive("first.sl1", 60.0, 20.0, 0.0)));
    const std::string second_path = WriteDrive("second.sl1", 50.0, 12.0, 10.0);
    p_->program->dialogs.paths.push_back(second_path);
    WhenModal<SecondLogDialog>([](SecondLogDialog* dialog) {
      dialog->ChooseMarkers(0, 0);
      dialog->accept();
    });
    QVERIFY(PageChord(Qt::Key_O));
    ReviewSession& review = Page().review();
    QVERIFY(review.HasSecond());
    QCOMPARE(review.alignment().offset, 8.0);
    Page().chart()->SetCursors(25.0, std::nullopt);
    // The second log's own record at 17 s of its time, read from its file apart.
    QFile file(QString::fromStdString(second_path));
    QVERIFY(file.open(QIODevice::ReadOnly));
    DatalogLog second;
    DecodeLogFile(file.readAll().toStdString(), second);
    const std::optional<double> theirs = second.ValueAt(kChannelRpm, 17.0);
    const std::optional<double> mine = Page().log().ValueAt(kChannelRpm, 25.0);
    QVERIFY(theirs && mine);
    const int decimals = kChannels[kChannelRpm].decimals;
    QCOMPARE(Cell(2 + kChannelRpm, 4), QString::fromStdString(FixedText(*theirs, decimals)));
    QCOMPARE(Cell(2 + kChannelRpm, 5),
             QString::fromStdString(FixedText(*mine - *theirs, decimals)));
    // The marker list names the first log's marker; Enter on it puts cursor A there.
    MarkerListPanel* markers = Page().marker_list();
    QCOMPARE(markers->rowCount(), 1);
    QCOMPARE(markers->item(0, 2)->text(), QString("Launch"));
    QVERIFY(PageChord(Qt::Key_L));
    QVERIFY(markers->hasFocus());
    markers->setCurrentCell(0, 0);
    QTest::keyClick(markers, Qt::Key_Return);
    QCOMPARE(*Page().chart()->CursorA(), 20.0);
    KeepShot(&p_->window(), "second-log", {1280, 720});
    KeepShot(&p_->window(), "second-log", {1024, 600});
    // The align dialog names the second log and takes it away again.
    WhenModal<SecondLogDialog>([](SecondLogDialog* dialog) {
      QCOMPARE(dialog->windowTitle(), QString("Align Second Log: second.sl1"));
      dialog->findChild<QPushButton*>("SecondLogRemove")->click();
    });
    QVERIFY(PageChord(Qt::Key_A));
    QVERIFY(!review.HasSecond());
    QCOMPARE(Page().findChild<QTableWidget*>("DatalogCursorValues")->columnCount(), 4);
  }
};

VELA_GUI_TEST(ReviewViewsTest)

}  // namespace review_views_test

#include "review_views_test.moc"
