#include "editors/compensation/qt/curve_view.h"

#include <QEvent>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>

#include "editors/mapgrid/map_display.h"

namespace vela {

namespace {

constexpr int kLeft = 52;
constexpr int kRight = 12;
constexpr int kTop = 22;
constexpr int kBottom = 30;
constexpr int kAxisSegments = 4;

// Segments of the x axis: the most (up to 7) that give a step of a whole or half unit.
int XSegments(double low, double high) {
  for (int n = 7; n >= 4; --n) {
    const double twice_step = 2.0 * (high - low) / n;
    if (std::abs(twice_step - std::round(twice_step)) < 1e-9) return n;
  }
  return kAxisSegments;
}

QString Number(double value) {
  const double magnitude = std::abs(value);
  const int decimals = magnitude >= 100 || value == std::round(value) ? 0 : magnitude >= 10 ? 1 : 2;
  return QString::number(value, 'f', decimals);
}

}  // namespace

CurveView::CurveView(QWidget* parent) : QWidget(parent) {
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
  setAttribute(Qt::WA_OpaquePaintEvent);  // the chart's picture covers the whole widget
  InstallPaintedTextAccessible<CurveView, QAccessible::Chart, &CurveView::LiveCaption>();
}

void CurveView::Invalidate() {
  chart_ = QPixmap();
  update();
  TakeCaption(CaptionAt(live_x_));
}

void CurveView::TakeCaption(const QString& caption) {
  if (caption == live_caption_) return;
  live_caption_ = caption;
  announcer_.Changed(live_caption_);
}

QString CurveView::CaptionAt(std::optional<double> x) const {
  if (!x) return {};
  QString caption = Number(*x) + " " + x_unit_;
  const Range xr = XRange();
  if (const std::optional<double> y = CurveAt(std::clamp(*x, xr.low, xr.high))) {
    caption += QStringLiteral(": ") + Number(*y) + " " + y_unit_;
  }
  return caption;
}

void CurveView::resizeEvent(QResizeEvent* event) {
  chart_ = QPixmap();
  QWidget::resizeEvent(event);
}

void CurveView::changeEvent(QEvent* event) {
  if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange) {
    chart_ = QPixmap();
  }
  QWidget::changeEvent(event);
}

void CurveView::SetTitle(const QString& title) {
  title_ = title;
  setAccessibleName(title);
  Invalidate();
}

void CurveView::SetUnits(const QString& x_unit, const QString& y_unit) {
  x_unit_ = x_unit;
  y_unit_ = y_unit;
  Invalidate();
}

void CurveView::SetPoints(std::vector<QPointF> points) {
  points_ = std::move(points);
  Invalidate();
}

void CurveView::SetMarks(std::vector<QPointF> marks) {
  marks_ = std::move(marks);
  Invalidate();
}

void CurveView::SetLogY(bool on) {
  log_y_ = on;
  Invalidate();
}

void CurveView::SetXRange(double low, double high) {
  x_range_ = Range{low, high};
  Invalidate();
}

void CurveView::SetShadeFrom(std::optional<double> x, const QString& caption) {
  shade_from_ = x;
  shade_caption_ = caption;
  Invalidate();
}

// The live value changes with every refresh; the chart is drawn again only when its mark moves
// to another pixel or its caption reads differently.
void CurveView::SetLiveX(std::optional<double> x) {
  if (x == live_x_) return;
  const auto pixel = [this](std::optional<double> value) {
    if (!value) return -1;
    const Range xr = XRange();
    const double plot_width = width() - kLeft - kRight;
    const double share = (std::clamp(*value, xr.low, xr.high) - xr.low) / (xr.high - xr.low);
    return static_cast<int>(std::lround(share * plot_width));
  };
  const QString caption = CaptionAt(x);
  const bool moved = pixel(x) != pixel(live_x_) || caption != live_caption_;
  live_x_ = x;
  if (!moved) return;
  update();
  TakeCaption(caption);
}

double CurveView::Y(double value) const {
  return log_y_ ? std::log10(std::max(value, 1e-9)) : value;
}

std::optional<double> CurveView::CurveAt(double x) const {
  for (std::size_t i = 0; i + 1 < points_.size(); ++i) {
    const QPointF& a = points_[i];
    const QPointF& b = points_[i + 1];
    if (x < a.x() || x > b.x() || a.x() == b.x()) continue;
    const double share = (x - a.x()) / (b.x() - a.x());
    const double y = Y(a.y()) + (Y(b.y()) - Y(a.y())) * share;
    return log_y_ ? std::pow(10.0, y) : y;
  }
  return std::nullopt;
}

CurveView::Range CurveView::XRange() const {
  if (x_range_) return *x_range_;
  if (points_.empty()) return {0.0, 1.0};
  return {points_.front().x(), points_.back().x()};
}

CurveView::Range CurveView::YRange() const {
  double low = 0.0;
  double high = 1.0;
  bool any = false;
  for (const auto* list : {&points_, &marks_}) {
    for (const QPointF& p : *list) {
      low = any ? std::min(low, Y(p.y())) : Y(p.y());
      high = any ? std::max(high, Y(p.y())) : Y(p.y());
      any = true;
    }
  }
  if (log_y_)
    return {std::floor(low), std::ceil(high) > std::floor(low) ? std::ceil(high) : low + 1};
  const AxisScale scale = NiceScale(std::min(low, 0.0), high, kAxisSegments);
  return {scale.min, scale.max};
}

CurveView::Scale CurveView::ScaleNow() const {
  return {QRectF(kLeft, kTop, width() - kLeft - kRight, height() - kTop - kBottom), XRange(),
          YRange()};
}

double CurveView::Scale::X(double x) const {
  return plot.left() + (x - xr.low) / (xr.high - xr.low) * plot.width();
}

// The chart without the live mark is drawn once into a picture and kept until the chart changes:
// the live mark moves ten times a second, and drawing the curve again each time would cost many
// times more than the mark.
void CurveView::paintEvent(QPaintEvent*) {
  const qreal ratio = devicePixelRatioF();
  if (chart_.isNull() || chart_.size() != size() * ratio) {
    chart_ = QPixmap(size() * ratio);
    chart_.setDevicePixelRatio(ratio);
    QPainter chart(&chart_);
    PaintChart(chart);
  }
  QPainter painter(this);
  painter.drawPixmap(0, 0, chart_);
  PaintLive(painter);
}

void CurveView::PaintChart(QPainter& painter) const {
  painter.setFont(font());
  painter.setRenderHint(QPainter::Antialiasing);
  painter.fillRect(rect(), palette().base());
  const Scale scale = ScaleNow();
  painter.setPen(palette().text().color());
  const QRectF title_area(kLeft, 2, width() - kLeft - kRight, kTop - 4);
  painter.drawText(
      title_area, Qt::AlignHCenter | Qt::AlignTop,
      fontMetrics().elidedText(title_, Qt::ElideRight, static_cast<int>(title_area.width())));
  PaintShade(painter, scale);
  PaintAxes(painter, scale);
  painter.setPen(QPen(palette().text().color(), 1));
  painter.drawRect(scale.plot);
  PaintCurve(painter, scale);
}

void CurveView::PaintShade(QPainter& painter, const Scale& scale) const {
  if (!shade_from_ || *shade_from_ >= scale.xr.high) return;
  const QRectF& plot = scale.plot;
  const double from = std::max(scale.X(*shade_from_), plot.left());
  const QRectF shade(from, plot.top(), plot.right() - from, plot.height());
  painter.fillRect(shade, QColor(255, 120, 100, 60));
  painter.drawText(shade.adjusted(4, 2, -2, 0), Qt::AlignLeft | Qt::AlignTop, shade_caption_);
}

// Dotted lines across at each value step (numbered once there are values), the x steps beneath,
// and the two units.
void CurveView::PaintAxes(QPainter& painter, const Scale& scale) const {
  const QRectF& plot = scale.plot;
  const Range& xr = scale.xr;
  const Range& yr = scale.yr;
  const bool values = !points_.empty() || !marks_.empty();
  for (int i = 0; i <= kAxisSegments; ++i) {
    const double y = yr.low + (yr.high - yr.low) * i / kAxisSegments;
    const double value = log_y_ ? std::pow(10.0, y) : y;
    const double at = plot.bottom() - plot.height() * i / kAxisSegments;
    painter.setPen(QPen(QColor(200, 200, 200), 1, Qt::DotLine));
    painter.drawLine(QPointF(plot.left(), at), QPointF(plot.right(), at));
    painter.setPen(palette().text().color());
    if (values) {
      painter.drawText(QRectF(0, at - 8, kLeft - 4, 16), Qt::AlignRight | Qt::AlignVCenter,
                       Number(value));
    }
  }
  const int x_segments = XSegments(xr.low, xr.high);
  for (int i = 0; i <= x_segments; ++i) {
    const double x = xr.low + (xr.high - xr.low) * i / x_segments;
    painter.drawText(QRectF(scale.X(x) - 30, plot.bottom() + 2, 60, 14), Qt::AlignHCenter,
                     Number(x));
  }
  painter.drawText(QRectF(plot.left(), plot.bottom() + 14, plot.width(), 14), Qt::AlignRight,
                   x_unit_);
  painter.drawText(QRectF(2, 2, kLeft - 4, 16), Qt::AlignLeft,
                   fontMetrics().elidedText(y_unit_, Qt::ElideRight, kLeft - 4));
}

// The curve through the points (with a dot at each when asked), then the marks.
void CurveView::PaintCurve(QPainter& painter, const Scale& scale) const {
  const auto px = [&](double x) { return scale.X(x); };
  const auto py = [&](double y) { return scale.Y(*this, y); };
  if (points_.size() >= 2) {
    QPainterPath path;
    path.moveTo(px(points_.front().x()), py(points_.front().y()));
    for (const QPointF& p : points_) path.lineTo(px(p.x()), py(p.y()));
    painter.setPen(QPen(QColor(30, 90, 200), 2));
    painter.drawPath(path);
    painter.setBrush(QColor(30, 90, 200));
    if (point_dots_) {
      for (const QPointF& p : points_) painter.drawEllipse(QPointF(px(p.x()), py(p.y())), 2.5, 2.5);
    }
  }
  painter.setBrush(Qt::NoBrush);
  painter.setPen(QPen(QColor(200, 100, 0), 2));
  for (const QPointF& p : marks_) painter.drawEllipse(QPointF(px(p.x()), py(p.y())), 5, 5);
}

void CurveView::PaintLive(QPainter& painter) const {
  if (!live_x_) return;
  painter.setRenderHint(QPainter::Antialiasing);
  const Scale scale = ScaleNow();
  const QRectF& plot = scale.plot;
  const auto px = [&](double x) { return scale.X(x); };
  const auto py = [&](double y) { return scale.Y(*this, y); };
  const double x = std::clamp(*live_x_, scale.xr.low, scale.xr.high);
  painter.setPen(QPen(QColor(220, 30, 30), 1.5, Qt::DashLine));
  painter.drawLine(QPointF(px(x), plot.top()), QPointF(px(x), plot.bottom()));
  if (const std::optional<double> y = CurveAt(x)) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(220, 30, 30));
    painter.drawEllipse(QPointF(px(x), py(*y)), 5, 5);
  }
  painter.setPen(QColor(180, 20, 20));
  painter.drawText(plot.adjusted(4, 2, -4, -2), Qt::AlignRight | Qt::AlignTop, live_caption_);
}

}  // namespace vela

#include "moc_curve_view.cpp"
