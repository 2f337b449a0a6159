// The 28 receive handlers. The dispatcher hands every frame (or, when no new frame came, the
// previous one) to all of them in a fixed order; each reads its own positions of the frame and
// updates the live data set, and a trailing handler then refreshes the derived displays.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <utility>

#include "calibration/calibration_image.h"
#include "link/live/live_data.h"
#include "link/live/live_frame.h"

namespace vela {

// The top of the pressure range the read-outs show until the MAP sensor set-up gives its own.
inline constexpr double kDefaultMapRangeKpa = 400.0;
inline constexpr double kGasolineStoichiometric = 14.7;

class ReceiveHandlers {
 public:
  struct Hooks {
    // Handler 1's returned value, the 24-bit revolution count, for the `EngineRate` averaging.
    std::function<void(std::uint32_t)> on_engine_count;
    // Called by the trailing handler once the set is complete.
    std::function<void(const LiveData&)> on_refreshed;
  };

  static constexpr int kHandlerCount = 28;

  explicit ReceiveHandlers(LiveData& live, Hooks hooks = {})
      : live_(live), hooks_(std::move(hooks)) {}

  // Runs the 28 handlers in their order and then the trailing handler.
  void RunAll(const live::Frame& frame);

  // The calibration whose sensor points convert the temperature ratios; none: all points 0.
  void SetCalibration(const CalibrationImage* image) { calibration_ = image; }
  // The top of the installed MAP sensor's range in kPa: beyond it the pressure is over range.
  void SetMapRangeKpa(double kpa) { map_range_kpa_ = kpa; }
  // The air-fuel value for a lambda reading, as the display choice has it (unset: the gasoline
  // ratio).
  using AfrValue = std::function<double(double lambda)>;
  void SetAfrValue(AfrValue afr_value) { afr_value_ = std::move(afr_value); }
  // The injector duty base of the engine set-up (live::InjectorDutyPercent).
  void SetDutyBase(double base) { duty_base_ = base; }
  void SetHooks(Hooks hooks) { hooks_ = std::move(hooks); }

 private:
  using Handler = void (ReceiveHandlers::*)(const live::Frame&);
  static const std::array<Handler, kHandlerCount> kOrder;

  std::uint32_t EngineSpeedHandler(const live::Frame& f);  // 1: the only one with a result
  void EngineSpeedStep(const live::Frame& f);
  void InjectionTimeHandler(const live::Frame& f);     // 2: 9, 10
  void IgnitionHandler(const live::Frame& f);          // 3: 11, 12
  void MapHandler(const live::Frame& f);               // 4: 13, 14
  void TpsHandler(const live::Frame& f);               // 5: 15, 16
  void BoostHandler(const live::Frame& f);             // 6: 13, 14
  void LambdaHandler(const live::Frame& f);            // 7: 24, 25
  void LoadSiteHandler(const live::Frame& f);          // 8: 26, 27
  void WaterTempHandler(const live::Frame& f);         // 9: 17, 18
  void AirTempHandler(const live::Frame& f);           // 10: 18, 19, 20
  void IdleValveHandler(const live::Frame& f);         // 11: 23
  void BatteryHandler(const live::Frame& f);           // 12: 21, 22
  void IdleStepHandler(const live::Frame& f);          // 13: 31
  void RpmSiteHandler(const live::Frame& f);           // 14: 28
  void ThrottlePumpLowHandler(const live::Frame& f);   // 15: 29
  void ThrottlePumpHighHandler(const live::Frame& f);  // 16: 30
  void IdleStepRepeatHandler(const live::Frame& f);    // 17: 31
  void IdleActiveHandler(const live::Frame& f);        // 18: 32 with 31
  void IdleTargetHandler(const live::Frame& f);        // 19: 33 with 32
  void OutputsHandler(const live::Frame& f);           // 20: 34
  void InputsHandler(const live::Frame& f);            // 21: 35
  void StatusHandler(const live::Frame& f);            // 22: 36
  void EmptyHandler(const live::Frame& f);             // 23
  void FirmwareHandler(const live::Frame& f);          // 24: 37, 38
  void LiveTuneHandler(const live::Frame& f);          // 25: 39
  void FrameRateHandler(const live::Frame& f);         // 26: 40
  void FaultCountHandler(const live::Frame& f);        // 27: 41 with 40
  void NewestFaultHandler(const live::Frame& f);       // 28: 42 with 40
  void TrailingHandler(const live::Frame& f);

  std::array<double, 8> SensorPoints(int first_position) const;

  LiveData& live_;
  Hooks hooks_;
  const CalibrationImage* calibration_ = nullptr;
  double map_range_kpa_ = kDefaultMapRangeKpa;
  double duty_base_ = live::kDefaultDutyBase;
  AfrValue afr_value_;
  std::uint8_t throttle_pump_low_ = 0;
};

}  // namespace vela
