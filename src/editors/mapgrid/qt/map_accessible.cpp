#include "editors/mapgrid/qt/map_accessible.h"

#include <QPointer>
#include <array>

#include "base/qt/accessible_text.h"
#include "editors/mapgrid/qt/map_readout.h"

namespace vela {

namespace {

constexpr int kQuantities = static_cast<int>(kReadoutLabels.size());

// One quantity of a read-out grid: static text named by its label, its value the cell's text.
class ReadoutValueAccessible : public QAccessibleInterface, public PaintedTextParts {
 public:
  ReadoutValueAccessible(MapReadout* readout, QAccessibleInterface* parent, int index)
      : readout_(readout), parent_(parent), index_(index) {}

  bool isValid() const override { return !readout_.isNull(); }
  QObject* object() const override { return nullptr; }
  QWindow* window() const override { return parent_->window(); }
  QAccessibleInterface* focusChild() const override { return nullptr; }
  QAccessibleInterface* childAt(int, int) const override { return nullptr; }
  QAccessibleInterface* parent() const override { return parent_; }
  QAccessibleInterface* child(int) const override { return nullptr; }
  int childCount() const override { return 0; }
  int indexOfChild(const QAccessibleInterface*) const override { return -1; }
  void setText(QAccessible::Text, const QString&) override {}
  QAccessible::Role role() const override { return QAccessible::StaticText; }

  QString text(QAccessible::Text which) const override {
    if (!readout_) return {};
    switch (which) {
      case QAccessible::Name:
        return QString::fromLatin1(kReadoutLabels[static_cast<std::size_t>(index_)]);
      case QAccessible::Value:
        return Whole();
      default:
        return {};
    }
  }

  QRect rect() const override {
    if (!readout_) return {};
    const QRect cell = readout_->ValueRect(static_cast<Readout>(index_));
    return QRect(readout_->viewport()->mapToGlobal(cell.topLeft()), cell.size());
  }

  QAccessible::State state() const override {
    QAccessible::State state;
    state.readOnly = true;
    state.invisible = !readout_ || !readout_->isVisible();
    return state;
  }

  void* interface_cast(QAccessible::InterfaceType type) override { return PartOf(type); }

 protected:
  QString Whole() const override {
    return readout_ ? readout_->Value(static_cast<Readout>(index_)) : QString();
  }

 private:
  QPointer<MapReadout> readout_;
  QAccessibleInterface* parent_;
  int index_;
};

// The read-out grid: a group of the quantities, in the order of their labels.
class ReadoutAccessible : public QAccessibleWidget {
 public:
  explicit ReadoutAccessible(MapReadout* readout)
      : QAccessibleWidget(readout, QAccessible::Grouping) {}
  ~ReadoutAccessible() override {
    for (const QAccessible::Id id : ids_) {
      if (id != 0) QAccessible::deleteAccessibleInterface(id);
    }
  }

  int childCount() const override { return kQuantities; }

  QAccessibleInterface* child(int index) const override {
    if (index < 0 || index >= kQuantities) return nullptr;
    QAccessible::Id& id = ids_[static_cast<std::size_t>(index)];
    if (id == 0) {
      auto* readout = static_cast<MapReadout*>(widget());
      id = QAccessible::registerAccessibleInterface(
          new ReadoutValueAccessible(readout, const_cast<ReadoutAccessible*>(this), index));
    }
    return QAccessible::accessibleInterface(id);
  }

  int indexOfChild(const QAccessibleInterface* part) const override {
    for (int i = 0; i < kQuantities; ++i) {
      const QAccessible::Id id = ids_[static_cast<std::size_t>(i)];
      if (id != 0 && QAccessible::accessibleInterface(id) == part) return i;
    }
    return -1;
  }

  QAccessibleInterface* childAt(int x, int y) const override {
    for (int i = 0; i < kQuantities; ++i) {
      QAccessibleInterface* part = child(i);
      if (part != nullptr && part->rect().contains(x, y)) return part;
    }
    return nullptr;
  }

 private:
  mutable std::array<QAccessible::Id, kQuantities> ids_{};
};

QAccessibleInterface* MapAccessible(const QString& class_name, QObject* object) {
  if (class_name != QLatin1String("vela::MapReadout")) return nullptr;
  auto* readout = qobject_cast<MapReadout*>(object);
  return readout != nullptr ? new ReadoutAccessible(readout) : nullptr;
}

}  // namespace

void InstallReadoutAccessibility() { InstallAccessibleFactory<&MapAccessible>(); }

QAccessibleInterface* ReadoutValueInterface(MapReadout* readout, int index) {
  QAccessibleInterface* whole = QAccessible::queryAccessibleInterface(readout);
  return whole != nullptr ? whole->child(index) : nullptr;
}

}  // namespace vela
