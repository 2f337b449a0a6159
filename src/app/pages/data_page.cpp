#include "app/pages/data_page.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include "app/widgets/status_strip.h"
#include "base/qt/qt_platform.h"
#include "link/program_status.h"
#include "program/afr_display.h"

namespace vela {

namespace {
const QString kNoValue = QStringLiteral("--");
}  // namespace

QString AfrDisplayText(double lambda, int afr_mode, QString* unit) {
  const AfrCaptions captions = AfrCaptionsOf(afr_mode);
  if (unit)
    *unit = QString::fromUtf8(captions.fuel.data(), static_cast<qsizetype>(captions.fuel.size()));
  return QString::fromStdString(AfrText(lambda, afr_mode, SystemDecimalSeparator()));
}

DataPage::DataPage(QWidget* parent) : QWidget(parent) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  auto* box = new QGroupBox("Live Engine Values", this);
  box->setObjectName("LiveValues");
  // The values stand on a ground of their own, the window's colour, which they paint over
  // themselves: a new value then never draws the box again.
  grid_ = new QWidget(box);
  grid_->setAutoFillBackground(true);
  new QGridLayout(grid_);
  auto* box_layout = new QVBoxLayout(box);
  box_layout->addWidget(grid_);
  layout->addWidget(box);
  rpm_ = AddReadout("DataRPM", "Engine Speed", "RPM");
  map_ = AddReadout("DataMAP", "Manifold Pressure", "kPa");
  tps_ = AddReadout("DataTPS", "Throttle Position", "%");
  injection_ = AddReadout("DataInjection", "Injection Time", "ms");
  duty_ = AddReadout("DataDuty", "Injector Duty", "%");
  ignition_ = AddReadout("DataIgnition", "Ignition Advance", "deg");
  water_ = AddReadout("DataWater", "Water Temperature", "C");
  air_ = AddReadout("DataAir", "Air Temperature", "C");
  battery_ = AddReadout("DataBattery", "Battery", "V");
  idle_ = AddReadout("DataIdle", "Idle Valve", "%");
  throttle_pump_ = AddReadout("DataThrottlePump", "Throttle Pump Addition", "%");
  afr_ = AddReadout("DataAFR", "Air-Fuel Ratio", "AFR");
  afr_unit_ = readouts_.back().unit;
  auto* status_row = new QHBoxLayout;
  live_tune_ = new QLabel(this);
  live_tune_->setObjectName("DataLiveTune");
  status_row->addWidget(live_tune_);
  status_ = new QLabel(this);
  status_->setObjectName("DataStatus");
  status_row->addWidget(status_, 1);
  layout->addLayout(status_row);
  options_area_ = new QWidget(this);
  new QVBoxLayout(options_area_);
  options_area_->layout()->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(options_area_);
  Show(LiveData{}, 0, false, false);
}

LiveValue* DataPage::AddReadout(const QString& name, const QString& caption, const QString& unit) {
  auto* grid = static_cast<QGridLayout*>(grid_->layout());
  const int index = static_cast<int>(readouts_.size());
  const int row = (index / 3) * 2;
  const int column = (index % 3) * 2;
  auto* title = new QLabel(caption, grid_);
  title->setStyleSheet("color: #505050;");
  auto* value = new LiveValue(QStringLiteral("-00000.00"), Qt::AlignRight, grid_);
  value->setObjectName(name);
  value->setAccessibleName(caption);
  value->setAccessibleDescription(unit);
  value->SetOpaque();
  QFont big = value->font();
  big.setPointSizeF(big.pointSizeF() * 2.2);
  big.setBold(true);
  value->setFont(big);
  auto* unit_label = new QLabel(unit, grid_);
  grid->addWidget(title, row, column, 1, 2);
  grid->addWidget(value, row + 1, column);
  grid->addWidget(unit_label, row + 1, column + 1);
  grid->setColumnMinimumWidth(column + 1, 70);
  readouts_.push_back({value, unit_label});
  return value;
}

QString DataPage::Value(const QString& name) const {
  for (const Readout& readout : readouts_) {
    if (readout.value->objectName() == name) return readout.value->text();
  }
  return QString();
}

void DataPage::Show(const LiveData& live, int afr_mode, bool live_tuning, bool connected) {
  for (const Readout& readout : readouts_) readout.value->SetGreyed(!connected);
  ShowStatus(live, live_tuning, connected);
  if (!connected) {
    for (const Readout& readout : readouts_) readout.value->SetText(kNoValue);
    return;
  }
  const auto text = [](const std::string& s) { return QString::fromStdString(s); };
  rpm_->SetText(text(live.engine_rpm_text));
  map_->SetText(text(live.map_text));
  tps_->SetText(text(live.tps_text));
  injection_->SetText(text(live.injection_text));
  duty_->SetText(text(live.injector_duty_text));
  ignition_->SetText(text(live.ignition_text));
  water_->SetText(text(live.water_temp_text));
  air_->SetText(text(live.air_temp_text));
  battery_->SetText(text(live.battery_text));
  idle_->SetText(text(live.idle_valve_text));
  throttle_pump_->SetText(text(live.throttle_pump_text));
  QString unit;
  afr_->SetText(AfrDisplayText(live.lambda, afr_mode, &unit));
  if (afr_unit_->text() != unit) {
    afr_unit_->setText(unit);
    afr_->setAccessibleDescription(unit.trimmed());
  }
}

// Live tuning in the strip's words and colours; then what the ECU reports of its state.
void DataPage::ShowStatus(const LiveData& live, bool live_tuning, bool connected) {
  const StatusLook look = LiveTuneLook(live_tuning);
  const QString tune_text = QString::fromStdString(look.text);
  if (live_tune_->text() != tune_text) {
    live_tune_->setText(tune_text);
    live_tune_->setStyleSheet(StatusStyle(look));
    live_tune_->setToolTip(QString::fromStdString(look.tooltip));
  }
  QStringList status;
  if (!connected) {
    status << "Not connected: no live values";
  } else {
    for (const std::string& text : {live.engine_status_text, live.fuel_map_text}) {
      if (!text.empty()) status << QString::fromStdString(text);
    }
    if (live.limiter_active) status << "Rev Limiter";
    if (live.throttle_pump_active) status << "Throttle Pump";
  }
  const QString joined = status.join("   |   ");
  if (status_->text() != joined) status_->setText(joined);
}

}  // namespace vela

#include "moc_data_page.cpp"
