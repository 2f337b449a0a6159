#include "datalog/qt/chart_painter.h"

#include <QVector>
#include <algorithm>
#include <cmath>
#include <optional>

#include "datalog/chart/chart_view.h"
#include "datalog/files/log_export.h"

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

void PaintSeries(QPainter& painter, const Frame& frame, const DatalogLog& log, int channel,
                 const std::vector<std::size_t>& bounds, bool raw, Columns columns) {
  const LogSeries& series = log.Series(channel);
  const ValueRange range = ChannelScale(log, channel);
  const double scale = frame.plot.height() / (range.high - range.low);
  const int bottom = frame.plot.bottom();
  const auto y = [&](double v) {
    return static_cast<int>(std::lround(bottom - (v - range.low) * scale));
  };
  const QColor colour(series.colour.red, series.colour.green, series.colour.blue);
  painter.setPen(QPen(colour, 0));
  if (raw) {
    LineBuilder line(painter, 64);
    const std::size_t begin = bounds[columns.first] > 0 ? bounds[columns.first] - 1 : 0;
    const std::size_t end = std::min(bounds[columns.end] + 1, series.values.size());
    for (std::size_t i = begin; i < end; ++i) {
      const float v = series.values[i];
      if (std::isnan(v)) {
        line.Break();
        continue;
      }
      line.Add(static_cast<int>(std::lround(frame.XOf(log.Times()[i]))), y(v));
    }
    return;
  }
  // Dense: one bar a pixel wide from the lowest to the highest value of each column (filled as
  // a rectangle, which the raster engine does far faster than a line), and a short line from
  // the last value of the column before to the first of this one.
  QVector<QRect> bars;
  QVector<QLine> lines;
  bars.reserve(static_cast<qsizetype>(columns.end - columns.first));
  lines.reserve(static_cast<qsizetype>(columns.end - columns.first));
  const int left = frame.plot.left();
  std::optional<int> last_y;
  for (std::size_t c = columns.first; c < columns.end; ++c) {
    const ColumnSummary s = series.summaries.Summarize(series.values, bounds[c], bounds[c + 1]);
    if (!s.any) {
      if (bounds[c] < bounds[c + 1]) last_y.reset();  // records without points: the line breaks
      continue;
    }
    const int x = left + static_cast<int>(c);
    if (last_y && !std::isnan(s.first)) {
      const int first_y = y(s.first);
      if (std::abs(first_y - *last_y) > 1) lines.append(QLine(x - 1, *last_y, x, first_y));
    }
    const int top = y(s.max);
    bars.append(QRect(x, top, 1, y(s.min) - top + 1));
    last_y = std::isnan(s.last) ? std::nullopt : std::optional<int>(y(s.last));
  }
  painter.drawLines(lines.constData(), lines.size());
  painter.setPen(Qt::NoPen);
  painter.setBrush(colour);
  painter.drawRects(bars.constData(), bars.size());
  painter.setBrush(Qt::NoBrush);
}

void PaintAxes(QPainter& painter, const Frame& frame, const ChartScene& scene,
               const ChartLook& look) {
  const QRect& plot = frame.plot;
  const QFontMetrics metrics = painter.fontMetrics();
  for (double t : AxisTicks(frame.axis.min, frame.axis.max, kTimeTicks)) {
    const int x = static_cast<int>(std::lround(frame.XOf(t)));
    painter.setPen(look.grid);
    painter.drawLine(x, plot.top(), x, plot.bottom());
    painter.setPen(look.label);
    const QString text = QString::number(t, 'g', 6);
    painter.drawText(x - metrics.horizontalAdvance(text) / 2, plot.bottom() + metrics.ascent() + 4,
                     text);
  }
  const ValueRange range = ChannelScale(scene.log, scene.axis_channel);
  for (double v : AxisTicks(range.low, range.high, kValueTicks)) {
    const int y = static_cast<int>(
        std::lround(plot.bottom() - (v - range.low) / (range.high - range.low) * plot.height()));
    painter.setPen(look.grid);
    painter.drawLine(plot.left(), y, plot.right(), y);
    painter.setPen(look.label);
    const QString text = QString::number(v, 'g', 6);
    painter.drawText(plot.left() - metrics.horizontalAdvance(text) - 6, y + metrics.ascent() / 2,
                     text);
  }
  painter.setPen(look.axis_line);
  painter.drawLine(plot.bottomLeft(), plot.bottomRight());
  painter.drawLine(plot.bottomLeft(), plot.topLeft());
}

constexpr int kGapTick = 7;  // pixels, from the plot's top and bottom edges

// A red tick at the top and the bottom of the plot where the link lost frames: the log time runs
// on across a gap as if nothing were missing, so the mark is what tells the tuner.
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

// Stretches of time shaded over the plot's whole height, under the lines.
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
  const auto vertical = [&](double t, const QColor& colour, Qt::PenStyle style, const QString& text,
                            int text_line) {
    const int x = static_cast<int>(std::lround(frame.XOf(t)));
    if (x < plot.left() || x > plot.right()) return;
    painter.setPen(QPen(colour, 0, style));
    painter.drawLine(x, plot.top(), x, plot.bottom());
    const int top = plot.top() + 1 + text_line * line_height;
    const QRect box(x + 2, top, painter.fontMetrics().horizontalAdvance(text) + 4, line_height);
    painter.fillRect(box, look.background);
    painter.drawText(box.left() + 2, top + ascent, text);
  };
  for (const LogMarker& marker : scene.log.Markers()) {
    vertical(marker.time, look.marker, Qt::DashLine, QString::fromStdString(marker.text), 0);
  }
  if (scene.cursor_a) {
    vertical(*scene.cursor_a, look.cursor_a, Qt::SolidLine, CursorLabel('A', *scene.cursor_a), 1);
  }
  if (scene.cursor_b) {
    vertical(*scene.cursor_b, look.cursor_b, Qt::DotLine, CursorLabel('B', *scene.cursor_b), 2);
  }
}

}  // namespace

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
  PaintAxes(painter, frame, scene, look);
  painter.save();
  painter.setClipRect(scene.plot.adjusted(0, 0, 1, 1));
  std::vector<std::size_t> bounds = ColumnBounds(scene.log.Times(), frame.axis, scene.plot.width());
  const bool raw = DrawRawPoints(bounds);
  if (!raw) AlignToSummaryBlocks(bounds);
  const QRect dirty = scene.dirty.intersected(scene.plot);
  const int width = scene.plot.width();
  const Columns columns{
      static_cast<std::size_t>(std::clamp(dirty.left() - scene.plot.left() - 1, 0, width)),
      static_cast<std::size_t>(std::clamp(dirty.right() - scene.plot.left() + 2, 0, width))};
  PaintSpans(painter, frame, scene, look);
  for (int n = 0; n < kChannelCount; ++n) {
    const LogSeries& series = scene.log.Series(n);
    if (series.active && series.points > 0 && columns.first < columns.end) {
      PaintSeries(painter, frame, scene.log, n, bounds, raw, columns);
    }
  }
  PaintGaps(painter, frame, scene.log, look);
  painter.restore();
  PaintMarkersAndCursors(painter, frame, scene, look);
}

}  // namespace vela
