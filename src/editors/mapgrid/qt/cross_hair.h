// `CrossHair`: the live operating point over the maps. It takes the engine speed and load of the
// live frame and marks them, on the axes the map's own labels show, on the grid and the graph of
// the map that `motormap` selects (1 = fuel map 1, 2 = fuel map 2, 3 = the ignition map, 0 =
// none); the other maps show no mark.
#pragma once

#include <QObject>
#include <QPointer>
#include <array>
#include <optional>
#include <utility>

#include "editors/mapgrid/map_display.h"
#include "link/live/live_frame.h"

namespace vela {

class MapGrid;
class MapGraph;

class CrossHair : public QObject {
  Q_OBJECT
  Q_PROPERTY(int motormap READ MotorMap WRITE SetMotorMap)

 public:
  static constexpr int kMaps = 3;

  explicit CrossHair(QObject* parent = nullptr);

  // The grid and graph of map 1, 2 or 3 (either may be null).
  void Attach(int motormap, MapGrid* grid, MapGraph* graph);

  int MotorMap() const { return motormap_; }
  void SetMotorMap(int motormap);

  // The live point: engine speed, manifold pressure and throttle.
  void SetLive(const LiveLoad& live);
  void SetLiveFrame(const live::Frame& frame);
  // The axes of the grids changed: the mark moves with them.
  void AxesChanged() { Redraw(); }
  void Clear();

  // The point on the marked map in its grid's coordinates, when there is one.
  std::optional<OperatingPoint> Point() const;

 private:
  struct Target {
    QPointer<MapGrid> grid;
    QPointer<MapGraph> graph;
  };
  void Redraw();

  std::array<Target, kMaps> targets_;
  int motormap_ = 1;
  std::optional<LiveLoad> live_;
};

}  // namespace vela
