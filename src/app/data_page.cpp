#include "app/data_page.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QVBoxLayout>

#include "shell/qt/qt_platform.h"

namespace vela {

namespace {

struct AfrMode {
  const char* unit;
  double stoichiometric;  // 1.0: show lambda itself
};
constexpr AfrMode kAfrModes[] = {
    {"AFR", 14.7}, {"Lambda", 1.0}, {"AFR", 15.5}, {"AFR", 6.4}, {"AFR", 9.0}};

const AfrMode& AfrModeOf(int afr_mode) {
  return kAfrModes[(afr_mode >= 0 && afr_mode < 5) ? afr_mode : 0];
}

}  // namespace

double AfrDisplayValue(double lambda, int afr_mode) {
  return lambda <= 0.0 ? 0.0 : lambda * AfrModeOf(afr_mode).stoichiometric;
}

QString AfrDisplayText(double lambda, int afr_mode, QString* unit) {
  const AfrMode& mode = AfrModeOf(afr_mode);
  if (unit) *unit = mode.unit;
  if (lambda <= 0.0) return "-";
  const double value = AfrDisplayValue(lambda, afr_mode);
  return QString::number(value, 'f', mode.stoichiometric == 1.0 ? 2 : 1)
      .replace(QLatin1Char('.'), QLatin1Char(SystemDecimalSeparator()));
}

DataPage::DataPage(QWidget* parent) : QWidget(parent) {
  auto* layout = new QVBoxLayout(this);
  auto* box = new QGroupBox("Live Engine Values", this);
  box->setObjectName("LiveValues");
  grid_ = box;
  new QGridLayout(box);
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
  throttle_pump_ = AddReadout("DataThrottlePump", "Throttle Pump Addition", "ms");
  afr_ = AddReadout("DataAFR", "Air-Fuel Ratio", "AFR");
  afr_unit_ = readouts_.back().unit;
  status_ = new QLabel(this);
  status_->setObjectName("DataStatus");
  layout->addWidget(status_);
  options_area_ = new QWidget(this);
  new QVBoxLayout(options_area_);
  options_area_->layout()->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(options_area_);
  layout->addStretch(1);
  Show(LiveData{}, 0);
}

QLabel* DataPage::AddReadout(const QString& name, const QString& caption, const QString& unit) {
  auto* grid = static_cast<QGridLayout*>(grid_->layout());
  const int index = static_cast<int>(readouts_.size());
  const int row = (index / 3) * 2;
  const int column = (index % 3) * 2;
  auto* title = new QLabel(caption, grid_);
  title->setStyleSheet("color: #505050;");
  auto* value = new QLabel(grid_);
  value->setObjectName(name);
  value->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  value->setMinimumWidth(150);
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

void DataPage::Show(const LiveData& live, int afr_mode) {
  rpm_->setText(QString::fromStdString(live.engine_rpm_text));
  map_->setText(QString::fromStdString(live.map_text));
  tps_->setText(QString::fromStdString(live.tps_text));
  injection_->setText(QString::fromStdString(live.injection_text));
  duty_->setText(QString::fromStdString(live.injector_duty_text));
  ignition_->setText(QString::fromStdString(live.ignition_text));
  water_->setText(QString::fromStdString(live.water_temp_text));
  air_->setText(QString::fromStdString(live.air_temp_text));
  battery_->setText(QString::fromStdString(live.battery_text));
  idle_->setText(QString::fromStdString(live.idle_valve_text));
  throttle_pump_->setText(QString::fromStdString(live.throttle_pump_text));
  QString unit;
  afr_->setText(AfrDisplayText(live.lambda, afr_mode, &unit));
  afr_unit_->setText(unit);
  QStringList status;
  for (const std::string& text : {live.engine_status_text, live.fuel_map_text}) {
    if (!text.empty()) status << QString::fromStdString(text);
  }
  if (live.limiter_active) status << "Rev Limiter";
  if (live.throttle_pump_active) status << "Throttle Pump";
  status << "Live Tune " + QString::fromStdString(live.live_tune_text);
  status_->setText(status.join("   |   "));
}

}  // namespace vela
