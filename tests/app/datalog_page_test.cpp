// The DataLogging tab in the whole window: the channel boxes read from and written to
// DatalogSetup.txt and never changed by a loaded log, the chart's make-up, logging ended by a lost
// link or no link at all, and the load dialog that lists chart files by their content.
#include "app/pages/datalog_page.h"

#include <QCheckBox>
#include <QFile>
#include <QLabel>
#include <QListView>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

#include "app/sessions/link_session.h"
#include "base/qt/qt_platform.h"
#include "datalog/files/datalog_files.h"
#include "datalog/files/log_file.h"
#include "program_fixture.h"
#include "support/gui_test_main.h"

using namespace vela;

class DatalogPageTest : public QObject {
  Q_OBJECT

  static QString SetupText(testing::TestProgram& program) {
    QFile file(QString::fromStdString(program.setup.ProgramInfoFolder()) + "DatalogSetup.txt");
    return file.open(QIODevice::ReadOnly) ? QString::fromLatin1(file.readAll()) : QString();
  }

  static void Write(const QString& path, const std::string& bytes) {
    QVERIFY(testing::WriteBytes(path, bytes));
  }

  // The names the view of `dialog` lists in its folder, once the folder has been read.
  static QStringList Listed(QFileDialog& dialog) {
    auto* view = dialog.findChild<QListView*>("listView");
    QStringList names;
    if (!view) return names;
    for (int row = 0; row < view->model()->rowCount(view->rootIndex()); ++row) {
      names << view->model()->index(row, 0, view->rootIndex()).data().toString();
    }
    names.sort();
    return names;
  }

 private slots:
  // A lost link ends the log and the button offers a start again; a log started without an ECU
  // stops at the next supervision tick and says why.
  void aLogEndsWithTheLinkOrWithoutOneAndTheButtonOffersAStartAgain() {
    QTemporaryDir dir;
    testing::TestProgram program(dir.path(), "/dev/no-such-tty");
    QVERIFY(program.window->Load());
    DatalogPage& page = program.window->datalog_page();
    auto* start_stop = program.window->findChild<QPushButton*>("Command6_0");
    start_stop->click();
    QVERIFY(page.Logging());
    QCOMPARE(start_stop->text(), QString("Stop DataLogging"));
    emit program.link.LinkLost();
    QVERIFY(!page.Logging());
    QCOMPARE(start_stop->text(), QString("Start DataLogging"));
    QVERIFY(QFile::exists(QString::fromStdString(program.folders.datalogs) + "Recording.journal"));

    start_stop->click();
    QVERIFY(page.Logging());
    QTRY_VERIFY_WITH_TIMEOUT(!page.Logging(), 1000);
    QCOMPARE(start_stop->text(), QString("Start DataLogging"));
    QCOMPARE(program.window->findChild<QLabel*>("DatalogStatus")->text(),
             QString("Logging stopped: the ECU is not connected"));
    QTRY_VERIFY(program.window->findChild<QLabel*>("DatalogState")->isHidden());
  }

  // The channel boxes come from DatalogSetup.txt. A log whose series block is damaged: its
  // records load, but the channel settings (the check boxes, DatalogSetup.txt and what the next
  // recording takes) stay as the tuner set them. A box changed is saved at once.
  void aDamagedLogNeverChangesWhatTheNextRecordingTakes() {
    QTemporaryDir dir;
    const QString program_folder = dir.path() + "/MORVANE Programs Info/MORVANE VELA/";
    QDir().mkpath(program_folder + "Datalogs");
    const std::string setup = "Channel 0 = 1\r\nChannel 1 = 1\r\nChannel 2 = 0\r\n";
    Write(program_folder + "DatalogSetup.txt", setup);
    DatalogLog saved;
    ChannelValues values{};
    values.fill(50.0);
    for (int i = 0; i < 100; ++i) saved.Append(i * 0.05, i * 0.05, values, 0x0FFF);
    std::string bytes = EncodeLogFile(saved);
    bytes[kLogHeaderSize + kBlockOverhead] ^= 0x01;  // inside the series block
    Write(program_folder + "Datalogs/pull.SL1", bytes);

    testing::TestProgram program(dir.path(), "/dev/no-such-tty");
    QVERIFY(program.window->Load());
    DatalogPage& page = program.window->datalog_page();
    QVERIFY(program.window->findChild<QWidget*>("TChart1"));
    auto* map_box = program.window->findChild<QCheckBox*>("Check2_1");
    auto* afr_box = program.window->findChild<QCheckBox*>("Check2_11");
    QCOMPARE(map_box->text(), QString("MAP"));
    QCOMPARE(afr_box->text(), QString("AFR Ratio (x10)"));
    QVERIFY(map_box->isChecked());
    QVERIFY(!afr_box->isChecked());  // the short file's last line, read again
    QVERIFY(!page.log().Series(2).active);
    // Read as written: the start-up does not rewrite it.
    QCOMPARE(SetupText(program), QString::fromStdString(setup));

    program.dialogs.paths.push_back((program_folder + "Datalogs/pull.SL1").toStdString());
    program.window->findChild<QPushButton*>("Command6_1")->click();
    QCOMPARE(page.log().RecordCount(), std::size_t{100});
    QVERIFY(program.messages.shown.back().lines.size() >= 2);
    QVERIFY(program.messages.shown.back().lines[1].find("damaged") != std::string::npos);
    for (int n = 0; n < kChannelCount; ++n) QVERIFY(page.log().Series(n).active);  // all drawn
    QCOMPARE(SetupText(program), QString::fromStdString(setup));

    // The next recording takes the channels of the boxes, not those of the loaded log.
    page.Command6(0);
    page.FrameTaken(live::Frame{});
    page.Command6(0);
    QCOMPARE(page.log().RecordCount(), std::size_t{1});
    QCOMPARE(page.log().Series(0).points, std::size_t{1});
    QCOMPARE(page.log().Series(2).points, std::size_t{0});
    QVERIFY(!page.log().Series(2).active);

    afr_box->setChecked(true);
    QVERIFY(SetupText(program).endsWith("Channel 10 = 0\r\nChannel 11 = 1\r\n"));
    QVERIFY(page.capture().ChannelEnabled[11] != 0);  // the next recording's
  }

  void theLoadDialogsAllDataLogsListsChartFilesByTheirContent() {
    QTemporaryDir dir;
    const std::string chart = EncodeLogFile(DatalogLog());
    Write(dir.path() + "/pull", chart);  // saved under a name without a dot
    Write(dir.path() + "/run.sl1", chart);
    Write(dir.path() + "/old.sl2", "not a log, but named like one");
    Write(dir.path() + "/notes", "Channel 0 = 1\r\n");
    Write(dir.path() + "/base.sm1", std::string(1023, '\x10'));
    const FileDialogs::ContentListing listing{1, kLogFileHeadBytes, LooksLikeLogFile};
    const std::unique_ptr<QFileDialog> dialog =
        MakeListingDialog(nullptr, std::string(kDatalogFilter), std::string(kLoadDatalogTitle),
                          dir.path().toStdString(), listing);
    dialog->show();
    QTRY_COMPARE(Listed(*dialog), QStringList{"run.sl1"});
    const QStringList filters = dialog->nameFilters();
    QCOMPARE(filters.size(), 2);
    dialog->selectNameFilter(filters[1]);
    emit dialog->filterSelected(filters[1]);
    QTRY_COMPARE(Listed(*dialog), (QStringList{"old.sl2", "pull", "run.sl1"}));
    // A file listed by its content can be chosen.
    auto* view = dialog->findChild<QListView*>("listView");
    const QModelIndex pull = view->model()->index(1, 0, view->rootIndex());
    QVERIFY(view->model()->flags(pull) & Qt::ItemIsEnabled);
    QVERIFY(view->model()->flags(pull) & Qt::ItemIsSelectable);
  }
};

VELA_GUI_TEST(DatalogPageTest)
#include "datalog_page_test.moc"
