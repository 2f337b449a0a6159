// The two temperature sensor tables (`Water`, `Air`): resistance in ohms at eight temperatures,
// typed by the tuner or taken from a known sensor (`Combop4`, `Combop3`), turned into the divider
// ratio bytes the ECU reads its sensors by, and sent. A custom sensor can be described by three
// measured points, from which a fitted curve fills all eight rows.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/platform.h"
#include "calibration/calibration_image.h"
#include "editors/edit_parts.h"
#include "editors/editor_state.h"
#include "link/link_state.h"

namespace vela {

// The divider's pull-up resistor in the ECU.
inline constexpr double kSensorPullUpOhms = 560.0;
inline constexpr int kSensorPoints = 8;

enum class SensorTable { kWater, kAir };

struct KnownSensor {
  std::string_view name;
  std::array<int, kSensorPoints> ohms;  // -20 to 120 C
};

// Entries 1 to 7 of `Combop4` and 1 to 5 of `Combop3`, kept exactly as measured (water entry 2
// ends in 7 ohms where the air list's same sensor ends in 45; water entries 5 and 6 share a
// curve).
inline constexpr std::array<KnownSensor, 7> kWaterSensors = {{
    {" Alfa 2L T Spark", {5174, 3315, 2095, 1147, 314, 298, 191, 160}},
    {" VW Mk1 - 1 Wire", {8400, 2774, 1015, 792, 250, 139, 66, 7}},
    {" VW VR6", {11387, 5174, 2197, 1051, 526, 298, 179, 153}},
    {" Haltech E6K", {35429, 14000, 3180, 1107, 500, 226, 133, 76}},
    {" Opel C20XE Blue Sensor", {28112, 17360, 3920, 1210, 635, 422, 175, 143}},
    {" Opel Astra 2L CSX", {28112, 17360, 3920, 1210, 635, 422, 175, 143}},
    {" Honda Universal", {13776, 6267, 3213, 1147, 606, 273, 139, 53}},
}};
inline constexpr std::array<KnownSensor, 5> kAirSensors = {{
    {" Haltech E6K", {35280, 13776, 3213, 1107, 502, 228, 133, 77}},
    {" VW 1 Wire", {8400, 2774, 1015, 792, 250, 139, 66, 45}},
    {" VW VR6", {11387, 5174, 2197, 1051, 526, 298, 179, 153}},
    {" Opel Astra 2L CSX", {28112, 17360, 3920, 1210, 635, 422, 175, 143}},
    {" Honda Universal", {13776, 6267, 3213, 1147, 606, 273, 139, 53}},
}};

// Entry 0 of both lists: the table as the tuner typed it (choosing it changes nothing).
inline constexpr std::string_view kOwnSensorText = " As Typed in the Table";
inline constexpr std::string_view kOwnSensorTextGerman = " Wie in der Tabelle Eingegeben";

// The list's texts: entry 0, then the known sensors.
std::vector<std::string> SensorListTexts(SensorTable table, bool german);
// The ohms of list entry `choice` (1 and up); nullopt for entry 0 or one the list lacks.
std::optional<std::array<int, kSensorPoints>> KnownSensorOhms(SensorTable table, int choice);

// The ratio byte of a resistance: 256 x R / (R + 560), made whole with halves to the even
// neighbour. 256 (from about 286,160 ohms up) does not fit the byte.
int SensorRatioByte(double ohms);
// The resistance whose ratio byte is `ratio` exactly: 560 x ratio / (256 - ratio).
double OhmsOfRatioByte(std::uint8_t ratio);

// The table's first image position: water points at 987 to 994, air at 971 to 978.
int SensorTablePosition(SensorTable table);

// Sends a table: each row's resistance read from its text, turned into its ratio byte, kept in
// the table's list of sent bytes (indices 1 to 8), in the image and the editors' state, and sent
// with command 4 at its position, points 1 to 8 in order. A row that is no number, not above
// zero, or rounds to 256 is refused with a message naming it, and nothing at all is sent; so is
// a table whose bytes would fail the sensor curve check (a warmer point above a colder one).
class SensorTableSender {
 public:
  explicit SensorTableSender(EditParts parts) : parts_(parts) {}

  // The rows' texts (ohms, with `separator` as the decimal separator): a known sensor or a
  // fitted curve, all eight points. True when sent.
  bool Send(SensorTable table, const std::array<std::string, kSensorPoints>& ohms_texts,
            char separator);
  // One row the tuner typed (0 = -20 C): only that point is kept and sent, refused like a whole
  // table. True when sent.
  bool SendRow(SensorTable table, int row, const std::string& ohms_text, char separator);
  // The last bytes sent for a table, indices 1 to 8 (0, 9 and 10 are spare).
  const std::array<std::uint16_t, 11>& LastSent(SensorTable table) const {
    return table == SensorTable::kWater ? water_sent_ : air_sent_;
  }

 private:
  // Keeps and sends `bytes` at rows `rows`, unless their curve check fails (then says why).
  bool Store(SensorTable table, const std::vector<int>& rows,
             const std::array<std::uint8_t, kSensorPoints>& bytes);

  EditParts parts_;
  std::array<std::uint16_t, 11> water_sent_{};
  std::array<std::uint16_t, 11> air_sent_{};
};

// The ratio bytes of a table's rows, or the refusal's lines naming the first bad row.
struct SensorBytes {
  std::optional<std::array<std::uint8_t, kSensorPoints>> bytes;
  std::vector<std::string> refusal;
};
SensorBytes SensorBytesOf(const std::array<std::string, kSensorPoints>& ohms_texts, char separator);

// A custom sensor: 1/T = A + B ln R + C (ln R)^3, T in kelvin, fitted through three points.
struct SensorPoint {
  double celsius;
  double ohms;
};
struct SteinhartHart {
  double a;
  double b;
  double c;
};
// nullopt when the points cannot give a curve: a resistance not above zero, two equal
// temperatures or resistances.
std::optional<SteinhartHart> FitSteinhartHart(const std::array<SensorPoint, 3>& points);
double CelsiusAt(const SteinhartHart& curve, double ohms);
// The resistance at `celsius`, or nullopt when the curve has none there.
std::optional<double> OhmsAt(const SteinhartHart& curve, double celsius);

// The eight rows filled from three points, each marked when it lies outside the points'
// temperatures (extrapolated). nullopt with the reason in `problem` when the points give no
// curve or the curve does not fall steadily from -20 to 120 C as a sensor's resistance must.
struct CustomSensorRows {
  SteinhartHart curve;
  std::array<double, kSensorPoints> ohms;
  std::array<bool, kSensorPoints> extrapolated;
};
std::optional<CustomSensorRows> FillFromPoints(const std::array<SensorPoint, 3>& points,
                                               std::string* problem);

}  // namespace vela
