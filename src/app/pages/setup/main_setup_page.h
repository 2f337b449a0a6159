// The "&Main Setup" tab: the choices that describe the engine to the ECU, each sent at once, with
// red notes beside dangerous choices and instant help on every caption. Only what the ECU can be
// sent is offered (the rest greyed with the reason beside it); a byte a control cannot show is
// shown as it is and marked.
#pragma once

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QLabel>
#include <QSpinBox>
#include <QWidget>
#include <functional>
#include <vector>

#include "app/pages/setup/setup_choices.h"
#include "app/pages/setup/setup_page_parts.h"
#include "app/pages/setup/setup_widgets.h"
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
  QLabel* Caption(QWidget* parent, int index, const QString& text);
  // The caption over its control, and under it the control's mark (returned). Spin boxes and
  // lists take the caption as their accessible name.
  QLabel* AddRow(QGridLayout* grid, QLabel* caption, QWidget* control);
  void AddNote(QGridLayout* grid, QLabel* note);
  // The control of `choice` in `box` (MakeChoiceControl), in a row of its own under its caption
  // (help topic `help`), with its mark under it; `choose` takes the tuner's entry (by default
  // Choose). Returns what it laid out.
  QWidget* AddChoice(QWidget* box, QGridLayout* grid, int help, SetupChoice choice,
                     const std::function<void(int)>& choose = {});
  QSpinBox* RawSpin(QWidget* parent, const QString& name, int position);
  // The tick box of `choice`, bound, for the page to lay out.
  QCheckBox* Flag(QWidget* parent, SetupChoice choice);
  QSpinBox* RevSpin(QWidget* parent, const QString& name, int limiter);
  void Bind(SetupChoice choice, ChoiceControl::Widget widget, QLabel* mark);
  void Choose(SetupChoice choice, int value);
  void ShowMapScaleList();
  void ShowNumbers();
  void ShowNotes();
  void ShowChecks();

  SetupPageParts parts_;
  std::vector<ChoiceControl> choices_;
  QComboBox* map_scale_ = nullptr;
  QSpinBox* rev_limit1_ = nullptr;
  QSpinBox* rev_limit2_ = nullptr;
  QDoubleSpinBox* dwell_value_ = nullptr;
  QDoubleSpinBox* trigger_offset_ = nullptr;
  std::vector<std::pair<QSpinBox*, int>> raw_spins_;
  QLabel* injection_name_ = nullptr;
  QLabel* mark_rev1_ = nullptr;
  QLabel* mark_rev2_ = nullptr;
  QLabel* mark_dwell_ = nullptr;
  QLabel* mark_offset_ = nullptr;
  QLabel* note_rev_ = nullptr;
  QLabel* note_injection_ = nullptr;
  QLabel* note_impedance_ = nullptr;
  QLabel* note_spark_ = nullptr;
  QLabel* note_dwell_ = nullptr;
  QLabel* note_sites_ = nullptr;
  QLabel* check_trigger_ = nullptr;
  QLabel* check_home_ = nullptr;
};

}  // namespace vela
