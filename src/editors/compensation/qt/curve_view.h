// A small chart beside a table: the table's curve, the live operating point on it (a line at the
// live value and a dot where it meets the curve), optional marked points and an optional shaded
// region from a threshold on. Accessibility tools read it as a chart named by its title, its value
// the live mark's caption.
#pragma once

#include <QPixmap>
#include <QPointF>
#include <QString>
#include <QWidget>
#include <optional>
#include <vector>

#include "base/qt/accessible_text.h"

namespace vela {

class CurveView : public QWidget {
  Q_OBJECT

 public:
  explicit CurveView(QWidget* parent = nullptr);

  void SetTitle(const QString& title);
  void SetUnits(const QString& x_unit, const QString& y_unit);
  // The curve, in ascending x.
  void SetPoints(std::vector<QPointF> points);
  // Whether each point of the curve gets a dot (off for a finely sampled fitted curve).
  void SetPointDots(bool on) { point_dots_ = on; }
  // Points drawn as rings (measured points beside a fitted curve).
  void SetMarks(std::vector<QPointF> marks);
  // A y axis on a logarithmic scale (resistances).
  void SetLogY(bool on);
  // The x range when there is no curve to take it from.
  void SetXRange(double low, double high);
  // The shaded region from `x` on, with its caption; nullopt removes it.
  void SetShadeFrom(std::optional<double> x, const QString& caption = {});
  // The live value on the x axis; nullopt hides the marker.
  void SetLiveX(std::optional<double> x);

  // The curve's y at `x`, along the straight lines between its points (on a log axis, straight
  // in the logarithm); nullopt outside the curve.
  std::optional<double> CurveAt(double x) const;
  std::optional<double> LiveX() const { return live_x_; }
  // The text beside the live mark ("25 °C air: 100 %"), empty without one: accessibility tools
  // read it as the chart's value.
  QString LiveCaption() const { return live_caption_; }

  QSize sizeHint() const override { return {300, 200}; }
  QSize minimumSizeHint() const override { return {200, 140}; }

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  struct Range {
    double low;
    double high;
  };
  // The plot area and the ranges it shows, and where a value lands in it.
  struct Scale {
    QRectF plot;
    Range xr;
    Range yr;
    double X(double x) const;
    double Y(const CurveView& view, double y) const {
      return plot.bottom() - (view.Y(y) - yr.low) / (yr.high - yr.low) * plot.height();
    }
  };
  Range XRange() const;
  Range YRange() const;
  double Y(double value) const;  // value on the drawn y scale
  Scale ScaleNow() const;
  void PaintChart(QPainter& painter) const;
  void PaintShade(QPainter& painter, const Scale& scale) const;
  void PaintAxes(QPainter& painter, const Scale& scale) const;
  void PaintCurve(QPainter& painter, const Scale& scale) const;
  void PaintLive(QPainter& painter) const;
  // The chart changed: it is drawn afresh.
  void Invalidate();
  QString CaptionAt(std::optional<double> x) const;
  // Takes the caption of the live mark as it is to be painted now.
  void TakeCaption(const QString& caption);

  QString title_;
  QString x_unit_;
  QString y_unit_;
  std::vector<QPointF> points_;
  std::vector<QPointF> marks_;
  bool log_y_ = false;
  bool point_dots_ = true;
  std::optional<Range> x_range_;
  std::optional<double> shade_from_;
  QString shade_caption_;
  std::optional<double> live_x_;
  QString live_caption_;
  QPixmap chart_;  // the chart without the live mark
  ValueAnnouncer announcer_{this};
};

}  // namespace vela
