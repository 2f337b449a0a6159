// The picture of a scatter (X against Y, each pixel's colour the mean of a third channel, or its
// brightness the count of records there) or of a histogram, painted from the bins alone. A click
// on a scatter asks for the record nearest to it. Tools read it as a chart named after what it
// plots, its value the counts.
#pragma once

#include <QImage>
#include <QString>
#include <QWidget>
#include <functional>
#include <memory>
#include <optional>

#include "datalog/review/distribution.h"

namespace vela {

class ValueAnnouncer;

class DistributionPlot : public QWidget {
  Q_OBJECT

 public:
  explicit DistributionPlot(QWidget* parent = nullptr);
  ~DistributionPlot() override;

  // Shows `density` (its grid the plot rectangle's size), with the axes' names; its pixels are
  // coloured once, here, and painted as they are until the next.
  void ShowScatter(const review::ScatterDensity& density, const QString& x, const QString& y,
                   const QString& z);
  void ShowHistogram(const review::Histogram& histogram, const QString& channel);
  void ShowNothing(const QString& why);

  // Where the bins are drawn: a scatter's grid is made this size.
  QRect PlotRect() const;
  // What tools read: the counts shown.
  QString ValueText() const { return value_; }

 signals:
  // A click at pixel (px, py) of the scatter's grid.
  void Clicked(double px, double py);
  // The plot rectangle changed size: a scatter is binned again.
  void Resized();

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  void PaintScatter(class QPainter& painter, QRect plot);
  void PaintHistogram(class QPainter& painter, QRect plot);
  void PaintAxes(class QPainter& painter, QRect plot, double x0, double x1, double y0, double y1);
  void Announce(const QString& name, const QString& value);

  enum class Shown { kNothing, kScatter, kHistogram };
  Shown shown_ = Shown::kNothing;
  const review::ScatterDensity* density_ = nullptr;
  QImage scatter_;  // the density's pixels, made when it is shown
  review::Histogram histogram_;
  QString x_name_, y_name_, z_name_, value_;
  std::unique_ptr<ValueAnnouncer> announcer_;
};

}  // namespace vela
