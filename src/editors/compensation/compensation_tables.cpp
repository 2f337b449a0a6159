#include "editors/compensation/compensation_tables.h"

#include <algorithm>
#include <cmath>

#include "calibration/conversions.h"
#include "calibration/decimal_text.h"
#include "calibration/rounding.h"
#include "editors/setup/setup_checks.h"

namespace vela {

namespace {

constexpr double kWaterStep = 0.390625;  // percent per stored count (100 / 256)
constexpr int kByteMax = 255;

double RoundToOneDecimal(double value) { return RoundHalfEven(value * 10.0) / 10.0; }
int Whole(double value) {
  const double whole = RoundHalfEven(value);
  if (!std::isfinite(whole)) return value > 0 ? 1 << 30 : -(1 << 30);
  return static_cast<int>(std::clamp(whole, -1e9, 1e9));
}

const std::vector<std::string> kTemperatureRows = {"-20", "0",  "20",  "40",
                                                   "60",  "80", "100", "120"};

// Steps in shown units, in ValueKey order: standard, fine, super fine, large, 1 ms, 2 ms.
constexpr std::array<double, 6> kPercentSteps = {1.0, 0.1, 0.1, 5.0, 0.0, 0.0};
constexpr std::array<double, 6> kAirSteps = {0.5, 0.1, 0.1, 2.0, 0.0, 0.0};
constexpr std::array<double, 6> kBattSteps = {0.05, 0.01, 0.01, 0.2, 1.0, 2.0};
constexpr std::array<double, 6> kBarSteps = {0.05, 0.01, 0.01, 0.2, 0.0, 0.0};

std::string TableName(CompTable table) { return std::string(LayoutOf(table).name); }

}  // namespace

int AirCompStored(double shown) { return Whole(shown * 10.0 + 128.0); }
int WaterCompStored(double percent) { return Whole(percent / kWaterStep); }
int BattCompStored(double ms) { return Whole(ms / 0.01); }
int ThrottlePumpStored(double shown) { return Whole(RoundToOneDecimal(shown / kWaterStep)); }
int DeactivateStoredTps(double percent) { return Whole(percent * kTpsCountsPerPercent); }

int DeactivateStoredMap(double bar, const MapSensorLine& line) {
  const double kpa = (bar + 1.0) * kKpaPerBar;
  const double volts = (kpa * line.slope - line.offset_kpa) * kMapInputVolts / line.span_kpa;
  const int count = Whole(volts / kMapInputVolts * kMapInputCounts);
  return 2 * count;
}

double WaterCompShown(int raw) { return raw * kWaterStep; }
double ThrottlePumpShown(int raw) { return raw * kWaterStep; }
double DeactivateShownTps(int raw) { return raw / kTpsCountsPerPercent; }

double DeactivateShownMap(int raw, const MapSensorLine& line) {
  const double volts = raw / 2.0 / kMapInputCounts * kMapInputVolts;
  const double kpa = (volts * line.span_kpa / kMapInputVolts + line.offset_kpa) / line.slope;
  return kpa / kKpaPerBar - 1.0;
}

std::optional<double> CurveTemperature(std::string_view text) {
  constexpr double kColdest = -20.0;
  constexpr double kHottest = 120.0;
  const std::optional<double> value = NumberOfText(text, '.');
  if (!value || *value < kColdest || *value > kHottest) return std::nullopt;
  return value;
}

CompTableLayout LayoutOf(CompTable table) {
  switch (table) {
    case CompTable::kAirMap:
      return {"AirMap",
              kTemperatureRows,
              "Temp",
              " Compensation\nat Temp",
              {963, 964, 965, 966, 967, 968, 969, 970}};
    case CompTable::kWaterMap:
      return {"WaterMap",
              kTemperatureRows,
              "Temp",
              " Compensation\nat Temp",
              {979, 980, 981, 982, 983, 984, 985, 986}};
    case CompTable::kBattMap:
      return {"BattMap",
              {"10", "11", "12", "13", "14", "15", "16"},
              "Volts",
              "MS  Added",
              {999, 1000, 1001, 1002, 1003, 1004, 1005}};
    case CompTable::kThrottlePump:
      return {"ThrottlePump",
              {" Increase", " Decay", " Dead Band", " De-activate Over"},
              "",
              "",
              {960, 961, 962, 951}};
  }
  return {};
}

CellFormat FormatOf(CompTable table, int row, const SensorSetup& sensors) {
  switch (table) {
    case CompTable::kAirMap:
      return {AirCompFromRaw, AirCompStored, 1, kAirSteps, 0, kByteMax};
    case CompTable::kWaterMap:
      return {WaterCompShown, WaterCompStored, 1, kPercentSteps, 0, kByteMax};
    case CompTable::kBattMap:
      return {BattCompFromRaw, BattCompStored, 2, kBattSteps, 0, kMaxBattComp};
    case CompTable::kThrottlePump:
      break;
  }
  if (row != kThrottlePumpDeactivateRow) {
    return {ThrottlePumpShown, ThrottlePumpStored, 1, kPercentSteps, 0, kByteMax};
  }
  if (!sensors.throttle_pump_on_map) {
    return {DeactivateShownTps, DeactivateStoredTps, 2, kPercentSteps, 0, kByteMax};
  }
  const MapSensorLine line =
      MapSensorLineOf(sensors.map_sensor_type, sensors.map_scale_entry).value_or(MapSensorLine{});
  return {[line](int raw) { return DeactivateShownMap(raw, line); },
          [line](double bar) { return DeactivateStoredMap(bar, line); },
          3,
          kBarSteps,
          0,
          kByteMax};
}

std::vector<int> StoredValues(CompTable table, const Compensation& tables) {
  const auto all = [](const auto& bytes, std::size_t count) {
    return std::vector<int>(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count));
  };
  switch (table) {
    case CompTable::kAirMap:
      return all(tables.AirMap, 8);
    case CompTable::kWaterMap:
      return all(tables.WaterMap, 8);
    case CompTable::kBattMap:
      return all(tables.BattMap, LayoutOf(table).row_labels.size());
    case CompTable::kThrottlePump:
      return all(tables.ThrottlePump, 4);
  }
  return {};
}

void CompensationEditor::Refuse(CompTable table, int row, const std::string& why) {
  const CompTableLayout layout = LayoutOf(table);
  const std::string& label = layout.row_labels[static_cast<std::size_t>(row)];
  parts_.messages.Show(MessageIcon::kExclamation, std::string(kWarningTitle),
                       {TableName(table) + " row " + label + ": " + why,
                        "Nothing was sent to the ECU; the cell keeps its value."});
}

std::optional<int> CompensationEditor::StoredOfText(CompTable table, int row, std::string_view text,
                                                    char separator) {
  const std::optional<double> value = NumberOfText(text, separator);
  if (!value) {
    Refuse(table, row, "\"" + std::string(text) + "\" is not a number.");
    return std::nullopt;
  }
  const CellFormat format = FormatOf(table, row, parts_.state.sensors);
  const int stored = format.stored(*value);
  if (stored < 0 || stored > kByteMax) {
    Refuse(table, row,
           std::string(text) + " would be stored as " + std::to_string(stored) +
               ", which does not fit the ECU's byte (0 to 255).");
    return std::nullopt;
  }
  if (stored < format.min_raw || stored > format.max_raw) {
    Refuse(table, row,
           std::string(text) + " is beyond the table's limit of " +
               FormatFixed(format.shown(format.max_raw), format.decimals, separator, nullptr) +
               ".");
    return std::nullopt;
  }
  return stored;
}

bool CompensationEditor::CellChanged(CompTable table, int row, int reported, int lower_bound,
                                     int stored) {
  if (parts_.suppress_change_events || reported < lower_bound) return false;
  const int position = reported - 1;
  const CompTableLayout layout = LayoutOf(table);
  if (row < 0 || row >= static_cast<int>(layout.positions.size()) ||
      layout.positions[static_cast<std::size_t>(row)] != position) {
    return false;
  }
  if (stored < 0 || stored > kByteMax) {
    Refuse(table, row,
           "the value would be stored as " + std::to_string(stored) +
               ", which does not fit the ECU's byte (0 to 255).");
    return false;
  }
  const auto byte = static_cast<std::uint8_t>(stored);
  CalibrationImage after = parts_.image;
  after.SetByte(position, byte);
  const std::vector<SetupCheck> broken =
      ChangeBreaks(after, {parts_.state.sensors.map_sensor_type}, {&position, 1});
  if (!broken.empty()) {
    Refuse(table, row,
           "the value would be stored as " + std::to_string(stored) + ", which fails \"" +
               std::string(broken.front().message) + "\": " + std::string(broken.front().rule) +
               ".");
    return false;
  }
  Compensation& tables = parts_.state.compensation;
  const auto index = static_cast<std::size_t>(row);
  switch (table) {
    case CompTable::kAirMap:
      tables.AirMap[index] = byte;
      break;
    case CompTable::kWaterMap:
      tables.WaterMap[index] = byte;
      break;
    case CompTable::kBattMap:
      tables.BattMap[index] = byte;
      break;
    case CompTable::kThrottlePump:
      tables.ThrottlePump[index] = byte;
      break;
  }
  parts_.image.SetByte(position, byte);
  // The image keeps the edit whatever became of the frame; a lost one shows as the stall.
  static_cast<void>(parts_.sender.Send({kSingleValueWrite, position, byte}));
  return true;
}

}  // namespace vela
