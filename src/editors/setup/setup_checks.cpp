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
// Byte 955: the MAP sensor type in bits 0 to 2 and three flags, so at most 4 + 32 + 64 + 128.
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

constexpr PositionRange kNoRange = {0, -1};
constexpr CheckReads At(int position) { return {PositionRange{position, position}, kNoRange}; }
constexpr CheckReads Span(int first, int last) { return {PositionRange{first, last}, kNoRange}; }
// The whole of a field.
consteval CheckReads Whole(std::string_view field) {
  return {PositionRange{FieldPos(field), SetupFieldNamed(field).LastPosition()}, kNoRange};
}
constexpr CheckReads Both(int first, int second) {
  return {PositionRange{first, first}, PositionRange{second, second}};
}

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

// A temperature sensor's divider ratio falls as the temperature rises (NTC): the point at
// `Warmer` above its colder neighbour fails. Equal neighbours pass. One check per pair.
template <int Warmer>
int CurvePairFails(const Image& image, const Context&) {
  return Fails(image.Byte(Warmer) > image.Byte(Warmer - 1));
}

template <int Position>
int BattCompFails(const Image& image, const Context&) {
  return Fails(image.Byte(Position) > kMaxBattComp);
}

int ThrottlePumpFailures(const Image& image, const Context&) {
  const std::uint8_t value = image.Byte(FieldPos("MapSensorSetup"));
  const bool map_basis = (value & kThrottlePumpMapBit) != 0;
  const bool map_sensor_used = (value & (kMapLoadSensingBit | kAltitudeCompBit)) != 0;
  return Fails(map_basis && !map_sensor_used);
}

int MapScalingFailures(const Image& image, const Context& context) {
  return Fails(
      !MapScaleEntryOfCode(context.map_sensor_type, image.Byte(FieldPos("MapSensorScaling"))));
}

int GpoFailures(const Image& image, int group_start) {
  return Fails(image.Byte(group_start) >= kGpoFunctionCodes);
}

constexpr auto kStep3 = std::to_array<SetupCheck>({
    {"Cylinders Setup Invalid", At(FieldPos("Cylinders")),
     [](const Image& i, const Context&) {
       return Fails(ByteAt(i, FieldPos("Cylinders")) >= kCylinderChoices);
     },
     true, false, "byte 947 is 9 or more: the list has entries 0 to 8"},
    {"RPM Sites Setup is invalid", At(FieldPos("RpmSitesSetup")),
     [](const Image& i, const Context&) { return Fails(ByteAt(i, FieldPos("RpmSitesSetup")) > 3); },
     true, false, "byte 946 is above 3"},
});

constexpr auto kStep4 = std::to_array<SetupCheck>({
    {"Fuel Load Sites Error", At(FieldPos("FuelSitesSelection")),
     [](const Image& i, const Context&) {
       return Fails((i.Byte(FieldPos("FuelSitesSelection")) & kSitesCodeBits) > 2);
     },
     true, false, "bits 0 to 4 of byte 995 are above 2"},
    {"Fuel Map Selection Error", At(FieldPos("FuelSitesSelection")),
     [](const Image& i, const Context&) {
       return MoreThanOneBit(i.Byte(FieldPos("FuelSitesSelection")) & kMapSelectionBits);
     },
     true, false, "more than one of bits 5, 6 and 7 of byte 995 is set"},
});

constexpr auto kStep5 = std::to_array<SetupCheck>({
    {"Trigger Offset Error", At(FieldPos("TriggerOffset")),
     [](const Image& i, const Context&) {
       return Fails(ByteAt(i, FieldPos("TriggerOffset")) > kMaxTriggerOffset);
     },
     true, false, "byte 959 is above 120 (60 degrees)"},
    {"Ignition Load Sites Error", At(FieldPos("IgnSites")),
     [](const Image& i, const Context&) { return Fails(ByteAt(i, FieldPos("IgnSites")) > 1); },
     true, false, "byte 996 is above 1"},
    {"Ignition Timing Lock Active", At(FieldPos("IgnitionLock")),
     [](const Image& i, const Context&) { return Fails(ByteAt(i, FieldPos("IgnitionLock")) != 0); },
     false, false, "byte 871 is not 0"},
});

constexpr auto kStep7 = std::to_array<SetupCheck>({
    {"Rev Limiter 2 Invalid", Whole("RevLimit2"),
     [](const Image& i, const Context&) { return Fails(i.RevLimit2() == 0); }, true, false,
     "bytes 900 and 901 are 0 (no speed)"},
    {"Trigger Pattern Invalid", At(FieldPos("TriggerPattern")),
     [](const Image& i, const Context&) {
       return Fails(ByteAt(i, FieldPos("TriggerPattern")) > 5);
     },
     true, false, "byte 902 is above 5"},
    {"Trigger Hall or Magnetic Invalid", At(FieldPos("TriggerSensor")),
     [](const Image& i, const Context&) {
       return Fails((i.Byte(FieldPos("TriggerSensor")) & kSensorTypeMask) > 2);
     },
     true, false, "bits 0 to 6 of byte 903 are above 2"},
    {"Trigger Voltage Invalid", At(FieldPos("TriggerVoltage")),
     [](const Image& i, const Context&) { return Fails(i.TriggerVoltage() > kMaxSensorVoltage); },
     true, false, "byte 852 is above 229"},
    {"Home Position Pattern Invalid", At(FieldPos("HomePattern")),
     [](const Image& i, const Context&) { return Fails(ByteAt(i, FieldPos("HomePattern")) > 4); },
     true, false, "byte 904 is above 4"},
    {"Home Position Hall or Magnetic Invalid", At(FieldPos("HomeSensor")),
     [](const Image& i, const Context&) {
       return Fails((i.Byte(FieldPos("HomeSensor")) & kSensorTypeMask) > 2);
     },
     true, false, "bits 0 to 6 of byte 905 are above 2"},
    {"Home Position Voltage Invalid", At(FieldPos("HomeVoltage")),
     [](const Image& i, const Context&) { return Fails(i.HomeVoltage() > kMaxSensorVoltage); },
     true, false, "byte 853 is above 229"},
    {"Ignition Spark Mode Invalid", At(FieldPos("SparkMode")),
     [](const Image& i, const Context&) { return Fails(ByteAt(i, FieldPos("SparkMode")) > 3); },
     true, false, "byte 906 is above 3"},
    {"Fuel Injection Mode and Injector Impedance", At(FieldPos("InjectionMode")),
     InjectionModeFailures, true, false,
     "byte 907 has both bits 0 and 1, both bits 6 and 7, or one of bits 2 to 5"},
    {"Trigger Tooth Offset Invalid",
     Both(FieldPos("TriggerPattern"), FieldPos("TriggerToothOffset")), ToothOffsetFailures, true,
     false,
     "byte 908 names no tooth of the wheel in byte 902 (12, 24, 36 or 60 teeth: 0 to one less)"},
});

constexpr auto kStep8 = std::to_array<SetupCheck>({
    {"GPO1 Function Invalid", At(FieldPos("Gpo1Setup")),
     [](const Image& i, const Context&) { return GpoFailures(i, kGpoStarts[0]); }, true, false,
     "byte 884 is 16 or more"},
    {"GPO2 Function Invalid", At(FieldPos("Gpo2Setup")),
     [](const Image& i, const Context&) { return GpoFailures(i, kGpoStarts[1]); }, true, false,
     "byte 910 is 16 or more"},
    {"GPO3 Function Invalid", At(FieldPos("Gpo3Setup")),
     [](const Image& i, const Context&) { return GpoFailures(i, kGpoStarts[2]); }, true, false,
     "byte 926 is 16 or more"},
    {"Rev Limiter Type Invalid", At(FieldPos("LimiterTacho")),
     [](const Image& i, const Context&) {
       return Fails((i.Byte(FieldPos("LimiterTacho")) & kLimiterModeBits) == 0);
     },
     true, false, "bits 6 and 7 of byte 942 are both clear (no limiter type)"},
    {"Tacho Output Setup Invalid", At(FieldPos("LimiterTacho")),
     [](const Image& i, const Context&) {
       return Fails((i.Byte(FieldPos("LimiterTacho")) & kUnusedTachoBit) != 0);
     },
     true, false, "bit 4 of byte 942 is set"},
    {"Trigger Edges Setup Invalid", At(FieldPos("LimiterTacho")),
     [](const Image& i, const Context&) {
       return Fails((i.Byte(FieldPos("LimiterTacho")) & kUnusedEdgeBit) != 0);
     },
     true, false, "bit 3 of byte 942 is set"},
});

constexpr auto kStep9 = std::to_array<SetupCheck>({
    {"Rev Limiter 1 Invalid", Whole("RevLimit1"),
     [](const Image& i, const Context&) { return Fails(i.RevLimit1() == 0); }, true, false,
     "bytes 949 and 950 are 0 (no speed)"},
    {"TPS Setup Error", At(FieldPos("TpsSetup")),
     [](const Image& i, const Context&) { return Fails(ByteAt(i, FieldPos("TpsSetup")) > 1); },
     true, false, "byte 952 is above 1"},
    {"Map Sensor Setup Invalid", At(FieldPos("MapSensorSetup")),
     [](const Image& i, const Context&) {
       return Fails(ByteAt(i, FieldPos("MapSensorSetup")) > kMaxMapSensorSetup);
     },
     true, false, "byte 955 (the MAP sensor type and its three flags) is above 228"},
    {"Throttle Pump Setup Error", At(FieldPos("MapSensorSetup")), ThrottlePumpFailures, true, false,
     "a throttle pump on a MAP basis without the MAP sensor in use (neither MAP load sensing nor "
     "altitude compensation)"},
    {"Map Sensor Setup Error", At(FieldPos("MapSensorSetup")),
     [](const Image& i, const Context&) {
       return Fails((i.Byte(FieldPos("MapSensorSetup")) & kMapSensorLowBits) > kLastMapSensorType);
     },
     true, false, "bits 0 to 4 of byte 955 are above 5"},
    {"Map Sensor Scaling Invalid", Both(FieldPos("MapSensorSetup"), FieldPos("MapSensorScaling")),
     MapScalingFailures, true, false, "byte 956 is not a scaling of the MAP sensor type"},
});

constexpr auto kStep10 = std::to_array<SetupCheck>({
    {"GPI1 Function Invalid", At(FieldPos("Gpi1Function")),
     [](const Image& i, const Context&) {
       return Fails(ByteAt(i, FieldPos("Gpi1Function")) >= kGpiFunctionCodes);
     },
     true, false, "byte 1022 is 8 or more"},
    {"GPI2 Function Invalid", At(FieldPos("Gpi2Function")),
     [](const Image& i, const Context&) {
       return Fails(ByteAt(i, FieldPos("Gpi2Function")) >= kGpiFunctionCodes);
     },
     true, false, "byte 1023 is 8 or more"},
    {"Dwell Time Invalid", At(FieldPos("DwellTime")),
     [](const Image& i, const Context&) { return Fails(ByteAt(i, FieldPos("DwellTime")) >= 128); },
     true, false, "byte 958 is 128 or more"},
});

constexpr std::string_view kAirCurve = "Air Temp Sensor Calibration Error";
constexpr std::string_view kWaterCurve = "Water Temp Sensor Calibration Error";
constexpr std::string_view kCurveRule =
    "a warmer point's ratio byte is above its colder neighbour's (the sensor's resistance must "
    "fall as it warms)";
constexpr std::string_view kBatt = "Battery Voltage Compensation Invalid";
constexpr std::string_view kBattRule = "one of bytes 1000 to 1010 is above 200 (2.00 ms)";

constexpr auto kStep11 = std::to_array<SetupCheck>({
    {kAirCurve, Both(FieldPos("AirSensorCal"), FieldPos("AirSensorCal") + 1),
     CurvePairFails<FieldPos("AirSensorCal") + 1>, true, false, kCurveRule},
    {kAirCurve, Both(FieldPos("AirSensorCal") + 1, FieldPos("AirSensorCal") + 2),
     CurvePairFails<FieldPos("AirSensorCal") + 2>, true, false, kCurveRule},
    {kAirCurve, Both(FieldPos("AirSensorCal") + 2, FieldPos("AirSensorCal") + 3),
     CurvePairFails<FieldPos("AirSensorCal") + 3>, true, false, kCurveRule},
    {kAirCurve, Both(FieldPos("AirSensorCal") + 3, FieldPos("AirSensorCal") + 4),
     CurvePairFails<FieldPos("AirSensorCal") + 4>, true, false, kCurveRule},
    {kAirCurve, Both(FieldPos("AirSensorCal") + 4, FieldPos("AirSensorCal") + 5),
     CurvePairFails<FieldPos("AirSensorCal") + 5>, true, false, kCurveRule},
    {kAirCurve, Both(FieldPos("AirSensorCal") + 5, FieldPos("AirSensorCal") + 6),
     CurvePairFails<FieldPos("AirSensorCal") + 6>, true, false, kCurveRule},
    {kAirCurve, Both(FieldPos("AirSensorCal") + 6, FieldPos("AirSensorCal") + 7),
     CurvePairFails<FieldPos("AirSensorCal") + 7>, true, false, kCurveRule},
    {kWaterCurve, Both(FieldPos("WaterSensorCal"), FieldPos("WaterSensorCal") + 1),
     CurvePairFails<FieldPos("WaterSensorCal") + 1>, true, false, kCurveRule},
    {kWaterCurve, Both(FieldPos("WaterSensorCal") + 1, FieldPos("WaterSensorCal") + 2),
     CurvePairFails<FieldPos("WaterSensorCal") + 2>, true, false, kCurveRule},
    {kWaterCurve, Both(FieldPos("WaterSensorCal") + 2, FieldPos("WaterSensorCal") + 3),
     CurvePairFails<FieldPos("WaterSensorCal") + 3>, true, false, kCurveRule},
    {kWaterCurve, Both(FieldPos("WaterSensorCal") + 3, FieldPos("WaterSensorCal") + 4),
     CurvePairFails<FieldPos("WaterSensorCal") + 4>, true, false, kCurveRule},
    {kWaterCurve, Both(FieldPos("WaterSensorCal") + 4, FieldPos("WaterSensorCal") + 5),
     CurvePairFails<FieldPos("WaterSensorCal") + 5>, true, false, kCurveRule},
    {kWaterCurve, Both(FieldPos("WaterSensorCal") + 5, FieldPos("WaterSensorCal") + 6),
     CurvePairFails<FieldPos("WaterSensorCal") + 6>, true, false, kCurveRule},
    {kWaterCurve, Both(FieldPos("WaterSensorCal") + 6, FieldPos("WaterSensorCal") + 7),
     CurvePairFails<FieldPos("WaterSensorCal") + 7>, true, false, kCurveRule},
    {"Injector Startup Prime Invalid", At(FieldPos("StartupPrime")),
     [](const Image& i, const Context&) {
       return Fails(ByteAt(i, FieldPos("StartupPrime")) > kMaxStartupPrime);
     },
     true, false, "byte 998 is above 14: the list has entries 0 to 14"},
    {kBatt, At(FieldPos("BattComp") + 1), BattCompFails<FieldPos("BattComp") + 1>, true, false,
     kBattRule},
    {kBatt, At(FieldPos("BattComp") + 2), BattCompFails<FieldPos("BattComp") + 2>, true, true,
     kBattRule},
    {kBatt, At(FieldPos("BattComp") + 3), BattCompFails<FieldPos("BattComp") + 3>, true, true,
     kBattRule},
    {kBatt, At(FieldPos("BattComp") + 4), BattCompFails<FieldPos("BattComp") + 4>, true, true,
     kBattRule},
    {kBatt, At(FieldPos("BattComp") + 5), BattCompFails<FieldPos("BattComp") + 5>, true, true,
     kBattRule},
    {kBatt, At(FieldPos("BattComp") + 6), BattCompFails<FieldPos("BattComp") + 6>, true, true,
     kBattRule},
    {kBatt, At(FieldPos("BattComp") + 7), BattCompFails<FieldPos("BattComp") + 7>, true, true,
     kBattRule},
    {kBatt, At(FieldPos("BattComp") + 8), BattCompFails<FieldPos("BattComp") + 8>, true, true,
     kBattRule},
    {kBatt, At(FieldPos("BattComp") + 9), BattCompFails<FieldPos("BattComp") + 9>, true, true,
     kBattRule},
    {kBatt, At(FieldPos("BattComp") + 10), BattCompFails<FieldPos("BattComp") + 10>, true, true,
     kBattRule},
    {kBatt, At(FieldPos("BattComp") + 11), BattCompFails<FieldPos("BattComp") + 11>, true, true,
     kBattRule},
    {"Idle Target RPM Invalid", Whole("IdleTargetRpm"),
     [](const Image& i, const Context&) { return Fails(i.IdleTargetRpm() == 0); }, true, false,
     "bytes 1011 to 1013 are 0 (no speed)"},
    {"Idle Minimum Larger than Maximum Error", Whole("IdleMinMax"),
     [](const Image& i, const Context&) {
       return Fails(i.Byte(FieldPos("IdleMinMax")) > i.Byte(FieldPos("IdleMinMax") + 1));
     },
     true, false, "byte 1014 (the minimum) is above byte 1015 (the maximum)"},
    {"Idle Cold Adjuster Invalid", At(FieldPos("IdleCold") + 2),
     [](const Image& i, const Context&) { return Fails(i.Byte(FieldPos("IdleCold") + 2) >= 128); },
     true, false, "byte 1018 is 128 or more (64.0 shown)"},
    {"Idle PWM Frequency Invalid", At(FieldPos("IdlePwmFrequency")),
     [](const Image& i, const Context&) { return Fails(i.IdlePwmFrequency() >= 4); }, true, false,
     "byte 867 is 4 or more"},
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

bool SetupCheck::Reads(int position) const {
  return std::any_of(reads.begin(), reads.end(), [position](const PositionRange& range) {
    return position >= range.first && position <= range.last;
  });
}

void RunChecks(std::span<const SetupCheck> checks, const CalibrationImage& image,
               const CheckContext& context, std::vector<std::string>& out) {
  bool run_said = false;
  for (const SetupCheck& check : checks) {
    if (!check.said_once) run_said = false;
    if (run_said || check.failures(image, context) == 0) continue;
    out.emplace_back(check.message);
    run_said = true;
  }
}

const std::vector<SetupCheck>& AllSetupChecks() {
  static const std::vector<SetupCheck> checks = [] {
    std::vector<SetupCheck> all;
    for (const int step : kCheckedSteps) {
      const std::span<const SetupCheck> of_step = ChecksOfStep(step);
      all.insert(all.end(), of_step.begin(), of_step.end());
    }
    return all;
  }();
  return checks;
}

std::vector<std::string> ValidateSetup(const CalibrationImage& image, const CheckContext& context) {
  std::vector<SetupCheck> errors;
  for (const SetupCheck& check : AllSetupChecks()) {
    if (check.setup_error) errors.push_back(check);
  }
  std::vector<std::string> messages;
  RunChecks(errors, image, context, messages);
  return messages;
}

std::vector<SetupCheck> FailedChecksReading(const CalibrationImage& image,
                                            const CheckContext& context,
                                            std::span<const int> positions) {
  std::vector<SetupCheck> failed;
  for (const SetupCheck& check : AllSetupChecks()) {
    const bool reads = std::any_of(positions.begin(), positions.end(),
                                   [&check](int position) { return check.Reads(position); });
    if (!reads || check.failures(image, context) == 0) continue;
    const bool said = std::any_of(failed.begin(), failed.end(), [&check](const SetupCheck& seen) {
      return seen.message == check.message;
    });
    if (!said) failed.push_back(check);
  }
  return failed;
}

std::vector<SetupCheck> ChangeBreaks(const CalibrationImage& after, const CheckContext& context,
                                     std::span<const int> written) {
  return FailedChecksReading(after, context, written);
}

bool FirmwareOlderThanSoftware(std::uint8_t version) { return version != 0 && version < 1; }

}  // namespace vela
