// The groups, lists and tick boxes of the set-up pages, built from their choices' descriptions
// (editors/setup/setup_choice_table.h) and bound to the editors' choices: each shows
// what the editors hold (no entry, with the reason beside it, for a byte it cannot show), offers
// only the entries the editors would take (the others greyed, each with its reason in its
// tooltip and beside the control), and hands the tuner's choice on.
#pragma once

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QString>
#include <functional>
#include <variant>
#include <vector>

#include "editors/setup/setup_editor.h"

namespace vela {

class EditorSession;

struct ChoiceControl {
  using Widget = std::variant<QButtonGroup*, QComboBox*, QCheckBox*>;
  SetupChoice choice;
  Widget widget;
  // Beside the control: the byte it cannot show and the entries not offered.
  QLabel* mark = nullptr;
};

// The control of `choice` as its description shapes it, named, worded and with its entries from
// the description: a group of option buttons in a container of its own (`widget`), a list, or a
// tick box. `choose` takes the entry the tuner picks.
struct BuiltChoice {
  QWidget* widget;  // what the page lays out
  ChoiceControl::Widget control;
};
BuiltChoice MakeChoiceControl(QWidget* parent, SetupChoice choice,
                              const std::function<void(int)>& choose);

// Shows one control from the editors, without raising its change signal.
void ShowChoiceControl(const ChoiceControl& control, EditorSession& editors);

// The text of entry `entry` as the control shows it.
QString EntryText(const ChoiceControl& control, int entry);

}  // namespace vela
