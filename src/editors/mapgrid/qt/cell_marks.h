// The marks an overlay puts on a map's cells (a comparison's differing cells): a frame inside a
// grid cell's edges, a ringed dot on the graph's surface.
#pragma once

#include <QColor>
#include <QModelIndex>
#include <QPainter>
#include <QRect>

namespace vela {

// The frame of the cell at `index` when its model gives a mark (MapGridTable::kCellMarkRole).
void PaintCellMark(QPainter& painter, const QRect& cell, const QModelIndex& index);

// A mark on the graph at a cell's point of the surface.
void PaintGraphMark(QPainter& painter, QPointF at, const QColor& colour);

}  // namespace vela
