#include "tune/cell_fit.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vela {

namespace {

struct System {
  std::vector<int> unknown_of;  // per cell: its unknown's index, or -1 for a known cell
  std::vector<int> cell_of;     // per unknown: its cell
  std::vector<double> matrix;   // unknowns x unknowns, row-major
  std::vector<double> right;
  std::vector<bool> pins;  // per unknown: its samples take part (else it gets its mean factor)
};

// Cell index of the neighbour `slot` (0..8, row offset -1..1 then column offset -1..1) of
// (row, column), or -1 beyond the grid.
int NeighbourOf(const TuneAxes& axes, int row, int column, int slot) {
  const int r = row + slot / 3 - 1;
  const int c = column + slot % 3 - 1;
  if (r < 1 || r > axes.Rows() || c < 1 || c > axes.Columns()) return -1;
  return (r - 1) * axes.Columns() + (c - 1);
}

// The normal equations of one unknown cell's samples, with the pull towards its mean factor.
void AddRow(const CellGrid& evidence, const std::vector<double>& values, int cell, System& s) {
  const TuneAxes& axes = evidence.Axes();
  const int row = cell / axes.Columns() + 1;
  const int column = cell % axes.Columns() + 1;
  const CellEvidence& e = evidence.At(row, column);
  const auto n = static_cast<std::size_t>(s.cell_of.size());
  const auto i = static_cast<std::size_t>(s.unknown_of[static_cast<std::size_t>(cell)]);
  const double own = e.share_products[4];
  const double value = values[static_cast<std::size_t>(cell)];
  if (!(own > 0.0) || !(value > 0.0)) {
    s.matrix[i * n + i] = 1.0;
    s.right[i] = value * e.Factor();
    s.pins[i] = false;
    return;
  }
  for (int slot = 0; slot < 9; ++slot) {
    const int other = NeighbourOf(axes, row, column, slot);
    if (other < 0) continue;
    const double v = values[static_cast<std::size_t>(other)];
    s.right[i] += e.ratio_products[static_cast<std::size_t>(slot)] * v;
    const double p = e.share_products[static_cast<std::size_t>(slot)];
    const int j = s.unknown_of[static_cast<std::size_t>(other)];
    if (j >= 0) {
      s.matrix[i * n + static_cast<std::size_t>(j)] += p;
    } else {
      s.right[i] -= p * v;
    }
  }
  s.matrix[i * n + i] += kFitPrior * own;
  s.right[i] += kFitPrior * own * value * e.Factor();
}

// Gauss-Jordan elimination with partial pivoting: `a` (n x n, row-major) becomes its inverse;
// false when it is singular.
bool Invert(std::vector<double>& a, std::size_t n) {
  std::vector<double> inverse(n * n, 0.0);
  for (std::size_t k = 0; k < n; ++k) inverse[k * n + k] = 1.0;
  for (std::size_t k = 0; k < n; ++k) {
    std::size_t pivot = k;
    for (std::size_t r = k + 1; r < n; ++r) {
      if (std::abs(a[r * n + k]) > std::abs(a[pivot * n + k])) pivot = r;
    }
    if (!(std::abs(a[pivot * n + k]) > 1e-12)) return false;
    if (pivot != k) {
      std::swap_ranges(a.begin() + k * n, a.begin() + (k + 1) * n, a.begin() + pivot * n);
      std::swap_ranges(inverse.begin() + k * n, inverse.begin() + (k + 1) * n,
                       inverse.begin() + pivot * n);
    }
    const double scale = 1.0 / a[k * n + k];
    for (std::size_t c = 0; c < n; ++c) {
      a[k * n + c] *= scale;
      inverse[k * n + c] *= scale;
    }
    for (std::size_t r = 0; r < n; ++r) {
      const double f = a[r * n + k];
      if (r == k || f == 0.0) continue;
      for (std::size_t c = 0; c < n; ++c) {
        a[r * n + c] -= f * a[k * n + c];
        inverse[r * n + c] -= f * inverse[k * n + c];
      }
    }
  }
  a = std::move(inverse);
  return true;
}

}  // namespace

CellFit FitCells(const CellGrid& evidence, const std::vector<double>& values,
                 const std::vector<bool>& free) {
  System s;
  s.unknown_of.assign(values.size(), -1);
  for (std::size_t cell = 0; cell < values.size(); ++cell) {
    if (!free[cell]) continue;
    s.unknown_of[cell] = static_cast<int>(s.cell_of.size());
    s.cell_of.push_back(static_cast<int>(cell));
  }
  const std::size_t n = s.cell_of.size();
  s.matrix.assign(n * n, 0.0);
  s.right.assign(n, 0.0);
  s.pins.assign(n, true);
  for (int cell : s.cell_of) AddRow(evidence, values, cell, s);
  CellFit fit{std::vector<double>(values.size(), 1.0), std::vector<double>(values.size(), 0.0)};
  const bool solved = Invert(s.matrix, n);
  const int columns = evidence.Axes().Columns();
  for (std::size_t k = 0; k < n; ++k) {
    const auto cell = static_cast<std::size_t>(s.cell_of[k]);
    const double mean =
        evidence.At(s.cell_of[k] / columns + 1, s.cell_of[k] % columns + 1).Factor();
    double value = 0.0;
    for (std::size_t j = 0; solved && j < n; ++j) value += s.matrix[k * n + j] * s.right[j];
    const double fitted = values[cell] > 0.0 ? value / values[cell] : mean;
    fit.factors[cell] = solved && std::isfinite(fitted) ? fitted : mean;
    if (solved && s.pins[k] && s.matrix[k * n + k] > 0.0)
      fit.pinned[cell] = 1.0 / s.matrix[k * n + k];
  }
  return fit;
}

}  // namespace vela
