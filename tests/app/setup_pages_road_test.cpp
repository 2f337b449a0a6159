// The set-up pages against the simulated ECU over a pseudo-terminal, used as a tuner uses them:
// an upload fills every page, and each kind of control sends exactly its command-4 frames.
#include <QComboBox>
#include <QDir>
#include <QDoubleSpinBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QtTest>
#include <map>
#include <mutex>

#include "app/compensation_page.h"
#include "app/editor_session.h"
#include "app/map_pages.h"
#include "app/setup_pages.h"
#include "editors/compensation/temperature_sensors.h"
#include "program_fixture.h"
#include "shell/context_help.h"
#include "sim/core/base_calibration.h"
#include "sim/pty_runner.h"
#include "support/recording_sender.h"
#include "support/gui_test_main.h"

using namespace vela;
using vela::testing::SentFrame;

namespace {

// The single-value writes the ECU took, from its log of command frames (the live-rate register
// left out).
class WireLog {
 public:
  std::function<void(const std::string&)> Hook() {
    return [this](const std::string& line) {
      const std::lock_guard<std::mutex> lock(mutex_);
      lines_.push_back(line);
    };
  }
  std::vector<SentFrame> WritesSince(std::size_t mark) const {
    const std::lock_guard<std::mutex> lock(mutex_);
    std::vector<SentFrame> writes;
    for (std::size_t i = mark; i < lines_.size(); ++i) {
      int command = 0;
      int address = 0;
      int value = 0;
      if (std::sscanf(lines_[i].c_str(), "command %d address %d value %d", &command, &address,
                      &value) == 3 &&
          command == 4 && address != 864) {
        writes.push_back({command, address, value});
      }
    }
    return writes;
  }
  std::size_t Mark() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return lines_.size();
  }

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> lines_;
};

struct Program : testing::TestProgram {
  Program(const QString& root, const std::string& device)
      : TestProgram(root, QString::fromStdString(device)) {
    link.SetCommsDelayEnabled(false);
  }
  template <typename T>
  T* Find(const QString& name) {
    T* widget = window->findChild<T*>(name);
    if (widget == nullptr) qWarning() << "no widget" << name;
    return widget;
  }
};

void TypeInto(QAbstractSpinBox* spin, const QString& text) {
  spin->setFocus();
  spin->selectAll();
  QTest::keyClicks(spin, text);
  QTest::keyClick(spin, Qt::Key_Return);
}

QString SetupLine(const Program& program, int line) {
  QFile file(QString::fromStdString(program.setup.SetupFilePath()));
  if (!file.open(QIODevice::ReadOnly)) return {};
  return QString::fromLatin1(file.readAll()).split("\r\n").value(line - 1);
}

}  // namespace

class SetupPagesRoadTest : public QObject {
  Q_OBJECT

  std::unique_ptr<QTemporaryDir> dir_;
  std::unique_ptr<sim::InProcessSimulator> ecu_;
  std::unique_ptr<Program> program_;
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
    ecu_.reset();
    if (!dir_) dir_ = std::make_unique<QTemporaryDir>();
    ecu_ = std::make_unique<sim::InProcessSimulator>();
    sim::SimCommandLine options;
    options.verbose = true;
    options.image_path = image_path;
    std::string error;
    QVERIFY2(ecu_->Start(options, &error, wire_.Hook()), error.c_str());
    program_ = std::make_unique<Program>(dir_->path(), ecu_->SlavePath());
    QVERIFY(program_->window->Load());
    program_->window->show();
    program_->window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(program_->window.get()));
    QTRY_VERIFY_WITH_TIMEOUT(program_->window->editors().has_calibration(), 10000);
  }

  void cleanup() {
    program_.reset();
    ecu_.reset();
    dir_.reset();
  }

  void aCalibrationWithARisingEdgeFillsThePageWithoutTheWarning() {
    CalibrationImage image = sim::EmbeddedBaseCalibration();
    image.SetByte(942, 64 | 1);  // rising trigger edge
    image.SetByte(955, 64 | 4);  // a 4 bar sensor
    image.SetByte(956, 128);     // scaled to 2.000 bar
    const QString path = dir_->filePath("rising.sm1");
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(reinterpret_cast<const char*>(image.Bytes().data()), kImageLength);
    file.close();
    Start(path.toStdString());
    Program& p = *program_;
    QVERIFY(p.Find<QRadioButton>("TriggerEdgeInput1")->isChecked());
    QCOMPARE(p.Find<QComboBox>("ComboMAP")->currentText(), QString(" 4 Bar Sensor"));
    QCOMPARE(p.Find<QComboBox>("ComboMAPScale")->currentText(),
             QString("Scaled to 2.000 Bar Span"));
    for (const auto& shown : p.messages.shown) QVERIFY(shown.title != "MORVANE Warning");
  }

  void anUploadFillsEveryPage() {
    Program& p = *program_;
    // Main setup: the base calibration's four-cylinder engine.
    QVERIFY(p.Find<QRadioButton>("Cylinders3")->isChecked());
    QVERIFY(p.Find<QRadioButton>("FuelMode1")->isChecked());
    QVERIFY(p.Find<QRadioButton>("OptionImpedance2")->isChecked());
    QVERIFY(p.Find<QRadioButton>("LimiterMode0")->isChecked());
    QVERIFY(p.Find<QRadioButton>("LoadSensing1")->isChecked());
    QVERIFY(p.Find<QRadioButton>("TriggerHallMagnetic1")->isChecked());
    QCOMPARE(p.Find<QComboBox>("ComboTrigger")->currentText(), QString("Missing Tooth - 36-1"));
    QCOMPARE(p.Find<QComboBox>("ComboSpark")->currentText(), QString("Wasted Spark"));
    QCOMPARE(p.Find<QComboBox>("ComboSiteFuel")->currentIndex(), 2);
    QCOMPARE(p.Find<QComboBox>("ComboSiteIgnition")->currentIndex(), 1);
    QCOMPARE(p.Find<QComboBox>("ComboPrime")->currentText(), QString("Prime for 5  Seconds"));
    QCOMPARE(p.Find<QComboBox>("ComboMAPScale")->currentText(),
             QString("Full Scale - 1.000 Bar Span"));
    QCOMPARE(p.Find<QSpinBox>("RevLimit1")->value(), 6800);
    QCOMPARE(p.Find<QSpinBox>("RevLimit2")->value(), 7000);
    QCOMPARE(p.Find<QDoubleSpinBox>("TriggerOffset")->value(), 50.0);
    QCOMPARE(p.Find<QComboBox>("ComboAFRMode")->currentText(), QString(" AFR Gasoline"));
    // Sensor setup: the resistances behind the ratio bytes.
    QTableWidget* water = p.Find<QTableWidget>("Water");
    QCOMPARE(water->item(0, 1)->text(), QString("13776"));
    QCOMPARE(water->item(2, 1)->text(), QString("3213"));
    QCOMPARE(water->item(8, 0)->text(), QString("Actual Temp"));
    QCOMPARE(p.Find<QTableWidget>("Air")->item(0, 1)->text(), QString("35280"));
    QCOMPARE(p.Find<QSpinBox>("Byte954")->value(), 230);
    // Compensation.
    CompensationPage* compensation = p.window->setup_pages().compensation();
    QCOMPARE(compensation->grid(CompTable::kAirMap)->Model().Text(0), std::string("8.0"));
    QCOMPARE(compensation->grid(CompTable::kWaterMap)->Model().Text(1), std::string("50.0"));
    QCOMPARE(compensation->grid(CompTable::kBattMap)->Model().Text(0), std::string("1.50"));
    QCOMPARE(compensation->grid(CompTable::kThrottlePump)->Model().Text(0), std::string("50.0"));
    // Outputs and inputs, idle.
    QCOMPARE(p.Find<QSpinBox>("Byte1011")->value(), 900);
    QCOMPARE(p.Find<QSpinBox>("Byte1015")->value(), 150);
    QCOMPARE(p.Find<QDoubleSpinBox>("Byte1018")->value(), 20.0);
    QCOMPARE(p.Find<QSpinBox>("Byte1022")->value(), 0);
    QVERIFY(p.window->editors().state().SetupErrors.empty());
    SaveScreenshots();
  }

  void eachKindOfControlSendsItsBytesAndNothingElse() {
    Program& p = *program_;
    QTabWidget* tabs = p.window->tabs();
    QTest::keyClick(p.window.get(), Qt::Key_M);
    QCOMPARE(tabs->currentIndex(), 6);
    ExpectWrites("limiter group", [&] { p.Find<QRadioButton>("LimiterMode2")->click(); },
                 {{4, 942, 192}});
    ExpectWrites("rising edge", [&] { p.Find<QRadioButton>("TriggerEdgeInput1")->click(); },
                 {{4, 942, 193}});
    QCOMPARE(p.messages.shown.back().title, std::string("MORVANE Warning"));
    ExpectWrites("list by keyboard",
                 [&] {
                   QComboBox* trigger = p.Find<QComboBox>("ComboTrigger");
                   trigger->setFocus();
                   QTest::keyClick(trigger, Qt::Key_Down);
                 },
                 {{4, 902, 4}});
    // The wheel over a list the tuner has not clicked into changes nothing.
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
    // 7200 RPM is 8333 us; the period shrinks, so the low byte goes first.
    ExpectWrites("rev limiter in RPM", [&] { TypeInto(p.Find<QSpinBox>("RevLimit1"), "7200"); },
                 {{4, 949, 0x8D}, {4, 950, 0x20}});
    ExpectWrites("fuel load sites",
                 [&] {
                   QComboBox* sites = p.Find<QComboBox>("ComboSiteFuel");
                   sites->setFocus();
                   QTest::keyClick(sites, Qt::Key_Up);
                 },
                 {{4, 995, 0x20 | 1}});
    QCOMPARE(p.window->map_pages().page(0)->grid()->Model().LoadSites(), 13);
    const std::size_t quiet = wire_.Mark();
    QComboBox* afr = p.Find<QComboBox>("ComboAFRMode");
    afr->setFocus();
    QTest::keyClick(afr, Qt::Key_Down);
    QCOMPARE(SetupLine(p, 4), QString("AFR Display Mode = 1 "));
    QTest::qWait(150);
    QVERIFY(wire_.WritesSince(quiet).empty());

    tabs->setCurrentIndex(3);
    ExpectWrites("output byte", [&] { TypeInto(p.Find<QSpinBox>("Byte885"), "77"); },
                 {{4, 885, 77}});
    ExpectWrites("idle switch", [&] { p.Find<QCheckBox>("Bit856_3")->click(); }, {{4, 856, 8}});
    // 1000 RPM is 60000 us (0x00EA60), a shorter period than 900's: lowest byte first.
    ExpectWrites("idle target", [&] { TypeInto(p.Find<QSpinBox>("Byte1011"), "1000"); },
                 {{4, 1011, 0x60}, {4, 1012, 0xEA}, {4, 1013, 0x00}});

    tabs->setCurrentIndex(5);
    SmallMapGrid* air = p.window->setup_pages().compensation()->grid(CompTable::kAirMap);
    ExpectWrites("compensation key",
                 [&] {
                   air->setFocus();
                   air->SetCurrentRow(0);
                   QTest::keyClick(air, Qt::Key_Up);  // 8.0 % to 8.5 %
                 },
                 {{4, 963, 213}});
    SmallMapGrid* water_map = p.window->setup_pages().compensation()->grid(CompTable::kWaterMap);
    const std::size_t shown = p.messages.shown.size();
    ExpectWrites("water 100 % refused",
                 [&] {
                   water_map->setFocus();
                   water_map->SetCurrentRow(0);
                   QTest::keyClick(water_map, Qt::Key_1);  // typing on a cell opens its editor
                   QTest::keyClicks(QApplication::focusWidget(), "00");
                   QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
                 },
                 {});
    QCOMPARE(p.messages.shown.size(), shown + 1);
    QCOMPARE(water_map->Model().Text(0), std::string("80.1"));

    tabs->setCurrentIndex(7);
    ExpectWrites("sensor list",
                 [&] {
                   QComboBox* list = p.Find<QComboBox>("Combop4");
                   list->setFocus();
                   QTest::keyClick(list, Qt::Key_Down);  // " Alfa 2L T Spark"
                 },
                 {{4, 987, 231},
                  {4, 988, 219},
                  {4, 989, 202},
                  {4, 990, 172},
                  {4, 991, 92},
                  {4, 992, 89},
                  {4, 993, 65},
                  {4, 994, 57}});
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
    for (int i = 0; i < 8; ++i) {
      QCOMPARE(custom[i].address, 971 + i);
      if (i > 0) QVERIFY(custom[i].value < custom[i - 1].value);
    }
    QCOMPARE(p.Find<QTableWidget>("Air")->item(1, 1)->text(), QString("5896"));
    QVERIFY(p.Find<QLabel>("CustomSensorNote")->text().contains("Rows -20, 120"));
    // The program's image and the ECU's agree byte for byte after all of it.
    QTRY_VERIFY_WITH_TIMEOUT(ecu_->ImageSnapshot().Bytes() == p.window->editors().image().Bytes(),
                             3000);
  }

  void instantHelpShowsATopicOnTheHelpTabsOnly() {
    Program& p = *program_;
    // Every help label stands on the tab of its topic set.
    QTabWidget* tabs = p.window->tabs();
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
    QCOMPARE(box->toPlainText().left(53),
             QString(" Fuel Mode:  Determines how the injectors are pulsed."));
    tabs->setCurrentIndex(3);
    QTest::mouseClick(p.Find<QLabel>(QString("Label%1").arg(help_label::kFaultsFirst + 5)),
                      Qt::LeftButton);
    QVERIFY(box->toPlainText().startsWith(" Eratic/Noisy RPM Signal:"));
    tabs->setCurrentIndex(5);
    QVERIFY(!box->isVisible());
    // Off: no highlight and no text; the box keeps what it had.
    tabs->setCurrentIndex(6);
    p.Find<QRadioButton>("InstantHelp1")->click();
    QVERIFY(!box->isVisible());
    QTest::mouseClick(p.Find<QLabel>("Label100"), Qt::LeftButton);
    QVERIFY(box->toPlainText().startsWith(" Eratic/Noisy RPM Signal:"));
  }

 private:
  void SaveScreenshots() {
    const QString folder = qEnvironmentVariable("VELA_SHOT_DIR");
    if (folder.isEmpty()) return;
    QDir().mkpath(folder);
    QTabWidget* tabs = program_->window->tabs();
    for (const int tab : {3, 4, 5, 6, 7}) {
      tabs->setCurrentIndex(tab);
      QTest::qWait(700);
      program_->window->grab().save(QString("%1/tab%2.png").arg(folder).arg(tab));
    }
  }
};

VELA_GUI_TEST(SetupPagesRoadTest)
#include "setup_pages_road_test.moc"
