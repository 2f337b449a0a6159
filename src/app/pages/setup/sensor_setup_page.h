// The "&Sensor Setup" tab: the MAP sensor's flags (altitude compensation, the throttle pump's
// basis), the throttle position sensor's bytes, the two temperature sensor tables (`Water`,
// `Air`) with their sensor lists (`Combop4`, `Combop3`), and a custom sensor fitted through three
// measured points. A typed row sends that row alone; the tables' temperatures and their live
// "Actual Temp" row take no keys.
#pragma once

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QWidget>
#include <array>

#include "app/pages/setup/raw_field_panel.h"
#include "app/pages/setup/setup_choices.h"
#include "app/pages/setup/setup_page_parts.h"
#include "editors/compensation/qt/curve_view.h"
#include "editors/compensation/temperature_sensors.h"
#include "link/live/live_data.h"

namespace vela {

class SensorSetupPage : public QWidget {
  Q_OBJECT

 public:
  explicit SensorSetupPage(SetupPageParts parts, QWidget* parent = nullptr);

  QTableWidget* table(SensorTable which) const { return tables_[static_cast<std::size_t>(which)]; }
  void ShowEditors();
  // The actual temperatures; "--" while `connected` is false.
  void ShowLive(const LiveData& live, bool connected);
  // The language of choice 0 of the sensor lists.
  void ShowLanguage(bool english);

 private:
  QWidget* BuildMapOptions();
  QWidget* BuildSensorTable(SensorTable which);
  QWidget* BuildCustomSensor();
  void Choose(SetupChoice choice, int value);
  void ChooseSensor(SensorTable which, int choice);
  void CellEdited(SensorTable which, int row);
  bool SendTable(SensorTable which);
  void FillTable(SensorTable which, const std::array<std::string, kSensorPoints>& ohms);
  std::array<std::string, kSensorPoints> TableTexts(SensorTable which) const;
  void FitCustomSensor();
  // The MAP sensor options and the sensor tables (ShowEditors without the raw fields).
  void ShowControls();

  SetupPageParts parts_;
  RawFieldPanel* fields_;
  std::vector<ChoiceControl> choices_;
  std::array<QTableWidget*, 2> tables_{};
  std::array<QComboBox*, 2> lists_{};
  // What each table last sent, to put back when a typed row is refused.
  std::array<std::array<std::string, kSensorPoints>, 2> sent_texts_{};
  QComboBox* custom_target_ = nullptr;
  std::array<QDoubleSpinBox*, 3> custom_celsius_{};
  std::array<QLineEdit*, 3> custom_ohms_{};
  CurveView* custom_curve_ = nullptr;
  QLabel* custom_note_ = nullptr;
  bool filling_ = false;
};

}  // namespace vela
