#include "tune/view/heat_overlay.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "tune/log_samples.h"

namespace vela {

namespace {

std::uint8_t Channel(double value) {
  return static_cast<std::uint8_t>(std::clamp(std::lround(value), 0L, 255L));
}

// Straight between two colours, `share` 0..1 of the way.
Rgb Blend(Rgb from, Rgb to, double share) {
  share = std::clamp(share, 0.0, 1.0);
  const auto mix = [share](int a, int b) { return Channel(a + (b - a) * share); };
  return {mix(from.red, to.red), mix(from.green, to.green), mix(from.blue, to.blue)};
}

constexpr Rgb kWhite{255, 255, 255};
constexpr Rgb kHeatLow{255, 244, 190};
constexpr Rgb kHeatMid{255, 180, 90};
constexpr Rgb kHeatHigh{235, 80, 60};
constexpr Rgb kRich{70, 120, 235};
constexpr Rgb kLean{230, 60, 50};
constexpr Rgb kSpreadHigh{160, 90, 200};

std::optional<Rgb> GroundOf(const CellEvidence& cell, double target, HeatLayer layer,
                            double busiest) {
  switch (layer) {
    case HeatLayer::kOff:
      return std::nullopt;
    case HeatLayer::kTime:
      if (!(cell.time_s > 0.0) || !(busiest > 0.0)) return std::nullopt;
      return TimeColour(std::sqrt(cell.time_s / busiest));
    default:
      break;
  }
  if (!(cell.samples > 0.0)) return std::nullopt;
  if (layer == HeatLayer::kMeanAfr) return MeanAfrColour(cell.MeanAfr());
  if (layer == HeatLayer::kSpread) return SpreadColour(cell.AfrSpread());
  return ErrorColour(cell.MeanAfr() - target);
}

int Nearest(const std::vector<double>& sites, double value) {
  int best = 0;
  for (int i = 1; i < static_cast<int>(sites.size()); ++i) {
    if (std::abs(sites[static_cast<std::size_t>(i)] - value) <
        std::abs(sites[static_cast<std::size_t>(best)] - value)) {
      best = i;
    }
  }
  return best;
}

}  // namespace

HeatLayer NextLayer(HeatLayer layer) {
  return layer == HeatLayer::kError ? HeatLayer::kOff
                                    : static_cast<HeatLayer>(static_cast<int>(layer) + 1);
}

std::string_view LayerName(HeatLayer layer) {
  switch (layer) {
    case HeatLayer::kTime:
      return "time spent";
    case HeatLayer::kMeanAfr:
      return "mean AFR";
    case HeatLayer::kSpread:
      return "AFR spread";
    case HeatLayer::kError:
      return "AFR error against target";
    case HeatLayer::kOff:
      break;
  }
  return "off";
}

Rgb TimeColour(double share) {
  share = std::clamp(share, 0.0, 1.0);
  return share < 0.5 ? Blend(kHeatLow, kHeatMid, share * 2.0)
                     : Blend(kHeatMid, kHeatHigh, (share - 0.5) * 2.0);
}

Rgb MeanAfrColour(double afr) {
  const Rgb full = RampColour(std::clamp((afr - 10.0) / 8.0, 0.0, 1.0));
  return Blend(full, kWhite, 0.35);
}

Rgb SpreadColour(double spread) { return Blend(kWhite, kSpreadHigh, spread / kFullSpreadAfr); }

Rgb ErrorColour(double error) {
  if (!std::isfinite(error)) return kWhite;
  return error < 0.0 ? Blend(kWhite, kRich, -error / kFullErrorAfr)
                     : Blend(kWhite, kLean, error / kFullErrorAfr);
}

std::string CellFigures(const CellEvidence& cell, double target) {
  char text[160];
  if (!(cell.samples > 0.0)) {
    std::snprintf(text, sizeof text, "%.1f s, no kept samples, target %.2f", cell.time_s, target);
    return text;
  }
  std::snprintf(text, sizeof text,
                "%.1f s, %.0f samples, mean AFR %.2f, spread %.2f, target %.2f, error %+.2f",
                cell.time_s, cell.samples, cell.MeanAfr(), cell.AfrSpread(), target,
                cell.MeanAfr() - target);
  return text;
}

double SiteTarget(const CellGrid& cells, const TargetTable& targets, int row, int column) {
  const TuneAxes& axes = cells.Axes();
  return targets.AtPoint(axes.RowRpm(row), axes.ColumnLoad(column));
}

GridOverlay HeatOverlay(const CellGrid& cells, const TargetTable& targets, HeatLayer layer,
                        MapCell outlined) {
  const int rows = cells.Axes().Rows();
  const int columns = cells.Axes().Columns();
  GridOverlay overlay(rows, columns);
  double busiest = 0.0;
  for (int row = 1; row <= rows; ++row) {
    for (int column = 1; column <= columns; ++column) {
      busiest = std::max(busiest, cells.At(row, column).time_s);
    }
  }
  for (int row = 1; row <= rows; ++row) {
    for (int column = 1; column <= columns; ++column) {
      const CellEvidence& cell = cells.At(row, column);
      const double target = SiteTarget(cells, targets, row, column);
      CellOverlay look;
      if (layer != HeatLayer::kOff) {
        look.ground = GroundOf(cell, target, layer, busiest).value_or(kNoFiguresGround);
        look.description = CellFigures(cell, target);
      }
      if (outlined == MapCell{row, column}) look.mark = kChartCellMark;
      overlay.Set({row, column}, std::move(look));
    }
  }
  return overlay;
}

MapCell NearestCell(const TuneAxes& axes, double rpm, double load) {
  if (axes.rpm.empty() || axes.loads.empty()) return {0, 0};
  return {axes.Rows() - Nearest(axes.rpm, rpm), Nearest(axes.loads, load) + 1};
}

std::vector<CellStretch> CellSpans(const DatalogLog& log, LoadBasis basis, const TuneAxes& axes,
                                   MapCellRect cells, double min_rpm) {
  std::vector<CellStretch> spans;
  const std::vector<double>& times = log.Times();
  bool inside = false;
  for (std::size_t i = 0; i < times.size(); ++i) {
    const TuneSample sample = SampleAt(log, basis, i);
    const bool in = sample.rpm >= min_rpm && std::isfinite(sample.load) &&
                    cells.Contains(NearestCell(axes, sample.rpm, sample.load));
    const double end = i + 1 < times.size() ? times[i + 1] : times[i];
    if (in && inside) {
      spans.back().second = end;
    } else if (in) {
      spans.emplace_back(times[i], end);
    }
    inside = in;
  }
  return spans;
}

}  // namespace vela
