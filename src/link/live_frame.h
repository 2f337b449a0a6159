// The live frame the ECU streams: "START", 37 data bytes at positions 6 to 42, "END" (45 bytes,
// positions counted from 1 as the receive handlers count them). This header is the one place
// where the fields' positions and scalings are fixed; the program's receive handlers decode
// with it and the simulated ECU encodes with it. Multi-byte fields are little-endian.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace vela::live {

inline constexpr int kFrameLength = 45;
inline constexpr int kStartToEnd = 42;  // position of "END" minus position of "START"
inline constexpr std::string_view kStartMarker = "START";
inline constexpr std::string_view kEndMarker = "END";

// Positions (1-based) of the fields, in the order of the receive handlers that read them.
inline constexpr int kEnginePeriod = 6;     // 6-8: 24-bit, microseconds per crank revolution; 0 = stopped
inline constexpr int kMap = 9;              // 9-10: manifold pressure, kPa x 10
inline constexpr int kTps = 11;             // 11-12: throttle position, % x 10
inline constexpr int kInjectionTime = 13;   // 13-14: injector open time, microseconds
inline constexpr int kIgnitionAdvance = 15; // 15-16: advance, degrees x 10, signed 16-bit
inline constexpr int kWaterSensor = 17;     // 17: water temperature sensor, divider ratio x 256
inline constexpr int kSensorFlags = 18;     // 18: bit 0 water sensor fault, bit 1 air sensor fault
inline constexpr int kAirSensor = 19;       // 19: air temperature sensor, divider ratio x 256
inline constexpr int kLoadSite = 20;        // 20: load site in use, x 16 (fraction of a column)
inline constexpr int kBattery = 21;         // 21-22: battery voltage, volts x 100
inline constexpr int kLambda = 23;          // 23: lambda x 100 (0 = no sensor reading)
inline constexpr int kIdleValve = 24;       // 24-25: idle valve duty, % x 10
inline constexpr int kThrottlePump = 26;    // 26-27: throttle pump addition, microseconds
inline constexpr int kRpmSite = 28;         // 28: RPM site in use, x 16 (fraction of a row)
inline constexpr int kErrorCount = 29;      // 29: number of stored error codes
inline constexpr int kLastError = 30;       // 30: last error code (0 = none)
inline constexpr int kIdleStep = 31;        // 31: idle controller step; 32-33: idle target, rpm
inline constexpr int kIdleTarget = 32;
inline constexpr int kGpoStates = 34;       // 34: bit n = general purpose output n+1 on
inline constexpr int kGpiStates = 35;       // 35: bit n = general purpose input n+1 active
inline constexpr int kStatus = 36;          // 36: status bits below
inline constexpr int kFirmwareVersion = 37; // 37: firmware version
inline constexpr int kLiveTune = 39;        // 39: live tuning on (1) / off (0)
inline constexpr int kFramesPerSecond = 40; // 40: live frames per second now; 41, 42: spare

// Bits of the status byte (position 36).
inline constexpr std::uint8_t kStatusEngineActive = 0x01;
inline constexpr std::uint8_t kStatusFuelMap1 = 0x02;
inline constexpr std::uint8_t kStatusFuelMap2 = 0x04;
inline constexpr std::uint8_t kStatusThrottlePump = 0x08;
inline constexpr std::uint8_t kStatusLimiter = 0x10;

// Engine speed from the period field; 0 when the engine stands.
inline constexpr double RpmFromPeriod(std::uint32_t period_us) {
  return period_us == 0 ? 0.0 : 60'000'000.0 / period_us;
}

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

}  // namespace vela::live
