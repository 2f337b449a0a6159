// The link against the simulated ECU over a real pseudo-terminal: connection, link preparation,
// upload byte for byte, live values, an unplugged line and its return, and the ECU's misbehaviour.
#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <QSerialPort>
#include <QSocketNotifier>
#include <QTemporaryDir>
#include <QtTest>

#include "app/sessions/link_session.h"
#include "link/connection_supervisor.h"
#include "link/qt/qt_serial_port.h"
#include "link/receive/receive_dispatch.h"
#include "sim/core/base_calibration.h"
#include "sim/pty_runner.h"
#include "support/gui_test_main.h"

using namespace vela;

// The file's own namespace: the test programs are compiled several files at a time.
namespace link_end_to_end_test {

class QuietStatus : public StatusLabel {
 public:
  void SetText(const std::string&) override {}
  void SetColour(LabelColour) override {}
};

// The program's side of the link, pointed at a device path.
struct Program {
  explicit Program(const QString& device) : port(false), link(port, trace) {
    port.set_device_override(device);
    port.Open(1);
    link.SetCommsDelayEnabled(false);
    QObject::connect(&link, &LinkSession::CalibrationReceived,
                     [this](const CalibrationImage& image) {
                       ++uploads;
                       last_block = image;
                     });
    link.Start();
    link.StartCountsPerMsTimer(status);
  }
  bool Connected() { return link.state().Caption == kCaptionConnected; }

  QtSerialPort port;
  StartupTrace trace;
  QuietStatus status;
  LinkSession link;
  int uploads = 0;
  CalibrationImage last_block;
};

sim::SimCommandLine SimWith(const std::string& link_path = {}) {
  sim::SimCommandLine options;
  options.link_path = link_path;
  return options;
}

class LinkEndToEndTest : public QObject {
  Q_OBJECT

 private slots:
  // The serial adapter pauses the port's read notifier between its receive windows; the notifier
  // is an internal of Qt's serial port, so this tells when a Qt version stops keeping it.
  void theSerialPortKeepsItsReadNotifierAsAChild() {
    sim::InProcessSimulator ecu;
    std::string error;
    QVERIFY2(ecu.Start(SimWith(), &error), error.c_str());
    QSerialPort port(QString::fromStdString(ecu.SlavePath()));
    QVERIFY(port.open(QIODevice::ReadWrite));
    int read_notifiers = 0;
    for (const QSocketNotifier* notifier : port.findChildren<QSocketNotifier*>()) {
      read_notifiers += notifier->type() == QSocketNotifier::Read;
    }
    QCOMPARE(read_notifiers, 1);
  }

  // An ECU that sends its reply in 250-byte pieces with pauses between them (as one behind a USB
  // adapter does) is read every time: fifty uploads asked for, fifty taken, byte for byte.
  void fiftyUploadsOfAReplyIn250BytePiecesAllArrive() {
    sim::SimCommandLine options = SimWith();
    options.sim.faults.reply_chunk_bytes = 250;
    options.sim.faults.chunk_gap_us = 3000;
    sim::InProcessSimulator ecu;
    std::string error;
    QVERIFY2(ecu.Start(options, &error), error.c_str());
    Program program(QString::fromStdString(ecu.SlavePath()));
    QTRY_COMPARE_WITH_TIMEOUT(program.uploads, 1, 8000);
    int taken = 0;
    for (int i = 0; i < 50; ++i) {
      const int before = program.uploads;
      program.link.ForceUpload();
      program.link.upload().RequestUpload();
      QTRY_VERIFY_WITH_TIMEOUT(program.uploads > before, 3000);
      if (program.last_block.Bytes() == sim::EmbeddedBaseCalibration().Bytes()) ++taken;
    }
    QCOMPARE(taken, 50);
  }

  void garbageSplitFramesBurstsAndACutReplyLeaveTheLinkWorking() {
    sim::SimCommandLine options = SimWith();
    options.sim.faults.garbage_every = 2;
    // Pieces of 1 to 7 bytes, 100 us apart: the reply still comes within the time the link
    // allows it (about 115 ms of the 150 ms; with 300 us it took some 165 ms, slower than any
    // line at this speed could be, and was rightly given up).
    options.sim.faults.chunk_max_bytes = 7;
    options.sim.faults.chunk_gap_us = 100;
    options.sim.faults.upload_cut_bytes = 400;
    options.sim.faults.faulty_uploads = 1;
    options.sim.faults.burst_every_us = 1'500'000;
    options.sim.faults.burst_bytes = 600;
    sim::InProcessSimulator ecu;
    std::string error;
    QVERIFY2(ecu.Start(options, &error), error.c_str());
    Program program(QString::fromStdString(ecu.SlavePath()));
    QTRY_COMPARE_WITH_TIMEOUT(program.uploads, 1, 15000);
    QVERIFY(program.last_block.Bytes() == sim::EmbeddedBaseCalibration().Bytes());
    QTRY_VERIFY_WITH_TIMEOUT(program.link.live().engine_rpm > 400, 3000);
    QVERIFY(program.Connected());
  }

  void anUnpluggedLineIsReopenedWithoutSpinningTheProcessor() {
    QTemporaryDir dir;
    const std::string link_path = (dir.path() + "/ecu").toStdString();
    auto ecu = std::make_unique<sim::InProcessSimulator>();
    std::string error;
    QVERIFY2(ecu->Start(SimWith(link_path), &error), error.c_str());
    Program program(QString::fromStdString(link_path));
    QTRY_COMPARE_WITH_TIMEOUT(program.uploads, 1, 8000);

    ecu->Stop();
    QTRY_VERIFY_WITH_TIMEOUT(!program.Connected(), 5000);
    // The tries of the vanished line are spaced out to the longest wait instead of one a tick.
    QTRY_COMPARE_WITH_TIMEOUT(program.link.TickIntervalMs(),
                              static_cast<int>(ReceiveDispatcher::kReopenLongestWaitMs), 5000);

    ecu = std::make_unique<sim::InProcessSimulator>();
    QVERIFY2(ecu->Start(SimWith(link_path), &error), error.c_str());
    QTRY_VERIFY_WITH_TIMEOUT(program.Connected(), 8000);
    QTRY_COMPARE_WITH_TIMEOUT(program.uploads, 2, 10000);
  }

  // A line that would not open for a second: the tries wait up to a second apart. Once it opens
  // and the tick rests, a later loss is tried again at once, not after the first loss's longest
  // wait.
  void aPortLostAfterALongOutageIsTriedAgainAtOnce() {
    const int line = posix_openpt(O_RDWR | O_NOCTTY);
    QVERIFY(line >= 0);
    QVERIFY(grantpt(line) == 0 && unlockpt(line) == 0);
    Program program(QStringLiteral("/dev/vela-no-such-line"));
    QTest::qWait(1200);  // tries about 0, 125, 375 and 875 ms on: the next waits a second
    QVERIFY(!program.port.IsOpen());
    program.port.set_device_override(QString::fromLatin1(ptsname(line)));
    QTRY_VERIFY_WITH_TIMEOUT(program.port.IsOpen(), 3000);
    QTest::qWait(50);  // the silent line lets the tick rest
    program.port.Close();
    QCOMPARE(program.link.TickIntervalMs(), kTimerCommProcessIntervalMs);
    QTRY_VERIFY_WITH_TIMEOUT(program.port.IsOpen(), 3000);
    ::close(line);
  }
};

VELA_GUI_TEST(LinkEndToEndTest)

}  // namespace link_end_to_end_test

#include "link_end_to_end_test.moc"
