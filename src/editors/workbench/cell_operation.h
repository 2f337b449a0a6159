// The typed operation line of the map grids: the text a tuner types after `=` or a digit, read
// into one operation on the selected cells.
//
//   12.5    sets every cell to 12.5          =-5     sets (a sign after = is the value's own)
//   +0.3    adds 0.3                         -0.3    subtracts 0.3
//   *1.05   scales by 1.05                   /2      divides by 2
//   +5%     scales by 1.05                   -3%     scales by 0.97
//
// Blanks around the text, after the operator and before % are allowed. The decimal mark is '.'
// or the computer's own. Anything else is refused with a reason the line shows as it is typed.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "editors/mapgrid/map_keys.h"
#include "editors/workbench/bulk_change.h"

namespace vela {

enum class OperationKind { kSet, kAdd, kScale };

struct CellOperation {
  OperationKind kind = OperationKind::kSet;
  double operand = 0.0;  // the value set, the amount added, or the factor
  // The cell's value after the operation, before the map's limits and stored step.
  double Apply(double current) const;
  bool operator==(const CellOperation&) const = default;
};

// What a map can hold, in its display units (milliseconds, degrees): the typed numbers are
// checked against it.
struct ValueBounds {
  double lowest = 0.0;
  double highest = 0.0;
  double step = 0.001;  // the stored step
  int decimals = 3;
};
ValueBounds ValueBoundsOf(const MapGridModel& grid);

struct OperationParse {
  std::optional<CellOperation> operation;
  std::string refusal;  // why the text is no operation; empty with an operation
};

// Reads the typed line. `decimal_mark` is the computer's decimal mark; '.' is read as well.
// A set beyond the bounds, an amount larger than the whole range, and a factor that takes even
// one stored step beyond the range are refused, as are factors of 0 and below.
OperationParse ParseCellOperation(std::string_view text, char decimal_mark,
                                  const ValueBounds& bounds);

// What Enter would do, shown on the line before it is pressed: the range of the selection's
// values afterwards (after the map's limits, the stored step and the duty cap) and the counts.
struct OperationPreview {
  double lowest = 0.0;
  double highest = 0.0;
  int changed = 0;  // cells whose stored value changes, capped cells above the selection too
  int capped = 0;
  int clamped = 0;
};
OperationPreview PreviewOperation(const MapGridModel& grid, const CellRect& rect,
                                  const CellOperation& operation, const DutyContext& duty);
// "12.500 .. 14.250" with the map's decimals and the computer's mark; one value when equal.
std::string RangeText(const OperationPreview& preview, MapKind kind, char decimal_mark);

// Applies the operation to the grid's cells under the rules of a key change (see ApplyTargets).
BulkChange ApplyOperation(MapGridModel& grid, const CellRect& rect, const CellOperation& operation,
                          const DutyContext& duty);

}  // namespace vela
