#include "app/pages/setup/setup_choices.h"

#include <QSignalBlocker>
#include <QStandardItemModel>
#include <map>

#include "app/pages/setup/setup_widgets.h"
#include "app/sessions/editor_session.h"
#include "editors/setup/setup_marks.h"

namespace vela {

namespace {

struct Refused {
  int entry;
  ChangeOutcome outcome;
};

QString Quoted(const QString& text) { return "\"" + text + "\""; }

// The refused entries' reasons: one entry with the bytes it would write, several grouped by the
// checks that refuse them.
QString NotOffered(const ChoiceControl& control, const std::vector<Refused>& refused) {
  if (refused.empty()) return {};
  if (refused.size() == 1) {
    return "Not offered now: " + Quoted(EntryText(control, refused.front().entry)) + ", as " +
           QString::fromStdString(RefusalText(refused.front().outcome)) + ".";
  }
  std::map<std::string, QStringList> by_reason;
  for (const Refused& r : refused) {
    std::string reason;
    for (const SetupCheck& check : r.outcome.refusals) {
      if (!reason.empty()) reason += "; and ";
      reason += "\"" + std::string(check.message) + "\": " + std::string(check.rule);
    }
    by_reason[reason] << Quoted(EntryText(control, r.entry));
  }
  QStringList parts;
  for (const auto& [reason, entries] : by_reason) {
    parts << entries.join(", ") + " would fail " + QString::fromStdString(reason);
  }
  return "Not offered now: " + parts.join(". ") + ".";
}

struct Offer {
  bool offered;
  QString why;  // a refused entry's reason, for its tooltip
};

// Whether `entry` is offered: the one shown always is, another when the editor would take it. A
// refused one joins `refused`.
Offer OfferEntry(const ChoiceControl& control, int entry, int shown, SetupEditor& editor,
                 std::vector<Refused>& refused) {
  const ChangeOutcome outcome = editor.TryChoose(control.choice, entry);
  if (entry == shown || !outcome.Refused()) return {true, {}};
  refused.push_back({entry, outcome});
  return {false, QString::fromStdString(RefusalText(outcome))};
}

void OfferButtons(QButtonGroup* group, const ChoiceControl& control, int shown, SetupEditor& editor,
                  std::vector<Refused>& refused) {
  for (QAbstractButton* button : group->buttons()) {
    const Offer offer = OfferEntry(control, group->id(button), shown, editor, refused);
    button->setEnabled(offer.offered);
    button->setToolTip(offer.why);
  }
  ShowChoice(group, shown);
}

void OfferItems(QComboBox* list, const ChoiceControl& control, int shown, SetupEditor& editor,
                std::vector<Refused>& refused) {
  auto* model = qobject_cast<QStandardItemModel*>(list->model());
  for (int entry = 0; entry < list->count(); ++entry) {
    const Offer offer = OfferEntry(control, entry, shown, editor, refused);
    if (QStandardItem* item = model != nullptr ? model->item(entry) : nullptr) {
      item->setEnabled(offer.offered);
      item->setToolTip(offer.why);
    }
  }
  ShowChoice(list, shown);
}

void OfferFlag(QCheckBox* flag, const ChoiceControl& control, int shown, SetupEditor& editor,
               std::vector<Refused>& refused) {
  {
    const QSignalBlocker block(flag);
    flag->setChecked(shown == 1);
  }
  const Offer offer = OfferEntry(control, shown == 1 ? 0 : 1, shown, editor, refused);
  flag->setEnabled(offer.offered);
  flag->setToolTip(offer.why);
}

QString Text(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace

BuiltChoice MakeChoiceControl(QWidget* parent, SetupChoice choice,
                              const std::function<void(int)>& choose) {
  const SetupChoiceDescription& d = Describe(choice);
  const QString name = Text(d.name);
  BuiltChoice built{};
  if (d.shape == ChoiceShape::kOptions) {
    built.widget = new QWidget(parent);
    QButtonGroup* group =
        MakeOptionGroup(built.widget, name,
                        std::vector<std::string_view>(d.texts.begin(), d.texts.end()), d.columns);
    QObject::connect(group, &QButtonGroup::idToggled, group, [choose](int id, bool on) {
      if (on) choose(id);
    });
    built.control = group;
  } else if (d.shape == ChoiceShape::kList) {
    QComboBox* list =
        MakeList(parent, name, std::vector<std::string>(d.texts.begin(), d.texts.end()));
    QObject::connect(list, &QComboBox::activated, list, choose);
    built.widget = list;
    built.control = list;
  } else {
    auto* flag = new QCheckBox(Text(d.caption), parent);
    flag->setObjectName(name);
    QObject::connect(flag, &QCheckBox::toggled, flag, [choose](bool on) { choose(on ? 1 : 0); });
    built.widget = flag;
    built.control = flag;
  }
  if (!d.spoken.empty()) built.widget->setAccessibleName(Text(d.spoken));
  if (!d.tip.empty()) built.widget->setToolTip(Text(d.tip));
  return built;
}

QString EntryText(const ChoiceControl& control, int entry) {
  if (const auto* group = std::get_if<QButtonGroup*>(&control.widget)) {
    if (QAbstractButton* button = (*group)->button(entry)) return button->text();
  } else if (const auto* list = std::get_if<QComboBox*>(&control.widget)) {
    return (*list)->itemText(entry);
  } else if (const auto* flag = std::get_if<QCheckBox*>(&control.widget)) {
    return (*flag)->text() + (entry == 1 ? " on" : " off");
  }
  return {};
}

void ShowChoiceControl(const ChoiceControl& control, EditorSession& editors) {
  const EditorState& state = editors.state();
  const int shown = ShownChoice(control.choice, state, editors.image());
  std::vector<Refused> refused;
  SetupEditor& editor = editors.setup_editor();
  if (auto* const* group = std::get_if<QButtonGroup*>(&control.widget)) {
    OfferButtons(*group, control, shown, editor, refused);
  } else if (auto* const* list = std::get_if<QComboBox*>(&control.widget)) {
    OfferItems(*list, control, shown, editor, refused);
  } else if (auto* const* flag = std::get_if<QCheckBox*>(&control.widget)) {
    OfferFlag(*flag, control, shown, editor, refused);
  }
  if (control.mark == nullptr) return;
  QStringList lines;
  const std::string mark = ChoiceMark(control.choice, state, editors.image());
  if (!mark.empty()) lines << QString::fromStdString(mark);
  const QString not_offered = NotOffered(control, refused);
  if (!not_offered.isEmpty()) lines << not_offered;
  ShowNote(control.mark, lines.join("\n"));
}

}  // namespace vela
