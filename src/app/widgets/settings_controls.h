// The controls that `Setup.txt` stands for, spread over the pages where a tuner looks for them,
// and their binding to the program settings: every change is saved at once unless a guard is up.
#pragma once

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QWidget>
#include <array>
#include <functional>

#include "program/program_setup.h"

namespace vela {

// A pair of option buttons; the first one stands for "True".
struct OptionPair {
  QRadioButton* first = nullptr;
  QRadioButton* second = nullptr;
};

class SettingsControls : public QObject {
  Q_OBJECT

 public:
  SettingsControls(ProgramSetup& setup, QObject* parent = nullptr);

  // Each builder makes the controls of one page inside `page` and returns its box.
  QWidget* BuildFileOptions(QWidget* page);
  QWidget* BuildFuelDisplay(QWidget* page);
  QWidget* BuildOutputsDisplay(QWidget* page);
  QWidget* BuildHelpOptions(QWidget* page);
  // `ComboAFRMode`, the air-fuel ratio display choice (placed on the Main Setup page).
  QComboBox* BuildAfrDisplayMode(QWidget* page);
  QWidget* BuildDatalogOptions(QWidget* page);

  void FillFixedLists();
  // Puts the settings' values into the controls (their change handlers see the guards).
  void ShowSettings();

  QPushButton* first_run_button() const { return first_run_button_; }

 signals:
  void PortChosen(int port_number);
  void FramesPerSecondChosen(int index);
  void ScaleChanged(int value);
  void PacketSpeedChosen(int choice);
  void SlowSendChosen(bool on);
  // `Numerical`: the maps shown as numbers only (true) or with their graphs (false).
  void NumericalChanged(bool on);

 private:
  void Changed();
  OptionPair MakePair(QWidget* parent, const QString& name, const QString& first_text,
                      const QString& second_text, bool ProgramSettings::*field);
  QCheckBox* MakeTick(QWidget* parent, const QString& name, const QString& text,
                      int ProgramSettings::*field);
  void ShowPortDevice();
  // The rows of the link options, each added to `form` in `box`.
  void AddPortRow(QWidget* box, QFormLayout* form);
  void AddFramesRow(QWidget* box, QFormLayout* form);
  void AddPacketSpeedRow(QWidget* box, QFormLayout* form);
  void AddScaleRow(QWidget* box, QFormLayout* form);

  ProgramSetup& setup_;
  QComboBox* port_list_ = nullptr;
  QLabel* port_device_ = nullptr;
  QComboBox* frames_per_second_ = nullptr;
  QComboBox* afr_display_mode_ = nullptr;
  QScrollBar* datalog_time_scale_ = nullptr;
  QLabel* datalog_time_scale_text_ = nullptr;
  std::array<QRadioButton*, kPacketSpeedChoices> packet_speed_{};
  QScrollBar* scale_ = nullptr;
  QLabel* scale_text_ = nullptr;
  QPushButton* first_run_button_ = nullptr;
  QCheckBox* numerical_ = nullptr;
  // Pairs and ticks with the settings field each one shows.
  std::vector<std::pair<OptionPair, bool ProgramSettings::*>> pairs_;
  std::vector<std::pair<QCheckBox*, int ProgramSettings::*>> ticks_;

 public:
  std::function<QString(int)> device_for_port;
};

}  // namespace vela
