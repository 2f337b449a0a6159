#include "datalog/chart/panel_geometry.h"

#include <gtest/gtest.h>

namespace vela {
namespace {

TEST(PanelGeometry, PanelsShareThePlotWithoutOverlapOrLoss) {
  const PixelRect plot{60, 8, 500, 403};
  for (int count = 1; count <= 4; ++count) {
    const std::vector<PixelRect> panels = StackPanels(plot, count);
    ASSERT_EQ(panels.size(), static_cast<std::size_t>(count));
    EXPECT_EQ(panels.front().top, plot.top);
    EXPECT_EQ(panels.back().Bottom(), plot.Bottom()) << count;
    for (std::size_t p = 0; p < panels.size(); ++p) {
      EXPECT_EQ(panels[p].left, plot.left);
      EXPECT_EQ(panels[p].width, plot.width);
      if (p > 0) {
        EXPECT_EQ(panels[p].top, panels[p - 1].Bottom() + 1 + kPanelGap);
      }
      EXPECT_LE(std::abs(panels[p].height - panels[0].height), count);
    }
  }
  // Out of range counts are held to 1..4.
  EXPECT_EQ(StackPanels(plot, 0).size(), 1u);
  EXPECT_EQ(StackPanels(plot, 9).size(), 4u);
}

TEST(PanelGeometry, PanelAtTellsGapsFromPanels) {
  const std::vector<PixelRect> panels = StackPanels({0, 0, 100, 208}, 2);
  EXPECT_EQ(PanelAt(panels, 0), 0);
  EXPECT_EQ(PanelAt(panels, panels[0].Bottom()), 0);
  EXPECT_EQ(PanelAt(panels, panels[0].Bottom() + 1), std::nullopt);
  EXPECT_EQ(PanelAt(panels, panels[1].top), 1);
  EXPECT_EQ(PanelAt(panels, 208), std::nullopt);
  EXPECT_EQ(PanelAt(panels, -1), std::nullopt);
}

TEST(PanelGeometry, ValuesMapToHeightsBothWays) {
  const PixelRect panel{0, 100, 50, 100};
  const ValueSpan span{1000, 8000};
  EXPECT_DOUBLE_EQ(YOfValue(panel, span, 1000), 199);
  EXPECT_DOUBLE_EQ(YOfValue(panel, span, 8000), 99);
  EXPECT_DOUBLE_EQ(ValueAtY(panel, span, YOfValue(panel, span, 4321)), 4321);
}

TEST(PanelGeometry, RectZoomSetsTimeAndEveryChannelWithinThePanelAndRefusesClicks) {
  const PixelRect panel{100, 50, 400, 200};  // 0.05 s a pixel over 0..20 s
  const TimeAxis axis{0.0, 20.0};
  const std::vector<ValueSpan> spans{{0, 200}, {10, 20}};
  // Dragged up and to the left: the same as down and to the right.
  const auto zoom = ZoomToRect(panel, axis, spans, 300, 99, 200, 149);
  ASSERT_TRUE(zoom);
  EXPECT_DOUBLE_EQ(zoom->axis.min, 5.0);
  EXPECT_DOUBLE_EQ(zoom->axis.max, 10.0);
  ASSERT_EQ(zoom->spans.size(), 2u);
  EXPECT_DOUBLE_EQ(zoom->spans[0].low, 100.0);  // y 149 is half way up
  EXPECT_DOUBLE_EQ(zoom->spans[0].high, 150.0);
  EXPECT_DOUBLE_EQ(zoom->spans[1].low, 15.0);
  EXPECT_DOUBLE_EQ(zoom->spans[1].high, 17.5);
  // Dragged from beside the panel: cut to it.
  const auto cut = ZoomToRect(panel, axis, spans, 0, 0, 200, 149);
  ASSERT_TRUE(cut);
  EXPECT_DOUBLE_EQ(cut->axis.min, 0.0);
  EXPECT_DOUBLE_EQ(cut->spans[0].high, 199.0);  // the top row, a pixel under the range
  EXPECT_FALSE(ZoomToRect(panel, axis, spans, 200, 100, 202, 180));  // too narrow
  EXPECT_FALSE(ZoomToRect(panel, axis, spans, 200, 100, 300, 102));  // too low
  EXPECT_FALSE(ZoomToRect(panel, axis, spans, 0, 0, 90, 40));        // beside the panel
  // Never narrower than the narrowest axis zooming allows.
  const auto narrow = ZoomToRect(panel, {0.0, 0.1}, spans, 200, 100, 210, 150);
  ASSERT_TRUE(narrow);
  EXPECT_NEAR(narrow->axis.max - narrow->axis.min, kNarrowestAxisSeconds, 1e-12);
}

}  // namespace
}  // namespace vela
