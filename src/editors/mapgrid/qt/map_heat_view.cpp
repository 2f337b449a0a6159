#include "editors/mapgrid/qt/map_heat_view.h"

#include <QPainter>
#include <algorithm>

namespace vela {

MapHeatView::MapHeatView(QWidget* parent) : QWidget(parent) {
  setAttribute(Qt::WA_OpaquePaintEvent);
  setMinimumSize(160, 120);
}

void MapHeatView::SetData(MapGraphData data) {
  data_ = std::move(data);
  update();
}

void MapHeatView::SetMarker(std::optional<OperatingPoint> point) {
  marker_ = point;
  update();
}

QRectF MapHeatView::CellArea() const {
  const QFontMetrics metrics(font());
  const double left = metrics.horizontalAdvance(QStringLiteral("00000")) + 10;
  const double top = metrics.height() + 8;
  const double bottom = 2 * metrics.height() + 8;
  return QRectF(left, top, std::max(width() - left - 8, 1.0),
                std::max(height() - top - bottom, 1.0));
}

void MapHeatView::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.fillRect(rect(), palette().window());
  if (data_.sites <= 0) return;
  const QRectF area = CellArea();
  PaintCells(painter, area);
  PaintAxes(painter, area);
  PaintMarker(painter, area);
}

void MapHeatView::PaintCells(QPainter& painter, const QRectF& area) const {
  const double cell_width = area.width() / data_.sites;
  const double cell_height = area.height() / kMapRows;
  const QFontMetrics metrics(font());
  const bool with_text = cell_width > metrics.horizontalAdvance(QStringLiteral("00.00")) + 4 &&
                         cell_height > metrics.height();
  for (int row = 1; row <= kMapRows; ++row) {
    for (int column = 1; column <= data_.sites; ++column) {
      const QRectF cell(area.left() + (column - 1) * cell_width,
                        area.top() + (row - 1) * cell_height, cell_width, cell_height);
      painter.fillRect(cell, RampQColor(data_.FractionAt(row, column)));
      if (!with_text) continue;
      painter.setPen(QColor(20, 20, 20));
      painter.drawText(cell, Qt::AlignCenter, GraphValueText(data_.kind, data_.At(row, column)));
    }
  }
  painter.setPen(QPen(QColor(255, 255, 255, 110), 1));
  for (int column = 1; column < data_.sites; ++column) {
    const double x = area.left() + column * cell_width;
    painter.drawLine(QPointF(x, area.top()), QPointF(x, area.bottom()));
  }
  for (int row = 1; row < kMapRows; ++row) {
    const double y = area.top() + row * cell_height;
    painter.drawLine(QPointF(area.left(), y), QPointF(area.right(), y));
  }
}

void MapHeatView::PaintAxes(QPainter& painter, const QRectF& area) const {
  const QFontMetrics metrics(font());
  const double cell_width = area.width() / data_.sites;
  const double cell_height = area.height() / kMapRows;
  painter.setPen(palette().windowText().color());
  painter.drawText(QRectF(0, 0, width(), area.top()), Qt::AlignCenter, data_.title);
  for (int row = 1; row <= kMapRows; ++row) {
    const QRectF label(0, area.top() + (row - 1) * cell_height, area.left() - 5, cell_height);
    painter.drawText(label, Qt::AlignRight | Qt::AlignVCenter, data_.rpm_labels.value(row - 1));
  }
  const int widest = metrics.horizontalAdvance(QStringLiteral("0000")) + 4;
  const int every = std::max(1, static_cast<int>(widest / std::max(cell_width, 1.0)) + 1);
  for (int column = 1; column <= data_.sites; column += every) {
    const QRectF label(area.left() + (column - 1) * cell_width, area.bottom() + 2, cell_width,
                       metrics.height());
    painter.drawText(label, Qt::AlignCenter, data_.load_labels.value(column - 1));
  }
  const QString units = GraphValueUnit(data_.kind);
  painter.drawText(
      QRectF(area.left(), area.bottom() + metrics.height() + 2, area.width(), metrics.height()),
      Qt::AlignCenter,
      QStringLiteral("RPM down, load (%1) across; %2").arg(data_.load_unit, units));
}

void MapHeatView::PaintMarker(QPainter& painter, const QRectF& area) const {
  if (!marker_) return;
  const double x = area.left() + (marker_->column - 0.5) * area.width() / data_.sites;
  const double y = area.top() + (marker_->row - 0.5) * area.height() / kMapRows;
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(QColor(20, 20, 20, 210), 2));
  painter.drawLine(QPointF(area.left(), y), QPointF(area.right(), y));
  painter.drawLine(QPointF(x, area.top()), QPointF(x, area.bottom()));
  painter.setBrush(Qt::NoBrush);
  painter.drawEllipse(QPointF(x, y), 6.0, 6.0);
}

}  // namespace vela

#include "moc_map_heat_view.cpp"
