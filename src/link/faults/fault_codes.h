// Reading the ECU's fault codes: one request frame, then the reply is looked for in the receive
// buffer on every dispatch until it comes or the wait runs out. Only one request waits at a time;
// asking again while one waits is served by the answer on its way.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>

#include "base/platform.h"
#include "link/faults/fault_reply.h"
#include "link/link_state.h"

namespace vela {

class FaultCodeReader {
 public:
  struct Callbacks {
    std::function<void(const fault_reply::Reply&)> on_reply;
    // The ECU did not answer within kAnswerWaitMs.
    std::function<void()> on_no_answer;
  };

  // The reply is 16 characters, behind at most a live frame or a calibration reply on the line.
  static constexpr std::int64_t kAnswerWaitMs = 500;

  FaultCodeReader(CommandSender& sender, Clock& clock) : sender_(sender), clock_(clock) {}

  void SetCallbacks(Callbacks callbacks) { callbacks_ = std::move(callbacks); }

  // Sends the request, unless one already waits for its answer.
  void Request();
  // The dispatcher's call while data arrives: while a request waits, the first whole reply in
  // the receive buffer that is no live frame's data is taken out of it and passed on; a damaged one
  // is left for the frame search to pass over.
  void FaultReplyHandler(std::string& received);
  // The supervision tick: a request left unanswered too long ends with on_no_answer.
  void Tick();

  bool Waiting() const { return waiting_; }

 private:
  CommandSender& sender_;
  Clock& clock_;
  Callbacks callbacks_;
  bool waiting_ = false;
  std::int64_t asked_at_ms_ = 0;
};

}  // namespace vela
