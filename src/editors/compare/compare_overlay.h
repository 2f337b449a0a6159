// How a map grid and its graph show a comparison in each view. Every differing cell carries a
// mark whose colour says which side is higher; in the other side's view the cells show that
// side's values; in the difference view they show ours minus theirs, coloured by sign and size.
#pragma once

#include "editors/mapgrid/cell_overlay.h"
#include "editors/workbench/image_compare.h"

namespace vela {

// Marks of a differing cell: ours higher, ours lower, only one side holds the cell.
inline constexpr Rgb kOursHigherMark{200, 50, 20};
inline constexpr Rgb kOursLowerMark{30, 90, 220};
inline constexpr Rgb kOneSideMark{140, 40, 170};
// The difference view's ground of an equal cell and of a cell one side lacks.
inline constexpr Rgb kEqualGround{236, 236, 236};
inline constexpr Rgb kOneSideGround{218, 204, 228};

// The mark of a cell, or nothing when both sides hold the same value.
std::optional<Rgb> CompareMark(const TableComparison& table, MapCell cell);

// The difference view's ground of a difference `difference` when the largest on the table is
// `largest` (both in shown units): red for a higher cell of ours, blue for a lower one, deeper
// with the size (a quarter of the colour at the least, so a small difference still shows).
Rgb DifferenceGround(double difference, double largest);

// The overlay of a grid showing `table` in `view`, its values written with `decimals` and the
// decimal mark `separator`. The current view marks the differing cells and leaves the values
// as the grid has them (they follow the edits at once); with `base_values` (a base other than
// the editors' image, whose values the grid does not hold) it shows the first side's values.
GridOverlay CompareOverlay(const TableComparison& table, CompareView view, int decimals,
                           char separator, bool base_values = false);

}  // namespace vela
