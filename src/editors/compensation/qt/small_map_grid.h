// `SmallMapGrid`: a small map grid on screen (the compensation tables `AirMap`, `WaterMap`,
// `BattMap`, `ThrottlePump`): a heading row, then one row per label with its value, coloured by
// value like the maps. The map keys change the selected rows; a number typed into a value cell
// (F2 or a double click) is handed to the program, which decides what the cell gets. The
// workbench keys of the maps work here too: Ctrl-Shift-Up/Down extend the selection and Ctrl-A
// takes the whole table here; the other chords (the typed line opened by `=`, a digit or an
// operator, interpolation, smoothing, copy, paste) are handed to the program.
#pragma once

#include <QAbstractTableModel>
#include <QColor>
#include <QString>
#include <QTableView>
#include <optional>
#include <vector>

#include "editors/compensation/small_grid_model.h"
#include "editors/compensation/small_grid_workbench.h"
#include "editors/mapgrid/workbench_keys.h"

namespace vela {

class SmallGridTable;

class SmallMapGrid : public QTableView {
  Q_OBJECT

 public:
  SmallMapGrid(std::vector<std::string> row_labels, std::vector<int> positions,
               const QString& corner, const QString& heading, QWidget* parent = nullptr);
  ~SmallMapGrid() override;

  SmallGridModel& Model() { return model_; }
  const SmallGridModel& Model() const { return model_; }
  // After the model's values or formats changed.
  void Refresh();
  // The value cell of `row` made current (rows count from 0, the heading row not counted).
  void SetCurrentRow(int row);
  // The selection keys' selection made visible: rows `first` to `last`, the cursor on `active`.
  void ShowSelection(const RowSelection& selection);
  // A frame round each row's value cell in its colour (an invalid colour: none): the rows that
  // differ from the compared side.
  void SetMarks(std::vector<QColor> marks);
  // The selection is drawn while the grid has the keyboard, while more than one row is
  // selected, and while it is kept shown (its typed line is open).
  bool SelectionShown() const;
  void KeepSelectionShown(bool shown);
  QColor Mark(int row) const;

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return sizeHint(); }
  // No keyboard search: a digit typed on a label never moves the cursor to another row.
  void keyboardSearch(const QString&) override {}

 signals:
  // A key changed these rows (the model already holds the new bytes).
  void CellsChanged(const std::vector<SmallGridChange>& changes);
  // The tuner typed `text` into `row`'s value cell.
  void TextTyped(int row, const QString& text);
  // A workbench chord for the program to carry out on the selected rows; `typed` is the
  // character that opens the typed line.
  void ChordPressed(GridChord chord, char typed);

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;

 private:
  void PullSelection();
  void PushCurrent();
  // The workbench chord of `event`; false when the key is none.
  bool HandleChord(const QKeyEvent& event);

  SmallGridModel model_;
  SmallGridTable* table_;
  bool pushing_ = false;
  std::optional<RowSelection> kept_;  // the selection the selection keys left
  std::vector<QColor> marks_;
  bool selection_kept_shown_ = false;
};

}  // namespace vela
