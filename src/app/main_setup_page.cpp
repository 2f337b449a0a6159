#include "app/main_setup_page.h"

#include <QGroupBox>
#include <QHBoxLayout>
#include <QSignalBlocker>
#include <QVBoxLayout>
#include <cmath>

#include "app/editor_session.h"
#include "app/instant_help.h"
#include "app/settings_controls.h"
#include "calibration/conversions.h"
#include "editors/apply_calibration.h"
#include "editors/setup/map_sensor.h"
#include "editors/setup/setup_notes.h"
#include "editors/setup/setup_options.h"

namespace vela {

namespace {

namespace l = help_label;

constexpr int kMinRevLimitRpm = 916;  // the longest period 16 bits hold, 65535 us
constexpr int kMaxRevLimitRpm = 20000;

template <std::size_t N>
std::vector<std::string_view> Views(const std::array<std::string_view, N>& texts) {
  return {texts.begin(), texts.end()};
}
template <std::size_t N>
std::vector<std::string> Strings(const std::array<std::string_view, N>& texts) {
  return {texts.begin(), texts.end()};
}

// The choices whose change re-lays the map grids or their labels.
bool MovesTheMaps(SetupChoice choice) {
  switch (choice) {
    case SetupChoice::kComboSiteRPM:
    case SetupChoice::kComboSiteFuel:
    case SetupChoice::kComboSiteIgnition:
    case SetupChoice::kFuelMode:
    case SetupChoice::kLoadSensing:
    case SetupChoice::kComboMAP:
    case SetupChoice::kComboMAPScale:
      return true;
    default:
      return false;
  }
}

QWidget* Container(QButtonGroup* group) { return static_cast<QWidget*>(group->parent()); }

QWidget* SideBySide(QWidget* parent, QWidget* left, QWidget* right) {
  auto* row = new QWidget(parent);
  auto* layout = new QHBoxLayout(row);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(left);
  layout->addWidget(right);
  return row;
}

QGridLayout* Grid(QGroupBox* box) {
  auto* grid = new QGridLayout(box);
  grid->setContentsMargins(6, 4, 6, 4);
  grid->setVerticalSpacing(1);
  return grid;
}

}  // namespace

MainSetupPage::MainSetupPage(SetupPageParts parts, SettingsControls& settings, QWidget* parent)
    : QWidget(parent), parts_(parts) {
  setObjectName("MainSetupPage");
  auto* columns = new QHBoxLayout(this);
  columns->setContentsMargins(0, 0, 0, 0);
  columns->addWidget(BuildEngine(), 1);
  columns->addWidget(BuildIgnition(), 1);
  columns->addWidget(BuildTrigger(), 1);
  columns->addWidget(BuildLoad(settings), 1);
  ShowEditors();
}

QLabel* MainSetupPage::Caption(QWidget* parent, int index, const char* text) {
  return parts_.help.MakeLabel(parent, index, QString::fromUtf8(text));
}

// The caption over its control, so that four columns fit a laptop's screen.
void MainSetupPage::AddRow(QGridLayout* grid, QLabel* caption, QWidget* control) {
  const int row = grid->rowCount();
  caption->setStyleSheet("font-weight: bold;");
  grid->addWidget(caption, row, 0);
  grid->addWidget(control, row + 1, 0);
}

void MainSetupPage::AddNote(QGridLayout* grid, QLabel* note) {
  grid->addWidget(note, grid->rowCount(), 0);
}

QButtonGroup* MainSetupPage::Group(QWidget* parent, const QString& name,
                                   const std::vector<std::string_view>& texts, int columns,
                                   SetupChoice choice) {
  auto* container = new QWidget(parent);
  QButtonGroup* group = MakeOptionGroup(container, name, texts, columns);
  connect(group, &QButtonGroup::idToggled, this, [this, choice](int id, bool on) {
    if (on) Choose(choice, id);
  });
  return group;
}

QComboBox* MainSetupPage::List(QWidget* parent, const QString& name,
                               const std::vector<std::string>& texts, SetupChoice choice) {
  QComboBox* list = MakeList(parent, name, texts);
  connect(list, &QComboBox::activated, this, [this, choice](int index) { Choose(choice, index); });
  return list;
}

QSpinBox* MainSetupPage::RawSpin(QWidget* parent, const QString& name, int position) {
  auto* spin = new QSpinBox(parent);
  GuardWheel(spin);
  spin->setObjectName(name);
  spin->setRange(0, 255);
  spin->setKeyboardTracking(false);
  connect(spin, &QSpinBox::valueChanged, this, [this, position](int value) {
    parts_.editors.setup_editor().SetRawByte(position, static_cast<std::uint8_t>(value));
    ShowChecks();
  });
  return spin;
}

QCheckBox* MainSetupPage::Flag(QWidget* parent, const QString& name, SetupChoice choice) {
  auto* flag = new QCheckBox("Bit 7 flag", parent);
  flag->setObjectName(name);
  flag->setToolTip("Bit 7 of the sensor byte, kept and sent as it is.");
  connect(flag, &QCheckBox::toggled, this, [this, choice](bool on) { Choose(choice, on ? 1 : 0); });
  return flag;
}

QWidget* MainSetupPage::BuildEngine() {
  auto* box = MakeBox(this, "EngineBox", "Engine");
  parts_.help.WatchFrame(box);
  QGridLayout* grid = Grid(box);
  cylinders_ = Group(box, "Cylinders", Views(kCylinderTexts), 5, SetupChoice::kCylinders);
  AddRow(grid, Caption(box, l::kCylinders, "Number of Cylinders"), Container(cylinders_));
  fuel_mode_ = Group(box, "FuelMode", Views(kFuelModeTexts), 2, SetupChoice::kFuelMode);
  AddRow(grid, Caption(box, l::kFuelMode, "Fuel Mode"), Container(fuel_mode_));
  injection_name_ = new QLabel(box);
  injection_name_->setObjectName("InjectionModeName");
  AddNote(grid, injection_name_);
  note_injection_ = MakeNote(box, "NoteInjection");
  AddNote(grid, note_injection_);
  impedance_ =
      Group(box, "OptionImpedance", Views(kImpedanceTexts), 3, SetupChoice::kOptionImpedance);
  AddRow(grid, Caption(box, l::kInjectorImpedance, "Injector Impedance"), Container(impedance_));
  note_impedance_ = MakeNote(box, "NoteImpedance");
  AddNote(grid, note_impedance_);
  auto* selection = new QWidget(box);
  map_selection_ =
      MakeOptionGroup(selection, "MapSelectionSetup",
                      {" Only Map 1", " Only Map 2", "   ECU Selected", "Combine Maps"}, 2);
  connect(map_selection_, &QButtonGroup::idToggled, this, [this](int id, bool on) {
    if (!on || parts_.editors.suppress_change_events()) return;
    parts_.editors.SetMapSelection(id);
    parts_.maps_changed();
  });
  AddRow(grid, Caption(box, l::kFuelMapSelection, "Fuel Map Selection"), selection);
  prime_ = List(box, "ComboPrime", Strings(kFuelPumpPrimeTexts), SetupChoice::kFuelPumpPrime);
  AddRow(grid, Caption(box, l::kStartupPrime, "Startup Prime"), prime_);
  aux_output_ = List(box, "Combo1", Strings(kAuxOutputTexts), SetupChoice::kComboAuxOutput);
  AddRow(grid, Caption(box, l::kAuxiliaryOutput, "Auxiliary Output"), aux_output_);
  warning_light_ =
      List(box, "ComboWarningLight", Strings(kWarningLightTexts), SetupChoice::kWarningLight);
  AddRow(grid, Caption(box, l::kWarningLight, "Warning Light"), warning_light_);
  grid->setRowStretch(grid->rowCount(), 1);
  return box;
}

QWidget* MainSetupPage::BuildIgnition() {
  auto* box = MakeBox(this, "IgnitionBox", "Limits and Ignition");
  parts_.help.WatchFrame(box);
  QGridLayout* grid = Grid(box);
  const auto rev_spin = [this, box](const QString& name, int limiter) {
    auto* spin = new QSpinBox(box);
    GuardWheel(spin);
    spin->setObjectName(name);
    // One below the lowest speed reads "Not set": a limiter of 0 (no speed at all).
    spin->setRange(kMinRevLimitRpm - 1, kMaxRevLimitRpm);
    spin->setSpecialValueText("Not set");
    spin->setSingleStep(50);
    spin->setSuffix(" RPM");
    spin->setKeyboardTracking(false);
    connect(spin, &QSpinBox::valueChanged, this, [this, limiter](int rpm) {
      if (!parts_.editors.setup_editor().SetRevLimitRpm(limiter, rpm)) ShowEditors();
      ShowNotes();
    });
    return spin;
  };
  rev_limit1_ = rev_spin("RevLimit1", 1);
  rev_limit2_ = rev_spin("RevLimit2", 2);
  AddRow(grid, Caption(box, l::kRevLimiter1, "Rev Limiter 1"), rev_limit1_);
  AddRow(grid, Caption(box, l::kRevLimiter2, "Rev Limiter 2"), rev_limit2_);
  note_rev_ = MakeNote(box, "NoteRevLimiter");
  AddNote(grid, note_rev_);
  limiter_mode_ = Group(box, "LimiterMode", Views(kLimiterModeTexts), 3, SetupChoice::kLimiterMode);
  AddRow(grid, Caption(box, l::kLimiterType, "Limiter Type"), Container(limiter_mode_));
  spark_ = List(box, "ComboSpark", Strings(kSparkModeTexts), SetupChoice::kComboSpark);
  AddRow(grid, Caption(box, l::kSparkMode, "Spark Mode"), spark_);
  note_spark_ = MakeNote(box, "NoteSparkMode");
  AddNote(grid, note_spark_);
  dwell_mode_ = List(box, "ComboDwell", Strings(kDwellModeTexts), SetupChoice::kDwellMode);
  AddRow(grid, Caption(box, l::kDwellControl, "Dwell Control"), dwell_mode_);
  dwell_value_ = new QDoubleSpinBox(box);
  GuardWheel(dwell_value_);
  dwell_value_->setObjectName("DwellValue");
  dwell_value_->setKeyboardTracking(false);
  connect(dwell_value_, &QDoubleSpinBox::valueChanged, this, [this](double value) {
    const bool charge = DwellModeOf(parts_.editors.state().setup.DwellTime) == 1;
    parts_.editors.setup_editor().SetDwellValue(
        static_cast<int>(std::lround(charge ? value * 10.0 : value)));
    ShowNotes();
  });
  AddRow(grid, Caption(box, l::kDwellSetting, "Charge Time / Duty"), dwell_value_);
  note_dwell_ = MakeNote(box, "NoteDwell");
  AddNote(grid, note_dwell_);
  edge_spark_ = Group(box, "TriggerEdgeSpark", Views(kTriggerEdgeSparkTexts), 2,
                      SetupChoice::kTriggerEdgeSpark);
  AddRow(grid, Caption(box, l::kSparkOutputEdge, "Spark Output Edge"), Container(edge_spark_));
  grid->setRowStretch(grid->rowCount(), 1);
  return box;
}

QWidget* MainSetupPage::BuildTrigger() {
  auto* box = MakeBox(this, "TriggerBox", "Trigger and Home Position");
  parts_.help.WatchFrame(box);
  QGridLayout* grid = Grid(box);
  trigger_ = List(box, "ComboTrigger", Strings(kTriggerPatternTexts), SetupChoice::kComboTrigger);
  AddRow(grid, Caption(box, l::kTriggerPattern, "Trigger Pattern"), trigger_);
  trigger_type_ = Group(box, "TriggerHallMagnetic", Views(kSensorTypeTexts), 3,
                        SetupChoice::kTriggerHallMagnetic);
  AddRow(grid, Caption(box, l::kTriggerSensorType, "Trigger Sensor"), Container(trigger_type_));
  trigger_flag_ = Flag(box, "TriggerSensorFlag", SetupChoice::kTriggerSensorFlag);
  trigger_voltage_ = RawSpin(box, "TriggerVoltage", SetupFieldNamed("TriggerVoltage").position);
  AddRow(grid, Caption(box, l::kTriggerVoltage, "Trigger Voltage"),
         SideBySide(box, trigger_voltage_, trigger_flag_));
  edge_input_ = Group(box, "TriggerEdgeInput", Views(kTriggerEdgeInputTexts), 2,
                      SetupChoice::kTriggerEdgeInput);
  AddRow(grid, Caption(box, l::kTriggerInputEdge, "Trigger Edge"), Container(edge_input_));
  trigger_offset_ = new QDoubleSpinBox(box);
  GuardWheel(trigger_offset_);
  trigger_offset_->setObjectName("TriggerOffset");
  trigger_offset_->setRange(0.0, kMaxTriggerOffset / 2.0);
  trigger_offset_->setDecimals(1);
  trigger_offset_->setSingleStep(0.5);
  trigger_offset_->setSuffix(QString::fromUtf8("\u00B0 BTDC"));
  trigger_offset_->setKeyboardTracking(false);
  connect(trigger_offset_, &QDoubleSpinBox::valueChanged, this, [this](double degrees) {
    parts_.editors.setup_editor().SetTriggerOffsetDegrees(degrees);
    ShowChecks();
  });
  AddRow(grid, Caption(box, l::kTriggerAngle, "Trigger Angle"), trigger_offset_);
  tooth_offset_ =
      RawSpin(box, "TriggerToothOffset", SetupFieldNamed("TriggerToothOffset").position);
  AddRow(grid, Caption(box, l::kTriggerToothOffset, "Tooth Offset"), tooth_offset_);
  check_trigger_ = MakeNote(box, "CheckTrigger");
  AddNote(grid, check_trigger_);
  home_ = List(box, "ComboHome", Strings(kHomePatternTexts), SetupChoice::kComboHome);
  AddRow(grid, Caption(box, l::kHomePosition, "Home Position"), home_);
  home_type_ =
      Group(box, "HomeHallMagnetic", Views(kSensorTypeTexts), 3, SetupChoice::kHomeHallMagnetic);
  AddRow(grid, Caption(box, l::kHomeSensorType, "Home Sensor"), Container(home_type_));
  home_flag_ = Flag(box, "HomeSensorFlag", SetupChoice::kHomeSensorFlag);
  home_voltage_ = RawSpin(box, "HomeVoltage", SetupFieldNamed("HomeVoltage").position);
  AddRow(grid, Caption(box, l::kHomeVoltage, "Home Voltage"),
         SideBySide(box, home_voltage_, home_flag_));
  edge_home_ =
      Group(box, "TriggerEdgeHome", Views(kTriggerEdgeHomeTexts), 2, SetupChoice::kTriggerEdgeHome);
  AddRow(grid, Caption(box, l::kHomeInputEdge, "Home Edge"), Container(edge_home_));
  check_home_ = MakeNote(box, "CheckHome");
  AddNote(grid, check_home_);
  grid->setRowStretch(grid->rowCount(), 1);
  return box;
}

QWidget* MainSetupPage::BuildLoad(SettingsControls& settings) {
  auto* box = MakeBox(this, "LoadBox", "Load and Map Sites");
  parts_.help.WatchFrame(box);
  QGridLayout* grid = Grid(box);
  load_sensing_ = Group(box, "LoadSensing", Views(kLoadSensingTexts), 2, SetupChoice::kLoadSensing);
  AddRow(grid, Caption(box, l::kLoadSensing, "Load Sensing"), Container(load_sensing_));
  map_sensor_ = List(box, "ComboMAP", Strings(kMapSensorTexts), SetupChoice::kComboMAP);
  AddRow(grid, Caption(box, l::kInstalledMapSensor, "Installed Map Sensor"), map_sensor_);
  map_scale_ = List(box, "ComboMAPScale", {}, SetupChoice::kComboMAPScale);
  AddRow(grid, Caption(box, l::kMapSensorScaling, "MAP Sensor Scaling"), map_scale_);
  site_rpm_ = List(box, "ComboSiteRPM", Strings(kRpmSiteTexts), SetupChoice::kComboSiteRPM);
  AddRow(grid, Caption(box, l::kEngineSpeedSites, "Engine Speed Sites"), site_rpm_);
  site_fuel_ = List(box, "ComboSiteFuel", Strings(kFuelSiteTexts), SetupChoice::kComboSiteFuel);
  AddRow(grid, Caption(box, l::kFuelLoadSites, "Fuel Load Sites"), site_fuel_);
  site_ignition_ =
      List(box, "ComboSiteIgnition", Strings(kIgnSiteTexts), SetupChoice::kComboSiteIgnition);
  AddRow(grid, Caption(box, l::kIgnitionLoadSites, "Ignition Load Sites"), site_ignition_);
  note_sites_ = MakeNote(box, "NoteLoadSites");
  ShowNote(note_sites_, QString::fromStdString(LoadSitesNote()));
  AddNote(grid, note_sites_);
  QComboBox* afr_mode = settings.BuildAfrDisplayMode(box);
  GuardWheel(afr_mode);
  AddRow(grid, Caption(box, l::kAfrDisplay, "AFR Display"), afr_mode);
  grid->setRowStretch(grid->rowCount(), 1);
  return box;
}

void MainSetupPage::Choose(SetupChoice choice, int value) {
  if (parts_.editors.suppress_change_events()) return;
  parts_.editors.setup_editor().Choose(choice, value);
  if (choice == SetupChoice::kComboMAP) ShowMapScaleList();
  if (choice == SetupChoice::kDwellMode) ShowDwellUnits();
  if (MovesTheMaps(choice)) parts_.maps_changed();
  ShowNotes();
  ShowChecks();
}

void MainSetupPage::ShowMapScaleList() {
  const SensorSetup& sensors = parts_.editors.state().sensors;
  const QSignalBlocker block(map_scale_);
  map_scale_->clear();
  for (const std::string& text : MapScaleTexts(sensors.ComboMAP)) {
    map_scale_->addItem(QString::fromStdString(text));
  }
  ShowChoice(map_scale_, sensors.ComboMAPScale);
}

void MainSetupPage::ShowDwellUnits() {
  const std::uint8_t dwell = parts_.editors.state().setup.DwellTime;
  const bool charge = DwellModeOf(dwell) == 1;
  const QSignalBlocker block(dwell_value_);
  dwell_value_->setDecimals(charge ? 1 : 0);
  dwell_value_->setSingleStep(charge ? 0.1 : 1.0);
  dwell_value_->setRange(0.0, charge ? kMaxDwellValue / 10.0 : kMaxDwellValue);
  dwell_value_->setSuffix(charge ? " ms" : " %");
  dwell_value_->setValue(charge ? DwellValueOf(dwell) / 10.0 : DwellValueOf(dwell));
}

void MainSetupPage::ShowNotes() {
  const EditorState& state = parts_.editors.state();
  const EngineSetup& setup = state.setup;
  ShowNote(note_rev_, QString::fromStdString(RevLimiterNote(setup)));
  ShowNote(note_injection_, QString::fromStdString(InjectionNote(setup)));
  ShowNote(note_impedance_, QString::fromStdString(ImpedanceNote(setup)));
  ShowNote(note_spark_, QString::fromStdString(SparkModeNote(setup)));
  ShowNote(note_dwell_, QString::fromStdString(DwellNote(setup, state.idle)));
  const bool sequential = setup.FuelMode == kFuelModeSequential;
  const int name = sequential ? (setup.ComboHome == 0 ? 2 : 3) : setup.FuelMode;
  injection_name_->setText(
      Text(name >= 0 && name <= 3 ? kInjectionModeNames[name] : kUnknownInjectionMode));
}

void MainSetupPage::ShowChecks() {
  const CalibrationImage& image = parts_.editors.image();
  const CheckContext context{parts_.editors.state().sensors.ComboMAP};
  const auto messages = [&](std::initializer_list<int> positions) {
    QStringList lines;
    for (const int position : positions) {
      for (const std::string& message : FailedChecksAt(image, position, context)) {
        lines << QString::fromStdString(message);
      }
    }
    return lines.join("; ");
  };
  ShowNote(check_trigger_, messages({852, 908, 959}));
  ShowNote(check_home_, messages({853}));
}

void MainSetupPage::showEvent(QShowEvent* event) {
  ShowEditors();
  QWidget::showEvent(event);
}

void MainSetupPage::ShowEditors() {
  const ChangeEventsSuppressed filling(parts_.editors.suppress_change_events());
  const EditorState& state = parts_.editors.state();
  const EngineSetup& setup = state.setup;
  ShowChoice(cylinders_, setup.Cylinders);
  ShowChoice(fuel_mode_, setup.FuelMode);
  ShowChoice(impedance_, setup.OptionImpedance);
  ShowChoice(map_selection_, setup.MapSelection);
  ShowChoice(limiter_mode_, setup.LimiterMode);
  ShowChoice(load_sensing_, state.sensors.LoadSensing);
  ShowChoice(trigger_type_, setup.TriggerHallMagnetic);
  ShowChoice(home_type_, setup.HomeHallMagnetic);
  ShowChoice(edge_input_, setup.TriggerEdgeInput);
  ShowChoice(edge_home_, setup.TriggerEdgeHome);
  ShowChoice(edge_spark_, setup.TriggerEdgeSpark);
  ShowChoice(trigger_, setup.ComboTrigger);
  ShowChoice(home_, setup.ComboHome);
  ShowChoice(spark_, setup.ComboSpark);
  ShowChoice(dwell_mode_, DwellModeOf(setup.DwellTime));
  ShowChoice(site_rpm_, setup.ComboSiteRPM);
  ShowChoice(site_fuel_, setup.ComboSiteFuel);
  ShowChoice(site_ignition_, setup.ComboSiteIgnition);
  ShowChoice(prime_, setup.StartupPrime);
  ShowChoice(aux_output_, setup.ComboAuxOutput);
  ShowChoice(warning_light_, setup.Setting997);
  ShowChoice(map_sensor_, state.sensors.ComboMAP);
  ShowMapScaleList();
  ShowDwellUnits();
  for (auto [flag, on] : {std::pair{trigger_flag_, setup.TriggerSensorFlag},
                          std::pair{home_flag_, setup.HomeSensorFlag}}) {
    const QSignalBlocker block(flag);
    flag->setChecked(on);
  }
  for (auto [spin, value] :
       {std::pair{rev_limit1_, setup.RevLimit1}, std::pair{rev_limit2_, setup.RevLimit2}}) {
    const QSignalBlocker block(spin);
    spin->setValue(static_cast<int>(std::lround(RpmFromEnginePeriod(value))));
  }
  for (auto [spin, value] : {std::pair{trigger_voltage_, setup.TriggerVoltage},
                             std::pair{home_voltage_, setup.HomeVoltage},
                             std::pair{tooth_offset_, setup.TriggerToothOffset}}) {
    const QSignalBlocker block(spin);
    spin->setValue(value);
  }
  {
    const QSignalBlocker block(trigger_offset_);
    trigger_offset_->setValue(TriggerOffsetFromRaw(setup.TriggerOffset));
  }
  ShowNotes();
  ShowChecks();
}

}  // namespace vela

#include "moc_main_setup_page.cpp"
