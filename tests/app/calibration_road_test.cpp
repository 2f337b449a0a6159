// The road of a calibration against the simulated ECU over a pseudo-terminal: upload into the
// grids, the map saved, the ECU changed behind the program's back, the map loaded and
// downloaded, and the Data Page's values; maps that are none, a download cut short, an ECU away
// and back or swapped.
#include <QComboBox>
#include <QElapsedTimer>
#include <QFile>
#include <QLabel>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>
#include <atomic>
#include <cmath>
#include <functional>
#include <memory>

#include "app/main_window.h"
#include "app/pages/map_pages.h"
#include "app/sessions/editor_session.h"
#include "app/sessions/link_session.h"
#include "app/widgets/live_value.h"
#include "editors/mapgrid/qt/map_readout.h"
#include "program/afr_display.h"
#include "running_program.h"
#include "sim/core/base_calibration.h"
#include "sim/pty_runner.h"
#include "support/gui_test_main.h"

using namespace vela;

// The file's own namespace: the test programs are compiled several files at a time.
namespace calibration_road_test {

QByteArray FileBytes(const QString& path) {
  QFile file(path);
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray ImageBytes(const CalibrationImage& image) {
  const auto& bytes = image.Bytes();
  return QByteArray(reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size()));
}

// The ECU on a fixed line, so that it can be unplugged and plugged in again.
testing::RunningOptions Pluggable() {
  testing::RunningOptions options;
  options.fixed_line = true;
  return options;
}

// A key on a grid cell, as the tuner gives it.
void KeyOnCell(MapGrid* grid, int row, int column, Qt::Key key) {
  grid->SetCurrentCell(row, column);
  grid->setFocus();
  QTest::keyClick(grid, key);
}

class CalibrationRoadTest : public QObject {
  Q_OBJECT

 private slots:
  void uploadSaveChangeLoadAndDownload() {
    auto frames = std::make_shared<std::atomic<int>>(0);
    testing::RunningOptions options;
    options.log = [frames](const std::string&) { ++*frames; };
    options.ecu.sim.steady_after_us = 2'000'000;
    testing::RunningProgram p(options);
    QVERIFY2(p.started, p.error.c_str());
    // The upload ends by asking the ECU for the rate chosen in the settings (20 a second).
    QVERIFY(p.Run());
    testing::TestProgram& program = *p.program;
    sim::InProcessSimulator& ecu = *p.ecu;
    EditorSession& editors = p.editors();
    QVERIFY(editors.state().SetupErrors.empty());

    // The grids show the ECU's maps.
    const CalibrationImage uploaded = ecu.ImageSnapshot();
    QVERIFY(ImageBytes(editors.image()) == ImageBytes(uploaded));
    MapPages& pages = program.window->map_pages();
    QVERIFY(pages.page(0)->grid()->Model().ToMapValues() == uploaded.ReadFuelMap(1));
    QVERIFY(pages.page(2)->grid()->Model().ToMapValues() == uploaded.ReadIgnMap());

    // A file that is no map is refused before a question is asked: not one frame reaches the ECU
    // (every size that is no map: the map file's own tests).
    const QString no_map = QString::fromStdString(program.folders.maps) + "no-map.sm1";
    QVERIFY(testing::WriteBytes(no_map, "0123456789"));
    QTest::qWait(300);
    const int frames_before = frames->load();
    QVERIFY(frames_before > 0);  // the upload's requests and rate commands were seen
    program.dialogs.paths.push_back(no_map.toStdString());
    editors.LoadAndDownloadMap();
    QVERIFY(!editors.download().running());
    QTest::qWait(500);
    QCOMPARE(frames->load(), frames_before);
    QCOMPARE(ImageBytes(ecu.ImageSnapshot()), ImageBytes(uploaded));
    QCOMPARE(ImageBytes(editors.image()), ImageBytes(uploaded));

    // Save: the file holds the editors' image (a key's frames for a cell: WireTranscriptTest).
    const QByteArray edited = ImageBytes(editors.image());
    const QString map_path = QString::fromStdString(program.folders.maps) + "road.sm1";
    program.dialogs.paths.push_back(map_path.toStdString());
    editors.SaveMap();
    QCOMPARE(FileBytes(map_path), edited);

    // The ECU's image changes; loading the map and downloading it puts the file back.
    {
      QFile file(map_path);
      QVERIFY(file.open(QIODevice::ReadWrite));
      file.seek(908);
      file.write("\x09", 1);
    }
    const int fuel_position = uploaded.FuelCellPosition(1, 7, 3);
    const int ign_position = uploaded.IgnCellPosition(10, 2);
    ecu.WriteImageByte(fuel_position, 0);
    ecu.WriteImageByte(ign_position, 7);
    QTRY_VERIFY_WITH_TIMEOUT(ecu.ImageSnapshot().Byte(ign_position) == 7, 3000);
    program.dialogs.paths.push_back(map_path.toStdString());
    program.messages.answers.push_back(MessageAnswer::kYes);
    editors.LoadAndDownloadMap();
    QVERIFY(editors.download().running());
    auto* status = program.window->findChild<QLabel*>("LabelOrangeBlock");
    QCOMPARE(status->text(), QString("DownLoad"));
    QTRY_VERIFY_WITH_TIMEOUT(!editors.download().running(), 30000);
    QVERIFY(status->text().isEmpty());  // a finished download clears its status text
    QTRY_VERIFY_WITH_TIMEOUT(ImageBytes(ecu.ImageSnapshot()).mid(0, 908) == edited.mid(0, 908),
                             3000);
    const QByteArray downloaded = ImageBytes(ecu.ImageSnapshot());
    QCOMPARE(downloaded.mid(909), edited.mid(909));
    // The firmware version byte is never taken from a file (this one says 9): it is the one the
    // ECU's uploaded image carried, which the version label shows.
    QVERIFY(uploaded.FirmwareVersion() != 0);
    QCOMPARE(static_cast<int>(downloaded[908]), static_cast<int>(uploaded.FirmwareVersion()));
    QCOMPARE(editors.state().version.FirmwareVersion, uploaded.FirmwareVersion());

    // The engine holds still, so every frame carries the same values: the Data Page shows what
    // the ECU put in them, each at the scale of its field, and the AFR as the map page does:
    // lambda, with two decimals, on the map page in front (only the page in front redraws).
    program.window->findChild<QComboBox*>("ComboAFRMode")->setCurrentIndex(kAfrModeLambda);
    QTest::qWait(2500);
    const QString afr = program.window->findChild<MapReadout*>("FuelMap1A")->Value(Readout::kAfr);
    QVERIFY2(QRegularExpression("^\\d\\.\\d\\d$").match(afr).hasMatch(), qPrintable(afr));
    program.window->tabs()->setCurrentIndex(9);
    const sim::EngineState engine = ecu.EngineSnapshot();
    const auto text = [&](const char* name) {
      auto* value = program.window->findChild<LiveValue*>(name);
      return value ? value->text() : QString("(no %1)").arg(name);
    };
    QTRY_COMPARE(text("DataAFR"), afr);
    // Two fields (every field's place and scale: the frame handler's own tests).
    const double period = std::round(60'000'000.0 / engine.rpm);
    QCOMPARE(text("DataRPM"), QString::number(std::round(60'000'000.0 / period), 'f', 0));
    QCOMPARE(text("DataMAP"), QString::number(std::round(engine.map_kpa * 10) / 10, 'f', 1));
    testing::KeepShot(program.window.get(), "data-page");
  }

  // An ECU newer than the program brings up the "PC Software Update" note. While it is open the
  // ECU is unplugged and another one, with another calibration, plugged into the same port: the
  // program loses the link, finds the new ECU, reads its calibration and shows it.
  void anEcuSwappedWhileTheUpdateNoteIsOpenIsReadAndShown() {
    QTemporaryDir dir;
    const CalibrationImage base = sim::EmbeddedBaseCalibration();
    CalibrationImage first = base;
    first.SetByte(909, 4);
    CalibrationImage second = base;
    second.Write16(second.FuelCellPosition(1, 6, 4), 4321);
    const QString first_path = dir.path() + "/first.sm1";
    const QString second_path = dir.path() + "/second.sm1";
    QVERIFY(testing::WriteImageFile(first_path, first));
    QVERIFY(testing::WriteImageFile(second_path, second));
    testing::RunningOptions options = Pluggable();
    options.ecu.image_path = first_path.toStdString();
    testing::RunningProgram p(options);
    QVERIFY2(p.started, p.error.c_str());
    testing::TestProgram& program = *p.program;
    EditorSession& editors = p.editors();
    bool note_seen = false;
    bool lost_while_open = false;
    const auto run_while = [](const std::function<bool()>& condition) {
      QElapsedTimer open_for;
      open_for.start();
      while (open_for.elapsed() < 20000 && condition()) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
      }
    };
    program.messages.while_open = [&](const std::string& title) {
      if (title != "PC Software Update" || note_seen) return;
      note_seen = true;
      p.ecu->Stop();
      const auto connected = [&] {
        return program.link.state().Caption.find("Not") == std::string::npos;
      };
      run_while(connected);
      lost_while_open = !connected();
      p.options.ecu.image_path = second_path.toStdString();
      QVERIFY2(p.Plug(), p.error.c_str());
      run_while([&] { return ImageBytes(editors.image()) != ImageBytes(second); });
    };
    QVERIFY(p.Show());
    QTRY_VERIFY_WITH_TIMEOUT(note_seen, 10000);
    QVERIFY(lost_while_open);
    QCOMPARE(ImageBytes(editors.image()), ImageBytes(second));
    MapGrid* fuel = program.window->map_pages().page(0)->grid();
    QVERIFY(fuel->Model().ToMapValues() == second.ReadFuelMap(1));
    // The new ECU streams at the tuner's rate again: its upload ended with the rate command.
    QTRY_COMPARE_WITH_TIMEOUT(program.link.live().frames_per_second, 20, 3000);
  }

  // Closing the ECU's terminal halfway through a download: the program says the download did not
  // complete, marks the map pages, and on the tuner's Yes sends the whole map when the ECU is
  // back. Then changes made while the ECU is away are sent when it returns.
  void anEcuAwayDuringOrAfterADownloadGetsTheEditorsMapWhenBack() {
    testing::RunningProgram p(Pluggable());
    QVERIFY2(p.started && p.Show(), p.error.c_str());
    testing::TestProgram& program = *p.program;
    std::unique_ptr<sim::InProcessSimulator>& ecu = p.ecu;
    EditorSession& editors = p.editors();
    QTRY_VERIFY_WITH_TIMEOUT(editors.has_calibration(), 10000);

    CalibrationImage changed = ecu->ImageSnapshot();
    changed.Write16(changed.FuelCellPosition(1, 6, 4), 7777);
    changed.Write16(changed.FuelCellPosition(2, 11, 17), 8888);
    const QString map_path = QString::fromStdString(program.folders.maps) + "changed.sm1";
    QVERIFY(testing::WriteImageFile(map_path, changed));
    program.dialogs.paths.push_back(map_path.toStdString());
    editors.LoadAndDownloadMap();
    QVERIFY(editors.download().running());
    QTest::qWait(800);
    ecu->Stop();
    QTRY_VERIFY_WITH_TIMEOUT(!editors.download().running(), 30000);
    QCOMPARE(program.messages.shown.back().title, std::string("MORVANE Warning"));
    QCOMPARE(program.messages.shown.back().lines.front(),
             std::string("The download did not complete: the link to the ECU failed while the "
                         "map was being sent."));
    auto* banner = program.window->findChild<QLabel*>("EcuOutOfStep");
    QVERIFY(banner != nullptr && banner->isVisible());

    QVERIFY2(p.Plug(), p.error.c_str());
    QTRY_VERIFY_WITH_TIMEOUT(editors.download().running(), 10000);
    QTRY_VERIFY_WITH_TIMEOUT(!editors.download().running(), 30000);
    QTRY_COMPARE_WITH_TIMEOUT(ImageBytes(ecu->ImageSnapshot()).mid(0, 908),
                              ImageBytes(editors.image()).mid(0, 908), 3000);
    QVERIFY(!banner->isVisible());

    // The ECU goes away; the tuner changes a fuel cell meanwhile.
    ecu->Stop();
    QTRY_VERIFY_WITH_TIMEOUT(program.link.state().Caption.find("Not") != std::string::npos, 5000);
    MapGrid* fuel = program.window->map_pages().page(0)->grid();
    KeyOnCell(fuel, 5, 3, Qt::Key_PageUp);
    const QByteArray edited = ImageBytes(editors.image());

    // An ECU with its own map comes back: the tuner is asked, takes a while to answer (longer
    // than the link takes to count as lost), says Yes, and the changed map goes down to it. The
    // link went on while the question was open: the download is not reported cut, and the ECU
    // streams at the tuner's rate again afterwards.
    program.messages.while_open = [](const std::string& title) {
      if (title == "MORVANE Warning") QTest::qWait(1500);
    };
    QVERIFY2(p.Plug(), p.error.c_str());
    QTRY_VERIFY_WITH_TIMEOUT(editors.download().running(), 10000);
    QCOMPARE(program.messages.shown.back().title, std::string("MORVANE Warning"));
    const std::size_t asked_once = program.messages.shown.size();
    program.messages.while_open = nullptr;
    QTRY_VERIFY_WITH_TIMEOUT(!editors.download().running(), 30000);
    QTRY_COMPARE_WITH_TIMEOUT(ImageBytes(ecu->ImageSnapshot()), edited, 3000);
    QCOMPARE(ImageBytes(editors.image()), edited);
    QCOMPARE(program.messages.shown.size(), asked_once);
    QVERIFY(!editors.EcuOutOfStep());
    QTRY_COMPARE_WITH_TIMEOUT(program.link.live().frames_per_second, 20, 3000);

    // Off-line work is never dropped by going on-line: the same question, and No takes the
    // ECU's map.
    editors.SetOffline(true);
    KeyOnCell(fuel, 6, 4, Qt::Key_PageUp);
    const QByteArray offline_edit = ImageBytes(editors.image());
    QVERIFY(offline_edit != edited);
    QTest::qWait(300);
    QCOMPARE(ImageBytes(ecu->ImageSnapshot()), edited);  // nothing went down off-line
    const std::size_t asked = program.messages.shown.size();
    program.messages.answers.push_back(MessageAnswer::kNo);
    editors.SetOffline(false);
    QTRY_COMPARE_WITH_TIMEOUT(program.messages.shown.size(), asked + 1, 10000);
    QCOMPARE(program.messages.shown.back().lines.front(),
             std::string("The map was changed while the ECU was not connected, and the ECU "
                         "holds a different map."));
    QTRY_COMPARE_WITH_TIMEOUT(ImageBytes(editors.image()), edited, 5000);
  }
};

VELA_GUI_TEST(CalibrationRoadTest)

}  // namespace calibration_road_test

#include "calibration_road_test.moc"
