#include "link/faults/fault_codes.h"

#include "link/live/live_frame.h"

namespace vela {

void FaultCodeReader::Request() {
  if (waiting_) return;
  waiting_ = true;
  asked_at_ms_ = clock_.NowMs();
  // A request lost on the line ends as a wait that runs out (`on_no_answer`).
  static_cast<void>(sender_.Send(
      {fault_reply::kRequestCommand, fault_reply::kRequestAddress, fault_reply::kRequestValue}));
}

void FaultCodeReader::FaultReplyHandler(std::string& received) {
  if (!waiting_) return;
  for (std::size_t at = received.find(fault_reply::kMarker); at != std::string::npos;
       at = received.find(fault_reply::kMarker, at + 1)) {
    if (received.size() - at < fault_reply::kLength) return;  // the rest is on its way
    // A frame's data may spell a reply: it stays the frame's.
    const live::InFrameData in_frame = live::WithinFrameData(received, at, fault_reply::kLength);
    if (in_frame == live::InFrameData::kNotYetKnown) return;
    if (in_frame == live::InFrameData::kYes) continue;
    const std::optional<fault_reply::Reply> reply =
        fault_reply::Decode(std::string_view(received).substr(at));
    if (!reply) continue;
    received.erase(at, fault_reply::kLength);
    waiting_ = false;
    if (callbacks_.on_reply) callbacks_.on_reply(*reply);
    return;
  }
}

void FaultCodeReader::Tick() {
  if (!waiting_ || clock_.NowMs() - asked_at_ms_ < kAnswerWaitMs) return;
  waiting_ = false;
  if (callbacks_.on_no_answer) callbacks_.on_no_answer();
}

}  // namespace vela
