#include "app/widgets/settings_controls.h"

#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include "app/pages/setup/setup_widgets.h"
#include "app/widgets/text_of.h"
#include "link/link_timing.h"
#include "program/afr_display.h"

namespace vela {

SettingsControls::SettingsControls(ProgramSetup& setup, QObject* parent)
    : QObject(parent), setup_(setup) {}

void SettingsControls::Changed() { setup_.SettingChanged(); }

OptionPair SettingsControls::MakePair(QWidget* parent, const QString& name,
                                      const QString& first_text, const QString& second_text,
                                      bool ProgramSettings::*field) {
  auto* box = MakeBox(parent, name, QString());
  auto* layout = new QHBoxLayout(box);
  OptionPair pair{new QRadioButton(first_text, box), new QRadioButton(second_text, box)};
  pair.first->setObjectName(name + "0");
  pair.second->setObjectName(name + "1");
  layout->addWidget(pair.first);
  layout->addWidget(pair.second);
  auto* group = new QButtonGroup(box);
  group->addButton(pair.first);
  group->addButton(pair.second);
  connect(pair.first, &QRadioButton::toggled, this, [this, field](bool on) {
    setup_.settings.*field = on;
    Changed();
  });
  pairs_.emplace_back(pair, field);
  return pair;
}

QCheckBox* SettingsControls::MakeTick(QWidget* parent, const QString& name, const QString& text,
                                      int ProgramSettings::*field) {
  auto* tick = new QCheckBox(text, parent);
  tick->setObjectName(name);
  connect(tick, &QCheckBox::toggled, this, [this, field](bool on) {
    setup_.settings.*field = on ? 1 : 0;
    Changed();
  });
  ticks_.emplace_back(tick, field);
  return tick;
}

QWidget* SettingsControls::BuildFileOptions(QWidget* page) {
  auto* box = MakeBox(page, "LinkOptions", "ECU Link");
  box->setMaximumWidth(760);
  auto* form = new QFormLayout(box);
  AddPortRow(box, form);
  AddFramesRow(box, form);
  AddPacketSpeedRow(box, form);
  QCheckBox* slow_send = MakeTick(box, "CheckSlowSend", "Reduce Comms Sending",
                                  &ProgramSettings::reduce_comms_sending);
  connect(slow_send, &QCheckBox::toggled, this, &SettingsControls::SlowSendChosen);
  form->addRow(slow_send);
  form->addRow("Upload check:", MakePair(box, "MapIntegrity", "Map Upload Integrity On",
                                         "Integrity Off", &ProgramSettings::map_integrity)
                                    .first->parentWidget());
  form->addRow("Language:",
               MakePair(box, "Language", "English", "Deutsch", &ProgramSettings::language_first)
                   .first->parentWidget());
  AddScaleRow(box, form);
  first_run_button_ = new QPushButton("First-Run Port Set-up...", box);
  first_run_button_->setObjectName("FirstRunSetupButton");
  form->addRow(first_run_button_);
  return box;
}

void SettingsControls::AddPortRow(QWidget* box, QFormLayout* form) {
  port_list_ = new QComboBox(box);
  port_list_->setObjectName("CommPortList");
  port_device_ = new QLabel(box);
  port_device_->setObjectName("CommPortDevice");
  auto* port_row = new QHBoxLayout;
  port_row->addWidget(port_list_);
  port_row->addWidget(port_device_, 1);
  form->addRow("Serial port:", port_row);
  connect(port_list_, &QComboBox::currentIndexChanged, this, [this](int index) {
    if (index < 0) return;
    setup_.settings.port_index = index;
    ShowPortDevice();
    Changed();
    if (!setup_.SuppressChangeEvents && !setup_.LoadingSetup) emit PortChosen(index + 1);
  });
}

void SettingsControls::AddFramesRow(QWidget* box, QFormLayout* form) {
  frames_per_second_ = new QComboBox(box);
  frames_per_second_->setObjectName("FramesPerSecondList");
  form->addRow("Live frames:", frames_per_second_);
  connect(frames_per_second_, &QComboBox::currentIndexChanged, this, [this](int index) {
    if (index < 0) return;
    setup_.settings.frames_per_second_index = index;
    Changed();
    emit FramesPerSecondChosen(index);
  });
}

void SettingsControls::AddPacketSpeedRow(QWidget* box, QFormLayout* form) {
  auto* speed_box = MakeBox(box, "CommsPacketSpeedOption", QString());
  auto* speed_row = new QHBoxLayout(speed_box);
  auto* speed_group = new QButtonGroup(speed_box);
  for (int i = 0; i < kPacketSpeedChoices; ++i) {
    packet_speed_[i] = new QRadioButton(QString("x%1").arg(i + 1), speed_box);
    packet_speed_[i]->setObjectName(QString("CommsPacketSpeedOption%1").arg(i));
    speed_group->addButton(packet_speed_[i], i);
    speed_row->addWidget(packet_speed_[i]);
    connect(packet_speed_[i], &QRadioButton::toggled, this, [this, i](bool on) {
      if (!on) return;
      setup_.settings.comms_packet_speed = i;
      Changed();
      emit PacketSpeedChosen(i);
    });
  }
  form->addRow("Comms multiply:", speed_box);
}

void SettingsControls::AddScaleRow(QWidget* box, QFormLayout* form) {
  scale_ = new QScrollBar(Qt::Horizontal, box);
  scale_->setObjectName("HScroll6");
  scale_->setRange(kScaleMin, kScaleMax);
  scale_text_ = new QLabel(box);
  auto* scale_row = new QHBoxLayout;
  scale_row->addWidget(scale_, 1);
  scale_row->addWidget(scale_text_);
  form->addRow("Display scale:", scale_row);
  connect(scale_, &QScrollBar::valueChanged, this, [this](int value) {
    setup_.settings.scale = value;
    scale_text_->setText(QString("%1 %").arg(100 + value));
    Changed();
    emit ScaleChanged(value);
  });
}

QWidget* SettingsControls::BuildFuelDisplay(QWidget* page) {
  auto* box = MakeBox(page, "FuelDisplayOptions", "Display");
  auto* grid = new QGridLayout(box);
  auto* numerical = new QCheckBox("Numerical", box);
  numerical->setObjectName("Numerical");
  numerical->setToolTip("Show the maps as numbers only; untick to show each map's graph too");
  connect(numerical, &QCheckBox::toggled, this, [this](bool on) {
    setup_.settings.fuel_map_numerical = on;
    Changed();
    emit NumericalChanged(on);
  });
  grid->addWidget(numerical, 0, 0);
  const struct {
    const char* name;
    const char* text;
    int ProgramSettings::*field;
    const char* tip;
  } smoothing[] = {
      {"RPMSmoothing", "RPM Smoothing", &ProgramSettings::rpm_smoothing,
       "Steady the engine speed read-outs and the live point on the maps (0.3 s filter)"},
      {"MAPSmoothing", "MAP Smoothing", &ProgramSettings::map_smoothing,
       "Steady the manifold pressure read-outs and the live point on the maps (0.3 s filter)"},
      {"AFRSmoothing", "AFR Smoothing", &ProgramSettings::afr_smoothing,
       "Steady the air-fuel ratio read-outs (0.5 s filter)"},
  };
  int place = 1;
  for (const auto& tick : smoothing) {
    QCheckBox* box_tick = MakeTick(box, tick.name, tick.text, tick.field);
    box_tick->setToolTip(tick.tip);
    grid->addWidget(box_tick, place / 2, place % 2);
    ++place;
  }
  numerical_ = numerical;
  return box;
}

QWidget* SettingsControls::BuildOutputsDisplay(QWidget* page) {
  auto* box = MakeBox(page, "OutputDisplayOptions", "Output Display");
  auto* layout = new QVBoxLayout(box);
  layout->addWidget(MakePair(box, "GPONameEnable", "Show Function Names", "Show Function Numbers",
                             &ProgramSettings::gpo_name_enable)
                        .first->parentWidget());
  layout->addWidget(MakePair(box, "GPOChange", "Confirm Output Change", "Change Without Asking",
                             &ProgramSettings::gpo_change_confirm)
                        .first->parentWidget());
  return box;
}

QWidget* SettingsControls::BuildHelpOptions(QWidget* page) {
  auto* box = MakeBox(page, "HelpOptions", "Help");
  auto* layout = new QVBoxLayout(box);
  layout->addWidget(MakePair(box, "InstantHelp", "Instant Help On", "Instant Help Off",
                             &ProgramSettings::instant_help)
                        .first->parentWidget());
  return box;
}

QComboBox* SettingsControls::BuildAfrDisplayMode(QWidget* page) {
  afr_display_mode_ = new QComboBox(page);
  afr_display_mode_->setObjectName("ComboAFRMode");
  connect(afr_display_mode_, &QComboBox::currentIndexChanged, this, [this](int index) {
    if (index < 0) return;
    setup_.settings.afr_display_mode = index;
    Changed();
  });
  return afr_display_mode_;
}

QWidget* SettingsControls::BuildDatalogOptions(QWidget* page) {
  auto* box = MakeBox(page, "DatalogOptions", "Time Scale");
  auto* row = new QHBoxLayout(box);
  datalog_time_scale_ = new QScrollBar(Qt::Horizontal, box);
  datalog_time_scale_->setObjectName("DatalogTimeScale");
  datalog_time_scale_->setRange(kDatalogTimeScaleMin, kDatalogTimeScaleMax);
  datalog_time_scale_text_ = new QLabel(box);
  datalog_time_scale_text_->setObjectName("TextDatalogTimeScale");
  datalog_time_scale_text_->setMinimumWidth(60);
  row->addWidget(datalog_time_scale_, 1);
  row->addWidget(datalog_time_scale_text_);
  row->addWidget(new QLabel("seconds", box));
  connect(datalog_time_scale_, &QScrollBar::valueChanged, this, [this](int value) {
    setup_.settings.datalog_time_scale = value;
    datalog_time_scale_text_->setText(QString::number(value));
    Changed();
  });
  return box;
}

void SettingsControls::FillFixedLists() {
  const QSignalBlocker block_ports(port_list_);
  const QSignalBlocker block_rates(frames_per_second_);
  const QSignalBlocker block_afr(afr_display_mode_);
  port_list_->clear();
  for (int n = 1; n <= kPortCount; ++n) port_list_->addItem(QString("CommPort %1").arg(n));
  frames_per_second_->clear();
  for (const LiveFrameRate& rate : kLiveFrameRates) frames_per_second_->addItem(TextOf(rate.text));
  afr_display_mode_->clear();
  for (const std::string_view text : kAfrModeTexts) {
    afr_display_mode_->addItem(TextOf(text));
  }
}

void SettingsControls::ShowPortDevice() {
  if (device_for_port) port_device_->setText(device_for_port(port_list_->currentIndex() + 1));
}

void SettingsControls::ShowSettings() {
  const ProgramSettings s = setup_.settings;
  port_list_->setCurrentIndex(s.port_index);
  ShowPortDevice();
  frames_per_second_->setCurrentIndex(s.frames_per_second_index);
  afr_display_mode_->setCurrentIndex(s.afr_display_mode);
  datalog_time_scale_->setValue(s.datalog_time_scale);
  datalog_time_scale_text_->setText(QString::number(s.datalog_time_scale));
  numerical_->setChecked(s.fuel_map_numerical);
  for (auto& [pair, field] : pairs_) (s.*field ? pair.first : pair.second)->setChecked(true);
  for (auto& [tick, field] : ticks_) tick->setChecked(s.*field != 0);
  packet_speed_[s.comms_packet_speed]->setChecked(true);
  scale_->setValue(s.scale);
  scale_text_->setText(QString("%1 %").arg(100 + s.scale));
  setup_.settings = s;
}

}  // namespace vela

#include "moc_settings_controls.cpp"
