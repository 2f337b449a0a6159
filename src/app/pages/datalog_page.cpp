#include "app/pages/datalog_page.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QVBoxLayout>
#include <cmath>

#include "app/pages/data_page.h"
#include "app/review/marker_list_panel.h"
#include "app/sessions/link_session.h"
#include "app/sessions/review_session.h"
#include "app/widgets/chart_review.h"
#include "app/widgets/steady_label.h"
#include "app/widgets/text_of.h"
#include "base/qt/qt_platform.h"
#include "datalog/chart/chart_view.h"
#include "datalog/files/log_export.h"
#include "datalog/qt/chart_layout_bar.h"
#include "editors/mapgrid/map_grid_model.h"

namespace vela {

namespace {

constexpr const char* kStartCaption = "Start DataLogging";
constexpr const char* kStopCaption = "Stop DataLogging";
constexpr const char* kLoggingStatus = "Logging...";
constexpr const char* kNoEcuStatus = "Logging stopped: the ECU is not connected";
constexpr const char* kCommandCaptions[] = {kStartCaption, "Load DataLog...", "Save DataLog..."};
// The chart and the time box are redrawn at this pace while logging runs, not with every frame.
constexpr int kRefreshMs = 125;
constexpr int kReadoutWidth = 300;
constexpr const char* kNoArrivalsText =
    "Arrival times were not recorded in this file: gaps cannot be told.";
constexpr const char* kDarkPanel = "background-color: rgb(12, 12, 18);";

QColor ChannelQColor(const ChannelColour& c) { return QColor(c.red, c.green, c.blue); }

QString ValueText(std::optional<double> value, int decimals) {
  if (!value) return "-";
  return QString::fromStdString(FixedText(*value, decimals))
      .replace(QLatin1Char('.'), QLatin1Char(SystemDecimalSeparator()));
}

}  // namespace

DatalogPage::DatalogPage(DatalogPageParts parts, QWidget* time_scale_box, QWidget* parent)
    : QWidget(parent),
      parts_(parts),
      capture_(log_),
      settings_(parts.files, parts.messages,
                parts.setup.ProgramInfoFolder() + std::string(kDatalogSetupFileName)),
      files_(parts.files, parts.dialogs, parts.messages, parts.setup.folders(),
             parts.dialog_folder),
      journal_(journal_file_, parts.setup.folders().datalogs + std::string(kJournalFileName)) {
  setObjectName("DatalogPage");
  chart_ = new DatalogChart(log_, this);
  BuildReview();
  chart_->setToolTip(
      "Click: cursor A.  Right click: cursor B.  Wheel: zoom.  Drag: pan.  Double click: the "
      "whole log.  K: a marker.  The keys of the Help page's chart table work here too.");
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(BuildButtons());
  layout->addWidget(BuildChannels());
  layout->addWidget(BuildLayoutBar());
  auto* middle = new QHBoxLayout;
  middle->addWidget(chart_, 1);
  middle->addWidget(BuildReadout());
  layout->addLayout(middle, 1);
  layout->addWidget(time_scale_box);

  if (auto* scale = time_scale_box->findChild<QScrollBar*>("DatalogTimeScale")) {
    // Between logs the time scale sets the width of the chart's time axis.
    connect(scale, &QScrollBar::valueChanged, this, [this](int seconds) {
      if (Logging()) return;
      log_.axis.max = log_.axis.min + seconds;
      chart_->update();
    });
  }
  connect(chart_, &DatalogChart::CursorsChanged, this, &DatalogPage::ShowCursorValues);
  connect(chart_, &DatalogChart::ExportCsvAsked, this, &DatalogPage::ExportShownCsv);
  connect(chart_, &DatalogChart::ExportPictureAsked, this, &DatalogPage::ExportPicture);
  // The keyboard belongs to the chart whenever the page has it.
  setFocusProxy(chart_);
  // Every tick of the link's supervision (and every arrival) is followed by this check.
  connect(&parts_.link, &LinkSession::DisplayChanged, this, &DatalogPage::StopWithoutEcu);
  refresh_.setInterval(kRefreshMs);
  connect(&refresh_, &QTimer::timeout, this, &DatalogPage::Refresh);
  // Frames ask for the journal's flush as they arrive; this asks when none arrives.
  journal_check_.setInterval(kJournalCheckMs);
  connect(&journal_check_, &QTimer::timeout, this, &DatalogPage::FlushJournalIfDue);
  clock_.start();
}

// A program closed while logging leaves a closed journal behind, offered back at the next start.
DatalogPage::~DatalogPage() {
  if (Logging()) journal_.End(log_);
}

QWidget* DatalogPage::BuildButtons() {
  auto* row_widget = new QWidget(this);
  auto* row = new QHBoxLayout(row_widget);
  row->setContentsMargins(0, 0, 0, 0);
  for (int i = 0; i < 3; ++i) {
    command6_[i] = new QPushButton(kCommandCaptions[i], row_widget);
    command6_[i]->setObjectName(QString("Command6_%1").arg(i));
    command6_[i]->setProperty("index", i);
    command6_[i]->setFocusPolicy(Qt::NoFocus);
    connect(command6_[i], &QPushButton::clicked, this, [this, i] { Command6(i); });
    row->addWidget(command6_[i]);
  }
  row->addWidget(new QLabel("Save as", row_widget));
  file_kind_ = new QComboBox(row_widget);
  file_kind_->setObjectName("DatalogFileKind");
  file_kind_->addItem("Chart file (*.sl1)", kDatalogKindChart);
  file_kind_->addItem("Text export (*.dl1)", kDatalogKindText);
  connect(file_kind_, &QComboBox::currentIndexChanged, this,
          [this] { files_.DatalogFileKind = file_kind_->currentData().toInt(); });
  row->addWidget(file_kind_);
  auto* csv = new QPushButton("Export CSV...", row_widget);
  csv->setObjectName("DatalogExportCsv");
  csv->setFocusPolicy(Qt::NoFocus);
  connect(csv, &QPushButton::clicked, this, [this] { files_.ExportCsv(log_, MathCsvColumns()); });
  row->addWidget(csv);
  AddExportMenu(row);
  auto* whole = new QPushButton("Show All", row_widget);
  whole->setObjectName("DatalogShowAll");
  whole->setFocusPolicy(Qt::NoFocus);
  connect(whole, &QPushButton::clicked, chart_, &DatalogChart::ShowWholeLog);
  row->addWidget(whole);
  row->addStretch(1);
  status_ = new QLabel(row_widget);
  status_->setObjectName("DatalogStatus");
  status_->setStyleSheet("color: rgb(200, 30, 20); font-weight: bold;");
  row->addWidget(status_);
  row->addWidget(new QLabel("Time (s)", row_widget));
  time_box_ = new QLabel("0", row_widget);
  time_box_->setObjectName("DatalogTimeBox");
  time_box_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  time_box_->setFrameShape(QFrame::StyledPanel);
  // A fixed size: a new time repaints the box alone instead of laying out the whole tab again.
  time_box_->setFixedSize(80, time_box_->sizeHint().height());
  row->addWidget(time_box_);
  return row_widget;
}

QWidget* DatalogPage::BuildChannels() {
  auto* box = new QWidget(this);
  box->setObjectName("DatalogChannels");
  box->setAttribute(Qt::WA_StyledBackground);
  box->setStyleSheet(QString("#DatalogChannels { %1 }").arg(kDarkPanel));
  auto* grid = new QGridLayout(box);
  grid->setContentsMargins(8, 4, 8, 4);
  grid->setVerticalSpacing(2);
  for (int n = 0; n < kChannelCount; ++n) {
    check2_[n] = new QCheckBox(TextOf(kChannels[n].caption), box);
    check2_[n]->setObjectName(QString("Check2_%1").arg(n));
    check2_[n]->setProperty("index", n);
    // The caption in the channel's colour; the tick keeps the style's own colours.
    QPalette palette = check2_[n]->palette();
    palette.setColor(QPalette::WindowText, ChannelQColor(kChannels[n].colour));
    check2_[n]->setPalette(palette);
    check2_[n]->setFocusPolicy(Qt::NoFocus);
    connect(check2_[n], &QCheckBox::toggled, this, [this, n](bool on) { ChannelToggled(n, on); });
    grid->addWidget(check2_[n], n / 6, n % 6);
  }
  channels_grid_ = grid;
  return box;
}

QWidget* DatalogPage::BuildReadout() {
  auto* panel = new QWidget(this);
  panel->setFixedWidth(kReadoutWidth);
  auto* column = new QVBoxLayout(panel);
  column->setContentsMargins(0, 0, 0, 0);
  auto* axis_row = new QHBoxLayout;
  axis_row->addWidget(new QLabel("Axis", panel));
  axis_channel_ = new QComboBox(panel);
  axis_channel_->setObjectName("DatalogAxisChannel");
  for (const ChannelInfo& c : kChannels) axis_channel_->addItem(TextOf(c.caption));
  axis_channel_->setFocusPolicy(Qt::NoFocus);
  connect(axis_channel_, &QComboBox::currentIndexChanged, this, &DatalogPage::AxisChosen);
  axis_row->addWidget(axis_channel_, 1);
  column->addLayout(axis_row);
  cursor_values_ = new QTableWidget(kChannelCount + 2, 4, panel);
  cursor_values_->setObjectName("DatalogCursorValues");
  cursor_values_->setHorizontalHeaderLabels({"Channel", "A", "B", "B - A"});
  cursor_values_->verticalHeader()->hide();
  cursor_values_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  cursor_values_->setFocusPolicy(Qt::NoFocus);
  cursor_values_->setSelectionMode(QAbstractItemView::NoSelection);
  cursor_values_->verticalHeader()->setDefaultSectionSize(18);
  cursor_values_->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
  cursor_values_->setStyleSheet(
      "QTableWidget { background-color: rgb(12, 12, 18); color: silver; }");
  cursor_values_->setItem(0, 0, new QTableWidgetItem("Time s"));
  auto* clock = new QTableWidgetItem("Clock s");
  clock->setToolTip("When the record arrived, on the program's clock from the start of logging");
  cursor_values_->setItem(1, 0, clock);
  for (int n = 0; n < kChannelCount; ++n) {
    auto* name = new QTableWidgetItem(TextOf(kChannels[n].label));
    name->setForeground(ChannelQColor(kChannels[n].colour));
    cursor_values_->setItem(n + 2, 0, name);
  }
  column->addWidget(cursor_values_, 3);
  column->addWidget(BuildReviewButtons(panel));
  column->addWidget(BuildMarkerList(panel), 1);
  gaps_ = new SteadyLabel({QString(kNoArrivalsText),
                           "Clock 88888.88 s, log 88888.88 s: 88888 gaps, 8888888 frames lost"},
                          panel, kReadoutWidth);
  gaps_->setObjectName("DatalogGaps");
  gaps_->setToolTip(
      "Frames the link lost while logging. The log's time counts frames at the chosen rate, so a "
      "gap takes no room on the chart: a red tick at the top and bottom marks it.");
  column->addWidget(gaps_);
  fuel_cell_ = new QLabel(panel);
  fuel_cell_->setObjectName("DatalogFuelCell");
  fuel_cell_->setWordWrap(true);
  column->addWidget(fuel_cell_);
  return panel;
}

void DatalogPage::ClearChannelFlags() { capture_.ChannelEnabled.fill(0); }

void DatalogPage::EnableChannel0() { capture_.ChannelEnabled[0] = 1; }

void DatalogPage::SetupChart() {
  for (int n = 0; n < kChannelCount; ++n) {
    log_.SetColour(n, kChannels[n].colour);
    log_.SetActive(n, capture_.ChannelOn(n));
  }
  log_.axis = TimeAxis{0.0, TimeScale()};
  ReadDefaultLayout();
  if (drawn_review_ != nullptr) drawn_review_->SetDefaultLayout(default_layout_);
  chart_->SetLayout(default_layout_);
}

void DatalogPage::LoadDatalogSettings() {
  parts_.setup.LoadingSetup = true;
  const ChannelChecks checks = settings_.LoadDatalogSettings();
  for (int n = 0; n < kChannelCount; ++n) {
    check2_[n]->setChecked(checks[n]);
    capture_.SetChannelEnabled(n, checks[n]);
  }
  parts_.setup.LoadingSetup = false;
}

void DatalogPage::OfferRecovery() {
  std::optional<RecoveredLog> recovered = ReadJournal(parts_.files, journal_.path());
  if (!recovered) {
    if (parts_.files.ReadFile(journal_.path())) journal_.Discard();  // nothing in it
    return;
  }
  const DatalogLog& found = recovered->log;
  const MessageAnswer answer = parts_.messages.Show(
      MessageIcon::kQuestion, "Recover DataLog",
      {"A datalog recorded earlier was never saved: " + std::to_string(found.RecordCount()) +
           " records, " + FixedText(found.EndTime(), 1) + " seconds.",
       "Do you want to load it into the chart now? (No deletes it.)"},
      MessageButtons::kYesNo);
  if (answer != MessageAnswer::kYes) {
    journal_.Discard();
    return;
  }
  log_.ReplaceWith(std::move(recovered->log));
  log_.axis = WholeLogAxis(log_);
  journal_holds_log_ = true;
  ShowLoadedLog();
  review_->LogReplaced({});
}

void DatalogPage::Command6(int index) {
  switch (index) {
    case 0:
      if (Logging()) {
        StopLogging(true);
      } else {
        StartLogging();
      }
      break;
    case 1:
      Load();
      break;
    case 2:
      Save();
      break;
    default:
      break;
  }
}

void DatalogPage::StartLogging() {
  command6_[0]->setText(kStopCaption);
  status_->setText(kLoggingStatus);
  command6_[1]->setEnabled(false);
  capture_.FramesPerSecond = FramesPerSecondOfChoice(parts_.setup.settings.frames_per_second_index);
  capture_.StartLogging(TimeScale(), NowSeconds());
  review_->LogReplaced({});  // a new log starts with the default math channels
  chart_->ReleaseAxis();
  chart_->SetCursors(std::nullopt, std::nullopt);
  journal_holds_log_ = journal_.Begin(log_);
  if (!journal_holds_log_) status_->setText("Logging... (no recovery journal)");
  journal_check_.start();
  refresh_.start();
  ShowGaps();
}

void DatalogPage::StopLogging(bool by_button) {
  command6_[0]->setText(kStartCaption);
  status_->clear();
  command6_[1]->setEnabled(true);
  capture_.StopLogging();
  if (by_button) emit ShowDataLoggingTab();
  // Every frame is recorded live, so there is no log in the ECU to build the chart from.
  log_.axis = TimeAxis{0.0, TimeScale()};
  chart_->ReleaseAxis();
  journal_check_.stop();
  refresh_.stop();
  journal_.End(log_);
  records_new_ = true;
  Refresh();
  ShowCursorValues();
}

void DatalogPage::LinkLost() {
  if (!Logging()) return;
  StopLogging(false);
  status_->setText(kNoEcuStatus);
}

void DatalogPage::StopWithoutEcu() {
  if (Logging() && parts_.link.state().CaptionSaysNotConnected()) LinkLost();
}

double DatalogPage::NowSeconds() const { return static_cast<double>(clock_.nsecsElapsed()) / 1e9; }

void DatalogPage::FlushJournalIfDue() {
  if (Logging()) journal_.FlushIfDue(log_, capture_.ArrivalOf(NowSeconds()));
}

void DatalogPage::FrameTaken(const live::Frame& frame) {
  if (!Logging()) return;
  const LiveData& live = parts_.link.live();
  const ChannelInputs inputs{live.afr, live.water_temp_c, live.air_temp_c,
                             live.injector_duty_percent};
  // The time base is the rate the link chose, which the tuner may change during a log.
  capture_.FramesPerSecond = FramesPerSecondOfChoice(parts_.setup.settings.frames_per_second_index);
  capture_.CaptureFrame(frame, inputs, parts_.link.state().CommsRepeat, !chart_->AxisInHand(),
                        NowSeconds());
  records_new_ = true;
  FlushJournalIfDue();
}

void DatalogPage::Refresh() {
  if (!records_new_) return;
  records_new_ = false;
  ShowTime(capture_.DatalogTime);
  ShowGaps();
  chart_->RefreshIfChanged();
  review_->LogGrew(!Logging());
  if (marker_list_->entries().size() != log_.Markers().size() + log_.Gaps().size()) {
    marker_list_->Rebuild();
  }
}

// The clock beside the log's time, and the gaps: a log that lost frames must say so.
void DatalogPage::ShowGaps() {
  const std::optional<double> clock = log_.ClockEnd();
  QString text;
  if (log_.RecordCount() == 0) {
    text = Logging() ? "Waiting for the first frame" : QString();
  } else if (!clock) {
    text = kNoArrivalsText;
  } else {
    text =
        QString("Clock %1 s, log %2 s: ").arg(ValueText(*clock, 2), ValueText(log_.EndTime(), 2));
    const std::size_t gaps = log_.Gaps().size();
    text += gaps == 0 ? QString("no frames lost")
                      : QString("%1 %2, %3 frames lost")
                            .arg(gaps)
                            .arg(gaps == 1 ? "gap" : "gaps")
                            .arg(log_.MissingFrames());
  }
  if (gaps_->text() != text) gaps_->setText(text);
  const QString style = log_.Gaps().empty() ? QString() : QString("color: rgb(200, 30, 20);");
  if (gaps_->styleSheet() != style) gaps_->setStyleSheet(style);
}

void DatalogPage::ShowTime(double seconds) { time_box_->setText(ValueText(seconds, 2)); }

void DatalogPage::DropMarker() {
  const int number = static_cast<int>(log_.Markers().size()) + 1;
  const std::string text = "Mark " + std::to_string(number);
  if (Logging()) {
    AddMarker(text);
  } else if (chart_->CursorA()) {
    log_.AddMarkerAt(*chart_->CursorA(), text);
    chart_->update();
    marker_list_->Rebuild();
  }
}

void DatalogPage::AddMarker(const std::string& text) {
  log_.AddMarker(text);
  chart_->update();
  marker_list_->Rebuild();
}

void DatalogPage::Save() {
  const DatalogFileResult result = files_.Save(log_);
  if (result == DatalogFileResult::kDone && files_.DatalogFileKind == kDatalogKindChart &&
      !review_->LogSaved(files_.saved_path)) {
    parts_.messages.Show(MessageIcon::kExclamation, "Save DataLog",
                         {"The math channels and the layout could not be saved beside the log.",
                          review_->problems().empty() ? "" : review_->problems().front()});
  }
  // The journal goes once its log is safe in a chart file and no longer growing.
  if (result == DatalogFileResult::kDone && files_.DatalogFileKind == kDatalogKindChart &&
      journal_holds_log_ && !Logging()) {
    journal_.Discard();
    journal_holds_log_ = false;
  }
}

void DatalogPage::Load() {
  if (Logging()) return;
  const DatalogLoadResult loaded = files_.LoadDatalog(log_);
  if (loaded.result != DatalogFileResult::kDone) return;
  chart_->ReleaseAxis();
  chart_->SetCursors(std::nullopt, std::nullopt);
  ShowLoadedLog();
  review_->LogReplaced(loaded.path);
}

// The chart draws the log's channels as it was saved; ticking a box still shows or hides that
// channel of it, and sets what the next recording takes.
void DatalogPage::ShowLoadedLog() {
  marker_list_->Rebuild();
  ShowTime(log_.EndTime());
  ShowGaps();
  chart_->update();
  ShowCursorValues();
}

void DatalogPage::ChannelToggled(int channel, bool on) {
  capture_.SetChannelEnabled(channel, on);
  chart_->update();
  if (!parts_.setup.LoadingSetup && !parts_.setup.SuppressChangeEvents) {
    settings_.SaveDatalogSettings(Checks());
  }
}

ChannelChecks DatalogPage::Checks() const {
  ChannelChecks checks{};
  for (int n = 0; n < kChannelCount; ++n) checks[n] = check2_[n]->isChecked();
  return checks;
}

void DatalogPage::ShowCursorValues() {
  const std::optional<double> a = chart_->CursorA();
  const std::optional<double> b = chart_->CursorB();
  const auto set = [this](int row, int column, const QString& text) {
    if (QTableWidgetItem* item = cursor_values_->item(row, column)) {
      item->setText(text);
    } else {
      cursor_values_->setItem(row, column, new QTableWidgetItem(text));
    }
  };
  const auto difference = [](std::optional<double> x, std::optional<double> y) {
    return x && y ? std::optional<double>(*y - *x) : std::nullopt;
  };
  set(0, 1, ValueText(a, 3));
  set(0, 2, ValueText(b, 3));
  set(0, 3, ValueText(difference(a, b), 3));
  const std::optional<double> clock_a = a ? log_.ArrivalAt(*a) : std::nullopt;
  const std::optional<double> clock_b = b ? log_.ArrivalAt(*b) : std::nullopt;
  set(1, 1, ValueText(clock_a, 3));
  set(1, 2, ValueText(clock_b, 3));
  set(1, 3, ValueText(difference(clock_a, clock_b), 3));
  for (int n = 0; n < kChannelCount; ++n) {
    const std::optional<double> va = a ? log_.ValueAt(n, *a) : std::nullopt;
    const std::optional<double> vb = b ? log_.ValueAt(n, *b) : std::nullopt;
    const int decimals = kChannels[n].decimals;
    set(n + 2, 1, ValueText(va, decimals));
    set(n + 2, 2, ValueText(vb, decimals));
    set(n + 2, 3, ValueText(difference(va, vb), decimals));
  }
  fuel_cell_->setText(a ? FuelCellText(*a) : QString());
  ShowReviewValues(a, b);
}

// The fuel map cell the engine ran on at `time`: the nearest RPM row and load column of the
// fuel map as its page labels them.
QString DatalogPage::FuelCellText(double time) const {
  if (!fuel_map_) return "Fuel map cell at A: no fuel map";
  // The fuel map's load axis is the manifold pressure, or the throttle on a throttle basis.
  const bool throttle_load = fuel_map_->LoadUnit() == "%";
  const std::optional<double> rpm = log_.ValueAt(kChannelRpm, time);
  const std::optional<double> load = log_.ValueAt(throttle_load ? kChannelTps : kChannelMap, time);
  if (!rpm || !load) {
    return throttle_load ? "Fuel map cell at A: needs RPM and TPS"
                         : "Fuel map cell at A: needs RPM and MAP";
  }
  FuelMapAxes axes;
  for (int row = 1; row < MapGridModel::kRows; ++row) {
    if (const std::optional<double> rpm = fuel_map_->RowRpm(row)) axes.rows.emplace_back(row, *rpm);
  }
  for (int column = 1; column <= fuel_map_->LoadSites(); ++column) {
    axes.loads_kpa.push_back(fuel_map_->LoadSiteValue(column));
  }
  const std::optional<FuelCellRef> cell = NearestFuelCell(axes, *rpm, *load);
  if (!cell) return "Fuel map cell at A: the fuel map has no labels";
  return QString("Fuel map cell at A: %1 RPM, %2 %3 (row %4, column %5)")
      .arg(QString::fromStdString(fuel_map_->RpmLabel(cell->row)).trimmed(),
           QString::fromStdString(fuel_map_->LoadLabel(cell->column)),
           QString::fromStdString(fuel_map_->LoadUnit()))
      .arg(cell->row)
      .arg(cell->column);
}

double DatalogPage::TimeScale() const { return parts_.setup.settings.datalog_time_scale; }

QWidget* DatalogPage::BuildLayoutBar() {
  layout_bar_ = new ChartLayoutBar(*chart_, this);
  connect(layout_bar_, &ChartLayoutBar::SaveDefaultAsked, this, [this] { SaveDefaultLayout(); });
  // The axis box follows the channel selected on the bar or by the layout.
  connect(chart_, &DatalogChart::LayoutChanged, this, &DatalogPage::ShowAxisChannel);
  return layout_bar_;
}

// A default that cannot be read, or holds no usable panel, gives the built-in layout.
void DatalogPage::ReadDefaultLayout() {
  const std::string path = parts_.setup.ProgramInfoFolder() + std::string(kChartLayoutFileName);
  const std::optional<std::string> text = parts_.files.ReadFile(path);
  default_layout_ = text ? review::ReadLayout(*text).layout : review::ChartLayout();
}

bool DatalogPage::SaveDefaultLayout() {
  const std::string path = parts_.setup.ProgramInfoFolder() + std::string(kChartLayoutFileName);
  if (parts_.files.WriteFile(path, review::LayoutText(chart_->Layout())) != kFileErrorNone) {
    parts_.messages.Show(MessageIcon::kExclamation, std::string(kWarningTitle),
                         {"The default chart layout could not be saved in " + path + ".",
                          parts_.files.LastWriteReason()},
                         MessageButtons::kOk);
    return false;
  }
  default_layout_ = chart_->Layout();
  if (drawn_review_ != nullptr) drawn_review_->SetDefaultLayout(default_layout_);
  return true;
}

void DatalogPage::DrawReview(ReviewSession& session) {
  drawn_review_ = &session;
  session.SetDefaultLayout(default_layout_);
  FollowReview(*chart_, session);
}

}  // namespace vela

#include "moc_datalog_page.cpp"
