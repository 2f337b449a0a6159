// The live frame the ECU streams: "START", 37 data bytes at positions 6 to 42, "END" (45 bytes,
// positions counted from 1 as the receive handlers count them). This header is the one place
// where the fields' positions and scalings are fixed; the program's receive handlers, the
// datalog and the simulated ECU all decode and encode with it. Multi-byte fields are
// little-endian (the first character is the low byte).
//
// The positions of the engine's values are those the receive handlers and the datalog channels
// read: injection time 9-10, advance 11-12, MAP 13-14, throttle 15-16, water 17-18, air 19-20,
// battery 21-22, idle valve 23, throttle pump addition 29-30. The fields beside them sit where
// no handler reads another quantity.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "calibration/conversions.h"

namespace vela::live {

inline constexpr int kFrameLength = 45;
inline constexpr int kStartToEnd = 42;  // position of "END" minus position of "START"
inline constexpr std::string_view kStartMarker = "START";
inline constexpr std::string_view kEndMarker = "END";

// Positions (1-based) of the fields.
inline constexpr int kEnginePeriod = 6;      // 6-8: 24-bit, microseconds per crank revolution
inline constexpr int kInjectionTime = 9;     // 9-10: injector open time, 10 us units (ms x 100)
inline constexpr int kIgnitionAdvance = 11;  // 11-12: advance, degrees x 512, signed 16-bit
inline constexpr int kMap = 13;              // 13-14: manifold pressure, kPa x 10
inline constexpr int kTps = 15;              // 15-16: throttle position, 10-bit count (0-1023)
inline constexpr int kWaterSensor = 17;      // 17-18: water sensor, bits 0-9 (see below)
inline constexpr int kSensorFlags = 18;      // 18: bit 6 water sensor fault, bit 7 air sensor fault
inline constexpr int kAirSensor = 19;        // 19-20: air sensor, bits 0-9
inline constexpr int kBattery = 21;          // 21-22: battery voltage, volts x 100
inline constexpr int kIdleValve = 23;        // 23: idle valve duty, % x 2.56
inline constexpr int kLambda = 24;           // 24-25: lambda x 1000 (0 = no sensor reading)
inline constexpr int kLoadSite = 26;         // 26: load site in use, x 16; 27 spare
inline constexpr int kRpmSite = 28;          // 28: RPM site in use, x 16
inline constexpr int kThrottlePump = 29;     // 29-30: throttle pump addition, % of fuel x 10
inline constexpr int kIdleStep = 31;         // 31: idle controller step
inline constexpr int kIdleTarget = 32;       // 32-33: idle target, RPM
inline constexpr int kGpoStates = 34;        // 34: bit n = general purpose output n+1 on
inline constexpr int kGpiStates = 35;        // 35: bit n = general purpose input n+1 active
inline constexpr int kStatus = 36;           // 36: status bits below
inline constexpr int kFirmwareVersion = 37;  // 37: firmware version (the image's byte 909)
inline constexpr int kFirmwareBuild = 38;    // 38: firmware build
inline constexpr int kLiveTune = 39;         // 39: live tuning on (1) / off (0)
inline constexpr int kFramesPerSecond = 40;  // 40: live frames per second now
inline constexpr int kFaultCount = 41;       // 41: fault codes the ECU holds
inline constexpr int kNewestFault = 42;      // 42: the newest of them (0 = none)

// Bits of the sensor flags byte (position 18, the water reading's high byte).
inline constexpr std::uint8_t kWaterSensorFault = 0x40;
inline constexpr std::uint8_t kAirSensorFault = 0x80;
// The temperature sensors are read as a 10-bit count of the divider (ratio x 1024), four counts
// to one step of the image's sensor points (ratio x 256).
inline constexpr std::uint32_t kSensorReadingMask = 0x03FF;
inline constexpr double kSensorCountsPerPoint = 4.0;

// Bits of the status byte (position 36).
inline constexpr std::uint8_t kStatusEngineActive = 0x01;
inline constexpr std::uint8_t kStatusFuelMap1 = 0x02;
inline constexpr std::uint8_t kStatusFuelMap2 = 0x04;
inline constexpr std::uint8_t kStatusThrottlePump = 0x08;
inline constexpr std::uint8_t kStatusLimiter = 0x10;

// Scalings.
inline constexpr double kEngineSpeedDivisor = 1.0;   // one period a revolution
inline constexpr double kEngineSpeedFactor = 100.0;  // percent: no correction
// A period whose high byte is this or more is an engine standing or barely turning: 0 RPM.
inline constexpr std::uint8_t kStoppedPeriodHighByte = 40;
inline constexpr double kInjectionDivisor = 100.0;  // reading / 100 = milliseconds
inline constexpr double kAdvanceDivisor = 512.0;    // reading / 512 = degrees
inline constexpr double kMapDivisor = 10.0;         // reading / 10 = kPa
inline constexpr double kBatteryDivisor = 100.0;    // reading / 100 = volts
inline constexpr double kIdleDivisor = 2.56;        // 256 counts = 100 %
inline constexpr double kLambdaDivisor = 1000.0;
inline constexpr double kThrottlePumpDivisor = 10.0;

using Frame = std::array<std::uint8_t, kFrameLength>;

inline constexpr std::uint8_t At(const Frame& f, int position) { return f[position - 1]; }
inline constexpr std::uint32_t U16(const Frame& f, int position) {
  return At(f, position) | (At(f, position + 1) << 8);
}
inline constexpr std::uint32_t U24(const Frame& f, int position) {
  return U16(f, position) | (static_cast<std::uint32_t>(At(f, position + 2)) << 16);
}
inline constexpr std::int32_t S16(const Frame& f, int position) {
  return static_cast<std::int16_t>(static_cast<std::uint16_t>(U16(f, position)));
}

// The engine's values as numbers, decoded from a frame. Every reader of a frame (the live
// read-outs, the cross-hair, the datalog) converts through these.
inline constexpr double RpmFromPeriod(std::uint32_t period_us) {
  return period_us == 0 ? 0.0
                        : kMicrosecondsPerMinute / kEngineSpeedDivisor / period_us *
                              (kEngineSpeedFactor / 100.0);
}
inline constexpr double EngineRpm(const Frame& f) {
  if (At(f, kEnginePeriod + 2) >= kStoppedPeriodHighByte) return 0.0;
  return RpmFromPeriod(U24(f, kEnginePeriod));
}
inline constexpr double InjectionMs(const Frame& f) {
  return U16(f, kInjectionTime) / kInjectionDivisor;
}
inline constexpr double AdvanceDegrees(const Frame& f) {
  return S16(f, kIgnitionAdvance) / kAdvanceDivisor;
}
inline constexpr double MapKpa(const Frame& f) { return U16(f, kMap) / kMapDivisor; }
inline constexpr double TpsPercent(const Frame& f) {
  return (U16(f, kTps) & 0x03FF) / kTpsCountsPerPercent;
}
inline constexpr std::uint32_t WaterReading(const Frame& f) {
  return U16(f, kWaterSensor) & kSensorReadingMask;
}
inline constexpr std::uint32_t AirReading(const Frame& f) {
  return U16(f, kAirSensor) & kSensorReadingMask;
}
inline constexpr bool WaterSensorFault(const Frame& f) {
  return (At(f, kSensorFlags) & kWaterSensorFault) != 0;
}
inline constexpr bool AirSensorFault(const Frame& f) {
  return (At(f, kSensorFlags) & kAirSensorFault) != 0;
}
inline constexpr double BatteryVolts(const Frame& f) { return U16(f, kBattery) / kBatteryDivisor; }
inline constexpr double IdleValvePercent(const Frame& f) {
  return At(f, kIdleValve) / kIdleDivisor;
}
inline constexpr double Lambda(const Frame& f) { return U16(f, kLambda) / kLambdaDivisor; }
inline constexpr double ThrottlePumpPercent(const Frame& f) {
  return U16(f, kThrottlePump) / kThrottlePumpDivisor;
}
// Injector duty in percent: the open time against the time a cylinder's cycle allows, which the
// engine set-up gives as the duty base (milliseconds x RPM at 100 %: kMsRpmPerEngineCycle x B / A,
// see the fuel duty limit of the map editors). The default is the base of one injection per cycle
// (B = A), used until a set-up is known: a set-up's value, kept apart from the unit it equals.
inline constexpr double kDefaultDutyBase = kMsRpmPerEngineCycle;
inline constexpr double InjectorDutyPercent(const Frame& f, double duty_base = kDefaultDutyBase) {
  if (!(duty_base > 0.0)) return 0.0;
  return 100.0 * InjectionMs(f) * EngineRpm(f) / duty_base;
}

// Whether the `length` characters at `at` of `text` lie within the data bytes of a live frame: a
// frame's data may spell anything, a marker of the link or a whole text reply included. kYes
// after a "START" whose "END" stands kStartToEnd characters on; kNotYetKnown after a "START"
// whose end has not arrived yet.
enum class InFrameData { kNo, kYes, kNotYetKnown };
inline InFrameData WithinFrameData(std::string_view text, std::size_t at, std::size_t length) {
  constexpr std::size_t kFirstData = kStartMarker.size();
  constexpr std::size_t kEndAt = kStartToEnd;
  if (at < kFirstData || length > kEndAt - kFirstData) return InFrameData::kNo;
  InFrameData found = InFrameData::kNo;
  const std::size_t latest_start = at - kFirstData;
  const std::size_t earliest_start = at + length > kEndAt ? at + length - kEndAt : 0;
  for (std::size_t s = earliest_start; s <= latest_start; ++s) {
    if (text.compare(s, kStartMarker.size(), kStartMarker) != 0) continue;
    if (s + kFrameLength > text.size()) {
      found = InFrameData::kNotYetKnown;
    } else if (text.compare(s + kEndAt, kEndMarker.size(), kEndMarker) == 0) {
      return InFrameData::kYes;
    }
  }
  return found;
}

}  // namespace vela::live
