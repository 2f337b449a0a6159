// The faults the ECU has reported since the program started. Every live frame carries the number
// of codes the ECU holds and its newest code; a frame whose newest code is set, and differs from
// the frame before or comes with a higher number of codes, tells of a new fault. Codes read with
// a fault code request that were not seen before are added too. Each fault keeps the time it was
// first seen and how many times it was reported anew.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace vela {

struct SeenFault {
  int code = 0;
  std::int64_t first_seen = 0;  // in the caller's time
  int count = 0;                // times reported anew
  bool operator==(const SeenFault&) const = default;
};

class FaultWatch {
 public:
  // A live frame's fault fields. Returns the code when the frame tells of a new fault.
  std::optional<int> ObserveFrame(int held, int newest, std::int64_t now);
  // Codes read from the ECU (0 stands for none). Returns the codes not seen before, in order.
  std::vector<int> ObserveCodes(std::span<const int> codes, std::int64_t now);

  // In the order first seen.
  const std::vector<SeenFault>& Seen() const { return seen_; }
  // The latest new fault, until the tuner has looked at the list.
  std::optional<int> Unacknowledged() const { return unacknowledged_; }
  void Acknowledge() { unacknowledged_.reset(); }

 private:
  void Record(int code, std::int64_t now);

  std::vector<SeenFault> seen_;
  std::optional<int> unacknowledged_;
  bool any_frame_ = false;
  int last_held_ = 0;
  int last_newest_ = 0;
};

}  // namespace vela
