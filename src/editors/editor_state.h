// What the editors hold: every setup list, option group, tick box and table of the tuning pages,
// and the three maps. The Qt pages bind their widgets to these fields; applying a calibration
// fills them (apply_calibration.h) and building a calibration reads them back
// (build_calibration.h).
//
// Lists and option groups hold the index of the chosen entry. An index that the image carried
// but the control does not offer stays in the field as it came (the page then shows no entry)
// until the tuner picks one; building a calibration writes it back unchanged, so the setup
// validation still reports it. Bits of an image byte that no control shows are not kept.
// Tables hold the bytes the ECU stores; the pages convert them for display (conversions.h).
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "calibration/map_values.h"
#include "calibration/setup_fields.h"

namespace vela {

// `MapSelection` choices: " Only Map 1", " Only Map 2", "   ECU Selected", "Combine Maps".
inline constexpr int kMapSelectionOnlyMap1 = 0;
inline constexpr int kMapSelectionOnlyMap2 = 1;
inline constexpr int kMapSelectionEcuSelected = 2;
inline constexpr int kMapSelectionCombine = 3;
inline constexpr std::array<std::string_view, 4> kMapSelectionTexts = {
    " Only Map 1", " Only Map 2", "   ECU Selected", "Combine Maps"};

// Load sites of the entries of `ComboSiteFuel` (9, 13, 17) and `ComboSiteIgnition` (5, 6).
inline constexpr std::array<int, 3> kFuelLoadSiteChoices = {9, 13, 17};
inline constexpr std::array<int, 2> kIgnLoadSiteChoices = {5, 6};

// `FuelMode` choices: "Batch", "Semi-Sequential", "Sequential".
inline constexpr int kFuelModeSequential = 2;

// `LoadSensing` choices: "TPS Based", "MAP Based".
inline constexpr int kLoadSensingTps = 0;
inline constexpr int kLoadSensingMap = 1;

// No entry chosen in a list.
inline constexpr int kNoEntry = -1;

// The three maps as their grids show them: fuel in milliseconds, ignition in degrees.
struct MapEditors {
  int FuelLoadSites = 9;  // 9, 13 or 17
  int IgnLoadSites = 5;   // 5 or 6
  MapValues FuelMap1{9};
  MapValues FuelMap2{9};
  MapValues IgnMap{5};
};

// The engine set-up page and the site choices of the map pages. A field that a control sets
// says the control's objectName (the name the pages, the tuner's files and the tests know).
struct EngineSetup {
  int cylinders_code = 0;  // `Cylinders`, byte 947: entry of "1", "2", "3", "4", "5", "6", "8", ...
  int rpm_sites_code = 0;  // `ComboSiteRPM`, byte 946: RPM site spacing, 0 to 3
  int fuel_map_selection = kMapSelectionCombine;  // `MapSelectionSetup`, byte 995, bits 5 to 7
  // `ComboSiteFuel`, byte 995, bits 0 to 4: 9, 13 or 17 load sites (the code as held).
  int fuel_load_sites_code = 0;
  int ign_load_sites_code = 0;      // `ComboSiteIgnition`, byte 996: 5 or 6 load sites (as held)
  std::uint8_t trigger_offset = 0;  // `TriggerOffset`, byte 959, half degrees (shown raw / 2)

  std::uint16_t rev_limit2_period = 0;  // `RevLimit2`, bytes 900 to 901, raw timer value
  int trigger_pattern = 0;              // `ComboTrigger`, byte 902: 0 to 5
  int trigger_sensor_type = 0;          // `TriggerHallMagnetic`, byte 903, bits 0 to 6: "Hall", ...
  bool trigger_sensor_flag = false;     // `TriggerSensorFlag`, byte 903, bit 7
  std::uint8_t trigger_voltage = 0;     // `TriggerVoltage`, byte 852
  int home_pattern = 0;                 // `ComboHome`, byte 904: home position pattern, 0 to 4
  int home_sensor_type = 0;             // `HomeHallMagnetic`, byte 905, bits 0 to 6
  bool home_sensor_flag = false;        // `HomeSensorFlag`, byte 905, bit 7
  std::uint8_t home_voltage = 0;        // `HomeVoltage`, byte 853
  int spark_mode = 0;                   // `ComboSpark`, byte 906: ignition coil mode, 0 to 3
  int fuel_mode = 0;  // `FuelMode`, byte 907, bits 0 and 1: 0 Batch, 1 Semi-Sequential, 2 (2)
  int injector_impedance = 0;  // `OptionImpedance`, byte 907, bits 6 and 7: Low, Medium (64), ...
  std::uint8_t trigger_tooth_offset = 0;  // `TriggerToothOffset`, byte 908

  // Byte 942, bit by bit.
  int trigger_input_edge = 0;  // `TriggerEdgeInput`, bit 0: "Falling (Default)", 1 "Rising"
  int home_input_edge = 0;     // `TriggerEdgeHome`, bit 1: 0 "Rising (Default)", 1 "Falling"
  // `TriggerEdgeSpark`: bit 2 set for choice 1 only; the pull-up choices 2, 3 stay here.
  int spark_output_edge = 0;
  int aux_output = 0;    // `Combo1`, bit 5 set for entry 1; entries 2 and 3 stay here
  int limiter_mode = 0;  // `LimiterMode`, bits 6, 7: "Cut Fuel" (64), "Cut Spark" (128), ...

  std::uint8_t fuel_setting_948 = 0;    // byte 948
  std::uint16_t rev_limit1_period = 0;  // `RevLimit1`, bytes 949 to 950, raw timer value
  // Byte 958: bit 6 the dwell mode (`ComboDwell`), bits 0 to 5 its value (`DwellValue`).
  std::uint8_t dwell = 0;
  std::uint8_t warning_light = 0;    // `ComboWarningLight`, byte 997: the entry, 0 to 3
  std::uint8_t fuel_pump_prime = 0;  // `ComboPrime`, byte 998: the entry, 0 to 14
  bool ignition_lock = false;        // byte 871: ignition timing lock

  // Set by SetupIgnitionDivide: the ignition divide A (1 to 4) and the injection factor B of the
  // fuel duty limit 120000 x B / A.
  int ignition_divide = 1;
  int injection_factor = 1;
};

// The sensor set-up page: MAP sensor, throttle position sensor, temperature sensors.
struct SensorSetup {
  std::array<std::uint8_t, 2> tps_cal1{};  // bytes 868 to 869 (`ThrottleCal`)
  std::uint8_t tps_setup = 0;              // byte 952, 0 or 1
  std::array<std::uint8_t, 2> tps_cal2{};  // bytes 953 to 954 (`ThrottleCal`)
  // Byte 955: bit 5 altitude compensation (`AltitudeComp`), bit 6 load sensing (`LoadSensing`:
  // "TPS Based", "MAP Based"), bit 7 throttle pump on a MAP basis (`TPumpBased`).
  bool altitude_comp = false;
  int load_sensing = 0;  // kLoadSensingTps or kLoadSensingMap
  bool throttle_pump_on_map = false;
  // Sensor type: the position in the `ComboMAP` list (byte 955, bits 0 to 2), kNoEntry for none.
  // It decides which scaling codes byte 956 accepts (editors/setup/map_sensor.h).
  int map_sensor_type = kNoEntry;
  int map_scale_entry = kNoEntry;                  // the `ComboMAPScale` entry of byte 956
  std::uint8_t map_scale_code = 64;                // byte 956 as the ECU holds it
  std::array<std::uint8_t, 8> air_sensor_cal{};    // bytes 971 to 978: divider ratio x 256
  std::array<std::uint8_t, 8> water_sensor_cal{};  // bytes 987 to 994
};

inline constexpr int kFirstUnshownBattByte = FieldPos("BattComp") + 7;

// The compensation page, in stored form.
struct Compensation {
  std::array<std::uint8_t, 8> AirMap{};    // bytes 963 to 970: shown (raw - 128) / 10
  std::array<std::uint8_t, 8> WaterMap{};  // bytes 979 to 986: shown raw x 0.390625 %
  // Bytes 999 to 1010: shown raw x 0.01 ms. The table's rows (10 to 16 V) are 999 to 1005; the
  // bytes from kFirstUnshownBattByte on have no row and are shown as stored.
  std::array<std::uint8_t, 12> BattMap{};
  // " Increase", " Decay", " Dead Band" (bytes 960 to 962) and " De-activate Over" (byte 951).
  std::array<std::uint8_t, 4> ThrottlePump{};
};

// General purpose outputs and inputs, whose editors keep the raw bytes.
struct InputsOutputs {
  std::array<std::uint8_t, 16> Gpo1Setup{};  // bytes 884 to 899
  std::array<std::uint8_t, 16> Gpo2Setup{};  // bytes 910 to 925
  std::array<std::uint8_t, 16> Gpo3Setup{};  // bytes 926 to 941
  std::array<std::uint8_t, 6> Gpi1Setup{};   // bytes 872 to 877
  std::array<std::uint8_t, 2> Gpi1Aux{};     // bytes 828 to 829
  std::uint8_t Gpi1Function = 0;             // byte 1022
  std::array<std::uint8_t, 6> Gpi2Setup{};   // bytes 878 to 883
  std::array<std::uint8_t, 2> GpiAux{};      // bytes 749 to 750
  std::uint8_t Gpi2Function = 0;             // byte 1023
};

// Idle control.
struct IdleControl {
  std::uint32_t IdleTargetRpm = 0;  // bytes 1011 to 1013, raw timer value
  // `IdleMod0`: minimum and maximum (bytes 1014, 1015), then bytes 1019 to 1021.
  std::array<std::uint8_t, 5> IdleMod0{};
  std::array<std::uint8_t, 3> IdleCold{};  // bytes 1016 to 1018
  std::array<std::uint8_t, 4> IdleMod2{};  // bytes 860 to 863
  std::uint8_t IdlePwmFrequency = 0;       // byte 867, 0 to 3
  // The idle options (`CheckIdle` boxes): 0 to 7 are bits 0 to 7 of byte 856, 8 to 15 those of
  // byte 857.
  std::array<bool, 16> idle_flags{};
  std::uint8_t IdleSetting858 = 0;  // byte 858
};

// The firmware version of the ECU that produced the calibration, and the version notice.
struct VersionInfo {
  std::uint8_t FirmwareVersion = 0;  // byte 909
  std::string VersionLabel;          // the version label's text
  bool firmware_latest = false;      // `Check7`: ticked for firmware 3 and later
  std::uint32_t EcuNumber = 0;       // bytes 943 to 945
  // The "PC Software Update" box opens while this is set, or when the version text differs
  // from the one it last showed; showing it clears the flag. The link may set it again.
  bool ShowVersionMessage = true;
  std::string LastShownVersionText;
};

struct EditorState {
  MapEditors maps;
  EngineSetup setup;
  SensorSetup sensors;
  Compensation compensation;
  InputsOutputs io;
  IdleControl idle;
  VersionInfo version;
  // The setup error list of the main form: one line per failed check.
  std::vector<std::string> SetupErrors;
};

// Load sites of a `ComboSiteFuel` / `ComboSiteIgnition` code as the ECU lays its maps out: a
// fuel code of 2 or more gives 17, an ignition code other than 0 gives 6; no entry gives 9 and 5.
int FuelLoadSitesOfChoice(int sites_code);
int IgnLoadSitesOfChoice(int sites_code);

// Takes the ignition divide A from the engine set-up, how many times each injector opens in an
// engine cycle: 2 for "Batch" and "Semi-Sequential" (once a crank turn), 1 for "Sequential";
// and the injection factor B: equal to the divide with "Sequential", otherwise 1.
void SetupIgnitionDivide(EngineSetup& setup);

// The fuel duty limit base 120000 x B / A (milliseconds x RPM): a fuel cell at RPM n may ask
// for at most base / n milliseconds.
double DutyLimitBase(const EngineSetup& setup);

}  // namespace vela
