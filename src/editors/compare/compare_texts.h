// The words of a comparison: what the editors' image is compared with, which view a map page
// shows, how many cells and set-up bytes differ, and the notes of taking and sending.
#pragma once

#include <string>
#include <vector>

#include "editors/workbench/image_compare.h"

namespace vela {

// One side of a comparison: the ECU's calibration as last read, a map file, a restore point, the
// editors' image (the first side by default, see compare_pair.h), or the editors' image with a
// fuel correction proposal's values in one fuel map.
enum class OtherSideKind { kEcu, kMapFile, kRestorePoint, kEditors, kFuelProposal };
struct OtherSide {
  OtherSideKind kind = OtherSideKind::kEcu;
  std::string name;  // the map file's name, the restore point as its list shows it
  bool operator==(const OtherSide&) const = default;
};

// "ECU as last read", "map file base.sm1", "restore point 2024-01-31 14:25:30", "the editors'
// image", "fuel proposal".
std::string OtherSideText(const OtherSide& other);

// The caption of a map page's view: "Current: the editors' values, compared with ...",
// "Other side: ...", "Difference: editors minus ...".
std::string ViewCaption(CompareView view, const OtherSide& other);

// "No cell differs from ...", "1 cell differs from ...", "12 cells differ from ...".
std::string CellCountText(int cells, const OtherSide& other);
// The same for the set-up bytes, with the fields they belong to (each once, in position order;
// the first five, then "...").
std::string SetupCountText(const std::vector<SetupByteDifference>& bytes, const OtherSide& other);

// Why a key that would change values did nothing while the page shows another view.
std::string EditRefusedNote(CompareView view);

// A value as a grid cell shows it: `decimals` after the decimal mark `separator`; with
// `with_sign` a difference, "+" before a positive value and no sign on one that rounds to 0.
std::string ValueText(double value, int decimals, char separator, bool with_sign);

}  // namespace vela
