// The target air-fuel ratio of every fuel cell: a table on the fuel maps' axes, kept in a CSV
// file beside the map file (the map file itself holds only the calibration). The file's layout
// is in docs/tuning.md.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tune/tune_axes.h"

namespace vela {

// Targets the table accepts, in AFR.
inline constexpr double kMinTargetAfr = 6.0;
inline constexpr double kMaxTargetAfr = 25.0;
// A target CSV larger than this is refused unread.
inline constexpr std::size_t kMaxTargetCsvBytes = 64 * 1024;

class TargetTable {
 public:
  // The default targets for `axes` (see DefaultTargetAfr).
  explicit TargetTable(TuneAxes axes);

  const TuneAxes& Axes() const { return axes_; }
  // By grid row (1 = the highest RPM site) and column (1 = the first load site).
  double At(int row, int column) const;
  void Set(int row, int column, double afr);
  // Between the four cells around an operating point, by the same shares as the log's samples.
  double AtPoint(double rpm, double load) const;

  bool operator==(const TargetTable&) const = default;

 private:
  std::size_t Index(int row, int column) const;

  TuneAxes axes_;
  std::vector<double> afr_;
};

// The default target at a load: 14.7 up to 40 % of full load, then straight down to 13.2 at
// 80 % and 12.5 at full load (100 kPa, or 100 % of throttle), and on to 11.5 at 200 kPa of
// boost, held beyond; rounded to 0.1. The same at every RPM.
double DefaultTargetAfr(double load);

// The table as CSV text (header row: corner cell, then the loads; then one line per RPM row,
// the highest RPM first: the RPM, then the targets).
std::string TargetCsv(const TargetTable& table);

// A target CSV read against the fuel axes it must carry. A refused file gives no table and every
// reason found, in reading order.
struct TargetRead {
  std::optional<TargetTable> table;
  std::vector<std::string> refusals;
};
TargetRead ReadTargetCsv(std::string_view csv, const TuneAxes& axes);

// Where the target table of a map file is kept: beside it, the map file's name with ".sm1" (in
// any case) replaced by ".afr.csv", or ".afr.csv" added when it has no such ending.
std::string TargetPathFor(const std::string& map_path);

}  // namespace vela
