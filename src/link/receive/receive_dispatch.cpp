#include "link/receive/receive_dispatch.h"

#include <algorithm>
#include <array>

namespace vela {
namespace {

constexpr std::array<float, 5> kExtraDispatchThresholds = {1.7f, 2.5f, 3.5f, 4.5f, 5.5f};
constexpr std::size_t kNone = std::string::npos;

// The start of the first "START": the search goes by the first "S", and failing that by "ST".
std::size_t FindStart(const std::string& buffer) {
  const std::size_t s = buffer.find('S');
  if (s != kNone) return buffer.find(live::kStartMarker, s);
  const std::size_t st = buffer.find("ST");
  return st == kNone ? kNone : buffer.find(live::kStartMarker, st);
}

// The first frame's edges: its "START" and the first "END" after it (either kNone).
struct FrameEdges {
  std::size_t start;
  std::size_t end;
};
FrameEdges FindFrame(const std::string& buffer) {
  const std::size_t p = FindStart(buffer);
  return {p, p == kNone ? kNone : buffer.find(live::kEndMarker, p)};
}

}  // namespace

void ReceiveDispatcher::TimerCommProcess() {
  if (port_.IsOpen()) {
    reopen_wait_ms_ = 0;
  } else if (MsUntilReopen() == 0) {
    ReopenPort();
  }
  if (!port_.IsOpen() || state_.RxPending <= state_.RxThreshold) return;
  ++display_.tick_count;
  bool first_call = true;
  CommsReceiveDispatch(first_call);
  for (float threshold : kExtraDispatchThresholds) {
    if (state_.DispatchPerTick < threshold) continue;
    bool later_call = false;
    CommsReceiveDispatch(later_call);
  }
}

bool ReceiveDispatcher::WaitsForData() const {
  if (!port_.IsOpen()) return false;
  if (state_.RxPending <= state_.RxThreshold) return true;
  return FindFrame(buffer_.received()).end == kNone;
}

std::int64_t ReceiveDispatcher::MsUntilReopen() const {
  if (port_.IsOpen() || reopen_wait_ms_ == 0) return 0;
  return std::max<std::int64_t>(0, next_reopen_ms_ - clock_.NowMs());
}

// The Qt side closes the port on its first read or resource error; the tick then finds it
// closed and opens it again, at once the first time and then less and less often.
void ReceiveDispatcher::ReopenPort() {
  port_.Close();
  clock_.LetEventsRun();
  if (port_.Open(port_number_)) {
    reopen_wait_ms_ = 0;
  } else {
    reopen_wait_ms_ = std::clamp(2 * reopen_wait_ms_, kReopenFirstWaitMs, kReopenLongestWaitMs);
    next_reopen_ms_ = clock_.NowMs() + reopen_wait_ms_;
  }
  display_.receive_indicator.colour = kIndicatorPink;
}

void ReceiveDispatcher::CommsReceiveDispatch(bool& /*FirstCall*/) {
  if (in_dispatch_) return;
  in_dispatch_ = true;
  Dispatch();
  in_dispatch_ = false;
}

void ReceiveDispatcher::Dispatch() {
  std::string& received = buffer_.received();
  if (state_.RxPending > 0) {
    upload_.UploadReplyHandler(received);
    // Never inside a calibration reply: its image bytes may spell anything.
    if (on_reply_ && !upload_.UploadStarted()) on_reply_(received);
  } else {
    received.clear();
    upload_.ReplyDropped();
    display_.receive_indicator = {std::to_string(state_.RxPending), kIndicatorGrey};
  }
  upload_.UploadProgressHandler(received);
  // The frame search waits for a reply under way: a frame found inside it would be the block's
  // own bytes, and taking it would throw the reply away.
  if (upload_.ReplyIncomplete(received)) return;
  rx_frame_length_ = live::kStartToEnd;

  const auto [p, q] = FindFrame(received);
  if (p != kNone && q != kNone && q - p == rx_frame_length_) {
    TakeWholeFrame(received, p);
  } else if (p != kNone && q != kNone) {
    // "END" at the wrong distance: a damaged frame. The buffer goes only when it has grown long.
    if (received.size() > static_cast<std::size_t>(rx_backlog_factor_ * kDamagedDropFactor)) {
      received.clear();
    }
    RunHandlers();
  }
  // Otherwise no whole frame yet: the buffer waits for the next tick.
}

void ReceiveDispatcher::TakeWholeFrame(std::string& received, std::size_t start) {
  ++frame_counter_;
  if (frame_counter_ < frame_counter_limit_) {  // left for a later dispatch
    RunHandlers();
    return;
  }
  std::copy_n(received.begin() + static_cast<std::ptrdiff_t>(start), live::kFrameLength,
              last_frame_.begin());
  const std::int64_t keep_from =
      static_cast<std::int64_t>(start) + rx_frame_length_ + live::kEndMarker.size() + rx_skip_;
  received.erase(
      0, static_cast<std::size_t>(std::clamp<std::int64_t>(keep_from, 0, std::ssize(received))));
  TrimBacklog(received);
  frame_counter_ = 0;
  if (state_.RxPending > state_.RxThreshold) {
    display_.receive_indicator = {std::to_string(state_.RxPending), kLabelGreen};
  }
  RunHandlers();
  if (on_frame_) on_frame_(last_frame_);
}

// Only a debug capture can let the buffer grow this far: the last frame start and what follows
// it are kept, at most the last kTrimKeep characters.
void ReceiveDispatcher::TrimBacklog(std::string& received) const {
  if (received.size() <= static_cast<std::size_t>(rx_backlog_factor_ * kBacklogTrimFactor)) {
    return;
  }
  const std::size_t s = received.find(live::kStartMarker, received.size() - kTrimSearchBack - 1);
  if (s != kNone) received.erase(0, s >= kTrimKeepBeforeStart ? s - kTrimKeepBeforeStart : 0);
  if (received.size() > kTrimKeep) received.erase(0, received.size() - kTrimKeep);
}

void ReceiveDispatcher::RunHandlers() { handlers_.RunAll(last_frame_); }

}  // namespace vela
