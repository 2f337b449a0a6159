// The building blocks of the set-up pages: option groups and lists with their exact texts, red
// notes beside dangerous choices, the editors of bytes shown as they are stored, number fields
// that show a held value outside their range as it is, and columns that wrap on a narrow screen.
#pragma once

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QSpinBox>
#include <QTableWidget>
#include <QWidget>
#include <array>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "app/widgets/text_of.h"
#include "editors/setup/raw_fields.h"
#include "editors/setup/setup_marks.h"

namespace vela {

// Exclusive choices named `name`, their buttons `name`0, `name`1, ... (ids the choice indexes),
// laid out in `columns` columns. Tab enters the group on its chosen button (on the first enabled
// one when none is chosen) and leaves it on the next Tab; the arrows move within it.
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
// Makes the chosen button of `group` its one Tab stop.
void KeepTabOnChosen(QButtonGroup* group);

// Shows a number field's range and held value (NumberShow): the range widens to hold a value
// outside it, and `unset_text` stands one step below the range for a value that is not set.
void ShowNumber(QSpinBox* spin, const NumberShow& show, const QString& unset_text);
void ShowNumber(QDoubleSpinBox* spin, const NumberShow& show, const QString& unset_text);

// A table whose keyboard search is off: a key typed on a cell never moves the cursor to another
// row (and so never starts editing a row the tuner did not pick).
class NoSearchTable : public QTableWidget {
  Q_OBJECT

 public:
  using QTableWidget::QTableWidget;
  void keyboardSearch(const QString&) override {}
};

// Columns side by side while the width holds their preferred widths; on a narrower page as many
// per row as fit, the rest wrapping below, so that the page scrolls downwards only. Extra width
// goes to the columns by their stretch.
class FlowColumns : public QWidget {
  Q_OBJECT

 public:
  explicit FlowColumns(QWidget* parent = nullptr);
  void AddColumn(QWidget* column, int stretch = 1);
  int PerRow() const { return per_row_; }

  QSize minimumSizeHint() const override;
  QSize sizeHint() const override;
  bool hasHeightForWidth() const override { return true; }
  int heightForWidth(int width) const override;

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  int PerRowFor(int width) const;
  void Arrange(int per_row);

  int Wanted(std::size_t column) const;

  QGridLayout* grid_;
  std::vector<QWidget*> columns_;
  std::vector<int> stretch_;
  int per_row_ = 0;
};

// The columns of a set-up page (named `name`), filling it from its top.
FlowColumns* MakePageColumns(QWidget* page, const QString& name);

// A note in red beside a control, hidden while it has nothing to say. It wraps to the width it
// is given: a long one never widens its page.
QLabel* MakeNote(QWidget* parent, const QString& name);
// A note that is always said, in grey, wrapped to the width it is given: what the calibration
// cannot tell apart or does not show.
QLabel* MakeInfoNote(QWidget* parent, const QString& name, std::string_view text);
void ShowNote(QLabel* note, const QString& text);

QGroupBox* MakeBox(QWidget* parent, const QString& name, const QString& title);

// One field shown as stored: a number 0 to 255, a byte shown halved, eight switches, or a 24-bit
// engine period shown in RPM; the failed setup checks that read it under it in red, wrapped to
// the field's width. A byte takes the values the setup checks let it take now (`range`); a held
// value outside them is shown as it is, and a change from it lands on the nearest one.
class RawFieldEditor : public QWidget {
  Q_OBJECT

 public:
  RawFieldEditor(const RawField& field, QLabel* caption, QWidget* parent = nullptr);

  const RawField& field() const { return field_; }
  QLabel* caption() const { return caption_; }
  // The failed checks that read the field, in red; placed by the field's owner.
  QLabel* checks() const { return checks_; }
  // The stored bytes (one, or three for an RPM field, lowest first) shown without sending; for a
  // byte, the values it can take now and why not the others (the tooltip).
  void Show(std::uint32_t value, std::optional<std::pair<int, int>> range = std::pair{0, 255},
            const QString& range_note = {});
  void ShowChecks(const std::vector<std::string>& messages);
  // The name a screen reader gives the field: its caption's.
  void SetAccessibleName(const QString& name);

 signals:
  // The tuner changed the field: a byte value, or an RPM for an RPM field.
  void ByteEdited(int position, int value);
  void BitEdited(int position, int bit, bool on);
  void RpmEdited(double rpm);

 private:
  void EmitByte(int value);

  RawField field_;
  QLabel* caption_;
  std::pair<int, int> range_{0, 255};
  NumberShow rpm_show_;
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
