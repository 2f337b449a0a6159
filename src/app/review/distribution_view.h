// "Scatter and Histogram": any channel of the log (recorded or computed) against any other,
// coloured by a third, or the histogram of one, over the whole log or the span between the
// cursors. Binned from the log's own columns; a click on the scatter puts cursor A on the
// nearest record.
#pragma once

#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <functional>
#include <optional>

#include "app/review/distribution_plot.h"
#include "datalog/review/distribution.h"
#include "datalog/review/log_span.h"

namespace vela {

class ReviewSession;

struct CursorSpan {
  std::optional<double> a;
  std::optional<double> b;
};

class DistributionView : public QDialog {
  Q_OBJECT

 public:
  // `cursors` gives the chart's cursors as they are now.
  DistributionView(ReviewSession& review, std::function<CursorSpan()> cursors,
                   QWidget* parent = nullptr);

  // Chooses the channels by name (the combo boxes' texts; empty colour: none) and shows them.
  void ShowScatter(const QString& x, const QString& y, const QString& colour = {});
  void ShowHistogram(const QString& channel);
  // Whole log (false) or the span between the cursors (true).
  void SetBetweenCursors(bool between);

  // The records plotted now.
  review::RecordRange Records() const;
  const review::ScatterDensity& density() const { return density_; }
  DistributionPlot* plot() const { return plot_; }

 signals:
  void CursorTo(double time);

 public slots:
  // The log or its math channels changed: the channel lists and the plot again, while shown
  // (showing the view refreshes it).
  void Refresh();
  // The cursors moved: only a plot of the span between them is drawn again.
  void CursorsMoved();

 private:
  void FillChannels();
  void Redraw();
  void DrawScatter(const review::RecordRange& records);
  void Clicked(double px, double py);

  ReviewSession& review_;
  std::function<CursorSpan()> cursors_;
  QComboBox* mode_ = nullptr;
  QComboBox* x_ = nullptr;
  QComboBox* y_ = nullptr;
  QComboBox* colour_ = nullptr;
  QComboBox* span_ = nullptr;
  QLabel* summary_ = nullptr;
  DistributionPlot* plot_ = nullptr;
  review::ScatterDensity density_;
  bool filling_ = false;
};

}  // namespace vela
