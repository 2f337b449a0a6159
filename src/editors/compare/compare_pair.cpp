#include "editors/compare/compare_pair.h"

namespace vela {

namespace {

// Short, for the status strip: the bar's caption names both sides.
std::string NotOneOfTheTwo(const char* what) {
  return std::string("Nothing ") + what +
         ": the editors' image is not one of the two sides. Ctrl-Shift-Q compares it.";
}

}  // namespace

bool Editable(const ComparePair& pair) { return pair.base.kind == OtherSideKind::kEditors; }

std::optional<std::string> PairRefusal(const ComparePair& pair) {
  if (pair.other.kind == OtherSideKind::kEditors) {
    return "Nothing compared: the editors' image is compared as the first side.";
  }
  if (pair.base.kind == OtherSideKind::kEcu && pair.other.kind == OtherSideKind::kEcu) {
    return "Nothing compared: the ECU as last read is both sides.";
  }
  return std::nullopt;
}

std::string ViewCaption(CompareView view, const ComparePair& pair) {
  if (Editable(pair) || view == CompareView::kOther) return ViewCaption(view, pair.other);
  if (view == CompareView::kCurrent) {
    return "Current: " + OtherSideText(pair.base) + ", compared with " + OtherSideText(pair.other);
  }
  return "Difference: " + OtherSideText(pair.base) + " minus " + OtherSideText(pair.other);
}

std::optional<std::string> TakeRefusal(const ComparePair& pair) {
  if (Editable(pair)) return std::nullopt;
  return NotOneOfTheTwo("taken");
}

std::optional<std::string> SendRefusal(const ComparePair& pair) {
  if (Editable(pair)) return std::nullopt;
  return NotOneOfTheTwo("sent");
}

std::optional<std::string> EditRefusal(CompareView view, const ComparePair& pair) {
  if (!Editable(pair)) {
    return "Nothing changed: the map shows " + OtherSideText(pair.base) +
           ", not the editors' image. Ctrl-Shift-Q compares it.";
  }
  if (view == CompareView::kCurrent) return std::nullopt;
  return EditRefusedNote(view);
}

}  // namespace vela
