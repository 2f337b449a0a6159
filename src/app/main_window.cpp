#include "app/main_window.h"

#include <QApplication>
#include <QFrame>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QShowEvent>
#include <QVBoxLayout>

#include "app/form_spare.h"
#include "app/history/history_panel.h"
#include "app/pages/data_page.h"
#include "app/pages/datalog_page.h"
#include "app/pages/fault_panel.h"
#include "app/pages/file_options_page.h"
#include "app/pages/help_page.h"
#include "app/pages/map_pages.h"
#include "app/pages/setup/setup_error_list.h"
#include "app/pages/setup/setup_pages.h"
#include "app/pages/target_panel.h"
#include "app/sessions/compare_session.h"
#include "app/sessions/editor_session.h"
#include "app/sessions/fault_monitor.h"
#include "app/sessions/link_session.h"
#include "app/sessions/live_view.h"
#include "app/sessions/review_session.h"
#include "app/sessions/target_session.h"
#include "app/widgets/own_keys.h"
#include "app/widgets/settings_controls.h"
#include "app/widgets/status_strip.h"
#include "app/workbench/compare_pages.h"
#include "app/workbench/map_log_overlay.h"
#include "app/workbench/proposal_pages.h"
#include "datalog/qt/chart_accessible.h"
#include "datalog/qt/datalog_chart.h"
#include "editors/mapgrid/key_routing.h"
#include "editors/mapgrid/qt/map_key_press.h"
#include "link/qt/qt_serial_port.h"
#include "program/afr_display.h"

namespace vela {

namespace {

constexpr const char* kTabTexts[] = {"&Fuel Map 1", "&Fuel Map 2",   "&Ignition Maps",
                                     "Ou&tputs",    "Inpu&ts",       "&Compensation",
                                     "&Main Setup", "&Sensor Setup", "&Help",
                                     "&Data Page",  "File &Options", "DataLo&gging"};
constexpr const char* kPageNames[] = {"PageFuelMap1",  "PageFuelMap2",    "PageIgnitionMaps",
                                      "PageOutputs",   "PageInputs",      "PageCompensation",
                                      "PageMainSetup", "PageSensorSetup", "PageHelp",
                                      "PageDataPage",  "PageFileOptions", "PageDataLogging"};
constexpr int kTabCount = 12;
constexpr int kOrangeBlockClearMs = 3000;
// Read-outs are redrawn 10 times a second: numbers that change faster cannot be read, and every
// redraw costs the laptop's battery. The strip follows the link 4 times a second.
constexpr int kLiveRefreshMs = 100;
constexpr int kStatusRefreshMs = 250;

enum Tab {
  kFuelMap1 = 0,
  kFuelMap2,
  kIgnitionMaps,
  kOutputs,
  kInputs,
  kCompensation,
  kMainSetup,
  kSensorSetup,
  kHelp,
  kDataPage,
  kFileOptions,
  kDataLogging
};

}  // namespace

// The status label as the link's start-up measurement writes to it. Its colours are left out:
// in the strip, colour belongs to the link state alone.
class StatusLabelAdapter : public StatusLabel {
 public:
  explicit StatusLabelAdapter(QLabel* label) : label_(label) {}
  void SetText(const std::string& text) override {
    label_->setText(QString::fromStdString(text));
    label_->repaint();
  }
  void SetColour(LabelColour) override {}

 private:
  QLabel* label_;
};

MainWindow::MainWindow(MainWindowParts parts, QWidget* parent)
    : QMainWindow(parent),
      parts_(std::move(parts)),
      settings_controls_(new SettingsControls(parts_.setup, this)),
      dialogs_(this),
      editors_(new EditorSession(
          {parts_.link, parts_.trace, parts_.messages, parts_.dialogs ? *parts_.dialogs : dialogs_,
           parts_.files, parts_.setup.folders(), parts_.setup.SuppressChangeEvents},
          this)),
      live_view_(new LiveView(parts_.link, parts_.setup.settings, this)),
      fault_monitor_(new FaultMonitor(parts_.link, this)),
      map_pages_(new MapPages(*editors_, parts_.link, *live_view_, parts_.messages, this)) {
  BuildLayout();
  ConnectParts();
  BuildCompare();
  BuildTargets();
  BuildProposal();
  BuildLogOverlay();
  WireReview();
  qApp->installEventFilter(this);
}

void MainWindow::BuildLayout() {
  setWindowTitle(QString::fromStdString(parts_.link.state().Caption));
  auto* central = new QWidget(this);
  central->setObjectName("Form1");
  auto* layout = new QVBoxLayout(central);
  tabs_ = new QTabWidget(central);
  tabs_->setObjectName("SSTab1");
  // The keyboard belongs to the map: the tab bar never takes it, so Left and Right move in the
  // grid. Narrow tabs keep all twelve in view on a netbook's 1024 pixels.
  tabs_->tabBar()->setFocusPolicy(Qt::NoFocus);
  tabs_->setStyleSheet("QTabBar::tab { padding: 4px 7px; }");
  setup_pages_ = new SetupPages(
      *editors_, parts_.link, parts_.setup, *settings_controls_, tabs_,
      [this] { map_pages_->ShowEditors(); }, this);
  for (int i = 0; i < kTabCount; ++i) tabs_->addTab(BuildPage(i), kTabTexts[i]);
  layout->addWidget(tabs_, 1);
  layout->addWidget(setup_pages_->help_box());
  setup_errors_ = new SetupErrorList(central);
  layout->addWidget(setup_errors_);
  status_strip_ = new StatusStrip(central);
  layout->addWidget(status_strip_);
  setCentralWidget(central);
  history_panel_ = new HistoryPanel(*editors_, this);
  base_font_points_ = central->font().pointSize();
}

void MainWindow::ConnectParts() {
  settings_controls_->device_for_port = [this](int n) { return parts_.port.DeviceFor(n); };
  connect(settings_controls_, &SettingsControls::PortChosen, this, &MainWindow::ReopenPort);
  connect(settings_controls_, &SettingsControls::ScaleChanged, this, &MainWindow::ApplyScale);
  connect(settings_controls_->first_run_button(), &QPushButton::clicked, this,
          &MainWindow::OpenFirstRunSetup);
  parts_.trace.set_on_show([this](const std::string& text) {
    status_strip_->ShowStartupText(QString::fromStdString(text));
  });
  parts_.setup.set_on_settings_read([this] { settings_controls_->ShowSettings(); });
  status_adapter_ = std::make_unique<StatusLabelAdapter>(status_strip_->status_label());
  WireLink();
  connect(editors_, &EditorSession::EditorsFilled, this, [this] {
    map_pages_->ShowEditors();
    setup_pages_->ShowEditors();
    ShowSetupErrors();
    parts_.link.SetDutyBase(DutyLimitBase(editors_->state().setup));
  });
  connect(editors_, &EditorSession::MapRefilled, this, [this](EditedMap map) {
    map_pages_->ShowMapValues(map == EditedMap::kFuel1   ? kFuelMap1
                              : map == EditedMap::kFuel2 ? kFuelMap2
                                                         : kIgnitionMaps);
  });
  connect(editors_, &EditorSession::OfflineChanged, this, &MainWindow::ShowOffline);
  connect(editors_, &EditorSession::HistoryNote, status_strip_, &StatusStrip::ShowEditNote);
  connect(&map_pages_->operations(), &GridOperations::Note, status_strip_,
          &StatusStrip::ShowEditNote);
  connect(editors_, &EditorSession::SendProgress, status_strip_, &StatusStrip::ShowSending);
  // "DownLoad" stands in the status label (`LabelOrangeBlock`) while a download runs.
  connect(editors_, &EditorSession::DownloadStatus, status_strip_, &StatusStrip::ShowStartupText);
  connect(editors_, &EditorSession::MapInUseChanged, status_strip_, &StatusStrip::ShowMapInUse);
  connect(tabs_, &QTabWidget::currentChanged, this, &MainWindow::PageShown);
  connect(settings_controls_, &SettingsControls::NumericalChanged, map_pages_,
          &MapPages::SetNumerical);
  connect(status_strip_, &StatusStrip::FaultClicked, this, &MainWindow::OpenFaults);
  connect(fault_monitor_, &FaultMonitor::WatchChanged, this, &MainWindow::RefreshStatus);
  if (auto* english = findChild<QRadioButton*>("Language0")) {
    connect(english, &QRadioButton::toggled, help_page_, &HelpPage::ShowKeystrokeTable);
    connect(english, &QRadioButton::toggled, setup_pages_, &SetupPages::LanguageChanged);
  }
  if (auto* instant_help = findChild<QRadioButton*>("InstantHelp0")) {
    connect(instant_help, &QRadioButton::toggled, setup_pages_, &SetupPages::InstantHelpChanged);
  }
}

void MainWindow::BuildCompare() {
  compare_ = new CompareSession({*editors_, parts_.dialogs ? *parts_.dialogs : dialogs_,
                                 parts_.files, parts_.messages, parts_.setup.folders()},
                                this);
  compare_pages_ = new ComparePages(*compare_, *map_pages_, tabs_, this);
  connect(compare_pages_, &ComparePages::Note, status_strip_, &StatusStrip::ShowEditNote);
  // "Compare" on a restore point in the history panel.
  connect(history_panel_, &HistoryPanel::CompareRequested, compare_, &CompareSession::CompareWith);
}

void MainWindow::BuildProposal() {
  proposal_ = new ProposalSession(
      {*editors_, *compare_, *datalog_page_, parts_.dialogs ? *parts_.dialogs : dialogs_,
       parts_.files, parts_.messages, parts_.setup.folders(), *targets_},
      this);
  proposal_->LoadSettings();
  proposal_pages_ = new ProposalPages(*proposal_, *map_pages_, this);
  connect(proposal_pages_, &ProposalPages::Note, status_strip_, &StatusStrip::ShowEditNote);
}

void MainWindow::BuildLogOverlay() {
  log_overlay_ = new MapLogOverlay(*editors_, *map_pages_, *datalog_page_, *targets_, this);
  connect(log_overlay_, &MapLogOverlay::Note, status_strip_, &StatusStrip::ShowEditNote);
}

void MainWindow::BuildTargets() {
  targets_ = new TargetSession(*editors_, parts_.files, parts_.messages,
                               parts_.setup.folders().program, this);
  target_panel_ = new TargetPanel(
      *targets_, map_pages_->operations(),
      [this]() -> const MapGridModel& { return map_pages_->page(kFuelMap1)->grid()->Model(); },
      this);
  connect(targets_, &TargetSession::Note, status_strip_, &StatusStrip::ShowEditNote);
}

// The log review's defaults follow the engine set-up (the duty base, the load of the fuel maps)
// and target() in its math channels reads the target table in force.
void MainWindow::WireReview() {
  ReviewSession& review = datalog_page_->review();
  const auto follow = [this, &review] {
    const bool load_is_map = targets_->table().Axes().basis == LoadBasis::kMap;
    review.SetDefaultMath(
        review::DefaultMathChannels(DutyLimitBase(editors_->state().setup), load_is_map));
  };
  // The lookup reads the table in force; only a change of the table evaluates again.
  review.SetTarget(
      [this](double rpm, double load) { return targets_->table().AtPoint(rpm, load); });
  connect(targets_, &TargetSession::Changed, this, [follow, &review] {
    follow();
    review.TargetChanged();
  });
  connect(editors_, &EditorSession::EditorsFilled, this, follow);
  follow();
}

MainWindow::~MainWindow() {
  parts_.trace.set_on_show(nullptr);
  parts_.setup.set_on_settings_read(nullptr);
}

QWidget* MainWindow::BuildPage(int index) {
  auto* page = new QWidget;
  page->setObjectName(kPageNames[index]);
  auto* layout = new QVBoxLayout(page);
  if (setup_pages_->BuildPage(index, page)) return page;
  switch (index) {
    case kFuelMap1:
    case kFuelMap2:
    case kIgnitionMaps: {
      MapPage* map_page = map_pages_->BuildPage(index, page);
      layout->addWidget(map_page, 1);
      if (index == kFuelMap1) {
        map_page->options_area()->layout()->addWidget(settings_controls_->BuildFuelDisplay(page));
      }
      map_page->KeepKeyboardOnGrid();
      return page;
    }
    case kHelp:
      help_page_ = new HelpPage(settings_controls_->BuildHelpOptions(page), page);
      notice_label_ = help_page_->notice_label();
      layout->addWidget(help_page_, 1);
      return page;
    case kDataPage:
      Place(page, BuildDataPage());
      return page;
    case kFileOptions:
      file_options_page_ =
          new FileOptionsPage(*editors_, settings_controls_->BuildFileOptions(page), page);
      layout->addWidget(file_options_page_);
      break;
    case kDataLogging:
      datalog_page_ = new DatalogPage(
          {parts_.setup, parts_.link, parts_.messages, parts_.dialogs ? *parts_.dialogs : dialogs_,
           parts_.files, editors_->dialog_memory().folder},
          settings_controls_->BuildDatalogOptions(page), page);
      MakeChartAccessible(datalog_page_->findChild<DatalogChart*>("TChart1"));
      page->setFocusProxy(datalog_page_);  // the chart has the keyboard when the tab comes up
      layout->addWidget(datalog_page_, 1);
      return page;
    default:
      break;
  }
  layout->addStretch(1);
  return page;
}

// The live values, the display reset and the ECU's fault codes; the page scrolls.
QWidget* MainWindow::BuildDataPage() {
  auto* content = new QWidget;
  content->setObjectName("DataPage");
  auto* column = new QVBoxLayout(content);
  column->setContentsMargins(0, 0, 0, 0);
  data_page_ = new DataPage(content);
  column->addWidget(data_page_);
  QLayout* options = data_page_->options_area()->layout();
  auto* reset = new QPushButton("Reset Displays", content);
  reset->setObjectName("Command16");
  connect(reset, &QPushButton::clicked, this, &MainWindow::ResetDisplays);
  options->addWidget(reset);
  options->setAlignment(reset, Qt::AlignLeft);
  fault_panel_ = new FaultPanel(
      *fault_monitor_,
      [this] {
        const LiveData& live = parts_.link.live();
        return live_view_->Live() && live.refresh_count > 0 && live.error_count == 0 &&
               live.last_error == 0;
      },
      content);
  column->addWidget(fault_panel_);
  column->addStretch(1);
  return content;
}

void MainWindow::WireLink() {
  LinkSession& link = parts_.link;
  link.SetAfrValue(
      [this](double lambda) { return ShownAfr(lambda, parts_.setup.settings.afr_display_mode); });
  connect(&link, &LinkSession::CaptionChanged, this, &QWidget::setWindowTitle);
  connect(&link, &LinkSession::LiveDataChanged, this, [this] { live_data_new_ = true; });
  connect(&link, &LinkSession::FrameTaken, status_strip_, &StatusStrip::CountFrame);
  live_refresh_.setInterval(kLiveRefreshMs);
  connect(&live_refresh_, &QTimer::timeout, this, [this] {
    // A frame the Data Page waited its turn for stays new until the page has shown it.
    if (live_data_new_) live_data_new_ = !ShowLiveData(/*tick=*/true);
  });
  live_refresh_.start();
  status_refresh_.setInterval(kStatusRefreshMs);
  connect(&status_refresh_, &QTimer::timeout, this, &MainWindow::RefreshStatus);
  status_refresh_.start();
  connect(&link, &LinkSession::CalibrationReceived, this, [this](const CalibrationImage& image) {
    // The upload's own texts end here; the sorting shows its texts next.
    last_orange_block_ = parts_.link.display().orange_block;
    editors_->ApplyUpload(image);
    // `TimerOrangeBlock`: the label clears a moment after "Upload Sorting Complete".
    QTimer::singleShot(kOrangeBlockClearMs, this, [this] {
      if (status_strip_->startup_label()->text() == "Upload Sorting Complete") {
        status_strip_->ShowStartupText(QString());
      }
    });
  });
  connect(&link, &LinkSession::DisplaysReset, this, [this] { ShowLiveData(); });
  connect(&link, &LinkSession::FrameTaken, datalog_page_, &DatalogPage::FrameTaken);
  connect(&link, &LinkSession::LinkLost, datalog_page_, &DatalogPage::LinkLost);
  connect(datalog_page_, &DatalogPage::ShowDataLoggingTab, this,
          [this] { tabs_->setCurrentIndex(kDataLogging); });
  datalog_page_->SetFuelMap(&map_pages_->page(kFuelMap1)->grid()->Model());
  // A new ECU fault marks a log being recorded at the moment it was seen.
  connect(fault_monitor_, &FaultMonitor::FaultSeen, datalog_page_,
          [this](int code, const QString& title) {
            if (!datalog_page_->Logging()) return;
            datalog_page_->AddMarker("Fault " + std::to_string(code) + ":" + title.toStdString());
          });
  connect(&link, &LinkSession::CaptionChanged, this, [this] {
    RefreshStatus();
    ShowLiveData();
  });
  connect(settings_controls_, &SettingsControls::FramesPerSecondChosen, &link,
          &LinkSession::RateChosen);
  connect(settings_controls_, &SettingsControls::PacketSpeedChosen, &link,
          &LinkSession::PacketSpeedChosen);
  connect(settings_controls_, &SettingsControls::SlowSendChosen, &link,
          &LinkSession::SlowSendChosen);
}

void MainWindow::ApplyLinkSettings() {
  const ProgramSettings& s = parts_.setup.settings;
  parts_.link.RateSet(s.frames_per_second_index);
  parts_.link.PacketSpeedChosen(s.comms_packet_speed);
  parts_.link.SlowSendChosen(s.reduce_comms_sending != 0);
  parts_.link.dispatcher().SetPortNumber(parts_.setup.CommPortNumber);
}

ProgramStatus MainWindow::CurrentStatus() const {
  LinkSession& link = parts_.link;
  ProgramStatus status;
  status.offline = offline_;
  status.connected = live_view_->Live();
  status.reading_calibration = link.upload().UploadStarted();
  status.downloading = editors_->download().running();
  status.download_percent = static_cast<int>(
      std::lround(100.0 * editors_->download().progress_width() / kDownloadProgressFullWidth));
  status.sends_stalled = link.state().StallCounter >= ConnectionSupervisor::kStallLookLevel;
  return status;
}

void MainWindow::RefreshStatus() {
  const LinkDisplay& d = parts_.link.display();
  status_strip_->ShowStatus(CurrentStatus(), map_pages_->LiveTuning());
  status_strip_->ShowCounters(d);
  if (!d.orange_block.empty() && d.orange_block != last_orange_block_) {
    last_orange_block_ = d.orange_block;
    status_strip_->ShowStartupText(QString::fromStdString(d.orange_block));
  }
  const FaultWatch& watch = fault_monitor_->watch();
  status_strip_->ShowFault(watch.Unacknowledged(), static_cast<int>(watch.Seen().size()));
  const DatalogCapture& capture = datalog_page_->capture();
  status_strip_->ShowDatalog(capture.DatalogLive, capture.DatalogTime,
                             static_cast<std::size_t>(capture.DatalogRecordCount));
}

// Only the page in front is redrawn; a page brought to the front is redrawn at once. The Data
// Page's large numbers take every second tick (five times a second): numbers that change faster
// cannot be read, and their repaint is the page's whole cost.
bool MainWindow::ShowLiveData(bool tick) {
  const LiveData shown = live_view_->Shown();
  const bool live = live_view_->Live();
  const int afr_mode = parts_.setup.settings.afr_display_mode;
  const int tab = tabs_->currentIndex();
  if (tab < MapPages::kPages) map_pages_->ShowLive(shown, afr_mode, live, tab);
  const bool data_page_waits = tab == kDataPage && tick && ++data_page_ticks_ % 2 != 0;
  if (tab == kDataPage && !data_page_waits) {
    data_page_->Show(shown, afr_mode, map_pages_->LiveTuning(), live);
  }
  setup_pages_->ShowLive(shown, afr_mode, live);
  parts_.link.SetDutyBase(DutyLimitBase(editors_->state().setup));
  return !data_page_waits;
}

bool MainWindow::Load() { return RunStartupSequence(LoadActions(), parts_.setup, parts_.trace); }

StartupActions MainWindow::LoadActions() {
  StartupActions a;
  a.size_window = [this] { SizeWindow(); };
  a.hide_before_startup = [this] { HideComponentsBeforeStartup(); };
  a.set_colours = [this] { SetColours(); };
  a.clear_datalog_channels = [this] { datalog_page_->ClearChannelFlags(); };
  a.set_up_tabs = [this] { tabs_->setCurrentIndex(kFuelMap1); };
  // Small enough for a netbook's screen less its task bar; the pages scroll or fold their graphs.
  a.set_form_size = [this] { setMinimumSize(800, 520); };
  a.set_up_map_grids = [this] { map_pages_->SetUpGrids(); };
  a.check_single_instance = [this] { return CheckSingleInstance(); };
  a.set_up_notice_label = [this] {
    notice_label_->setText("Programmable engine management - keep the engine safe while tuning");
  };
  a.set_up_port_lists = [this] { settings_controls_->FillFixedLists(); };
  a.read_program_settings = [this] { ReadProgramSettings(); };
  a.enable_datalog_channel0 = [this] { datalog_page_->EnableChannel0(); };
  a.set_up_datalog_chart = [this] { datalog_page_->SetupChart(); };
  a.load_datalog_settings = [this] {
    datalog_page_->LoadDatalogSettings();
    datalog_page_->OfferRecovery();
    editors_->OfferLastSession();
  };
  a.select_first_tab = [this] { SelectFirstTab(); };
  a.start_counts_per_ms_timer = [this] { StartCountsPerMsTimer(); };
  a.reset_displays = [this] { ResetDisplays(); };
  return a;
}

namespace {
constexpr QSize kPreferredSize(1280, 860);
}  // namespace

void MainWindow::SizeWindow() {
  const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
  resize(std::min(kPreferredSize.width(), screen.width()),
         std::min(kPreferredSize.height(), screen.height()));
  move(screen.topLeft());
}

void MainWindow::ShowOnScreen() {
  const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
  if (screen.width() <= kPreferredSize.width() || screen.height() <= kPreferredSize.height()) {
    showMaximized();
  } else {
    show();
  }
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

bool MainWindow::CheckSingleInstance() {
  if (parts_.claim_single_instance()) return true;
  parts_.messages.Show(MessageIcon::kInformation, "MORVANE-ECU",
                       {"MORVANE-ECU is already running         "});
  return false;
}

void MainWindow::ReadProgramSettings() {
  parts_.setup.ReadProgramSettings(parts_.port);
  ShowPortDevice();
  ApplyScale(parts_.setup.settings.scale);
  ApplyLinkSettings();
}

void MainWindow::SelectFirstTab() {
  for (QWidget* w : hidden_until_started_) w->setEnabled(true);
  tabs_->setCurrentIndex(kFuelMap1);
}

void MainWindow::StartCountsPerMsTimer() {
  parts_.link.Start();
  parts_.link.StartCountsPerMsTimer(*status_adapter_);
}

void MainWindow::ResetDisplays() {
  parts_.link.live().Clear();
  ShowLiveData();
}

void MainWindow::ReopenPort(int port_number) {
  parts_.port.set_device_override(QString());
  parts_.setup.CommPortNumber = port_number;
  parts_.link.dispatcher().SetPortNumber(port_number);
  parts_.port.Close();
  if (!parts_.port.Open(port_number)) ShowCommportError(parts_.messages);
  ShowPortDevice();
}

void MainWindow::ShowPortDevice() {
  status_strip_->ShowPort(parts_.port.IsOpen() ? parts_.port.device() : QString());
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

void MainWindow::ShowSetupErrors() { setup_errors_->ShowErrors(editors_->state().SetupErrors); }

void MainWindow::ShowOffline(bool offline) {
  file_options_page_->ShowOffline(offline);
  offline_ = offline;
  RefreshStatus();
}

void MainWindow::showEvent(QShowEvent* event) {
  QMainWindow::showEvent(event);
  if (!event->spontaneous()) FocusPage(tabs_->currentIndex());
}

void MainWindow::PageShown(int index) {
  map_pages_->TabShown(index);
  if (index == kDataPage) fault_monitor_->Acknowledge();
  ShowLiveData();
  FocusPage(index);
}

void MainWindow::FocusPage(int index) {
  if (index < MapPages::kPages) {
    map_pages_->page(index)->grid()->setFocus(Qt::OtherFocusReason);
  } else if (QWidget* page = tabs_->widget(index)) {
    page->setFocus(Qt::OtherFocusReason);
  }
}

void MainWindow::OpenFaults() {
  tabs_->setCurrentIndex(kDataPage);
  fault_monitor_->Acknowledge();
  fault_panel_->ShowSeen();
  RefreshStatus();
}

bool MainWindow::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::KeyPress && isActiveWindow() &&
      QApplication::activeModalWidget() == nullptr && !InHistoryPanel(watched)) {
    if (HandleWindowKey(static_cast<QKeyEvent*>(event))) return true;
  }
  return QMainWindow::eventFilter(watched, event);
}

// The main window sees every key first. Keys typed into a text or number field, or a widget
// that keeps its own keys, stay there.
bool MainWindow::HandleWindowKey(QKeyEvent* event) {
  if (KeepsOwnKeys(QApplication::focusWidget())) return false;
  const KeyContext context{tabs_->currentIndex(), previous_key_was_space_};
  const KeyRoute route = RouteMainWindowKey(MapKeyPressOf(*event), context);
  previous_key_was_space_ = event->key() == Qt::Key_Space && !previous_key_was_space_;
  const int tab = tabs_->currentIndex();
  if (compare_pages_->HandleKey(route.action, *event, tab)) return true;
  if (log_overlay_->HandleKey(route.action, tab)) return true;
  if (HandleWorkbenchKey(route.action, tab)) return true;
  switch (route.action) {
    case KeyAction::kPassToGrid:
      return false;
    case KeyAction::kToggleAllRanges:
      map_pages_->ToggleAllRanges();
      return true;
    case KeyAction::kToggleLiveTuning:
      map_pages_->ToggleLiveTuning();
      RefreshStatus();
      ShowLiveData();
      return true;
    case KeyAction::kRebuildGrids:
      map_pages_->ShowEditors();
      return true;
    case KeyAction::kForceUpload:
      parts_.link.ForceUpload();
      return true;
    case KeyAction::kToggleDatalogging:
      datalog_page_->StartStopLogging();
      return true;
    case KeyAction::kDropMarker:
      datalog_page_->DropMarker();
      return true;
    case KeyAction::kSelectPage:
      tabs_->setCurrentIndex(route.page);
      return true;
    case KeyAction::kInsertLiveValue:
      map_pages_->InsertLiveValue(tab);
      return true;
    case KeyAction::kMovePointerToLoadSite:
      map_pages_->MovePointerToLoadSite(tab);
      return true;
    case KeyAction::kDiscard:
    case KeyAction::kCompareView:  // the comparison's (above)
    case KeyAction::kCompareChoose:
    case KeyAction::kLogOverlay:  // the log overlay's (above)
    case KeyAction::kMarkCellTimes:
    case KeyAction::kUndo:  // the workbench's (above)
    case KeyAction::kRedo:
    case KeyAction::kShowHistory:
    case KeyAction::kShowTargets:
    case KeyAction::kProposeFuel:
      return true;
  }
  return false;
}

// The edit history, the target table and the fuel proposal.
bool MainWindow::HandleWorkbenchKey(KeyAction action, int tab) {
  switch (action) {
    case KeyAction::kUndo:
      if (!editors_->Undo()) status_strip_->ShowEditNote("Nothing to undo");
      return true;
    case KeyAction::kRedo:
      if (!editors_->Redo()) status_strip_->ShowEditNote("Nothing to redo");
      return true;
    case KeyAction::kShowHistory:
      ShowHistory();
      return true;
    case KeyAction::kShowTargets:
      target_panel_->Toggle();
      return true;
    case KeyAction::kProposeFuel:
      proposal_pages_->Propose(tab);
      return true;
    default:
      return false;
  }
}

void MainWindow::ShowHistory() { history_panel_->Open(); }

// The history panel and the target table are windows of their own: their keys are never the main
// window's, even in the moment before the window system has made it the active window.
bool MainWindow::InHistoryPanel(QObject* watched) const {
  auto* widget = qobject_cast<QWidget*>(watched);
  return widget != nullptr &&
         (widget->window() == history_panel_ || widget->window() == target_panel_);
}

}  // namespace vela

#include "moc_main_window.cpp"
