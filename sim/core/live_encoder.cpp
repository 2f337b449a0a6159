#include "sim/core/live_encoder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <vector>

#include "calibration/conversions.h"
#include "link/faults/fault_reply.h"

namespace vela::sim {

namespace {

constexpr int kWaterSensorCal = 987;
constexpr int kAirSensorCal = 971;
constexpr int kFirstData = 6;
constexpr int kLastData = 42;
constexpr std::uint8_t kFirmwareBuild = 12;
// The fault code reply's marker is kept out too, so that no frame can hold a reply.
constexpr std::array<std::string_view, 5> kMarkers = {"START", "END", "ALL", "DONE",
                                                      fault_reply::kMarker};

void Put8(live::Frame& f, int position, double value) {
  f[position - 1] = static_cast<std::uint8_t>(std::clamp(std::lround(value), 0L, 255L));
}

void Put16(live::Frame& f, int position, long value) {
  const auto v = static_cast<std::uint16_t>(value);
  f[position - 1] = static_cast<std::uint8_t>(v & 0xFF);
  f[position] = static_cast<std::uint8_t>(v >> 8);
}

void PutU16(live::Frame& f, int position, double value) {
  Put16(f, position, std::clamp(std::lround(value), 0L, 65535L));
}

void PutU24(live::Frame& f, int position, std::uint32_t value) {
  Put16(f, position, static_cast<long>(value & 0xFFFF));
  f[position + 1] = static_cast<std::uint8_t>((value >> 16) & 0xFF);
}

void PutMarkers(live::Frame& f) {
  std::copy(live::kStartMarker.begin(), live::kStartMarker.end(), f.begin());
  std::copy(live::kEndMarker.begin(), live::kEndMarker.end(), f.end() - 3);
}

std::uint8_t StatusBits(const EngineState& s) {
  std::uint8_t bits = live::kStatusEngineActive | live::kStatusFuelMap1;
  if (s.throttle_pump_us > 0) bits |= live::kStatusThrottlePump;
  if (s.limiter) bits |= live::kStatusLimiter;
  return bits;
}

void PutEngineFields(live::Frame& f, const EngineState& s) {
  const double period = s.rpm > 0 ? kMicrosecondsPerMinute / s.rpm : 0.0;
  PutU24(f, live::kEnginePeriod, static_cast<std::uint32_t>(std::lround(period)) & 0xFFFFFF);
  PutU16(f, live::kInjectionTime, s.injection_us / 1000.0 * live::kInjectionDivisor);
  Put16(f, live::kIgnitionAdvance,
        std::clamp(std::lround(s.advance_deg * live::kAdvanceDivisor), -32768L, 32767L));
  PutU16(f, live::kMap, s.map_kpa * live::kMapDivisor);
  PutU16(f, live::kTps, std::clamp(s.throttle_pct, 0.0, 100.0) * kTpsCountsPerPercent);
  PutU16(f, live::kBattery, s.battery_v * live::kBatteryDivisor);
  PutU16(f, live::kLambda, s.lambda * live::kLambdaDivisor);
  Put8(f, live::kLoadSite, s.load_site * 16);
  Put8(f, live::kRpmSite, s.rpm_site * 16);
  // The pump's addition as a share of the injection time it is added to.
  const double pump_percent = s.injection_us > 0 ? 100.0 * s.throttle_pump_us / s.injection_us : 0;
  PutU16(f, live::kThrottlePump, pump_percent * live::kThrottlePumpDivisor);
}

void PutSensors(live::Frame& f, const EngineState& s, const CalibrationImage& image) {
  Put16(f, live::kWaterSensor, SensorReading(image, kWaterSensorCal, s.water_c));
  Put16(f, live::kAirSensor, SensorReading(image, kAirSensorCal, s.air_c));
}

void PutIdleAndStatus(live::Frame& f, const EngineState& s) {
  Put8(f, live::kIdleValve, std::clamp(s.idle_duty_pct, 0.0, 100.0) * live::kIdleDivisor);
  Put8(f, live::kIdleStep, s.idle_duty_pct * 2.55);
  PutU16(f, live::kIdleTarget, s.idle_target_rpm);
  // Output 1 drives the fuel pump relay while the engine runs, output 2 the radiator fan.
  f[live::kGpoStates - 1] = static_cast<std::uint8_t>((s.rpm > 0 ? 1 : 0) | (s.fan_on ? 2 : 0));
  f[live::kGpiStates - 1] = 0;
  f[live::kStatus - 1] = StatusBits(s);
  Put8(f, live::kFaultCount, s.error_count);
  Put8(f, live::kNewestFault, s.last_error);
}

}  // namespace

live::Frame EncodeLiveFrame(const EngineState& state, const CalibrationImage& image,
                            int frames_per_second) {
  live::Frame f{};
  PutMarkers(f);
  PutEngineFields(f, state);
  PutIdleAndStatus(f, state);
  PutSensors(f, state, image);
  f[live::kFirmwareVersion - 1] = image.FirmwareVersion();
  f[live::kFirmwareBuild - 1] = kFirmwareBuild;
  f[live::kLiveTune - 1] = 1;
  Put8(f, live::kFramesPerSecond, frames_per_second);
  KeepMarkersOut(f);
  return f;
}

std::size_t FindMarker(std::span<const std::uint8_t> bytes) {
  std::size_t first = std::string_view::npos;
  for (std::string_view marker : kMarkers) {
    const auto it =
        std::search(bytes.begin(), bytes.end(), marker.begin(), marker.end(),
                    [](std::uint8_t b, char c) { return b == static_cast<std::uint8_t>(c); });
    if (it != bytes.end()) first = std::min(first, static_cast<std::size_t>(it - bytes.begin()));
  }
  return first;
}

void KeepMarkersOut(live::Frame& frame) {
  constexpr std::size_t kDataLength = kLastData - kFirstData + 1;
  for (int attempt = 0; attempt < 4 * static_cast<int>(kDataLength); ++attempt) {
    std::vector<std::uint8_t> data(frame.begin() + kFirstData - 1, frame.begin() + kLastData);
    data.push_back(static_cast<std::uint8_t>(live::kEndMarker.front()));
    const std::size_t at = FindMarker(data);
    if (at == std::string_view::npos) return;
    frame[kFirstData - 1 + at] ^= 0x01;
  }
}

}  // namespace vela::sim
