// What the chart draws where: each line (a recorded channel that is on, a math channel, a
// second log's channel) with the panel it is in and the vertical range it is drawn over, worked
// out from the layout before painting, so painting, the mouse and the accessible read-out agree.
#pragma once

#include <QColor>
#include <string>
#include <vector>

#include "datalog/datalog_log.h"
#include "datalog/review/autoscale.h"
#include "datalog/review/chart_layout.h"
#include "datalog/review/log_span.h"

namespace vela {

// A line drawn beside the recorded channels: a math channel (the log's own times) or a channel
// of a second log (its own times, shown `offset` seconds later), drawn dashed and lighter.
struct ChartSeries {
  std::string name;  // as the layout names it
  review::ColumnView column;
  const std::vector<double>* times = nullptr;  // null: the log's own
  double offset = 0.0;
  QColor colour;
  bool second_log = false;
  // A second log's line takes the panel and the scale of this line of the first log (its name),
  // so both are read against one axis; its own name places it when that line is not drawn.
  std::string follows;
};

struct PlannedLine {
  std::string name;
  int panel = 0;
  review::AxisRange range;
  review::ColumnView column;
  const std::vector<double>* times = nullptr;  // never null here
  double offset = 0.0;
  QColor colour;
  bool second_log = false;
};

struct ChartPlan {
  int panels = 1;
  std::vector<PlannedLine> lines;
  // The line whose values label each panel's left axis (-1: none): the selected channel in its
  // panel, the first line elsewhere.
  std::vector<int> axis_line;
};

// The lines of the recorded channels that are on and of `extra`, in the layout's panels (a line
// the layout does not place is in the first), with their scales over `axis`: a fixed scale as
// it is, an automatic one from the values in view (the whole log's range when none is).
ChartPlan PlanChart(const DatalogLog& log, const review::ChartLayout& layout,
                    const std::vector<ChartSeries>& extra, const TimeAxis& axis);

// The name a recorded channel has in layouts: its export name.
std::string LayoutNameOf(int channel);

}  // namespace vela
