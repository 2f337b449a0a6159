// The two sides of a comparison and what may be done with them. The first side (the base) is
// what a map page's current view shows; by default it is the editors' image, and then the
// comparison is a working one: the other side's values can be taken into the editors and the
// differing cells sent to the ECU. With any other base (the ECU as last read, a map file) the
// comparison only shows: the editors' image is not one of the two sides, so nothing taken or
// sent could mean what the view shows, and no key edits the values shown.
#pragma once

#include <optional>
#include <string>

#include "editors/compare/compare_texts.h"

namespace vela {

struct ComparePair {
  OtherSide base{OtherSideKind::kEditors, {}};
  OtherSide other;
  bool operator==(const ComparePair&) const = default;
};

// True while the editors' image is the base: taking, sending and editing are allowed.
bool Editable(const ComparePair& pair);

// Why the pair cannot be compared (both sides the ECU as last read, or the editors' image on
// the other side), or nothing.
std::optional<std::string> PairRefusal(const ComparePair& pair);

// The caption of a map page's view, naming both sides: "Current: ECU as last read, compared
// with map file base.sm1", "Difference: ECU as last read minus map file base.sm1". With the
// editors' image as the base, as `ViewCaption(view, pair.other)`.
std::string ViewCaption(CompareView view, const ComparePair& pair);

// Why taking the other side's values or sending the differing cells did nothing on a pair
// without the editors' image; nothing when the pair allows it.
std::optional<std::string> TakeRefusal(const ComparePair& pair);
std::optional<std::string> SendRefusal(const ComparePair& pair);

// Why a key that would change values did nothing in `view` of `pair`; nothing when it may.
std::optional<std::string> EditRefusal(CompareView view, const ComparePair& pair);

}  // namespace vela
