// The live cross over a map grid in the grid's own pixels, and the rule for drawing it again as it
// moves. The grid draws the cross over its cells; when the cross moves, only what the rule names
// is drawn again (the cells beneath, then the cross over them), so the rule alone decides whether
// the cross stands once, where the live point is, with no line left behind and none lost.
#pragma once

#include <optional>
#include <vector>

namespace vela {

struct PixelRect {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  bool operator==(const PixelRect&) const = default;
  bool Contains(int px, int py) const {
    return px >= x && px < x + width && py >= y && py < y + height;
  }
};

// Everything the cross paints: two lines two pixels thick through its centre and a ring around it.
struct CrossShape {
  PixelRect across;  // the RPM line, from just left of the first load site to the right edge
  PixelRect down;    // the load line, from just above the first RPM row to the bottom edge
  PixelRect ring;    // the ring's whole extent, its anti-aliased edge included
  bool operator==(const CrossShape&) const = default;
  // The centre: the corner between the two middle pixels of each line.
  int CentreX() const { return down.x + 1; }
  int CentreY() const { return across.y + 1; }
};

// The cross centred at (x, y) over a grid whose first value cell is centred at (first_x, first_y),
// in an area `width` x `height`.
CrossShape CrossShapeAt(int x, int y, int first_x, int first_y, int width, int height);

// What must be drawn again when the cross goes from `before` to `after` (nullopt: no cross): the
// old and the new place of every part that moved, and nothing of a part that stays on the same
// pixels (where another part crosses it, that part's rectangles cover it).
std::vector<PixelRect> CrossRepaint(const std::optional<CrossShape>& before,
                                    const std::optional<CrossShape>& after);

}  // namespace vela
