// The main window as a tuner meets it at start: tabs, captions, the start-up label, settings
// read into the controls and saved on change, a missing port, and the single-instance rule.
#include "app/main_window.h"

#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QRadioButton>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QtTest>

#include "app/widgets/settings_controls.h"
#include "link/qt/qt_serial_port.h"
#include "program/qt/single_instance.h"
#include "program_fixture.h"
#include "support/gui_test_main.h"

using namespace vela;

class MainWindowTest : public QObject {
  Q_OBJECT

  struct Program : vela::testing::TestProgram {
    Program(const QString& root, const QString& device) : TestProgram(root, device) {}
    QString SetupText() const {
      QFile file(QString::fromStdString(setup.SetupFilePath()));
      return file.open(QIODevice::ReadOnly) ? QString::fromLatin1(file.readAll()) : QString();
    }
  };

  std::unique_ptr<QTemporaryDir> temp_;
  QString root_;

 private slots:
  void init() {
    temp_ = std::make_unique<QTemporaryDir>();
    QVERIFY(temp_->isValid());
    root_ = temp_->path();
  }

  void theFirstStartShowsTwelveTabsMakesTheTreeAndReportsThePort() {
    Program program(root_, "/dev/no-such-tty");
    QVERIFY(program.window->Load());
    auto* tabs = program.window->findChild<QTabWidget*>("SSTab1");
    QVERIFY(tabs);
    const QStringList expected = {"&Fuel Map 1", "&Fuel Map 2",   "&Ignition Maps", "Ou&tputs",
                                  "Inpu&ts",     "&Compensation", "&Main Setup",    "&Sensor Setup",
                                  "&Help",       "&Data Page",    "File &Options",  "DataLo&gging"};
    QCOMPARE(tabs->count(), expected.size());
    for (int i = 0; i < tabs->count(); ++i) QCOMPARE(tabs->tabText(i), expected[i]);
    QCOMPARE(tabs->currentIndex(), 0);
    QCOMPARE(program.window->windowTitle(),
             QString("MORVANE Engine Management System  - Not  Connected"));
    auto* label = program.window->findChild<QLabel*>("LabelOrangeBlock");
    QCOMPARE(label->text(), QString("CountsPerMSTimer Enabled"));
    // The first start makes the folders and the default settings file, and reports the port.
    for (const auto& folder : program.folders.InCreationOrder()) {
      QVERIFY(QDir(QString::fromStdString(folder)).exists());
    }
    QCOMPARE(program.SetupText(), QString::fromStdString(DefaultSetupFileText()));
    QCOMPARE(program.messages.shown.size(), size_t(1));
    QCOMPARE(program.messages.shown[0].title, std::string("Commport Error"));
    QVERIFY(!program.port.IsOpen());
  }

  void settingsAreReadIntoTheControlsAndEveryChangeIsSaved() {
    {
      Program first(root_, "/dev/no-such-tty");
      QVERIFY(first.window->Load());
    }
    ProgramSettings saved;
    saved.frames_per_second_index = 8;
    saved.map_integrity = false;
    saved.scale = 0;
    QFile file(
        QString::fromStdString(ProgramFoldersUnder(root_.toStdString()).program + "Setup.txt"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(SetupFileText(saved).c_str());
    file.close();

    Program program(root_, "/dev/no-such-tty");
    QVERIFY(program.window->Load());
    auto* rates = program.window->findChild<QComboBox*>("FramesPerSecondList");
    QCOMPARE(rates->currentText(), QString("8 Samples/Second"));
    QVERIFY(program.window->findChild<QRadioButton*>("MapIntegrity1")->isChecked());
    QVERIFY(program.window->findChild<QRadioButton*>("Language0")->isChecked());
    // Filling the controls at start must not rewrite the file.
    QCOMPARE(program.SetupText(), QString::fromStdString(SetupFileText(saved)));

    program.window->findChild<QComboBox*>("CommPortList")->setCurrentIndex(6);
    QVERIFY(program.SetupText().startsWith("Port = 7 \r\nFrames per Second = 8 \r\n"));
    program.window->findChild<QScrollBar*>("HScroll6")->setValue(-10);
    QVERIFY(program.SetupText().endsWith("Scale =  40 \r\n"));
  }

  void aSecondInstanceShowsTheMessageAndTouchesNothing() {
    const QString root = root_ + "/second";
    SingleInstanceLock running(
        QString::fromStdString(ProgramFoldersUnder(root.toStdString()).program));
    QVERIFY(running.Acquire());
    Program program(root, "/dev/no-such-tty");
    QVERIFY(!program.window->Load());
    QCOMPARE(program.messages.shown.size(), size_t(1));
    QCOMPARE(program.messages.shown[0].title, std::string("MORVANE-ECU"));
    QCOMPARE(program.messages.shown[0].lines[0],
             std::string("MORVANE-ECU is already running         "));
    QVERIFY(!QDir(root).exists());
    QVERIFY(!program.port.IsOpen());
  }

  // A full disk: one press on the display scale's arrow is one change and one message, and the
  // scale does not walk on under the open box.
  void aSaveThatFailsShowsOneMessageAndTheArrowStops() {
    struct FullDisk : DiskFileSystem {
      int WriteFile(const std::string&, const std::string&) override { return kFileErrorDiskFull; }
    } files;
    QWidget page;
    QtMessageSink messages(&page);
    StartupTrace trace;
    ProgramSetup setup(ProgramFoldersUnder(root_.toStdString()), files, messages, trace);
    SettingsControls controls(setup);
    controls.BuildFileOptions(&page);
    page.resize(900, 700);
    page.show();
    QVERIFY(QTest::qWaitForWindowExposed(&page));
    auto* scale = page.findChild<QScrollBar*>("HScroll6");
    QVERIFY(scale);
    const int before = scale->value();
    int boxes = 0;
    QTimer closer;
    closer.setInterval(700);
    connect(&closer, &QTimer::timeout, [&] {
      if (QWidget* box = QApplication::activeModalWidget()) {
        ++boxes;
        box->close();
      }
    });
    closer.start();
    // Press on the right arrow and keep it pressed: the box opens under the pressed arrow.
    const QPoint arrow(scale->width() - 4, scale->height() / 2);
    QTest::mousePress(scale, Qt::LeftButton, Qt::NoModifier, arrow);
    QTest::qWait(2500);
    QTest::mouseRelease(scale, Qt::LeftButton, Qt::NoModifier, arrow);
    QTest::qWait(800);
    QCOMPARE(boxes, 1);
    QCOMPARE(scale->value(), before + 1);
  }
};

VELA_GUI_TEST(MainWindowTest)
#include "main_window_test.moc"
