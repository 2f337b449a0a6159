#include "datalog/qt/chart_painter.h"

#include <QVector>
#include <algorithm>
#include <cmath>
#include <optional>
#include <span>

#include "datalog/chart/chart_view.h"
#include "datalog/chart/panel_geometry.h"
#include "datalog/files/log_export.h"
#include "datalog/review/marker_list.h"

namespace vela {

namespace {

constexpr int kTimeTicks = 10;
constexpr int kValueTicks = 6;

struct Frame {
  QRect plot;
  TimeAxis axis;
  double XOf(double t) const {
    return plot.left() + (t - axis.min) / (axis.max - axis.min) * plot.width();
  }
};

// Points of one line, sent to the painter whenever the line breaks (a channel that was off).
class LineBuilder {
 public:
  LineBuilder(QPainter& painter, std::size_t reserve) : painter_(painter) {
    points_.reserve(static_cast<qsizetype>(reserve));
  }
  ~LineBuilder() { Break(); }
  void Add(int x, int y) {
    const QPoint p(x, y);
    if (points_.isEmpty() || points_.back() != p) points_.append(p);
  }
  void Break() {
    if (points_.size() == 1) painter_.drawPoint(points_.front());
    if (points_.size() > 1) painter_.drawPolyline(points_.constData(), points_.size());
    points_.clear();
  }

 private:
  QPainter& painter_;
  QVector<QPoint> points_;
};

// The columns [first, end) of the plot that need drawing.
struct Columns {
  std::size_t first;
  std::size_t end;
};

ColumnSummary SummaryOf(const review::ColumnView& column, std::size_t begin, std::size_t end) {
  if (column.summaries != nullptr) return column.summaries->Summarize(column.values, begin, end);
  ColumnSummary s;
  end = std::min(end, column.values.size());
  if (begin >= end) return s;
  s.first = column.values[begin];
  s.last = column.values[end - 1];
  for (std::size_t i = begin; i < end; ++i) {
    const float v = column.values[i];
    if (std::isnan(v)) continue;
    s.min = s.any ? std::min(s.min, v) : v;
    s.max = s.any ? std::max(s.max, v) : v;
    s.any = true;
  }
  return s;
}

// How one line is drawn: its panel, the axis in its own times and the columns over them.
struct LineDraw {
  QRect panel;
  TimeAxis axis;
  const std::vector<std::size_t>& bounds;
  bool raw;
  Columns columns;
};

template <typename YOf>
void PaintRawPoints(QPainter& painter, const PlannedLine& line, const LineDraw& draw, YOf y) {
  const Frame frame{draw.panel, draw.axis};
  LineBuilder points(painter, 64);
  const std::span<const float> values = line.column.values;
  const std::size_t first = draw.bounds[draw.columns.first];
  const std::size_t begin = first > 0 ? first - 1 : 0;
  const std::size_t end = std::min(draw.bounds[draw.columns.end] + 1, values.size());
  for (std::size_t i = begin; i < end; ++i) {
    const float v = values[i];
    if (std::isnan(v)) {
      points.Break();
      continue;
    }
    points.Add(static_cast<int>(std::lround(frame.XOf((*line.times)[i]))), y(v));
  }
}

// Dense: one bar a pixel wide from the lowest to the highest value of each column (filled as a
// rectangle, which the raster engine does far faster than a line), and a short line from the
// last value of the column before to the first of this one. A second log's dense line is drawn
// through its columns' middles instead, dashed.
template <typename YOf>
void PaintDense(QPainter& painter, const PlannedLine& line, const LineDraw& draw, YOf y,
                const QColor& colour) {
  QVector<QRect> bars;
  QVector<QLine> lines;
  LineBuilder middles(painter, line.second_log ? 1024 : 0);
  bars.reserve(static_cast<qsizetype>(draw.columns.end - draw.columns.first));
  lines.reserve(static_cast<qsizetype>(draw.columns.end - draw.columns.first));
  const int left = draw.panel.left();
  int last_y = 0;
  bool have_last = false;
  for (std::size_t c = draw.columns.first; c < draw.columns.end; ++c) {
    const ColumnSummary s = SummaryOf(line.column, draw.bounds[c], draw.bounds[c + 1]);
    if (!s.any) {
      if (draw.bounds[c] < draw.bounds[c + 1]) {  // records without points: the line breaks
        have_last = false;
        middles.Break();
      }
      continue;
    }
    const int x = left + static_cast<int>(c);
    if (line.second_log) {
      middles.Add(x, y((static_cast<double>(s.min) + s.max) / 2));
      continue;
    }
    if (have_last && !std::isnan(s.first)) {
      const int first_y = y(s.first);
      if (std::abs(first_y - last_y) > 1) lines.append(QLine(x - 1, last_y, x, first_y));
    }
    const int top = y(s.max);
    bars.append(QRect(x, top, 1, y(s.min) - top + 1));
    have_last = !std::isnan(s.last);
    if (have_last) last_y = y(s.last);
  }
  middles.Break();
  painter.drawLines(lines.constData(), lines.size());
  painter.setPen(Qt::NoPen);
  painter.setBrush(colour);
  painter.drawRects(bars.constData(), bars.size());
  painter.setBrush(Qt::NoBrush);
}

void PaintLine(QPainter& painter, const PlannedLine& line, const LineDraw& draw) {
  const double scale = draw.panel.height() / (line.range.high - line.range.low);
  const int bottom = draw.panel.bottom();
  const double low = line.range.low;
  const auto y = [&](double v) {
    return static_cast<int>(std::lround(bottom - (v - low) * scale));
  };
  // A second log's line is lighter and dashed, so it never passes for the first log's.
  const QColor colour = line.second_log ? line.colour.lighter(150) : line.colour;
  painter.setPen(QPen(colour, 0, line.second_log ? Qt::DashLine : Qt::SolidLine));
  if (draw.raw) {
    PaintRawPoints(painter, line, draw, y);
  } else {
    PaintDense(painter, line, draw, y, colour);
  }
}

void PaintTimeTicks(QPainter& painter, const Frame& frame, const std::vector<QRect>& panels,
                    const ChartLook& look) {
  const QFontMetrics metrics = painter.fontMetrics();
  const QRect& last = panels.back();
  for (double t : AxisTicks(frame.axis.min, frame.axis.max, kTimeTicks)) {
    const int x = static_cast<int>(std::lround(frame.XOf(t)));
    painter.setPen(look.grid);
    for (const QRect& panel : panels) painter.drawLine(x, panel.top(), x, panel.bottom());
    painter.setPen(look.label);
    const QString text = QString::number(t, 'g', 6);
    painter.drawText(x - metrics.horizontalAdvance(text) / 2, last.bottom() + metrics.ascent() + 4,
                     text);
  }
}

// The value ticks of a panel's axis line, labelled on the left: silver with one panel, in the
// line's colour when panels are stacked (each names a different channel).
void PaintValueTicks(QPainter& painter, const QRect& panel, const PlannedLine& line, bool stacked,
                     const ChartLook& look) {
  const QFontMetrics metrics = painter.fontMetrics();
  const review::AxisRange& range = line.range;
  const int ticks = std::max(2, std::min(kValueTicks, panel.height() / (2 * metrics.height())));
  for (double v : AxisTicks(range.low, range.high, ticks)) {
    const int y = static_cast<int>(
        std::lround(panel.bottom() - (v - range.low) / (range.high - range.low) * panel.height()));
    painter.setPen(look.grid);
    painter.drawLine(panel.left(), y, panel.right(), y);
    painter.setPen(stacked ? line.colour : look.label);
    const QString text = QString::number(v, 'g', 6);
    painter.drawText(panel.left() - metrics.horizontalAdvance(text) - 6, y + metrics.ascent() / 2,
                     text);
  }
}

void PaintAxes(QPainter& painter, const Frame& frame, const std::vector<QRect>& panels,
               const ChartScene& scene, const ChartLook& look) {
  PaintTimeTicks(painter, frame, panels, look);
  const bool stacked = panels.size() > 1;
  for (std::size_t p = 0; p < panels.size(); ++p) {
    const int line = p < scene.plan.axis_line.size() ? scene.plan.axis_line[p] : -1;
    if (line >= 0) {
      PaintValueTicks(painter, panels[p], scene.plan.lines[static_cast<std::size_t>(line)], stacked,
                      look);
    }
    painter.setPen(look.axis_line);
    painter.drawLine(panels[p].bottomLeft(), panels[p].bottomRight());
    painter.drawLine(panels[p].bottomLeft(), panels[p].topLeft());
  }
}

constexpr int kGapTick = 7;  // pixels, from the top and bottom edges of the panels

// A red tick at the top and the bottom of the panels where the link lost frames: the log time
// runs on across a gap as if nothing were missing, so the mark is what tells the tuner.
void PaintGaps(QPainter& painter, const Frame& frame, const DatalogLog& log,
               const ChartLook& look) {
  const std::vector<LogGap>& gaps = log.Gaps();
  const std::vector<double>& times = log.Times();
  auto gap = std::lower_bound(gaps.begin(), gaps.end(), frame.axis.min,
                              [&](const LogGap& g, double t) { return times[g.record] < t; });
  const QRect& plot = frame.plot;
  QVector<QLine> ticks;
  int last_x = plot.left() - 1;
  for (; gap != gaps.end() && times[gap->record] <= frame.axis.max; ++gap) {
    const int x = static_cast<int>(std::lround(frame.XOf(times[gap->record])));
    if (x == last_x || x < plot.left() || x > plot.right()) continue;
    last_x = x;
    ticks.append(QLine(x, plot.top(), x, plot.top() + kGapTick));
    ticks.append(QLine(x, plot.bottom() - kGapTick, x, plot.bottom()));
  }
  painter.setPen(QPen(look.gap, 2));
  painter.drawLines(ticks.constData(), ticks.size());
}

// Stretches of time shaded over the panels' whole height, under the lines.
void PaintSpans(QPainter& painter, const Frame& frame, const ChartScene& scene,
                const ChartLook& look) {
  if (scene.spans == nullptr) return;
  const QRect& plot = frame.plot;
  for (const auto& [from, to] : *scene.spans) {
    if (to < frame.axis.min || from > frame.axis.max) continue;
    const double left = std::max(frame.XOf(from), static_cast<double>(plot.left()));
    const double right = std::min(frame.XOf(to), static_cast<double>(plot.right()));
    painter.fillRect(QRectF(left, plot.top(), std::max(right - left, 1.0), plot.height()),
                     look.span);
  }
}

void PaintMarkersAndCursors(QPainter& painter, const Frame& frame, const ChartScene& scene,
                            const ChartLook& look) {
  const QRect& plot = frame.plot;
  const int ascent = painter.fontMetrics().ascent();
  const int line_height = painter.fontMetrics().height();
  // Markers label the first text line, cursor A the second and cursor B the third.
  const auto vertical = [&](double t, const QPen& pen, const QString& text, int text_line) {
    const int x = static_cast<int>(std::lround(frame.XOf(t)));
    if (x < plot.left() || x > plot.right()) return;
    painter.setPen(pen);
    painter.drawLine(x, plot.top(), x, plot.bottom());
    const int top = plot.top() + 1 + text_line * line_height;
    const int width = painter.fontMetrics().horizontalAdvance(text) + 4;
    // Near the right edge the label goes to the line's left, so that it is read whole.
    const int left = x + 2 + width > plot.right() ? x - 2 - width : x + 2;
    const QRect box(left, top, width, line_height);
    painter.fillRect(box, look.background);
    painter.drawText(box.left() + 2, top + ascent, text);
  };
  // The tuner's markers dashed orange; a fault the ECU reported solid magenta, twice as wide.
  for (const LogMarker& marker : scene.log.Markers()) {
    const bool fault = review::IsFaultMarkerText(marker.text);
    const QPen pen =
        fault ? QPen(look.fault, 2, Qt::SolidLine) : QPen(look.marker, 0, Qt::DashLine);
    vertical(marker.time, pen, QString::fromStdString(marker.text), 0);
  }
  if (scene.cursor_a) {
    vertical(*scene.cursor_a, QPen(look.cursor_a, 0, Qt::SolidLine),
             CursorLabel('A', *scene.cursor_a), 1);
  }
  if (scene.cursor_b) {
    vertical(*scene.cursor_b, QPen(look.cursor_b, 0, Qt::DotLine),
             CursorLabel('B', *scene.cursor_b), 2);
  }
}

// Every planned line in its panel, each walking its own times (a second log's are shifted).
void PaintLines(QPainter& painter, const Frame& frame, const std::vector<QRect>& panels,
                const ChartScene& scene) {
  const QRect dirty = scene.dirty.intersected(scene.plot);
  const int width = scene.plot.width();
  const Columns columns{
      static_cast<std::size_t>(std::clamp(dirty.left() - scene.plot.left() - 1, 0, width)),
      static_cast<std::size_t>(std::clamp(dirty.right() - scene.plot.left() + 2, 0, width))};
  if (columns.first >= columns.end) return;
  // Bounds for each distinct time base and offset (the log's own, once for all its lines).
  std::vector<std::pair<const PlannedLine*, std::vector<std::size_t>>> bases;
  const auto bounds_of = [&](const PlannedLine& line) -> const std::vector<std::size_t>& {
    for (const auto& [other, bounds] : bases) {
      if (other->times == line.times && other->offset == line.offset) return bounds;
    }
    const TimeAxis axis{frame.axis.min - line.offset, frame.axis.max - line.offset};
    std::vector<std::size_t> bounds = ColumnBounds(*line.times, axis, width);
    if (!DrawRawPoints(bounds)) AlignToSummaryBlocks(bounds);
    bases.emplace_back(&line, std::move(bounds));
    return bases.back().second;
  };
  for (const PlannedLine& line : scene.plan.lines) {
    const std::vector<std::size_t>& bounds = bounds_of(line);
    const QRect& panel = panels[static_cast<std::size_t>(line.panel)];
    painter.setClipRect(panel.adjusted(0, 0, 1, 1));
    PaintLine(painter, line,
              LineDraw{panel,
                       {frame.axis.min - line.offset, frame.axis.max - line.offset},
                       bounds,
                       DrawRawPoints(bounds),
                       columns});
  }
}

}  // namespace

std::vector<QRect> PanelRects(const QRect& plot, int count) {
  std::vector<QRect> rects;
  for (const PixelRect& r :
       StackPanels({plot.left(), plot.top(), plot.width(), plot.height()}, count)) {
    rects.emplace_back(r.left, r.top, r.width, r.height);
  }
  return rects;
}

QString CursorLabel(char name, double time) {
  return QString("%1 %2 s").arg(QLatin1Char(name)).arg(QString::fromStdString(FixedText(time, 3)));
}

void PaintChart(QPainter& painter, const QRect& whole, const ChartScene& scene,
                const ChartLook& look) {
  painter.fillRect(whole, look.background);
  const Frame frame{scene.plot, scene.log.axis};
  if (!(frame.axis.max > frame.axis.min) || scene.plot.width() < 2 || scene.plot.height() < 2) {
    return;
  }
  const std::vector<QRect> panels = PanelRects(scene.plot, scene.plan.panels);
  PaintAxes(painter, frame, panels, scene, look);
  painter.save();
  painter.setClipRect(scene.plot.adjusted(0, 0, 1, 1));
  PaintSpans(painter, frame, scene, look);
  PaintLines(painter, frame, panels, scene);
  painter.setClipRect(scene.plot.adjusted(0, 0, 1, 1));
  PaintGaps(painter, frame, scene.log, look);
  if (scene.rubber_band) {
    painter.setPen(QPen(look.axis_line, 0, Qt::DashLine));
    painter.setBrush(look.rubber_band);
    painter.drawRect(*scene.rubber_band);
    painter.setBrush(Qt::NoBrush);
  }
  painter.restore();
  PaintMarkersAndCursors(painter, frame, scene, look);
}

}  // namespace vela
