#include "editors/mapgrid/cross_shape.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace vela {
namespace {

constexpr int kWidth = 200;
constexpr int kHeight = 150;
constexpr int kFirstX = 60;
constexpr int kFirstY = 40;

CrossShape At(int x, int y) { return CrossShapeAt(x, y, kFirstX, kFirstY, kWidth, kHeight); }

// What the grid's viewport shows: true where the cross's ink lies. The grid draws the cross over
// the whole viewport once, and then, at each move, the cells beneath the rectangles the rule
// names and the cross over them (clipped to those rectangles).
class Viewport {
 public:
  Viewport() : ink_(kWidth * kHeight, 0) {}

  void Repaint(const std::vector<PixelRect>& rects, const std::optional<CrossShape>& cross) {
    for (const PixelRect& r : rects) {
      for (int y = std::max(r.y, 0); y < std::min(r.y + r.height, kHeight); ++y) {
        for (int x = std::max(r.x, 0); x < std::min(r.x + r.width, kWidth); ++x) {
          ink_[Index(x, y)] = Inked(cross, x, y);
        }
      }
    }
  }
  void PaintWhole(const std::optional<CrossShape>& cross) {
    Repaint({{0, 0, kWidth, kHeight}}, cross);
  }
  // True when every pixel shows what a fresh drawing of `cross` shows.
  bool Shows(const std::optional<CrossShape>& cross) const {
    for (int y = 0; y < kHeight; ++y) {
      for (int x = 0; x < kWidth; ++x) {
        if (ink_[Index(x, y)] != Inked(cross, x, y)) return false;
      }
    }
    return true;
  }

 private:
  static int Index(int x, int y) { return y * kWidth + x; }
  // The lines, and the ring drawn around the centre with a radius of 6 and a pen of 2 (its
  // pixels whose middle lies 4.5 to 7.5 pixels from the centre; in half pixels, 9 to 15).
  static char Inked(const std::optional<CrossShape>& cross, int x, int y) {
    if (!cross) return 0;
    if (cross->across.Contains(x, y) || cross->down.Contains(x, y)) return 1;
    const int dx = 2 * x + 1 - 2 * cross->CentreX();
    const int dy = 2 * y + 1 - 2 * cross->CentreY();
    const int squared = dx * dx + dy * dy;
    return squared >= 9 * 9 && squared <= 15 * 15 ? 1 : 0;
  }

  std::vector<char> ink_;
};

// The cross moves as a running engine moves it: steps of a pixel or two, steps of less than the
// lines' reach, jumps across the grid, standing still, and going away and coming back.
TEST(CrossRepaint, EveryMoveLeavesOneCrossWhereTheLivePointIs) {
  Viewport shown;
  std::optional<CrossShape> cross = At(100, 80);
  shown.PaintWhole(cross);
  std::mt19937 random(7);
  std::uniform_int_distribution<int> kind(0, 9);
  std::uniform_int_distribution<int> small(-6, 6);
  std::uniform_int_distribution<int> x_anywhere(kFirstX, kWidth - 10);
  std::uniform_int_distribution<int> y_anywhere(kFirstY, kHeight - 10);
  int x = 100;
  int y = 80;
  for (int step = 0; step < 400; ++step) {
    std::optional<CrossShape> next;
    const int what = kind(random);
    if (what < 6) {
      x = std::clamp(x + small(random), kFirstX, kWidth - 10);
      y = std::clamp(y + small(random), kFirstY, kHeight - 10);
    } else if (what < 8) {
      x = x_anywhere(random);
      y = y_anywhere(random);
    }
    if (what != 9) next = At(x, y);
    shown.Repaint(CrossRepaint(cross, next), next);
    cross = next;
    ASSERT_TRUE(shown.Shows(cross)) << "after step " << step;
  }
}

TEST(CrossRepaint, OnlyWhatMovesIsDrawnAgain) {
  EXPECT_TRUE(CrossRepaint(At(100, 100), At(100, 100)).empty());
  EXPECT_TRUE(CrossRepaint(std::nullopt, std::nullopt).empty());
  // Along the RPM line: the RPM line stays, the load line and the ring move.
  const std::vector<PixelRect> sideways = CrossRepaint(At(100, 100), At(104, 100));
  EXPECT_EQ(sideways.size(), 4u);
  for (const PixelRect& r : sideways) EXPECT_NE(r, At(100, 100).across);
  EXPECT_EQ(CrossRepaint(std::nullopt, At(100, 100)).size(), 3u);
}

TEST(CrossShape, LinesCrossAtTheCentreAndRunToTheFarEdges) {
  const CrossShape cross = At(150, 120);
  EXPECT_EQ(cross.CentreX(), 150);
  EXPECT_EQ(cross.CentreY(), 120);
  EXPECT_EQ(cross.across, (PixelRect{kFirstX - 20, 119, kWidth - kFirstX + 20, 2}));
  EXPECT_EQ(cross.down, (PixelRect{149, kFirstY - 12, 2, kHeight - kFirstY + 12}));
  EXPECT_TRUE(cross.ring.Contains(150 - 8, 120) && cross.ring.Contains(150 + 7, 120));
}

}  // namespace
}  // namespace vela
