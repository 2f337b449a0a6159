#include "datalog/review/marker_list.h"

#include <algorithm>
#include <cctype>
#include <cstdio>

namespace vela::review {

namespace {

constexpr double kSameMarkerTime = 1e-6;

}  // namespace

bool IsFaultMarkerText(std::string_view text) {
  constexpr std::string_view kPrefix = "Fault ";
  if (!text.starts_with(kPrefix)) return false;
  std::size_t at = kPrefix.size();
  const std::size_t digits = at;
  while (at < text.size() && std::isdigit(static_cast<unsigned char>(text[at]))) ++at;
  return at > digits && at < text.size() && text[at] == ':';
}

std::string GapMarkerText(const LogGap& gap) {
  char clock[32];
  std::snprintf(clock, sizeof clock, "%.3f s", gap.clock_s);
  return "Gap: " + std::to_string(gap.missing_frames) +
         (gap.missing_frames == 1 ? " frame" : " frames") + " missing, " + clock;
}

std::vector<MarkerEntry> BuildMarkerList(const DatalogLog& log) {
  std::vector<MarkerEntry> list;
  const std::vector<LogMarker>& markers = log.Markers();
  for (std::size_t i = 0; i < markers.size(); ++i) {
    const MarkerKind kind =
        IsFaultMarkerText(markers[i].text) ? MarkerKind::kFault : MarkerKind::kTuner;
    list.push_back({markers[i].time, markers[i].text, kind, i});
  }
  const std::vector<LogGap>& gaps = log.Gaps();
  for (std::size_t i = 0; i < gaps.size(); ++i) {
    if (gaps[i].record >= log.RecordCount()) continue;
    list.push_back({log.Times()[gaps[i].record], GapMarkerText(gaps[i]), MarkerKind::kGap, i});
  }
  std::stable_sort(list.begin(), list.end(), [](const MarkerEntry& a, const MarkerEntry& b) {
    return a.time < b.time ||
           (a.time == b.time && a.kind != MarkerKind::kGap && b.kind == MarkerKind::kGap);
  });
  return list;
}

std::optional<std::size_t> NextMarker(const std::vector<MarkerEntry>& list, double time) {
  for (std::size_t i = 0; i < list.size(); ++i) {
    if (list[i].time > time + kSameMarkerTime) return i;
  }
  return std::nullopt;
}

std::optional<std::size_t> PreviousMarker(const std::vector<MarkerEntry>& list, double time) {
  for (std::size_t i = list.size(); i-- > 0;) {
    if (list[i].time < time - kSameMarkerTime) return i;
  }
  return std::nullopt;
}

}  // namespace vela::review
