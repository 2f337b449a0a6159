#include "app/pages/setup/instant_help.h"

#include <QEvent>
#include <QFontDatabase>
#include <QMouseEvent>

namespace vela {

namespace {

constexpr const char* kIndexProperty = "labelIndex";
constexpr const char* kHoverStyle = "background-color: rgb(255, 230, 120);";

}  // namespace

InstantHelp::InstantHelp(QTabWidget* tabs, std::function<bool()> instant_help_on, QWidget* parent)
    : QObject(parent),
      tabs_(tabs),
      instant_help_on_(std::move(instant_help_on)),
      box_(new QPlainTextEdit(parent)) {
  box_->setObjectName("TextInstantHelp");
  box_->setReadOnly(true);
  box_->setFocusPolicy(Qt::NoFocus);
  box_->setLineWrapMode(QPlainTextEdit::WidgetWidth);
  // The topics line their explanations up with blanks.
  box_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  box_->setFixedHeight(box_->fontMetrics().lineSpacing() * 4 + 10);
  box_->setPlaceholderText(
      "Instant help: click a caption (it lights up under the mouse) to read what it does.");
  connect(tabs_, &QTabWidget::currentChanged, this, [this] { UpdateVisibility(); });
  UpdateVisibility();
}

QLabel* InstantHelp::MakeLabel(QWidget* parent, int index, const QString& caption) {
  auto* label = new QLabel(caption, parent);
  label->setObjectName(QStringLiteral("Label%1").arg(index));
  label->setProperty(kIndexProperty, index);
  if (IsHelpLabel(index)) {
    label->setMouseTracking(true);
    label->installEventFilter(this);
  }
  return label;
}

void InstantHelp::WatchFrame(QWidget* frame) {
  frame->setMouseTracking(true);
  frame->installEventFilter(this);
}

void InstantHelp::UpdateVisibility() {
  const bool on = instant_help_on_();
  if (!on) Hover(std::nullopt);
  box_->setVisible(on && HelpSetOfTab(tabs_->currentIndex()).has_value());
}

QLabel* InstantHelp::LabelOf(int index) const {
  return tabs_->findChild<QLabel*>(QStringLiteral("Label%1").arg(index));
}

void InstantHelp::Hover(std::optional<int> index) {
  const HelpHighlighter::Step step = highlighter_.Hover(index, instant_help_on_());
  if (step.restore) {
    if (QLabel* label = LabelOf(*step.restore)) label->setStyleSheet(saved_style_);
  }
  if (step.highlight) {
    if (QLabel* label = LabelOf(*step.highlight)) {
      saved_style_ = label->styleSheet();
      label->setStyleSheet(saved_style_ + kHoverStyle);
    }
  }
}

void InstantHelp::Click(int index) {
  const std::optional<std::string> text =
      ShowHelpTopic(index, tabs_->currentIndex(), instant_help_on_());
  if (text) box_->setPlainText(QString::fromStdString(*text));
}

bool InstantHelp::eventFilter(QObject* watched, QEvent* event) {
  const QVariant index = watched->property(kIndexProperty);
  switch (event->type()) {
    case QEvent::MouseMove:
      if (!index.isValid()) {
        // A label passes the mouse moves it does not take on to its frame: only a move over the
        // frame itself ends a highlight.
        const auto* move = static_cast<QMouseEvent*>(event);
        const QWidget* under = static_cast<QWidget*>(watched)->childAt(move->position().toPoint());
        if (under != nullptr && under->property(kIndexProperty).isValid()) break;
      }
      Hover(index.isValid() ? std::optional<int>(index.toInt()) : std::nullopt);
      break;
    case QEvent::Enter:
      if (index.isValid()) Hover(index.toInt());
      break;
    case QEvent::Leave:
      if (index.isValid()) Hover(std::nullopt);
      break;
    case QEvent::MouseButtonPress:
      if (index.isValid()) Click(index.toInt());
      break;
    default:
      break;
  }
  return QObject::eventFilter(watched, event);
}

}  // namespace vela

#include "moc_instant_help.cpp"
