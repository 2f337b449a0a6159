// The "&Main Setup" tab: the choices that describe the engine to the ECU, each sent at once, with
// red notes beside dangerous choices and instant help on every caption.
#pragma once

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QLabel>
#include <QSpinBox>
#include <QWidget>

#include "app/setup_page_parts.h"
#include "app/setup_widgets.h"
#include "editors/setup/setup_editor.h"

namespace vela {

class SettingsControls;

class MainSetupPage : public QWidget {
  Q_OBJECT

 public:
  MainSetupPage(SetupPageParts parts, SettingsControls& settings, QWidget* parent = nullptr);

  // Every control from the editors' state; nothing is sent.
  void ShowEditors();

 protected:
  // The map pages may have changed the fuel map selection meanwhile.
  void showEvent(QShowEvent* event) override;

 private:
  QWidget* BuildEngine();
  QWidget* BuildIgnition();
  QWidget* BuildTrigger();
  QWidget* BuildLoad(SettingsControls& settings);
  QLabel* Caption(QWidget* parent, int index, const char* text);
  void AddRow(QGridLayout* grid, QLabel* caption, QWidget* control);
  void AddNote(QGridLayout* grid, QLabel* note);
  QButtonGroup* Group(QWidget* parent, const QString& name,
                      const std::vector<std::string_view>& texts, int columns, SetupChoice choice);
  QComboBox* List(QWidget* parent, const QString& name, const std::vector<std::string>& texts,
                  SetupChoice choice);
  QSpinBox* RawSpin(QWidget* parent, const QString& name, int position);
  QCheckBox* Flag(QWidget* parent, const QString& name, SetupChoice choice);
  void Choose(SetupChoice choice, int value);
  void ShowMapScaleList();
  void ShowDwellUnits();
  void ShowNotes();
  void ShowChecks();

  SetupPageParts parts_;
  QButtonGroup* cylinders_ = nullptr;
  QButtonGroup* fuel_mode_ = nullptr;
  QButtonGroup* impedance_ = nullptr;
  QButtonGroup* map_selection_ = nullptr;
  QButtonGroup* limiter_mode_ = nullptr;
  QButtonGroup* load_sensing_ = nullptr;
  QButtonGroup* trigger_type_ = nullptr;
  QButtonGroup* home_type_ = nullptr;
  QButtonGroup* edge_input_ = nullptr;
  QButtonGroup* edge_home_ = nullptr;
  QButtonGroup* edge_spark_ = nullptr;
  QComboBox* trigger_ = nullptr;
  QComboBox* home_ = nullptr;
  QComboBox* spark_ = nullptr;
  QComboBox* dwell_mode_ = nullptr;
  QComboBox* site_rpm_ = nullptr;
  QComboBox* site_fuel_ = nullptr;
  QComboBox* site_ignition_ = nullptr;
  QComboBox* prime_ = nullptr;
  QComboBox* aux_output_ = nullptr;
  QComboBox* warning_light_ = nullptr;
  QComboBox* map_sensor_ = nullptr;
  QComboBox* map_scale_ = nullptr;
  QCheckBox* trigger_flag_ = nullptr;
  QCheckBox* home_flag_ = nullptr;
  QSpinBox* rev_limit1_ = nullptr;
  QSpinBox* rev_limit2_ = nullptr;
  QDoubleSpinBox* dwell_value_ = nullptr;
  QDoubleSpinBox* trigger_offset_ = nullptr;
  QSpinBox* trigger_voltage_ = nullptr;
  QSpinBox* home_voltage_ = nullptr;
  QSpinBox* tooth_offset_ = nullptr;
  QLabel* injection_name_ = nullptr;
  QLabel* note_rev_ = nullptr;
  QLabel* note_injection_ = nullptr;
  QLabel* note_impedance_ = nullptr;
  QLabel* note_spark_ = nullptr;
  QLabel* note_dwell_ = nullptr;
  QLabel* note_sites_ = nullptr;
  QLabel* check_trigger_ = nullptr;
  QLabel* check_home_ = nullptr;
  QLabel* check_tooth_ = nullptr;
};

}  // namespace vela
