// A CommandSender that records every frame it is given instead of putting it on the line.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "link/link_state.h"

namespace vela::testing {

struct SentFrame {
  int command;
  int address;
  std::int32_t value;
  bool operator==(const SentFrame&) const = default;
};

class RecordingSender : public CommandSender {
 public:
  void CommsSend(int command, int address, std::int32_t value, bool&, bool&, int command2,
                 int address2, std::int32_t value2, bool&) override {
    frames.push_back({command, address, value});
    if (command2 > 0) {
      frames.push_back({command2, address2, value2});
      ++second_frames;
    }
    if (on_send) on_send();
  }
  std::vector<SentFrame> frames;
  int second_frames = 0;
  std::function<void()> on_send;
};

}  // namespace vela::testing
