// `SmallMapGrid`: a small map grid on screen (the compensation tables `AirMap`, `WaterMap`,
// `BattMap`, `ThrottlePump`): a heading row, then one row per label with its value, coloured by
// value like the maps. The map keys change the selected rows; a number typed into a value cell
// (start typing, or F2) is handed to the program, which decides what the cell gets.
#pragma once

#include <QAbstractTableModel>
#include <QString>
#include <QTableView>
#include <vector>

#include "editors/compensation/small_grid_model.h"

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

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return sizeHint(); }
  // No keyboard search: a digit typed on a label never moves the cursor to another row.
  void keyboardSearch(const QString&) override {}

 signals:
  // A key changed these rows (the model already holds the new bytes).
  void CellsChanged(const std::vector<SmallGridChange>& changes);
  // The tuner typed `text` into `row`'s value cell.
  void TextTyped(int row, const QString& text);

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;

 private:
  void PullSelection();
  void PushCurrent();

  SmallGridModel model_;
  SmallGridTable* table_;
  bool pushing_ = false;
};

}  // namespace vela
