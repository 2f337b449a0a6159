#include "app/pages/data_page.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include "app/widgets/live_texts.h"
#include "app/widgets/status_strip.h"
#include "base/qt/qt_platform.h"
#include "link/program_status.h"
#include "program/afr_display.h"

namespace vela {

namespace {
const QString kNoValue = QStringLiteral("--");

QString AfrFuelCaption(int afr_mode) { return TextOf(AfrCaptionsOf(afr_mode).fuel); }

}  // namespace

QString AfrDisplayText(double lambda, int afr_mode, QString* unit) {
  if (unit) *unit = AfrFuelCaption(afr_mode);
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
  AddReadout("DataRPM", "Engine Speed", "RPM", LiveQuantity::kEngineRpm);
  AddReadout("DataMAP", "Manifold Pressure", "kPa", LiveQuantity::kMap);
  AddReadout("DataTPS", "Throttle Position", "%", LiveQuantity::kTps);
  AddReadout("DataInjection", "Injection Time", "ms", LiveQuantity::kInjection);
  AddReadout("DataDuty", "Injector Duty", "%", LiveQuantity::kInjectorDuty);
  AddReadout("DataIgnition", "Ignition Advance", "deg", LiveQuantity::kIgnition);
  AddReadout("DataWater", "Water Temperature", "C", LiveQuantity::kWaterTemp);
  AddReadout("DataAir", "Air Temperature", "C", LiveQuantity::kAirTemp);
  AddReadout("DataBattery", "Battery", "V", LiveQuantity::kBattery);
  AddReadout("DataIdle", "Idle Valve", "%", LiveQuantity::kIdleValve);
  AddReadout("DataThrottlePump", "Throttle Pump Addition", "%", LiveQuantity::kThrottlePump);
  afr_ = AddReadout("DataAFR", "Air-Fuel Ratio", "AFR", LiveQuantity::kAfr);
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

LiveValue* DataPage::AddReadout(const QString& name, const QString& caption, const QString& unit,
                                LiveQuantity quantity) {
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
  readouts_.push_back({value, unit_label, quantity});
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
  const LiveTextStyle style = ShownTextStyle(afr_mode);
  for (const Readout& readout : readouts_) {
    readout.value->SetText(LiveQText(live, readout.quantity, style));
  }
  const QString unit = AfrFuelCaption(afr_mode);
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
    const LiveTextStyle style = ShownTextStyle(0);
    for (const LiveQuantity quantity : {LiveQuantity::kEngineStatus, LiveQuantity::kFuelMap}) {
      const QString text = LiveQText(live, quantity, style);
      if (!text.isEmpty()) status << text;
    }
    if (live.limiter_active) status << "Rev Limiter";
    if (live.throttle_pump_active) status << "Throttle Pump";
  }
  const QString joined = status.join("   |   ");
  if (status_->text() != joined) status_->setText(joined);
}

}  // namespace vela

#include "moc_data_page.cpp"
