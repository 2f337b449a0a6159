#include "editors/history/history_words.h"

#include <set>

namespace vela {

namespace {

// The map area an entry of `place` lies in, and its cell width; {0, 0, 0} elsewhere.
struct MapArea {
  int start = 0;
  int length = 0;
  int cell_bytes = 0;
};

MapArea AreaOf(EditPlace place) {
  switch (place) {
    case EditPlace::kFuelMap1:
      return {kFuelMap1Start, kFuelMapAreaLength, 2};
    case EditPlace::kFuelMap2:
      return {kFuelMap2Start, kFuelMapAreaLength, 2};
    case EditPlace::kIgnMap:
      return {kIgnMapStart, kIgnMapAreaLength, 1};
    case EditPlace::kSetup:
    case EditPlace::kWholeImage:
      break;
  }
  return {};
}

std::string Counted(std::size_t count, std::string_view one, std::string_view many) {
  return std::to_string(count) + " " + std::string(count == 1 ? one : many);
}

std::string NameList(const std::vector<RestorePoint>& points) {
  std::string names;
  for (const RestorePoint& point : points) {
    if (!names.empty()) names += ", ";
    names += point.name;
  }
  return names;
}

}  // namespace

std::string_view KindText(EditKind kind) {
  switch (kind) {
    case EditKind::kKeyStep:
      return "Key step";
    case EditKind::kTypedOperation:
      return "Typed operation";
    case EditKind::kInterpolation:
      return "Interpolation";
    case EditKind::kSmoothing:
      return "Smoothing";
    case EditKind::kFill:
      return "Fill";
    case EditKind::kPaste:
      return "Paste";
    case EditKind::kSetupChange:
      return "Set-up change";
    case EditKind::kMapFileLoaded:
      return "Map file loaded";
    case EditKind::kDownload:
      return "Download";
    case EditKind::kTakenFromEcu:
      return "Read from the ECU";
    case EditKind::kTakeOther:
      return "Taken from a comparison";
    case EditKind::kRestore:
      break;
  }
  return "Restore";
}

std::string_view PlaceText(EditPlace place) {
  switch (place) {
    case EditPlace::kFuelMap1:
      return "Fuel Map 1";
    case EditPlace::kFuelMap2:
      return "Fuel Map 2";
    case EditPlace::kIgnMap:
      return "Ignition map";
    case EditPlace::kSetup:
      return "Set-up";
    case EditPlace::kWholeImage:
      break;
  }
  return "Whole image";
}

std::string SizeText(const EditEntry& entry) {
  if (entry.changes.empty()) return "No change";
  const MapArea area = AreaOf(entry.place);
  if (area.cell_bytes == 0) return Counted(entry.changes.size(), "byte", "bytes");
  std::set<int> cells;
  std::size_t outside = 0;
  for (const ByteChange& change : entry.changes) {
    const int offset = change.position - area.start;
    if (offset < 0 || offset >= area.length) {
      ++outside;
    } else {
      cells.insert(offset / area.cell_bytes);
    }
  }
  if (cells.empty()) return Counted(outside, "byte", "bytes");
  std::string text = Counted(cells.size(), "cell", "cells");
  if (outside > 0) text += ", " + Counted(outside, "byte", "bytes");
  return text;
}

std::string TakenText(const RestorePoints::Taken& taken) {
  std::string text;
  switch (taken.outcome) {
    case RestorePoints::Outcome::kWritten:
      text = "Restore point taken.";
      break;
    case RestorePoints::Outcome::kSameAsNewest:
      text = "No restore point taken: the calibration equals the newest one.";
      break;
    case RestorePoints::Outcome::kFailed:
      text = "The restore point could not be written (error " + std::to_string(taken.error) + ").";
      break;
  }
  if (!taken.thinned.empty()) {
    text += " " + Counted(taken.thinned.size(), "older restore point", "older restore points") +
            " thinned out.";
  }
  if (!taken.not_removed.empty()) {
    text += " " + Counted(taken.not_removed.size(), "point", "points") +
            " to thin could not be removed: " + NameList(taken.not_removed) + ".";
  }
  return text;
}

}  // namespace vela
