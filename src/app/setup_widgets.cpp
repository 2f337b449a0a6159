#include "app/setup_widgets.h"

#include <QEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QRadioButton>
#include <QSignalBlocker>

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

QString Text(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
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
    auto* button = new QRadioButton(Text(texts[static_cast<std::size_t>(i)]), container);
    button->setObjectName(name + QString::number(i));
    group->addButton(button, i);
    layout->addWidget(button, i / columns, i % columns);
  }
  return group;
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
  const QSignalBlocker block(group);
  if (QAbstractButton* button = group->button(choice)) {
    button->setChecked(true);
    return;
  }
  // No entry: clear every button (an exclusive group keeps one unless told otherwise).
  group->setExclusive(false);
  for (QAbstractButton* button : group->buttons()) button->setChecked(false);
  group->setExclusive(true);
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
  note->hide();
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
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(4);
  switch (field.show) {
    case RawShow::kByte:
    case RawShow::kRpm24:
      spin_ = new QSpinBox(this);
      GuardWheel(spin_);
      spin_->setObjectName(QStringLiteral("Byte%1").arg(field.position));
      spin_->setKeyboardTracking(false);
      if (field.show == RawShow::kByte) {
        spin_->setRange(0, 255);
        connect(spin_, &QSpinBox::valueChanged, this,
                [this](int value) { emit ByteEdited(field_.position, value); });
      } else {
        spin_->setRange(4, 20000);  // a 24-bit period reaches down to 4 RPM
        spin_->setSingleStep(25);
        spin_->setSuffix(QStringLiteral(" RPM"));
        spin_->setMinimumWidth(spin_->fontMetrics().horizontalAdvance(QStringLiteral("20000 RPM")) +
                               30);
        connect(spin_, &QSpinBox::valueChanged, this, [this](int rpm) { emit RpmEdited(rpm); });
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
      connect(halved_, &QDoubleSpinBox::valueChanged, this, [this](double value) {
        emit ByteEdited(field_.position, static_cast<int>(std::lround(value * 2.0)));
      });
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
      break;
  }
  row->addWidget(checks_, 1);
}

void RawFieldEditor::Show(std::uint32_t value) {
  if (spin_ != nullptr) {
    const QSignalBlocker block(spin_);
    spin_->setValue(field_.show == RawShow::kRpm24
                        ? static_cast<int>(std::lround(RpmFromEnginePeriod(value)))
                        : static_cast<int>(value));
  } else if (halved_ != nullptr) {
    const QSignalBlocker block(halved_);
    halved_->setValue(value / 2.0);
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
    grid->addWidget(caption, i % rows, 2 * (i / rows));
    grid->addWidget(editor, i % rows, 2 * (i / rows) + 1);
    editors.push_back(editor);
  }
  for (int column = 0; column < columns; ++column) grid->setColumnStretch(2 * column + 1, 1);
  return editors;
}

}  // namespace vela

#include "moc_setup_widgets.cpp"
