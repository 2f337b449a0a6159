// The 28 receive handlers. The dispatcher hands every frame (or, when no new frame came, the
// previous one) to all of them in a fixed order; each reads its own positions of the frame and
// updates the live data set, and a trailing handler then refreshes the derived displays.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <utility>

#include "calibration/calibration_image.h"
#include "link/live_data.h"
#include "link/live_frame.h"

namespace vela {

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
  void SetDecimalSeparator(char separator) { separator_ = separator; }
  void SetHooks(Hooks hooks) { hooks_ = std::move(hooks); }

 private:
  using Handler = void (ReceiveHandlers::*)(const live::Frame&);
  static const std::array<Handler, kHandlerCount> kOrder;

  std::uint32_t EngineSpeedHandler(const live::Frame& f);  // 1: the only one with a result
  void EngineSpeedStep(const live::Frame& f);
  void MapHandler(const live::Frame& f);
  void TpsHandler(const live::Frame& f);
  void InjectionTimeHandler(const live::Frame& f);
  void IgnitionHandler(const live::Frame& f);
  void InjectorDutyHandler(const live::Frame& f);
  void IdleValveHandler(const live::Frame& f);
  void ThrottlePumpHandler(const live::Frame& f);
  void WaterTempHandler(const live::Frame& f);
  void AirTempHandler(const live::Frame& f);
  void LambdaHandler(const live::Frame& f);
  void BatteryHandler(const live::Frame& f);
  void IdleStepHandler(const live::Frame& f);
  void RpmSiteHandler(const live::Frame& f);
  void ErrorCountHandler(const live::Frame& f);
  void LastErrorHandler(const live::Frame& f);
  void IdleStepTextHandler(const live::Frame& f);
  void IdleActiveHandler(const live::Frame& f);
  void IdleTargetHandler(const live::Frame& f);
  void OutputsHandler(const live::Frame& f);
  void InputsHandler(const live::Frame& f);
  void StatusHandler(const live::Frame& f);
  void EmptyHandler(const live::Frame& f);
  void FirmwareHandler(const live::Frame& f);
  void LiveTuneHandler(const live::Frame& f);
  void FrameRateHandler(const live::Frame& f);
  void Spare1Handler(const live::Frame& f);
  void Spare2Handler(const live::Frame& f);
  void TrailingHandler();

  std::array<double, 8> SensorPoints(int first_position) const;

  LiveData& live_;
  Hooks hooks_;
  const CalibrationImage* calibration_ = nullptr;
  char separator_ = '.';
};

}  // namespace vela
