// How the target AFR table is shown: each cell in the colours of the difference view, its
// distance from stoichiometric 14.7 (richer one hue, leaner the other, deeper the further), and
// the words a screen reader says for it.
#pragma once

#include <string>

#include "editors/mapgrid/cell_overlay.h"
#include "tune/target/target_table.h"

namespace vela {

inline constexpr double kStoichiometricAfr = 14.7;
// The colours reach their deepest at this distance from 14.7, or at the table's largest distance
// when that is further, so a table of small distances does not look alarming.
inline constexpr double kTargetColourSpan = 2.0;

// The cell's place against 14.7: "stoichiometric", "1.50 richer than stoichiometric", "0.30
// leaner than stoichiometric".
std::string TargetLeaning(double afr);

// The overlay of the target grid: every cell's ground by its distance from 14.7 (richer: the
// difference view's lower colour, blue; leaner: its higher colour, red; 14.7 itself: the equal
// cell's grey) and its description.
GridOverlay TargetOverlay(const TargetTable& table);

}  // namespace vela
