// The target AFR table (Ctrl-T on a map page): a window of its own beside the main window, so the
// tuner sees a fuel map and its targets side by side. The grid has the fuel maps' axes and takes
// the same keys as a map grid (value keys, selection, typed line, interpolation, smoothing, copy
// and paste); each cell is coloured by its distance from 14.7. Every change is written to the
// target file at once; Ctrl-Z and Ctrl-Y here undo and redo target changes only. Nothing goes to
// the ECU.
#pragma once

#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <functional>

#include "editors/workbench/bulk_change.h"

namespace vela {

class GridOperations;
class MapGrid;
class MapGridModel;
class OperationLine;
class TargetSession;

class TargetPanel : public QDialog {
  Q_OBJECT

 public:
  // `fuel_grid` gives the Fuel Map 1 grid, whose axes and look the target grid takes.
  TargetPanel(TargetSession& session, GridOperations& operations,
              std::function<const MapGridModel&()> fuel_grid, QWidget* parent = nullptr);

  // Shows the panel in front with the keyboard on the grid; a second call while it is in front
  // hides it again.
  void Toggle();
  void Open();

  MapGrid* grid() const { return grid_; }
  OperationLine* operation_line() const { return line_; }
  QLabel* where() const { return where_; }
  QLabel* legend() const { return legend_; }
  QLabel* note() const { return note_; }
  QPushButton* default_button() const { return default_; }

 private:
  void AddShortcuts();
  // The session's table on the grid: axes from the fuel grid, values, colours, where it lives.
  void ShowTable();
  void ShowWhere();
  // The grid's values, as the keys or an operation left them, become the targets.
  void TakeGrid(const QString& what);
  void ShowNote(const QString& text);

  TargetSession& session_;
  std::function<const MapGridModel&()> fuel_grid_;
  MapGrid* grid_;
  OperationLine* line_;
  QLabel* where_;
  QLabel* legend_;
  QLabel* note_;
  QPushButton* default_;
  QPushButton* undo_;
  QPushButton* redo_;
};

}  // namespace vela
