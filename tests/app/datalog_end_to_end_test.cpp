// Datalogging on the whole program against the simulated ECU over a pseudo-terminal: L starts
// and stops a log (told by the status strip), K drops a marker, the log is saved, loaded back and
// read by vela-log, whose CSV holds the values the ECU put in its frames; a journal left by a
// killed program comes back.
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>
#include <cmath>

#include "app/main_window.h"
#include "app/pages/datalog_page.h"
#include "app/sessions/editor_session.h"
#include "app/sessions/link_session.h"
#include "running_program.h"
#include "sim/pty_runner.h"
#include "support/gui_test_main.h"

using namespace vela;

// The file's own namespace: the test programs are compiled several files at a time.
namespace datalog_end_to_end_test {

struct Program : testing::RunningProgram {
  DatalogPage& page() { return window().datalog_page(); }
  QString Datalogs() const { return QString::fromStdString(program->folders.datalogs); }
};

std::uint32_t Field(const live::Frame& f, int position, int bytes) {
  std::uint32_t value = 0;
  for (int i = bytes - 1; i >= 0; --i) value = value << 8 | f[position - 1 + i];
  return value;
}

double Rounded(double value, int decimals) {
  const double scale = std::pow(10.0, decimals);
  return std::nearbyint(value * scale) / scale;
}

QStringList VelaLog(const QString& command, const QString& file) {
  QProcess tool;
  tool.start(VELA_LOG_PATH, {command, file});
  if (!tool.waitForFinished(10000) || tool.exitCode() != 0) return {};
  return QString::fromUtf8(tool.readAllStandardOutput()).split("\r\n", Qt::SkipEmptyParts);
}

class DatalogEndToEndTest : public QObject {
  Q_OBJECT

 private slots:
  void recordSaveReloadReadWithVelaLogAndRecoverAfterAKill() {
    Program program;
    QVERIFY2(program.started && program.Run(), program.error.c_str());
    std::vector<live::Frame> frames;  // what the ECU sent while the log ran
    QObject::connect(&program.link(), &LinkSession::FrameTaken, [&](const live::Frame& frame) {
      if (program.page().Logging()) frames.push_back(frame);
    });

    QVERIFY(program.Press(Qt::Key_L));
    QVERIFY(program.page().Logging());
    QTRY_VERIFY_WITH_TIMEOUT(frames.size() >= 30, 5000);
    // The status strip tells the running log on any page, with its time and record count.
    auto* state = program.window().findChild<QLabel*>("DatalogState");
    program.window().tabs()->setCurrentIndex(0);
    QTRY_VERIFY(state->isVisible());
    QVERIFY(state->text().startsWith("Logging ") && state->text().endsWith(" records"));
    QVERIFY(program.Press(Qt::Key_K));
    QTRY_VERIFY_WITH_TIMEOUT(frames.size() >= 50, 5000);
    QVERIFY(QFile::exists(program.Datalogs() + "Recording.journal"));
    QVERIFY(program.Press(Qt::Key_L));
    QVERIFY(!program.page().Logging());
    QCOMPARE(program.window().tabs()->currentIndex(), 11);
    QTRY_VERIFY(state->isHidden());
    const DatalogLog& log = program.page().log();

    // Saved: the extension is the upper-case one, and the journal is no longer needed.
    program.program->dialogs.paths.push_back((program.Datalogs() + "pull.sl1").toStdString());
    program.window().findChild<QPushButton*>("Command6_2")->click();
    const QString saved = program.Datalogs() + "pull.SL1";
    QVERIFY(QFile::exists(saved));
    QVERIFY(!QFile::exists(program.Datalogs() + "Recording.journal"));

    // A new log, then the saved one loaded back over it: the records and the marker recorded.
    QVERIFY(program.Press(Qt::Key_L));
    QVERIFY(program.Press(Qt::Key_L));
    program.program->dialogs.paths.push_back(saved.toStdString());
    program.window().findChild<QPushButton*>("Command6_1")->click();
    QCOMPARE(log.RecordCount(), frames.size());
    QCOMPARE(log.Markers().front().text, std::string("Mark 1"));

    const QStringList info = VelaLog("info", saved).join("").split('\n');
    QVERIFY(info.contains(QString("Records: %1").arg(frames.size())));
    QVERIFY(info.contains("Markers: 1"));
    const QStringList csv = VelaLog("csv", saved);
    QCOMPARE(csv.size(), static_cast<int>(frames.size()) + 1);
    double arrived = 0.0;
    for (std::size_t i = 0; i < frames.size(); ++i) {
      const live::Frame& f = frames[i];
      const QStringList row = csv[static_cast<int>(i) + 1].split(',');
      const double period = Field(f, 6, 3);
      const double rpm = f[7] >= 40 ? 0.0 : Rounded(60e6 / period, 2);
      // The time base is the chosen rate, 20 frames a second.
      QVERIFY(std::abs(row[0].toDouble() - (i + 1) * 1.002 / 20) <= 0.0005 + 1e-9);
      QVERIFY(row[1].toDouble() >= arrived);  // the clock runs on
      arrived = row[1].toDouble();
      // One channel (every channel's place and scale: the frame handler's own tests; the columns'
      // header: the export's own tests).
      QCOMPARE(row[2].toDouble(), rpm);
    }
    QVERIFY(arrived > 1.0);

    // A journal left by a killed program is offered at the next start.
    const QString journal_path = program.Datalogs() + "Recording.journal";
    program.page().StartStopLogging();
    QTest::qWait(2500);
    // What a kill leaves: the journal as the disk holds it at this moment.
    const std::size_t records_then = program.page().log().RecordCount();
    QFile journal(journal_path);
    QVERIFY(journal.open(QIODevice::ReadOnly));
    const QByteArray on_disk = journal.readAll();
    journal.close();
    program.program.reset();
    QFile::remove(journal_path);
    QFile rewritten(journal_path);
    QVERIFY(rewritten.open(QIODevice::WriteOnly));
    rewritten.write(on_disk);
    rewritten.close();

    testing::TestProgram again(program.dir.path(),
                               QString::fromStdString(program.ecu->SlavePath()));
    again.link.SetCommsDelayEnabled(false);
    again.messages.answers.push_back(MessageAnswer::kYes);
    QVERIFY(again.window->Load());
    QCOMPARE(again.messages.shown.back().title, std::string("Recover DataLog"));
    const std::size_t recovered = again.window->datalog_page().log().RecordCount();
    QVERIFY2(recovered + 20 >= records_then && recovered <= records_then,
             qPrintable(QString("%1 of %2 records").arg(recovered).arg(records_then)));
    QVERIFY(QFile::exists(journal_path));  // kept until the log is saved
  }
};

VELA_GUI_TEST(DatalogEndToEndTest)

}  // namespace datalog_end_to_end_test

#include "datalog_end_to_end_test.moc"
