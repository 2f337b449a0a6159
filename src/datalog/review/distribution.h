// The histogram of a channel and the scatter of one channel against another, coloured by a
// third, both over the whole log or the records of a span. Each is one pass over the columns as
// the log stores them (nothing copied) into bins the size of what is drawn, so drawing reads
// the bins, never the records. Ranges come from the channels' summaries when not given.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "datalog/review/log_span.h"

namespace vela::review {

// Bin i holds the values in [low + i x width, low + (i + 1) x width); the last bin also holds
// its upper edge.
struct HistogramBins {
  double low = 0.0;
  double width = 1.0;
  int count = 1;
  double High() const { return low + width * count; }
  bool operator==(const HistogramBins&) const = default;
};

inline constexpr int kDefaultBins = 40;
inline constexpr int kMaxBins = 4096;
// Bins for values from `low` to `high`: about `target_count` of them (1 to kMaxBins), of a width
// of 1, 2 or 5 times a power of ten, their edges on multiples of the width. A single value gets
// one bin of width 1 (or of the value's tenth, rounded so) centred on it.
HistogramBins BinsForRange(double low, double high, int target_count = kDefaultBins);

struct Histogram {
  HistogramBins bins;
  std::vector<std::uint32_t> counts;  // bins.count entries
  std::uint64_t below = 0;            // values under the first bin
  std::uint64_t above = 0;            // values over the last
  std::uint64_t values = 0;           // records with a value (NaN left out)
};
Histogram ComputeHistogram(const ColumnView& column, RecordRange records,
                           const HistogramBins& bins);
// With the bins chosen from the values' range over `records`.
Histogram ComputeHistogram(const ColumnView& column, RecordRange records,
                           int target_count = kDefaultBins);

// The lowest and highest value of a column over records (from its summaries when it has them);
// nullopt when no record there has a value.
struct ValueSpan {
  double low = 0.0;
  double high = 0.0;
};
std::optional<ValueSpan> ColumnRange(const ColumnView& column, RecordRange records);

// A pixel grid over a value plane: column 0 is the left edge (x_low), row 0 the top (y_high), as
// drawn. A point exactly on x_high or y_low falls into the last column or row; a point outside
// the ranges into none.
struct ScatterGrid {
  int width = 1;
  int height = 1;
  double x_low = 0.0;
  double x_high = 1.0;
  double y_low = 0.0;
  double y_high = 1.0;
};

struct ScatterDensity {
  ScatterGrid grid;
  std::vector<std::uint32_t> counts;  // width x height, row by row from the top
  std::vector<float> z_mean;          // the mean of Z per pixel (NaN where none); empty without Z
  std::uint64_t points = 0;           // records drawn (X and Y known and inside the grid)
  std::uint64_t outside = 0;          // records with X and Y known but outside the grid
  double max_count = 0.0;
  std::optional<ValueSpan> z_range;  // of the pixels' means
  std::uint32_t At(int column, int row) const { return counts[row * grid.width + column]; }
  // Behind z_mean: the sum of Z of every pixel, and the records drawn there without a Z (made
  // only when there is one: most logs record Z wherever they record X and Y).
  std::vector<double> z_sum;
  std::vector<std::uint32_t> z_missing;
};

// `z` may be empty (no colouring). The grid's size is clamped to 1 .. 8192 each way.
ScatterDensity ComputeScatter(const ColumnView& x, const ColumnView& y, const ColumnView& z,
                              RecordRange records, ScatterGrid grid);
// The same into `density`, whose arrays are reused (a view that keeps one redraws without
// asking the system for memory again).
void ComputeScatter(const ColumnView& x, const ColumnView& y, const ColumnView& z,
                    RecordRange records, ScatterGrid grid, ScatterDensity& density);
// A grid of `width` x `height` over the ranges of X and Y in `records`, padded by half a pixel;
// nullopt when either has no value there.
std::optional<ScatterGrid> GridForColumns(const ColumnView& x, const ColumnView& y,
                                          RecordRange records, int width, int height);

// The record nearest to pixel (`px`, `py`) of `grid`, by distance in pixels, among the records
// of `records` whose X and Y are known; ties go to the earlier record. nullopt when there is none.
std::optional<std::size_t> NearestRecord(const ColumnView& x, const ColumnView& y,
                                         RecordRange records, const ScatterGrid& grid, double px,
                                         double py);

}  // namespace vela::review
