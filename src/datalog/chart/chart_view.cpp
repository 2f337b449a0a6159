#include "datalog/chart/chart_view.h"

#include <algorithm>
#include <cmath>

namespace vela {

namespace {
constexpr double kScalePadding = 0.04;  // of the range, above and below
constexpr double kRawPointsPerColumn = 2.0;
constexpr double kWholeLogRoom = 0.02;  // of the log's length, after its end
// Columns are aligned to whole blocks once they average this many blocks or more.
constexpr std::size_t kAlignBlocksPerColumn = 4;
}  // namespace

std::vector<std::size_t> ColumnBounds(const std::vector<double>& times, const TimeAxis& axis,
                                      int width) {
  std::vector<std::size_t> bounds(static_cast<std::size_t>(std::max(width, 0)) + 1);
  const double span = axis.max - axis.min;
  auto from = times.begin();
  for (int c = 0; c <= width; ++c) {
    const double t = axis.min + span * c / width;
    from = std::lower_bound(from, times.end(), t);
    bounds[static_cast<std::size_t>(c)] = static_cast<std::size_t>(from - times.begin());
  }
  return bounds;
}

bool DrawRawPoints(const std::vector<std::size_t>& bounds) {
  if (bounds.size() < 2) return true;
  const double width = static_cast<double>(bounds.size() - 1);
  return static_cast<double>(bounds.back() - bounds.front()) < kRawPointsPerColumn * width;
}

void AlignToSummaryBlocks(std::vector<std::size_t>& bounds) {
  if (bounds.size() < 2) return;
  const std::size_t per_column = (bounds.back() - bounds.front()) / (bounds.size() - 1);
  // The coarsest block that still fits a column kAlignBlocksPerColumn times: the column is then
  // a few neighbouring blocks of one level, read one after the other.
  std::size_t block = MinMaxPyramid::kLeafSize;
  if (per_column < kAlignBlocksPerColumn * block) return;
  while (kAlignBlocksPerColumn * block * 2 <= per_column) block *= 2;
  for (std::size_t& bound : bounds) bound = (bound + block / 2) / block * block;
}

ValueRange ChannelScale(const DatalogLog& log, int channel) {
  const ColumnSummary all = log.Summarize(channel, 0, log.RecordCount());
  ValueRange range;
  if (all.any) {
    range.low = std::min(0.0, static_cast<double>(all.min));
    range.high = std::max(10.0, static_cast<double>(all.max));
  }
  const double pad = (range.high - range.low) * kScalePadding;
  return {range.low - pad, range.high + pad};
}

TimeAxis ZoomAxis(const TimeAxis& axis, double anchor, double factor) {
  const double span = std::max((axis.max - axis.min) * factor, kNarrowestAxisSeconds);
  const double share = axis.max > axis.min ? (anchor - axis.min) / (axis.max - axis.min) : 0.5;
  const double min = anchor - share * span;
  return {min, min + span};
}

TimeAxis PanAxis(const TimeAxis& axis, double seconds) {
  return {axis.min + seconds, axis.max + seconds};
}

TimeAxis WholeLogAxis(const DatalogLog& log) {
  const double start = log.RecordCount() ? std::min(0.0, log.Times().front()) : 0.0;
  const double end = std::max(log.EndTime(), start + 1.0);
  return {start, end + (end - start) * kWholeLogRoom};
}

std::vector<double> AxisTicks(double low, double high, int max_ticks) {
  std::vector<double> ticks;
  if (!(high > low) || max_ticks < 1) return ticks;
  const double rough = (high - low) / max_ticks;
  const double power = std::pow(10.0, std::floor(std::log10(rough)));
  double step = power;
  for (double m : {1.0, 2.0, 5.0, 10.0}) {
    step = m * power;
    if (step >= rough) break;
  }
  for (double t = std::ceil(low / step) * step; t <= high + step * 1e-9; t += step) {
    ticks.push_back(std::abs(t) < step * 1e-9 ? 0.0 : t);
  }
  return ticks;
}

std::optional<FuelCellRef> NearestFuelCell(const FuelMapAxes& axes, double rpm, double load_kpa) {
  if (axes.rows.empty() || axes.loads_kpa.empty()) return std::nullopt;
  const auto row = std::min_element(axes.rows.begin(), axes.rows.end(), [rpm](auto& a, auto& b) {
    return std::abs(a.second - rpm) < std::abs(b.second - rpm);
  });
  const auto load = std::min_element(
      axes.loads_kpa.begin(), axes.loads_kpa.end(),
      [load_kpa](double a, double b) { return std::abs(a - load_kpa) < std::abs(b - load_kpa); });
  return FuelCellRef{row->first, static_cast<int>(load - axes.loads_kpa.begin()) + 1};
}

}  // namespace vela
