#include "editors/setup/setup_checks.h"

#include <algorithm>
#include <array>

namespace vela {

namespace {

using Image = CalibrationImage;
using Context = CheckContext;


int Fails(bool failed) { return failed ? 1 : 0; }
int ByteAt(const Image& image, int position) { return image.Byte(position); }

// Byte 995: bits 5, 6, 7 choose the fuel map; bits 0 to 4 the fuel load sites.
constexpr std::uint8_t kMapSelectionBits = 0xE0;
constexpr std::uint8_t kSitesCodeBits = 0x1F;
// Byte 907: bits 0, 1 the injection mode, bits 6, 7 the impedance, bits 2 to 5 unused.
constexpr std::uint8_t kInjectionModeBits = 0x03;
constexpr std::uint8_t kImpedanceBits = 0xC0;
// Byte 942: bit 3 lies among the edge bits and bit 4 beside the tacho (auxiliary) bit; no
// choice sets either.
constexpr std::uint8_t kLimiterModeBits = 0xC0;
constexpr std::uint8_t kUnusedTachoBit = 0x10;
constexpr std::uint8_t kUnusedEdgeBit = 0x08;
// Byte 955.
constexpr int kMaxMapSensorSetup = 228;
constexpr std::uint8_t kAltitudeCompBit = 0x20;
constexpr std::uint8_t kMapLoadSensingBit = 0x40;
constexpr std::uint8_t kThrottlePumpMapBit = 0x80;
// Bits 0 to 4: the MAP sensor type in bits 0 to 2, one of the six `ComboMAP` entries; bits 3 and 4
// are set by no choice.
constexpr std::uint8_t kMapSensorLowBits = 0x1F;
constexpr int kLastMapSensorType = 5;

// The tooth offset must name a tooth position of the selected wheel (pattern 0, a single
// trigger, has no teeth to offset). Index: trigger pattern.
constexpr std::array<int, 6> kToothPositions = {0, 12, 24, 36, 36, 60};

int ToothOffsetFailures(const Image& image, const Context&) {
  const int pattern = ByteAt(image, FieldPos("TriggerPattern"));
  if (pattern < 1 || pattern >= static_cast<int>(kToothPositions.size())) return 0;
  return Fails(ByteAt(image, FieldPos("TriggerToothOffset")) >=
               kToothPositions[static_cast<std::size_t>(pattern)]);
}

int MoreThanOneBit(std::uint8_t bits) { return Fails((bits & (bits - 1)) != 0); }

int InjectionModeFailures(const Image& image, const Context&) {
  const std::uint8_t value = image.Byte(FieldPos("InjectionMode"));
  return Fails((value & kInjectionModeBits) == kInjectionModeBits ||
               (value & kImpedanceBits) == kImpedanceBits ||
               (value & ~(kInjectionModeBits | kImpedanceBits)) != 0);
}

// A temperature sensor's divider ratio falls as the temperature rises (NTC); a point above its
// colder neighbour fails. Equal neighbours pass.
int SensorCurveFailures(const Image& image, int first) {
  int failures = 0;
  for (int p = first; p < first + 7; ++p) failures += Fails(image.Byte(p + 1) > image.Byte(p));
  return failures;
}

int BattCompFailures(const Image& image, const Context&) {
  const int first = FieldPos("BattComp") + 1;  // bytes 1000 to 1010
  for (int p = first; p <= first + 10; ++p) {
    if (image.Byte(p) > kMaxBattComp) return 1;
  }
  return 0;
}

int ThrottlePumpFailures(const Image& image, const Context&) {
  const std::uint8_t value = image.Byte(FieldPos("MapSensorSetup"));
  const bool map_basis = (value & kThrottlePumpMapBit) != 0;
  const bool map_sensor_used = (value & (kMapLoadSensingBit | kAltitudeCompBit)) != 0;
  return Fails(map_basis && !map_sensor_used);
}

int MapScalingFailures(const Image& image, const Context& context) {
  return Fails(!MapScaleEntryOfCode(context.combo_map, image.Byte(FieldPos("MapSensorScaling"))));
}

int GpoFailures(const Image& image, int group_start) {
  return Fails(image.Byte(group_start) >= kGpoFunctionCodes);
}

constexpr auto kStep3 = std::to_array<SetupCheck>({
    {"Cylinders Setup Invalid",
     [](const Image& i, const Context&) {
       return Fails(ByteAt(i, FieldPos("Cylinders")) >= kCylinderChoices);
     }},
    {"RPM Sites Setup is invalid",
     [](const Image& i, const Context&) { return Fails(ByteAt(i, FieldPos("RpmSitesSetup")) > 3); }},
});

constexpr auto kStep4 = std::to_array<SetupCheck>({
    {"Fuel Load Sites Error",
     [](const Image& i, const Context&) {
       return Fails((i.Byte(FieldPos("FuelSitesSelection")) & kSitesCodeBits) > 2);
     }},
    {"Fuel Map Selection Error",
     [](const Image& i, const Context&) {
       return MoreThanOneBit(i.Byte(FieldPos("FuelSitesSelection")) & kMapSelectionBits);
     }},
});

constexpr auto kStep5 = std::to_array<SetupCheck>({
    {"Trigger Offset Error",
     [](const Image& i, const Context&) {
       return Fails(ByteAt(i, FieldPos("TriggerOffset")) > kMaxTriggerOffset);
     }},
    {"Ignition Load Sites Error",
     [](const Image& i, const Context&) { return Fails(ByteAt(i, FieldPos("IgnSites")) > 1); }},
    {"Ignition Timing Lock Active",
     [](const Image& i, const Context&) { return Fails(ByteAt(i, FieldPos("IgnitionLock")) != 0); },
     false},
});

constexpr auto kStep7 = std::to_array<SetupCheck>({
    {"Rev Limiter 2 Invalid",
     [](const Image& i, const Context&) { return Fails(i.RevLimit2() == 0); }},
    {"Trigger Pattern Invalid",
     [](const Image& i, const Context&) { return Fails(ByteAt(i, FieldPos("TriggerPattern")) > 5); }},
    {"Trigger Hall or Magnetic Invalid",
     [](const Image& i, const Context&) {
       return Fails((i.Byte(FieldPos("TriggerSensor")) & kSensorTypeMask) > 2);
     }},
    {"Trigger Voltage Invalid",
     [](const Image& i, const Context&) { return Fails(i.TriggerVoltage() > kMaxSensorVoltage); }},
    {"Home Position Pattern Invalid",
     [](const Image& i, const Context&) { return Fails(ByteAt(i, FieldPos("HomePattern")) > 4); }},
    {"Home Position Hall or Magnetic Invalid",
     [](const Image& i, const Context&) {
       return Fails((i.Byte(FieldPos("HomeSensor")) & kSensorTypeMask) > 2);
     }},
    {"Home Position Voltage Invalid",
     [](const Image& i, const Context&) { return Fails(i.HomeVoltage() > kMaxSensorVoltage); }},
    {"Ignition Spark Mode Invalid",
     [](const Image& i, const Context&) { return Fails(ByteAt(i, FieldPos("SparkMode")) > 3); }},
    {"Fuel Injection Mode and Injector Impedance", InjectionModeFailures},
    {"Trigger Tooth Offset Invalid", ToothOffsetFailures},
});

constexpr auto kStep8 = std::to_array<SetupCheck>({
    {"GPO1 Function Invalid",
     [](const Image& i, const Context&) { return GpoFailures(i, kGpoStarts[0]); }},
    {"GPO2 Function Invalid",
     [](const Image& i, const Context&) { return GpoFailures(i, kGpoStarts[1]); }},
    {"GPO3 Function Invalid",
     [](const Image& i, const Context&) { return GpoFailures(i, kGpoStarts[2]); }},
    {"Rev Limiter Type Invalid",
     [](const Image& i, const Context&) {
       return Fails((i.Byte(FieldPos("LimiterTacho")) & kLimiterModeBits) == 0);
     }},
    {"Tacho Output Setup Invalid",
     [](const Image& i, const Context&) {
       return Fails((i.Byte(FieldPos("LimiterTacho")) & kUnusedTachoBit) != 0);
     }},
    {"Trigger Edges Setup Invalid",
     [](const Image& i, const Context&) {
       return Fails((i.Byte(FieldPos("LimiterTacho")) & kUnusedEdgeBit) != 0);
     }},
});

constexpr auto kStep9 = std::to_array<SetupCheck>({
    {"Rev Limiter 1 Invalid",
     [](const Image& i, const Context&) { return Fails(i.RevLimit1() == 0); }},
    {"TPS Setup Error",
     [](const Image& i, const Context&) { return Fails(ByteAt(i, FieldPos("TpsSetup")) > 1); }},
    {"Map Sensor Setup Invalid",
     [](const Image& i, const Context&) {
       return Fails(ByteAt(i, FieldPos("MapSensorSetup")) > kMaxMapSensorSetup);
     }},
    {"Throttle Pump Setup Error", ThrottlePumpFailures},
    {"Map Sensor Setup Error",
     [](const Image& i, const Context&) {
       return Fails((i.Byte(FieldPos("MapSensorSetup")) & kMapSensorLowBits) > kLastMapSensorType);
     }},
    {"Map Sensor Scaling Invalid", MapScalingFailures},
});

constexpr auto kStep10 = std::to_array<SetupCheck>({
    {"GPI1 Function Invalid",
     [](const Image& i, const Context&) {
       return Fails(ByteAt(i, FieldPos("Gpi1Function")) >= kGpiFunctionCodes);
     }},
    {"GPI2 Function Invalid",
     [](const Image& i, const Context&) {
       return Fails(ByteAt(i, FieldPos("Gpi2Function")) >= kGpiFunctionCodes);
     }},
    {"Dwell Time Invalid",
     [](const Image& i, const Context&) { return Fails(ByteAt(i, FieldPos("DwellTime")) >= 128); }},
});

constexpr auto kStep11 = std::to_array<SetupCheck>({
    {"Air Temp Sensor Calibration Error",
     [](const Image& i, const Context&) { return SensorCurveFailures(i, FieldPos("AirSensorCal")); }},
    {"Water Temp Sensor Calibration Error",
     [](const Image& i, const Context&) { return SensorCurveFailures(i, FieldPos("WaterSensorCal")); }},
    {"Injector Startup Prime Invalid",
     [](const Image& i, const Context&) {
       return Fails(ByteAt(i, FieldPos("StartupPrime")) > kMaxStartupPrime);
     }},
    {"Battery Voltage Compensation Invalid", BattCompFailures},
    {"Idle Target RPM Invalid",
     [](const Image& i, const Context&) { return Fails(i.IdleTargetRpm() == 0); }},
    {"Idle Minimum Larger than Maximum Error",
     [](const Image& i, const Context&) {
       return Fails(i.Byte(FieldPos("IdleMinMax")) > i.Byte(FieldPos("IdleMinMax") + 1));
     }},
    {"Idle Cold Adjuster Invalid",
     [](const Image& i, const Context&) { return Fails(i.Byte(FieldPos("IdleCold") + 2) >= 128); }},
    {"Idle PWM Frequency Invalid",
     [](const Image& i, const Context&) { return Fails(i.IdlePwmFrequency() >= 4); }},
});

constexpr std::array<int, 8> kCheckedSteps = {3, 4, 5, 7, 8, 9, 10, 11};

}  // namespace

std::span<const SetupCheck> ChecksOfStep(int step) {
  switch (step) {
    case 3:
      return kStep3;
    case 4:
      return kStep4;
    case 5:
      return kStep5;
    case 7:
      return kStep7;
    case 8:
      return kStep8;
    case 9:
      return kStep9;
    case 10:
      return kStep10;
    case 11:
      return kStep11;
    default:
      return {};
  }
}

void RunChecks(std::span<const SetupCheck> checks, const CalibrationImage& image,
               const CheckContext& context, std::vector<std::string>& out) {
  for (const SetupCheck& check : checks) {
    for (int n = check.failures(image, context); n > 0; --n) out.emplace_back(check.message);
  }
}

std::vector<std::string> ValidateSetup(const CalibrationImage& image, const CheckContext& context) {
  std::vector<std::string> messages;
  for (const int step : kCheckedSteps) {
    for (const SetupCheck& check : ChecksOfStep(step)) {
      if (check.setup_error) RunChecks({&check, 1}, image, context, messages);
    }
  }
  return messages;
}

bool FirmwareOlderThanSoftware(std::uint8_t version) { return version != 0 && version < 1; }

}  // namespace vela
