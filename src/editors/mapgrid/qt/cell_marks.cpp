#include "editors/mapgrid/qt/cell_marks.h"

#include "editors/mapgrid/qt/map_grid_table.h"

namespace vela {

void PaintCellMark(QPainter& painter, const QRect& cell, const QModelIndex& index) {
  const QVariant mark = index.data(MapGridTable::kCellMarkRole);
  if (!mark.isValid()) return;
  painter.save();
  painter.setPen(QPen(mark.value<QColor>(), 3));
  painter.setBrush(Qt::NoBrush);
  painter.drawRect(QRectF(cell).adjusted(2.5, 2.5, -2.5, -2.5));
  painter.restore();
}

void PaintGraphMark(QPainter& painter, QPointF at, const QColor& colour) {
  painter.save();
  painter.setPen(QPen(Qt::white, 1.5));
  painter.setBrush(colour);
  painter.drawEllipse(at, 4.0, 4.0);
  painter.restore();
}

}  // namespace vela
