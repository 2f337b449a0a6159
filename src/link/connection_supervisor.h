// `CommsTimer`: the link counts as connected while data keeps arriving. Every data-received
// event tops `RxPending` up to `RxLevel`; every tick here runs it down by one. While it is above
// zero the caption says connected; when it reaches zero the caption says not connected, the live
// displays are reset and the upload is re-armed for the ECU's return.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "link/link_state.h"
#include "link/live/live_data.h"
#include "link/receive/receive_display.h"
#include "link/transfer/upload.h"

namespace vela {

inline constexpr std::string_view kCaptionConnected =
    "MORVANE Engine Management System  -  Connected";
inline constexpr std::string_view kCaptionNotConnected =
    "MORVANE Engine Management System  - Not  Connected";

class ConnectionSupervisor {
 public:
  struct Callbacks {
    // The caption changed: the Qt side sets the window title.
    std::function<void(const std::string&)> on_caption;
    // The live displays were reset (the live data set is already cleared).
    std::function<void()> on_display_reset;
    // Every entry of the `EngineRate` averaging table gets the same value again.
    std::function<void()> refill_engine_rate_average;
    // The caption has just changed to not connected (datalogging stops with the link).
    std::function<void()> on_link_lost;
  };

  static constexpr std::int16_t kStallLookLevel = 20;

  // Starts in the not-connected state: sets that caption (without calling on_caption; the Qt
  // side reads `LinkState::Caption` for the first title).
  ConnectionSupervisor(LinkState& state, LinkDisplay& display, LiveData& live,
                       CalibrationUpload& upload, Callbacks callbacks = {});

  // One tick of `CommsTimer`.
  void CommsTimer();

  // While set, a lost link leaves the live displays as they stood.
  void SetHoldDisplay(bool hold) { hold_display_ = hold; }
  void SetCallbacks(Callbacks callbacks) { callbacks_ = std::move(callbacks); }
  bool Connected() const { return state_.Caption == kCaptionConnected; }

 private:
  void WhileConnected();
  void WhileLost();
  bool SetCaption(std::string_view caption);

  LinkState& state_;
  LinkDisplay& display_;
  LiveData& live_;
  CalibrationUpload& upload_;
  Callbacks callbacks_;
  bool hold_display_ = false;
};

}  // namespace vela
