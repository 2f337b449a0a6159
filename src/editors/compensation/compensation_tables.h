// The compensation tables (`AirMap`, `WaterMap`, `BattMap`, `ThrottlePump`): what each shows, the
// conversion of a shown value to the ECU's stored byte and back, the cell formats their grids
// use, and the writing of a changed cell into the image and to the ECU.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/platform.h"
#include "calibration/calibration_image.h"
#include "editors/compensation/small_grid_model.h"
#include "editors/edit_parts.h"
#include "editors/editor_state.h"
#include "editors/setup/map_sensor.h"
#include "link/link_state.h"

namespace vela {

enum class CompTable { kAirMap, kWaterMap, kBattMap, kThrottlePump };
inline constexpr std::array<CompTable, 4> kCompTables = {
    CompTable::kAirMap, CompTable::kWaterMap, CompTable::kBattMap, CompTable::kThrottlePump};

// Stored forms of a shown value, made whole (halves to the even neighbour) but not limited: a
// result outside 0..255 does not fit the byte and is refused by the editor.
int AirCompStored(double shown);          // shown x 10 + 128
int WaterCompStored(double percent);      // shown / 0.390625
int BattCompStored(double ms);            // shown / 0.01
int ThrottlePumpStored(double shown);     // shown / 0.390625, to one decimal, then whole
int DeactivateStoredTps(double percent);  // x 10.23: percent of throttle to the sensor count
// Boost in bar to twice the MAP input count: kPa = (bar + 1) x 100, volts = (kPa x slope -
// offset) x 4.98 / span, count = volts / 4.98 x 128 made whole.
int DeactivateStoredMap(double bar, const MapSensorLine& line);

// Shown forms of a stored byte (the inverse of the above).
double WaterCompShown(int raw);                                 // raw x 0.390625 %
double ThrottlePumpShown(int raw);                              // raw x 0.390625 %
double DeactivateShownTps(int raw);                             // raw / 10.23 %
double DeactivateShownMap(int raw, const MapSensorLine& line);  // bar of boost

// " Increase", " Decay", " Dead Band", " De-activate Over".
inline constexpr int kThrottlePumpDeactivateRow = 3;

struct CompTableLayout {
  std::string_view name;                // the grid's objectName
  std::vector<std::string> row_labels;  // column 0
  std::string corner;                   // the label column's heading
  std::string heading;                  // the value column's heading (lines split by '\n')
  std::vector<int> positions;           // image position of each row
};
CompTableLayout LayoutOf(CompTable table);

// The cell format of a row; the throttle pump's last row follows its basis (`TPumpBased`) and, on
// a MAP basis, the MAP sensor set-up. Keys never leave the byte (or the battery compensation
// check's 2.00 ms).
CellFormat FormatOf(CompTable table, int row, const SensorSetup& sensors);

// The table's bytes as the editors hold them.
std::vector<int> StoredValues(CompTable table, const Compensation& tables);

// Where a temperature compensation curve draws its live point: the read-out's temperature when
// it is a number on the table's -20 to 120 C; nullopt for the texts that stand for no
// temperature: "Error" (a sensor the ECU flags), "999" (an open or shorted sensor), ">120" and
// "<-20" (beyond the sensor's points), and anything else.
std::optional<double> CurveTemperature(std::string_view text);

// Writes changed cells into the editors' state and the image and sends them.
class CompensationEditor {
 public:
  explicit CompensationEditor(EditParts parts) : parts_(parts) {}

  // The grid's change report for one cell: the cell's image position plus one, and the lowest
  // number the grid may report. The byte goes to position `reported - 1` when `reported` is not
  // below `lower_bound`; a stored value outside the byte, or one that fails a setup check that
  // reads it (a battery byte above 2.00 ms), is refused with a message and nothing is sent. True
  // when written and sent.
  bool CellChanged(CompTable table, int row, int reported, int lower_bound, int stored);

  // The stored value of text typed into a row, or nullopt after the refusal's message: text that
  // is no number, or a value that does not fit the byte.
  std::optional<int> StoredOfText(CompTable table, int row, std::string_view text, char separator);

 private:
  void Refuse(CompTable table, int row, const std::string& why);

  EditParts parts_;
};

}  // namespace vela
