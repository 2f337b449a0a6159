#include "editors/apply_calibration.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "calibration/conversions.h"
#include "editors/setup/setup_checks.h"
#include "editors/setup/setup_choice_table.h"

namespace vela {

namespace {

template <std::size_t N>
std::array<std::uint8_t, N> BytesAt(const CalibrationImage& image, int first) {
  std::array<std::uint8_t, N> bytes{};
  for (std::size_t i = 0; i < N; ++i) bytes[i] = image.Byte(first + static_cast<int>(i));
  return bytes;
}

bool Bit(std::uint8_t value, int bit) { return ((value >> bit) & 1) != 0; }

void RunStepChecks(int step, const CalibrationImage& image, EditorState& state) {
  RunChecks(ChecksOfStep(step), image, CheckContext{state.sensors.map_sensor_type},
            state.SetupErrors);
}

// The image's reading walks (cells in block order, block row r shown in grid row 12 - r), with
// the site count of the sorting: a fuel code of 2 or more reads 17 columns, where the image itself
// lays an invalid code out as 9.
MapValues ReadFuelGrid(const CalibrationImage& image, int start, int sites) {
  MapValues grid(sites);
  for (int p = start; p <= start + 22 * sites - 1; p += 2) {
    const int block_row = (p - start) / (2 * sites) + 1;
    const int column = (p - start) / 2 - (block_row - 1) * sites + 1;
    grid.Set(GridRowOfBlockRow(block_row), column,
             FuelMsFromRaw(static_cast<int>(image.Read16(p))));
  }
  return grid;
}

MapValues ReadIgnGrid(const CalibrationImage& image, int sites) {
  MapValues grid(sites);
  for (int p = kIgnMapStart; p <= kIgnMapStart + 11 * sites - 1; ++p) {
    const int block_row = (p - kIgnMapStart) / sites + 1;
    const int column = (p - kIgnMapStart) - (block_row - 1) * sites + 1;
    grid.Set(GridRowOfBlockRow(block_row), column, IgnDegreesFromRaw(image.Byte(p)));
  }
  return grid;
}

void ApplyEcuNumber(const CalibrationImage& image, EditorState& state) {
  state.version.EcuNumber = image.EcuNumber();
  state.io.GpiAux[1] = image.Byte(FieldPos("GpiAux") + 1);
}

void ApplyCylindersAndRpmSites(const CalibrationImage& image, EditorState& state) {
  DecodeChoices("Cylinders", image, state);
  DecodeChoices("RpmSitesSetup", image, state);
  RunStepChecks(3, image, state);
}

// The fuel map selection and the fuel load site code. The code is kept as held: the list shows
// no entry for an invalid one, the maps are read with 17 columns for it.
void ApplyFuelSites(const CalibrationImage& image, EditorState& state) {
  DecodeChoices("FuelSitesSelection", image, state);
  state.maps.FuelLoadSites = FuelLoadSitesOfChoice(state.setup.fuel_load_sites_code);
  RunStepChecks(4, image, state);
}

void ApplyMaps(const CalibrationImage& image, EditorState& state) {
  state.maps.FuelMap1 = ReadFuelGrid(image, kFuelMap1Start, state.maps.FuelLoadSites);
  state.maps.FuelMap2 = ReadFuelGrid(image, kFuelMap2Start, state.maps.FuelLoadSites);
  state.setup.trigger_offset = image.Byte(FieldPos("TriggerOffset"));
  DecodeChoices("IgnSites", image, state);
  state.maps.IgnLoadSites = IgnLoadSitesOfChoice(state.setup.ign_load_sites_code);
  state.maps.IgnMap = ReadIgnGrid(image, state.maps.IgnLoadSites);
  state.setup.ignition_lock = image.IgnitionLock() != 0;
  RunStepChecks(5, image, state);
}

std::vector<std::string> Lines(std::string first, std::string_view second) {
  return {std::move(first), std::string(second)};
}

void ApplyVersion(const CalibrationImage& image, EditorState& state,
                  std::vector<CalibrationNote>& notes) {
  VersionInfo& version = state.version;
  version.FirmwareVersion = image.FirmwareVersion();
  version.VersionLabel = std::to_string(version.FirmwareVersion);
  const int number = version.FirmwareVersion;
  if (number != 0 && number > kLatestKnownFirmware) {
    const bool text_changed = version.VersionLabel != version.LastShownVersionText;
    if (version.ShowVersionMessage || text_changed) {
      std::string line = std::string(kSoftwareUpdateLine1) + (text_changed ? "  " : "");
      notes.push_back({MessageIcon::kInformation, std::string(kSoftwareUpdateTitle),
                       Lines(std::move(line), kSoftwareUpdateLine2)});
      version.ShowVersionMessage = false;
      version.LastShownVersionText = version.VersionLabel;
    }
    state.SetupErrors.emplace_back(kSoftwareOutOfDate);
  }
  if (FirmwareOlderThanSoftware(version.FirmwareVersion)) {
    notes.push_back({MessageIcon::kInformation, std::string(kFirmwareUpdateTitle),
                     Lines(std::string(kFirmwareUpdateLine1), kFirmwareUpdateLine2)});
    state.SetupErrors.emplace_back(kFirmwareNotLatest);
  }
  version.firmware_latest = number >= kLatestKnownFirmware;
}

void ApplyEngineSetup(const CalibrationImage& image, EditorState& state) {
  EngineSetup& setup = state.setup;
  setup.rev_limit2_period = static_cast<std::uint16_t>(image.RevLimit2());
  DecodeChoices("TriggerPattern", image, state);
  DecodeChoices("TriggerSensor", image, state);
  setup.trigger_voltage = image.TriggerVoltage();
  DecodeChoices("HomePattern", image, state);
  DecodeChoices("HomeSensor", image, state);
  setup.home_voltage = image.HomeVoltage();
  DecodeChoices("SparkMode", image, state);
  // The fuel mode sets the ignition divide with it.
  DecodeChoices("InjectionMode", image, state);
  setup.trigger_tooth_offset = image.Byte(FieldPos("TriggerToothOffset"));
  RunStepChecks(7, image, state);
}

void ApplyOutputsAndEdges(const CalibrationImage& image, EditorState& state) {
  state.io.Gpo1Setup = BytesAt<16>(image, kGpoStarts[0]);
  state.io.Gpo2Setup = BytesAt<16>(image, kGpoStarts[1]);
  state.io.Gpo3Setup = BytesAt<16>(image, kGpoStarts[2]);
  DecodeChoices("LimiterTacho", image, state);
  RunStepChecks(8, image, state);
}

void ApplyFuelTpsAndMapSensor(const CalibrationImage& image, EditorState& state) {
  state.setup.fuel_setting_948 = image.Byte(FieldPos("FuelSetting948"));
  state.setup.rev_limit1_period = static_cast<std::uint16_t>(image.RevLimit1());
  SensorSetup& sensors = state.sensors;
  sensors.tps_cal1 = BytesAt<2>(image, FieldPos("TpsCal1"));
  sensors.tps_setup = image.Byte(FieldPos("TpsSetup"));
  sensors.tps_cal2 = BytesAt<2>(image, FieldPos("TpsCal2"));
  // The sensor type first: the scaling's entry is that type's.
  DecodeChoices("MapSensorSetup", image, state);
  DecodeChoices("MapSensorScaling", image, state);
  RunStepChecks(9, image, state);
}

void ApplyInputsAndDwell(const CalibrationImage& image, EditorState& state) {
  InputsOutputs& io = state.io;
  io.Gpi1Setup = BytesAt<6>(image, kGpiStarts[0]);
  io.Gpi1Aux = BytesAt<2>(image, FieldPos("Gpi1Aux"));
  io.Gpi1Function = image.Byte(FieldPos("Gpi1Function"));
  io.Gpi2Setup = BytesAt<6>(image, kGpiStarts[1]);
  io.GpiAux = BytesAt<2>(image, FieldPos("GpiAux"));
  io.Gpi2Function = image.Byte(FieldPos("Gpi2Function"));
  state.setup.dwell = image.Byte(FieldPos("DwellTime"));
  DecodeChoices("DwellTime", image, state);
  RunStepChecks(10, image, state);
}

void ApplyTablesAndIdle(const CalibrationImage& image, EditorState& state) {
  Compensation& tables = state.compensation;
  const auto pump = BytesAt<3>(image, FieldPos("ThrottlePumpValues"));
  std::copy(pump.begin(), pump.end(), tables.ThrottlePump.begin());
  tables.ThrottlePump[3] = image.Byte(FieldPos("Setting951"));
  tables.AirMap = BytesAt<8>(image, FieldPos("AirComp"));
  state.sensors.air_sensor_cal = BytesAt<8>(image, FieldPos("AirSensorCal"));
  tables.WaterMap = BytesAt<8>(image, FieldPos("WaterComp"));
  state.sensors.water_sensor_cal = BytesAt<8>(image, FieldPos("WaterSensorCal"));
  DecodeChoices("Setting997", image, state);
  DecodeChoices("StartupPrime", image, state);
  tables.BattMap = BytesAt<12>(image, FieldPos("BattComp"));
  IdleControl& idle = state.idle;
  idle.IdleTargetRpm = image.IdleTargetRpm();
  const auto min_max = BytesAt<2>(image, FieldPos("IdleMinMax"));
  const auto mod0 = BytesAt<3>(image, FieldPos("IdleMod0Values"));
  idle.IdleMod0 = {min_max[0], min_max[1], mod0[0], mod0[1], mod0[2]};
  idle.IdleCold = BytesAt<3>(image, FieldPos("IdleCold"));
  idle.IdlePwmFrequency = image.IdlePwmFrequency();
  idle.IdleMod2 = BytesAt<4>(image, FieldPos("IdleMod2Values"));
  const std::uint8_t flags2 = image.Byte(FieldPos("IdleFlags2"));
  const std::uint8_t flags1 = image.Byte(FieldPos("IdleFlags1"));
  for (int bit = 0; bit < 8; ++bit) {
    idle.idle_flags[static_cast<std::size_t>(8 + bit)] = Bit(flags2, bit);
    idle.idle_flags[static_cast<std::size_t>(bit)] = Bit(flags1, bit);
  }
  idle.IdleSetting858 = image.Byte(FieldPos("IdleSetting858"));
  RunStepChecks(11, image, state);
}

void FinishSorting(CalibrationSource source, ApplyEnvironment& env) {
  if (source == CalibrationSource::kEditorsImage) return;
  env.status.Show(std::string(kUploadSortingComplete));
  if (source == CalibrationSource::kUpload) {
    // No acknowledgement follows: a rate frame lost on the line shows as the link's stall.
    static_cast<void>(
        env.sender.Send({kSingleValueWrite, kLiveRateAddress, env.link.CommsSpeedValue}));
  } else if (env.end_upload) {
    env.end_upload();
  }
}

void ApplySteps(const CalibrationImage& image, CalibrationSource source, EditorState& state,
                ApplyEnvironment& env, std::vector<CalibrationNote>& notes) {
  const ChangeEventsSuppressed suppressed(env.suppress_change_events);
  if (source != CalibrationSource::kEditorsImage)
    env.status.Show(std::string(kUploadSortingStarted));
  ApplyEcuNumber(image, state);
  ApplyCylindersAndRpmSites(image, state);
  ApplyFuelSites(image, state);
  ApplyMaps(image, state);
  ApplyVersion(image, state, notes);
  ApplyEngineSetup(image, state);
  ApplyOutputsAndEdges(image, state);
  ApplyFuelTpsAndMapSensor(image, state);
  ApplyInputsAndDwell(image, state);
  ApplyTablesAndIdle(image, state);
  FinishSorting(source, env);
}

}  // namespace

void ApplyUploadedCalibration(const CalibrationImage& image, CalibrationSource source,
                              EditorState& state, ApplyEnvironment& env) {
  std::vector<CalibrationNote> notes;
  ApplySteps(image, source, state, env, notes);
  if (source == CalibrationSource::kEditorsImage) return;
  if (env.notes) {
    env.notes->insert(env.notes->end(), notes.begin(), notes.end());
    return;
  }
  for (const CalibrationNote& note : notes) env.messages.Show(note.icon, note.title, note.lines);
}

}  // namespace vela
