// The comparison's bar over a map grid: which view the page shows and against what, how many
// cells differ, the buttons that take the other side's values (for the selection, Alt-R; for the
// whole map, Alt-W) or send the differing cells (Alt-Y), and what the colours mean. Hidden
// while nothing is compared. Its buttons never take the keyboard from the grid.
#pragma once

#include <QFrame>
#include <QLabel>
#include <QPushButton>

#include "editors/workbench/image_compare.h"

namespace vela {

class CompareBar : public QFrame {
  Q_OBJECT

 public:
  // `suffix` is added to the objectNames, as on the page's other labels ("", "Map2", "Ign").
  CompareBar(const QString& suffix, QWidget* parent = nullptr);

  // The caption and the count; whatever is not the editors' values to edit (the other side's
  // values, the difference, a comparison `read_only` without the editors' image) stands out.
  void Show(CompareView view, const QString& caption, const QString& count, bool read_only);

 signals:
  void TakeSelection();
  void TakeWholeMap();
  void SendDifferences();

 private:
  QPushButton* Button(const QString& text, const QString& name);

  QLabel* caption_;
  QLabel* count_;
  QLabel* legend_ = nullptr;
};

}  // namespace vela
