#include "datalog/qt/datalog_chart.h"

#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>
#include <cmath>

#include "datalog/chart/chart_view.h"
#include "datalog/chart/panel_geometry.h"
#include "datalog/qt/chart_painter.h"

namespace vela {

namespace {
constexpr int kMarginLeft = 60;
constexpr int kMarginRight = 10;
constexpr int kMarginTop = 8;
constexpr int kMarginBottom = 22;
constexpr int kDragThreshold = 3;  // pixels before a press becomes a drag
constexpr double kZoomPerNotch = 0.8;
constexpr double kWheelNotch = 120.0;
}  // namespace

DatalogChart::DatalogChart(DatalogLog& log, QWidget* parent) : QWidget(parent), log_(log) {
  setObjectName("TChart1");
  setMinimumSize(320, 180);
  setAttribute(Qt::WA_OpaquePaintEvent);
  setFocusPolicy(Qt::StrongFocus);
  setCursor(Qt::CrossCursor);
}

QRect DatalogChart::PlotRect() const {
  return rect().adjusted(kMarginLeft, kMarginTop, -kMarginRight, -kMarginBottom);
}

double DatalogChart::TimeAt(int x) const {
  const QRect plot = PlotRect();
  return log_.axis.min + (x - plot.left()) * (log_.axis.max - log_.axis.min) / plot.width();
}

void DatalogChart::SetAxisChannel(int channel) {
  if (channel < 0 || channel >= kChannelCount) return;
  axis_channel_ = channel;
  layout_.Select(LayoutNameOf(channel));
  update();
  emit LayoutChanged();
}

void DatalogChart::SelectChannel(const std::string& name) {
  if (const std::optional<int> recorded = review::RecordedChannelNamed(name)) {
    SetAxisChannel(*recorded);
    return;
  }
  layout_.Select(name);
  update();
  emit LayoutChanged();
}

void DatalogChart::SetLayout(review::ChartLayout layout) {
  layout_ = std::move(layout);
  const std::optional<int> recorded = review::RecordedChannelNamed(layout_.Selected());
  if (recorded) axis_channel_ = *recorded;
  update();
  emit LayoutChanged();
}

void DatalogChart::SetExtraSeries(std::vector<ChartSeries> series) {
  extra_ = std::move(series);
  update();
  emit LinesChanged();
}

ChartPlan DatalogChart::Plan() const { return PlanChart(log_, layout_, extra_, log_.axis); }

std::vector<QRect> DatalogChart::PanelRects() const {
  return vela::PanelRects(PlotRect(), static_cast<int>(layout_.Panels().size()));
}

void DatalogChart::ShowWholeLog() {
  log_.axis = WholeLogAxis(log_);
  axis_in_hand_ = false;
  update();
}

void DatalogChart::SetShadedSpans(std::vector<std::pair<double, double>> spans) {
  spans_ = std::move(spans);
  update();
}

void DatalogChart::SetCursors(std::optional<double> a, std::optional<double> b) {
  cursor_a_ = a;
  cursor_b_ = b;
  update();
  emit CursorsChanged();
}

namespace {

// What decides where a line is drawn beside the axis: each line's panel and range.
std::vector<double> Scales(const ChartPlan& plan) {
  std::vector<double> scales;
  for (const PlannedLine& line : plan.lines) {
    scales.insert(scales.end(), {static_cast<double>(line.panel), line.range.low, line.range.high});
  }
  return scales;
}

}  // namespace

int DatalogChart::XOf(double time) const {
  const QRect plot = PlotRect();
  return plot.left() +
         static_cast<int>(
             std::lround((time - log_.axis.min) / (log_.axis.max - log_.axis.min) * plot.width()));
}

bool DatalogChart::OnlyGrownSincePaint() const {
  return log_.axis == painted_axis_ && painted_records_ > 0 &&
         log_.RecordCount() >= painted_records_ && log_.Markers().size() == painted_markers_ &&
         log_.Gaps().size() == painted_gaps_ && Scales(Plan()) == painted_scales_;
}

void DatalogChart::RefreshIfChanged() {
  if (log_.Revision() == painted_revision_) return;
  if (!OnlyGrownSincePaint() || log_.RecordCount() == painted_records_) {
    update();
    return;
  }
  RepaintFrom(log_.Times()[painted_records_ - 1]);
}

void DatalogChart::ExtraSeriesGrew(std::vector<ChartSeries> series, double from_time) {
  extra_ = std::move(series);
  if (!OnlyGrownSincePaint()) {
    update();
    return;
  }
  RepaintFrom(from_time);
}

void DatalogChart::RepaintFrom(double time) {
  const int from = std::max(XOf(time) - 2, 0);
  const int to = XOf(log_.EndTime()) + 2;
  if (to >= from) update(QRect(from, 0, to - from + 1, height()));
}

void DatalogChart::TakeAxisInHand(const TimeAxis& axis) {
  log_.axis = axis;
  axis_in_hand_ = true;
  update();
  emit AxisChangedByHand();
}

void DatalogChart::paintEvent(QPaintEvent* event) {
  // A part of the chart shown again after the log changed otherwise than by growing: the rest
  // follows.
  if (!event->rect().contains(rect()) && log_.Revision() != painted_revision_ &&
      !OnlyGrownSincePaint()) {
    update();
  }
  QPainter painter(this);
  painted_revision_ = log_.Revision();
  painted_axis_ = log_.axis;
  painted_records_ = log_.RecordCount();
  painted_markers_ = log_.Markers().size();
  painted_gaps_ = log_.Gaps().size();
  const ChartPlan plan = Plan();
  painted_scales_ = Scales(plan);
  ChartScene scene{log_,      PlotRect(),    plan,    cursor_a_,
                   cursor_b_, event->rect(), &spans_, std::nullopt};
  if (band_from_) scene.rubber_band = QRect(*band_from_, band_to_).normalized();
  PaintChart(painter, rect(), scene);
}

void DatalogChart::wheelEvent(QWheelEvent* event) {
  const double notches = event->angleDelta().y() / kWheelNotch;
  if (notches == 0.0) return;
  const double anchor = TimeAt(static_cast<int>(event->position().x()));
  TakeAxisInHand(ZoomAxis(log_.axis, anchor, std::pow(kZoomPerNotch, notches)));
  event->accept();
}

void DatalogChart::mousePressEvent(QMouseEvent* event) {
  const int x = static_cast<int>(event->position().x());
  if (event->button() == Qt::RightButton) {
    SetCursors(cursor_a_, TimeAt(x));
    return;
  }
  const bool band = event->button() == Qt::MiddleButton ||
                    (event->button() == Qt::LeftButton && event->modifiers() & Qt::ShiftModifier);
  if (band) {
    band_from_ = event->position().toPoint();
    band_to_ = *band_from_;
    return;
  }
  if (event->button() != Qt::LeftButton) return;
  press_x_ = x;
  press_axis_ = log_.axis;
  dragging_ = false;
}

void DatalogChart::mouseMoveEvent(QMouseEvent* event) {
  if (band_from_) {
    band_to_ = event->position().toPoint();
    update();
    return;
  }
  if (!press_x_ || !(event->buttons() & Qt::LeftButton)) return;
  const int dx = static_cast<int>(event->position().x()) - *press_x_;
  if (!dragging_ && std::abs(dx) < kDragThreshold) return;
  dragging_ = true;
  const double seconds_per_pixel = (press_axis_.max - press_axis_.min) / PlotRect().width();
  TakeAxisInHand(PanAxis(press_axis_, -dx * seconds_per_pixel));
}

void DatalogChart::mouseReleaseEvent(QMouseEvent* event) {
  if (band_from_) {
    const QPoint from = *band_from_;
    band_from_.reset();
    if (!ZoomToRectangle(from, event->position().toPoint())) update();
    return;
  }
  if (event->button() != Qt::LeftButton || !press_x_) return;
  if (!dragging_) SetCursors(TimeAt(*press_x_), cursor_b_);
  press_x_.reset();
  dragging_ = false;
}

bool DatalogChart::ZoomToRectangle(QPoint from, QPoint to) {
  const std::vector<QRect> rects = PanelRects();
  std::vector<PixelRect> panels;
  for (const QRect& r : rects) panels.push_back({r.left(), r.top(), r.width(), r.height()});
  const std::optional<int> panel = PanelAt(panels, from.y());
  if (!panel) return false;
  const ChartPlan plan = Plan();
  std::vector<const PlannedLine*> lines;
  std::vector<ValueSpan> spans;
  for (const PlannedLine& line : plan.lines) {
    if (line.panel != *panel) continue;
    lines.push_back(&line);
    spans.push_back({line.range.low, line.range.high});
  }
  const std::optional<RectZoom> zoom =
      ZoomToRect(panels[static_cast<std::size_t>(*panel)], log_.axis, spans, from.x(), from.y(),
                 to.x(), to.y());
  if (!zoom) return false;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    // A line the layout does not place yet is drawn in the first panel: it is placed there now.
    if (!layout_.PanelOf(lines[i]->name)) layout_.Place(lines[i]->name, *panel);
    layout_.SetScale(lines[i]->name, {false, zoom->spans[i].low, zoom->spans[i].high});
  }
  emit LayoutChanged();
  TakeAxisInHand(zoom->axis);
  return true;
}

void DatalogChart::mouseDoubleClickEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  ShowWholeLog();
  emit AxisChangedByHand();
}

}  // namespace vela

#include "moc_datalog_chart.cpp"
