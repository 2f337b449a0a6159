#include "datalog/review/distribution.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "datalog/review/autoscale.h"

namespace vela::review {

namespace {

constexpr int kMaxGridSide = 8192;

}  // namespace

HistogramBins BinsForRange(double low, double high, int target_count) {
  target_count = std::clamp(target_count, 1, kMaxBins);
  if (!std::isfinite(low) || !std::isfinite(high)) return {};
  if (high < low) std::swap(low, high);
  if (high == low) {
    const double width = low == 0.0 ? 1.0 : NiceStep(std::fabs(low) / 10.0);
    return {low - width / 2.0, width, 1};
  }
  HistogramBins bins;
  bins.width = NiceStep((high - low) / target_count);
  bins.low = std::floor(low / bins.width) * bins.width;
  const double count = std::ceil((high - bins.low) / bins.width);
  bins.count = std::clamp(static_cast<int>(count), 1, kMaxBins);
  // Rounding must not leave the highest value above the last bin.
  if (bins.High() < high && bins.count < kMaxBins) ++bins.count;
  return bins;
}

std::optional<ValueSpan> ColumnRange(const ColumnView& column, RecordRange records) {
  const std::size_t end = std::min(records.end, column.values.size());
  if (records.begin >= end) return std::nullopt;
  if (column.summaries != nullptr) {
    const ColumnSummary summary = column.summaries->Summarize(column.values, records.begin, end);
    if (!summary.any) return std::nullopt;
    return ValueSpan{summary.min, summary.max};
  }
  float low = std::numeric_limits<float>::infinity();
  float high = -low;
  for (std::size_t i = records.begin; i < end; ++i) {
    const float v = column.values[i];
    if (v < low) low = v;
    if (v > high) high = v;
  }
  if (!(low <= high)) return std::nullopt;
  return ValueSpan{low, high};
}

Histogram ComputeHistogram(const ColumnView& column, RecordRange records,
                           const HistogramBins& bins) {
  Histogram histogram;
  histogram.bins = bins;
  histogram.bins.count = std::clamp(bins.count, 1, kMaxBins);
  if (!(bins.width > 0.0)) histogram.bins.width = 1.0;
  const HistogramBins& b = histogram.bins;
  histogram.counts.assign(b.count, 0);
  const double high = b.High();
  const std::size_t end = std::min(records.end, column.values.size());
  for (std::size_t i = records.begin; i < end; ++i) {
    const double v = column.values[i];
    if (std::isnan(v)) continue;
    ++histogram.values;
    if (v < b.low) {
      ++histogram.below;
    } else if (v > high) {
      ++histogram.above;
    } else {
      const int bin = std::min(static_cast<int>((v - b.low) / b.width), b.count - 1);
      ++histogram.counts[bin];
    }
  }
  return histogram;
}

Histogram ComputeHistogram(const ColumnView& column, RecordRange records, int target_count) {
  const std::optional<ValueSpan> range = ColumnRange(column, records);
  const HistogramBins bins =
      range ? BinsForRange(range->low, range->high, target_count) : HistogramBins{};
  return ComputeHistogram(column, records, bins);
}

ScatterDensity ComputeScatter(const ColumnView& x, const ColumnView& y, const ColumnView& z,
                              RecordRange records, ScatterGrid grid) {
  ScatterDensity density;
  ComputeScatter(x, y, z, records, grid, density);
  return density;
}

namespace {

// ScatterGrid's pixel of a point, with the divisions made once: -1 outside the grid.
struct ScatterPixels {
  explicit ScatterPixels(const ScatterGrid& grid)
      : grid(grid),
        x_scale(grid.x_high > grid.x_low ? grid.width / (grid.x_high - grid.x_low) : 0.0),
        y_scale(grid.y_high > grid.y_low ? grid.height / (grid.y_high - grid.y_low) : 0.0) {}
  std::ptrdiff_t operator()(double x, double y) const {
    if (!(x >= grid.x_low && x <= grid.x_high && y >= grid.y_low && y <= grid.y_high)) return -1;
    const int column = std::min(static_cast<int>((x - grid.x_low) * x_scale), grid.width - 1);
    const int row = std::min(static_cast<int>((grid.y_high - y) * y_scale), grid.height - 1);
    return static_cast<std::ptrdiff_t>(row) * grid.width + column;
  }
  ScatterGrid grid;
  double x_scale;
  double y_scale;
};

// The mean of Z per pixel, and the range of the means.
void TakeMeans(ScatterDensity& density) {
  const std::size_t pixels = density.counts.size();
  density.z_mean.assign(pixels, kNoPoint);
  density.z_range.reset();
  for (std::size_t p = 0; p < pixels; ++p) {
    const std::uint32_t with_z =
        density.counts[p] - (density.z_missing.empty() ? 0 : density.z_missing[p]);
    if (with_z == 0) continue;
    const double mean = density.z_sum[p] / with_z;
    density.z_mean[p] = static_cast<float>(mean);
    if (!density.z_range) density.z_range = ValueSpan{mean, mean};
    density.z_range->low = std::min(density.z_range->low, mean);
    density.z_range->high = std::max(density.z_range->high, mean);
  }
}

}  // namespace

void ComputeScatter(const ColumnView& x, const ColumnView& y, const ColumnView& z,
                    RecordRange records, ScatterGrid grid, ScatterDensity& density) {
  grid.width = std::clamp(grid.width, 1, kMaxGridSide);
  grid.height = std::clamp(grid.height, 1, kMaxGridSide);
  density.grid = grid;
  const std::size_t pixels = static_cast<std::size_t>(grid.width) * grid.height;
  density.counts.assign(pixels, 0);
  const bool coloured = !z.values.empty();
  density.z_sum.assign(coloured ? pixels : 0, 0.0);
  density.z_missing.clear();
  const std::size_t end = std::min({records.end, x.values.size(), y.values.size()});
  // The pixel of each record as ScatterGrid::Column and Row give it, in registers.
  const ScatterPixels to_pixel(grid);
  std::uint32_t* const counts = density.counts.data();
  double* const z_sum = density.z_sum.data();
  std::uint64_t points = 0;
  std::uint64_t outside = 0;
  for (std::size_t i = records.begin; i < end; ++i) {
    const float vx = x.values[i];
    const float vy = y.values[i];
    if (std::isnan(vx) || std::isnan(vy)) continue;
    const std::ptrdiff_t pixel = to_pixel(vx, vy);
    if (pixel < 0) {
      ++outside;
      continue;
    }
    ++counts[pixel];
    ++points;
    if (!coloured) continue;
    const float vz = ValueOr(z.values, i);
    if (!std::isnan(vz)) {
      z_sum[pixel] += vz;
    } else {
      if (density.z_missing.empty()) density.z_missing.assign(pixels, 0);
      ++density.z_missing[pixel];
    }
  }
  density.points = points;
  density.outside = outside;
  density.max_count = pixels ? *std::max_element(counts, counts + pixels) : 0;
  density.z_mean.clear();
  density.z_range.reset();
  if (coloured) TakeMeans(density);
}

std::optional<ScatterGrid> GridForColumns(const ColumnView& x, const ColumnView& y,
                                          RecordRange records, int width, int height) {
  const std::optional<ValueSpan> xs = ColumnRange(x, records);
  const std::optional<ValueSpan> ys = ColumnRange(y, records);
  if (!xs || !ys) return std::nullopt;
  ScatterGrid grid;
  grid.width = std::clamp(width, 1, kMaxGridSide);
  grid.height = std::clamp(height, 1, kMaxGridSide);
  const double x_pad = xs->high > xs->low ? (xs->high - xs->low) / (2.0 * grid.width) : 0.5;
  const double y_pad = ys->high > ys->low ? (ys->high - ys->low) / (2.0 * grid.height) : 0.5;
  grid.x_low = xs->low - x_pad;
  grid.x_high = xs->high + x_pad;
  grid.y_low = ys->low - y_pad;
  grid.y_high = ys->high + y_pad;
  return grid;
}

std::optional<std::size_t> NearestRecord(const ColumnView& x, const ColumnView& y,
                                         RecordRange records, const ScatterGrid& grid, double px,
                                         double py) {
  const double x_scale = grid.x_high > grid.x_low ? grid.width / (grid.x_high - grid.x_low) : 0.0;
  const double y_scale = grid.y_high > grid.y_low ? grid.height / (grid.y_high - grid.y_low) : 0.0;
  std::optional<std::size_t> best;
  double best_distance = std::numeric_limits<double>::infinity();
  const std::size_t end = std::min({records.end, x.values.size(), y.values.size()});
  for (std::size_t i = records.begin; i < end; ++i) {
    const double dx = (x.values[i] - grid.x_low) * x_scale - px;
    const double dy = (grid.y_high - y.values[i]) * y_scale - py;
    const double distance = dx * dx + dy * dy;
    if (distance < best_distance) {
      best_distance = distance;
      best = i;
    }
  }
  return best;
}

}  // namespace vela::review
