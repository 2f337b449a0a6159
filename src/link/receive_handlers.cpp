#include "link/receive_handlers.h"

#include <string>

#include "calibration/setup_fields.h"

namespace vela {
namespace {

using live::At;
using live::Frame;
using live_text::Fixed;

constexpr double kLambdaStoichiometricAfr = 14.7;
constexpr int kFirmwareBuild = live::kFirmwareVersion + 1;  // position 38

}  // namespace

const std::array<ReceiveHandlers::Handler, ReceiveHandlers::kHandlerCount> ReceiveHandlers::kOrder =
    {
        &ReceiveHandlers::EngineSpeedStep,     &ReceiveHandlers::MapHandler,
        &ReceiveHandlers::TpsHandler,          &ReceiveHandlers::InjectionTimeHandler,
        &ReceiveHandlers::IgnitionHandler,     &ReceiveHandlers::InjectorDutyHandler,
        &ReceiveHandlers::IdleValveHandler,    &ReceiveHandlers::ThrottlePumpHandler,
        &ReceiveHandlers::WaterTempHandler,    &ReceiveHandlers::AirTempHandler,
        &ReceiveHandlers::LambdaHandler,       &ReceiveHandlers::BatteryHandler,
        &ReceiveHandlers::IdleStepHandler,     &ReceiveHandlers::RpmSiteHandler,
        &ReceiveHandlers::ErrorCountHandler,   &ReceiveHandlers::LastErrorHandler,
        &ReceiveHandlers::IdleStepTextHandler, &ReceiveHandlers::IdleActiveHandler,
        &ReceiveHandlers::IdleTargetHandler,   &ReceiveHandlers::OutputsHandler,
        &ReceiveHandlers::InputsHandler,       &ReceiveHandlers::StatusHandler,
        &ReceiveHandlers::EmptyHandler,        &ReceiveHandlers::FirmwareHandler,
        &ReceiveHandlers::LiveTuneHandler,     &ReceiveHandlers::FrameRateHandler,
        &ReceiveHandlers::Spare1Handler,       &ReceiveHandlers::Spare2Handler,
};

void ReceiveHandlers::RunAll(const Frame& frame) {
  for (Handler handler : kOrder) (this->*handler)(frame);
  TrailingHandler();
}

std::uint32_t ReceiveHandlers::EngineSpeedHandler(const Frame& f) {
  live_.engine_period_us = live::U24(f, live::kEnginePeriod);
  live_.engine_rpm = live::RpmFromPeriod(live_.engine_period_us);
  live_.engine_rpm_text = Fixed(live_.engine_rpm, 0, separator_);
  return live_.engine_period_us;
}

void ReceiveHandlers::EngineSpeedStep(const Frame& f) {
  const std::uint32_t count = EngineSpeedHandler(f);
  if (hooks_.on_engine_count) hooks_.on_engine_count(count);
}

void ReceiveHandlers::MapHandler(const Frame& f) {
  live_.map_kpa = live::U16(f, live::kMap) / 10.0;
  live_.map_text = Fixed(live_.map_kpa, 1, separator_);
}

void ReceiveHandlers::TpsHandler(const Frame& f) {
  live_.tps_percent = live::U16(f, live::kTps) / 10.0;
  live_.tps_text = Fixed(live_.tps_percent, 1, separator_);
}

void ReceiveHandlers::InjectionTimeHandler(const Frame& f) {
  live_.injection_ms = live::U16(f, live::kInjectionTime) / 1000.0;
  live_.injection_text = live_text::InjectionText(live_.injection_ms, separator_);
}

void ReceiveHandlers::IgnitionHandler(const Frame& f) {
  live_.ignition_advance_deg = live::S16(f, live::kIgnitionAdvance) / 10.0;
  live_.ignition_text = Fixed(live_.ignition_advance_deg, 1, separator_);
}

// One injection per revolution: the open time as a share of the revolution period.
void ReceiveHandlers::InjectorDutyHandler(const Frame& f) {
  const std::uint32_t injection_us = live::U16(f, live::kInjectionTime);
  const std::uint32_t period_us = live::U24(f, live::kEnginePeriod);
  live_.injector_duty_percent = period_us == 0 ? 0.0 : 100.0 * injection_us / period_us;
  live_.injector_duty_text = live_text::DutyText(live_.injector_duty_percent, separator_);
}

void ReceiveHandlers::IdleValveHandler(const Frame& f) {
  live_.idle_valve_percent = live::U16(f, live::kIdleValve) / 10.0;
  live_.idle_valve_text = Fixed(live_.idle_valve_percent, 1, separator_);
}

void ReceiveHandlers::ThrottlePumpHandler(const Frame& f) {
  live_.throttle_pump_ms = live::U16(f, live::kThrottlePump) / 1000.0;
  live_.throttle_pump_text = Fixed(live_.throttle_pump_ms, 2, separator_);
}

void ReceiveHandlers::WaterTempHandler(const Frame& f) {
  live_.water_ratio = At(f, live::kWaterSensor);
  live_.water_fault = (At(f, live::kSensorFlags) & 0x01) != 0;
  live_.water_temp_text =
      live_text::SensorTemperatureText(live_.water_ratio, live_.water_fault,
                                       SensorPoints(SetupFieldNamed("WaterSensorCal").position));
}

void ReceiveHandlers::AirTempHandler(const Frame& f) {
  live_.air_fault = (At(f, live::kSensorFlags) & 0x02) != 0;
  live_.air_ratio = At(f, live::kAirSensor);
  live_.air_temp_text = live_text::SensorTemperatureText(
      live_.air_ratio, live_.air_fault, SensorPoints(SetupFieldNamed("AirSensorCal").position));
  live_.load_site = At(f, live::kLoadSite) / 16.0;
}

void ReceiveHandlers::LambdaHandler(const Frame& f) {
  live_.lambda = At(f, live::kLambda) / 100.0;
  live_.afr = live_.lambda * kLambdaStoichiometricAfr;
  live_.lambda_text = Fixed(live_.lambda, 2, separator_);
  live_.afr_text = Fixed(live_.afr, 1, separator_);
}

void ReceiveHandlers::BatteryHandler(const Frame& f) {
  live_.battery_volts = live::U16(f, live::kBattery) / 100.0;
  live_.battery_text = Fixed(live_.battery_volts, 2, separator_);
}

void ReceiveHandlers::IdleStepHandler(const Frame& f) { live_.idle_step = At(f, live::kIdleStep); }

void ReceiveHandlers::RpmSiteHandler(const Frame& f) {
  live_.rpm_site = At(f, live::kRpmSite) / 16.0;
}

void ReceiveHandlers::ErrorCountHandler(const Frame& f) {
  live_.error_count = At(f, live::kErrorCount);
}

void ReceiveHandlers::LastErrorHandler(const Frame& f) {
  live_.last_error = At(f, live::kLastError);
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
  live_.firmware_build = At(f, kFirmwareBuild);
  live_.firmware_text = std::to_string(live_.firmware_version) + std::string(1, separator_) +
                        std::to_string(live_.firmware_build);
}

void ReceiveHandlers::LiveTuneHandler(const Frame& f) {
  live_.live_tune = At(f, live::kLiveTune) == 1;
  live_.live_tune_text = live_text::OnOff(live_.live_tune);
}

void ReceiveHandlers::FrameRateHandler(const Frame& f) {
  live_.frames_per_second = At(f, live::kFramesPerSecond);
}

void ReceiveHandlers::Spare1Handler(const Frame& f) {
  live_.spare[0] = At(f, live::kFramesPerSecond + 1);
}

void ReceiveHandlers::Spare2Handler(const Frame& f) {
  live_.spare[1] = At(f, live::kFramesPerSecond + 2);
}

void ReceiveHandlers::TrailingHandler() {
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
