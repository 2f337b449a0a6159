#include "app/review/distribution_plot.h"

#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>

#include "base/qt/accessible_text.h"
#include "datalog/chart/chart_view.h"

namespace vela {

namespace {

constexpr int kLeftMargin = 72;
constexpr int kBottomMargin = 34;
constexpr int kEdge = 8;

QString Number(double value) { return QString::number(value, 'g', 5); }

// A mean of Z from blue (lowest) through green to red (highest).
QColor ZColour(float z, const review::ValueSpan& span) {
  const double width = span.high - span.low;
  const double f = width > 0.0 ? std::clamp((z - span.low) / width, 0.0, 1.0) : 0.5;
  return QColor::fromHsvF(static_cast<float>((1.0 - f) * 0.66), 0.9f, 1.0f);
}

// A count as brightness: the square root keeps single records visible beside dense clusters.
QColor CountColour(std::uint32_t count, double max_count) {
  const double f = max_count > 0.0 ? std::sqrt(count / max_count) : 1.0;
  const int level = 70 + static_cast<int>(185.0 * f);
  return QColor(level, level, level);
}

// The density's pixels: each record-holding pixel in its channel's colour, or by its count.
QImage ScatterImage(const review::ScatterDensity& d) {
  const review::ScatterGrid& g = d.grid;
  QImage image(g.width, g.height, QImage::Format_RGB32);
  image.fill(QColor(12, 12, 18));
  const bool coloured = !d.z_mean.empty() && d.z_range;
  for (int row = 0; row < g.height; ++row) {
    auto* line = reinterpret_cast<QRgb*>(image.scanLine(row));
    for (int column = 0; column < g.width; ++column) {
      const std::uint32_t count = d.At(column, row);
      if (count == 0) continue;
      const float z = coloured ? d.z_mean[row * g.width + column] : NAN;
      line[column] =
          (std::isnan(z) ? CountColour(count, d.max_count) : ZColour(z, *d.z_range)).rgb();
    }
  }
  return image;
}

}  // namespace

DistributionPlot::DistributionPlot(QWidget* parent) : QWidget(parent) {
  setObjectName("DistributionPlot");
  setMinimumSize(320, 220);
  setFocusPolicy(Qt::StrongFocus);
  setAttribute(Qt::WA_OpaquePaintEvent);
  InstallPaintedTextAccessible<DistributionPlot, QAccessible::Chart,
                               &DistributionPlot::ValueText>();
  announcer_ = std::make_unique<ValueAnnouncer>(this);
  ShowNothing("Nothing to plot");
}

DistributionPlot::~DistributionPlot() = default;

QRect DistributionPlot::PlotRect() const {
  return rect().adjusted(kLeftMargin, kEdge, -kEdge, -kBottomMargin);
}

void DistributionPlot::ShowScatter(const review::ScatterDensity& density, const QString& x,
                                   const QString& y, const QString& z) {
  shown_ = Shown::kScatter;
  density_ = &density;
  scatter_ = ScatterImage(density);
  x_name_ = x, y_name_ = y, z_name_ = z;
  QString name = QString("Scatter of %1 against %2").arg(y, x);
  if (!z.isEmpty()) name += QString(" coloured by %1").arg(z);
  Announce(name, QString("%1 records drawn, %2 outside").arg(density.points).arg(density.outside));
}

void DistributionPlot::ShowHistogram(const review::Histogram& histogram, const QString& channel) {
  shown_ = Shown::kHistogram;
  histogram_ = histogram;
  x_name_ = channel;
  Announce(QString("Histogram of %1").arg(channel),
           QString("%1 records in %2 bins of %3, %4 below, %5 above")
               .arg(histogram.values)
               .arg(histogram.bins.count)
               .arg(Number(histogram.bins.width))
               .arg(histogram.below)
               .arg(histogram.above));
}

void DistributionPlot::ShowNothing(const QString& why) {
  shown_ = Shown::kNothing;
  Announce("Scatter and histogram", why);
}

void DistributionPlot::Announce(const QString& name, const QString& value) {
  setAccessibleName(name);
  value_ = value;
  announcer_->Changed(value);
  update();
}

void DistributionPlot::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.fillRect(rect(), QColor(12, 12, 18));
  const QRect plot = PlotRect();
  painter.setPen(QColor(90, 90, 100));
  painter.drawRect(plot.adjusted(-1, -1, 0, 0));
  if (shown_ == Shown::kScatter && density_) {
    PaintScatter(painter, plot);
  } else if (shown_ == Shown::kHistogram) {
    PaintHistogram(painter, plot);
  } else {
    painter.setPen(Qt::lightGray);
    painter.drawText(plot, Qt::AlignCenter, value_);
  }
}

void DistributionPlot::PaintScatter(QPainter& painter, QRect plot) {
  const review::ScatterDensity& d = *density_;
  const review::ScatterGrid& g = d.grid;
  const bool coloured = !d.z_mean.empty() && d.z_range;
  painter.drawImage(plot.topLeft(), scatter_);
  PaintAxes(painter, plot, g.x_low, g.x_high, g.y_low, g.y_high);
  if (coloured) {
    painter.setPen(Qt::lightGray);
    painter.drawText(plot.adjusted(4, 2, -4, 0), Qt::AlignTop | Qt::AlignRight,
                     QString("%1: blue %2 .. red %3")
                         .arg(z_name_, Number(d.z_range->low), Number(d.z_range->high)));
  }
}

void DistributionPlot::PaintHistogram(QPainter& painter, QRect plot) {
  const review::Histogram& h = histogram_;
  const std::uint32_t most =
      h.counts.empty() ? 0 : *std::max_element(h.counts.begin(), h.counts.end());
  const double bar = static_cast<double>(plot.width()) / std::max(1, h.bins.count);
  painter.setPen(Qt::NoPen);
  painter.setBrush(QColor(110, 160, 255));
  for (int i = 0; i < static_cast<int>(h.counts.size()); ++i) {
    const double height = most > 0 ? plot.height() * double(h.counts[i]) / most : 0.0;
    painter.drawRect(QRectF(plot.left() + i * bar, plot.bottom() + 1 - height,
                            std::max(1.0, bar - 1.0), height));
  }
  PaintAxes(painter, plot, h.bins.low, h.bins.High(), 0.0, most);
}

void DistributionPlot::PaintAxes(QPainter& painter, QRect plot, double x0, double x1, double y0,
                                 double y1) {
  const QFontMetrics metrics(font());
  const int h = metrics.height();
  const QColor grid(255, 255, 255, 28);
  // Round values along each axis, with faint lines across the plot to read points against.
  if (x1 > x0) {
    for (double x : AxisTicks(x0, x1, std::max(2, plot.width() / 90))) {
      const int px =
          plot.left() + static_cast<int>(std::lround((x - x0) / (x1 - x0) * plot.width()));
      painter.setPen(grid);
      painter.drawLine(px, plot.top(), px, plot.bottom());
      painter.setPen(Qt::lightGray);
      painter.drawText(QRect(px - 50, plot.bottom() + 2, 100, h), Qt::AlignHCenter, Number(x));
    }
  }
  if (y1 > y0) {
    for (double y : AxisTicks(y0, y1, std::max(2, plot.height() / 40))) {
      const int py =
          plot.bottom() - static_cast<int>(std::lround((y - y0) / (y1 - y0) * plot.height()));
      painter.setPen(grid);
      painter.drawLine(plot.left(), py, plot.right(), py);
      painter.setPen(Qt::lightGray);
      painter.drawText(QRect(h, py - h / 2, kLeftMargin - h - 4, h), Qt::AlignRight, Number(y));
    }
  }
  painter.setPen(Qt::lightGray);
  painter.drawText(QRect(plot.left(), plot.bottom() + 2 + h, plot.width(), h), Qt::AlignHCenter,
                   x_name_);
  // The Y axis's name reads upwards along the left edge.
  const QString y_name = shown_ == Shown::kHistogram ? QString("records") : y_name_;
  painter.save();
  painter.translate(0, plot.center().y());
  painter.rotate(-90);
  painter.drawText(QRect(-plot.height() / 2, 0, plot.height(), h), Qt::AlignHCenter,
                   metrics.elidedText(y_name, Qt::ElideRight, plot.height()));
  painter.restore();
}

void DistributionPlot::mousePressEvent(QMouseEvent* event) {
  const QRect plot = PlotRect();
  if (shown_ != Shown::kScatter || !plot.contains(event->position().toPoint())) return;
  emit Clicked(event->position().x() - plot.left(), event->position().y() - plot.top());
}

void DistributionPlot::resizeEvent(QResizeEvent*) { emit Resized(); }

}  // namespace vela

#include "moc_distribution_plot.cpp"
