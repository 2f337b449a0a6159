#include "app/workbench/operation_line.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QKeyEvent>

namespace vela {

OperationLine::OperationLine(QWidget* parent)
    : QFrame(parent), edit_(new QLineEdit(this)), preview_(new QLabel(this)) {
  setObjectName("OperationLine");
  setAccessibleName("Typed operation on the selected cells");
  setFrameShape(QFrame::StyledPanel);
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(4, 2, 4, 2);
  auto* prompt = new QLabel("Selection:", this);
  row->addWidget(prompt);
  edit_->setObjectName("OperationText");
  edit_->setAccessibleName("Operation");
  edit_->setToolTip("12.5 sets, +0.3 or -0.3 adds, *1.05 or /2 scales, +5% or -3% by a percentage");
  edit_->setMaxLength(40);
  edit_->setMinimumWidth(110);
  edit_->setMaximumWidth(160);
  prompt->setBuddy(edit_);
  row->addWidget(edit_);
  preview_->setObjectName("OperationPreview");
  preview_->setAccessibleName("Result of the operation");
  preview_->setTextFormat(Qt::PlainText);
  preview_->setWordWrap(true);
  row->addWidget(preview_, 1);
  edit_->installEventFilter(this);
  connect(edit_, &QLineEdit::textChanged, this, &OperationLine::TextChanged);
  connect(edit_, &QLineEdit::returnPressed, this, [this] { emit Entered(edit_->text()); });
  hide();
}

void OperationLine::Open(const QString& text) {
  open_ = true;
  show();
  edit_->setText(text);
  edit_->setCursorPosition(static_cast<int>(text.size()));
  edit_->setFocus(Qt::OtherFocusReason);
  emit TextChanged(text);
}

void OperationLine::Close() {
  open_ = false;
  hide();
  preview_->clear();
}

void OperationLine::ShowPreview(const QString& text, bool refused) {
  preview_->setText(text);
  preview_->setAccessibleDescription(text);
  preview_->setStyleSheet(refused ? "color: rgb(170, 20, 10);" : QString());
}

// Escape leaves the line; the keyboard leaving it (a click elsewhere) leaves it too.
bool OperationLine::eventFilter(QObject* watched, QEvent* event) {
  if (watched == edit_ && event->type() == QEvent::KeyPress &&
      static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
    emit Left();
    return true;
  }
  if (watched == edit_ && event->type() == QEvent::FocusOut && open_) {
    const auto reason = static_cast<QFocusEvent*>(event)->reason();
    if (reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason) emit Left();
  }
  return QFrame::eventFilter(watched, event);
}

}  // namespace vela

#include "moc_operation_line.cpp"
