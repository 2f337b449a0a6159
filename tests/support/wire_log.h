// What the simulated ECU took off the wire, from its log of command frames: every frame as a
// line, and the single-value writes among them.
#pragma once

#include <cstdio>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "support/recording_sender.h"

namespace vela::testing {

class WireLog {
 public:
  // The simulated ECU's log hook (called on its own thread).
  std::function<void(const std::string&)> Hook() {
    return [this](const std::string& line) {
      const std::lock_guard<std::mutex> lock(mutex_);
      lines_.push_back(line);
    };
  }
  // Every command frame taken since `mark`, as (command, address, value).
  std::vector<SentFrame> FramesSince(std::size_t mark) const {
    const std::lock_guard<std::mutex> lock(mutex_);
    std::vector<SentFrame> frames;
    for (std::size_t i = mark; i < lines_.size(); ++i) {
      int command = 0;
      int address = 0;
      int value = 0;
      if (std::sscanf(lines_[i].c_str(), "command %d address %d value %d", &command, &address,
                      &value) == 3) {
        frames.push_back({command, address, value});
      }
    }
    return frames;
  }
  // The single-value writes since `mark`, the live-rate register left out.
  std::vector<SentFrame> WritesSince(std::size_t mark) const {
    std::vector<SentFrame> writes;
    for (const SentFrame& frame : FramesSince(mark)) {
      if (frame.command == 4 && frame.address != 864) writes.push_back(frame);
    }
    return writes;
  }
  std::size_t Mark() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return lines_.size();
  }

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> lines_;
};

}  // namespace vela::testing
