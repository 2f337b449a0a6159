// The DataLogging tab in the whole window: the channel boxes read from and written to
// DatalogSetup.txt, the chart's make-up, and a lost link ending the log.
#include "app/datalog_page.h"

#include <QCheckBox>
#include <QFile>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

#include "app/link_session.h"
#include "program_fixture.h"
#include "support/gui_test_main.h"

using namespace vela;

class DatalogPageTest : public QObject {
  Q_OBJECT

  static QString SetupText(testing::TestProgram& program) {
    QFile file(QString::fromStdString(program.setup.ProgramInfoFolder()) + "DatalogSetup.txt");
    return file.open(QIODevice::ReadOnly) ? QString::fromLatin1(file.readAll()) : QString();
  }

 private slots:
  void theChannelBoxesComeFromDatalogSetupAndAChangeIsSavedAtOnce() {
    QTemporaryDir dir;
    const QString program_folder = dir.path() + "/MORVANE Programs Info/MORVANE VELA/";
    QDir().mkpath(program_folder);
    QFile file(program_folder + "DatalogSetup.txt");
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("Channel 0 = 1\r\nChannel 1 = 0\r\nChannel 2 = 1\r\n");
    file.close();
    testing::TestProgram program(dir.path(), "/dev/no-such-tty");
    QVERIFY(program.window->Load());
    DatalogPage& page = program.window->datalog_page();
    QVERIFY(program.window->findChild<QWidget*>("TChart1"));
    auto* map_box = program.window->findChild<QCheckBox*>("Check2_1");
    auto* afr_box = program.window->findChild<QCheckBox*>("Check2_11");
    QCOMPARE(map_box->text(), QString("MAP"));
    QCOMPARE(afr_box->text(), QString("AFR Ratio (x10)"));
    QVERIFY(!map_box->isChecked());
    QVERIFY(afr_box->isChecked());  // the short file's last line, read again
    QVERIFY(!page.log().Series(1).active);
    QCOMPARE(page.capture().ChannelEnabled[2], std::int16_t{-1});
    // Read as written: the start-up does not rewrite it.
    QCOMPARE(SetupText(program), QString("Channel 0 = 1\r\nChannel 1 = 0\r\nChannel 2 = 1\r\n"));

    afr_box->setChecked(false);
    QVERIFY(SetupText(program).endsWith("Channel 10 = 1\r\nChannel 11 = 0\r\n"));
    QVERIFY(!page.log().Series(11).active);
    QCOMPARE(page.capture().ChannelEnabled[11], std::int16_t{0});
  }

  void aLostLinkEndsTheLogAndTheButtonOffersAStartAgain() {
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
  }
};

VELA_GUI_TEST(DatalogPageTest)
#include "datalog_page_test.moc"
