// A CommandSender that records every frame it is given instead of putting it on the line.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "link/link_state.h"

namespace vela::testing {

// A frame as the ECU sees it: what travels on the wire.
struct SentFrame {
  int command;
  int address;
  std::int32_t value;
  bool operator==(const SentFrame&) const = default;
};

class RecordingSender : public CommandSender {
 public:
  SendResult Send(const CommandFrame& frame) override {
    frames.push_back({frame.command, frame.address, frame.value});
    pre_waits.push_back(frame.pre_wait);
    if (on_send) on_send();
    return {.outcome = outcome};
  }
  std::vector<SentFrame> frames;
  std::vector<bool> pre_waits;  // each frame's pre-frame wait, in order
  std::function<void()> on_send;
  SendOutcome outcome = SendOutcome::kSent;  // what every send reports
};

}  // namespace vela::testing
