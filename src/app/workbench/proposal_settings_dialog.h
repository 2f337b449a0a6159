// "Fuel Proposal Settings": the delay (fitted from the logs, or set), the filters' thresholds,
// the per-pass limit and the evidence a cell needs. "Defaults" puts every field back.
#pragma once

#include <QCheckBox>
#include <QDialog>
#include <QDoubleSpinBox>
#include <vector>

#include "tune/tune_run.h"

namespace vela {

class ProposalSettingsDialog : public QDialog {
  Q_OBJECT

 public:
  ProposalSettingsDialog(const TuneSettings& settings, QWidget* parent = nullptr);

  // The settings as the fields hold them.
  TuneSettings Chosen() const;

 private:
  void ShowSettings(const TuneSettings& settings);

  QCheckBox* fit_delay_;
  QDoubleSpinBox* delay_;
  std::vector<QDoubleSpinBox*> fields_;  // in TuneSettingFields' order
};

}  // namespace vela
