// `MapGrid`: the map grid component behind the fuel and ignition maps. A table of 12 rows (the
// header row of load sites, then the RPM rows from the highest down) and a label column, cells
// coloured by value, a cell cursor and a rectangular selection. The value keys and Left/Right
// are handled here; every change is announced with CellsChanged. The caller sets the objectName
// (`FuelMap1`, `FuelMap2`, `IgnMap`).
#pragma once

#include <QPoint>
#include <QRegion>
#include <QString>
#include <QTableView>
#include <functional>
#include <optional>
#include <vector>

#include "calibration/map_values.h"
#include "editors/mapgrid/cell_overlay.h"
#include "editors/mapgrid/cross_shape.h"
#include "editors/mapgrid/map_display.h"
#include "editors/mapgrid/map_grid_model.h"

namespace vela {

class MapGridTable;
class GridMarkerOverlay;
class WaitingCellsOverlay;

class MapGrid : public QTableView {
  Q_OBJECT

 public:
  explicit MapGrid(MapKind kind, QWidget* parent = nullptr);
  ~MapGrid() override;

  // The grid's state. After changing it directly, call Refresh.
  MapGridModel& Model() { return model_; }
  const MapGridModel& Model() const { return model_; }
  void Refresh();

  // The grid set-up: load sites, title in the corner cell, header labels; then the values.
  void SetUp(const QString& title, int load_sites);
  void LoadValues(const MapValues& values);
  // fixedcols, fontsize, visiblerows, backcolor, const1, const2, mapsensordiv, maxms, ...
  void SetSettings(const MapGridSettings& settings);
  // What the cells show over the map's values (a comparison's view and marks); the cells still
  // hold, and the keys still change, the map's own values. An empty overlay shows them alone.
  void SetOverlay(GridOverlay overlay);
  const GridOverlay& Overlay() const;
  // What a log shows on the cells (colours, the chart cursor's cell, descriptions), under the
  // overlay above: where both colour or mark a cell, the comparison's wins.
  void SetLogOverlay(GridOverlay overlay);
  const GridOverlay& LogOverlay() const;

  QString CellText(int row, int column) const;
  bool SetCellText(int row, int column, const QString& text);
  int CurrentRow() const { return model_.Current().row; }
  int CurrentColumn() const { return model_.Current().column; }
  void SetCurrentCell(int row, int column);

  void SetAllRanges(bool on) { model_.SetAllRanges(on); }
  bool AllRanges() const { return model_.AllRanges(); }
  void SetLiveTuning(bool on) { model_.SetLiveTuning(on); }
  bool LiveTuning() const { return model_.LiveTuning(); }

  // The live operating point drawn as a cross over the cells; nullopt hides it.
  void SetMarker(std::optional<OperatingPoint> point);
  std::optional<OperatingPoint> Marker() const { return marker_; }
  // The cross as it is drawn, in viewport pixels.
  std::optional<CrossShape> Cross() const { return cross_; }
  // The centre of a fractional cell position in viewport coordinates.
  QPointF ViewportPoint(const OperatingPoint& point) const;

  // Keys the grid does not own (the workbench's Ctrl chords, the typed line's first character)
  // go to this handler; it returns true when it took the key.
  using KeyHandler = std::function<bool(QKeyEvent& event)>;
  void SetKeyHandler(KeyHandler handler) { key_handler_ = std::move(handler); }
  // Shows the model's selection and cursor after they were set from outside (Select).
  void ShowSelection();
  // Cells that are changed but not yet sent to the ECU carry a small corner mark.
  void SetWaitingCells(std::vector<MapCell> cells);
  const std::vector<MapCell>& WaitingCells() const { return waiting_cells_; }

  // Wide enough for every cell's text at the fontsize setting.
  QSize sizeHint() const override;

 signals:
  // The cells that a key or an insert changed. Handlers run before the grid redraws, so a
  // handler may still adjust the cells (the duty cap).
  void CellsChanged(const std::vector<MapCell>& cells);
  void CursorMoved(int row, int column);

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void scrollContentsBy(int dx, int dy) override;
  void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
  void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;

 private:
  void OnModelCellsChanged(const std::vector<MapCell>& cells);
  void PullSelection();
  void PushCurrent();
  void ApplyGeometry();
  void ApplyLook();
  // Places the cross at the marker in the present geometry and draws again what it left and
  // what it reached, or the whole viewport when `everywhere` (the geometry changed).
  void PlaceCross(bool everywhere = false);

  MapGridModel model_;
  MapGridTable* table_;
  GridMarkerOverlay* overlay_;
  std::optional<OperatingPoint> marker_;
  std::optional<CrossShape> cross_;
  bool pushing_ = false;
  KeyHandler key_handler_;
  WaitingCellsOverlay* waiting_overlay_;
  std::vector<MapCell> waiting_cells_;
};

}  // namespace vela
