// One scripted session of the whole program against the simulated ECU, and every command frame
// the ECU took during it, compared with the transcript kept beside this test. The transcript is
// what the program put on the wire when it was written; a change that alters it alters the
// program's behaviour on the wire, and must say so by writing it again
// (VELA_RECORD_WIRE=1 and this test).
#include <QComboBox>
#include <QFile>
#include <QRadioButton>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QtTest>

#include "app/main_window.h"
#include "app/pages/map_pages.h"
#include "app/sessions/editor_session.h"
#include "app/sessions/link_session.h"
#include "running_program.h"
#include "sim/pty_runner.h"
#include "support/gui_test_main.h"
#include "support/wire_log.h"

using namespace vela;
using vela::testing::SentFrame;

// The file's own namespace: the test programs are compiled several files at a time.
namespace wire_transcript_test {

QStringList Lines(const std::vector<SentFrame>& frames) {
  QStringList lines;
  for (const SentFrame& f : frames) {
    lines << QString("%1 %2 %3").arg(f.command).arg(f.address).arg(f.value);
  }
  return lines;
}

class WireTranscriptTest : public QObject {
  Q_OBJECT

  testing::WireLog wire_;

  // Waits until the ECU has taken `count` more frames than at `mark`, and then a little more
  // for any that should not come.
  bool Settled(std::size_t mark, std::size_t count) {
    const bool arrived =
        QTest::qWaitFor([&] { return wire_.FramesSince(mark).size() >= count; }, 5000);
    QTest::qWait(200);
    return arrived;
  }

 private slots:
  void aScriptedSessionPutsTheSameFramesOnTheWire() {
    testing::RunningOptions options;
    options.log = wire_.Hook();
    testing::RunningProgram p(options);
    QVERIFY2(p.started, p.error.c_str());
    QVERIFY(p.Run());
    EditorSession& editors = p.editors();
    QTest::qWait(200);

    // A fuel cell and an ignition cell, one step up each, from the keyboard.
    std::size_t mark = wire_.Mark();
    MapGrid* fuel = p.window().map_pages().page(0)->grid();
    fuel->SetCurrentCell(5, 3);
    fuel->setFocus();
    QTest::keyClick(fuel, Qt::Key_Up);
    QVERIFY(Settled(mark, 1));
    mark = wire_.Mark();
    MapGrid* ign = p.window().map_pages().page(2)->grid();
    ign->SetCurrentCell(2, 2);
    ign->setFocus();
    QTest::keyClick(ign, Qt::Key_Up);
    QVERIFY(Settled(mark, 1));

    // Set-up: a group, a list and a number typed in.
    QVERIFY(p.Press(Qt::Key_M));
    mark = wire_.Mark();
    p.Find<QRadioButton>("LimiterMode2")->click();
    QVERIFY(Settled(mark, 1));
    mark = wire_.Mark();
    QComboBox* trigger = p.Find<QComboBox>("ComboTrigger");
    trigger->setFocus();
    QTest::keyClick(trigger, Qt::Key_Down);
    QVERIFY(Settled(mark, 1));
    mark = wire_.Mark();
    QSpinBox* rev = p.Find<QSpinBox>("RevLimit1");
    rev->setFocus();
    rev->selectAll();
    QTest::keyClicks(rev, "7200");
    QTest::keyClick(rev, Qt::Key_Return);
    QVERIFY(Settled(mark, 2));

    // A slower live rate.
    mark = wire_.Mark();
    p.Find<QComboBox>("FramesPerSecondList")->setCurrentIndex(10);
    QTRY_COMPARE_WITH_TIMEOUT(p.link().live().frames_per_second, 4, 3000);
    QVERIFY(Settled(mark, 1));

    // The map saved, loaded back and downloaded whole.
    const std::string map_path = p.program->folders.maps + "session.sm1";
    p.program->dialogs.paths.push_back(map_path);
    editors.SaveMap();
    p.program->dialogs.paths.push_back(map_path);
    p.program->messages.answers.push_back(MessageAnswer::kYes);
    editors.LoadAndDownloadMap();
    QTRY_VERIFY_WITH_TIMEOUT(!editors.download().running(), 30000);
    QTest::qWait(500);

    const QStringList sent = Lines(wire_.FramesSince(0));
    QFile kept(VELA_WIRE_TRANSCRIPT);
    if (qEnvironmentVariableIsSet("VELA_RECORD_WIRE")) {
      QVERIFY(kept.open(QIODevice::WriteOnly | QIODevice::Truncate));
      kept.write((sent.join('\n') + '\n').toLatin1());
      return;
    }
    QVERIFY2(kept.open(QIODevice::ReadOnly), VELA_WIRE_TRANSCRIPT);
    const QStringList expected =
        QString::fromLatin1(kept.readAll()).split('\n', Qt::SkipEmptyParts);
    for (qsizetype i = 0; i < std::min(sent.size(), expected.size()); ++i) {
      QVERIFY2(sent[i] == expected[i],
               qPrintable(QString("frame %1: sent \"%2\", the transcript has \"%3\"")
                              .arg(i + 1)
                              .arg(sent[i], expected[i])));
    }
    QCOMPARE(sent.size(), expected.size());
  }
};

VELA_GUI_TEST(WireTranscriptTest)

}  // namespace wire_transcript_test

#include "wire_transcript_test.moc"
