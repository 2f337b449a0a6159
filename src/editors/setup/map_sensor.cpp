#include "editors/setup/map_sensor.h"

namespace vela {

namespace {
constexpr double kKpaPerBar = 100.0;
}  // namespace

std::vector<std::string> MapScaleTexts(int combo_map) {
  std::vector<std::string> texts;
  for (const MapScaleEntry& entry : MapSensorTypeOf(combo_map).scales) {
    texts.emplace_back(entry.text);
  }
  return texts;
}

std::optional<double> MapSensorSpanBar(int combo_map, int combo_map_scale) {
  const std::span<const MapScaleEntry> scales = MapSensorTypeOf(combo_map).scales;
  if (combo_map_scale < 0 || combo_map_scale >= static_cast<int>(scales.size())) {
    return std::nullopt;
  }
  return scales[static_cast<std::size_t>(combo_map_scale)].span_bar;
}

std::optional<MapSensorLine> MapSensorLineOf(int combo_map, int combo_map_scale) {
  const std::optional<double> span = MapSensorSpanBar(combo_map, combo_map_scale);
  if (!span) return std::nullopt;
  return MapSensorLine{1.0, 0.0, *span * kKpaPerBar};
}

}  // namespace vela
