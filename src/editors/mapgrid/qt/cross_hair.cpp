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

void CrossHair::SetLive(const LiveLoad& live) {
  live_ = live;
  Redraw();
}

void CrossHair::SetLiveFrame(const live::Frame& frame) { SetLive(LiveLoadOf(frame)); }

void CrossHair::Clear() {
  live_.reset();
  Redraw();
}

std::optional<OperatingPoint> CrossHair::Point() const {
  if (!live_ || motormap_ == 0) return std::nullopt;
  const Target& target = targets_[motormap_ - 1];
  if (!target.grid) return std::nullopt;
  return OperatingPointOn(target.grid->Model(), *live_);
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

#include "moc_cross_hair.cpp"
