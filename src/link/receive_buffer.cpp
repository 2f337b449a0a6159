#include "link/receive_buffer.h"

#include <algorithm>
#include <cstdint>
#include <vector>

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
  const std::string chunk = ReadChunk();
  display_.last_chunk_length = chunk.size();
  Keep(chunk);
}

// A burst of kChunkLimit bytes or more is cut to its first kChunkLimit characters and the rest
// of the port's input is thrown away, unless the debug view wants everything.
std::string ReceiveBuffer::ReadChunk() {
  const bool burst = port_.BytesWaiting() >= kChunkLimit;
  std::string chunk = AsText(port_.ReadAll());
  if ((burst || chunk.size() >= kChunkLimit) && !state_.RxDebug) {
    chunk.resize(std::min(chunk.size(), kChunkLimit));
    port_.ClearInput();
    ++display_.overflow_count;
  }
  return chunk;
}

void ReceiveBuffer::Keep(const std::string& chunk) {
  const bool connected = state_.Caption.find("Not") == std::string::npos;
  if (connected && !state_.RxDebug && rx_buffer_.size() < kBufferLimit) {
    rx_buffer_ += chunk;
  } else if (rx_buffer_.size() < kDebugBufferLimit && state_.RxDebug) {
    rx_buffer_ += chunk;
  } else {
    rx_buffer_.clear();
    ++display_.overflow_count;
  }
}

}  // namespace vela
