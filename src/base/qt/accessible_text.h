// What accessibility tools (a screen reader, an automated check) read of a widget that paints its
// own text: an interface with the widget's role, its name (the widget's accessibleName), its
// description (accessibleDescription, or the tooltip) and the painted text as its value, also
// offered as read-only text and as a value. The widget announces a new text itself
// (ValueAnnouncer), only when the text really changed and only while a tool listens, so that
// nothing is spent while none does.
#pragma once

#include <QAccessible>
#include <QAccessibleWidget>
#include <QString>
#include <QTimer>
#include <QVariant>
#include <QWidget>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace vela {

// Tells listening tools that the text `object` shows as its value is now `text`.
inline void AnnounceValue(QObject* object, const QString& text) {
  if (!QAccessible::isActive()) return;
  QAccessibleValueChangeEvent event(object, text);
  QAccessible::updateAccessibility(&event);
}

// The same for a part of a widget that has an interface of its own (a value among several).
inline void AnnounceValue(QAccessibleInterface* part, const QString& text) {
  if (!QAccessible::isActive() || part == nullptr) return;
  QAccessibleValueChangeEvent event(part, text);
  QAccessible::updateAccessibility(&event);
}

// The painted text offered to tools two ways: as read-only text, which a tool reads whole, and as
// a value, which the toolkit's bridge needs before it passes a value change on: the number the
// text reads as (with either decimal separator), or the text itself where it is none ("Over").
class PaintedTextParts : public QAccessibleTextInterface, public QAccessibleValueInterface {
 public:
  void selection(int, int* start, int* end) const override { *start = *end = 0; }
  int selectionCount() const override { return 0; }
  void addSelection(int, int) override {}
  void removeSelection(int) override {}
  void setSelection(int, int, int) override {}
  int cursorPosition() const override { return 0; }
  void setCursorPosition(int) override {}
  QString text(int start, int end) const override { return Whole().mid(start, end - start); }
  int characterCount() const override { return static_cast<int>(Whole().size()); }
  QRect characterRect(int) const override { return {}; }
  int offsetAtPoint(const QPoint&) const override { return -1; }
  void scrollToSubstring(int, int) override {}
  QString attributes(int, int* start, int* end) const override {
    *start = 0;
    *end = characterCount();
    return {};
  }

  QVariant currentValue() const override {
    QString text = Whole().trimmed();
    bool number = false;
    const double value = text.replace(QLatin1Char(','), QLatin1Char('.')).toDouble(&number);
    return number ? QVariant(value) : QVariant(Whole());
  }
  void setCurrentValue(const QVariant&) override {}
  QVariant maximumValue() const override { return currentValue(); }
  QVariant minimumValue() const override { return currentValue(); }
  QVariant minimumStepSize() const override { return 0.0; }

  void* PartOf(QAccessible::InterfaceType type) {
    if (type == QAccessible::TextInterface) return static_cast<QAccessibleTextInterface*>(this);
    if (type == QAccessible::ValueInterface) return static_cast<QAccessibleValueInterface*>(this);
    return nullptr;
  }

 protected:
  virtual QString Whole() const = 0;
};

// The interface of a widget whose value is the text `value` gives.
class PaintedTextAccessible : public QAccessibleWidget, public PaintedTextParts {
 public:
  using ValueText = std::function<QString(const QWidget*)>;

  PaintedTextAccessible(QWidget* widget, QAccessible::Role role, ValueText value)
      : QAccessibleWidget(widget, role), value_(std::move(value)) {}

  QString text(QAccessible::Text which) const override {
    if (which == QAccessible::Value) return value_(widget());
    return QAccessibleWidget::text(which);
  }
  QAccessible::State state() const override {
    QAccessible::State state = QAccessibleWidget::state();
    state.readOnly = true;
    return state;
  }
  void* interface_cast(QAccessible::InterfaceType type) override {
    if (void* part = PartOf(type)) return part;
    return QAccessibleWidget::interface_cast(type);
  }

 protected:
  QString Whole() const override { return value_(widget()); }

 private:
  ValueText value_;
};

// Tells listening tools of a widget's new texts, each only when it differs from the one they last
// heard, and at most one in kIntervalMs: live values change ten times a second, faster than a
// screen reader can speak them, and each announcement costs a round trip to the tool. A change
// within the interval is told when the interval ends, so the newest text is always heard; tools
// read the present text whenever they ask.
class ValueAnnouncer {
 public:
  static constexpr int kIntervalMs = 500;
  using Announce = std::function<void(const QString&)>;

  explicit ValueAnnouncer(Announce announce) : announce_(std::move(announce)) {}
  // Tells them as the value of `object` (AnnounceValue).
  explicit ValueAnnouncer(QObject* object)
      : ValueAnnouncer([object](const QString& text) { AnnounceValue(object, text); }) {}
  ValueAnnouncer(const ValueAnnouncer&) = delete;
  ValueAnnouncer& operator=(const ValueAnnouncer&) = delete;

  void Changed(const QString& text) {
    if (!QAccessible::isActive()) return;
    pending_ = text;
    if (!timer_) {
      timer_ = std::make_unique<QTimer>();
      timer_->setSingleShot(true);
      QObject::connect(timer_.get(), &QTimer::timeout, timer_.get(), [this] { Tell(); });
    }
    if (!timer_->isActive()) Tell();
  }

 private:
  void Tell() {
    if (!pending_) return;
    const QString text = *std::exchange(pending_, std::nullopt);
    if (text == heard_) return;
    heard_ = text;
    announce_(heard_);
    timer_->start(kIntervalMs);
  }

  Announce announce_;
  std::unique_ptr<QTimer> timer_;
  std::optional<QString> pending_;
  QString heard_;
};

// Installs `factory` for the whole program once, however often it is asked.
template <QAccessibleInterface* (*Factory)(const QString&, QObject*)>
void InstallAccessibleFactory() {
  static const bool installed = (QAccessible::installFactory(Factory), true);
  (void)installed;
}

// The interface of a widget of class `Widget` (exactly that class): role `Role`, its value the
// text `Value` gives of it (a member function or a function taking the widget).
template <class Widget, QAccessible::Role Role, auto Value>
QAccessibleInterface* PaintedTextFactory(const QString& class_name, QObject* object) {
  if (class_name != QLatin1String(Widget::staticMetaObject.className())) return nullptr;
  auto* widget = qobject_cast<Widget*>(object);
  if (widget == nullptr) return nullptr;
  return new PaintedTextAccessible(widget, Role, [](const QWidget* painted) {
    return QString(std::invoke(Value, *static_cast<const Widget*>(painted)));
  });
}

// Lets tools read every `Widget` through PaintedTextFactory; installed once, however often asked.
template <class Widget, QAccessible::Role Role, auto Value>
void InstallPaintedTextAccessible() {
  InstallAccessibleFactory<&PaintedTextFactory<Widget, Role, Value>>();
}

}  // namespace vela
