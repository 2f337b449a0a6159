// `MapGraph`: the graph beside a map grid (`FuelGraphVelaB1`, `FuelGraphVelaB2`,
// `IgnitionGraphVelaB1`). A three-dimensional surface where an OpenGL context can be made, and a
// flat heat map otherwise (the surface cannot run without one and must never bring the program
// down). It follows its grid's edits at once.
#pragma once

#include <QPointer>
#include <QWidget>
#include <optional>

#include "editors/mapgrid/map_display.h"
#include "editors/mapgrid/map_grid_model.h"
#include "editors/mapgrid/qt/map_graph_data.h"

class Q3DSurface;
class QSurface3DSeries;

namespace vela {

class MapGrid;
class MapHeatView;

enum class GraphMode {
  kAuto,     // the surface when OpenGL is usable, else the flat view
  kForce2D,  // always the flat view
};

class MapGraph : public QWidget {
  Q_OBJECT

 public:
  explicit MapGraph(MapKind kind, QWidget* parent = nullptr, GraphMode mode = GraphMode::kAuto);
  ~MapGraph() override;

  // True when an OpenGL context can be created and made current on an offscreen surface, and
  // the platform is not "offscreen" (where the surface crashes). Worked out once per run.
  static bool OpenGlUsable();

  bool Is3D() const { return surface_ != nullptr; }
  MapKind Kind() const { return kind_; }

  // numofloadsites: the load sites drawn (0 = all of the grid's).
  int NumOfLoadSites() const { return num_of_load_sites_; }
  void SetNumOfLoadSites(int sites);

  // Draws `grid` now; Follow draws its grid now and again after every change of it.
  void ShowMap(const MapGridModel& grid);
  void Follow(MapGrid* grid);

  // The live operating point (the surface selects the nearest point), or nothing.
  void SetMarker(std::optional<OperatingPoint> point);
  std::optional<OperatingPoint> Marker() const { return marker_; }

  const MapGraphData& Data() const { return data_; }

 private:
  void BuildSurface();
  void UpdateSurface();
  void UpdateSurfaceMarker();

  MapKind kind_;
  int num_of_load_sites_ = 0;
  MapGraphData data_;
  std::optional<OperatingPoint> marker_;
  QPointer<MapGrid> followed_;
  Q3DSurface* surface_ = nullptr;
  QSurface3DSeries* series_ = nullptr;
  MapHeatView* heat_view_ = nullptr;
};

}  // namespace vela
