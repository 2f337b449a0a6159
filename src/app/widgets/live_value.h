// A live value shown as text. It draws its own text, so a new value repaints this value alone
// and never lays its page out again: live values change ten times a second. Greyed, it stands
// for a value that is not live. Accessibility tools read it as static text named by its
// accessibleName, its value the text it paints, and hear of each new text.
#pragma once

#include <QPalette>
#include <QString>
#include <QWidget>

#include "base/qt/accessible_text.h"

namespace vela {

class LiveValue : public QWidget {
  Q_OBJECT

 public:
  // `widest` is the longest text the value is sized for; `alignment` places the text.
  explicit LiveValue(const QString& widest, Qt::Alignment alignment = Qt::AlignRight,
                     QWidget* parent = nullptr);
  void SetText(const QString& text);
  void SetGreyed(bool greyed);
  // Paints its whole area in the palette's `ground` colour (framed, when asked), so that a new
  // value never draws what lies behind it again.
  void SetOpaque(QPalette::ColorRole ground = QPalette::Window, bool framed = false);
  QString text() const { return text_; }
  bool greyed() const { return greyed_; }
  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return sizeHint(); }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QString widest_;
  Qt::Alignment alignment_;
  QString text_;
  bool greyed_ = false;
  bool opaque_ = false;
  bool framed_ = false;
  QPalette::ColorRole ground_ = QPalette::Window;
  ValueAnnouncer announcer_{this};
};

}  // namespace vela
