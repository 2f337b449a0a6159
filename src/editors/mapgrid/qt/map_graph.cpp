#include "editors/mapgrid/qt/map_graph.h"

#include <QVBoxLayout>
#include <algorithm>

#include "editors/mapgrid/qt/map_grid.h"
#include "editors/mapgrid/qt/map_heat_view.h"
#include "editors/mapgrid/qt/map_surface_view.h"

namespace vela {

MapGraph::MapGraph(MapKind kind, QWidget* parent, GraphMode mode) : QWidget(parent), kind_(kind) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  if (mode == GraphMode::kSurface) {
    surface_ = new MapSurfaceView(this);
    surface_->setAccessibleName(tr("Map surface"));
    layout->addWidget(surface_);
  } else {
    heat_view_ = new MapHeatView(this);
    heat_view_->setAccessibleName(tr("Map heat map"));
    layout->addWidget(heat_view_);
  }
  setMinimumSize(200, 150);
}

MapGraph::~MapGraph() = default;

void MapGraph::SetNumOfLoadSites(int sites) {
  num_of_load_sites_ = std::max(sites, 0);
  if (followed_) ShowMap(followed_->Model());
}

void MapGraph::ShowMap(const MapGridModel& grid) {
  data_ = GraphDataOf(grid, num_of_load_sites_);
  ApplyOverlay(data_, overlay_, grid);
  if (heat_view_ != nullptr) heat_view_->SetData(data_);
  if (surface_ != nullptr) surface_->SetData(data_);
}

void MapGraph::Follow(MapGrid* grid) {
  if (followed_) disconnect(followed_->model(), nullptr, this, nullptr);
  followed_ = grid;
  if (grid == nullptr) return;
  const auto redraw = [this] {
    if (followed_) ShowMap(followed_->Model());
  };
  connect(grid->model(), &QAbstractItemModel::dataChanged, this, redraw);
  connect(grid->model(), &QAbstractItemModel::modelReset, this, redraw);
  ShowMap(grid->Model());
}

void MapGraph::SetOverlay(GridOverlay overlay) {
  if (overlay == overlay_) return;
  overlay_ = std::move(overlay);
  if (followed_) ShowMap(followed_->Model());
}

void MapGraph::SetMarker(std::optional<OperatingPoint> point) {
  marker_ = point;
  if (heat_view_ != nullptr) heat_view_->SetMarker(point);
  if (surface_ != nullptr) surface_->SetMarker(point);
}

}  // namespace vela

#include "moc_map_graph.cpp"
