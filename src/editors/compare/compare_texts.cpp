#include "editors/compare/compare_texts.h"

#include <cmath>
#include <cstdio>
#include <set>

namespace vela {

namespace {

constexpr std::size_t kFieldsNamed = 5;

std::string Counted(int count, const char* one, const char* many, const char* verb_one,
                    const char* verb_many) {
  if (count == 0) return std::string("No ") + one + " " + verb_one;
  return std::to_string(count) + " " + (count == 1 ? one : many) + " " +
         (count == 1 ? verb_one : verb_many);
}

}  // namespace

std::string OtherSideText(const OtherSide& other) {
  switch (other.kind) {
    case OtherSideKind::kEcu:
      return "ECU as last read";
    case OtherSideKind::kMapFile:
      return "map file " + other.name;
    case OtherSideKind::kEditors:
      return "the editors' image";
    case OtherSideKind::kFuelProposal:
      return "fuel proposal";
    case OtherSideKind::kRestorePoint:
      break;
  }
  return "restore point " + other.name;
}

std::string ViewCaption(CompareView view, const OtherSide& other) {
  switch (view) {
    case CompareView::kCurrent:
      return "Current: the editors' values, compared with " + OtherSideText(other);
    case CompareView::kOther:
      return "Other side: " + OtherSideText(other);
    case CompareView::kDifference:
      break;
  }
  return "Difference: editors minus " + OtherSideText(other);
}

std::string CellCountText(int cells, const OtherSide& other) {
  return Counted(cells, "cell", "cells", "differs", "differ") + " from " + OtherSideText(other);
}

std::string SetupCountText(const std::vector<SetupByteDifference>& bytes, const OtherSide& other) {
  std::string text =
      Counted(static_cast<int>(bytes.size()), "set-up byte", "set-up bytes", "differs", "differ") +
      " from " + OtherSideText(other);
  std::vector<std::string_view> fields;
  std::set<std::string_view> seen;
  for (const SetupByteDifference& byte : bytes) {
    if (seen.insert(byte.field).second) fields.push_back(byte.field);
  }
  for (std::size_t i = 0; i < fields.size() && i < kFieldsNamed; ++i) {
    text += (i == 0 ? ": " : ", ") + std::string(fields[i]);
  }
  if (fields.size() > kFieldsNamed) text += ", ...";
  return text;
}

std::string EditRefusedNote(CompareView view) {
  const std::string shown =
      view == CompareView::kDifference ? "the difference" : "the other side's values";
  return "Nothing changed: the map shows " + shown + ". Ctrl-Q shows the current values to edit.";
}

std::string ValueText(double value, int decimals, char separator, bool with_sign) {
  const double scale = std::pow(10.0, decimals);
  double rounded = std::round(value * scale) / scale;
  if (rounded == 0.0) rounded = 0.0;  // no "-0.000"
  char buffer[48];
  std::snprintf(buffer, sizeof buffer, with_sign && rounded > 0 ? "%+.*f" : "%.*f", decimals,
                rounded);
  std::string text(buffer);
  if (const std::size_t dot = text.find('.'); dot != std::string::npos) text[dot] = separator;
  return text;
}

}  // namespace vela
