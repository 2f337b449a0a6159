// The ECU's transmit line: a queue of messages sent one after another, one byte every byte time,
// so that the byte stream and the moment each byte leaves depend only on when the messages were
// queued. Optionally everything leaves in small pieces with pauses between them; a message can
// also be marked to leave all at once, as a burst.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

#include "sim/core/random.h"

namespace vela::sim {

class OutputWire {
 public:
  // `chunk_max_bytes` 0 sends without pauses; otherwise each piece holds 1 to that many bytes
  // (drawn from `seed`) and is followed by `chunk_gap_us` of quiet.
  OutputWire(double byte_time_us, int chunk_max_bytes, std::int64_t chunk_gap_us,
             std::uint64_t seed);

  // Queues `bytes` to leave from `at_us` on, after everything queued before. A burst ignores
  // the byte time and leaves as soon as it reaches the front of the queue. `piece_bytes` > 0
  // sends the message in pieces of that many bytes with the chunk gap after each.
  void Queue(std::vector<std::uint8_t> bytes, std::int64_t at_us, bool burst = false,
             int piece_bytes = 0);

  // Appends to `out` every byte whose time to leave has come by `until_us`.
  void SendUntil(std::int64_t until_us, std::vector<std::uint8_t>& out);

  // Bytes queued and not yet sent.
  std::size_t Backlog() const { return backlog_; }
  // Drops everything not yet sent.
  void Clear();

 private:
  struct Message {
    std::vector<std::uint8_t> bytes;
    std::size_t sent = 0;
    bool burst = false;
    int piece_bytes = 0;
  };

  void ByteSent();

  double byte_time_us_;
  int chunk_max_bytes_;
  std::int64_t chunk_gap_us_;
  Rng rng_;
  std::deque<Message> queue_;
  std::size_t backlog_ = 0;
  double free_at_us_ = 0;  // when the line can carry the next byte
  int chunk_left_ = 0;
};

}  // namespace vela::sim
