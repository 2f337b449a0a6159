#include "editors/build_calibration.h"

#include <cstddef>
#include <span>

#include "editors/setup/setup_checks.h"
#include "editors/setup/setup_choice_table.h"

namespace vela {

namespace {

void PutBytes(CalibrationImage& image, int first, std::span<const std::uint8_t> bytes) {
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    image.SetByte(first + static_cast<int>(i), bytes[i]);
  }
}

// The numbers and bytes of the engine set-up; its choices are written by EncodeChoices.
void EncodeEngineSetup(const EngineSetup& setup, CalibrationImage& image) {
  image.SetByte(FieldPos("TriggerOffset"), setup.trigger_offset);
  image.SetByte(FieldPos("IgnitionLock"), setup.ignition_lock ? 1 : 0);
  image.Write16(FieldPos("RevLimit2"), setup.rev_limit2_period);
  image.SetByte(FieldPos("TriggerVoltage"), setup.trigger_voltage);
  image.SetByte(FieldPos("HomeVoltage"), setup.home_voltage);
  image.SetByte(FieldPos("TriggerToothOffset"), setup.trigger_tooth_offset);
  image.SetByte(FieldPos("FuelSetting948"), setup.fuel_setting_948);
  image.Write16(FieldPos("RevLimit1"), setup.rev_limit1_period);
  // Whole, with its value; the dwell mode's bit is the choice's.
  image.SetByte(FieldPos("DwellTime"), setup.dwell);
}

void EncodeSensors(const SensorSetup& sensors, CalibrationImage& image) {
  PutBytes(image, FieldPos("TpsCal1"), sensors.tps_cal1);
  image.SetByte(FieldPos("TpsSetup"), sensors.tps_setup);
  PutBytes(image, FieldPos("TpsCal2"), sensors.tps_cal2);
  PutBytes(image, FieldPos("AirSensorCal"), sensors.air_sensor_cal);
  PutBytes(image, FieldPos("WaterSensorCal"), sensors.water_sensor_cal);
}

void EncodeTablesAndIo(const EditorState& state, CalibrationImage& image) {
  const Compensation& tables = state.compensation;
  PutBytes(image, FieldPos("ThrottlePumpValues"), std::span(tables.ThrottlePump).first(3));
  image.SetByte(FieldPos("Setting951"), tables.ThrottlePump[3]);
  PutBytes(image, FieldPos("AirComp"), tables.AirMap);
  PutBytes(image, FieldPos("WaterComp"), tables.WaterMap);
  PutBytes(image, FieldPos("BattComp"), tables.BattMap);
  const InputsOutputs& io = state.io;
  PutBytes(image, kGpoStarts[0], io.Gpo1Setup);
  PutBytes(image, kGpoStarts[1], io.Gpo2Setup);
  PutBytes(image, kGpoStarts[2], io.Gpo3Setup);
  PutBytes(image, kGpiStarts[0], io.Gpi1Setup);
  PutBytes(image, FieldPos("Gpi1Aux"), io.Gpi1Aux);
  image.SetByte(FieldPos("Gpi1Function"), io.Gpi1Function);
  PutBytes(image, kGpiStarts[1], io.Gpi2Setup);
  PutBytes(image, FieldPos("GpiAux"), io.GpiAux);
  image.SetByte(FieldPos("Gpi2Function"), io.Gpi2Function);
}

void EncodeIdle(const IdleControl& idle, CalibrationImage& image) {
  image.Write24(FieldPos("IdleTargetRpm"), idle.IdleTargetRpm);
  PutBytes(image, FieldPos("IdleMinMax"), std::span(idle.IdleMod0).first(2));
  PutBytes(image, FieldPos("IdleMod0Values"), std::span(idle.IdleMod0).last(3));
  PutBytes(image, FieldPos("IdleCold"), idle.IdleCold);
  image.SetByte(FieldPos("IdlePwmFrequency"), idle.IdlePwmFrequency);
  PutBytes(image, FieldPos("IdleMod2Values"), idle.IdleMod2);
  int flags1 = 0;
  int flags2 = 0;
  for (int bit = 0; bit < 8; ++bit) {
    if (idle.idle_flags[static_cast<std::size_t>(bit)]) flags1 |= 1 << bit;
    if (idle.idle_flags[static_cast<std::size_t>(8 + bit)]) flags2 |= 1 << bit;
  }
  image.SetByte(FieldPos("IdleFlags1"), static_cast<std::uint8_t>(flags1));
  image.SetByte(FieldPos("IdleFlags2"), static_cast<std::uint8_t>(flags2));
  image.SetByte(FieldPos("IdleSetting858"), idle.IdleSetting858);
}

}  // namespace

CalibrationImage EncodeSetup(const EditorState& state) {
  CalibrationImage image;
  EncodeEngineSetup(state.setup, image);
  EncodeSensors(state.sensors, image);
  EncodeTablesAndIo(state, image);
  EncodeIdle(state.idle, image);
  EncodeChoices(state, image);
  image.SetByte(FieldPos("FirmwareVersion"), state.version.FirmwareVersion);
  image.Write24(FieldPos("EcuNumber"), state.version.EcuNumber);
  return image;
}

BuiltCalibration BuildCalibrationFromEditors(const EditorState& state) {
  const CalibrationImage setup = EncodeSetup(state);
  BuiltCalibration built{
      BuildImage(state.maps.FuelMap1, state.maps.FuelMap2, state.maps.IgnMap, setup), {}};
  for (const std::string& message : ValidateSetup(built.image, {state.sensors.map_sensor_type})) {
    built.errors.push_back(message + std::string(kMapErrorSuffix));
  }
  return built;
}

}  // namespace vela
