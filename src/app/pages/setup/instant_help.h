// Instant help on the screen: the help box `TextInstantHelp` and the help labels of the outputs,
// inputs and main setup tabs. With instant help on, the help label under the mouse takes the
// hover colour and a click on it puts its topic into the box; the box shows on those three tabs.
#pragma once

#include <QLabel>
#include <QObject>
#include <QPlainTextEdit>
#include <QTabWidget>
#include <functional>

#include "program/context_help.h"

namespace vela {

class InstantHelp : public QObject {
  Q_OBJECT

 public:
  InstantHelp(QTabWidget* tabs, std::function<bool()> instant_help_on, QWidget* parent);

  QPlainTextEdit* box() const { return box_; }
  // A caption label of the `Label` array (objectName "Label" and its index); a help label when
  // `index` is one.
  QLabel* MakeLabel(QWidget* parent, int index, const QString& caption);
  // A frame around labels: the mouse over it ends a highlight.
  void WatchFrame(QWidget* frame);
  // Shows the box on the tabs with help while instant help is on; ends a highlight when off.
  void UpdateVisibility();

  // What the mouse does over label `index` (nullopt: over a frame), and a click on it.
  void Hover(std::optional<int> index);
  void Click(int index);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QLabel* LabelOf(int index) const;

  QTabWidget* tabs_;
  std::function<bool()> instant_help_on_;
  QPlainTextEdit* box_;
  HelpHighlighter highlighter_;
  QString saved_style_;
};

}  // namespace vela
