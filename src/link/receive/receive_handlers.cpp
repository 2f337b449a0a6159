#include "link/receive/receive_handlers.h"

#include "calibration/conversions.h"
#include "calibration/setup_fields.h"

namespace vela {
namespace {

using live::At;
using live::Frame;

}  // namespace

const std::array<ReceiveHandlers::Handler, ReceiveHandlers::kHandlerCount> ReceiveHandlers::kOrder =
    {
        &ReceiveHandlers::EngineSpeedStep,
        &ReceiveHandlers::InjectionTimeHandler,
        &ReceiveHandlers::IgnitionHandler,
        &ReceiveHandlers::MapHandler,
        &ReceiveHandlers::TpsHandler,
        &ReceiveHandlers::BoostHandler,
        &ReceiveHandlers::LambdaHandler,
        &ReceiveHandlers::LoadSiteHandler,
        &ReceiveHandlers::WaterTempHandler,
        &ReceiveHandlers::AirTempHandler,
        &ReceiveHandlers::IdleValveHandler,
        &ReceiveHandlers::BatteryHandler,
        &ReceiveHandlers::IdleStepHandler,
        &ReceiveHandlers::RpmSiteHandler,
        &ReceiveHandlers::ThrottlePumpLowHandler,
        &ReceiveHandlers::ThrottlePumpHighHandler,
        &ReceiveHandlers::IdleStepRepeatHandler,
        &ReceiveHandlers::IdleActiveHandler,
        &ReceiveHandlers::IdleTargetHandler,
        &ReceiveHandlers::OutputsHandler,
        &ReceiveHandlers::InputsHandler,
        &ReceiveHandlers::StatusHandler,
        &ReceiveHandlers::EmptyHandler,
        &ReceiveHandlers::FirmwareHandler,
        &ReceiveHandlers::LiveTuneHandler,
        &ReceiveHandlers::FrameRateHandler,
        &ReceiveHandlers::FaultCountHandler,
        &ReceiveHandlers::NewestFaultHandler,
};

void ReceiveHandlers::RunAll(const Frame& frame) {
  for (Handler handler : kOrder) (this->*handler)(frame);
  TrailingHandler(frame);
}

std::uint32_t ReceiveHandlers::EngineSpeedHandler(const Frame& f) {
  live_.engine_period_us = live::U24(f, live::kEnginePeriod);
  live_.engine_rpm = live::EngineRpm(f);
  return live_.engine_period_us;
}

void ReceiveHandlers::EngineSpeedStep(const Frame& f) {
  const std::uint32_t count = EngineSpeedHandler(f);
  if (hooks_.on_engine_count) hooks_.on_engine_count(count);
}

void ReceiveHandlers::InjectionTimeHandler(const Frame& f) {
  live_.injection_ms = live::InjectionMs(f);
}

void ReceiveHandlers::IgnitionHandler(const Frame& f) {
  live_.ignition_advance_deg = live::AdvanceDegrees(f);
}

void ReceiveHandlers::MapHandler(const Frame& f) {
  live_.map_kpa = live::MapKpa(f);
  live_.map_over_range = live_.map_kpa > map_range_kpa_;
}

void ReceiveHandlers::TpsHandler(const Frame& f) { live_.tps_percent = live::TpsPercent(f); }

void ReceiveHandlers::BoostHandler(const Frame& f) {
  live_.boost_bar = (live::MapKpa(f) - live::kAtmosphereKpa) / kKpaPerBar;
}

void ReceiveHandlers::LambdaHandler(const Frame& f) {
  live_.lambda = live::Lambda(f);
  live_.afr = afr_value_ ? afr_value_(live_.lambda) : live_.lambda * kGasolineStoichiometric;
}

void ReceiveHandlers::LoadSiteHandler(const Frame& f) {
  live_.load_site = At(f, live::kLoadSite) / 16.0;
}

void ReceiveHandlers::WaterTempHandler(const Frame& f) {
  live_.water_reading = static_cast<std::uint16_t>(live::WaterReading(f));
  live_.water_fault = live::WaterSensorFault(f);
  live_.water_temp_c =
      live::SensorTemperatureOf(live_.water_reading, SensorPoints(FieldPos("WaterSensorCal")));
}

void ReceiveHandlers::AirTempHandler(const Frame& f) {
  live_.air_fault = live::AirSensorFault(f);
  live_.air_reading = static_cast<std::uint16_t>(live::AirReading(f));
  live_.air_temp_c =
      live::SensorTemperatureOf(live_.air_reading, SensorPoints(FieldPos("AirSensorCal")));
}

void ReceiveHandlers::IdleValveHandler(const Frame& f) {
  live_.idle_valve_percent = live::IdleValvePercent(f);
}

void ReceiveHandlers::BatteryHandler(const Frame& f) {
  live_.battery_volts = live::BatteryVolts(f);
}

void ReceiveHandlers::IdleStepHandler(const Frame& f) { live_.idle_step = At(f, live::kIdleStep); }

void ReceiveHandlers::RpmSiteHandler(const Frame& f) {
  live_.rpm_site = At(f, live::kRpmSite) / 16.0;
}

void ReceiveHandlers::ThrottlePumpLowHandler(const Frame& f) {
  throttle_pump_low_ = At(f, live::kThrottlePump);
}

void ReceiveHandlers::ThrottlePumpHighHandler(const Frame& f) {
  const std::uint32_t reading = throttle_pump_low_ | (At(f, live::kThrottlePump + 1) << 8);
  live_.throttle_pump_percent = reading / live::kThrottlePumpDivisor;
}

// Handler 17 reads the idle step a second time; the displays once took their text from it.
void ReceiveHandlers::IdleStepRepeatHandler(const Frame& f) {
  live_.idle_step = At(f, live::kIdleStep);
}

// The idle controller works while it has a step and a target.
void ReceiveHandlers::IdleActiveHandler(const Frame& f) {
  live_.idle_active = At(f, live::kIdleStep) != 0 && At(f, live::kIdleTarget) != 0;
}

void ReceiveHandlers::IdleTargetHandler(const Frame& f) {
  live_.idle_target_rpm = static_cast<int>(live::U16(f, live::kIdleTarget));
}

void ReceiveHandlers::OutputsHandler(const Frame& f) { live_.gpo_states = At(f, live::kGpoStates); }

void ReceiveHandlers::InputsHandler(const Frame& f) { live_.gpi_states = At(f, live::kGpiStates); }

void ReceiveHandlers::StatusHandler(const Frame& f) {
  live_.status = At(f, live::kStatus);
  live_.throttle_pump_active = (live_.status & live::kStatusThrottlePump) != 0;
  live_.limiter_active = (live_.status & live::kStatusLimiter) != 0;
}

void ReceiveHandlers::EmptyHandler(const Frame&) {}

void ReceiveHandlers::FirmwareHandler(const Frame& f) {
  live_.firmware_version = At(f, live::kFirmwareVersion);
  live_.firmware_build = At(f, live::kFirmwareBuild);
}

void ReceiveHandlers::LiveTuneHandler(const Frame& f) {
  live_.live_tune = At(f, live::kLiveTune) == 1;
}

void ReceiveHandlers::FrameRateHandler(const Frame& f) {
  live_.frames_per_second = At(f, live::kFramesPerSecond);
}

void ReceiveHandlers::FaultCountHandler(const Frame& f) {
  live_.error_count = At(f, live::kFaultCount);
}

void ReceiveHandlers::NewestFaultHandler(const Frame& f) {
  live_.last_error = At(f, live::kNewestFault);
}

void ReceiveHandlers::TrailingHandler(const Frame& f) {
  live_.injector_duty_percent = live::InjectorDutyPercent(f, duty_base_);
  ++live_.refresh_count;
  if (hooks_.on_refreshed) hooks_.on_refreshed(live_);
}

std::array<double, 8> ReceiveHandlers::SensorPoints(int first_position) const {
  std::array<double, 8> points{};
  if (calibration_ == nullptr) return points;
  for (int i = 0; i < 8; ++i) points[i] = calibration_->Byte(first_position + i);
  return points;
}

}  // namespace vela
