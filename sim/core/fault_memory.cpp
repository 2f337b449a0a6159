#include "sim/core/fault_memory.h"

#include <algorithm>

namespace vela::sim {

void FaultMemory::Record(int code) {
  if (code <= 0 || code > 255 || Held() >= kMaxHeld) return;
  if (std::find(codes_.begin(), codes_.end(), code) != codes_.end()) return;
  codes_.push_back(code);
}

fault_reply::Reply FaultMemory::Reply() const {
  fault_reply::Reply reply;
  reply.held = Held();
  for (int i = 0; i < fault_reply::kCodesPerReply && i < Held(); ++i) {
    reply.codes[i] = codes_[codes_.size() - 1 - i];
  }
  return reply;
}

}  // namespace vela::sim
