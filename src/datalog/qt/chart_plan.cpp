#include "datalog/qt/chart_plan.h"

#include <algorithm>

#include "datalog/channels.h"
#include "datalog/chart/chart_view.h"
#include "datalog/review/distribution.h"

namespace vela {

namespace {

// An automatic scale with nothing in view keeps to the range of the whole column.
review::AxisRange WholeColumnRange(const review::ColumnView& column) {
  const std::optional<review::ValueSpan> whole =
      review::ColumnRange(column, WholeLog(column.values.size()));
  return whole ? review::NiceRange(whole->low, whole->high) : review::NiceRange(0.0, 10.0);
}

void AddLine(ChartPlan& plan, const review::ChartLayout& layout, PlannedLine line,
             const TimeAxis& axis) {
  const review::PanelChannel* placed = layout.Find(line.name);
  line.panel = std::min(layout.PanelOf(line.name).value_or(0), plan.panels - 1);
  const review::ChannelScale scale = placed ? placed->scale : review::ChannelScale{};
  const std::optional<review::AxisRange> range = review::ScaleInView(
      scale, line.column, *line.times, axis.min - line.offset, axis.max - line.offset);
  line.range = range ? *range : WholeColumnRange(line.column);
  plan.lines.push_back(std::move(line));
}

// A second log's line on the scale of its first-log counterpart when that is drawn.
bool FollowLine(ChartPlan& plan, const ChartSeries& series) {
  if (series.follows.empty()) return false;
  for (const PlannedLine& other : plan.lines) {
    if (other.second_log || !review::SameName(other.name, series.follows)) continue;
    PlannedLine line = other;
    line.name = series.name;
    line.column = series.column;
    line.times = series.times ? series.times : other.times;
    line.offset = series.offset;
    line.colour = series.colour;
    line.second_log = series.second_log;
    plan.lines.push_back(std::move(line));
    return true;
  }
  return false;
}

}  // namespace

std::string LayoutNameOf(int channel) { return std::string(kChannels[channel].name); }

ChartPlan PlanChart(const DatalogLog& log, const review::ChartLayout& layout,
                    const std::vector<ChartSeries>& extra, const TimeAxis& axis) {
  ChartPlan plan;
  plan.panels = std::clamp(static_cast<int>(layout.Panels().size()), 1, review::kMaxPanels);
  for (int n = 0; n < kChannelCount; ++n) {
    const LogSeries& series = log.Series(n);
    if (!series.active || series.points == 0) continue;
    PlannedLine line;
    line.name = LayoutNameOf(n);
    line.column = review::RecordedColumn(log, n);
    line.times = &log.Times();
    line.colour = QColor(series.colour.red, series.colour.green, series.colour.blue);
    AddLine(plan, layout, std::move(line), axis);
  }
  for (const ChartSeries& series : extra) {
    if (FollowLine(plan, series)) continue;
    PlannedLine line;
    line.name = series.name;
    line.column = series.column;
    line.times = series.times ? series.times : &log.Times();
    line.offset = series.offset;
    line.colour = series.colour;
    line.second_log = series.second_log;
    AddLine(plan, layout, std::move(line), axis);
  }
  plan.axis_line.assign(static_cast<std::size_t>(plan.panels), -1);
  for (std::size_t i = 0; i < plan.lines.size(); ++i) {
    int& axis_line = plan.axis_line[static_cast<std::size_t>(plan.lines[i].panel)];
    if (axis_line < 0 || review::SameName(plan.lines[i].name, layout.Selected())) {
      axis_line = static_cast<int>(i);
    }
  }
  return plan;
}

}  // namespace vela
