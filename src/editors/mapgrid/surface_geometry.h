// The map's 3D surface worked out without a toolkit: where each point of the map box lands on the
// screen for a view direction, in which order the cells are painted so that nearer ones cover
// farther ones, and where the live operating point stands on the surface.
//
// The box is the unit cube: x runs along load (0 = first load site, 1 = last), y is the value
// (0 = foot of the value axis, 1 = its top) and z runs along engine speed (0 = lowest RPM site,
// 1 = highest). The view is parallel (no perspective): the map keeps its proportions wherever it
// is turned.
#pragma once

#include <array>
#include <vector>

namespace vela {

struct ScreenPoint {
  double x;      // right
  double y;      // down
  double depth;  // larger is nearer the viewer
};

struct ViewAngles {
  // About the value axis; 0 looks along RPM from its top end. The first view stands over the
  // corner of the lowest load and speed, load running back to the left and RPM back to the right.
  double turn_degrees = -130.0;
  double tilt_degrees = 28.0;  // above the floor; 0 looks level, 90 straight down
};

// A parallel view of the unit box fitted into a width x height area, centred.
class SurfaceProjection {
 public:
  // `height_ratio`: how tall the value axis stands against the floor's sides.
  SurfaceProjection(ViewAngles angles, double width, double height, double height_ratio = 0.8);

  ScreenPoint Project(double x, double y, double z) const;

  // The corner of the floor (x, z each 0 or 1) nearest the viewer.
  std::array<int, 2> NearestFloorCorner() const;

 private:
  ScreenPoint Raw(double x, double y, double z) const;

  double cos_turn_;
  double sin_turn_;
  double cos_tilt_;
  double sin_tilt_;
  double height_ratio_;
  double scale_ = 1.0;
  double offset_x_ = 0.0;
  double offset_y_ = 0.0;
};

// Angles kept within what the graph allows: the tilt between 5 and 85 degrees, the turn
// wrapped into -180..180.
ViewAngles ClampedAngles(ViewAngles angles);

// The cells of a rows x columns point grid (cells (rows - 1) x (columns - 1), each index
// row * (columns - 1) + column, from 0) in painting order, farthest first. `projected` holds the
// grid's points row by row.
std::vector<int> CellsFarthestFirst(const std::vector<ScreenPoint>& projected, int rows,
                                    int columns);

// The value at a fractional place of a row-by-row grid of values (row and column from 0), read
// between its four neighbours; places outside the grid are taken at its edge.
double ValueBetween(const std::vector<double>& values, int rows, int columns, double row,
                    double column);

// Where `at` lies on a falling or rising axis given by its points (0 at the first, 1 at the
// last), read between the points; 0.5 for an axis of one point.
double AxisShare(const std::vector<double>& axis, double at);

// The axis value at a fractional index (0 = first point), read between the points and held at
// the ends.
double AxisAt(const std::vector<double>& axis, double index);

}  // namespace vela
