#include "app/pages/setup/main_setup_page.h"

#include <QAbstractSpinBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QSignalBlocker>
#include <cmath>

#include "app/pages/setup/instant_help.h"
#include "app/sessions/editor_session.h"
#include "app/widgets/settings_controls.h"
#include "calibration/conversions.h"
#include "editors/apply_calibration.h"
#include "editors/setup/map_sensor.h"
#include "editors/setup/setup_marks.h"
#include "editors/setup/setup_notes.h"
#include "editors/setup/setup_options.h"

namespace vela {

namespace {

namespace l = help_label;

QWidget* SideBySide(QWidget* parent, QWidget* left, QWidget* right) {
  auto* row = new QWidget(parent);
  auto* layout = new QHBoxLayout(row);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(left, 1);
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
  FlowColumns* columns = MakePageColumns(this, "MainSetupColumns");
  columns->AddColumn(BuildEngine());
  columns->AddColumn(BuildIgnition());
  columns->AddColumn(BuildTrigger());
  columns->AddColumn(BuildLoad(settings));
  ShowEditors();
}

QLabel* MainSetupPage::Caption(QWidget* parent, int index, const QString& text) {
  return parts_.help.MakeLabel(parent, index, text);
}

QLabel* MainSetupPage::AddRow(QGridLayout* grid, QLabel* caption, QWidget* control) {
  const int row = grid->rowCount();
  caption->setStyleSheet("font-weight: bold;");
  grid->addWidget(caption, row, 0);
  grid->addWidget(control, row + 1, 0);
  // A screen reader names a field by its own caption, not by the box around it.
  QWidget* field = control;
  if (qobject_cast<QComboBox*>(field) == nullptr &&
      qobject_cast<QAbstractSpinBox*>(field) == nullptr) {
    field = control->findChild<QAbstractSpinBox*>();
  }
  control->setAccessibleName(caption->text());
  if (field != nullptr) field->setAccessibleName(caption->text());
  // The caption labels its field for a screen reader, ahead of the box around both.
  if (field == control) caption->setBuddy(control);
  QLabel* mark = MakeNote(control->parentWidget(), control->objectName() + "Mark");
  grid->addWidget(mark, row + 2, 0);
  return mark;
}

void MainSetupPage::AddNote(QGridLayout* grid, QLabel* note) {
  note->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  grid->addWidget(note, grid->rowCount(), 0);
}

void MainSetupPage::Bind(SetupChoice choice, ChoiceControl::Widget widget, QLabel* mark) {
  choices_.push_back({choice, widget, mark});
}

QWidget* MainSetupPage::AddChoice(QWidget* box, QGridLayout* grid, int help, SetupChoice choice,
                                  const std::function<void(int)>& choose) {
  const BuiltChoice built = MakeChoiceControl(
      box, choice, choose ? choose : [this, choice](int entry) { Choose(choice, entry); });
  const std::string_view caption = Describe(choice).caption;
  Bind(choice, built.control,
       AddRow(grid, Caption(box, help, QString::fromUtf8(caption.data(), caption.size())),
              built.widget));
  return built.widget;
}

QCheckBox* MainSetupPage::Flag(QWidget* parent, SetupChoice choice) {
  const BuiltChoice built =
      MakeChoiceControl(parent, choice, [this, choice](int entry) { Choose(choice, entry); });
  Bind(choice, built.control, nullptr);
  return std::get<QCheckBox*>(built.control);
}

QSpinBox* MainSetupPage::RawSpin(QWidget* parent, const QString& name, int position) {
  auto* spin = new QSpinBox(parent);
  GuardWheel(spin);
  spin->setObjectName(name);
  spin->setKeyboardTracking(false);
  connect(spin, &QSpinBox::valueChanged, this, [this, position](int value) {
    SetupEditor& editor = parts_.editors.setup_editor();
    const auto range = editor.RawRange(position).value_or(std::pair{value, value});
    editor.SetRawByte(position,
                      static_cast<std::uint8_t>(std::clamp(value, range.first, range.second)));
    ShowEditors();
  });
  raw_spins_.push_back({spin, position});
  return spin;
}

QSpinBox* MainSetupPage::RevSpin(QWidget* parent, const QString& name, int limiter) {
  auto* spin = new QSpinBox(parent);
  GuardWheel(spin);
  spin->setObjectName(name);
  spin->setSingleStep(50);
  spin->setSuffix(" RPM");
  spin->setKeyboardTracking(false);
  connect(spin, &QSpinBox::valueChanged, this, [this, limiter](int rpm) {
    const NumberShow show = RevLimiterShow(limiter, parts_.editors.state().setup);
    // "Not set" (one step below the range) is no speed: the field shows the limiter again.
    if (rpm >= show.low) {
      parts_.editors.setup_editor().SetRevLimitRpm(limiter, ClampInto(rpm, show));
    }
    ShowEditors();
  });
  return spin;
}

QWidget* MainSetupPage::BuildEngine() {
  auto* box = MakeBox(this, "EngineBox", "Engine");
  parts_.help.WatchFrame(box);
  QGridLayout* grid = Grid(box);
  AddChoice(box, grid, l::kCylinders, SetupChoice::kCylinders);
  AddChoice(box, grid, l::kFuelMode, SetupChoice::kFuelMode);
  injection_name_ = new QLabel(box);
  injection_name_->setObjectName("InjectionModeName");
  AddNote(grid, injection_name_);
  note_injection_ = MakeNote(box, "NoteInjection");
  AddNote(grid, note_injection_);
  AddChoice(box, grid, l::kInjectorImpedance, SetupChoice::kInjectorImpedance);
  note_impedance_ = MakeNote(box, "NoteImpedance");
  AddNote(grid, note_impedance_);
  AddChoice(box, grid, l::kStartupPrime, SetupChoice::kFuelPumpPrime);
  AddChoice(box, grid, l::kAuxiliaryOutput, SetupChoice::kAuxOutput);
  AddNote(grid, MakeInfoNote(box, "NoteAuxOutput", kAuxOutputNote));
  AddChoice(box, grid, l::kWarningLight, SetupChoice::kWarningLight);
  grid->setRowStretch(grid->rowCount(), 1);
  return box;
}

QWidget* MainSetupPage::BuildIgnition() {
  auto* box = MakeBox(this, "IgnitionBox", "Limits and Ignition");
  parts_.help.WatchFrame(box);
  QGridLayout* grid = Grid(box);
  rev_limit1_ = RevSpin(box, "RevLimit1", 1);
  mark_rev1_ = AddRow(grid, Caption(box, l::kRevLimiter1, "Rev Limiter 1"), rev_limit1_);
  rev_limit2_ = RevSpin(box, "RevLimit2", 2);
  mark_rev2_ = AddRow(grid, Caption(box, l::kRevLimiter2, "Rev Limiter 2"), rev_limit2_);
  note_rev_ = MakeNote(box, "NoteRevLimiter");
  AddNote(grid, note_rev_);
  AddChoice(box, grid, l::kLimiterType, SetupChoice::kLimiterMode);
  AddChoice(box, grid, l::kSparkMode, SetupChoice::kSparkMode);
  note_spark_ = MakeNote(box, "NoteSparkMode");
  AddNote(grid, note_spark_);
  AddChoice(box, grid, l::kDwellControl, SetupChoice::kDwellMode);
  dwell_value_ = new QDoubleSpinBox(box);
  GuardWheel(dwell_value_);
  dwell_value_->setObjectName("DwellValue");
  dwell_value_->setKeyboardTracking(false);
  connect(dwell_value_, &QDoubleSpinBox::valueChanged, this, [this](double value) {
    const std::uint8_t dwell = parts_.editors.state().setup.dwell;
    const NumberShow show = DwellShow(dwell);
    if (value >= show.low) {
      const double kept = ClampInto(value, show);
      parts_.editors.setup_editor().SetDwellValue(
          static_cast<int>(std::lround(DwellModeOf(dwell) == 1 ? kept * 10.0 : kept)));
    }
    ShowEditors();
  });
  mark_dwell_ = AddRow(grid, Caption(box, l::kDwellSetting, "Charge Time / Duty"), dwell_value_);
  note_dwell_ = MakeNote(box, "NoteDwell");
  AddNote(grid, note_dwell_);
  AddChoice(box, grid, l::kSparkOutputEdge, SetupChoice::kSparkOutputEdge);
  AddNote(grid, MakeInfoNote(box, "NoteSparkPullUp", kSparkPullUpNote));
  grid->setRowStretch(grid->rowCount(), 1);
  return box;
}

QWidget* MainSetupPage::BuildTrigger() {
  auto* box = MakeBox(this, "TriggerBox", "Trigger and Home Position");
  parts_.help.WatchFrame(box);
  QGridLayout* grid = Grid(box);
  AddChoice(box, grid, l::kTriggerPattern, SetupChoice::kTriggerPattern);
  AddChoice(box, grid, l::kTriggerSensorType, SetupChoice::kTriggerSensorType);
  QCheckBox* trigger_flag = Flag(box, SetupChoice::kTriggerSensorFlag);
  QSpinBox* trigger_voltage = RawSpin(box, "TriggerVoltage", FieldPos("TriggerVoltage"));
  AddRow(grid, Caption(box, l::kTriggerVoltage, "Trigger Voltage"),
         SideBySide(box, trigger_voltage, trigger_flag));
  AddChoice(box, grid, l::kTriggerInputEdge, SetupChoice::kTriggerInputEdge);
  trigger_offset_ = new QDoubleSpinBox(box);
  GuardWheel(trigger_offset_);
  trigger_offset_->setObjectName("TriggerOffset");
  trigger_offset_->setDecimals(1);
  trigger_offset_->setSingleStep(0.5);
  trigger_offset_->setSuffix(QString::fromUtf8("\u00B0 BTDC"));
  trigger_offset_->setKeyboardTracking(false);
  connect(trigger_offset_, &QDoubleSpinBox::valueChanged, this, [this](double degrees) {
    const NumberShow show = TriggerOffsetShow(parts_.editors.state().setup.trigger_offset);
    parts_.editors.setup_editor().SetTriggerOffsetDegrees(ClampInto(degrees, show));
    ShowEditors();
  });
  mark_offset_ = AddRow(grid, Caption(box, l::kTriggerAngle, "Trigger Angle"), trigger_offset_);
  QSpinBox* tooth = RawSpin(box, "TriggerToothOffset", FieldPos("TriggerToothOffset"));
  AddRow(grid, Caption(box, l::kTriggerToothOffset, "Tooth Offset"), tooth);
  check_trigger_ = MakeNote(box, "CheckTrigger");
  AddNote(grid, check_trigger_);
  AddChoice(box, grid, l::kHomePosition, SetupChoice::kHomePattern);
  AddChoice(box, grid, l::kHomeSensorType, SetupChoice::kHomeSensorType);
  QCheckBox* home_flag = Flag(box, SetupChoice::kHomeSensorFlag);
  QSpinBox* home_voltage = RawSpin(box, "HomeVoltage", FieldPos("HomeVoltage"));
  AddRow(grid, Caption(box, l::kHomeVoltage, "Home Voltage"),
         SideBySide(box, home_voltage, home_flag));
  AddChoice(box, grid, l::kHomeInputEdge, SetupChoice::kHomeInputEdge);
  check_home_ = MakeNote(box, "CheckHome");
  AddNote(grid, check_home_);
  grid->setRowStretch(grid->rowCount(), 1);
  return box;
}

QWidget* MainSetupPage::BuildLoad(SettingsControls& settings) {
  auto* box = MakeBox(this, "LoadBox", "Load and Map Sites");
  parts_.help.WatchFrame(box);
  QGridLayout* grid = Grid(box);
  AddChoice(box, grid, l::kLoadSensing, SetupChoice::kLoadSensing);
  AddChoice(box, grid, l::kInstalledMapSensor, SetupChoice::kMapSensorType);
  map_scale_ =
      qobject_cast<QComboBox*>(AddChoice(box, grid, l::kMapSensorScaling, SetupChoice::kMapScale));
  AddChoice(box, grid, l::kEngineSpeedSites, SetupChoice::kRpmSites);
  AddChoice(box, grid, l::kFuelLoadSites, SetupChoice::kFuelLoadSites);
  AddChoice(box, grid, l::kIgnitionLoadSites, SetupChoice::kIgnLoadSites);
  note_sites_ = MakeNote(box, "NoteLoadSites");
  ShowNote(note_sites_, QString::fromStdString(LoadSitesNote()));
  AddNote(grid, note_sites_);
  // The fuel map selection stands with the map layouts (the Engine column is the tallest).
  // Through the editor session, which leaves a selection already held alone.
  AddChoice(box, grid, l::kFuelMapSelection, SetupChoice::kMapSelection, [this](int entry) {
    if (parts_.editors.suppress_change_events()) return;
    parts_.editors.SetMapSelection(entry);
    parts_.maps_changed();
    ShowEditors();
  });
  QComboBox* afr_mode = settings.BuildAfrDisplayMode(box);
  GuardWheel(afr_mode);
  AddRow(grid, Caption(box, l::kAfrDisplay, "AFR Display"), afr_mode);
  grid->setRowStretch(grid->rowCount(), 1);
  return box;
}

void MainSetupPage::Choose(SetupChoice choice, int value) {
  if (parts_.editors.suppress_change_events()) return;
  parts_.editors.setup_editor().Choose(choice, value);
  if (Describe(choice).maps != MapEffect::kNone) parts_.maps_changed();
  // A refused choice shows what stands again; every other control may now offer more or less.
  ShowEditors();
}

void MainSetupPage::ShowMapScaleList() {
  const SensorSetup& sensors = parts_.editors.state().sensors;
  const QSignalBlocker block(map_scale_);
  map_scale_->clear();
  for (const std::string& text : MapScaleTexts(sensors.map_sensor_type)) {
    map_scale_->addItem(QString::fromStdString(text));
  }
}

void MainSetupPage::ShowNumbers() {
  const EditorState& state = parts_.editors.state();
  const EngineSetup& setup = state.setup;
  for (auto [spin, mark, limiter] :
       {std::tuple{rev_limit1_, mark_rev1_, 1}, std::tuple{rev_limit2_, mark_rev2_, 2}}) {
    const NumberShow show = RevLimiterShow(limiter, setup);
    ShowNumber(spin, show, "Not set");
    ShowNote(mark, QString::fromStdString(show.mark));
  }
  const NumberShow dwell = DwellShow(setup.dwell);
  const bool charge = DwellModeOf(setup.dwell) == 1;
  dwell_value_->setDecimals(charge ? 1 : 0);
  dwell_value_->setSingleStep(charge ? 0.1 : 1.0);
  dwell_value_->setSuffix(dwell.value ? (charge ? " ms" : " %") : "");
  ShowNumber(dwell_value_, dwell,
             dwell.value ? QString() : QString("%1 as stored").arg(setup.dwell));
  ShowNote(mark_dwell_, QString::fromStdString(dwell.mark));
  const NumberShow offset = TriggerOffsetShow(setup.trigger_offset);
  ShowNumber(trigger_offset_, offset, QString());
  ShowNote(mark_offset_, QString::fromStdString(offset.mark));
  SetupEditor& editor = parts_.editors.setup_editor();
  for (auto [spin, position] : raw_spins_) {
    const int held = parts_.editors.image().Byte(position);
    const std::optional<std::pair<int, int>> takes = editor.RawRange(position);
    const auto range = takes.value_or(std::pair{held, held});
    const QSignalBlocker block(spin);
    spin->setRange(std::min(range.first, held), std::max(range.second, held));
    spin->setValue(held);
    spin->setToolTip(QString::fromStdString(editor.RawRangeNote(position, takes)));
  }
}

void MainSetupPage::ShowNotes() {
  const EditorState& state = parts_.editors.state();
  const EngineSetup& setup = state.setup;
  ShowNote(note_rev_, QString::fromStdString(RevLimiterNote(setup)));
  ShowNote(note_injection_, QString::fromStdString(InjectionNote(setup)));
  ShowNote(note_impedance_, QString::fromStdString(ImpedanceNote(setup)));
  ShowNote(note_spark_, QString::fromStdString(SparkModeNote(setup)));
  ShowNote(note_dwell_, QString::fromStdString(DwellNote(setup, state.idle)));
  injection_name_->setText(TextOf(InjectionModeName(setup)));
}

void MainSetupPage::ShowChecks() {
  const CalibrationImage& image = parts_.editors.image();
  const CheckContext context{parts_.editors.state().sensors.map_sensor_type};
  const auto messages = [&](std::initializer_list<int> positions) {
    QStringList lines;
    for (const int position : positions) {
      for (const std::string& message : FailedChecksAt(image, position, context)) {
        if (!lines.contains(QString::fromStdString(message))) {
          lines << QString::fromStdString(message);
        }
      }
    }
    return lines.join("; ");
  };
  ShowNote(check_trigger_, messages({FieldPos("TriggerVoltage"), FieldPos("TriggerToothOffset"),
                                     FieldPos("TriggerOffset")}));
  ShowNote(check_home_, messages({FieldPos("HomeVoltage")}));
}

void MainSetupPage::showEvent(QShowEvent* event) {
  ShowEditors();
  QWidget::showEvent(event);
}

void MainSetupPage::ShowEditors() {
  const ChangeEventsSuppressed filling(parts_.editors.suppress_change_events());
  ShowMapScaleList();
  for (const ChoiceControl& control : choices_) ShowChoiceControl(control, parts_.editors);
  ShowNumbers();
  ShowNotes();
  ShowChecks();
}

}  // namespace vela

#include "moc_main_setup_page.cpp"
