#include "editors/setup/raw_fields.h"

#include <algorithm>
#include <array>
#include <utility>

#include "editors/editor_state.h"

namespace vela {

namespace {

// "Gpi1Setup byte 2 (873)"; with no field name, "byte 2 (873)".
std::string Named(std::string_view field, int index, int position) {
  const std::string name = field.empty() ? "byte" : std::string(field) + " byte";
  return name + " " + std::to_string(index) + " (" + std::to_string(position) + ")";
}

RawField Byte(std::string_view label, int position, RawShow show = RawShow::kByte) {
  return {std::string(label) + " (" + std::to_string(position) + ")", position, show};
}

void AddBytes(std::vector<RawField>& fields, std::string_view field, int first, int count,
              int first_index = 1) {
  for (int i = 0; i < count; ++i) {
    fields.push_back({Named(field, first_index + i, first + i), first + i, RawShow::kByte});
  }
}

}  // namespace

std::vector<RawGroup> OutputGroups() {
  std::vector<RawGroup> groups;
  for (int output = 1; output <= 3; ++output) {
    const int start = kGpoStarts[static_cast<std::size_t>(output - 1)];
    RawGroup group{"Output " + std::to_string(output) + ": Gpo" + std::to_string(output) +
                       "Setup, " + std::to_string(start) + " to " + std::to_string(start + 15),
                   {}};
    group.fields.push_back(Byte("function", start));
    AddBytes(group.fields, "", start + 1, 15, 2);
    groups.push_back(std::move(group));
  }
  return groups;
}

std::vector<RawGroup> InputGroups() {
  RawGroup input1{"General Purpose Input 1", {}};
  input1.fields.push_back(Byte("Gpi1Function: function code", FieldPos("Gpi1Function")));
  AddBytes(input1.fields, "Gpi1Setup", kGpiStarts[0], 6);
  AddBytes(input1.fields, "Gpi1Aux", FieldPos("Gpi1Aux"), 2);
  RawGroup input2{"General Purpose Input 2", {}};
  input2.fields.push_back(Byte("Gpi2Function: function code", FieldPos("Gpi2Function")));
  AddBytes(input2.fields, "Gpi2Setup", kGpiStarts[1], 6);
  AddBytes(input2.fields, "GpiAux", FieldPos("GpiAux"), 2);
  return {input1, input2};
}

std::vector<RawGroup> IdleGroups() {
  RawGroup target{"Idle Speed", {}};
  target.fields.push_back(
      {"IdleTargetRpm (1011-1013)", FieldPos("IdleTargetRpm"), RawShow::kRpm24});
  target.fields.push_back(Byte("IdleMinMax, minimum", FieldPos("IdleMinMax")));
  target.fields.push_back(Byte("IdleMinMax, maximum", FieldPos("IdleMinMax") + 1));
  target.fields.push_back(Byte("IdlePwmFrequency", FieldPos("IdlePwmFrequency")));
  target.fields.push_back(Byte("IdleSetting858", FieldPos("IdleSetting858")));
  RawGroup cold{"Idle Cold Adjuster and Further Values", {}};
  AddBytes(cold.fields, "IdleCold", FieldPos("IdleCold"), 2);
  cold.fields.push_back(
      Byte("IdleCold byte 3, halved", FieldPos("IdleCold") + 2, RawShow::kHalved));
  AddBytes(cold.fields, "IdleMod0", FieldPos("IdleMod0Values"), 3, 3);
  AddBytes(cold.fields, "IdleMod2", FieldPos("IdleMod2Values"), 4);
  RawGroup flags{"Idle Options: CheckIdle 0 to 15, bit 0 first", {}};
  flags.fields.push_back(Byte("IdleFlags1", FieldPos("IdleFlags1"), RawShow::kBits));
  flags.fields.push_back(Byte("IdleFlags2", FieldPos("IdleFlags2"), RawShow::kBits));
  return {target, cold, flags};
}

std::vector<RawGroup> TpsGroups() {
  RawGroup tps{"Throttle Position Sensor", {}};
  tps.fields.push_back(Byte("TpsSetup", FieldPos("TpsSetup")));
  AddBytes(tps.fields, "TpsCal1", FieldPos("TpsCal1"), 2);
  AddBytes(tps.fields, "TpsCal2", FieldPos("TpsCal2"), 2);
  return {tps};
}

RawGroup UnshownBattGroup() {
  RawGroup group{"Battery compensation beyond 16 V, bytes 1006 to 1010 as stored (0.01 ms)", {}};
  const int first = FieldPos("BattComp");
  AddBytes(group.fields, "BattComp", kFirstUnshownBattByte, 5, kFirstUnshownBattByte - first + 1);
  return group;
}

std::vector<std::string> FailedChecksAt(const CalibrationImage& image, int position,
                                        const CheckContext& context) {
  std::vector<std::string> messages;
  for (const SetupCheck& check : FailedChecksReading(image, context, {&position, 1})) {
    messages.emplace_back(check.message);
  }
  return messages;
}

}  // namespace vela
