#include "editors/setup/map_sensor.h"

#include <charconv>

namespace vela {

namespace {

constexpr std::array<std::string_view, 4> kScaleType2 = {
    "Full Scale - 2.500 Bar Span", "Scaled to 2.031 Bar Span", "Scaled to 1.601 Bar Span",
    "Scaled to 1.036 Bar Span"};
constexpr std::array<std::string_view, 6> kScaleType3 = {
    "Full Scale - 3.040 Bar Span", "Scaled to 2.708 Bar Span", "Scaled to 2.423 Bar Span",
    "Scaled to 2.043 Bar Span",    "Scaled to 1.615 Bar Span", "Scaled to 1.041 Bar Span"};
constexpr std::array<std::string_view, 12> kScaleType4 = {
    "Full Scale - 4.000 Bar Span", "Scaled to 3.750 Bar Span", "Scaled to 3.500 Bar Span",
    "Scaled to 3.250 Bar Span",    "Scaled to 3.000 Bar Span", "Scaled to 2.750 Bar Span",
    "Scaled to 2.500 Bar Span",    "Scaled to 2.250 Bar Span", "Scaled to 2.000 Bar Span",
    "Scaled to 1.850 Bar Span",    "Scaled to 1.625 Bar Span", "Scaled to 1.031 Bar Span"};
// The types that offer their full span only.
constexpr std::string_view kFullScale0 = "Full Scale - 1.000 Bar Span";
constexpr std::string_view kFullScale1 = "Full Scale - 2.000 Bar Span";
constexpr std::string_view kFullScale5 = "Full Scale - 5.000 Bar Span";
constexpr double kKpaPerBar = 100.0;

template <std::size_t N>
std::vector<std::string> ToStrings(const std::array<std::string_view, N>& texts) {
  return {texts.begin(), texts.end()};
}

// The number that stands before " Bar Span" in an entry's text.
std::optional<double> SpanOfText(std::string_view text) {
  const auto end = text.find(" Bar Span");
  if (end == std::string_view::npos) return std::nullopt;
  const auto start = text.find_last_of(' ', end - 1) + 1;
  double span = 0.0;
  const auto [ptr, error] = std::from_chars(text.data() + start, text.data() + end, span);
  if (error != std::errc() || ptr != text.data() + end) return std::nullopt;
  return span;
}

}  // namespace

std::vector<std::string> MapScaleTexts(int combo_map) {
  switch (combo_map) {
    case 1:
      return {std::string(kFullScale1)};
    case 2:
      return ToStrings(kScaleType2);
    case 3:
      return ToStrings(kScaleType3);
    case 4:
      return ToStrings(kScaleType4);
    case 5:
      return {std::string(kFullScale5)};
    default:
      return {std::string(kFullScale0)};
  }
}

std::optional<double> MapSensorSpanBar(int combo_map, int combo_map_scale) {
  const std::vector<std::string> texts = MapScaleTexts(combo_map);
  if (combo_map_scale < 0 || combo_map_scale >= static_cast<int>(texts.size())) {
    return std::nullopt;
  }
  return SpanOfText(texts[static_cast<std::size_t>(combo_map_scale)]);
}

std::optional<MapSensorLine> MapSensorLineOf(int combo_map, int combo_map_scale) {
  const std::optional<double> span = MapSensorSpanBar(combo_map, combo_map_scale);
  if (!span) return std::nullopt;
  return MapSensorLine{1.0, 0.0, *span * kKpaPerBar};
}

}  // namespace vela
