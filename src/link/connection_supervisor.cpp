#include "link/connection_supervisor.h"

namespace vela {

ConnectionSupervisor::ConnectionSupervisor(LinkState& state, LinkDisplay& display, LiveData& live,
                                           CalibrationUpload& upload, Callbacks callbacks)
    : state_(state),
      display_(display),
      live_(live),
      upload_(upload),
      callbacks_(std::move(callbacks)) {
  state_.Caption = std::string(kCaptionNotConnected);
}

void ConnectionSupervisor::CommsTimer() {
  if (state_.RxPending != 0) {
    WhileConnected();
  } else {
    WhileLost();
  }
  if (state_.RxPending > 0) --state_.RxPending;
  if (state_.StallCounter > 0) --state_.StallCounter;
  if (display_.status.text != "UPLOAD" && display_.status.text != "ERR") {
    display_.status.text = std::to_string(state_.RxPending);
  }
}

// The indicator shows recent send aborts (the stall counter, set to 100 by an abort and run
// down here by one a tick) apart from a healthy link.
void ConnectionSupervisor::WhileConnected() {
  SetCaption(kCaptionConnected);
  display_.link_indicator = state_.StallCounter >= kStallLookLevel
                                ? LabelLook{"Stalled", kLinkStalled}
                                : LabelLook{"Connected", kLabelGreen};
}

void ConnectionSupervisor::WhileLost() {
  if (!hold_display_) {
    live_.Clear();
    if (callbacks_.on_display_reset) callbacks_.on_display_reset();
  }
  const bool lost_now = SetCaption(kCaptionNotConnected);
  display_.datalog_button_text = "Start DataLogging";
  upload_.Rearm();
  display_.status.colour = kLabelGreen;
  if (callbacks_.refill_engine_rate_average) callbacks_.refill_engine_rate_average();
  display_.link_indicator = {"Not Connected", kIndicatorGrey};
  if (lost_now && callbacks_.on_link_lost) callbacks_.on_link_lost();
}

bool ConnectionSupervisor::SetCaption(std::string_view caption) {
  if (state_.Caption == caption) return false;
  state_.Caption = std::string(caption);
  if (callbacks_.on_caption) callbacks_.on_caption(state_.Caption);
  return true;
}

}  // namespace vela
