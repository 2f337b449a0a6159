// The program's side of a cell change: the changed cells of a map grid are capped to the
// injector's duty limit (fuel maps), written into the calibration image and sent to the ECU at
// once, one command frame per cell.
//
// On the wire every cell travels as one frame of command 4, the single-value write, at the cell's
// image position: a fuel cell with its 16-bit injector time as the value (the ECU takes the low
// byte at the position and the high byte at position + 1 in one go, so it never runs on a cell
// of which only one byte has changed), an ignition cell with its byte.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "calibration/calibration_image.h"
#include "editors/mapgrid/map_grid_model.h"
#include "link/link_state.h"

namespace vela {

// Cells travel with kSingleValueWrite: the value at an image position. For a fuel cell the value
// is the cell's 16-bit injector time, which the ECU stores low byte at the position, high byte
// after it.
inline constexpr double kNoRpmLimitMs = 20.0;

// Which map a grid holds and the setup the duty limit depends on.
struct TransmissionSetup {
  int map_start = kFuelMap1Start;     // kFuelMap1Start, kFuelMap2Start or kIgnMapStart
  int ignition_divide = 1;            // SetupIgnitionDivide, 1 to 4 (others are taken as 1)
  bool third_injection_mode = false;  // FuelMode choice index 2
};

// 120000 x B / A: A the ignition divide, B = A in the third injection mode, otherwise 1.
double DutyLimitBase(int ignition_divide, bool third_injection_mode);
// The largest fuel cell at a row's RPM (MapGridModel::RowRpm), in microseconds: base / RPM
// rounded to one decimal of a millisecond (a half to the even neighbour); 20.0 ms for a row
// without an RPM (an empty label), and for an RPM that is not a positive number.
int DutyLimitUnits(double base, std::optional<double> rpm);

enum class TransmissionOutcome { kDone, kBusy, kOverflow };

struct TransmissionResult {
  TransmissionOutcome outcome = TransmissionOutcome::kDone;
  std::vector<MapCell> sent;    // in sending order
  std::vector<MapCell> capped;  // cells lowered to their duty limit
};

class CellTransmission {
 public:
  CellTransmission(CalibrationImage& image, CommandSender& sender)
      : image_(image), sender_(sender) {}

  // The cell-changed steps for the grid's current cell: from the current row up to row 1 with
  // AllRanges, otherwise the current row only; in each row the cell of the current column is
  // written and sent when it differs from the image or is the current row. A fuel column is
  // capped to the duty limit all the way up to row 1, and a cell the cap lowered is sent even
  // above the rows the change covers.
  TransmissionResult OnCellChanged(MapGridModel& grid, const TransmissionSetup& setup);

  // The same for a change of several cells: each changed column is run from its lowest changed
  // row (sent even when equal) up to its highest changed row, or up to row 1 with AllRanges.
  TransmissionResult OnCellsChanged(MapGridModel& grid, const std::vector<MapCell>& changed,
                                    const TransmissionSetup& setup);

  // True while a change is being handled; a change that arrives then is refused (kBusy).
  bool Busy() const { return busy_; }

 private:
  struct ColumnRun {
    int column;
    int from_row;  // the row that is sent even when it equals the image
    int to_row;
  };
  TransmissionResult Run(MapGridModel& grid, const std::vector<ColumnRun>& runs,
                         const TransmissionSetup& setup);
  bool RunColumn(MapGridModel& grid, const ColumnRun& run, const TransmissionSetup& setup,
                 TransmissionResult& result);
  void WriteAndSend(MapKind kind, int position, int raw);

  CalibrationImage& image_;
  CommandSender& sender_;
  bool busy_ = false;
};

}  // namespace vela
