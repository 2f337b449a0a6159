#include "app/pages/setup/setup_widgets.h"

#include <QEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QRadioButton>
#include <QResizeEvent>
#include <QSignalBlocker>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

#include "app/widgets/text_of.h"
#include "calibration/conversions.h"

namespace vela {

namespace {

constexpr const char* kNoteStyle = "color: rgb(200, 20, 20);";

class WheelGuard : public QObject {
 public:
  bool eventFilter(QObject* watched, QEvent* event) override {
    return event->type() == QEvent::Wheel && !static_cast<QWidget*>(watched)->hasFocus();
  }
};

}  // namespace

void GuardWheel(QWidget* field) {
  static WheelGuard guard;
  field->setFocusPolicy(Qt::StrongFocus);
  field->installEventFilter(&guard);
}

QButtonGroup* MakeOptionGroup(QWidget* container, const QString& name,
                              const std::vector<std::string_view>& texts, int columns) {
  container->setObjectName(name);
  auto* layout = new QGridLayout(container);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setHorizontalSpacing(10);
  layout->setVerticalSpacing(2);
  auto* group = new QButtonGroup(container);
  for (int i = 0; i < static_cast<int>(texts.size()); ++i) {
    auto* button = new QRadioButton(TextOf(texts[static_cast<std::size_t>(i)]), container);
    button->setObjectName(name + QString::number(i));
    group->addButton(button, i);
    layout->addWidget(button, i / columns, i % columns);
  }
  QObject::connect(group, &QButtonGroup::idToggled, group, [group] { KeepTabOnChosen(group); });
  KeepTabOnChosen(group);
  return group;
}

void KeepTabOnChosen(QButtonGroup* group) {
  QAbstractButton* stop = group->checkedButton();
  if (stop == nullptr || !stop->isEnabled()) {
    stop = nullptr;
    for (QAbstractButton* button : group->buttons()) {
      if (button->isEnabled()) {
        stop = button;
        break;
      }
    }
  }
  for (QAbstractButton* button : group->buttons()) {
    button->setFocusPolicy(button == stop ? Qt::StrongFocus : Qt::ClickFocus);
  }
}

namespace {

// `as` takes a number into the field's own type; `step` is the slot below the range that reads
// `unset_text`.
template <typename Spin, typename As>
void ShowNumberIn(Spin* spin, const NumberShow& show, const QString& unset_text, As as,
                  double step) {
  const QSignalBlocker block(spin);
  const auto low = as(show.low) - (unset_text.isEmpty() ? 0 : as(step));
  const auto value = show.value ? as(*show.value) : low;
  spin->setSpecialValueText(unset_text);
  spin->setRange(std::min(low, value), std::max(as(show.high), value));
  spin->setValue(value);
}

}  // namespace

void ShowNumber(QSpinBox* spin, const NumberShow& show, const QString& unset_text) {
  ShowNumberIn(
      spin, show, unset_text, [](double v) { return static_cast<int>(std::lround(v)); }, 1);
}

void ShowNumber(QDoubleSpinBox* spin, const NumberShow& show, const QString& unset_text) {
  ShowNumberIn(
      spin, show, unset_text, [](double v) { return v; }, spin->singleStep());
}

FlowColumns::FlowColumns(QWidget* parent) : QWidget(parent), grid_(new QGridLayout(this)) {
  grid_->setContentsMargins(0, 0, 0, 0);
  grid_->setHorizontalSpacing(6);
  grid_->setVerticalSpacing(6);
  QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
  policy.setHeightForWidth(true);
  setSizePolicy(policy);
}

void FlowColumns::AddColumn(QWidget* column, int stretch) {
  column->setParent(this);
  columns_.push_back(column);
  stretch_.push_back(stretch);
  per_row_ = 0;
  Arrange(static_cast<int>(columns_.size()));
}

int FlowColumns::Wanted(std::size_t column) const {
  return columns_[column]->minimumSizeHint().width();
}

int FlowColumns::PerRowFor(int width) const {
  const int count = static_cast<int>(columns_.size());
  for (int n = count; n > 1; --n) {
    bool fits = true;
    for (int first = 0; first < count && fits; first += n) {
      int needed = grid_->horizontalSpacing() * (std::min(first + n, count) - first - 1);
      for (int i = first; i < std::min(first + n, count); ++i) {
        needed += Wanted(static_cast<std::size_t>(i));
      }
      fits = needed <= width;
    }
    if (fits) return n;
  }
  return 1;
}

void FlowColumns::Arrange(int per_row) {
  if (per_row == per_row_) return;
  for (QWidget* column : columns_) grid_->removeWidget(column);
  for (int c = 0; c < grid_->columnCount(); ++c) grid_->setColumnStretch(c, 0);
  for (int i = 0; i < static_cast<int>(columns_.size()); ++i) {
    grid_->addWidget(columns_[static_cast<std::size_t>(i)], i / per_row, i % per_row);
    const int stretch = stretch_[static_cast<std::size_t>(i)];
    grid_->setColumnStretch(i % per_row, std::max(grid_->columnStretch(i % per_row), stretch));
  }
  per_row_ = per_row;
  updateGeometry();
}

int FlowColumns::heightForWidth(int width) const {
  const std::size_t n = static_cast<std::size_t>(PerRowFor(width));
  int height = 0;
  for (std::size_t first = 0; first < columns_.size(); first += n) {
    const std::size_t last = std::min(first + n, columns_.size());
    int stretch = 0;
    for (std::size_t i = first; i < last; ++i) stretch += stretch_[i];
    const int room = width - grid_->horizontalSpacing() * static_cast<int>(n - 1);
    int row = 0;
    for (std::size_t i = first; i < last; ++i) {
      const QWidget* column = columns_[i];
      const int column_width =
          std::max(column->minimumSizeHint().width(), room * stretch_[i] / std::max(stretch, 1));
      int h = column->minimumSizeHint().height();
      if (column->hasHeightForWidth()) h = std::max(h, column->heightForWidth(column_width));
      row = std::max(row, h);
    }
    height += row + (first > 0 ? grid_->verticalSpacing() : 0);
  }
  return height;
}

QSize FlowColumns::minimumSizeHint() const {
  int width = 0;
  for (const QWidget* column : columns_) width = std::max(width, column->minimumSizeHint().width());
  return {width, heightForWidth(std::max(width, this->width()))};
}

QSize FlowColumns::sizeHint() const {
  int width = grid_->horizontalSpacing() * std::max(static_cast<int>(columns_.size()) - 1, 0);
  for (std::size_t i = 0; i < columns_.size(); ++i) width += Wanted(i);
  return {width, heightForWidth(width)};
}

void FlowColumns::resizeEvent(QResizeEvent* event) {
  Arrange(PerRowFor(event->size().width()));
  QWidget::resizeEvent(event);
}

FlowColumns* MakePageColumns(QWidget* page, const QString& name) {
  auto* layout = new QVBoxLayout(page);
  layout->setContentsMargins(0, 0, 0, 0);
  auto* columns = new FlowColumns(page);
  columns->setObjectName(name);
  layout->addWidget(columns);
  return columns;
}

QComboBox* MakeList(QWidget* parent, const QString& name, const std::vector<std::string>& texts) {
  auto* list = new QComboBox(parent);
  list->setObjectName(name);
  for (const std::string& text : texts) list->addItem(QString::fromStdString(text));
  list->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  list->setMinimumContentsLength(14);
  GuardWheel(list);
  return list;
}

void ShowChoice(QButtonGroup* group, int choice) {
  {
    const QSignalBlocker block(group);
    if (QAbstractButton* button = group->button(choice)) {
      button->setChecked(true);
    } else {
      // No entry: clear every button (an exclusive group keeps one unless told otherwise).
      group->setExclusive(false);
      for (QAbstractButton* button : group->buttons()) button->setChecked(false);
      group->setExclusive(true);
    }
  }
  KeepTabOnChosen(group);
}

void ShowChoice(QComboBox* list, int choice) {
  const QSignalBlocker block(list);
  list->setCurrentIndex(choice >= 0 && choice < list->count() ? choice : -1);
}

QLabel* MakeNote(QWidget* parent, const QString& name) {
  auto* note = new QLabel(parent);
  note->setObjectName(name);
  note->setStyleSheet(kNoteStyle);
  note->setWordWrap(true);
  note->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  note->hide();
  return note;
}

QLabel* MakeInfoNote(QWidget* parent, const QString& name, std::string_view text) {
  auto* note = new QLabel(TextOf(text), parent);
  note->setObjectName(name);
  note->setWordWrap(true);
  note->setStyleSheet("color: #606060;");
  note->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  return note;
}

void ShowNote(QLabel* note, const QString& text) {
  note->setText(text);
  note->setVisible(!text.isEmpty());
}

QGroupBox* MakeBox(QWidget* parent, const QString& name, const QString& title) {
  auto* box = new QGroupBox(title, parent);
  box->setObjectName(name);
  return box;
}

RawFieldEditor::RawFieldEditor(const RawField& field, QLabel* caption, QWidget* parent)
    : QWidget(parent), field_(field), caption_(caption), checks_(MakeNote(this, QString())) {
  setObjectName(QStringLiteral("Field%1").arg(field.position));
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  auto* row = new QHBoxLayout;
  row->setSpacing(4);
  column->addLayout(row);
  switch (field.show) {
    case RawShow::kByte:
    case RawShow::kRpm24:
      spin_ = new QSpinBox(this);
      GuardWheel(spin_);
      spin_->setObjectName(QStringLiteral("Byte%1").arg(field.position));
      spin_->setKeyboardTracking(false);
      if (field.show == RawShow::kByte) {
        spin_->setRange(0, 255);
        connect(spin_, &QSpinBox::valueChanged, this, &RawFieldEditor::EmitByte);
      } else {
        spin_->setSingleStep(25);
        spin_->setSuffix(QStringLiteral(" RPM"));
        spin_->setMinimumWidth(spin_->fontMetrics().horizontalAdvance(QStringLiteral("20000 RPM")) +
                               30);
        connect(spin_, &QSpinBox::valueChanged, this, [this](int rpm) {
          // The "Not set" slot is not a speed: the editor refuses it and the field shows again.
          emit RpmEdited(rpm < rpm_show_.low ? rpm : ClampInto(rpm, rpm_show_));
        });
      }
      row->addWidget(spin_);
      break;
    case RawShow::kHalved:
      halved_ = new QDoubleSpinBox(this);
      GuardWheel(halved_);
      halved_->setObjectName(QStringLiteral("Byte%1").arg(field.position));
      halved_->setKeyboardTracking(false);
      halved_->setRange(0.0, 127.5);
      halved_->setDecimals(1);
      halved_->setSingleStep(0.5);
      connect(halved_, &QDoubleSpinBox::valueChanged, this,
              [this](double value) { EmitByte(static_cast<int>(std::lround(value * 2.0))); });
      row->addWidget(halved_);
      break;
    case RawShow::kBits:
      for (int bit = 0; bit < 8; ++bit) {
        bits_[bit] = new QCheckBox(this);
        bits_[bit]->setObjectName(QStringLiteral("Bit%1_%2").arg(field.position).arg(bit));
        bits_[bit]->setToolTip(QStringLiteral("Bit %1").arg(bit));
        connect(bits_[bit], &QCheckBox::toggled, this,
                [this, bit](bool on) { emit BitEdited(field_.position, bit, on); });
        row->addWidget(bits_[bit]);
      }
      row->addStretch(1);
      break;
  }
}

void RawFieldEditor::SetAccessibleName(const QString& name) {
  if (spin_ != nullptr) spin_->setAccessibleName(name);
  if (halved_ != nullptr) halved_->setAccessibleName(name);
  for (int bit = 0; bit < 8; ++bit) {
    if (bits_[bit] != nullptr)
      bits_[bit]->setAccessibleName(name + QStringLiteral(" bit %1").arg(bit));
  }
}

void RawFieldEditor::EmitByte(int value) {
  emit ByteEdited(field_.position, std::clamp(value, range_.first, range_.second));
}

void RawFieldEditor::Show(std::uint32_t value, std::optional<std::pair<int, int>> range,
                          const QString& range_note) {
  const int held = static_cast<int>(value);
  range_ = range.value_or(std::pair{held, held});
  if (spin_ != nullptr && field_.show == RawShow::kRpm24) {
    rpm_show_ = IdleTargetShow(value);
    ShowNumber(spin_, rpm_show_, QStringLiteral("Not set"));
  } else if (spin_ != nullptr) {
    const QSignalBlocker block(spin_);
    spin_->setRange(std::min(range_.first, held), std::max(range_.second, held));
    spin_->setValue(held);
    spin_->setToolTip(range_note);
    spin_->setEnabled(range.has_value());
  } else if (halved_ != nullptr) {
    const QSignalBlocker block(halved_);
    halved_->setRange(std::min(range_.first, held) / 2.0, std::max(range_.second, held) / 2.0);
    halved_->setValue(held / 2.0);
    halved_->setToolTip(range_note);
    halved_->setEnabled(range.has_value());
  } else {
    for (int bit = 0; bit < 8; ++bit) {
      const QSignalBlocker block(bits_[bit]);
      bits_[bit]->setChecked((value >> bit) & 1);
    }
  }
}

void RawFieldEditor::ShowChecks(const std::vector<std::string>& messages) {
  QStringList lines;
  for (const std::string& message : messages) lines << QString::fromStdString(message);
  ShowNote(checks_, lines.join(QStringLiteral("; ")));
}

std::vector<RawFieldEditor*> AddRawGroup(
    QGroupBox* box, const RawGroup& group,
    const std::function<QLabel*(QWidget*, const RawField&, int)>& make_caption, int columns) {
  auto* grid = new QGridLayout(box);
  grid->setVerticalSpacing(1);
  grid->setContentsMargins(6, 4, 6, 4);
  const int count = static_cast<int>(group.fields.size());
  const int rows = (count + columns - 1) / columns;
  std::vector<RawFieldEditor*> editors;
  for (int i = 0; i < count; ++i) {
    const RawField& field = group.fields[static_cast<std::size_t>(i)];
    QLabel* caption = make_caption(box, field, i);
    auto* editor = new RawFieldEditor(field, caption, box);
    editor->SetAccessibleName(caption->text());
    caption->setMinimumHeight(editor->sizeHint().height());
    // Each field takes two grid rows: the caption and the field, then its failed checks across
    // both (a hidden note leaves its row empty, and an empty row takes no room).
    const int row = 2 * (i % rows);
    const int column = 2 * (i / rows);
    grid->addWidget(caption, row, column, Qt::AlignTop);
    grid->addWidget(editor, row, column + 1);
    grid->addWidget(editor->checks(), row + 1, column, 1, 2);
    editors.push_back(editor);
  }
  for (int column = 0; column < columns; ++column) grid->setColumnStretch(2 * column + 1, 1);
  return editors;
}

}  // namespace vela

#include "moc_setup_widgets.cpp"
