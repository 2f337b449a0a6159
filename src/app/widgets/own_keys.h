// Widgets that keep the keys typed into them: the main window routes every other key first (page
// letters, map keys, workbench chords), but text and number fields, and any widget marked here,
// take their keys themselves.
#pragma once

#include <QAbstractSpinBox>
#include <QLineEdit>
#include <QWidget>

namespace vela {

inline constexpr char kKeepsOwnKeys[] = "velaKeepsOwnKeys";

// For a widget whose keys mean something of its own (a list whose Enter jumps and F2 edits).
inline void KeepOwnKeys(QWidget* widget) { widget->setProperty(kKeepsOwnKeys, true); }

inline bool KeepsOwnKeys(const QWidget* widget) {
  return widget != nullptr &&
         (qobject_cast<const QLineEdit*>(widget) || qobject_cast<const QAbstractSpinBox*>(widget) ||
          widget->property(kKeepsOwnKeys).toBool());
}

}  // namespace vela
