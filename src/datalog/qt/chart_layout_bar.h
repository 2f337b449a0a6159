// `ChartLayoutBar`: the row above the datalog chart that sets its layout from the keyboard or the
// mouse: how many panels (`ChartPanels`), which channel is selected (`ChartLayoutChannel`, its
// axis labels shown), the panel it is in (`ChartChannelPanel`), its scale (`ChartChannelScale`:
// "Auto" or "Fixed", with `ChartScaleMin` and `ChartScaleMax`) and "Save as default"
// (`ChartLayoutSaveDefault`). Every control is reached with Tab from the chart.
#pragma once

#include <QComboBox>
#include <QDoubleSpinBox>
#include <QPushButton>
#include <QSpinBox>
#include <QWidget>

#include "datalog/qt/datalog_chart.h"

namespace vela {

class ChartLayoutBar : public QWidget {
  Q_OBJECT

 public:
  ChartLayoutBar(DatalogChart& chart, QWidget* parent = nullptr);

  // The controls show the chart's layout again (after it changed elsewhere).
  void ShowLayout();

 signals:
  // "Save as default": the chart's layout is to become the tuner's default.
  void SaveDefaultAsked();

 private:
  void BuildControls();
  void SetPanels(int count);
  void SelectChannel(int index);
  void SetChannelPanel(int panel);
  void SetScaleKind(int index);
  void SetFixedRange();
  std::string ChannelName() const;
  void Apply(review::ChartLayout layout);

  DatalogChart& chart_;
  QSpinBox* panels_ = nullptr;
  QComboBox* channel_ = nullptr;
  QSpinBox* panel_ = nullptr;
  QComboBox* scale_ = nullptr;
  QDoubleSpinBox* min_ = nullptr;
  QDoubleSpinBox* max_ = nullptr;
  QPushButton* save_default_ = nullptr;
  bool showing_ = false;  // the controls are being set from the layout
};

}  // namespace vela
