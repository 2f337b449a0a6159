// The named setup fields of the calibration image outside the three maps, and the positions that
// no editor owns. The table is the one place that knows where a field lives; everything else
// looks a field up by its name.
#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace vela {

// kNumber: an unsigned little-endian number of `width` bytes (1 to 3). kByteGroup: `width`
// separate bytes that belong together (a table, a group of settings).
enum class FieldKind { kNumber, kByteGroup };

struct SetupField {
  std::string_view name;
  int position;  // first position, 1 to 1023
  int width;     // bytes
  FieldKind kind;

  constexpr int LastPosition() const { return position + width - 1; }
};

// In ascending position order.
inline constexpr auto kSetupFields = std::to_array<SetupField>({
    {"GpiAux", 749, 2, FieldKind::kByteGroup},
    {"Gpi1Aux", 828, 2, FieldKind::kByteGroup},
    {"TriggerVoltage", 852, 1, FieldKind::kNumber},
    {"HomeVoltage", 853, 1, FieldKind::kNumber},
    {"IdleFlags1", 856, 1, FieldKind::kNumber},
    {"IdleFlags2", 857, 1, FieldKind::kNumber},
    {"IdleSetting858", 858, 1, FieldKind::kNumber},
    {"IdleMod2Values", 860, 4, FieldKind::kByteGroup},
    {"IdlePwmFrequency", 867, 1, FieldKind::kNumber},
    {"TpsCal1", 868, 2, FieldKind::kByteGroup},
    {"IgnitionLock", 871, 1, FieldKind::kNumber},
    {"Gpi1Setup", 872, 6, FieldKind::kByteGroup},
    {"Gpi2Setup", 878, 6, FieldKind::kByteGroup},
    {"Gpo1Setup", 884, 16, FieldKind::kByteGroup},
    {"RevLimit2", 900, 2, FieldKind::kNumber},
    {"TriggerPattern", 902, 1, FieldKind::kNumber},
    {"TriggerSensor", 903, 1, FieldKind::kNumber},
    {"HomePattern", 904, 1, FieldKind::kNumber},
    {"HomeSensor", 905, 1, FieldKind::kNumber},
    {"SparkMode", 906, 1, FieldKind::kNumber},
    {"InjectionMode", 907, 1, FieldKind::kNumber},
    {"TriggerToothOffset", 908, 1, FieldKind::kNumber},
    {"FirmwareVersion", 909, 1, FieldKind::kNumber},
    {"Gpo2Setup", 910, 16, FieldKind::kByteGroup},
    {"Gpo3Setup", 926, 16, FieldKind::kByteGroup},
    {"LimiterTacho", 942, 1, FieldKind::kNumber},
    {"EcuNumber", 943, 3, FieldKind::kNumber},
    {"RpmSitesSetup", 946, 1, FieldKind::kNumber},
    {"Cylinders", 947, 1, FieldKind::kNumber},
    {"FuelSetting948", 948, 1, FieldKind::kNumber},
    {"RevLimit1", 949, 2, FieldKind::kNumber},
    {"Setting951", 951, 1, FieldKind::kNumber},
    {"TpsSetup", 952, 1, FieldKind::kNumber},
    {"TpsCal2", 953, 2, FieldKind::kByteGroup},
    {"MapSensorSetup", 955, 1, FieldKind::kNumber},
    {"MapSensorScaling", 956, 1, FieldKind::kNumber},
    {"DwellTime", 958, 1, FieldKind::kNumber},
    {"TriggerOffset", 959, 1, FieldKind::kNumber},
    {"ThrottlePumpValues", 960, 3, FieldKind::kByteGroup},
    {"AirComp", 963, 8, FieldKind::kByteGroup},
    {"AirSensorCal", 971, 8, FieldKind::kByteGroup},
    {"WaterComp", 979, 8, FieldKind::kByteGroup},
    {"WaterSensorCal", 987, 8, FieldKind::kByteGroup},
    {"FuelSitesSelection", 995, 1, FieldKind::kNumber},
    {"IgnSites", 996, 1, FieldKind::kNumber},
    {"Setting997", 997, 1, FieldKind::kNumber},
    {"StartupPrime", 998, 1, FieldKind::kNumber},
    {"BattComp", 999, 12, FieldKind::kByteGroup},
    {"IdleTargetRpm", 1011, 3, FieldKind::kNumber},
    {"IdleMinMax", 1014, 2, FieldKind::kByteGroup},
    {"IdleCold", 1016, 3, FieldKind::kByteGroup},
    {"IdleMod0Values", 1019, 3, FieldKind::kByteGroup},
    {"Gpi1Function", 1022, 1, FieldKind::kNumber},
    {"Gpi2Function", 1023, 1, FieldKind::kNumber},
});

struct PositionRange {
  int first;
  int last;
};

// Positions outside the maps that no editor owns: never read when a calibration is applied, and
// written as zero bytes whenever the program builds a block.
inline constexpr auto kUnownedPositions = std::to_array<PositionRange>({
    {817, 827},
    {830, 851},
    {854, 855},
    {859, 859},
    {864, 866},
    {870, 870},
    {957, 957},
});

constexpr std::optional<SetupField> FindSetupField(std::string_view name) {
  for (const SetupField& field : kSetupFields) {
    if (field.name == name) return field;
  }
  return std::nullopt;
}

// A field the program names in its own code; an unknown name fails to compile.
consteval SetupField SetupFieldNamed(std::string_view name) {
  const std::optional<SetupField> field = FindSetupField(name);
  if (!field) throw "unknown setup field";
  return *field;
}

// The image position of a field the program names in its own code: the one way the program
// names a position (SetupFieldNamed gives the rest of the field: its width, its last position).
consteval int FieldPos(std::string_view name) { return SetupFieldNamed(name).position; }

}  // namespace vela
