#include "editors/mapgrid/cross_shape.h"

namespace vela {

namespace {

constexpr int kLineLeftOfFirstSite = 20;
constexpr int kLineAboveFirstRow = 12;
constexpr int kRingReach = 9;  // radius 6, half the pen and the anti-aliased edge

}  // namespace

CrossShape CrossShapeAt(int x, int y, int first_x, int first_y, int width, int height) {
  const int left = first_x - kLineLeftOfFirstSite;
  const int top = first_y - kLineAboveFirstRow;
  return {{left, y - 1, width - left, 2},
          {x - 1, top, 2, height - top},
          {x - kRingReach, y - kRingReach, 2 * kRingReach + 1, 2 * kRingReach + 1}};
}

std::vector<PixelRect> CrossRepaint(const std::optional<CrossShape>& before,
                                    const std::optional<CrossShape>& after) {
  std::vector<PixelRect> rects;
  if (before == after) return rects;
  for (PixelRect CrossShape::*part : {&CrossShape::across, &CrossShape::down, &CrossShape::ring}) {
    if (before && after && (*before).*part == (*after).*part) continue;
    if (before) rects.push_back((*before).*part);
    if (after) rects.push_back((*after).*part);
  }
  return rects;
}

}  // namespace vela
