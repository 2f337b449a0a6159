#include "app/live_value.h"

#include <QPainter>

namespace vela {

namespace {

// A live value reads as static text whose value is the text it paints.
QAccessibleInterface* LiveValueAccessible(const QString& class_name, QObject* object) {
  if (class_name != QLatin1String("vela::LiveValue")) return nullptr;
  auto* value = qobject_cast<LiveValue*>(object);
  if (value == nullptr) return nullptr;
  return new PaintedTextAccessible(value, QAccessible::StaticText, [](const QWidget* widget) {
    return static_cast<const LiveValue*>(widget)->text();
  });
}

}  // namespace

LiveValue::LiveValue(const QString& widest, Qt::Alignment alignment, QWidget* parent)
    : QWidget(parent), widest_(widest), alignment_(alignment) {
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
  InstallAccessibleFactory<&LiveValueAccessible>();
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
