#include "editors/compensation/temperature_sensors.h"

#include <cmath>

#include "calibration/conversions.h"
#include "calibration/decimal_text.h"
#include "calibration/rounding.h"
#include "editors/setup/setup_checks.h"

namespace vela {

namespace {

constexpr double kKelvinOffset = 273.15;
constexpr std::string_view kNothingSent =
    "Nothing was sent to the ECU; it keeps the sensor curve it had.";

std::string RowName(int row) {
  return std::to_string(kSensorPointTemperatures[static_cast<std::size_t>(row)]) + " \u00B0C";
}

std::vector<std::string> Refusal(std::string line) {
  return {std::move(line), std::string(kNothingSent)};
}

// The real root of A + B x + C x^3 = y nearest the straight-line guess, by Newton's method.
std::optional<double> LnOhmsFor(const SteinhartHart& k, double y) {
  if (k.b == 0.0 && k.c == 0.0) return std::nullopt;
  double x = k.b != 0.0 ? (y - k.a) / k.b : std::cbrt((y - k.a) / k.c);
  for (int i = 0; i < 100; ++i) {
    const double f = k.a + k.b * x + k.c * x * x * x - y;
    const double slope = k.b + 3.0 * k.c * x * x;
    if (slope == 0.0 || !std::isfinite(slope)) return std::nullopt;
    const double next = x - f / slope;
    if (std::abs(next - x) < 1e-12) return next;
    x = next;
  }
  return std::nullopt;
}

}  // namespace

std::vector<std::string> SensorListTexts(SensorTable table, bool german) {
  std::vector<std::string> texts{std::string(german ? kOwnSensorTextGerman : kOwnSensorText)};
  if (table == SensorTable::kWater) {
    for (const KnownSensor& sensor : kWaterSensors) texts.emplace_back(sensor.name);
  } else {
    for (const KnownSensor& sensor : kAirSensors) texts.emplace_back(sensor.name);
  }
  return texts;
}

std::optional<std::array<int, kSensorPoints>> KnownSensorOhms(SensorTable table, int choice) {
  const std::size_t index = static_cast<std::size_t>(choice - 1);
  if (choice < 1) return std::nullopt;
  if (table == SensorTable::kWater) {
    if (index >= kWaterSensors.size()) return std::nullopt;
    return kWaterSensors[index].ohms;
  }
  if (index >= kAirSensors.size()) return std::nullopt;
  return kAirSensors[index].ohms;
}

int SensorRatioByte(double ohms) {
  const double ratio = 1.0 / ((ohms + kSensorPullUpOhms) / ohms);
  return static_cast<int>(RoundHalfEven(256.0 * ratio));
}

double OhmsOfRatioByte(std::uint8_t ratio) { return kSensorPullUpOhms * ratio / (256.0 - ratio); }

int SensorTablePosition(SensorTable table) {
  return table == SensorTable::kWater ? FieldPos("WaterSensorCal") : FieldPos("AirSensorCal");
}

namespace {

// The ratio byte of one row's text, or nullopt with the refusal's lines.
std::optional<std::uint8_t> SensorRowByte(int row, const std::string& text, char separator,
                                          std::vector<std::string>& refusal) {
  const std::optional<double> ohms = NumberOfText(text, separator);
  if (!ohms) {
    refusal = Refusal("The resistance at " + RowName(row) + " (\"" + text +
                      "\") is not a number of ohms.");
    return std::nullopt;
  }
  if (!(*ohms > 0.0)) {
    refusal = Refusal("The resistance at " + RowName(row) +
                      " must be above 0 ohms: a sensor of no resistance is a short circuit.");
    return std::nullopt;
  }
  const int byte = SensorRatioByte(*ohms);
  if (byte > 255) {
    refusal = Refusal("The resistance at " + RowName(row) + " (" + text +
                      " ohms) is too high for the ECU: from 286,160 ohms up the sensor reads as "
                      "an open circuit.");
    return std::nullopt;
  }
  return static_cast<std::uint8_t>(byte);
}

}  // namespace

SensorBytes SensorBytesOf(const std::array<std::string, kSensorPoints>& ohms_texts,
                          char separator) {
  std::array<std::uint8_t, kSensorPoints> bytes{};
  for (int row = 0; row < kSensorPoints; ++row) {
    std::vector<std::string> refusal;
    const std::optional<std::uint8_t> byte =
        SensorRowByte(row, ohms_texts[static_cast<std::size_t>(row)], separator, refusal);
    if (!byte) return {std::nullopt, refusal};
    bytes[static_cast<std::size_t>(row)] = *byte;
  }
  return {bytes, {}};
}

bool SensorTableSender::Send(SensorTable table,
                             const std::array<std::string, kSensorPoints>& ohms_texts,
                             char separator) {
  if (parts_.suppress_change_events) return false;
  const SensorBytes result = SensorBytesOf(ohms_texts, separator);
  if (!result.bytes) {
    parts_.messages.Show(MessageIcon::kExclamation, std::string(kWarningTitle), result.refusal);
    return false;
  }
  return Store(table, {0, 1, 2, 3, 4, 5, 6, 7}, *result.bytes);
}

bool SensorTableSender::SendRow(SensorTable table, int row, const std::string& ohms_text,
                                char separator) {
  if (parts_.suppress_change_events || row < 0 || row >= kSensorPoints) return false;
  std::vector<std::string> refusal;
  const std::optional<std::uint8_t> byte = SensorRowByte(row, ohms_text, separator, refusal);
  if (!byte) {
    parts_.messages.Show(MessageIcon::kExclamation, std::string(kWarningTitle), refusal);
    return false;
  }
  // The other rows stay as the ECU holds them: only the typed row is judged and sent.
  std::array<std::uint8_t, kSensorPoints> bytes = table == SensorTable::kWater
                                                      ? parts_.state.sensors.water_sensor_cal
                                                      : parts_.state.sensors.air_sensor_cal;
  bytes[static_cast<std::size_t>(row)] = *byte;
  return Store(table, {row}, bytes);
}

bool SensorTableSender::Store(SensorTable table, const std::vector<int>& rows,
                              const std::array<std::uint8_t, kSensorPoints>& bytes) {
  const int first = SensorTablePosition(table);
  CalibrationImage after = parts_.image;
  std::vector<int> written;
  for (const int row : rows) {
    after.SetByte(first + row, bytes[static_cast<std::size_t>(row)]);
    written.push_back(first + row);
  }
  const std::vector<SetupCheck> broken =
      ChangeBreaks(after, {parts_.state.sensors.map_sensor_type}, written);
  if (!broken.empty()) {
    parts_.messages.Show(
        MessageIcon::kExclamation, std::string(kWarningTitle),
        Refusal("These resistances would fail \"" + std::string(broken.front().message) +
                "\": " + std::string(broken.front().rule) + "."));
    return false;
  }
  std::array<std::uint16_t, 11>& sent = table == SensorTable::kWater ? water_sent_ : air_sent_;
  std::array<std::uint8_t, 8>& state = table == SensorTable::kWater
                                           ? parts_.state.sensors.water_sensor_cal
                                           : parts_.state.sensors.air_sensor_cal;
  for (const int row : rows) {
    const std::uint8_t byte = bytes[static_cast<std::size_t>(row)];
    sent[static_cast<std::size_t>(row + 1)] = byte;
    state[static_cast<std::size_t>(row)] = byte;
    parts_.image.SetByte(first + row, byte);
    // The image keeps the edit whatever became of the frame; a lost one shows as the stall.
    static_cast<void>(parts_.sender.Send({kSingleValueWrite, first + row, byte}));
  }
  return true;
}

std::optional<SteinhartHart> FitSteinhartHart(const std::array<SensorPoint, 3>& points) {
  std::array<double, 3> l{};
  std::array<double, 3> y{};
  for (std::size_t i = 0; i < 3; ++i) {
    if (!(points[i].ohms > 0.0) || !std::isfinite(points[i].celsius)) return std::nullopt;
    l[i] = std::log(points[i].ohms);
    y[i] = 1.0 / (points[i].celsius + kKelvinOffset);
  }
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = i + 1; j < 3; ++j) {
      if (l[i] == l[j] || y[i] == y[j]) return std::nullopt;
    }
  }
  const double g2 = (y[1] - y[0]) / (l[1] - l[0]);
  const double g3 = (y[2] - y[0]) / (l[2] - l[0]);
  const double c = (g3 - g2) / (l[2] - l[1]) / (l[0] + l[1] + l[2]);
  const double b = g2 - c * (l[0] * l[0] + l[0] * l[1] + l[1] * l[1]);
  const double a = y[0] - (b + l[0] * l[0] * c) * l[0];
  if (!std::isfinite(a) || !std::isfinite(b) || !std::isfinite(c)) return std::nullopt;
  return SteinhartHart{a, b, c};
}

double CelsiusAt(const SteinhartHart& curve, double ohms) {
  const double l = std::log(ohms);
  return 1.0 / (curve.a + curve.b * l + curve.c * l * l * l) - kKelvinOffset;
}

std::optional<double> OhmsAt(const SteinhartHart& curve, double celsius) {
  const std::optional<double> l = LnOhmsFor(curve, 1.0 / (celsius + kKelvinOffset));
  if (!l) return std::nullopt;
  const double ohms = std::exp(*l);
  if (!std::isfinite(ohms) || !(ohms > 0.0)) return std::nullopt;
  return ohms;
}

std::optional<CustomSensorRows> FillFromPoints(const std::array<SensorPoint, 3>& points,
                                               std::string* problem) {
  const auto fail = [problem](std::string text) -> std::optional<CustomSensorRows> {
    if (problem) *problem = std::move(text);
    return std::nullopt;
  };
  const std::optional<SteinhartHart> curve = FitSteinhartHart(points);
  if (!curve) {
    return fail(
        "Three points with different temperatures and different resistances, all above 0 "
        "ohms, are needed.");
  }
  double coldest = points[0].celsius;
  double hottest = points[0].celsius;
  for (const SensorPoint& point : points) {
    coldest = std::min(coldest, point.celsius);
    hottest = std::max(hottest, point.celsius);
  }
  CustomSensorRows rows{*curve, {}, {}};
  for (std::size_t i = 0; i < kSensorPoints; ++i) {
    const double celsius = kSensorPointTemperatures[i];
    const std::optional<double> ohms = OhmsAt(*curve, celsius);
    if (!ohms || (i > 0 && *ohms >= rows.ohms[i - 1])) {
      return fail(
          "These points give no sensor curve whose resistance falls steadily from -20 to "
          "120 \u00B0C. Check the points: a temperature sensor's resistance falls as it warms.");
    }
    rows.ohms[i] = *ohms;
    rows.extrapolated[i] = celsius < coldest || celsius > hottest;
  }
  return rows;
}

}  // namespace vela
