#include "sim/core/output_wire.h"

#include <algorithm>

namespace vela::sim {

OutputWire::OutputWire(double byte_time_us, int chunk_max_bytes, std::int64_t chunk_gap_us,
                       std::uint64_t seed)
    : byte_time_us_(std::max(byte_time_us, 0.0)),
      chunk_max_bytes_(std::max(chunk_max_bytes, 0)),
      chunk_gap_us_(std::max<std::int64_t>(chunk_gap_us, 0)),
      rng_(seed) {}

void OutputWire::Queue(std::vector<std::uint8_t> bytes, std::int64_t at_us, bool burst,
                       int piece_bytes) {
  if (bytes.empty()) return;
  if (queue_.empty()) free_at_us_ = std::max(free_at_us_, static_cast<double>(at_us));
  backlog_ += bytes.size();
  queue_.push_back(Message{std::move(bytes), 0, burst, std::max(piece_bytes, 0)});
}

void OutputWire::SendUntil(std::int64_t until_us, std::vector<std::uint8_t>& out) {
  while (!queue_.empty() && free_at_us_ <= static_cast<double>(until_us)) {
    Message& message = queue_.front();
    if (message.burst) {
      out.insert(out.end(), message.bytes.begin() + message.sent, message.bytes.end());
      backlog_ -= message.bytes.size() - message.sent;
      queue_.pop_front();
      continue;
    }
    out.push_back(message.bytes[message.sent++]);
    --backlog_;
    ByteSent();
    if (message.piece_bytes > 0 &&
        message.sent % static_cast<std::size_t>(message.piece_bytes) == 0) {
      free_at_us_ += static_cast<double>(chunk_gap_us_);
    }
    if (message.sent == message.bytes.size()) queue_.pop_front();
  }
}

void OutputWire::ByteSent() {
  free_at_us_ += byte_time_us_;
  if (chunk_max_bytes_ == 0) return;
  if (chunk_left_ <= 0) chunk_left_ = rng_.Int(1, chunk_max_bytes_);
  if (--chunk_left_ == 0) free_at_us_ += static_cast<double>(chunk_gap_us_);
}

void OutputWire::Clear() {
  queue_.clear();
  backlog_ = 0;
  chunk_left_ = 0;
}

}  // namespace vela::sim
