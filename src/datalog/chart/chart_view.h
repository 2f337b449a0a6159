// The chart's arithmetic, without any toolkit: which records fall in each pixel column of the
// time axis, each channel's vertical scale, zooming and panning the time axis, tick steps, and
// the fuel map cell a moment of the log ran on.
#pragma once

#include <optional>
#include <utility>
#include <vector>

#include "datalog/datalog_log.h"

namespace vela {

// Record indexes where each of `width` pixel columns over `axis` begins, and where the last one
// ends (width + 1 entries). Column c holds records [bounds[c], bounds[c + 1]).
std::vector<std::size_t> ColumnBounds(const std::vector<double>& times, const TimeAxis& axis,
                                      int width);

// True when the columns hold so few records that the raw points are drawn instead of summaries.
bool DrawRawPoints(const std::vector<std::size_t>& bounds);

// Where columns hold many records, each bound moved to the nearest boundary of the coarsest
// summary blocks that still fit a column four times (a shift of at most an eighth of a column),
// so that a column is summed up from a few blocks without reading a sample. Every record still
// falls in exactly one column.
void AlignToSummaryBlocks(std::vector<std::size_t>& bounds);

// The vertical range channel `channel` is drawn over: its lowest and highest value in the whole
// log, but never less than 0 .. 10 (the per-record limits' starting values), padded a little.
struct ValueRange {
  double low = 0.0;
  double high = 10.0;
};
ValueRange ChannelScale(const DatalogLog& log, int channel);

// The axis made `factor` times as wide around `anchor` (a time that keeps its place).
TimeAxis ZoomAxis(const TimeAxis& axis, double anchor, double factor);
// The axis moved by `seconds`.
TimeAxis PanAxis(const TimeAxis& axis, double seconds);
// The whole log (and a little room after its end).
TimeAxis WholeLogAxis(const DatalogLog& log);
// The narrowest axis zooming allows.
inline constexpr double kNarrowestAxisSeconds = 0.05;

// Round tick values between `low` and `high`, at most about `max_ticks` of them (steps of 1, 2
// or 5 times a power of ten).
std::vector<double> AxisTicks(double low, double high, int max_ticks);

// The fuel map's axes as the map page shows them: each RPM row's grid row and RPM (rows whose
// label is not a number are left out) and each load column's load in kPa (column 1 first).
struct FuelMapAxes {
  std::vector<std::pair<int, double>> rows;
  std::vector<double> loads_kpa;
};
struct FuelCellRef {
  int row = 0;
  int column = 0;
};
// The cell nearest to `rpm` and `load_kpa`; nullopt when the map has no rows or columns.
std::optional<FuelCellRef> NearestFuelCell(const FuelMapAxes& axes, double rpm, double load_kpa);

}  // namespace vela
