// `MapGraph`: the graph beside a map grid (`FuelGraphVelaB1`, `FuelGraphVelaB2`,
// `IgnitionGraphVelaB1`). A three-dimensional surface, or a flat heat map where asked for. It
// follows its grid's edits at once.
#pragma once

#include <QPointer>
#include <QWidget>
#include <optional>

#include "editors/mapgrid/map_display.h"
#include "editors/mapgrid/map_grid_model.h"
#include "editors/mapgrid/qt/map_graph_data.h"

namespace vela {

class MapGrid;
class MapHeatView;
class MapSurfaceView;

enum class GraphMode {
  kSurface,  // the map as a surface over its load and RPM axes
  kFlat,     // the map as a heat map
};

class MapGraph : public QWidget {
  Q_OBJECT

 public:
  explicit MapGraph(MapKind kind, QWidget* parent = nullptr, GraphMode mode = GraphMode::kSurface);
  ~MapGraph() override;

  bool Is3D() const { return surface_ != nullptr; }
  MapSurfaceView* Surface() const { return surface_; }
  MapKind Kind() const { return kind_; }

  // numofloadsites: the load sites drawn (0 = all of the grid's).
  int NumOfLoadSites() const { return num_of_load_sites_; }
  void SetNumOfLoadSites(int sites);

  // Draws `grid` now; Follow draws its grid now and again after every change of it.
  void ShowMap(const MapGridModel& grid);
  void Follow(MapGrid* grid);
  // Values and marks over the grid's own (a comparison's view); empty: the grid's values alone.
  void SetOverlay(GridOverlay overlay);

  // The live operating point, or nothing.
  void SetMarker(std::optional<OperatingPoint> point);
  std::optional<OperatingPoint> Marker() const { return marker_; }

  const MapGraphData& Data() const { return data_; }

 private:
  MapKind kind_;
  int num_of_load_sites_ = 0;
  MapGraphData data_;
  GridOverlay overlay_;
  std::optional<OperatingPoint> marker_;
  QPointer<MapGrid> followed_;
  MapSurfaceView* surface_ = nullptr;
  MapHeatView* heat_view_ = nullptr;
};

}  // namespace vela
