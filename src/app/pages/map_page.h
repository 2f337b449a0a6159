// One map page: the live read-out grid, the map grid and its graph, and the page's labels and
// tick boxes. The fuel pages also carry the fuel map selection.
#pragma once

#include <QButtonGroup>
#include <QCheckBox>
#include <QLabel>
#include <QVBoxLayout>
#include <QWidget>

#include "app/workbench/operation_line.h"
#include "editors/mapgrid/map_display.h"
#include "editors/mapgrid/qt/map_graph.h"
#include "editors/mapgrid/qt/map_grid.h"
#include "editors/mapgrid/qt/map_readout.h"

namespace vela {

struct MapPageNames {
  QString grid;     // `FuelMap1`, `FuelMap2`, `IgnMap`
  QString readout;  // `FuelMap1A`, `FuelMap2A`, `IgnMapA`
  QString graph;    // `FuelGraphVelaB1`, `FuelGraphVelaB2`, `IgnitionGraphVelaB1`
  QString suffix;   // added to the names of the page's labels on the second and third page
};

class MapPage : public QWidget {
  Q_OBJECT

 public:
  MapPage(MapKind kind, const MapPageNames& names, QWidget* parent = nullptr);

  MapGrid* grid() const { return grid_; }
  MapReadout* readout() const { return readout_; }
  MapGraph* graph() const { return graph_; }
  QCheckBox* all_ranges() const { return all_ranges_; }
  // The fuel map selection (fuel pages only; null on the ignition page).
  QButtonGroup* map_selection() const { return map_selection_; }
  QWidget* options_area() const { return options_area_; }
  // The typed line under the grid (hidden until a key on the grid opens it).
  OperationLine* operation_line() const { return operation_line_; }
  // A bar over the grid (below the out-of-step line), such as a comparison's.
  void AddAboveGrid(QWidget* bar);

  // The page labels from the live data: live tuning, map in use, throttle pump and limiter.
  void ShowLiveState(bool live_tuning, bool map_in_use, bool throttle_pump, bool limiter);
  // "Injector Duty Cycle =" for the selected cell at its RPM.
  void ShowDuty(double percent);
  // A red line over the grid while the ECU may hold another calibration than the one shown.
  void ShowOutOfStep(bool out_of_step);
  // The graph under the grid, or the grid alone (`Numerical`).
  void ShowGraph(bool shown);
  // Once the page is complete: no control but the grid takes the keyboard by Tab; each takes it
  // only from a click on it (every one of them writes to the ECU or changes what the page shows).
  void KeepKeyboardOnGrid();
  void set_decimal_separator(QChar separator) { separator_ = separator; }

 protected:
  // Tab and Shift-Tab give the keyboard to the grid, from wherever on the page they are pressed.
  bool focusNextPrevChild(bool next) override;

 private:
  QWidget* BuildLabels(MapKind kind, const QString& suffix);
  QWidget* BuildMapSelection(const QString& suffix);
  QWidget* BuildSide(MapKind kind, const QString& suffix);

  MapGrid* grid_;
  MapReadout* readout_;
  MapGraph* graph_;
  OperationLine* operation_line_;
  QCheckBox* all_ranges_ = nullptr;
  QLabel* duty_ = nullptr;
  QLabel* out_of_step_ = nullptr;
  QLabel* live_tune_ = nullptr;
  QLabel* map_in_use_ = nullptr;
  QLabel* throttle_pump_ = nullptr;
  QLabel* limiter_ = nullptr;
  QButtonGroup* map_selection_ = nullptr;
  QWidget* options_area_ = nullptr;
  QVBoxLayout* maps_ = nullptr;
  QChar separator_ = QLatin1Char('.');
};

}  // namespace vela
