#include "editors/setup/map_sensor.h"

#include "calibration/conversions.h"

namespace vela {

std::vector<std::string> MapScaleTexts(int sensor_type) {
  std::vector<std::string> texts;
  for (const MapScaleEntry& entry : MapSensorTypeOf(sensor_type).scales) {
    texts.emplace_back(entry.text);
  }
  return texts;
}

std::optional<double> MapSensorSpanBar(int sensor_type, int scale_entry) {
  const std::span<const MapScaleEntry> scales = MapSensorTypeOf(sensor_type).scales;
  if (scale_entry < 0 || scale_entry >= static_cast<int>(scales.size())) {
    return std::nullopt;
  }
  return scales[static_cast<std::size_t>(scale_entry)].span_bar;
}

std::optional<MapSensorLine> MapSensorLineOf(int sensor_type, int scale_entry) {
  const std::optional<double> span = MapSensorSpanBar(sensor_type, scale_entry);
  if (!span) return std::nullopt;
  return MapSensorLine{1.0, 0.0, *span * kKpaPerBar};
}

}  // namespace vela
