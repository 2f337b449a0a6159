// The map graph's flat view, used where no OpenGL context is to be had: the map painted as a
// heat map, RPM down the left (highest at the top, as in the grid) and load along the bottom.
#pragma once

#include <QWidget>
#include <optional>

#include "editors/mapgrid/qt/map_graph_data.h"

namespace vela {

class MapHeatView : public QWidget {
  Q_OBJECT

 public:
  explicit MapHeatView(QWidget* parent = nullptr);

  void SetData(MapGraphData data);
  void SetMarker(std::optional<OperatingPoint> point);
  const MapGraphData& Data() const { return data_; }
  QSize sizeHint() const override { return {420, 300}; }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QRectF CellArea() const;
  void PaintCells(QPainter& painter, const QRectF& area) const;
  void PaintAxes(QPainter& painter, const QRectF& area) const;
  void PaintMarker(QPainter& painter, const QRectF& area) const;

  MapGraphData data_;
  std::optional<OperatingPoint> marker_;
};

}  // namespace vela
