#include "editors/mapgrid/surface_geometry.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <numeric>

namespace vela {

namespace {

double Radians(double degrees) { return degrees * std::numbers::pi / 180.0; }

}  // namespace

SurfaceProjection::SurfaceProjection(ViewAngles angles, double width, double height,
                                     double height_ratio)
    : height_ratio_(height_ratio) {
  angles = ClampedAngles(angles);
  cos_turn_ = std::cos(Radians(angles.turn_degrees));
  sin_turn_ = std::sin(Radians(angles.turn_degrees));
  cos_tilt_ = std::cos(Radians(angles.tilt_degrees));
  sin_tilt_ = std::sin(Radians(angles.tilt_degrees));
  // Fit the box's eight corners into the area.
  double left = std::numeric_limits<double>::max();
  double right = std::numeric_limits<double>::lowest();
  double top = left;
  double bottom = right;
  for (int corner = 0; corner < 8; ++corner) {
    const ScreenPoint p = Raw(corner & 1, (corner >> 1) & 1, (corner >> 2) & 1);
    left = std::min(left, p.x);
    right = std::max(right, p.x);
    top = std::min(top, p.y);
    bottom = std::max(bottom, p.y);
  }
  const double span_x = std::max(right - left, 1e-9);
  const double span_y = std::max(bottom - top, 1e-9);
  scale_ = std::max(std::min(width / span_x, height / span_y), 1e-9);
  offset_x_ = (width - span_x * scale_) / 2.0 - left * scale_;
  offset_y_ = (height - span_y * scale_) / 2.0 - top * scale_;
}

// The box centred on the origin, turned about the value axis, then tilted towards the viewer.
ScreenPoint SurfaceProjection::Raw(double x, double y, double z) const {
  const double cx = x - 0.5;
  const double cy = (y - 0.5) * height_ratio_;
  const double cz = z - 0.5;
  const double across = cx * cos_turn_ - cz * sin_turn_;
  const double toward = cx * sin_turn_ + cz * cos_turn_;
  const double up = cy * cos_tilt_ - toward * sin_tilt_;
  const double depth = cy * sin_tilt_ + toward * cos_tilt_;
  return {across, -up, depth};
}

ScreenPoint SurfaceProjection::Project(double x, double y, double z) const {
  const ScreenPoint p = Raw(x, y, z);
  return {p.x * scale_ + offset_x_, p.y * scale_ + offset_y_, p.depth};
}

std::array<int, 2> SurfaceProjection::NearestFloorCorner() const {
  std::array<int, 2> nearest{0, 0};
  double best = std::numeric_limits<double>::lowest();
  for (int x = 0; x <= 1; ++x) {
    for (int z = 0; z <= 1; ++z) {
      const double depth = Raw(x, 0, z).depth;
      if (depth > best) {
        best = depth;
        nearest = {x, z};
      }
    }
  }
  return nearest;
}

ViewAngles ClampedAngles(ViewAngles angles) {
  if (!std::isfinite(angles.turn_degrees)) angles.turn_degrees = ViewAngles{}.turn_degrees;
  if (!std::isfinite(angles.tilt_degrees)) angles.tilt_degrees = ViewAngles{}.tilt_degrees;
  angles.turn_degrees = std::remainder(angles.turn_degrees, 360.0);
  angles.tilt_degrees = std::clamp(angles.tilt_degrees, 5.0, 85.0);
  return angles;
}

std::vector<int> CellsFarthestFirst(const std::vector<ScreenPoint>& projected, int rows,
                                    int columns) {
  if (rows < 2 || columns < 2 || projected.size() < static_cast<std::size_t>(rows * columns)) {
    return {};
  }
  const int cells_across = columns - 1;
  std::vector<double> depth(static_cast<std::size_t>((rows - 1) * cells_across));
  for (int row = 0; row + 1 < rows; ++row) {
    for (int column = 0; column < cells_across; ++column) {
      const auto at = [&](int r, int c) {
        return projected[static_cast<std::size_t>(r * columns + c)].depth;
      };
      depth[static_cast<std::size_t>(row * cells_across + column)] =
          at(row, column) + at(row, column + 1) + at(row + 1, column) + at(row + 1, column + 1);
    }
  }
  std::vector<int> order(depth.size());
  std::iota(order.begin(), order.end(), 0);
  std::stable_sort(order.begin(), order.end(), [&](int a, int b) {
    return depth[static_cast<std::size_t>(a)] < depth[static_cast<std::size_t>(b)];
  });
  return order;
}

double ValueBetween(const std::vector<double>& values, int rows, int columns, double row,
                    double column) {
  if (rows < 1 || columns < 1 || values.size() < static_cast<std::size_t>(rows * columns)) {
    return 0.0;
  }
  if (std::isnan(row)) row = 0.0;
  if (std::isnan(column)) column = 0.0;
  row = std::clamp(row, 0.0, static_cast<double>(rows - 1));
  column = std::clamp(column, 0.0, static_cast<double>(columns - 1));
  const int r0 = std::min(static_cast<int>(row), rows - 1);
  const int c0 = std::min(static_cast<int>(column), columns - 1);
  const int r1 = std::min(r0 + 1, rows - 1);
  const int c1 = std::min(c0 + 1, columns - 1);
  const double fr = row - r0;
  const double fc = column - c0;
  const auto at = [&](int r, int c) { return values[static_cast<std::size_t>(r * columns + c)]; };
  const double upper = at(r0, c0) + (at(r0, c1) - at(r0, c0)) * fc;
  const double lower = at(r1, c0) + (at(r1, c1) - at(r1, c0)) * fc;
  return upper + (lower - upper) * fr;
}

double AxisShare(const std::vector<double>& axis, double at) {
  if (axis.size() < 2 || axis.back() == axis.front()) return 0.5;
  return std::clamp((at - axis.front()) / (axis.back() - axis.front()), 0.0, 1.0);
}

double AxisAt(const std::vector<double>& axis, double index) {
  if (axis.empty()) return 0.0;
  if (std::isnan(index) || index <= 0.0) return axis.front();
  const auto last = static_cast<double>(axis.size() - 1);
  if (index >= last) return axis.back();
  const auto below = static_cast<std::size_t>(index);
  const double share = index - static_cast<double>(below);
  return axis[below] + (axis[below + 1] - axis[below]) * share;
}

}  // namespace vela
