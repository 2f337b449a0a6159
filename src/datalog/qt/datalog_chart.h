// `TChart1`: the datalog chart. A line chart without title or legend, white axis lines and silver
// labels, one line per channel in the channel's colour, drawn only while the channel is active.
// It draws straight from the log: each pixel column shows the first, lowest, highest and last
// value of the records it covers (from the log's min/max summaries), so an hour-long log draws as
// fast as a short one and no spike is lost; zoomed in far enough, the raw points are drawn.
//
// A red tick at the plot's top and bottom marks each gap where the link lost frames.
//
// The channels are stacked in 1 to 4 panels sharing the time axis and the cursors, as the layout
// says (chart_layout.h); each channel is drawn over its own scale, automatic (its values in view)
// or fixed, and each panel's left axis is labelled in the units of its selected or first
// channel. Math channels and a second log's channels are drawn like the recorded ones (the
// second log's dashed and lighter). The tuner zooms the time axis with the mouse wheel, pans by
// dragging, zooms to a rectangle dragged with Shift or the middle button (time and the panel's
// scales), shows the whole log with a double click, sets cursor A with a click and cursor B with
// a right click; the keyboard does all of that and more (chart_keys.h).
#pragma once

#include <QWidget>
#include <optional>
#include <utility>
#include <vector>

#include "datalog/chart/chart_keys.h"
#include "datalog/datalog_log.h"
#include "datalog/qt/chart_plan.h"
#include "datalog/review/chart_layout.h"

namespace vela {

class DatalogChart : public QWidget {
  Q_OBJECT

 public:
  explicit DatalogChart(DatalogLog& log, QWidget* parent = nullptr);

  // The recorded channel whose values label the left axis: the layout's selected channel.
  void SetAxisChannel(int channel);
  // Any line by name (a math channel's too) as the selected channel.
  void SelectChannel(const std::string& name);
  int AxisChannel() const { return axis_channel_; }

  // The panels, the channels in each and their scales.
  const review::ChartLayout& Layout() const { return layout_; }
  void SetLayout(review::ChartLayout layout);
  // Lines drawn beside the recorded channels (math channels, a second log's channels); the
  // columns they point at must live until they are replaced.
  void SetExtraSeries(std::vector<ChartSeries> series);
  // The same lines, whose columns changed only from `from_time` on (the log grew): repainted as
  // the strip from there to the end while nothing else moved since the last paint.
  void ExtraSeriesGrew(std::vector<ChartSeries> series, double from_time);
  // What a paint now would draw where.
  ChartPlan Plan() const;
  // The rect of each panel, top first.
  std::vector<QRect> PanelRects() const;
  // Zooms to the rectangle between two points of the widget as a drag would: the time axis to
  // its width, the channels of the panel it starts in to fixed scales of its height. False when
  // it is too small or starts outside every panel.
  bool ZoomToRectangle(QPoint from, QPoint to);

  // True once the tuner has zoomed or panned: the time axis then no longer follows the newest
  // point until the whole log is shown again.
  bool AxisInHand() const { return axis_in_hand_; }
  void ReleaseAxis() { axis_in_hand_ = false; }
  void ShowWholeLog();

  std::optional<double> CursorA() const { return cursor_a_; }
  std::optional<double> CursorB() const { return cursor_b_; }
  void SetCursors(std::optional<double> a, std::optional<double> b);
  // Cursor A to `time`, the view moved by hand just far enough to show it.
  void PutCursorA(double time);
  // The time axis and the cursors as they are now.
  ChartView View() const { return {log_.axis, cursor_a_, cursor_b_}; }

  // Stretches of time shaded on the chart (the times the engine spent in chosen map cells);
  // empty: none.
  void SetShadedSpans(std::vector<std::pair<double, double>> spans);
  const std::vector<std::pair<double, double>>& ShadedSpans() const { return spans_; }

  // Repaints when the log changed since the last paint: only the strip of the new records while
  // the axis, the channels' scales and the markers stay as they were drawn, otherwise the whole.
  void RefreshIfChanged();

  // The time at horizontal position `x` of the widget.
  double TimeAt(int x) const;
  QRect PlotRect() const;

 signals:
  void CursorsChanged();
  // The layout changed here (a rectangle zoom, the axis channel) or was set.
  void LayoutChanged();
  void AxisChangedByHand();
  // The extra lines were replaced (a math channel or the second log came, went or was renamed).
  void LinesChanged();
  // The export keys: what is seen as CSV, the chart as a picture.
  void ExportCsvAsked();
  void ExportPictureAsked();

 protected:
  void paintEvent(QPaintEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  // The keys of `chart_keys.h` (chart_keyboard.cpp); the others go on to the page.
  void keyPressEvent(QKeyEvent* event) override;

 private:
  int XOf(double time) const;
  bool OnlyGrownSincePaint() const;
  // Repaints the strip from `time` to the log's end.
  void RepaintFrom(double time);
  void TakeAxisInHand(const TimeAxis& axis);
  void ShowView(const ChartView& view, ChartKey key);

  DatalogLog& log_;
  int axis_channel_ = 0;
  bool axis_in_hand_ = false;
  std::optional<double> cursor_a_;
  std::optional<double> cursor_b_;
  std::vector<std::pair<double, double>> spans_;
  // What the last paint showed.
  std::uint64_t painted_revision_ = 0;
  TimeAxis painted_axis_;
  std::size_t painted_records_ = 0;
  std::size_t painted_markers_ = 0;
  std::size_t painted_gaps_ = 0;
  std::vector<double> painted_scales_;
  review::ChartLayout layout_;
  std::vector<ChartSeries> extra_;
  // Dragging: where the press was and the axis then; a rectangle being dragged to zoom to.
  std::optional<int> press_x_;
  TimeAxis press_axis_;
  bool dragging_ = false;
  std::optional<QPoint> band_from_;
  QPoint band_to_;
};

}  // namespace vela
