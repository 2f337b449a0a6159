#include "editors/history/restore_writes.h"

#include "editors/history/history_words.h"

namespace vela {

namespace {

struct Area {
  int start = 1;
  int length = kImageLength;
};

Area RestoredArea(EditPlace place) {
  switch (place) {
    case EditPlace::kFuelMap1:
      return {kFuelMap1Start, kFuelMapAreaLength};
    case EditPlace::kFuelMap2:
      return {kFuelMap2Start, kFuelMapAreaLength};
    case EditPlace::kIgnMap:
      return {kIgnMapStart, kIgnMapAreaLength};
    case EditPlace::kSetup:
      return {0, 0};
    case EditPlace::kWholeImage:
      break;
  }
  return {};
}

std::string LayoutRefusal(EditPlace place, int point_sites, int current_sites) {
  return "The restore point's " + std::string(PlaceText(place)) + " has " +
         std::to_string(point_sites) + " load sites and the calibration's " +
         std::to_string(current_sites) + ": restore the whole calibration instead.";
}

}  // namespace

RestorePlan PlanRestore(const CalibrationImage& current, const CalibrationImage& point,
                        EditPlace place) {
  RestorePlan plan;
  const bool fuel = place == EditPlace::kFuelMap1 || place == EditPlace::kFuelMap2;
  if (fuel && point.FuelLoadSites() != current.FuelLoadSites()) {
    plan.refusal = LayoutRefusal(place, point.FuelLoadSites(), current.FuelLoadSites());
    return plan;
  }
  if (place == EditPlace::kIgnMap && point.IgnLoadSites() != current.IgnLoadSites()) {
    plan.refusal = LayoutRefusal(place, point.IgnLoadSites(), current.IgnLoadSites());
    return plan;
  }
  const Area area = RestoredArea(place);
  if (area.length == 0) {
    plan.refusal = "The set-up is restored with the whole calibration only.";
    return plan;
  }
  for (const ByteChange& change : DiffImages(current, point)) {
    if (change.position >= area.start && change.position < area.start + area.length) {
      plan.writes.push_back({change.position, change.after});
    }
  }
  return plan;
}

}  // namespace vela
