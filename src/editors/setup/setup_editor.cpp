#include "editors/setup/setup_editor.h"

#include <algorithm>
#include <cmath>

#include "calibration/conversions.h"
#include "editors/build_calibration.h"
#include "editors/setup/map_sensor.h"
#include "editors/setup/setup_checks.h"
#include "editors/setup/setup_options.h"

namespace vela {

namespace {

constexpr double kMaxTriggerOffsetDegrees = kMaxTriggerOffset / 2.0;

}  // namespace

std::string_view SetupFieldOf(SetupChoice choice) {
  switch (choice) {
    case SetupChoice::kCylinders:
      return "Cylinders";
    case SetupChoice::kFuelMode:
    case SetupChoice::kOptionImpedance:
      return "InjectionMode";
    case SetupChoice::kLimiterMode:
    case SetupChoice::kTriggerEdgeInput:
    case SetupChoice::kTriggerEdgeHome:
    case SetupChoice::kTriggerEdgeSpark:
    case SetupChoice::kComboAuxOutput:
      return "LimiterTacho";
    case SetupChoice::kComboTrigger:
      return "TriggerPattern";
    case SetupChoice::kTriggerHallMagnetic:
    case SetupChoice::kTriggerSensorFlag:
      return "TriggerSensor";
    case SetupChoice::kComboHome:
      return "HomePattern";
    case SetupChoice::kHomeHallMagnetic:
    case SetupChoice::kHomeSensorFlag:
      return "HomeSensor";
    case SetupChoice::kComboSpark:
      return "SparkMode";
    case SetupChoice::kDwellMode:
      return "DwellTime";
    case SetupChoice::kComboSiteRPM:
      return "RpmSitesSetup";
    case SetupChoice::kComboSiteFuel:
      return "FuelSitesSelection";
    case SetupChoice::kComboSiteIgnition:
      return "IgnSites";
    case SetupChoice::kFuelPumpPrime:
      return "StartupPrime";
    case SetupChoice::kWarningLight:
      return "Setting997";
    case SetupChoice::kLoadSensing:
    case SetupChoice::kAltitudeComp:
    case SetupChoice::kTPumpBased:
    case SetupChoice::kComboMAP:
      return "MapSensorSetup";
    case SetupChoice::kComboMAPScale:
      return "MapSensorScaling";
    case SetupChoice::kMapSelection:
      return "FuelSitesSelection";
  }
  return {};
}

namespace {

// The fields a choice writes: its own, and for a new MAP sensor type the scaling it starts at.
std::vector<std::string_view> FieldsOf(SetupChoice choice) {
  if (choice == SetupChoice::kComboMAP) return {"MapSensorSetup", "MapSensorScaling"};
  return {SetupFieldOf(choice)};
}

template <std::size_t N>
std::uint8_t* InGroup(std::array<std::uint8_t, N>& bytes, int first, int position) {
  const int index = position - first;
  return index >= 0 && index < static_cast<int>(N) ? &bytes[static_cast<std::size_t>(index)]
                                                   : nullptr;
}

// The state's byte for a position a raw editor owns, or null.
std::uint8_t* RawStateByte(EditorState& state, int position) {
  InputsOutputs& io = state.io;
  IdleControl& idle = state.idle;
  SensorSetup& sensors = state.sensors;
  EngineSetup& setup = state.setup;
  for (std::uint8_t* byte : {
           InGroup(io.Gpo1Setup, kGpoStarts[0], position),
           InGroup(io.Gpo2Setup, kGpoStarts[1], position),
           InGroup(io.Gpo3Setup, kGpoStarts[2], position),
           InGroup(io.Gpi1Setup, kGpiStarts[0], position),
           InGroup(io.Gpi2Setup, kGpiStarts[1], position),
           InGroup(io.Gpi1Aux, FieldPos("Gpi1Aux"), position),
           InGroup(io.GpiAux, FieldPos("GpiAux"), position),
           InGroup(idle.IdleCold, FieldPos("IdleCold"), position),
           InGroup(idle.IdleMod2, FieldPos("IdleMod2Values"), position),
           InGroup(sensors.TpsCal1, FieldPos("TpsCal1"), position),
           InGroup(sensors.TpsCal2, FieldPos("TpsCal2"), position),
       }) {
    if (byte != nullptr) return byte;
  }
  if (position >= kFirstUnshownBattByte && position <= SetupFieldNamed("BattComp").LastPosition()) {
    return &state.compensation.BattMap[static_cast<std::size_t>(position - FieldPos("BattComp"))];
  }
  if (position >= FieldPos("IdleMinMax") && position <= FieldPos("IdleMinMax") + 1) {
    return &idle.IdleMod0[static_cast<std::size_t>(position - FieldPos("IdleMinMax"))];
  }
  if (position >= FieldPos("IdleMod0Values") && position <= FieldPos("IdleMod0Values") + 2) {
    return &idle.IdleMod0[static_cast<std::size_t>(2 + position - FieldPos("IdleMod0Values"))];
  }
  switch (position) {
    case FieldPos("Gpi1Function"):
      return &io.Gpi1Function;
    case FieldPos("Gpi2Function"):
      return &io.Gpi2Function;
    case FieldPos("IdlePwmFrequency"):
      return &idle.IdlePwmFrequency;
    case FieldPos("IdleSetting858"):
      return &idle.IdleSetting858;
    case FieldPos("TpsSetup"):
      return &sensors.TpsSetup;
    case FieldPos("TriggerVoltage"):
      return &setup.TriggerVoltage;
    case FieldPos("HomeVoltage"):
      return &setup.HomeVoltage;
    case FieldPos("TriggerToothOffset"):
      return &setup.TriggerToothOffset;
    case FieldPos("FuelSetting948"):
      return &setup.FuelSetting948;
    default:
      return nullptr;
  }
}

// The state's field of a choice held as its entry index, or null (a flag, a byte, the dwell
// mode, the MAP sensor's type and scaling). `State` is EditorState, const or not.
template <typename State>
auto* IndexField(SetupChoice choice, State& state) {
  auto& setup = state.setup;
  switch (choice) {
    case SetupChoice::kCylinders:
      return &setup.Cylinders;
    case SetupChoice::kFuelMode:
      return &setup.FuelMode;
    case SetupChoice::kOptionImpedance:
      return &setup.OptionImpedance;
    case SetupChoice::kLimiterMode:
      return &setup.LimiterMode;
    case SetupChoice::kTriggerEdgeInput:
      return &setup.TriggerEdgeInput;
    case SetupChoice::kTriggerEdgeHome:
      return &setup.TriggerEdgeHome;
    case SetupChoice::kTriggerEdgeSpark:
      return &setup.TriggerEdgeSpark;
    case SetupChoice::kComboAuxOutput:
      return &setup.ComboAuxOutput;
    case SetupChoice::kComboTrigger:
      return &setup.ComboTrigger;
    case SetupChoice::kTriggerHallMagnetic:
      return &setup.TriggerHallMagnetic;
    case SetupChoice::kComboHome:
      return &setup.ComboHome;
    case SetupChoice::kHomeHallMagnetic:
      return &setup.HomeHallMagnetic;
    case SetupChoice::kComboSpark:
      return &setup.ComboSpark;
    case SetupChoice::kComboSiteRPM:
      return &setup.ComboSiteRPM;
    case SetupChoice::kComboSiteFuel:
      return &setup.ComboSiteFuel;
    case SetupChoice::kComboSiteIgnition:
      return &setup.ComboSiteIgnition;
    case SetupChoice::kMapSelection:
      return &setup.MapSelection;
    case SetupChoice::kLoadSensing:
      return &state.sensors.LoadSensing;
    default:
      return static_cast<decltype(&setup.Cylinders)>(nullptr);
  }
}

// The state's field of a tick box, or null.
template <typename State>
auto* FlagField(SetupChoice choice, State& state) {
  switch (choice) {
    case SetupChoice::kTriggerSensorFlag:
      return &state.setup.TriggerSensorFlag;
    case SetupChoice::kHomeSensorFlag:
      return &state.setup.HomeSensorFlag;
    case SetupChoice::kAltitudeComp:
      return &state.sensors.AltitudeComp;
    case SetupChoice::kTPumpBased:
      return &state.sensors.TPumpBased;
    default:
      return static_cast<decltype(&state.setup.TriggerSensorFlag)>(nullptr);
  }
}

// The state's byte of a list kept as its entry's byte, or null.
template <typename State>
auto* ByteField(SetupChoice choice, State& state) {
  switch (choice) {
    case SetupChoice::kFuelPumpPrime:
      return &state.setup.StartupPrime;
    case SetupChoice::kWarningLight:
      return &state.setup.Setting997;
    default:
      return static_cast<decltype(&state.setup.StartupPrime)>(nullptr);
  }
}

void UpdateState(EditorState& state, SetupChoice choice, int value) {
  if (int* field = IndexField(choice, state)) {
    *field = value;
    if (choice == SetupChoice::kFuelMode) SetupIgnitionDivide(state.setup);
    return;
  }
  if (bool* flag = FlagField(choice, state)) {
    *flag = value != 0;
    return;
  }
  if (std::uint8_t* byte = ByteField(choice, state)) {
    *byte = static_cast<std::uint8_t>(std::clamp(value, 0, 255));
    return;
  }
  SensorSetup& sensors = state.sensors;
  switch (choice) {
    case SetupChoice::kDwellMode: {
      // The byte is written whole from the two dwell controls: bit 7, which neither sets, clear.
      std::uint8_t& dwell = state.setup.DwellTime;
      dwell = static_cast<std::uint8_t>((dwell & kMaxDwellValue) |
                                        (value == 1 ? kDwellChargeTimeBit : 0));
      break;
    }
    case SetupChoice::kComboMAP: {
      if (value == sensors.ComboMAP) break;
      sensors.ComboMAP = value;
      // A new type starts at its full span, the one scaling every type offers.
      sensors.ComboMAPScale = 0;
      sensors.MapSensorScaling = MapScaleCodeOfEntry(value, 0).value_or(64);
      break;
    }
    case SetupChoice::kComboMAPScale:
      if (const auto code = MapScaleCodeOfEntry(sensors.ComboMAP, value)) {
        sensors.ComboMAPScale = value;
        sensors.MapSensorScaling = *code;
      }
      break;
    default:
      break;
  }
}
}  // namespace

int ChoiceEntries(SetupChoice choice, const EditorState& state) {
  switch (choice) {
    case SetupChoice::kCylinders:
      return static_cast<int>(kCylinderTexts.size());
    case SetupChoice::kFuelMode:
      return static_cast<int>(kFuelModeTexts.size());
    case SetupChoice::kOptionImpedance:
      return static_cast<int>(kImpedanceTexts.size());
    case SetupChoice::kLimiterMode:
      return static_cast<int>(kLimiterModeTexts.size());
    case SetupChoice::kTriggerEdgeSpark:
      return static_cast<int>(kTriggerEdgeSparkTexts.size());
    case SetupChoice::kComboAuxOutput:
      return static_cast<int>(kAuxOutputTexts.size());
    case SetupChoice::kComboTrigger:
      return static_cast<int>(kTriggerPatternTexts.size());
    case SetupChoice::kTriggerHallMagnetic:
    case SetupChoice::kHomeHallMagnetic:
      return static_cast<int>(kSensorTypeTexts.size());
    case SetupChoice::kComboHome:
      return static_cast<int>(kHomePatternTexts.size());
    case SetupChoice::kComboSpark:
      return static_cast<int>(kSparkModeTexts.size());
    case SetupChoice::kComboSiteRPM:
      return static_cast<int>(kRpmSiteTexts.size());
    case SetupChoice::kComboSiteFuel:
      return static_cast<int>(kFuelSiteTexts.size());
    case SetupChoice::kComboSiteIgnition:
      return static_cast<int>(kIgnSiteTexts.size());
    case SetupChoice::kFuelPumpPrime:
      return static_cast<int>(kFuelPumpPrimeTexts.size());
    case SetupChoice::kWarningLight:
      return static_cast<int>(kWarningLightTexts.size());
    case SetupChoice::kComboMAP:
      return kMapSensorTypes;
    case SetupChoice::kComboMAPScale:
      return static_cast<int>(MapScaleTexts(state.sensors.ComboMAP).size());
    case SetupChoice::kMapSelection:
      return static_cast<int>(kMapSelectionTexts.size());
    case SetupChoice::kTriggerEdgeInput:
    case SetupChoice::kTriggerEdgeHome:
    case SetupChoice::kTriggerSensorFlag:
    case SetupChoice::kHomeSensorFlag:
    case SetupChoice::kDwellMode:
    case SetupChoice::kLoadSensing:
    case SetupChoice::kAltitudeComp:
    case SetupChoice::kTPumpBased:
      return 2;
  }
  return 0;
}

namespace {

// The fuel map selection bits of byte 995.
constexpr std::uint8_t kSelectionBitsOf995 = 0xE0;

int HeldChoice(SetupChoice choice, const EditorState& state) {
  if (const int* field = IndexField(choice, state)) return *field;
  if (const bool* flag = FlagField(choice, state)) return *flag ? 1 : 0;
  if (const std::uint8_t* byte = ByteField(choice, state)) return *byte;
  switch (choice) {
    case SetupChoice::kDwellMode:
      return DwellModeOf(state.setup.DwellTime);
    case SetupChoice::kComboMAP:
      return state.sensors.ComboMAP < 0 ? 0 : state.sensors.ComboMAP;
    case SetupChoice::kComboMAPScale:
      return state.sensors.ComboMAPScale;
    default:
      return kNoEntry;
  }
}

bool HeldShowable(SetupChoice choice, const EditorState& state, const CalibrationImage& image) {
  switch (choice) {
    case SetupChoice::kDwellMode:
      return (state.setup.DwellTime & kDwellUnusedBit) == 0;
    case SetupChoice::kComboMAPScale:
      return MapScaleEntryOfCode(state.sensors.ComboMAP, state.sensors.MapSensorScaling)
          .has_value();
    case SetupChoice::kMapSelection: {
      const int bits = image.Byte(FieldPos("FuelSitesSelection")) & kSelectionBitsOf995;
      return (bits & (bits - 1)) == 0;
    }
    default:
      return true;
  }
}

}  // namespace

int ShownChoice(SetupChoice choice, const EditorState& state, const CalibrationImage& image) {
  const int held = HeldChoice(choice, state);
  if (held < 0 || held >= ChoiceEntries(choice, state) || !HeldShowable(choice, state, image)) {
    return kNoEntry;
  }
  return held;
}

int DwellModeOf(std::uint8_t dwell_byte) { return (dwell_byte & kDwellChargeTimeBit) ? 1 : 0; }
int DwellValueOf(std::uint8_t dwell_byte) { return dwell_byte & kMaxDwellValue; }

std::uint8_t LimiterTachoByte(const EngineSetup& setup) {
  int value = 0;
  if (setup.TriggerEdgeInput == 1) value |= 1;
  if (setup.TriggerEdgeHome == 1) value |= 2;
  if (setup.TriggerEdgeSpark == 1) value |= 4;
  if (setup.ComboAuxOutput == 1) value |= 32;
  if (setup.LimiterMode >= 0 && setup.LimiterMode <= 2) value |= (setup.LimiterMode + 1) << 6;
  return static_cast<std::uint8_t>(value);
}

std::vector<int> SafeByteOrder(int first_position, int width, std::uint32_t old_value,
                               std::uint32_t new_value) {
  std::vector<int> positions;
  for (int i = 0; i < width; ++i) positions.push_back(first_position + i);
  if (new_value > old_value) std::reverse(positions.begin(), positions.end());
  return positions;
}

bool SetupEditor::IsRawPosition(int position) {
  static EditorState probe;
  return RawStateByte(probe, position) != nullptr;
}

void SetupEditor::LayOutMaps() {
  MapEditors& maps = parts_.state.maps;
  maps.FuelLoadSites = FuelLoadSitesOfChoice(parts_.state.setup.ComboSiteFuel);
  maps.IgnLoadSites = IgnLoadSitesOfChoice(parts_.state.setup.ComboSiteIgnition);
  maps.FuelMap1 = parts_.image.ReadFuelMap(1);
  maps.FuelMap2 = parts_.image.ReadFuelMap(2);
  maps.IgnMap = parts_.image.ReadIgnMap();
}

ChangeOutcome SetupEditor::Outcome(const Change& change,
                                   const std::vector<std::string_view>& fields, bool mends) const {
  EditorState candidate = parts_.state;
  change(candidate);
  const CalibrationImage encoded = EncodeSetup(candidate);
  CalibrationImage after = parts_.image;
  ChangeOutcome outcome;
  std::vector<int> written;
  for (const std::string_view name : fields) {
    const std::optional<SetupField> field = FindSetupField(name);
    if (!field) continue;
    for (int p = field->position; p <= field->LastPosition(); ++p) {
      if (encoded.Byte(p) == after.Byte(p)) continue;
      after.SetByte(p, encoded.Byte(p));
      written.push_back(p);
      outcome.bytes.push_back({p, encoded.Byte(p)});
    }
  }
  outcome.refusals = ChangeBreaks(after, {candidate.sensors.ComboMAP}, written);
  if (mends) {
    const std::vector<SetupCheck> already =
        FailedChecksReading(parts_.image, {parts_.state.sensors.ComboMAP}, written);
    std::erase_if(outcome.refusals, [&already](const SetupCheck& check) {
      return std::any_of(already.begin(), already.end(),
                         [&check](const SetupCheck& a) { return a.message == check.message; });
    });
  }
  return outcome;
}

std::optional<std::vector<ByteWrite>> SetupEditor::Make(
    const Change& change, const std::vector<std::string_view>& fields) {
  if (Outcome(change, fields).Refused()) return std::nullopt;
  return Commit(change, fields);
}

std::vector<ByteWrite> SetupEditor::Commit(const Change& change,
                                           const std::vector<std::string_view>& fields) {
  change(parts_.state);
  std::vector<ByteWrite> sent;
  for (const std::string_view field : fields) {
    const std::vector<ByteWrite> stored = Store(field);
    sent.insert(sent.end(), stored.begin(), stored.end());
  }
  return sent;
}

ChangeOutcome SetupEditor::TryChoose(SetupChoice choice, int value) const {
  if (value < 0 || value >= ChoiceEntries(choice, parts_.state)) {
    ChangeOutcome outcome;
    outcome.offered = false;
    return outcome;
  }
  const bool mends = ShownChoice(choice, parts_.state, parts_.image) == kNoEntry;
  return Outcome([choice, value](EditorState& state) { UpdateState(state, choice, value); },
                 FieldsOf(choice), mends);
}

std::vector<ByteWrite> SetupEditor::Choose(SetupChoice choice, int value) {
  if (Filling() || TryChoose(choice, value).Refused()) return {};
  if (choice == SetupChoice::kTriggerEdgeInput && value == 1) {
    parts_.messages.Show(MessageIcon::kExclamation, std::string(kWarningTitle),
                         {kRisingEdgeWarningLines.begin(), kRisingEdgeWarningLines.end()});
  }
  std::vector<ByteWrite> sent = Commit(
      [choice, value](EditorState& state) { UpdateState(state, choice, value); }, FieldsOf(choice));
  if (choice == SetupChoice::kComboSiteFuel || choice == SetupChoice::kComboSiteIgnition) {
    LayOutMaps();
  }
  return sent;
}

std::optional<std::vector<ByteWrite>> SetupEditor::SetRevLimitRpm(int limiter, double rpm) {
  if (Filling() || (limiter != 1 && limiter != 2)) return std::nullopt;
  const std::optional<std::uint32_t> period = EnginePeriodFromRpm(rpm, 0xFFFF);
  if (!period) return std::nullopt;
  return Make(
      [limiter, period](EditorState& state) {
        (limiter == 1 ? state.setup.RevLimit1 : state.setup.RevLimit2) =
            static_cast<std::uint16_t>(*period);
      },
      {limiter == 1 ? "RevLimit1" : "RevLimit2"});
}

std::optional<std::vector<ByteWrite>> SetupEditor::SetIdleTargetRpm(double rpm) {
  if (Filling()) return std::nullopt;
  const std::optional<std::uint32_t> period = EnginePeriodFromRpm(rpm, 0xFFFFFF);
  if (!period) return std::nullopt;
  return Make([period](EditorState& state) { state.idle.IdleTargetRpm = *period; },
              {"IdleTargetRpm"});
}

std::optional<std::vector<ByteWrite>> SetupEditor::SetTriggerOffsetDegrees(double degrees) {
  if (Filling() || !(degrees >= 0.0 && degrees <= kMaxTriggerOffsetDegrees)) return std::nullopt;
  const std::uint8_t raw = RawFromTriggerOffset(degrees);
  return Make([raw](EditorState& state) { state.setup.TriggerOffset = raw; }, {"TriggerOffset"});
}

std::vector<ByteWrite> SetupEditor::SetDwellValue(int value) {
  if (Filling()) return {};
  // Bit 7, which no dwell control sets, is written clear.
  const auto change = [value](EditorState& state) {
    std::uint8_t& dwell = state.setup.DwellTime;
    dwell = static_cast<std::uint8_t>((dwell & kDwellChargeTimeBit) |
                                      std::clamp(value, 0, kMaxDwellValue));
  };
  return Make(change, {"DwellTime"}).value_or(std::vector<ByteWrite>{});
}

ChangeOutcome SetupEditor::TryRawByte(int position, std::uint8_t value) const {
  ChangeOutcome outcome;
  if (!IsRawPosition(position)) return outcome;
  CalibrationImage after = parts_.image;
  if (after.Byte(position) == value) return outcome;
  after.SetByte(position, value);
  outcome.bytes.push_back({position, value});
  outcome.refusals = ChangeBreaks(after, {parts_.state.sensors.ComboMAP}, {&position, 1});
  return outcome;
}

std::optional<std::pair<int, int>> SetupEditor::RawRange(int position) const {
  const std::vector<SetupCheck>& checks = AllSetupChecks();
  const bool checked = std::any_of(checks.begin(), checks.end(),
                                   [position](const SetupCheck& c) { return c.Reads(position); });
  if (!checked) return std::pair{0, 255};
  std::optional<std::pair<int, int>> range;
  for (int value = 0; value <= 255; ++value) {
    const bool ok =
        value == parts_.image.Byte(position)
            ? FailedChecksReading(parts_.image, {parts_.state.sensors.ComboMAP}, {&position, 1})
                  .empty()
            : !TryRawByte(position, static_cast<std::uint8_t>(value)).Refused();
    if (!ok) continue;
    if (!range) range = std::pair{value, value};
    range->second = value;
  }
  return range;
}

std::string SetupEditor::RawRangeNote(int position,
                                      const std::optional<std::pair<int, int>>& range) const {
  if (!range) return "Takes no value now.";
  if (*range == std::pair{0, 255}) return {};
  std::string note =
      "Takes " + std::to_string(range->first) + " to " + std::to_string(range->second) + " now";
  for (const int beyond : {range->first - 1, range->second + 1}) {
    if (beyond < 0 || beyond > 255) continue;
    const ChangeOutcome outcome = TryRawByte(position, static_cast<std::uint8_t>(beyond));
    if (outcome.Refused()) note += "; " + std::to_string(beyond) + ": " + RefusalText(outcome);
  }
  return note + ".";
}

std::vector<ByteWrite> SetupEditor::SetRawByte(int position, std::uint8_t value) {
  std::uint8_t* byte = RawStateByte(parts_.state, position);
  if (Filling() || byte == nullptr || TryRawByte(position, value).Refused()) return {};
  *byte = value;
  return StorePositions({position});
}

std::vector<ByteWrite> SetupEditor::SetIdleFlag(int index, bool on) {
  if (Filling() || index < 0 || index >= static_cast<int>(parts_.state.idle.CheckIdle.size())) {
    return {};
  }
  return Make(
             [index, on](EditorState& state) {
               state.idle.CheckIdle[static_cast<std::size_t>(index)] = on;
             },
             {index < 8 ? "IdleFlags1" : "IdleFlags2"})
      .value_or(std::vector<ByteWrite>{});
}

std::string RefusalText(const ChangeOutcome& outcome) {
  if (!outcome.Refused()) return {};
  if (!outcome.offered) return "no such entry";
  std::string text = "it would set ";
  for (std::size_t i = 0; i < outcome.bytes.size(); ++i) {
    if (i > 0) text += i + 1 == outcome.bytes.size() ? " and " : ", ";
    text += "byte " + std::to_string(outcome.bytes[i].position) + " to " +
            std::to_string(outcome.bytes[i].value);
  }
  text += ", which fails ";
  for (std::size_t i = 0; i < outcome.refusals.size(); ++i) {
    const SetupCheck& check = outcome.refusals[i];
    if (i > 0) text += "; and ";
    text += "\"" + std::string(check.message) + "\": " + std::string(check.rule);
  }
  return text;
}

std::vector<ByteWrite> SetupEditor::Store(std::string_view name) {
  const std::optional<SetupField> field = FindSetupField(name);
  if (!field) return {};
  if (field->kind == FieldKind::kNumber && field->width > 1) {
    const std::uint32_t old_value = parts_.image.FieldValue(*field);
    const std::uint32_t new_value = EncodeSetup(parts_.state).FieldValue(*field);
    return StorePositions(SafeByteOrder(field->position, field->width, old_value, new_value));
  }
  std::vector<int> positions;
  for (int p = field->position; p <= field->LastPosition(); ++p) positions.push_back(p);
  return StorePositions(positions);
}

std::vector<ByteWrite> SetupEditor::StorePositions(const std::vector<int>& positions) {
  const CalibrationImage encoded = EncodeSetup(parts_.state);
  std::vector<ByteWrite> sent;
  for (const int position : positions) {
    const std::uint8_t value = encoded.Byte(position);
    if (value == parts_.image.Byte(position)) continue;
    parts_.image.SetByte(position, value);
    // The image keeps the edit whatever became of the frame; a lost one shows as the stall.
    static_cast<void>(parts_.sender.Send({kSingleValueWrite, position, value}));
    sent.push_back({position, value});
  }
  return sent;
}

}  // namespace vela
