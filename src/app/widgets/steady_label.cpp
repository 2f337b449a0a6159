#include "app/widgets/steady_label.h"

#include <QEvent>
#include <algorithm>
#include <utility>

namespace vela {

SteadyLabel::SteadyLabel(QStringList longest, QWidget* parent, int wrap_width)
    : QLabel(parent), longest_(std::move(longest)), wrap_width_(wrap_width) {
  setWordWrap(wrap_width_ > 0);
  FitLongest();
}

void SteadyLabel::changeEvent(QEvent* event) {
  QLabel::changeEvent(event);
  if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) FitLongest();
}

void SteadyLabel::FitLongest() {
  const QString shown = text();
  setMinimumSize(0, 0);
  setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
  QSize size(wrap_width_, 0);
  for (const QString& text : longest_) {
    setText(text);
    if (wrap_width_ > 0) {
      size.setHeight(std::max(size.height(), heightForWidth(wrap_width_)));
    } else {
      size = size.expandedTo(sizeHint());
    }
  }
  setFixedSize(size);
  setText(shown);
}

}  // namespace vela
