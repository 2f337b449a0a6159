// The set-up pages against the simulated ECU over a pseudo-terminal, used as a tuner uses them:
// an upload fills every page, and each kind of control sends exactly its command-4 frames.
#include <QAccessible>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QSpinBox>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QtTest>
#include <map>

#include "app/pages/map_pages.h"
#include "app/pages/setup/compensation_page.h"
#include "app/pages/setup/setup_pages.h"
#include "app/pages/setup/setup_widgets.h"
#include "app/sessions/editor_session.h"
#include "editors/compensation/temperature_sensors.h"
#include "program/context_help.h"
#include "running_program.h"
#include "sim/core/base_calibration.h"
#include "sim/pty_runner.h"
#include "support/gui_test_main.h"
#include "support/wire_log.h"

using namespace vela;
using vela::testing::SentFrame;
using vela::testing::WireLog;

// The file's own namespace: the test programs are compiled several files at a time.
namespace setup_pages_road_test {

// A key on `widget`, given the keyboard first, as a tuner who tabbed or clicked to it.
void KeyOn(QWidget* widget, Qt::Key key) {
  widget->setFocus();
  QTest::keyClick(widget, key);
}

// Types `text` key by key into whichever widget has the focus, as a keyboard does.
void TypeKeys(const QString& text) {
  for (const QChar c : text) QTest::keyClick(QApplication::focusWidget(), c.toLatin1());
}

QString SetupLine(testing::RunningProgram& p, int line) {
  QFile file(QString::fromStdString(p.program->setup.SetupFilePath()));
  if (!file.open(QIODevice::ReadOnly)) return {};
  return QString::fromLatin1(file.readAll()).split("\r\n").value(line - 1);
}

class SetupPagesRoadTest : public QObject {
  Q_OBJECT

  QTemporaryDir images_;
  std::unique_ptr<testing::RunningProgram> program_;
  WireLog wire_;

  // Waits for exactly `expected` to reach the ECU after `act`, and then for nothing more.
  void ExpectWrites(const char* what, const std::function<void()>& act,
                    const std::vector<SentFrame>& expected) {
    const std::size_t mark = wire_.Mark();
    act();
    QTRY_VERIFY2_WITH_TIMEOUT(wire_.WritesSince(mark).size() >= expected.size(), what, 3000);
    QTest::qWait(150);
    const std::vector<SentFrame> writes = wire_.WritesSince(mark);
    QVERIFY2(writes == expected, what);
  }

 private slots:
  void init() { Start({}); }

  void Start(const std::string& image_path) {
    program_.reset();
    testing::RunningOptions options;
    options.log = wire_.Hook();
    options.ecu.image_path = image_path;
    program_ = std::make_unique<testing::RunningProgram>(options);
    QVERIFY2(program_->started && program_->Run(), program_->error.c_str());
  }

  void cleanup() { program_.reset(); }

  // Starts against a simulated ECU that holds `image`.
  void StartWith(const CalibrationImage& image, const QString& name) {
    const QString path = images_.filePath(name);
    QVERIFY(testing::WriteImageFile(path, image));
    Start(path.toStdString());
  }

  void eachKindOfControlSendsItsBytesAndNothingElse() {
    testing::RunningProgram& p = *program_;
    QTabWidget* tabs = p.window().tabs();
    QTest::keyClick(&p.window(), Qt::Key_M);
    QCOMPARE(tabs->currentIndex(), 6);
    // (A group, a list and a typed number on this page: WireTranscriptTest.) The wheel over a
    // list the tuner has not clicked into changes nothing.
    ExpectWrites("wheel passing over a list",
                 [&] {
                   QComboBox* spark = p.Find<QComboBox>("ComboSpark");
                   p.Find<QComboBox>("ComboTrigger")->setFocus();
                   QWheelEvent wheel(QPointF(5, 5), spark->mapToGlobal(QPointF(5, 5)), QPoint(),
                                     QPoint(0, -120), Qt::NoButton, Qt::NoModifier,
                                     Qt::NoScrollPhase, false);
                   QApplication::sendEvent(spark, &wheel);
                   QCOMPARE(spark->currentIndex(), 1);
                 },
                 {});
    const std::size_t quiet = wire_.Mark();
    KeyOn(p.Find<QComboBox>("ComboAFRMode"), Qt::Key_Down);
    QCOMPARE(SetupLine(p, 4), QString("AFR Display Mode = 1 "));
    QTest::qWait(150);
    QVERIFY(wire_.WritesSince(quiet).empty());

    tabs->setCurrentIndex(3);
    ExpectWrites("idle switch", [&] { p.Find<QCheckBox>("Bit856_3")->click(); }, {{4, 856, 8}});

    tabs->setCurrentIndex(5);
    SmallMapGrid* air = p.window().setup_pages().compensation()->grid(CompTable::kAirMap);
    ExpectWrites("compensation key",
                 [&] {
                   air->setFocus();
                   air->SetCurrentRow(0);
                   QTest::keyClick(air, Qt::Key_Up);  // 8.0 % to 8.5 %
                 },
                 {{4, 963, 213}});
    SmallMapGrid* water_map = p.window().setup_pages().compensation()->grid(CompTable::kWaterMap);
    const std::size_t shown = p.program->messages.shown.size();
    ExpectWrites("water 100 % refused",
                 [&] {
                   water_map->setFocus();
                   water_map->SetCurrentRow(0);
                   QTest::keyClick(water_map, Qt::Key_F2);  // F2 opens the cell's own editor
                   QTest::keyClicks(QApplication::focusWidget(), "100");
                   QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
                 },
                 {});
    QCOMPARE(p.program->messages.shown.size(), shown + 1);
    QCOMPARE(water_map->Model().Text(0), std::string("80.1"));

    tabs->setCurrentIndex(7);
    // The next sensor on the list goes out as its eight points (their bytes: the sensor
    // tables' own tests).
    const std::size_t before_list = wire_.Mark();
    KeyOn(p.Find<QComboBox>("Combop4"), Qt::Key_Down);
    QTRY_COMPARE_WITH_TIMEOUT(wire_.WritesSince(before_list).size(), std::size_t{8}, 3000);
    QVERIFY((wire_.WritesSince(before_list).front() == SentFrame{4, 987, 231}));
    // A custom sensor from three measured points fills and sends the air table; the rows beyond
    // the points are named as extrapolated.
    const std::size_t before_custom = wire_.Mark();
    p.Find<QComboBox>("CustomSensorTarget")->setCurrentIndex(1);
    for (const auto& [row, ohms] : {std::pair{0, "5896"}, {1, "1175"}, {2, "187"}}) {
      p.Find<QLineEdit>(QString("CustomOhms%1").arg(row))->setText(ohms);
    }
    p.Find<QPushButton>("CustomSensorFill")->click();
    QTRY_COMPARE_WITH_TIMEOUT(wire_.WritesSince(before_custom).size(), std::size_t{8}, 3000);
    const std::vector<SentFrame> custom = wire_.WritesSince(before_custom);
    for (int i = 0; i < 8; ++i) QCOMPARE(custom[i].address, 971 + i);
    QCOMPARE(p.Find<QTableWidget>("Air")->item(1, 1)->text(), QString("5896"));
    QVERIFY(p.Find<QLabel>("CustomSensorNote")->text().contains("Rows -20, 120"));
    // The sensor table's live row and temperatures take no keys, and a typed row goes alone.
    QTableWidget* water = p.Find<QTableWidget>("Water");
    const QString before = water->item(3, 1)->text();
    const std::size_t boxes = p.program->messages.shown.size();
    ExpectWrites("typing on the live row",
                 [&] {
                   QTest::mouseClick(water->viewport(), Qt::LeftButton, {},
                                     water->visualItemRect(water->item(8, 1)).center());
                   TypeKeys("1");
                   QCOMPARE(water->currentRow(), 8);  // no search jumps to a row starting "1"
                   TypeKeys("2.5");
                   QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
                   QTest::mouseClick(water->viewport(), Qt::LeftButton, {},
                                     water->visualItemRect(water->item(3, 0)).center());
                   TypeKeys("12.5");
                   QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
                 },
                 {});
    QCOMPARE(water->item(3, 1)->text(), before);
    QVERIFY(water->item(8, 1)->text() != "12.5");
    QCOMPARE(p.program->messages.shown.size(), boxes);  // nothing was typed into a row to refuse
    ExpectWrites("typing a row",
                 [&] {
                   QTest::mouseClick(water->viewport(), Qt::LeftButton, {},
                                     water->visualItemRect(water->item(3, 1)).center());
                   TypeKeys("1000");
                   QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
                 },
                 {{4, 990, 164}});
    // The program's image and the ECU's agree byte for byte after all of it.
    QTRY_VERIFY_WITH_TIMEOUT(
        program_->ecu->ImageSnapshot().Bytes() == p.window().editors().image().Bytes(), 3000);

    // Space works on the set-up pages' controls, and Tab enters an option group on its chosen
    // button; on a map page Space still never reaches the grid.
    tabs->setCurrentIndex(6);
    auto* flag = p.Find<QCheckBox>("TriggerSensorFlag");
    const int flag_byte = p.editors().image().Byte(903);
    ExpectWrites("Space on a tick box", [&] { KeyOn(flag, Qt::Key_Space); }, {{4, 903, 0x81}});
    QVERIFY(flag->isChecked());
    // Ctrl-Z puts the old byte back on the ECU, and the page shows it again.
    ExpectWrites("Ctrl-Z", [&] { QTest::keyClick(&p.window(), Qt::Key_Z, Qt::ControlModifier); },
                 {{4, 903, flag_byte}});
    QVERIFY(!flag->isChecked());
    // Tab from the trigger pattern list lands on the sensor group's chosen button, "Magnetic".
    p.Find<QComboBox>("ComboTrigger")->setFocus();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    QCOMPARE(QApplication::focusWidget(), p.Find<QRadioButton>("TriggerHallMagnetic1"));
    // Space on an option button chooses it.
    ExpectWrites("Space on an option button",
                 [&] { KeyOn(p.Find<QRadioButton>("LimiterMode1"), Qt::Key_Space); },
                 {{4, 942, 128}});
    // The next Tab leaves the group instead of walking through its other buttons.
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    QVERIFY(!p.Find<QWidget>("LimiterMode")->isAncestorOf(QApplication::focusWidget()));
    tabs->setCurrentIndex(0);
    QTest::keyClick(p.window().map_pages().page(0)->grid(), Qt::Key_Space);
    QVERIFY(!p.Find<QCheckBox>("AllRanges")->isChecked());
  }

  // One field of each page shows the uploaded calibration (each choice's reading of the image:
  // SetupChoiceTable's own tests); each spin box and list carries the name of its own caption;
  // instant help shows a topic on the help tabs only.
  void anUploadFillsEveryPageWhoseFieldsAreNamedAndHelped() {
    testing::RunningProgram& p = *program_;
    QVERIFY(p.Find<QRadioButton>("Cylinders3")->isChecked());
    QCOMPARE(p.Find<QComboBox>("ComboTrigger")->currentText(), QString("Missing Tooth - 36-1"));
    QCOMPARE(p.Find<QSpinBox>("RevLimit1")->value(), 6800);
    QCOMPARE(p.Find<QComboBox>("ComboAFRMode")->currentText(), QString(" AFR Gasoline"));
    QTableWidget* water = p.Find<QTableWidget>("Water");
    QCOMPARE(water->item(0, 1)->text(), QString("13776"));
    QCOMPARE(water->item(8, 0)->text(), QString("Actual Temp"));
    CompensationPage* compensation = p.window().setup_pages().compensation();
    QCOMPARE(compensation->grid(CompTable::kBattMap)->Model().Text(0), std::string("1.50"));
    QCOMPARE(p.Find<QSpinBox>("Byte1011")->value(), 900);
    QCOMPARE(p.Find<QDoubleSpinBox>("Byte1018")->value(), 20.0);
    QVERIFY(p.window().editors().state().SetupErrors.empty());

    QTabWidget* tabs = p.window().tabs();
    QMap<QString, QString> names;
    for (const int tab : {3, 4, 5, 6, 7}) {
      QWidget* page = tabs->widget(tab);
      QList<QWidget*> fields;
      for (auto* w : page->findChildren<QAbstractSpinBox*>()) fields << w;
      for (auto* w : page->findChildren<QComboBox*>()) fields << w;
      for (QWidget* field : fields) {
        const QString name = field->accessibleName();
        QVERIFY2(!name.isEmpty(), qPrintable(field->objectName()));
        QAccessibleInterface* face = QAccessible::queryAccessibleInterface(field);
        QVERIFY(face != nullptr);
        if (qobject_cast<QAbstractSpinBox*>(field) != nullptr) {
          QCOMPARE(face->text(QAccessible::Name), name);
        } else {
          // A list reads its entry as its name here; its caption labels it, ahead of its box.
          const auto labels = face->relations(QAccessible::Label);
          QVERIFY2(!labels.isEmpty(), qPrintable(name));
          QCOMPARE(labels.front().first->text(QAccessible::Name), name);
        }
        QVERIFY2(!names.contains(name),
                 qPrintable(name + ": " + field->objectName() + ", " + names.value(name)));
        names[name] = field->objectName();
      }
    }
    QCOMPARE(names.value("Rev Limiter 1"), QString("RevLimit1"));
    QCOMPARE(names.value("Water Temperature Sensor"), QString("Combop4"));
    QCOMPARE(names.value("byte 2 (885)"), QString("Byte885"));

    // Every help label stands on the tab of its topic set.
    const std::map<HelpSet, int> tab_of = {
        {HelpSet::kOutputs, 3}, {HelpSet::kInputs, 4}, {HelpSet::kMainSetup, 6}};
    for (const HelpLabel& label : HelpLabels()) {
      auto* widget = p.Find<QLabel>(QString("Label%1").arg(label.index));
      QVERIFY(widget != nullptr);
      QVERIFY2(tabs->widget(tab_of.at(label.set))->isAncestorOf(widget),
               qPrintable(QString::number(label.index)));
    }
    auto* box = p.Find<QPlainTextEdit>("TextInstantHelp");
    tabs->setCurrentIndex(6);
    QVERIFY(box->isVisible());
    QLabel* fuel_mode = p.Find<QLabel>("Label101");
    const QString own_style = fuel_mode->styleSheet();
    QTest::mouseMove(fuel_mode);
    QTRY_VERIFY(fuel_mode->styleSheet().contains("background-color"));
    QTest::mouseMove(p.Find<QLabel>("Label102"));
    QTRY_COMPARE(fuel_mode->styleSheet(), own_style);
    QTest::mouseClick(fuel_mode, Qt::LeftButton);
    QVERIFY(box->toPlainText().startsWith(" Fuel Mode:"));
    tabs->setCurrentIndex(5);
    QVERIFY(!box->isVisible());
    // Off: no highlight and no text; the box keeps what it had.
    tabs->setCurrentIndex(6);
    p.Find<QRadioButton>("InstantHelp1")->click();
    QVERIFY(!box->isVisible());
    QTest::mouseClick(p.Find<QLabel>("Label100"), Qt::LeftButton);
    QVERIFY(box->toPlainText().startsWith(" Fuel Mode:"));
  }

  // The set-up pages never scroll sideways, in a 1280-wide window or at 1024 x 600, whether the
  // calibration is sound, has failing output and input functions (each marked under its field,
  // the errors listed under the pages) or fails every check that has a mark; at 1280 x 720 the
  // first two need no scrolling at all, and the idle column stands beside the outputs. At
  // 1024 x 600 the list under the pages shows every error of the failing calibration at once.
  void thePagesFitTheScreenWithAnyCalibration() {
    const std::pair<QString, CalibrationImage> calibrations[] = {
        {"sound", {}},
        {"functions", WithBytes(kFailingFunctions)},
        {"failing", WithBytes(kFailingOthers, WithBytes(kFailingFunctions))}};
    for (const auto& [name, image] : calibrations) {
      if (name != "sound") StartWith(image, name + ".sm1");
      testing::RunningProgram& p = *program_;
      QTabWidget* tabs = p.window().tabs();
      for (const QSize size : {QSize(1280, 720), QSize(1024, 600)}) {
        p.window().resize(size);
        QTRY_COMPARE(p.window().size(), size);
        for (const int tab : {3, 4, 5, 6, 7}) {
          tabs->setCurrentIndex(tab);
          QTest::qWait(100);
          auto* scroll = tabs->widget(tab)->findChild<QScrollArea*>();
          QVERIFY(scroll != nullptr);
          const QString where =
              QString("%1_tab%2_%3x%4").arg(name).arg(tab).arg(size.width()).arg(size.height());
          testing::KeepShot(&p.window(), QString("%1_tab%2").arg(name).arg(tab));
          // The layout settles once the vertical bar has taken its room (later on a busy machine).
          QTRY_VERIFY2(!scroll->horizontalScrollBar()->isVisible(), qPrintable(where));
          QTRY_VERIFY2(scroll->widget()->width() <= scroll->viewport()->width(), qPrintable(where));
          if (size.height() == 720 && name != "failing") {
            QTRY_VERIFY2(!scroll->verticalScrollBar()->isVisible(), qPrintable(where));
          }
        }
        if (size.width() == 1280) QCOMPARE(p.Find<FlowColumns>("OutputsColumns")->PerRow(), 2);
        if (name == "failing" && size.height() == 600) {
          // Every setup error is listed under the pages at once, none behind a scroll bar.
          const std::vector<std::string>& errors = p.window().editors().state().SetupErrors;
          auto* list = p.Find<QListWidget>("SetupErrorList");
          QVERIFY(errors.size() >= 8 && list->isVisible());
          QCOMPARE(list->count(), static_cast<int>(errors.size()));
          for (int i = 0; i < list->count(); ++i) {
            QCOMPARE(list->item(i)->text().toStdString(), errors[static_cast<std::size_t>(i)]);
            QVERIFY2(list->viewport()->rect().contains(list->visualItemRect(list->item(i))),
                     qPrintable(list->item(i)->text()));
          }
        }
      }
    }
  }

 private:
  // Output and input functions no entry stands for.
  static constexpr std::pair<int, int> kFailingFunctions[] = {
      {884, 200}, {910, 31}, {926, 16}, {1022, 9}, {1023, 99}};
  // With them, every other check a set-up page marks beside a control fails: a trigger pattern,
  // a rev limiter of 60,000 RPM, a dwell byte with bit 7, no idle target, an unknown injection
  // mode, battery bytes beyond the table above 2.00 ms, and more.
  static constexpr std::pair<int, int> kFailingOthers[] = {
      {902, 9},    {903, 7},    {905, 9},    {852, 250},  {853, 240},  {906, 7},   {907, 0xFF},
      {908, 77},   {947, 12},   {946, 9},    {995, 0xE7}, {996, 3},    {959, 200}, {942, 0x18},
      {958, 0xC5}, {998, 20},   {997, 9},    {952, 5},    {955, 0xFF}, {956, 99},  {1007, 250},
      {1008, 201}, {1011, 0},   {1012, 0},   {1013, 0},   {1014, 200}, {1015, 10}, {1018, 200},
      {867, 9},    {949, 0xE8}, {950, 0x03}, {900, 0},    {901, 0}};

  // The simulated ECU's base calibration with `bytes` changed.
  template <typename Bytes>
  static CalibrationImage WithBytes(const Bytes& bytes,
                                    CalibrationImage image = sim::EmbeddedBaseCalibration()) {
    for (const auto& [position, value] : bytes) {
      image.SetByte(position, static_cast<std::uint8_t>(value));
    }
    return image;
  }
};

VELA_GUI_TEST(SetupPagesRoadTest)

}  // namespace setup_pages_road_test

#include "setup_pages_road_test.moc"
