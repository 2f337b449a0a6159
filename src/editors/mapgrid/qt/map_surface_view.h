// The map graph's 3D view: the map drawn as a coloured surface over its load and RPM axes, with
// the live operating point standing on it. Painted by the program itself, so it needs no graphics
// chip: the scene is drawn once into a picture whenever the map, the size or the view changes,
// and a move of the live point paints only the point over that picture. Drag with the mouse to
// turn the view; a double click brings back the first view. Accessibility tools read it as a
// chart whose value is the live point's label (accessible_text.h).
#pragma once

#include <QPixmap>
#include <QWidget>
#include <optional>

#include "base/qt/accessible_text.h"
#include "editors/mapgrid/qt/map_graph_data.h"
#include "editors/mapgrid/surface_geometry.h"

namespace vela {

class MapSurfaceView : public QWidget {
  Q_OBJECT

 public:
  explicit MapSurfaceView(QWidget* parent = nullptr);

  void SetData(MapGraphData data);
  void SetMarker(std::optional<OperatingPoint> point);
  void SetAngles(ViewAngles angles);
  ViewAngles Angles() const { return angles_; }

  // What the live point's label says ("3720 rpm, 62 kPa: 6.51 ms"), empty without a point.
  QString MarkerText() const { return marker_ ? marker_->text : QString(); }

  QSize sizeHint() const override { return {420, 300}; }

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void changeEvent(QEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;

 private:
  struct Marker {
    QPointF top;    // on the surface
    QPointF floor;  // beneath it
    QString text;
    QRectF label;   // where the text stands
    QRectF bounds;  // everything the mark paints
  };

  QRectF BoxArea() const;
  double ValueShare(double value) const;
  void PaintScene(QPainter& painter) const;
  void PaintFloorAndWalls(QPainter& painter) const;
  void PaintSurface(QPainter& painter) const;
  // An overlay's marks at their cells' points of the surface, over it.
  void PaintMarks(QPainter& painter, const std::vector<ScreenPoint>& points) const;
  class SurfaceAxisLabels;  // places the floor axes' labels clear of each other
  void PaintLabels(QPainter& painter) const;
  void PaintValueAxis(QPainter& painter, const SurfaceAxisLabels& labels) const;
  std::optional<Marker> PlaceMarker() const;
  // The live point as it is to be painted; tools hear of a new label.
  void TakeMarker(std::optional<Marker> marker);
  void Restage();

  MapGraphData data_;
  // Where each load site and RPM site stands in the box (x and z, 0 to 1), taken with the data.
  std::vector<double> load_x_;
  std::vector<double> rpm_z_;
  AxisScale value_scale_{0.0, 1.0, 1};
  std::optional<OperatingPoint> point_;
  std::optional<Marker> marker_;
  ViewAngles angles_;
  // Worked out again whenever the size, the font or the view changes.
  QRectF box_area_;
  SurfaceProjection view_{ViewAngles{}, 1.0, 1.0};
  QPixmap scene_;
  bool scene_stale_ = true;
  std::optional<QPointF> drag_from_;
  ViewAngles drag_angles_;
  ValueAnnouncer announcer_{this};
};

}  // namespace vela
