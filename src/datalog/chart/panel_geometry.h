// Where the chart's stacked panels sit, how a value maps to a height in one, and what a
// rectangle dragged over a panel zooms to. Plain arithmetic on pixels, without any toolkit.
#pragma once

#include <optional>
#include <vector>

#include "datalog/datalog_log.h"

namespace vela {

struct PixelRect {
  int left = 0;
  int top = 0;
  int width = 0;
  int height = 0;
  int Bottom() const { return top + height - 1; }
  bool operator==(const PixelRect&) const = default;
};

// Pixels left empty between two stacked panels.
inline constexpr int kPanelGap = 12;

// The rects of `count` panels (1 to 4) stacked in `plot`, top first, all as wide as the plot,
// the height shared evenly (the last one takes what does not divide) with kPanelGap between.
std::vector<PixelRect> StackPanels(const PixelRect& plot, int count);

// The panel holding vertical position `y`, or nullopt (between panels, above or below them).
std::optional<int> PanelAt(const std::vector<PixelRect>& panels, int y);

// A vertical range a channel is drawn over: low at a panel's bottom, high at its top.
struct ValueSpan {
  double low = 0.0;
  double high = 1.0;
  bool operator==(const ValueSpan&) const = default;
};

double YOfValue(const PixelRect& panel, const ValueSpan& span, double value);
double ValueAtY(const PixelRect& panel, const ValueSpan& span, double y);

// A rectangle narrower or lower than this (pixels) zooms nothing: it was a click.
inline constexpr int kSmallestZoomRect = 4;

// A rectangle dragged from (x0, y0) to (x1, y1), in either direction, over `panel` of a chart
// whose time axis is `axis` (mapped over the panel's width): the time axis between its left and
// right edges (at least kNarrowestAxisSeconds wide, around its middle) and, for each of `spans`
// (the panel's channels as drawn), the values between its bottom and top edges. The rectangle is
// cut to the panel first; nullopt when what is left is smaller than kSmallestZoomRect either way.
struct RectZoom {
  TimeAxis axis;
  std::vector<ValueSpan> spans;
};
std::optional<RectZoom> ZoomToRect(const PixelRect& panel, const TimeAxis& axis,
                                   const std::vector<ValueSpan>& spans, int x0, int y0, int x1,
                                   int y1);

}  // namespace vela
