// The texts of the live values: what every page and read-out shows for the link's numbers.
#include "program/live_text.h"

#include <gtest/gtest.h>

#include "calibration/conversions.h"
#include "link/live/live_frame.h"
#include "program/afr_display.h"

namespace vela {
namespace {

std::string Text(const LiveData& live, LiveQuantity quantity, char separator = '.') {
  return LiveText(live, quantity, {separator, 0});
}

TEST(LiveText, NumbersTakeTheirDecimalsAndTheComputersSeparator) {
  LiveData live;
  live.engine_rpm = 2999.5;
  live.map_kpa = 101.3;
  live.boost_bar = -0.3;
  live.ignition_advance_deg = -5.5;
  live.battery_volts = 13.85;
  live.injection_ms = 4.32;
  EXPECT_EQ(Text(live, LiveQuantity::kEngineRpm, ','), "3000");  // whole RPM: no separator
  EXPECT_EQ(Text(live, LiveQuantity::kMap, ','), "101,3");
  EXPECT_EQ(Text(live, LiveQuantity::kBoost, ','), "-0,30");
  EXPECT_EQ(Text(live, LiveQuantity::kIgnition), "-5.5");
  EXPECT_EQ(Text(live, LiveQuantity::kBattery), "13.85");
  EXPECT_EQ(Text(live, LiveQuantity::kInjection), "4.32");
  EXPECT_EQ(Text(LiveData{}, LiveQuantity::kInjectorDuty), "0.00");
}

// A half at the last decimal goes to the even neighbour, read from the value's decimal text
// (12.35 is not rounded down for lying a hair below 12.35 in binary); a carry runs through.
TEST(LiveText, AHalfAtTheLastDecimalGoesToTheEvenNeighbour) {
  LiveData live;
  live.tps_percent = 12.25;
  EXPECT_EQ(Text(live, LiveQuantity::kTps), "12.2");
  live.tps_percent = 12.35;
  EXPECT_EQ(Text(live, LiveQuantity::kTps), "12.4");
  live.battery_volts = 13.995;
  EXPECT_EQ(Text(live, LiveQuantity::kBattery, ','), "14,00");
  live.engine_rpm = 2500.5;
  EXPECT_EQ(Text(live, LiveQuantity::kEngineRpm), "2500");
}

TEST(LiveText, ValuesBeyondWhatTheReadOutsShowReadAsTheirMarkers) {
  LiveData live;
  live.map_kpa = 400.0;
  live.boost_bar = 99.99;
  live.injection_ms = kInjectionDisplayLimitMs;
  live.injector_duty_percent = kDutyDisplayLimit;
  EXPECT_EQ(Text(live, LiveQuantity::kMap), "400.0");
  EXPECT_EQ(Text(live, LiveQuantity::kBoost), "99.99");  // the limit itself still reads
  EXPECT_EQ(Text(live, LiveQuantity::kInjection), "50.00");
  EXPECT_EQ(Text(live, LiveQuantity::kInjectorDuty), "99.99");
  live.boost_bar = 99.991;
  live.injection_ms = 50.01;
  live.injector_duty_percent = 99.991;
  EXPECT_EQ(Text(live, LiveQuantity::kBoost), "99.99 ");
  EXPECT_EQ(Text(live, LiveQuantity::kInjection), "Over");
  EXPECT_EQ(Text(live, LiveQuantity::kInjectorDuty), "99.99 ");
  // Over the sensor's range: the pressure reads "Over" and the boost its marker, whatever the
  // numbers say.
  live.map_over_range = true;
  live.map_kpa = 400.1;
  live.boost_bar = 2.988;
  EXPECT_EQ(Text(live, LiveQuantity::kMap, ','), "Over");
  EXPECT_EQ(Text(live, LiveQuantity::kBoost, ','), "99.99 ");
}

TEST(LiveText, TemperaturesNameAFaultySensorOrAReadingBeyondThePoints) {
  EXPECT_EQ(SensorTemperatureText(600, true, 30.0), "Error");
  EXPECT_EQ(SensorTemperatureText(3, false, 30.0), "999");                             // shorted
  EXPECT_EQ(SensorTemperatureText(live::kSensorReadingMask - 3, false, 30.0), "999");  // open
  EXPECT_EQ(SensorTemperatureText(4, false, 30.0), "30");
  EXPECT_EQ(SensorTemperatureText(600, false, kTemperatureBeyondHot), ">120");
  EXPECT_EQ(SensorTemperatureText(600, false, kTemperatureBeyondCold), "<-20");
  EXPECT_EQ(SensorTemperatureText(600, false, 30.5), "30");
  EXPECT_EQ(SensorTemperatureText(600, false, -0.4), "0");
  LiveData live;
  live.water_reading = 600;
  live.water_temp_c = 85.0;
  live.air_fault = true;
  EXPECT_EQ(Text(live, LiveQuantity::kWaterTemp), "85");
  EXPECT_EQ(Text(live, LiveQuantity::kAirTemp), "Error");
}

TEST(LiveText, TheStatusAndTheAirFuelRatioReadAsEverywhere) {
  LiveData live;
  EXPECT_EQ(Text(live, LiveQuantity::kEngineStatus), "");
  EXPECT_EQ(Text(live, LiveQuantity::kFuelMap), "");
  live.status = live::kStatusEngineActive | live::kStatusFuelMap1 | live::kStatusFuelMap2;
  EXPECT_EQ(Text(live, LiveQuantity::kEngineStatus), "Active");
  EXPECT_EQ(Text(live, LiveQuantity::kFuelMap), "Fuel Map 2");
  live.status = live::kStatusFuelMap1;
  EXPECT_EQ(Text(live, LiveQuantity::kFuelMap), "Fuel Map 1");
  live.lambda = 0.873;
  EXPECT_EQ(LiveText(live, LiveQuantity::kAfr, {',', kAfrModeLambda}), "0,87");
}

}  // namespace
}  // namespace vela
