#include "editors/workbench/bulk_change.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "calibration/rounding.h"

namespace vela {

namespace {

// Products of a typed factor carry binary noise; a millionth of a unit is far below any step.
constexpr double kBulkUnitSnap = 1e6;

// Which cells changed and the lowest changed row of each column (0: none), by grid position.
class BulkChangeMarks {
 public:
  explicit BulkChangeMarks(const MapGridModel& grid)
      : sites_(grid.LoadSites()),
        changed_(static_cast<std::size_t>(kMapRows * sites_), false),
        lowest_row_(static_cast<std::size_t>(sites_), 0) {}

  void Mark(MapCell cell) {
    changed_[Index(cell)] = true;
    int& lowest = lowest_row_[static_cast<std::size_t>(cell.column - 1)];
    lowest = std::max(lowest, cell.row);
  }
  bool Changed(MapCell cell) const { return changed_[Index(cell)]; }
  int LowestRow(int column) const { return lowest_row_[static_cast<std::size_t>(column - 1)]; }

 private:
  std::size_t Index(MapCell cell) const {
    return static_cast<std::size_t>((cell.row - 1) * sites_ + cell.column - 1);
  }
  int sites_;
  std::vector<bool> changed_;
  std::vector<int> lowest_row_;
};

// The units a cell takes for a target under the map's range. A cell already beyond the range
// is never moved further out; one moved towards it lands inside it, as SetUnits keeps it.
int BulkRangedUnits(const MapGridModel& grid, int current, double target, BulkChange& change) {
  const double units = CellUnitsOf(grid.Kind(), target);
  const int low = grid.MinCellUnits();
  const int high = grid.MaxCellUnits();
  if (units >= low && units <= high) return static_cast<int>(units);
  ++change.clamped;
  if (units > high) return current > high && units >= current ? current : high;
  return current < low && units <= current ? current : low;
}

// The fuel cap of one row: the largest units its RPM allows.
int DutyLimitOfRow(const MapGridModel& grid, int row, double base) {
  return DutyLimitUnits(base, grid.RowRpm(row));
}

// The cells of the rectangle take their targets (capped on a fuel map).
void SetRectTargets(MapGridModel& grid, const CellRect& rect, const CellTarget& target, double base,
                    BulkChange& change, BulkChangeMarks& marks) {
  const bool fuel = grid.Kind() == MapKind::kFuel;
  for (const MapCell& cell : CellsOf(rect)) {
    const int current = grid.Units(cell.row, cell.column);
    const double wanted = target(cell.row, cell.column, grid.Value(cell.row, cell.column));
    if (std::isnan(wanted)) continue;
    int units = BulkRangedUnits(grid, current, wanted, change);
    if (fuel && units > DutyLimitOfRow(grid, cell.row, base)) {
      units = DutyLimitOfRow(grid, cell.row, base);
      ++change.capped;
    }
    if (units == current) continue;
    grid.SetUnits(cell.row, cell.column, units);
    if (grid.Units(cell.row, cell.column) != current) marks.Mark(cell);
  }
}

// Walks each changed fuel column from its lowest changed row up to row 1, as the cell
// transmission does, lowering every cell above its row's limit.
void CapChangedColumns(MapGridModel& grid, double base, BulkChange& change,
                       BulkChangeMarks& marks) {
  for (int column = 1; column <= grid.LoadSites(); ++column) {
    for (int row = marks.LowestRow(column); row >= 1; --row) {
      const int limit = DutyLimitOfRow(grid, row, base);
      if (grid.Units(row, column) <= limit) continue;
      grid.SetUnits(row, column, limit);
      ++change.capped;
      marks.Mark({row, column});
    }
  }
}

void CollectChangedCells(const MapGridModel& grid, const BulkChangeMarks& marks,
                         BulkChange& change) {
  for (int column = 1; column <= grid.LoadSites(); ++column) {
    for (int row = marks.LowestRow(column); row >= 1; --row) {
      if (marks.Changed({row, column})) change.changed.push_back({row, column});
    }
  }
}

void MeasureRectRange(const MapGridModel& grid, const CellRect& rect, BulkChange& change) {
  change.lowest = std::numeric_limits<double>::infinity();
  change.highest = -change.lowest;
  for (const MapCell& cell : CellsOf(rect)) {
    change.lowest = std::min(change.lowest, grid.Value(cell.row, cell.column));
    change.highest = std::max(change.highest, grid.Value(cell.row, cell.column));
  }
}

}  // namespace

DutyContext DutyContextOf(const TransmissionSetup& setup) {
  return {setup.ignition_divide, setup.third_injection_mode};
}

double CellUnitsOf(MapKind kind, double value) {
  const double units = value * UnitsPerDisplayUnit(kind);
  if (!std::isfinite(units)) return units;
  return RoundHalfEven(std::nearbyint(units * kBulkUnitSnap) / kBulkUnitSnap);
}

BulkChange ApplyTargets(MapGridModel& grid, const CellRect& rect, const CellTarget& target,
                        const DutyContext& duty) {
  BulkChange change;
  const CellRect cells = SpanOf(grid, {rect.top, rect.left}, {rect.bottom, rect.right});
  const double base = DutyLimitBase(duty.ignition_divide, duty.third_injection_mode);
  BulkChangeMarks marks(grid);
  SetRectTargets(grid, cells, target, base, change, marks);
  if (grid.Kind() == MapKind::kFuel) CapChangedColumns(grid, base, change, marks);
  CollectChangedCells(grid, marks, change);
  MeasureRectRange(grid, cells, change);
  return change;
}

}  // namespace vela
