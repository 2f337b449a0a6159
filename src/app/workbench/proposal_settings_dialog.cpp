#include "app/workbench/proposal_settings_dialog.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QPushButton>

#include "tune/view/proposal_view.h"

namespace vela {

ProposalSettingsDialog::ProposalSettingsDialog(const TuneSettings& settings, QWidget* parent)
    : QDialog(parent),
      fit_delay_(new QCheckBox("Fit the delay from the logs", this)),
      delay_(new QDoubleSpinBox(this)) {
  setObjectName("ProposalSettingsDialog");
  setWindowTitle("Fuel Proposal Settings");
  auto* form = new QFormLayout(this);
  fit_delay_->setObjectName("ProposalFitDelay");
  form->addRow(fit_delay_);
  delay_->setObjectName("ProposalDelaySet");
  delay_->setRange(0.0, kMaxDelaySeconds);
  delay_->setDecimals(3);
  delay_->setSingleStep(0.01);
  delay_->setAccessibleName("Delay set (s)");
  form->addRow("Delay set (s)", delay_);
  connect(fit_delay_, &QCheckBox::toggled, delay_, [this](bool fit) { delay_->setEnabled(!fit); });
  for (const TuneSettingField& field : TuneSettingFields()) {
    auto* box = new QDoubleSpinBox(this);
    box->setObjectName(QString("ProposalSetting_") + field.name);
    box->setRange(field.low, field.high);
    box->setDecimals(field.decimals);
    box->setAccessibleName(field.label);
    form->addRow(field.label, box);
    fields_.push_back(box);
  }
  auto* buttons =
      new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, Qt::Horizontal, this);
  QPushButton* defaults = buttons->addButton("Defaults", QDialogButtonBox::ResetRole);
  defaults->setObjectName("ProposalSettingsDefaults");
  connect(defaults, &QPushButton::clicked, this, [this] { ShowSettings(TuneSettings{}); });
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  form->addRow(buttons);
  ShowSettings(settings);
}

void ProposalSettingsDialog::ShowSettings(const TuneSettings& settings) {
  fit_delay_->setChecked(!settings.delay.has_value());
  delay_->setEnabled(settings.delay.has_value());
  delay_->setValue(settings.delay ? settings.delay->floor_s : kDefaultDelay.floor_s);
  TuneSettings copy = settings;
  std::size_t index = 0;
  for (const TuneSettingField& field : TuneSettingFields()) {
    fields_[index++]->setValue(field.field(copy) * field.shown);
  }
}

TuneSettings ProposalSettingsDialog::Chosen() const {
  TuneSettings settings;
  if (!fit_delay_->isChecked()) settings.delay = DelayModel{delay_->value(), 0.0};
  std::size_t index = 0;
  for (const TuneSettingField& field : TuneSettingFields()) {
    field.field(settings) = fields_[index++]->value() / field.shown;
  }
  return settings;
}

}  // namespace vela

#include "moc_proposal_settings_dialog.cpp"
