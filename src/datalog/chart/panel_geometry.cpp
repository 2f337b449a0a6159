#include "datalog/chart/panel_geometry.h"

#include <algorithm>

#include "datalog/chart/chart_view.h"

namespace vela {

std::vector<PixelRect> StackPanels(const PixelRect& plot, int count) {
  count = std::clamp(count, 1, 4);
  const int free = std::max(plot.height - kPanelGap * (count - 1), count);
  const int each = free / count;
  std::vector<PixelRect> panels;
  int top = plot.top;
  for (int p = 0; p < count; ++p) {
    const int height = p + 1 == count ? free - each * (count - 1) : each;
    panels.push_back({plot.left, top, plot.width, height});
    top += height + kPanelGap;
  }
  return panels;
}

std::optional<int> PanelAt(const std::vector<PixelRect>& panels, int y) {
  for (std::size_t p = 0; p < panels.size(); ++p) {
    if (y >= panels[p].top && y <= panels[p].Bottom()) return static_cast<int>(p);
  }
  return std::nullopt;
}

double YOfValue(const PixelRect& panel, const ValueSpan& span, double value) {
  return panel.Bottom() - (value - span.low) / (span.high - span.low) * panel.height;
}

double ValueAtY(const PixelRect& panel, const ValueSpan& span, double y) {
  return span.low + (panel.Bottom() - y) / panel.height * (span.high - span.low);
}

std::optional<RectZoom> ZoomToRect(const PixelRect& panel, const TimeAxis& axis,
                                   const std::vector<ValueSpan>& spans, int x0, int y0, int x1,
                                   int y1) {
  const int right = panel.left + panel.width - 1;
  const int left_x = std::clamp(std::min(x0, x1), panel.left, right);
  const int right_x = std::clamp(std::max(x0, x1), panel.left, right);
  const int top_y = std::clamp(std::min(y0, y1), panel.top, panel.Bottom());
  const int bottom_y = std::clamp(std::max(y0, y1), panel.top, panel.Bottom());
  if (right_x - left_x < kSmallestZoomRect || bottom_y - top_y < kSmallestZoomRect ||
      panel.width < 2 || panel.height < 2) {
    return std::nullopt;
  }
  const double per_pixel = (axis.max - axis.min) / panel.width;
  RectZoom zoom;
  zoom.axis = {axis.min + (left_x - panel.left) * per_pixel,
               axis.min + (right_x - panel.left) * per_pixel};
  if (zoom.axis.max - zoom.axis.min < kNarrowestAxisSeconds) {
    const double middle = (zoom.axis.min + zoom.axis.max) / 2;
    zoom.axis = {middle - kNarrowestAxisSeconds / 2, middle + kNarrowestAxisSeconds / 2};
  }
  for (const ValueSpan& span : spans) {
    zoom.spans.push_back({ValueAtY(panel, span, bottom_y), ValueAtY(panel, span, top_y)});
  }
  return zoom;
}

}  // namespace vela
