#include "editors/mapgrid/qt/map_surface_view.h"

#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>

namespace vela {

namespace {

constexpr int kValueAxisSegments = 5;
constexpr double kDegreesPerPixelTurned = 0.5;
constexpr double kDegreesPerPixelTilted = 0.3;
constexpr double kSurfaceLabelGap = 4;  // pixels between an edge and its labels

QPointF At(const ScreenPoint& p) { return {p.x, p.y}; }

// `text` centred `gap` beyond `edge_point`, away from `centre`.
QRectF LabelRect(const QFontMetricsF& metrics, const QString& text, QPointF edge_point,
                 QPointF centre, double gap) {
  QPointF away = edge_point - centre;
  const double length = std::hypot(away.x(), away.y());
  away = length > 1e-9 ? away / length : QPointF(0, 1);
  const QSizeF size(metrics.horizontalAdvance(text) + 2, metrics.height());
  // Far enough that the text's nearest side keeps `gap` from the edge in the direction away.
  const double reach =
      gap + std::abs(away.x()) * size.width() / 2 + std::abs(away.y()) * size.height() / 2;
  const QPointF middle = edge_point + away * reach;
  return QRectF(middle - QPointF(size.width() / 2, size.height() / 2), size);
}

}  // namespace

// The labels of the floor's two axes, each placed clear of those drawn before it.
class MapSurfaceView::SurfaceAxisLabels {
 public:
  SurfaceAxisLabels(QPainter& painter, const QFontMetricsF& metrics, QPointF centre)
      : painter_(painter), metrics_(metrics), centre_(centre) {}

  bool IsFree(const QRectF& box) const {
    return std::none_of(taken_.begin(), taken_.end(), [&](const QRectF& other) {
      return box.adjusted(-3, 0, 3, 0).intersects(other);
    });
  }

  // One label per place (`to_point` turns a place into the edge point), then the axis title.
  template <typename ToPoint>
  void PaintAxis(const QStringList& texts, const std::vector<double>& places, ToPoint to_point,
                 const QString& title) {
    // Both ends first, so that a crowded axis still shows where it starts and ends.
    const int count = std::min(static_cast<int>(texts.size()), static_cast<int>(places.size()));
    std::vector<int> order;
    if (count > 0) order.push_back(0);
    if (count > 1) order.push_back(count - 1);
    for (int i = 1; i + 1 < count; ++i) order.push_back(i);
    for (const int i : order) {
      const QPointF edge = to_point(places[static_cast<std::size_t>(i)]);
      const QRectF box = LabelRect(metrics_, texts[i].trimmed(), edge, centre_, kSurfaceLabelGap);
      if (!IsFree(box)) continue;
      painter_.drawText(box, Qt::AlignCenter, texts[i].trimmed());
      taken_.push_back(box);
    }
    PaintTitle(texts, to_point(0.5), title);
  }

 private:
  // The title stands beyond the widest label, measured in the direction away from the box.
  void PaintTitle(const QStringList& texts, QPointF middle, const QString& title) {
    double widest = 0;
    for (const QString& text : texts) {
      widest = std::max(widest, metrics_.horizontalAdvance(text.trimmed()) + 2);
    }
    const QPointF away = middle - centre_;
    const double length = std::max(std::hypot(away.x(), away.y()), 1e-9);
    const double labels_reach =
        std::abs(away.x()) / length * widest + std::abs(away.y()) / length * metrics_.height();
    const QRectF box =
        LabelRect(metrics_, title, middle, centre_, 2 * kSurfaceLabelGap + labels_reach);
    painter_.drawText(box, Qt::AlignCenter, title);
  }

  QPainter& painter_;
  QFontMetricsF metrics_;
  QPointF centre_;
  std::vector<QRectF> taken_;
};

MapSurfaceView::MapSurfaceView(QWidget* parent) : QWidget(parent) {
  setAttribute(Qt::WA_OpaquePaintEvent);
  setMinimumSize(160, 120);
  setCursor(Qt::OpenHandCursor);
  setFocusPolicy(Qt::NoFocus);
  InstallPaintedTextAccessible<MapSurfaceView, QAccessible::Chart, &MapSurfaceView::MarkerText>();
}

void MapSurfaceView::SetData(MapGraphData data) {
  data_ = std::move(data);
  load_x_.clear();
  for (const double load : data_.load_axis) load_x_.push_back(AxisShare(data_.load_axis, load));
  rpm_z_.clear();
  for (const double rpm : data_.rpm_axis) rpm_z_.push_back(1.0 - AxisShare(data_.rpm_axis, rpm));
  if (!data_.values.empty()) {
    const auto [low, high] = std::minmax_element(data_.values.begin(), data_.values.end());
    value_scale_ = NiceScale(data_.kind == MapKind::kFuel ? std::min(0.0, *low) : *low, *high,
                             kValueAxisSegments);
  }
  Restage();
}

void MapSurfaceView::SetMarker(std::optional<OperatingPoint> point) {
  point_ = point;
  // A hidden graph places its point when it is shown.
  if (!isVisible()) return;
  const std::optional<Marker> placed = PlaceMarker();
  const bool same = placed.has_value() == marker_.has_value() &&
                    (!placed || (placed->top.toPoint() == marker_->top.toPoint() &&
                                 placed->text == marker_->text));
  if (same) return;
  QRectF dirty = marker_ ? marker_->bounds : QRectF();
  if (placed) dirty = dirty.united(placed->bounds);
  TakeMarker(placed);
  update(dirty.toAlignedRect());
}

void MapSurfaceView::TakeMarker(std::optional<Marker> marker) {
  marker_ = std::move(marker);
  announcer_.Changed(MarkerText());
}

void MapSurfaceView::SetAngles(ViewAngles angles) {
  angles_ = ClampedAngles(angles);
  Restage();
}

void MapSurfaceView::Restage() {
  scene_stale_ = true;
  box_area_ = BoxArea();
  view_ = SurfaceProjection(angles_, box_area_.width(), box_area_.height());
  TakeMarker(PlaceMarker());
  update();
}

QRectF MapSurfaceView::BoxArea() const {
  const QFontMetricsF metrics(font());
  const double side = metrics.horizontalAdvance(QStringLiteral("00000")) + metrics.height();
  const double top = metrics.height() * 2.2;
  const double bottom = metrics.height() * 2.6;
  return QRectF(side, top, std::max(width() - 2 * side, 10.0),
                std::max(height() - top - bottom, 10.0));
}

double MapSurfaceView::ValueShare(double value) const {
  const double span = value_scale_.max - value_scale_.min;
  return span > 0 ? (value - value_scale_.min) / span : 0.5;
}

void MapSurfaceView::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  Restage();
}

void MapSurfaceView::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  Restage();
}

void MapSurfaceView::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() == QEvent::FontChange) Restage();
}

void MapSurfaceView::paintEvent(QPaintEvent*) {
  if (scene_stale_ || scene_.size() != size() * devicePixelRatioF()) {
    scene_ = QPixmap(size() * devicePixelRatioF());
    scene_.setDevicePixelRatio(devicePixelRatioF());
    QPainter scene_painter(&scene_);
    PaintScene(scene_painter);
    scene_stale_ = false;
  }
  QPainter painter(this);
  painter.drawPixmap(0, 0, scene_);
  if (!marker_) return;
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(QColor(20, 20, 20, 200), 1.5, Qt::DashLine));
  painter.drawLine(marker_->floor, marker_->top);
  painter.setPen(QPen(QColor(20, 20, 20), 2));
  painter.setBrush(Qt::white);
  painter.drawEllipse(marker_->top, 5.0, 5.0);
  painter.setBrush(QColor(20, 20, 20));
  painter.drawEllipse(marker_->floor, 2.5, 2.5);
  painter.setPen(QColor(60, 60, 60));
  painter.setBrush(QColor(255, 255, 240, 230));
  painter.drawRect(marker_->label);
  painter.setPen(QColor(20, 20, 20));
  painter.drawText(marker_->label, Qt::AlignCenter, marker_->text);
}

std::optional<MapSurfaceView::Marker> MapSurfaceView::PlaceMarker() const {
  if (!point_ || data_.sites <= 0 || data_.values.empty()) return std::nullopt;
  const double row = point_->row - 1.0;
  const double column = point_->column - 1.0;
  const double rpm = AxisAt(data_.rpm_axis, row);
  const double load = AxisAt(data_.load_axis, column);
  const double value = ValueBetween(data_.values, kMapRows, data_.sites, row, column);
  const QPointF origin = box_area_.topLeft();
  const double x = AxisShare(data_.load_axis, load);
  const double z = 1.0 - AxisShare(data_.rpm_axis, rpm);
  Marker marker;
  marker.top = At(view_.Project(x, std::clamp(ValueShare(value), 0.0, 1.0), z)) + origin;
  marker.floor = At(view_.Project(x, 0.0, z)) + origin;
  marker.text =
      QStringLiteral("%1 rpm, %2 %3: %4 %5")
          .arg(std::lround(rpm))
          .arg(std::lround(load))
          .arg(data_.load_unit, GraphValueText(data_.kind, value), GraphValueUnit(data_.kind));
  const QFontMetricsF metrics(font());
  const QRectF label(marker.top + QPointF(9, -9 - metrics.height()),
                     QSizeF(metrics.horizontalAdvance(marker.text) + 8, metrics.height() + 2));
  // Beside the point, kept inside the view.
  marker.label =
      label.translated(std::min(0.0, width() - label.right()), std::max(0.0, -label.top()));
  marker.bounds = QRectF(marker.top, marker.floor)
                      .normalized()
                      .adjusted(-8, -8, 8, 8)
                      .united(marker.label.adjusted(-2, -2, 2, 2));
  return marker;
}

void MapSurfaceView::PaintScene(QPainter& painter) const {
  painter.fillRect(rect(), palette().window());
  if (data_.sites <= 0 || data_.values.empty()) return;
  painter.setRenderHint(QPainter::Antialiasing);
  painter.translate(box_area_.topLeft());
  PaintFloorAndWalls(painter);
  PaintSurface(painter);
  PaintLabels(painter);
}

// The floor with a line at every site, and the two far walls with a line at every step of the
// value axis.
void MapSurfaceView::PaintFloorAndWalls(QPainter& painter) const {
  const SurfaceProjection& view = view_;
  const auto [near_x, near_z] = view.NearestFloorCorner();
  const double far_x = 1 - near_x;
  const double far_z = 1 - near_z;
  const QColor wall = palette().base().color().darker(104);
  const QPen line(palette().mid().color(), 1);
  painter.setPen(line);
  painter.setBrush(wall);
  const auto quad = [&](std::array<std::array<double, 3>, 4> corners) {
    QPolygonF polygon;
    for (const auto& c : corners) polygon << At(view.Project(c[0], c[1], c[2]));
    painter.drawPolygon(polygon);
  };
  quad({{{0, 0, 0}, {1, 0, 0}, {1, 0, 1}, {0, 0, 1}}});
  quad({{{far_x, 0, 0}, {far_x, 1, 0}, {far_x, 1, 1}, {far_x, 0, 1}}});
  quad({{{0, 0, far_z}, {1, 0, far_z}, {1, 1, far_z}, {0, 1, far_z}}});
  painter.setPen(QPen(palette().midlight().color(), 1));
  for (const double x : load_x_) {
    painter.drawLine(At(view.Project(x, 0, 0)), At(view.Project(x, 0, 1)));
  }
  for (const double z : rpm_z_) {
    painter.drawLine(At(view.Project(0, 0, z)), At(view.Project(1, 0, z)));
  }
  for (int step = 1; step <= value_scale_.segments; ++step) {
    const double y = static_cast<double>(step) / value_scale_.segments;
    painter.drawLine(At(view.Project(far_x, y, near_z)), At(view.Project(far_x, y, far_z)));
    painter.drawLine(At(view.Project(near_x, y, far_z)), At(view.Project(far_x, y, far_z)));
  }
}

void MapSurfaceView::PaintSurface(QPainter& painter) const {
  const int rows = kMapRows;
  const int columns = data_.sites;
  std::vector<ScreenPoint> points;
  points.reserve(static_cast<std::size_t>(rows * columns));
  for (int row = 1; row <= rows; ++row) {
    for (int column = 1; column <= columns; ++column) {
      const double y = std::clamp(ValueShare(data_.At(row, column)), 0.0, 1.0);
      points.push_back(view_.Project(load_x_[column - 1], y, rpm_z_[row - 1]));
    }
  }
  if (columns < 2) {
    // A single load site: the map is a line over RPM.
    painter.setPen(QPen(QColor(30, 30, 30), 2));
    for (int row = 1; row < rows; ++row) {
      painter.drawLine(At(points[row - 1]), At(points[row]));
    }
    return;
  }
  painter.setPen(QPen(QColor(30, 30, 30, 150), 1));
  const auto point = [&](int row, int column) {
    return At(points[static_cast<std::size_t>(row * columns + column)]);
  };
  for (const int cell : CellsFarthestFirst(points, rows, columns)) {
    const int row = cell / (columns - 1);
    const int column = cell % (columns - 1);
    const double fraction =
        (data_.FractionAt(row + 1, column + 1) + data_.FractionAt(row + 1, column + 2) +
         data_.FractionAt(row + 2, column + 1) + data_.FractionAt(row + 2, column + 2)) /
        4.0;
    painter.setBrush(RampQColor(fraction));
    const QPointF corners[] = {point(row, column), point(row, column + 1),
                               point(row + 1, column + 1), point(row + 1, column)};
    painter.drawPolygon(corners, 4);
  }
  PaintMarks(painter, points);
}

void MapSurfaceView::PaintMarks(QPainter& painter, const std::vector<ScreenPoint>& points) const {
  painter.save();
  painter.setPen(QPen(Qt::white, 1.5));
  for (std::size_t at = 0; at < points.size() && at < data_.marks.size(); ++at) {
    if (!data_.marks[at].isValid()) continue;
    painter.setBrush(data_.marks[at]);
    painter.drawEllipse(At(points[at]), 4.0, 4.0);
  }
  painter.restore();
}

// Load labels along the near floor edge that runs with load, RPM labels along the one that runs
// with RPM, value labels up the outer edge of the far walls; a label that would overlap one
// already drawn is left out.
void MapSurfaceView::PaintLabels(QPainter& painter) const {
  const SurfaceProjection& view = view_;
  const auto [near_x, near_z] = view.NearestFloorCorner();
  painter.setPen(palette().windowText().color());
  SurfaceAxisLabels labels(painter, QFontMetricsF(font()), At(view.Project(0.5, 0, 0.5)));
  labels.PaintAxis(
      data_.load_labels, load_x_, [&](double x) { return At(view.Project(x, 0, near_z)); },
      QStringLiteral("Load (%1)").arg(data_.load_unit));
  labels.PaintAxis(
      data_.rpm_labels, rpm_z_, [&](double z) { return At(view.Project(near_x, 0, z)); },
      QStringLiteral("RPM"));
  PaintValueAxis(painter, labels);
}

void MapSurfaceView::PaintValueAxis(QPainter& painter, const SurfaceAxisLabels& labels) const {
  const SurfaceProjection& view = view_;
  const auto [near_x, near_z] = view.NearestFloorCorner();
  const QFontMetricsF metrics(font());
  // The value axis stands at whichever outer corner of the far walls lies further out.
  const double far_x = 1 - near_x;
  const double far_z = 1 - near_z;
  const QPointF left_corner = At(view.Project(far_x, 0, near_z));
  const QPointF right_corner = At(view.Project(near_x, 0, far_z));
  const bool on_left = left_corner.x() <= right_corner.x();
  const double corner_x = on_left ? far_x : near_x;
  const double corner_z = on_left ? near_z : far_z;
  const double step = (value_scale_.max - value_scale_.min) / value_scale_.segments;
  QPointF top;
  for (int i = 0; i <= value_scale_.segments; ++i) {
    const double y = static_cast<double>(i) / value_scale_.segments;
    const QPointF at = At(view.Project(corner_x, y, corner_z));
    const QString text = QString::number(value_scale_.min + i * step, 'g', 6);
    const double text_width = metrics.horizontalAdvance(text) + 2;
    const QRectF box(on_left ? at.x() - kSurfaceLabelGap - text_width : at.x() + kSurfaceLabelGap,
                     at.y() - metrics.height() / 2, text_width, metrics.height());
    top = at;
    if (!labels.IsFree(box)) continue;
    painter.drawText(box, (on_left ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter, text);
  }
  const QString title = data_.kind == MapKind::kFuel ? QStringLiteral("Injector time (ms)")
                                                     : QStringLiteral("Advance (degrees)");
  const double title_width = metrics.horizontalAdvance(title) + 2;
  painter.drawText(QRectF(top.x() - title_width / 2, top.y() - metrics.height() * 1.9, title_width,
                          metrics.height()),
                   Qt::AlignCenter, title);
}

void MapSurfaceView::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return QWidget::mousePressEvent(event);
  drag_from_ = event->position();
  drag_angles_ = angles_;
  setCursor(Qt::ClosedHandCursor);
}

void MapSurfaceView::mouseMoveEvent(QMouseEvent* event) {
  if (!drag_from_) return QWidget::mouseMoveEvent(event);
  const QPointF moved = event->position() - *drag_from_;
  SetAngles({drag_angles_.turn_degrees - moved.x() * kDegreesPerPixelTurned,
             drag_angles_.tilt_degrees + moved.y() * kDegreesPerPixelTilted});
}

void MapSurfaceView::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return QWidget::mouseReleaseEvent(event);
  drag_from_.reset();
  setCursor(Qt::OpenHandCursor);
}

void MapSurfaceView::mouseDoubleClickEvent(QMouseEvent*) { SetAngles(ViewAngles{}); }

}  // namespace vela

#include "moc_map_surface_view.cpp"
