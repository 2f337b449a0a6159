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

// The fields a choice writes: its own, and for a new MAP sensor type the scaling it starts at.
std::vector<std::string_view> FieldsOf(SetupChoice choice) {
  const SetupChoiceDescription& d = Describe(choice);
  if (d.also_writes.empty()) return {d.field};
  return {d.field, d.also_writes};
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
           InGroup(sensors.tps_cal1, FieldPos("TpsCal1"), position),
           InGroup(sensors.tps_cal2, FieldPos("TpsCal2"), position),
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
      return &sensors.tps_setup;
    case FieldPos("TriggerVoltage"):
      return &setup.trigger_voltage;
    case FieldPos("HomeVoltage"):
      return &setup.home_voltage;
    case FieldPos("TriggerToothOffset"):
      return &setup.trigger_tooth_offset;
    case FieldPos("FuelSetting948"):
      return &setup.fuel_setting_948;
    default:
      return nullptr;
  }
}

}  // namespace

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
  maps.FuelLoadSites = FuelLoadSitesOfChoice(parts_.state.setup.fuel_load_sites_code);
  maps.IgnLoadSites = IgnLoadSitesOfChoice(parts_.state.setup.ign_load_sites_code);
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
  outcome.refusals = ChangeBreaks(after, {candidate.sensors.map_sensor_type}, written);
  if (mends) {
    const std::vector<SetupCheck> already =
        FailedChecksReading(parts_.image, {parts_.state.sensors.map_sensor_type}, written);
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
  return Outcome([choice, value](EditorState& state) { KeepChoice(choice, value, state); },
                 FieldsOf(choice), mends);
}

std::vector<ByteWrite> SetupEditor::Choose(SetupChoice choice, int value) {
  if (Filling() || TryChoose(choice, value).Refused()) return {};
  if (choice == SetupChoice::kTriggerInputEdge && value == 1) {
    parts_.messages.Show(MessageIcon::kExclamation, std::string(kWarningTitle),
                         {kRisingEdgeWarningLines.begin(), kRisingEdgeWarningLines.end()});
  }
  std::vector<ByteWrite> sent = Commit(
      [choice, value](EditorState& state) { KeepChoice(choice, value, state); }, FieldsOf(choice));
  if (Describe(choice).maps == MapEffect::kLayout) LayOutMaps();
  return sent;
}

std::optional<std::vector<ByteWrite>> SetupEditor::SetRevLimitRpm(int limiter, double rpm) {
  if (Filling() || (limiter != 1 && limiter != 2)) return std::nullopt;
  const std::optional<std::uint32_t> period = EnginePeriodFromRpm(rpm, 0xFFFF);
  if (!period) return std::nullopt;
  return Make(
      [limiter, period](EditorState& state) {
        (limiter == 1 ? state.setup.rev_limit1_period : state.setup.rev_limit2_period) =
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
  return Make([raw](EditorState& state) { state.setup.trigger_offset = raw; }, {"TriggerOffset"});
}

std::vector<ByteWrite> SetupEditor::SetDwellValue(int value) {
  if (Filling()) return {};
  // Bit 7, which no dwell control sets, is written clear.
  const auto change = [value](EditorState& state) {
    std::uint8_t& dwell = state.setup.dwell;
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
  outcome.refusals = ChangeBreaks(after, {parts_.state.sensors.map_sensor_type}, {&position, 1});
  return outcome;
}

std::optional<std::pair<int, int>> SetupEditor::RawRange(int position) const {
  const std::vector<SetupCheck>& checks = AllSetupChecks();
  const bool checked = std::any_of(checks.begin(), checks.end(),
                                   [position](const SetupCheck& c) { return c.Reads(position); });
  if (!checked) return std::pair{0, 255};
  std::optional<std::pair<int, int>> range;
  for (int value = 0; value <= 255; ++value) {
    const bool ok = value == parts_.image.Byte(position)
                        ? FailedChecksReading(parts_.image, {parts_.state.sensors.map_sensor_type},
                                              {&position, 1})
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
  if (Filling() || index < 0 || index >= static_cast<int>(parts_.state.idle.idle_flags.size())) {
    return {};
  }
  return Make(
             [index, on](EditorState& state) {
               state.idle.idle_flags[static_cast<std::size_t>(index)] = on;
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
