#include "editors/mapgrid/cell_transmission.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <map>
#include <optional>

#include "calibration/conversions.h"
#include "calibration/rounding.h"

namespace vela {

namespace {

constexpr int kMaxLimitUnits = 1'000'000'000;

// Clears the re-entry guard however the handler ends.
class Guard {
 public:
  explicit Guard(bool& flag) : flag_(flag) { flag_ = true; }
  ~Guard() { flag_ = false; }
  Guard(const Guard&) = delete;
  Guard& operator=(const Guard&) = delete;

 private:
  bool& flag_;
};

// The address of a frame is a signed 16-bit number and the cell must lie inside the image.
bool PositionFits(std::int64_t position, bool fuel) {
  if (position > std::numeric_limits<std::int16_t>::max()) return false;
  return CalibrationImage::IsPosition(static_cast<int>(position)) &&
         CalibrationImage::IsPosition(static_cast<int>(position) + (fuel ? 1 : 0));
}

}  // namespace

double DutyLimitBase(int ignition_divide, bool third_injection_mode) {
  const int a = (ignition_divide >= 1 && ignition_divide <= 4) ? ignition_divide : 1;
  const int b = third_injection_mode ? a : 1;
  return kMsRpmPerEngineCycle * b / a;
}

int DutyLimitUnits(double base, std::optional<double> rpm) {
  if (!rpm || !(*rpm > 0.0) || !std::isfinite(*rpm)) {
    return static_cast<int>(kNoRpmLimitMs * 1000.0);
  }
  const double tenths = RoundHalfEven(base * 10.0 / *rpm);
  return static_cast<int>(std::min(tenths * 100.0, static_cast<double>(kMaxLimitUnits)));
}

TransmissionResult CellTransmission::OnCellChanged(MapGridModel& grid,
                                                   const TransmissionSetup& setup) {
  const MapCell current = grid.Current();
  const int top = grid.AllRanges() ? 1 : current.row;
  return Run(grid, {{current.column, current.row, top}}, setup);
}

TransmissionResult CellTransmission::OnCellsChanged(MapGridModel& grid,
                                                    const std::vector<MapCell>& changed,
                                                    const TransmissionSetup& setup) {
  std::map<int, std::pair<int, int>> rows_of_column;  // column -> (highest row, lowest row)
  for (const MapCell& cell : changed) {
    if (!grid.IsValueCell(cell.row, cell.column)) continue;
    auto [it, added] = rows_of_column.try_emplace(cell.column, cell.row, cell.row);
    if (!added) {
      it->second.first = std::min(it->second.first, cell.row);
      it->second.second = std::max(it->second.second, cell.row);
    }
  }
  std::vector<ColumnRun> runs;
  for (const auto& [column, rows] : rows_of_column) {
    runs.push_back({column, rows.second, grid.AllRanges() ? 1 : rows.first});
  }
  return Run(grid, runs, setup);
}

TransmissionResult CellTransmission::Run(MapGridModel& grid, const std::vector<ColumnRun>& runs,
                                         const TransmissionSetup& setup) {
  TransmissionResult result;
  if (busy_) {
    result.outcome = TransmissionOutcome::kBusy;
    return result;
  }
  Guard guard(busy_);
  for (const ColumnRun& run : runs) {
    if (!RunColumn(grid, run, setup, result)) {
      result.outcome = TransmissionOutcome::kOverflow;
      break;
    }
  }
  return result;
}

bool CellTransmission::RunColumn(MapGridModel& grid, const ColumnRun& run,
                                 const TransmissionSetup& setup, TransmissionResult& result) {
  const bool fuel = grid.Kind() == MapKind::kFuel;
  const int cell_bytes = fuel ? 2 : 1;
  const std::int64_t stride = static_cast<std::int64_t>(cell_bytes) * (grid.Columns() - 1);
  const double base = DutyLimitBase(setup.ignition_divide, setup.third_injection_mode);
  // A fuel column is walked up to row 1 whatever the run, so that no cell above the change is
  // left asking for more than 100 % duty; above the run only a capped cell is sent.
  const int top_row = fuel ? 1 : run.to_row;
  for (int row = run.from_row; row >= top_row; --row) {
    const int rpm_site = kMapRows - row;
    const std::int64_t position = static_cast<std::int64_t>(setup.map_start) +
                                  static_cast<std::int64_t>(cell_bytes) * (run.column - 1) +
                                  stride * rpm_site;
    if (!PositionFits(position, fuel)) return false;
    const int at = static_cast<int>(position);
    bool capped = false;
    if (fuel) {
      const int limit = DutyLimitUnits(base, grid.RowRpm(row));
      if (grid.Units(row, run.column) > limit) {
        grid.SetUnits(row, run.column, limit);
        result.capped.push_back({row, run.column});
        capped = true;
      }
    }
    if (row < run.to_row && !capped) continue;
    const double value = grid.Value(row, run.column);
    const int raw = fuel ? RawFromFuelMs(value) : RawFromIgnDegrees(value);
    const int stored = fuel ? static_cast<int>(image_.Read16(at)) : image_.Byte(at);
    if (raw != stored || row == run.from_row) {
      WriteAndSend(grid.Kind(), at, raw);
      result.sent.push_back({row, run.column});
    }
  }
  return true;
}

void CellTransmission::WriteAndSend(MapKind kind, int position, int raw) {
  if (kind == MapKind::kFuel) {
    image_.Write16(position, static_cast<std::uint16_t>(raw));
    static_cast<void>(sender_.Send({kSingleValueWrite, position, raw}));
  } else {
    image_.SetByte(position, static_cast<std::uint8_t>(raw));
    static_cast<void>(sender_.Send({kSingleValueWrite, position, raw}));
  }
}

}  // namespace vela
