#include "editors/build_calibration.h"

#include <algorithm>
#include <cstddef>
#include <span>

#include "editors/setup/map_sensor.h"
#include "editors/setup/setup_checks.h"
#include "editors/setup/setup_editor.h"

namespace vela {

namespace {

// A list index as its image byte. An index no byte can hold (kNoEntry: nothing chosen) is
// written as 255, which every list check refuses.
std::uint8_t CodeByte(int code) {
  return code >= 0 && code <= 255 ? static_cast<std::uint8_t>(code) : std::uint8_t{255};
}

// A two-bit field: codes 0 to 3, anything else as 3 (refused by the injection check).
std::uint8_t TwoBits(int code) {
  return static_cast<std::uint8_t>(code >= 0 && code <= 3 ? code : 3);
}

void PutBytes(CalibrationImage& image, int first, std::span<const std::uint8_t> bytes) {
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    image.SetByte(first + static_cast<int>(i), bytes[i]);
  }
}

std::uint8_t FuelSitesByte(const EngineSetup& setup) {
  std::uint8_t selection = 0xE0;  // an unknown choice sets all three bits: refused
  switch (setup.MapSelection) {
    case kMapSelectionOnlyMap1:
      selection = 0x20;
      break;
    case kMapSelectionOnlyMap2:
      selection = 0x40;
      break;
    case kMapSelectionEcuSelected:
      selection = 0x80;
      break;
    case kMapSelectionCombine:
      selection = 0;
      break;
  }
  const int code =
      setup.ComboSiteFuel >= 0 && setup.ComboSiteFuel <= 0x1F ? setup.ComboSiteFuel : 0x1F;
  return static_cast<std::uint8_t>(selection | code);
}

std::uint8_t SensorTypeByte(int type, bool flag) {
  const int low = type >= 0 && type <= kSensorTypeMask ? type : kSensorTypeMask;
  return static_cast<std::uint8_t>(low | (flag ? 0x80 : 0));
}

void EncodeEngineSetup(const EngineSetup& setup, CalibrationImage& image) {
  image.SetByte(FieldPos("Cylinders"), CodeByte(setup.Cylinders));
  image.SetByte(FieldPos("RpmSitesSetup"), CodeByte(setup.ComboSiteRPM));
  image.SetByte(FieldPos("FuelSitesSelection"), FuelSitesByte(setup));
  image.SetByte(FieldPos("TriggerOffset"), setup.TriggerOffset);
  image.SetByte(FieldPos("IgnSites"), CodeByte(setup.ComboSiteIgnition));
  image.SetByte(FieldPos("IgnitionLock"), setup.IgnitionLock ? 1 : 0);
  image.Write16(FieldPos("RevLimit2"), setup.RevLimit2);
  image.SetByte(FieldPos("TriggerPattern"), CodeByte(setup.ComboTrigger));
  image.SetByte(FieldPos("TriggerSensor"),
                SensorTypeByte(setup.TriggerHallMagnetic, setup.TriggerSensorFlag));
  image.SetByte(FieldPos("TriggerVoltage"), setup.TriggerVoltage);
  image.SetByte(FieldPos("HomePattern"), CodeByte(setup.ComboHome));
  image.SetByte(FieldPos("HomeSensor"),
                SensorTypeByte(setup.HomeHallMagnetic, setup.HomeSensorFlag));
  image.SetByte(FieldPos("HomeVoltage"), setup.HomeVoltage);
  image.SetByte(FieldPos("SparkMode"), CodeByte(setup.ComboSpark));
  image.SetByte(
      FieldPos("InjectionMode"),
      static_cast<std::uint8_t>(TwoBits(setup.FuelMode) | TwoBits(setup.OptionImpedance) << 6));
  image.SetByte(FieldPos("TriggerToothOffset"), setup.TriggerToothOffset);
  image.SetByte(FieldPos("LimiterTacho"), LimiterTachoByte(setup));
  image.SetByte(FieldPos("FuelSetting948"), setup.FuelSetting948);
  image.Write16(FieldPos("RevLimit1"), setup.RevLimit1);
  image.SetByte(FieldPos("DwellTime"), setup.DwellTime);
  image.SetByte(FieldPos("Setting997"), setup.Setting997);
  image.SetByte(FieldPos("StartupPrime"), setup.StartupPrime);
}

void EncodeSensors(const SensorSetup& sensors, CalibrationImage& image) {
  PutBytes(image, FieldPos("TpsCal1"), sensors.TpsCal1);
  image.SetByte(FieldPos("TpsSetup"), sensors.TpsSetup);
  PutBytes(image, FieldPos("TpsCal2"), sensors.TpsCal2);
  // The sensor type in bits 0 to 2; no selection counts as the first type, as the scaling
  // table takes it.
  const int type = sensors.ComboMAP >= 0 ? std::min(sensors.ComboMAP, int{kMapSensorTypeBits}) : 0;
  const int map_setup = (sensors.AltitudeComp ? 0x20 : 0) | (sensors.LoadSensing == 1 ? 0x40 : 0) |
                        (sensors.TPumpBased ? 0x80 : 0) | type;
  image.SetByte(FieldPos("MapSensorSetup"), static_cast<std::uint8_t>(map_setup));
  image.SetByte(FieldPos("MapSensorScaling"), sensors.MapSensorScaling);
  PutBytes(image, FieldPos("AirSensorCal"), sensors.Air);
  PutBytes(image, FieldPos("WaterSensorCal"), sensors.Water);
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
    if (idle.CheckIdle[static_cast<std::size_t>(bit)]) flags1 |= 1 << bit;
    if (idle.CheckIdle[static_cast<std::size_t>(8 + bit)]) flags2 |= 1 << bit;
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
  image.SetByte(FieldPos("FirmwareVersion"), state.version.FirmwareVersion);
  image.Write24(FieldPos("EcuNumber"), state.version.EcuNumber);
  return image;
}

BuiltCalibration BuildCalibrationFromEditors(const EditorState& state) {
  const CalibrationImage setup = EncodeSetup(state);
  BuiltCalibration built{
      BuildImage(state.maps.FuelMap1, state.maps.FuelMap2, state.maps.IgnMap, setup), {}};
  for (const std::string& message : ValidateSetup(built.image, {state.sensors.ComboMAP})) {
    built.errors.push_back(message + std::string(kMapErrorSuffix));
  }
  return built;
}

}  // namespace vela
