// The link's start-up speed measurement and the live-frame rate the ECU is asked to stream at.
// The main form's one-shot timers `CountsPerMSTimer` and `TimerCommsSpeed` are the methods of the
// same names here; the Qt side owns the timers and calls them once.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "base/program_settings.h"
#include "base/startup_trace.h"
#include "link/delay_loop.h"
#include "link/link_state.h"
#include "link/receive/receive_display.h"

namespace vela {

// One choice of the live-frame rate list: the text shown and the constants of the rate formula.
// One entry for each choice the saved setting accepts (kFramesPerSecondChoices).
struct LiveFrameRate {
  std::string_view text;
  double constant;  // C
  double exponent;  // E
};

inline constexpr std::array<LiveFrameRate, kFramesPerSecondChoices> kLiveFrameRates = {{
    {"60 Samples/Second", 3.0, 1.8},
    {"40 Samples/Second", 5.99, 1.5},
    {"30 Samples/Second", 8.98, 1.365},
    {"25 Samples/Second", 10.0, 1.3},
    {"20 Samples/Second", 13.0, 1.22},
    {"15 Samples/Second", 17.0, 1.12},
    {"12 Samples/Second", 21.0, 1.1},
    {"10 Samples/Second", 27.0, 1.033},
    {"8 Samples/Second", 33.0, 1.033},
    {"6 Samples/Second", 44.0, 1.028},
    {"4 Samples/Second", 66.0, 1.028},
}};

inline constexpr LabelColour kTestingRed{255, 50, 30};
inline constexpr LabelColour kMeasuredGrey{128, 128, 128};
inline constexpr LabelColour kReadyGreen{128, 255, 128};

// The main form's status label, as the start-up measurement writes to it.
class StatusLabel {
 public:
  virtual ~StatusLabel() = default;
  virtual void SetText(const std::string& text) = 0;
  virtual void SetColour(LabelColour colour) = 0;
};

class LinkTiming {
 public:
  LinkTiming(DelayLoop& delay, LinkState& link, CommandSender& sender)
      : delay_(delay), link_(link), sender_(sender) {}

  // Measures `CountsPerMS` four times, tracing each step, shows "elapsed  CountsPerMS" in the
  // status label, opens the link for sending (`PacingReady`), sends the live-frame rate, then
  // calls `enable_upload_timer`. Nothing goes out before: the rate is the run's first frame.
  void CountsPerMSTimer(StartupTrace& trace, StatusLabel& label,
                        const std::function<void()>& enable_upload_timer);

  // `CommsSpeedValue` = Int(C / DispatchPerTick^E) for the rate choice `index` (0 to 10), unless
  // `CommsSuspended`. An index outside the list changes nothing.
  void ComputeCommsSpeed(int index);

  // Sends `CommsSpeedValue` to the ECU (kSingleValueWrite at kLiveRateAddress, with
  // the pre-frame wait).
  void TimerCommsSpeed();

 private:
  DelayLoop& delay_;
  LinkState& link_;
  CommandSender& sender_;
};

}  // namespace vela
