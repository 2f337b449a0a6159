#include "calibration/map_axes.h"

#include <algorithm>
#include <cmath>

#include "calibration/conversions.h"
#include "calibration/rounding.h"

namespace vela {

namespace {

constexpr MapScaleEntry kType0[] = {{64, 1.0, "Full Scale - 1.000 Bar Span"}};
constexpr MapScaleEntry kType1[] = {{64, 2.0, "Full Scale - 2.000 Bar Span"}};
constexpr MapScaleEntry kType2[] = {{64, 2.5, "Full Scale - 2.500 Bar Span"},
                                    {78, 2.031, "Scaled to 2.031 Bar Span"},
                                    {100, 1.601, "Scaled to 1.601 Bar Span"},
                                    {158, 1.036, "Scaled to 1.036 Bar Span"}};
constexpr MapScaleEntry kType3[] = {
    {64, 3.04, "Full Scale - 3.040 Bar Span"}, {72, 2.708, "Scaled to 2.708 Bar Span"},
    {80, 2.423, "Scaled to 2.423 Bar Span"},   {95, 2.043, "Scaled to 2.043 Bar Span"},
    {120, 1.615, "Scaled to 1.615 Bar Span"},  {195, 1.041, "Scaled to 1.041 Bar Span"}};
constexpr MapScaleEntry kType4[] = {
    {64, 4.0, "Full Scale - 4.000 Bar Span"}, {68, 3.75, "Scaled to 3.750 Bar Span"},
    {73, 3.5, "Scaled to 3.500 Bar Span"},    {78, 3.25, "Scaled to 3.250 Bar Span"},
    {85, 3.0, "Scaled to 3.000 Bar Span"},    {93, 2.75, "Scaled to 2.750 Bar Span"},
    {102, 2.5, "Scaled to 2.500 Bar Span"},   {113, 2.25, "Scaled to 2.250 Bar Span"},
    {128, 2.0, "Scaled to 2.000 Bar Span"},   {143, 1.85, "Scaled to 1.850 Bar Span"},
    {163, 1.625, "Scaled to 1.625 Bar Span"}, {240, 1.031, "Scaled to 1.031 Bar Span"}};
constexpr MapScaleEntry kType5[] = {{64, 5.0, "Full Scale - 5.000 Bar Span"}};

constexpr MapSensorType kTypes[kMapSensorTypes] = {
    {kMapSensorTexts[0], kType0}, {kMapSensorTexts[1], kType1}, {kMapSensorTexts[2], kType2},
    {kMapSensorTexts[3], kType3}, {kMapSensorTexts[4], kType4}, {kMapSensorTexts[5], kType5}};
constexpr int kOpenEndedType = 4;
constexpr std::uint8_t kOpenEndedFrom = 240;

}  // namespace

std::array<int, kMapRows> RpmSites(int rpm_sites_code) {
  const std::size_t code =
      rpm_sites_code >= 0 && rpm_sites_code < static_cast<int>(kRpmSiteSpacings.size())
          ? static_cast<std::size_t>(rpm_sites_code)
          : 0;
  const int spacing = kRpmSiteSpacings[code];
  const int top = kRpmSiteTops[code];
  // Spaced sites from the top down while they stay at one spacing or more.
  int spaced = 1;
  while (spaced < kMapRows - 1 && top - spaced * spacing >= spacing) ++spaced;
  std::array<int, kMapRows> sites{};
  for (int k = 0; k < spaced; ++k) sites[kMapRows - 1 - k] = top - k * spacing;
  const int low_sites = kMapRows - spaced;
  const double lowest_spaced = sites[low_sites];
  for (int i = 0; i < low_sites; ++i) {
    sites[i] = static_cast<int>(RoundHalfEven(lowest_spaced * i / low_sites));
  }
  return sites;
}

const MapSensorType& MapSensorTypeOf(int sensor_type) {
  return kTypes[sensor_type >= 0 && sensor_type < kMapSensorTypes ? sensor_type : 0];
}

std::optional<int> MapScaleEntryOfCode(int sensor_type, std::uint8_t code) {
  const std::span<const MapScaleEntry> scales = MapSensorTypeOf(sensor_type).scales;
  for (std::size_t i = 0; i < scales.size(); ++i) {
    if (scales[i].code == code) return static_cast<int>(i);
  }
  if (sensor_type == kOpenEndedType && code >= kOpenEndedFrom) {
    return static_cast<int>(scales.size()) - 1;
  }
  return std::nullopt;
}

std::optional<std::uint8_t> MapScaleCodeOfEntry(int sensor_type, int entry) {
  const std::span<const MapScaleEntry> scales = MapSensorTypeOf(sensor_type).scales;
  if (entry < 0 || entry >= static_cast<int>(scales.size())) return std::nullopt;
  return scales[static_cast<std::size_t>(entry)].code;
}

LoadAxis LoadAxisOf(bool map_based, int sensor_type, std::uint8_t scaling_code) {
  if (!map_based) return {LoadBasis::kThrottle, 100.0};
  const std::span<const MapScaleEntry> scales = MapSensorTypeOf(sensor_type).scales;
  const std::optional<int> entry = MapScaleEntryOfCode(sensor_type, scaling_code);
  const double span = scales[static_cast<std::size_t>(entry.value_or(0))].span_bar;
  return {LoadBasis::kMap, span * kKpaPerBar};
}

std::vector<double> LoadSiteValues(const LoadAxis& axis, int sites) {
  std::vector<double> values;
  if (sites <= 0) return values;
  if (sites == 1) return {axis.top};
  for (int i = 0; i < sites; ++i) values.push_back(axis.top * i / (sites - 1));
  return values;
}

double AxisPosition(std::span<const double> points, double value) {
  if (points.empty() || std::isnan(value)) return 0.0;
  if (value <= points.front()) return 0.0;
  if (value >= points.back()) return static_cast<double>(points.size() - 1);
  for (std::size_t i = 0; i + 1 < points.size(); ++i) {
    if (value > points[i + 1]) continue;
    const double span = points[i + 1] - points[i];
    return static_cast<double>(i) + (span > 0.0 ? (value - points[i]) / span : 0.0);
  }
  return static_cast<double>(points.size() - 1);
}

}  // namespace vela
