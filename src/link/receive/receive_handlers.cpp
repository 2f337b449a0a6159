#include "link/receive/receive_handlers.h"

#include <string>

#include "calibration/setup_fields.h"

namespace vela {
namespace {

using live::At;
using live::Frame;
using live_text::Fixed;

constexpr double kBoostDisplayLimitBar = 99.99;

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
        &ReceiveHandlers::IdleStepTextHandler,
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
  live_.engine_rpm_text = Fixed(live_.engine_rpm, 0, separator_);
  return live_.engine_period_us;
}

void ReceiveHandlers::EngineSpeedStep(const Frame& f) {
  const std::uint32_t count = EngineSpeedHandler(f);
  if (hooks_.on_engine_count) hooks_.on_engine_count(count);
}

void ReceiveHandlers::InjectionTimeHandler(const Frame& f) {
  live_.injection_ms = live::InjectionMs(f);
  live_.injection_text = live_text::InjectionText(live_.injection_ms, separator_);
}

void ReceiveHandlers::IgnitionHandler(const Frame& f) {
  live_.ignition_advance_deg = live::AdvanceDegrees(f);
  live_.ignition_text = Fixed(live_.ignition_advance_deg, 1, separator_);
}

void ReceiveHandlers::MapHandler(const Frame& f) {
  live_.map_kpa = live::MapKpa(f);
  live_.map_text = live_.map_kpa > map_range_kpa_ ? "Over" : Fixed(live_.map_kpa, 1, separator_);
}

void ReceiveHandlers::TpsHandler(const Frame& f) {
  live_.tps_percent = live::TpsPercent(f);
  live_.tps_text = Fixed(live_.tps_percent, 1, separator_);
}

void ReceiveHandlers::BoostHandler(const Frame& f) {
  const double kpa = live::MapKpa(f);
  live_.boost_bar = (kpa - live_text::kAtmosphereKpa) / 100.0;
  live_.boost_text = kpa > map_range_kpa_ || live_.boost_bar > kBoostDisplayLimitBar
                         ? "99.99 "
                         : Fixed(live_.boost_bar, 2, separator_);
}

void ReceiveHandlers::LambdaHandler(const Frame& f) {
  live_.lambda = live::Lambda(f);
  live_.lambda_text = Fixed(live_.lambda, 3, separator_);
  const AfrShown shown = afr_display_ ? afr_display_(live_.lambda)
                                      : AfrShown{live_.lambda * kGasolineStoichiometric, 1};
  live_.afr = shown.value;
  live_.afr_text = Fixed(live_.afr, shown.decimals, separator_);
}

void ReceiveHandlers::LoadSiteHandler(const Frame& f) {
  live_.load_site = At(f, live::kLoadSite) / 16.0;
}

void ReceiveHandlers::WaterTempHandler(const Frame& f) {
  live_.water_reading = static_cast<std::uint16_t>(live::WaterReading(f));
  live_.water_fault = live::WaterSensorFault(f);
  live_.water_temp_c =
      live_text::SensorTemperatureOf(live_.water_reading, SensorPoints(FieldPos("WaterSensorCal")));
  live_.water_temp_text =
      live_text::SensorTemperatureText(live_.water_reading, live_.water_fault, live_.water_temp_c);
}

void ReceiveHandlers::AirTempHandler(const Frame& f) {
  live_.air_fault = live::AirSensorFault(f);
  live_.air_reading = static_cast<std::uint16_t>(live::AirReading(f));
  live_.air_temp_c =
      live_text::SensorTemperatureOf(live_.air_reading, SensorPoints(FieldPos("AirSensorCal")));
  live_.air_temp_text =
      live_text::SensorTemperatureText(live_.air_reading, live_.air_fault, live_.air_temp_c);
}

void ReceiveHandlers::IdleValveHandler(const Frame& f) {
  live_.idle_valve_percent = live::IdleValvePercent(f);
  live_.idle_valve_text = Fixed(live_.idle_valve_percent, 1, separator_);
}

void ReceiveHandlers::BatteryHandler(const Frame& f) {
  live_.battery_volts = live::BatteryVolts(f);
  live_.battery_text = Fixed(live_.battery_volts, 2, separator_);
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
  live_.throttle_pump_text = Fixed(live_.throttle_pump_percent, 1, separator_);
}

void ReceiveHandlers::IdleStepTextHandler(const Frame& f) {
  live_.idle_step_text = std::to_string(At(f, live::kIdleStep));
}

// The idle controller works while it has a step and a target.
void ReceiveHandlers::IdleActiveHandler(const Frame& f) {
  live_.idle_active = At(f, live::kIdleStep) != 0 && At(f, live::kIdleTarget) != 0;
  live_.idle_active_text = live_text::OnOff(live_.idle_active);
}

void ReceiveHandlers::IdleTargetHandler(const Frame& f) {
  live_.idle_target_rpm = static_cast<int>(live::U16(f, live::kIdleTarget));
  live_.idle_target_text = std::to_string(live_.idle_target_rpm);
}

void ReceiveHandlers::OutputsHandler(const Frame& f) { live_.gpo_states = At(f, live::kGpoStates); }

void ReceiveHandlers::InputsHandler(const Frame& f) { live_.gpi_states = At(f, live::kGpiStates); }

void ReceiveHandlers::StatusHandler(const Frame& f) {
  live_.status = At(f, live::kStatus);
  live_.engine_status_text = live_text::StatusText(live_.status);
  live_.fuel_map_text = live_text::FuelMapText(live_.status);
  live_.throttle_pump_active = (live_.status & live::kStatusThrottlePump) != 0;
  live_.limiter_active = (live_.status & live::kStatusLimiter) != 0;
}

void ReceiveHandlers::EmptyHandler(const Frame&) {}

void ReceiveHandlers::FirmwareHandler(const Frame& f) {
  live_.firmware_version = At(f, live::kFirmwareVersion);
  live_.firmware_build = At(f, live::kFirmwareBuild);
  live_.firmware_text = std::string(live_text::kFirmwareTextPrefix) +
                        std::to_string(live_.firmware_version) + std::string(1, separator_) +
                        std::to_string(live_.firmware_build);
}

void ReceiveHandlers::LiveTuneHandler(const Frame& f) {
  live_.live_tune = At(f, live::kLiveTune) == 1;
  live_.live_tune_text = live_text::OnOff(live_.live_tune);
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
  live_.injector_duty_text = live_text::DutyText(live_.injector_duty_percent, separator_);
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
