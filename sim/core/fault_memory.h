// The fault codes the ECU holds: each code once, in the order it was first recorded. The live
// frame carries how many are held and the newest; the fault code request is answered with the
// four newest.
#pragma once

#include <vector>

#include "link/faults/fault_reply.h"

namespace vela::sim {

class FaultMemory {
 public:
  static constexpr int kMaxHeld = 255;  // the live frame's count is one byte

  // Holds `code` as the newest; a code already held, 0 (no fault), a code outside a byte or a
  // full memory changes nothing.
  void Record(int code);

  int Held() const { return static_cast<int>(codes_.size()); }
  int Newest() const { return codes_.empty() ? 0 : codes_.back(); }
  // The answer to a fault code request.
  fault_reply::Reply Reply() const;

 private:
  std::vector<int> codes_;
};

}  // namespace vela::sim
