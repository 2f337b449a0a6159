#include "sim/core/base_calibration.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>
#include <vector>

#include "calibration/conversions.h"

namespace vela::sim {

namespace {

constexpr int kRpmSitesCode = 0;   // 750 RPM spacing
constexpr int kFuelSitesCode = 2;  // 17 load sites
constexpr int kIgnSitesCode = 1;   // 6 load sites

constexpr std::uint8_t kMapLoadSensing = 0x40;  // bit 6 of byte 955
constexpr std::uint8_t kFullScale = 64;         // byte 956

double RowRpm(int block_row) { return RpmSites(kRpmSitesCode)[block_row - 1]; }

// Injector time rises with manifold pressure and, more gently, with engine speed.
double BaseFuelMs(int block_row, int column, int load_sites) {
  const double kpa = LoadSiteValues(LoadAxisOf(true, 0, kFullScale), load_sites)[column - 1];
  const double efficiency = 0.72 + 0.26 * (1.0 - std::exp(-RowRpm(block_row) / 2500.0));
  return 1.0 + 7.0 * (kpa / 100.0) * efficiency;
}

// Advance rises with engine speed and falls with load, within 10 to 35 degrees.
double BaseAdvanceDegrees(int block_row, int column, int load_sites) {
  const double load = static_cast<double>(column - 1) / (load_sites - 1);
  const double advance =
      9.0 + 20.0 * (1.0 - std::exp(-RowRpm(block_row) / 2500.0)) + 7.0 * (1.0 - load);
  return std::clamp(advance, 10.0, 35.0);
}

void WriteMaps(CalibrationImage& image) {
  const int fuel_sites = image.FuelLoadSites();
  const int ign_sites = image.IgnLoadSites();
  for (int row = 1; row <= kMapRows; ++row) {
    for (int column = 1; column <= fuel_sites; ++column) {
      const double ms = BaseFuelMs(row, column, fuel_sites);
      image.SetFuelMs(1, row, column, std::round(ms * 1000.0) / 1000.0);
      image.SetFuelMs(2, row, column, std::round(ms * 1080.0) / 1000.0);  // 8 % richer
    }
    for (int column = 1; column <= ign_sites; ++column) {
      image.SetIgnDegrees(row, column, BaseAdvanceDegrees(row, column, ign_sites));
    }
  }
}

void SetBytes(CalibrationImage& image, int position, std::initializer_list<std::uint8_t> bytes) {
  for (std::uint8_t b : bytes) image.SetByte(position++, b);
}

template <std::size_t N>
void SetSensorPoints(CalibrationImage& image, int position, const int (&ohms)[N]) {
  for (int r : ohms) {
    image.SetByte(position++, RawFromSensorFraction(static_cast<double>(r) / (r + 560.0)));
  }
}

void WriteEngineSetup(CalibrationImage& image) {
  auto set = [&](std::string_view name, std::uint8_t value) {
    image.SetByte(FindSetupField(name)->position, value);
  };
  set("TriggerVoltage", 40);
  set("HomeVoltage", 40);
  set("TriggerPattern", 3);       // missing tooth 36-1
  set("TriggerSensor", 1);        // magnetic
  set("HomePattern", 0);          // home position disabled
  set("HomeSensor", 0);           // Hall
  set("SparkMode", 1);            // wasted spark
  set("InjectionMode", 1 | 128);  // semi-sequential, high impedance injectors
  set("TriggerToothOffset", 8);
  set("FirmwareVersion", 3);
  set("LimiterTacho", 64);  // rev limiter cuts fuel; default edges
  set("RpmSitesSetup", kRpmSitesCode);
  set("Cylinders", 3);        // the fourth entry of the list: "4"
  set("TriggerOffset", 100);  // 50 degrees
  set("DwellTime", 40);
  set("FuelSitesSelection", 0x20 | kFuelSitesCode);  // map selection option 0
  set("IgnSites", kIgnSitesCode);
  image.Write24(FindSetupField("EcuNumber")->position, 100234);
  image.Write16(FindSetupField("RevLimit1")->position, PeriodUsOfRpm(6800));
  image.Write16(FindSetupField("RevLimit2")->position, PeriodUsOfRpm(7000));
}

void WriteSensorsAndTables(CalibrationImage& image) {
  SetBytes(image, 868, {25, 230});     // TpsCal1: closed and open throttle counts
  SetBytes(image, 952, {0, 25, 230});  // TpsSetup, TpsCal2
  SetBytes(image, 955, {64, 64});      // MAP load sensing; full-scale scaling code
  SetBytes(image, 951, {255});  // throttle pump off above 24.9 % throttle (the most a byte holds)
  SetBytes(image, 960, {128, 51, 5});  // throttle pump: increase 50 %, decay 20 %, dead band 2 %
  // Air: +8 % at -20 C down to -10 % at 120 C, stored as tenths + 128.
  SetBytes(image, 963, {208, 168, 128, 108, 88, 68, 48, 28});
  // Water: warm-up enrichment 80, 50, 25, 12, 5 % and none once warm (percent x 2.56).
  SetBytes(image, 979, {205, 128, 64, 31, 13, 0, 0, 0});
  const int air_ohms[] = {35280, 13776, 3213, 1107, 502, 228, 133, 77};
  const int water_ohms[] = {13776, 6267, 3213, 1147, 606, 273, 139, 53};
  SetSensorPoints(image, 971, air_ohms);
  SetSensorPoints(image, 987, water_ohms);
  // Battery: injector opening time added, 1.50 ms at 10 V down to 0.38 ms at 16 V.
  SetBytes(image, 999, {150, 130, 110, 95, 82, 72, 64, 57, 51, 46, 42, 38});
  SetBytes(image, 998, {5});  // injector start-up prime
}

void WriteIdle(CalibrationImage& image) {
  image.Write24(FindSetupField("IdleTargetRpm")->position, PeriodUsOfRpm(900));
  SetBytes(image, 1014, {40, 150});       // idle valve minimum and maximum
  SetBytes(image, 1016, {30, 60, 40});    // cold adjuster
  SetBytes(image, 1019, {10, 20, 30});    // further idle values
  SetBytes(image, 860, {5, 10, 15, 20});  // idle values of the third group
  SetBytes(image, 867, {1});              // idle valve PWM frequency code
}

}  // namespace

int MapSensorTypeOf(const CalibrationImage& image) {
  return image.Byte(FieldPos("MapSensorSetup")) & kMapSensorTypeBits;
}

LoadAxis LoadAxisOfImage(const CalibrationImage& image) {
  const std::uint8_t setup = image.Byte(FieldPos("MapSensorSetup"));
  return LoadAxisOf((setup & kMapLoadSensing) != 0, MapSensorTypeOf(image),
                    image.Byte(FieldPos("MapSensorScaling")));
}

CalibrationImage BuildBaseCalibration() {
  CalibrationImage image;
  WriteEngineSetup(image);  // first: bytes 995 and 996 set the map layouts
  WriteMaps(image);
  WriteSensorsAndTables(image);
  WriteIdle(image);
  return image;
}

std::optional<CalibrationImage> LoadCalibrationFile(const std::string& path, std::string* error) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    if (error) *error = "cannot open " + path + ": " + std::strerror(errno);
    return std::nullopt;
  }
  std::vector<std::uint8_t> bytes;
  bytes.reserve(kImageLength + 1);
  char c = 0;
  while (bytes.size() <= kImageLength && in.get(c)) bytes.push_back(static_cast<std::uint8_t>(c));
  CalibrationImage image;
  if (!image.Assign(bytes)) {
    if (error) *error = path + " is not a calibration image (it must be exactly 1023 bytes)";
    return std::nullopt;
  }
  return image;
}

}  // namespace vela::sim
