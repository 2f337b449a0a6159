#include "editors/mapgrid/map_display.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "calibration/map_axes.h"

namespace vela {

namespace {

// Blue, cyan, green, yellow, red at 0, 0.25, 0.5, 0.75 and 1.
constexpr std::array<Rgb, 5> kRampStops = {
    {{40, 70, 220}, {40, 190, 220}, {60, 200, 80}, {240, 210, 50}, {220, 50, 40}}};

std::uint8_t Mix(std::uint8_t from, std::uint8_t to, double share) {
  return static_cast<std::uint8_t>(std::lround(from + (to - from) * share));
}

}  // namespace

Rgb RampColour(double fraction) {
  if (std::isnan(fraction)) fraction = 0.0;
  const double place = std::clamp(fraction, 0.0, 1.0) * (kRampStops.size() - 1);
  const auto index = std::min(static_cast<std::size_t>(place), kRampStops.size() - 2);
  const double share = place - static_cast<double>(index);
  const Rgb& from = kRampStops[index];
  const Rgb& to = kRampStops[index + 1];
  return {Mix(from.red, to.red, share), Mix(from.green, to.green, share),
          Mix(from.blue, to.blue, share)};
}

UnitsRange RangeOf(const MapGridModel& grid) {
  UnitsRange range{grid.Units(1, 1), grid.Units(1, 1)};
  for (int row = 1; row <= kMapRows; ++row) {
    for (int column = 1; column <= grid.LoadSites(); ++column) {
      range.low = std::min(range.low, grid.Units(row, column));
      range.high = std::max(range.high, grid.Units(row, column));
    }
  }
  return range;
}

double RangeFraction(const UnitsRange& range, int units) {
  if (range.high <= range.low) return 0.5;
  return std::clamp(static_cast<double>(units - range.low) / (range.high - range.low), 0.0, 1.0);
}

AxisScale NiceScale(double low, double high, int segments) {
  segments = std::max(segments, 1);
  if (!std::isfinite(low) || !std::isfinite(high)) return {0.0, 1.0, 1};
  if (high < low) std::swap(low, high);
  if (high - low < 1e-9) {
    low -= 0.5;
    high += 0.5;
  }
  const double rough = (high - low) / segments;
  const double power = std::pow(10.0, std::floor(std::log10(rough)));
  // The finest round step that needs no more than two steps over the asked number.
  for (const double factor : {1.0, 2.0, 5.0, 10.0, 20.0, 50.0}) {
    const double step = factor * power;
    const double min = std::floor(low / step) * step;
    const double max = std::ceil(high / step) * step;
    const int count = static_cast<int>(std::lround((max - min) / step));
    if (count <= segments + 2) return {min, max, std::max(count, 1)};
  }
  return {low, high, segments};
}

OperatingPoint OperatingPointOn(const MapGridModel& grid, const LiveLoad& live) {
  const std::array<int, kMapRows>& sites = grid.RpmSitesOfAxis();
  const std::vector<double> rpm_points(sites.begin(), sites.end());
  const double rpm_site = AxisPosition(rpm_points, live.rpm);
  std::vector<double> load_points;
  for (int column = 1; column <= grid.LoadSites(); ++column) {
    load_points.push_back(grid.LoadSiteValue(column));
  }
  const double load = grid.LoadUnit() == "%" ? live.tps_percent : live.map_kpa;
  return {static_cast<double>(kMapRows) - rpm_site, 1.0 + AxisPosition(load_points, load)};
}

LiveLoad LiveLoadOf(const live::Frame& frame) {
  return {live::EngineRpm(frame), live::MapKpa(frame), live::TpsPercent(frame)};
}

}  // namespace vela
