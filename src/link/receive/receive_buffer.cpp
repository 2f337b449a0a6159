#include "link/receive/receive_buffer.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "link/transfer/upload.h"

namespace vela {
namespace {

std::string AsText(const std::vector<std::uint8_t>& bytes) {
  return std::string(bytes.begin(), bytes.end());
}

}  // namespace

void ReceiveBuffer::OnCommEvent(int event_code) {
  if (in_receive_ || !port_.IsOpen()) return;
  in_receive_ = true;
  if (event_code == kReceiveOverflow) {
    display_.last_overflow_text = AsText(port_.ReadAll()).substr(0, kOverflowTextLength);
  }
  if (event_code == kDataReceived) TakeChunk();
  in_receive_ = false;
}

void ReceiveBuffer::TakeChunk() {
  state_.RxPending = static_cast<std::uint8_t>(std::clamp<int>(state_.RxLevel, 0, 255));
  const bool burst = port_.BytesWaiting() >= kChunkLimit;
  std::string chunk = AsText(port_.ReadAll());
  const std::size_t reply_start = ReplyStart(chunk);
  const bool reply = reply_start != std::string::npos;
  if (!reply && (burst || chunk.size() >= kChunkLimit) && !state_.RxDebug) CutBurst(chunk);
  display_.last_chunk_length = chunk.size();
  if (reply) {
    KeepReply(chunk, reply_start);
  } else {
    Keep(chunk);
  }
}

std::size_t ReceiveBuffer::ReplyStart(const std::string& chunk) const {
  if (!reply_expected_ || !reply_expected_() || state_.RxDebug) return std::string::npos;
  if (state_.CaptionSaysNotConnected()) return std::string::npos;
  // The buffer and the chunk together: a reply's "ALL" may be split between them.
  return FindReplyStart(received_ + chunk);
}

// A burst of kChunkLimit bytes or more is cut to its first kChunkLimit characters and the rest
// of the port's input is thrown away.
void ReceiveBuffer::CutBurst(std::string& chunk) {
  chunk.resize(std::min(chunk.size(), kChunkLimit));
  port_.ClearInput();
  ++display_.overflow_count;
}

// The reply is held from "ALL" on, whatever the chunk sizes, up to a reply and what follows it.
void ReceiveBuffer::KeepReply(const std::string& chunk, std::size_t reply_start) {
  received_ += chunk;
  received_.erase(0, reply_start);
  if (received_.size() > kReplyHoldLimit) received_.resize(kReplyHoldLimit);
}

void ReceiveBuffer::Keep(const std::string& chunk) {
  const bool connected = !state_.CaptionSaysNotConnected();
  if (connected && !state_.RxDebug && received_.size() < kBufferLimit) {
    received_ += chunk;
  } else if (received_.size() < kDebugBufferLimit && state_.RxDebug) {
    received_ += chunk;
  } else {
    received_.clear();
    ++display_.overflow_count;
  }
}

}  // namespace vela
