// The building blocks of the set-up pages: option groups and lists with their exact texts, red
// notes beside dangerous choices, and the editors of bytes shown as they are stored.
#pragma once

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QLabel>
#include <QSpinBox>
#include <QWidget>
#include <array>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "editors/setup/raw_fields.h"

namespace vela {

QString Text(std::string_view text);

// Exclusive choices named `name`, their buttons `name`0, `name`1, ... (ids the choice indexes),
// laid out in `columns` columns.
QButtonGroup* MakeOptionGroup(QWidget* container, const QString& name,
                              const std::vector<std::string_view>& texts, int columns);
template <std::size_t N>
QButtonGroup* MakeOptionGroup(QWidget* container, const QString& name,
                              const std::array<std::string_view, N>& texts, int columns) {
  return MakeOptionGroup(container, name, std::vector<std::string_view>(texts.begin(), texts.end()),
                         columns);
}
QComboBox* MakeList(QWidget* parent, const QString& name, const std::vector<std::string>& texts);
template <std::size_t N>
QComboBox* MakeList(QWidget* parent, const QString& name,
                    const std::array<std::string_view, N>& texts) {
  return MakeList(parent, name, std::vector<std::string>(texts.begin(), texts.end()));
}

// A list or number field that the mouse wheel changes only once the tuner has clicked or tabbed
// into it: scrolling a page past it never changes an engine setting.
void GuardWheel(QWidget* field);

// Shows an entry without raising the control's change signal; an entry the control does not
// offer shows no entry.
void ShowChoice(QButtonGroup* group, int choice);
void ShowChoice(QComboBox* list, int choice);

// A note in red beside a control, hidden while it has nothing to say.
QLabel* MakeNote(QWidget* parent, const QString& name);
void ShowNote(QLabel* note, const QString& text);

QGroupBox* MakeBox(QWidget* parent, const QString& name, const QString& title);

// One field shown as stored: a number 0 to 255, a byte shown halved, eight switches, or a 24-bit
// engine period shown in RPM; the failed setup checks that speak of it beside it in red.
class RawFieldEditor : public QWidget {
  Q_OBJECT

 public:
  RawFieldEditor(const RawField& field, QLabel* caption, QWidget* parent = nullptr);

  const RawField& field() const { return field_; }
  QLabel* caption() const { return caption_; }
  // The stored bytes (one, or three for an RPM field, lowest first) shown without sending.
  void Show(std::uint32_t value);
  void ShowChecks(const std::vector<std::string>& messages);

 signals:
  // The tuner changed the field: a byte value, or an RPM for an RPM field.
  void ByteEdited(int position, int value);
  void BitEdited(int position, int bit, bool on);
  void RpmEdited(double rpm);

 private:
  RawField field_;
  QLabel* caption_;
  QSpinBox* spin_ = nullptr;
  QDoubleSpinBox* halved_ = nullptr;
  std::array<QCheckBox*, 8> bits_{};
  QLabel* checks_;
};

// Lays a group of raw field editors out in `box`, in `columns` columns filled top to bottom;
// `make_caption` makes each field's caption label (a help label on the help tabs).
std::vector<RawFieldEditor*> AddRawGroup(
    QGroupBox* box, const RawGroup& group,
    const std::function<QLabel*(QWidget*, const RawField&, int)>& make_caption, int columns = 1);

}  // namespace vela
