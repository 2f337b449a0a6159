#include "app/widgets/live_value.h"

#include <QPainter>

namespace vela {

LiveValue::LiveValue(const QString& widest, Qt::Alignment alignment, QWidget* parent)
    : QWidget(parent), widest_(widest), alignment_(alignment) {
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
  // It reads as static text whose value is the text it paints.
  InstallPaintedTextAccessible<LiveValue, QAccessible::StaticText, &LiveValue::text>();
}

void LiveValue::SetOpaque(QPalette::ColorRole ground, bool framed) {
  opaque_ = true;
  ground_ = ground;
  framed_ = framed;
  setAttribute(Qt::WA_OpaquePaintEvent);
}

void LiveValue::SetText(const QString& text) {
  if (text == text_) return;
  text_ = text;
  update();
  announcer_.Changed(text_);
}

void LiveValue::SetGreyed(bool greyed) {
  if (greyed == greyed_) return;
  greyed_ = greyed;
  update();
}

QSize LiveValue::sizeHint() const {
  const QFontMetrics metrics(font());
  return {metrics.horizontalAdvance(widest_) + 8, metrics.height() + 4};
}

void LiveValue::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  if (opaque_) painter.fillRect(rect(), palette().brush(ground_));
  if (framed_) {
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
  }
  painter.setPen(greyed_ ? QColor(160, 160, 160) : palette().color(QPalette::WindowText));
  painter.drawText(rect().adjusted(4, 0, -4, 0), alignment_ | Qt::AlignVCenter, text_);
}

}  // namespace vela

#include "moc_live_value.cpp"
