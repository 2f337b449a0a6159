#include "app/main_window.h"

#include <QApplication>
#include <QFrame>
#include <QHBoxLayout>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

#include "app/form_spare.h"
#include "app/settings_controls.h"
#include "link/qt/qt_serial_port.h"

namespace vela {

namespace {

constexpr const char* kTabTexts[] = {
    "&Fuel Map 1", "&Fuel Map 2",    "&Ignition Maps", "Ou&tputs",  "Inpu&ts",     "&Compensation",
    "&Main Setup", "&Sensor Setup",  "&Help",          "&Data Page", "File &Options", "DataLo&gging"};
constexpr const char* kPageNames[] = {
    "PageFuelMap1", "PageFuelMap2",    "PageIgnitionMaps", "PageOutputs",   "PageInputs",
    "PageCompensation", "PageMainSetup", "PageSensorSetup", "PageHelp",     "PageDataPage",
    "PageFileOptions", "PageDataLogging"};
constexpr int kTabCount = 12;

enum Tab {
  kFuelMap1 = 0, kFuelMap2, kIgnitionMaps, kOutputs, kInputs, kCompensation,
  kMainSetup, kSensorSetup, kHelp, kDataPage, kFileOptions, kDataLogging
};

QLabel* PageNote(QWidget* parent, const QString& text) {
  auto* note = new QLabel(text, parent);
  note->setWordWrap(true);
  note->setStyleSheet("color: #606060;");
  return note;
}

}  // namespace

MainWindow::MainWindow(MainWindowParts parts, QWidget* parent)
    : QMainWindow(parent),
      parts_(std::move(parts)),
      settings_controls_(new SettingsControls(parts_.setup, this)) {
  setWindowTitle(kNotConnectedCaption);
  auto* central = new QWidget(this);
  central->setObjectName("Form1");
  auto* layout = new QVBoxLayout(central);
  tabs_ = new QTabWidget(central);
  tabs_->setObjectName("SSTab1");
  for (int i = 0; i < kTabCount; ++i) tabs_->addTab(BuildPage(i), kTabTexts[i]);
  layout->addWidget(tabs_, 1);
  BuildStatusStrip(central);
  setCentralWidget(central);
  base_font_points_ = central->font().pointSize();

  settings_controls_->device_for_port = [this](int n) { return parts_.port.DeviceFor(n); };
  connect(settings_controls_, &SettingsControls::PortChosen, this, &MainWindow::ReopenPort);
  connect(settings_controls_, &SettingsControls::ScaleChanged, this, &MainWindow::ApplyScale);
  connect(settings_controls_->first_run_button(), &QPushButton::clicked, this,
          &MainWindow::OpenFirstRunSetup);
  parts_.trace.set_on_show([this](const std::string& text) {
    startup_label_->setText(QString::fromStdString(text));
  });
  parts_.setup.set_on_settings_read([this] { settings_controls_->ShowSettings(); });
}

MainWindow::~MainWindow() {
  parts_.trace.set_on_show(nullptr);
  parts_.setup.set_on_settings_read(nullptr);
}

QWidget* MainWindow::BuildPage(int index) {
  auto* page = new QWidget;
  page->setObjectName(kPageNames[index]);
  auto* layout = new QVBoxLayout(page);
  switch (index) {
    case kFuelMap1:
      layout->addWidget(settings_controls_->BuildFuelDisplay(page));
      layout->addWidget(PageNote(page, "Fuel 1: the map appears here once a calibration has been "
                                       "uploaded from the ECU or loaded from a map file."));
      break;
    case kFuelMap2:
      layout->addWidget(PageNote(page, "Fuel 2: the map appears here once a calibration has been "
                                       "uploaded from the ECU or loaded from a map file."));
      break;
    case kIgnitionMaps:
      layout->addWidget(PageNote(page, "Ignition: the map appears here once a calibration has "
                                       "been uploaded from the ECU or loaded from a map file."));
      break;
    case kOutputs:
      layout->addWidget(settings_controls_->BuildOutputsDisplay(page));
      break;
    case kHelp:
      layout->addWidget(settings_controls_->BuildHelpOptions(page));
      break;
    case kDataPage: {
      layout->addWidget(settings_controls_->BuildDataPageOptions(page));
      auto* reset = new QPushButton("&Reset Displays", page);
      reset->setObjectName("Command16");
      connect(reset, &QPushButton::clicked, this, &MainWindow::RunCommand16);
      layout->addWidget(reset, 0, Qt::AlignLeft);
      break;
    }
    case kFileOptions:
      layout->addWidget(settings_controls_->BuildFileOptions(page));
      break;
    case kDataLogging:
      layout->addWidget(settings_controls_->BuildDatalogOptions(page));
      break;
    default:
      break;
  }
  layout->addStretch(1);
  return page;
}

void MainWindow::BuildStatusStrip(QWidget* parent) {
  auto* strip = new QFrame(parent);
  strip->setFrameShape(QFrame::StyledPanel);
  auto* row = new QHBoxLayout(strip);
  row->setContentsMargins(6, 2, 6, 2);
  status_label_ = new QLabel(strip);
  status_label_->setObjectName("StatusLabel");
  status_label_->setMinimumWidth(160);
  port_label_ = new QLabel(strip);
  port_label_->setObjectName("PortLabel");
  startup_label_ = new QLabel(strip);
  startup_label_->setObjectName("LabelOrangeBlock");
  startup_label_->setStyleSheet("background-color: rgb(255, 160, 40); padding: 1px 6px;");
  notice_label_ = new QLabel(strip);
  notice_label_->setObjectName("NoticeLabel");
  row->addWidget(status_label_);
  row->addWidget(port_label_);
  row->addWidget(notice_label_, 1);
  row->addWidget(startup_label_);
  static_cast<QVBoxLayout*>(parent->layout())->addWidget(strip);
}

bool MainWindow::Load() { return RunStartupSequence(*this, parts_.setup, parts_.trace); }

void MainWindow::SizeWindow() {
  const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
  resize(std::min(1280, screen.width()), std::min(860, screen.height()));
}

void MainWindow::HideComponentsBeforeStartup() {
  hidden_until_started_ = {tabs_};
  for (QWidget* w : hidden_until_started_) w->setEnabled(false);
}

void MainWindow::SetColours() {
  QPalette palette = tabs_->palette();
  palette.setColor(QPalette::Highlight, QColor(40, 90, 200));
  palette.setColor(QPalette::HighlightedText, Qt::white);
  tabs_->setPalette(palette);
}

void MainWindow::SetupLogLiveChannel1() { datalog_channel_enabled_.fill(0); }
void MainWindow::SetupTabs() { tabs_->setCurrentIndex(kFuelMap1); }
void MainWindow::SetupFormSize() { setMinimumSize(900, 600); }
void MainWindow::SetupRpmPoints() {}
void MainWindow::SetupGrid(const std::string&) {}

bool MainWindow::CheckSingleInstance() {
  if (parts_.claim_single_instance()) return true;
  parts_.messages.Show(MessageIcon::kInformation, "MORVANE-ECU",
                       {"MORVANE-ECU is already running         "});
  return false;
}

void MainWindow::SetupNoticeLabel() {
  notice_label_->setText("Programmable engine management - keep the engine safe while tuning");
}

void MainWindow::SetupPortAndSampleLists() { settings_controls_->FillFixedLists(); }
void MainWindow::SetupInfoGrids() {}
void MainWindow::SetupSensorAndTriggerLists() {}
void MainWindow::SetupOutputPositions() {}
void MainWindow::SetupEditorControls() {}
void MainWindow::SetupHiddenFocuses() {}

void MainWindow::ReadProgramSettings() {
  parts_.setup.ReadProgramSettings(parts_.port);
  port_label_->setText(parts_.port.IsOpen() ? parts_.port.device() : QString("Port closed"));
  ApplyScale(parts_.setup.settings.scale);
}

void MainWindow::EnableDatalogChannel0() { datalog_channel_enabled_[0] = 1; }
void MainWindow::SetupGpiNames() {}
void MainWindow::SetupGpoNames() {}
void MainWindow::SetupDatalogChart() {}
void MainWindow::SetupChartsAndCrossHair() {}
void MainWindow::LoadDatalogSettings() {}

void MainWindow::SelectFirstTab() {
  for (QWidget* w : hidden_until_started_) w->setEnabled(true);
  tabs_->setCurrentIndex(kFuelMap1);
}

void MainWindow::StartCountsPerMsTimer() {}

void MainWindow::RunCommand16() { status_label_->clear(); }

void MainWindow::ReopenPort(int port_number) {
  parts_.port.set_device_override(QString());
  parts_.setup.CommPortNumber = port_number;
  parts_.port.Close();
  if (!parts_.port.Open(port_number)) ShowCommportError(parts_.messages);
  port_label_->setText(parts_.port.IsOpen() ? parts_.port.device() : QString("Port closed"));
}

void MainWindow::ApplyScale(int value) {
  QFont font = centralWidget()->font();
  font.setPointSizeF(base_font_points_ * (100.0 + value) / 100.0);
  centralWidget()->setFont(font);
}

void MainWindow::OpenFirstRunSetup() {
  FormSpare dialog(parts_.setup, parts_.port, parts_.files, parts_.messages, this);
  dialog.exec();
}

}  // namespace vela
