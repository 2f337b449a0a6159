#include "datalog/qt/datalog_chart.h"

#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>
#include <cmath>

#include "datalog/chart/chart_view.h"
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
  axis_channel_ = channel;
  update();
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

std::vector<std::pair<double, double>> Scales(const DatalogLog& log) {
  std::vector<std::pair<double, double>> scales;
  for (int n = 0; n < kChannelCount; ++n) {
    const ValueRange range = ChannelScale(log, n);
    scales.emplace_back(range.low, range.high);
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
         log_.Gaps().size() == painted_gaps_ && Scales(log_) == painted_scales_;
}

void DatalogChart::RefreshIfChanged() {
  if (log_.Revision() == painted_revision_) return;
  if (!OnlyGrownSincePaint() || log_.RecordCount() == painted_records_) {
    update();
    return;
  }
  const int from = XOf(log_.Times()[painted_records_ - 1]) - 2;
  const int to = XOf(log_.EndTime()) + 2;
  update(QRect(from, 0, to - from + 1, height()));
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
  painted_scales_ = Scales(log_);
  PaintChart(
      painter, rect(),
      ChartScene{log_, PlotRect(), axis_channel_, cursor_a_, cursor_b_, event->rect(), &spans_});
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
  if (event->button() != Qt::LeftButton) return;
  press_x_ = x;
  press_axis_ = log_.axis;
  dragging_ = false;
}

void DatalogChart::mouseMoveEvent(QMouseEvent* event) {
  if (!press_x_ || !(event->buttons() & Qt::LeftButton)) return;
  const int dx = static_cast<int>(event->position().x()) - *press_x_;
  if (!dragging_ && std::abs(dx) < kDragThreshold) return;
  dragging_ = true;
  const double seconds_per_pixel = (press_axis_.max - press_axis_.min) / PlotRect().width();
  TakeAxisInHand(PanAxis(press_axis_, -dx * seconds_per_pixel));
}

void DatalogChart::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton || !press_x_) return;
  if (!dragging_) SetCursors(TimeAt(*press_x_), cursor_b_);
  press_x_.reset();
  dragging_ = false;
}

void DatalogChart::mouseDoubleClickEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  ShowWholeLog();
  emit AxisChangedByHand();
}

}  // namespace vela

#include "moc_datalog_chart.cpp"
