#include "editors/setup/setup_choice_table.h"

#include <algorithm>
#include <array>
#include <vector>

#include "calibration/map_axes.h"
#include "calibration/setup_fields.h"
#include "editors/setup/map_sensor.h"
#include "editors/setup/setup_checks.h"
#include "editors/setup/setup_options.h"

namespace vela {

// How the editors hold each kind of choice, and how its bits sit in its byte. Named, not
// anonymous: the core is compiled several files at a time.
namespace choice_codes {

template <auto Part, auto Member>
auto& In(EditorState& state) {
  return (state.*Part).*Member;
}
template <auto Part, auto Member>
const auto& In(const EditorState& state) {
  return (state.*Part).*Member;
}

// A list index held as its image byte. An index no byte can hold (kNoEntry: nothing chosen) is
// written as 255, which every list check refuses.
template <auto Part, auto Member>
struct WholeByte {
  static int Held(const EditorState& s) { return In<Part, Member>(s); }
  static void Keep(EditorState& s, int entry) { In<Part, Member>(s) = entry; }
  static std::uint8_t Encode(const EditorState& s) {
    const int code = In<Part, Member>(s);
    return code >= 0 && code <= 255 ? static_cast<std::uint8_t>(code) : std::uint8_t{255};
  }
  static void Decode(std::uint8_t byte, EditorState& s) { In<Part, Member>(s) = byte; }
};

// A list whose entry the editors keep as the byte itself.
template <auto Part, auto Member>
struct EntryByte {
  static int Held(const EditorState& s) { return In<Part, Member>(s); }
  static void Keep(EditorState& s, int entry) {
    In<Part, Member>(s) = static_cast<std::uint8_t>(std::clamp(entry, 0, 255));
  }
  static std::uint8_t Encode(const EditorState& s) { return In<Part, Member>(s); }
  static void Decode(std::uint8_t byte, EditorState& s) { In<Part, Member>(s) = byte; }
};

// An entry index whose entry 1 alone sets bit `Bit`; the others leave it clear.
template <auto Part, auto Member, std::uint8_t Bit>
struct OneBitEntry {
  static int Held(const EditorState& s) { return In<Part, Member>(s); }
  static void Keep(EditorState& s, int entry) { In<Part, Member>(s) = entry; }
  static std::uint8_t Encode(const EditorState& s) { return In<Part, Member>(s) == 1 ? Bit : 0; }
  static void Decode(std::uint8_t byte, EditorState& s) {
    In<Part, Member>(s) = (byte & Bit) != 0 ? 1 : 0;
  }
};

// A tick box held as a flag.
template <auto Part, auto Member, std::uint8_t Bit>
struct FlagBit {
  static int Held(const EditorState& s) { return In<Part, Member>(s) ? 1 : 0; }
  static void Keep(EditorState& s, int entry) { In<Part, Member>(s) = entry != 0; }
  static std::uint8_t Encode(const EditorState& s) { return In<Part, Member>(s) ? Bit : 0; }
  static void Decode(std::uint8_t byte, EditorState& s) { In<Part, Member>(s) = (byte & Bit) != 0; }
};

// Two bits at `Shift`: codes 0 to 3, anything else as 3 (refused by the injection check).
template <auto Part, auto Member, int Shift>
struct TwoBits {
  static int Held(const EditorState& s) { return In<Part, Member>(s); }
  static void Keep(EditorState& s, int entry) { In<Part, Member>(s) = entry; }
  static std::uint8_t Encode(const EditorState& s) {
    const int code = In<Part, Member>(s);
    return static_cast<std::uint8_t>((code >= 0 && code <= 3 ? code : 3) << Shift);
  }
  static void Decode(std::uint8_t byte, EditorState& s) {
    In<Part, Member>(s) = (byte >> Shift) & 0x03;
  }
};

// A trigger or home sensor type in bits 0 to 6; one beyond them is written as all seven set.
template <auto Part, auto Member>
struct SensorType {
  static int Held(const EditorState& s) { return In<Part, Member>(s); }
  static void Keep(EditorState& s, int entry) { In<Part, Member>(s) = entry; }
  static std::uint8_t Encode(const EditorState& s) {
    const int type = In<Part, Member>(s);
    return static_cast<std::uint8_t>(type >= 0 && type <= kSensorTypeMask ? type : kSensorTypeMask);
  }
  static void Decode(std::uint8_t byte, EditorState& s) {
    In<Part, Member>(s) = byte & kSensorTypeMask;
  }
};

// Bits 6 and 7 of byte 942: 64, 128, 192 for the entries 0, 1, 2; none of them stands for no
// limiter type.
struct Limiter {
  static int Held(const EditorState& s) { return s.setup.limiter_mode; }
  static void Keep(EditorState& s, int entry) { s.setup.limiter_mode = entry; }
  static std::uint8_t Encode(const EditorState& s) {
    const int mode = s.setup.limiter_mode;
    return static_cast<std::uint8_t>(mode >= 0 && mode <= 2 ? (mode + 1) << 6 : 0);
  }
  static void Decode(std::uint8_t byte, EditorState& s) {
    const int limiter = byte >> 6;
    s.setup.limiter_mode = limiter == 0 ? kNoEntry : limiter - 1;
  }
};

// The fuel load site code as held; one beyond bits 0 to 4 is written as all five set.
struct FuelSites {
  static int Held(const EditorState& s) { return s.setup.fuel_load_sites_code; }
  static void Keep(EditorState& s, int entry) { s.setup.fuel_load_sites_code = entry; }
  static std::uint8_t Encode(const EditorState& s) {
    const int code = s.setup.fuel_load_sites_code;
    return static_cast<std::uint8_t>(code >= 0 && code <= 0x1F ? code : 0x1F);
  }
  static void Decode(std::uint8_t byte, EditorState& s) {
    s.setup.fuel_load_sites_code = byte & 0x1F;
  }
};

// Bits 5, 6 and 7 of byte 995 choose " Only Map 1", " Only Map 2" and "   ECU Selected"; none of
// them "Combine Maps". Read back, bits 7, 6 and 5 are taken in that order (with more than one
// set, the last taken stands); an unknown choice is written with all three set.
constexpr std::uint8_t kSelectionBits = 0xE0;
struct Selection {
  static int Held(const EditorState& s) { return s.setup.fuel_map_selection; }
  static void Keep(EditorState& s, int entry) { s.setup.fuel_map_selection = entry; }
  static std::uint8_t Encode(const EditorState& s) {
    switch (s.setup.fuel_map_selection) {
      case kMapSelectionOnlyMap1:
        return 0x20;
      case kMapSelectionOnlyMap2:
        return 0x40;
      case kMapSelectionEcuSelected:
        return 0x80;
      case kMapSelectionCombine:
        return 0;
      default:
        return kSelectionBits;
    }
  }
  static void Decode(std::uint8_t byte, EditorState& s) {
    int selection = kMapSelectionCombine;
    if ((byte & 0x80) != 0) selection = kMapSelectionEcuSelected;
    if ((byte & 0x40) != 0) selection = kMapSelectionOnlyMap2;
    if ((byte & 0x20) != 0) selection = kMapSelectionOnlyMap1;
    s.setup.fuel_map_selection = selection;
  }
  static bool Showable(const EditorState&, const CalibrationImage& image) {
    const int bits = image.Byte(FieldPos("FuelSitesSelection")) & kSelectionBits;
    return (bits & (bits - 1)) == 0;
  }
};

// Bit 6 of the dwell byte; the byte is written whole from the two dwell controls, bit 7 (which
// neither sets) clear.
struct Dwell {
  static int Held(const EditorState& s) { return DwellModeOf(s.setup.dwell); }
  static void Keep(EditorState& s, int entry) {
    std::uint8_t& dwell = s.setup.dwell;
    dwell = static_cast<std::uint8_t>((dwell & kMaxDwellValue) |
                                      (entry == 1 ? kDwellChargeTimeBit : 0));
  }
  static std::uint8_t Encode(const EditorState& s) { return s.setup.dwell & kDwellChargeTimeBit; }
  static void Decode(std::uint8_t byte, EditorState& s) {
    s.setup.dwell = static_cast<std::uint8_t>((s.setup.dwell & ~kDwellChargeTimeBit) |
                                              (byte & kDwellChargeTimeBit));
  }
  static bool Showable(const EditorState& s, const CalibrationImage&) {
    return (s.setup.dwell & kDwellUnusedBit) == 0;
  }
};

// The sensor type in bits 0 to 2; no selection counts as the first type, as the scaling table
// takes it. A new type starts at its full span, the one scaling every type offers.
struct MapType {
  static int Held(const EditorState& s) {
    return s.sensors.map_sensor_type < 0 ? 0 : s.sensors.map_sensor_type;
  }
  static void Keep(EditorState& s, int entry) {
    SensorSetup& sensors = s.sensors;
    if (entry == sensors.map_sensor_type) return;
    sensors.map_sensor_type = entry;
    sensors.map_scale_entry = 0;
    sensors.map_scale_code = MapScaleCodeOfEntry(entry, 0).value_or(64);
  }
  static std::uint8_t Encode(const EditorState& s) {
    const int type = s.sensors.map_sensor_type;
    return static_cast<std::uint8_t>(type >= 0 ? std::min(type, int{kMapSensorTypeBits}) : 0);
  }
  static void Decode(std::uint8_t byte, EditorState& s) {
    s.sensors.map_sensor_type = byte & kMapSensorTypeBits;
  }
};

// Byte 956 holds the scaling code; the editors keep it and the entry of the chosen type that
// stands for it (an entry is kept only where the type has one).
struct MapScale {
  static int Held(const EditorState& s) { return s.sensors.map_scale_entry; }
  static void Keep(EditorState& s, int entry) {
    if (const auto code = MapScaleCodeOfEntry(s.sensors.map_sensor_type, entry)) {
      s.sensors.map_scale_entry = entry;
      s.sensors.map_scale_code = *code;
    }
  }
  static std::uint8_t Encode(const EditorState& s) { return s.sensors.map_scale_code; }
  static void Decode(std::uint8_t byte, EditorState& s) {
    s.sensors.map_scale_code = byte;
    const std::optional<int> entry = MapScaleEntryOfCode(s.sensors.map_sensor_type, byte);
    if (entry) s.sensors.map_scale_entry = *entry;
  }
  static bool Showable(const EditorState& s, const CalibrationImage&) {
    return MapScaleEntryOfCode(s.sensors.map_sensor_type, s.sensors.map_scale_code).has_value();
  }
  static int Entries(const EditorState& s) {
    return static_cast<int>(MapScaleTexts(s.sensors.map_sensor_type).size());
  }
};

constexpr auto kSetup = &EditorState::setup;
constexpr auto kSensors = &EditorState::sensors;

// The fuel mode sets the ignition divide and injection factor of the duty limit.
struct FuelMode : TwoBits<kSetup, &EngineSetup::fuel_mode, 0> {
  static void Keep(EditorState& s, int entry) {
    TwoBits::Keep(s, entry);
    SetupIgnitionDivide(s.setup);
  }
  static void Decode(std::uint8_t byte, EditorState& s) {
    TwoBits::Decode(byte, s);
    SetupIgnitionDivide(s.setup);
  }
};

}  // namespace choice_codes

namespace {

namespace c = choice_codes;
using enum ChoiceShape;
using enum MapEffect;
using S = SetupChoice;

// The description of a choice held the way `Code` holds it.
template <typename Code>
constexpr SetupChoiceDescription Choice(SetupChoice choice, ChoiceShape shape,
                                        std::string_view name, std::string_view caption,
                                        std::span<const std::string_view> texts, int columns,
                                        std::string_view field, std::uint8_t bits,
                                        MapEffect maps = kNone) {
  return {choice, shape, name, caption, {},          {},          texts,         columns,
          field,  bits,  {},   maps,    &Code::Held, &Code::Keep, &Code::Encode, &Code::Decode};
}

constexpr std::string_view kThrottlePumpBasisTip =
    "What the throttle pump's \" De-activate Over\" limit is measured in: percent of throttle, or "
    "boost in bar through the MAP sensor.";
constexpr std::string_view kBit7Flag = "Bit 7 flag";
constexpr std::string_view kBit7Tip = "Bit 7 of the sensor byte, kept and sent as it is.";

constexpr SetupChoiceDescription Bit7Flag(SetupChoice choice, std::string_view name,
                                          std::string_view spoken, std::string_view field,
                                          auto code) {
  SetupChoiceDescription d =
      Choice<decltype(code)>(choice, kTickBox, name, kBit7Flag, {}, 0, field, 0x80);
  d.spoken = spoken;
  d.tip = kBit7Tip;
  return d;
}

constexpr SetupChoiceDescription WithShowable(SetupChoiceDescription d,
                                              bool (*showable)(const EditorState&,
                                                               const CalibrationImage&)) {
  d.showable = showable;
  return d;
}

// In the order of SetupChoice.
constexpr std::array<SetupChoiceDescription, 27> kChoices = {
    Choice<c::WholeByte<c::kSetup, &EngineSetup::cylinders_code>>(
        S::kCylinders, kOptions, "Cylinders", "Number of Cylinders", kCylinderTexts, 5, "Cylinders",
        0xFF),
    Choice<c::FuelMode>(S::kFuelMode, kOptions, "FuelMode", "Fuel Mode", kFuelModeTexts, 2,
                        "InjectionMode", 0x03, kRedraw),
    Choice<c::TwoBits<c::kSetup, &EngineSetup::injector_impedance, 6>>(
        S::kInjectorImpedance, kOptions, "OptionImpedance", "Injector Impedance", kImpedanceTexts,
        3, "InjectionMode", 0xC0),
    Choice<c::Limiter>(S::kLimiterMode, kOptions, "LimiterMode", "Limiter Type", kLimiterModeTexts,
                       3, "LimiterTacho", 0xC0),
    Choice<c::OneBitEntry<c::kSetup, &EngineSetup::trigger_input_edge, 0x01>>(
        S::kTriggerInputEdge, kOptions, "TriggerEdgeInput", "Trigger Edge", kTriggerEdgeInputTexts,
        2, "LimiterTacho", 0x01),
    Choice<c::OneBitEntry<c::kSetup, &EngineSetup::home_input_edge, 0x02>>(
        S::kHomeInputEdge, kOptions, "TriggerEdgeHome", "Home Edge", kTriggerEdgeHomeTexts, 2,
        "LimiterTacho", 0x02),
    Choice<c::OneBitEntry<c::kSetup, &EngineSetup::spark_output_edge, 0x04>>(
        S::kSparkOutputEdge, kOptions, "TriggerEdgeSpark", "Spark Output Edge",
        kTriggerEdgeSparkTexts, 2, "LimiterTacho", 0x04),
    Choice<c::OneBitEntry<c::kSetup, &EngineSetup::aux_output, 0x20>>(
        S::kAuxOutput, kList, "Combo1", "Auxiliary Output", kAuxOutputTexts, 0, "LimiterTacho",
        0x20),
    Choice<c::WholeByte<c::kSetup, &EngineSetup::trigger_pattern>>(
        S::kTriggerPattern, kList, "ComboTrigger", "Trigger Pattern", kTriggerPatternTexts, 0,
        "TriggerPattern", 0xFF),
    Choice<c::SensorType<c::kSetup, &EngineSetup::trigger_sensor_type>>(
        S::kTriggerSensorType, kOptions, "TriggerHallMagnetic", "Trigger Sensor", kSensorTypeTexts,
        3, "TriggerSensor", kSensorTypeMask),
    Bit7Flag(S::kTriggerSensorFlag, "TriggerSensorFlag", "Trigger Sensor Bit 7 flag",
             "TriggerSensor", c::FlagBit<c::kSetup, &EngineSetup::trigger_sensor_flag, 0x80>{}),
    Choice<c::WholeByte<c::kSetup, &EngineSetup::home_pattern>>(S::kHomePattern, kList, "ComboHome",
                                                                "Home Position", kHomePatternTexts,
                                                                0, "HomePattern", 0xFF),
    Choice<c::SensorType<c::kSetup, &EngineSetup::home_sensor_type>>(
        S::kHomeSensorType, kOptions, "HomeHallMagnetic", "Home Sensor", kSensorTypeTexts, 3,
        "HomeSensor", kSensorTypeMask),
    Bit7Flag(S::kHomeSensorFlag, "HomeSensorFlag", "Home Sensor Bit 7 flag", "HomeSensor",
             c::FlagBit<c::kSetup, &EngineSetup::home_sensor_flag, 0x80>{}),
    Choice<c::WholeByte<c::kSetup, &EngineSetup::spark_mode>>(
        S::kSparkMode, kList, "ComboSpark", "Spark Mode", kSparkModeTexts, 0, "SparkMode", 0xFF),
    WithShowable(Choice<c::Dwell>(S::kDwellMode, kList, "ComboDwell", "Dwell Control",
                                  kDwellModeTexts, 0, "DwellTime", kDwellChargeTimeBit),
                 &c::Dwell::Showable),
    Choice<c::WholeByte<c::kSetup, &EngineSetup::rpm_sites_code>>(
        S::kRpmSites, kList, "ComboSiteRPM", "Engine Speed Sites", kRpmSiteTexts, 0,
        "RpmSitesSetup", 0xFF, kRedraw),
    Choice<c::FuelSites>(S::kFuelLoadSites, kList, "ComboSiteFuel", "Fuel Load Sites",
                         kFuelSiteTexts, 0, "FuelSitesSelection", 0x1F, kLayout),
    Choice<c::WholeByte<c::kSetup, &EngineSetup::ign_load_sites_code>>(
        S::kIgnLoadSites, kList, "ComboSiteIgnition", "Ignition Load Sites", kIgnSiteTexts, 0,
        "IgnSites", 0xFF, kLayout),
    Choice<c::EntryByte<c::kSetup, &EngineSetup::fuel_pump_prime>>(
        S::kFuelPumpPrime, kList, "ComboPrime", "Startup Prime", kFuelPumpPrimeTexts, 0,
        "StartupPrime", 0xFF),
    Choice<c::EntryByte<c::kSetup, &EngineSetup::warning_light>>(
        S::kWarningLight, kList, "ComboWarningLight", "Warning Light", kWarningLightTexts, 0,
        "Setting997", 0xFF),
    Choice<c::OneBitEntry<c::kSensors, &SensorSetup::load_sensing, 0x40>>(
        S::kLoadSensing, kOptions, "LoadSensing", "Load Sensing", kLoadSensingTexts, 2,
        "MapSensorSetup", 0x40, kRedraw),
    Choice<c::FlagBit<c::kSensors, &SensorSetup::altitude_comp, 0x20>>(
        S::kAltitudeComp, kTickBox, "AltitudeComp", "Altitude Compensation", {}, 0,
        "MapSensorSetup", 0x20),
    [] {
      SetupChoiceDescription d =
          Choice<c::FlagBit<c::kSensors, &SensorSetup::throttle_pump_on_map, 0x80>>(
              S::kThrottlePumpBasis, kOptions, "TPumpBased", "Throttle Pump Based On",
              kThrottlePumpBasisTexts, 1, "MapSensorSetup", 0x80);
      d.spoken = d.caption;
      d.tip = kThrottlePumpBasisTip;
      return d;
    }(),
    [] {
      SetupChoiceDescription d =
          Choice<c::MapType>(S::kMapSensorType, kList, "ComboMAP", "Installed Map Sensor",
                             kMapSensorTexts, 0, "MapSensorSetup", kMapSensorTypeBits, kRedraw);
      d.also_writes = "MapSensorScaling";
      return d;
    }(),
    [] {
      SetupChoiceDescription d =
          Choice<c::MapScale>(S::kMapScale, kList, "ComboMAPScale", "MAP Sensor Scaling", {}, 0,
                              "MapSensorScaling", 0xFF, kRedraw);
      d.showable = &c::MapScale::Showable;
      d.entries = &c::MapScale::Entries;
      return d;
    }(),
    WithShowable(Choice<c::Selection>(S::kMapSelection, kOptions, "MapSelectionSetup",
                                      "Fuel Map Selection", kMapSelectionTexts, 2,
                                      "FuelSitesSelection", c::kSelectionBits, kRedraw),
                 &c::Selection::Showable),
};

constexpr bool InChoiceOrder() {
  for (std::size_t i = 0; i < kChoices.size(); ++i) {
    if (kChoices[i].choice != static_cast<SetupChoice>(i)) return false;
  }
  return true;
}
static_assert(InChoiceOrder(), "one description for each choice, in the order of SetupChoice");

// Every field that choices live in, once, in the table's order.
std::vector<std::string_view> ChoiceFields() {
  std::vector<std::string_view> fields;
  for (const SetupChoiceDescription& d : kChoices) {
    if (std::find(fields.begin(), fields.end(), d.field) == fields.end()) {
      fields.push_back(d.field);
    }
  }
  return fields;
}

}  // namespace

std::span<const SetupChoiceDescription> SetupChoiceDescriptions() { return kChoices; }

const SetupChoiceDescription& Describe(SetupChoice choice) {
  return kChoices[static_cast<std::size_t>(choice)];
}

std::string_view SetupFieldOf(SetupChoice choice) { return Describe(choice).field; }

int ChoiceEntries(SetupChoice choice, const EditorState& state) {
  const SetupChoiceDescription& d = Describe(choice);
  if (d.entries != nullptr) return d.entries(state);
  if (d.shape == kTickBox) return 2;
  return static_cast<int>(d.texts.size());
}

int ShownChoice(SetupChoice choice, const EditorState& state, const CalibrationImage& image) {
  const SetupChoiceDescription& d = Describe(choice);
  const int held = d.held(state);
  if (held < 0 || held >= ChoiceEntries(choice, state) ||
      (d.showable != nullptr && !d.showable(state, image))) {
    return kNoEntry;
  }
  return held;
}

void KeepChoice(SetupChoice choice, int entry, EditorState& state) {
  Describe(choice).keep(state, entry);
}

std::uint8_t ChoiceFieldByte(std::string_view field, const EditorState& state, std::uint8_t rest) {
  int byte = rest;
  for (const SetupChoiceDescription& d : kChoices) {
    if (d.field != field) continue;
    byte = (byte & ~d.bits) | (d.encode(state) & d.bits);
  }
  return static_cast<std::uint8_t>(byte);
}

void EncodeChoices(const EditorState& state, CalibrationImage& image) {
  static const std::vector<std::string_view> fields = ChoiceFields();
  for (const std::string_view field : fields) {
    const int position = FindSetupField(field)->position;
    image.SetByte(position, ChoiceFieldByte(field, state, image.Byte(position)));
  }
}

void DecodeChoices(std::string_view field, const CalibrationImage& image, EditorState& state) {
  const std::uint8_t byte = image.Byte(FindSetupField(field)->position);
  for (const SetupChoiceDescription& d : kChoices) {
    if (d.field == field) d.decode(byte, state);
  }
}

int DwellModeOf(std::uint8_t dwell_byte) { return (dwell_byte & kDwellChargeTimeBit) ? 1 : 0; }
int DwellValueOf(std::uint8_t dwell_byte) { return dwell_byte & kMaxDwellValue; }

}  // namespace vela
