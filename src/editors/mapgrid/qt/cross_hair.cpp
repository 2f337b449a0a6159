#include "editors/mapgrid/qt/cross_hair.h"

#include "editors/mapgrid/qt/map_graph.h"
#include "editors/mapgrid/qt/map_grid.h"

namespace vela {

CrossHair::CrossHair(QObject* parent) : QObject(parent) {}

void CrossHair::Attach(int motormap, MapGrid* grid, MapGraph* graph) {
  if (motormap < 1 || motormap > kMaps) return;
  targets_[motormap - 1] = {grid, graph};
  Redraw();
}

void CrossHair::SetMotorMap(int motormap) {
  motormap_ = (motormap >= 1 && motormap <= kMaps) ? motormap : 0;
  Redraw();
}

void CrossHair::SetFuelLoadSites(int sites) {
  fuel_load_sites_ = std::max(sites, 1);
  Redraw();
}

void CrossHair::SetSites(double rpm_site, double fuel_load_site) {
  sites_ = std::make_pair(rpm_site, fuel_load_site);
  Redraw();
}

void CrossHair::SetLiveFrame(const live::Frame& frame) {
  SetSites(live::At(frame, live::kRpmSite) / 16.0, live::At(frame, live::kLoadSite) / 16.0);
}

void CrossHair::Clear() {
  sites_.reset();
  Redraw();
}

std::optional<OperatingPoint> CrossHair::Point() const {
  if (!sites_ || motormap_ == 0) return std::nullopt;
  const Target& target = targets_[motormap_ - 1];
  int map_sites = fuel_load_sites_;
  if (target.grid) map_sites = target.grid->Model().LoadSites();
  return OperatingPointOf(sites_->first, sites_->second, fuel_load_sites_, map_sites);
}

void CrossHair::Redraw() {
  const std::optional<OperatingPoint> point = Point();
  for (int map = 1; map <= kMaps; ++map) {
    const Target& target = targets_[map - 1];
    const std::optional<OperatingPoint> mark = map == motormap_ ? point : std::nullopt;
    if (target.grid && target.grid->Marker() != mark) target.grid->SetMarker(mark);
    if (target.graph && target.graph->Marker() != mark) target.graph->SetMarker(mark);
  }
}

}  // namespace vela
