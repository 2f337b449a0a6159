// The receive event: bytes the serial port delivers are gathered into the receive buffer, one
// character per byte, within fixed limits so that the dispatcher always works on fresh data.
//
// A calibration reply is the one exception. Once a reply has started (the program waits for
// one, the link is connected and an "ALL" that is no live frame's data, FindReplyStart, stands in
// the buffer or in the chunk just read), neither the 1000-character limit nor the cut of a
// 500-byte read may drop it before it is complete: the chunk is kept whole, the port's input is
// not emptied, and the buffer is held from "ALL" on, at most a reply and 1000 characters long.
// Without a reply under way every rule stands as written.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <utility>

#include "link/link_state.h"
#include "link/receive/receive_display.h"
#include "link/serial_port.h"
#include "link/transfer/upload.h"

namespace vela {

// Event codes of the port's communication event.
inline constexpr int kDataReceived = 2;
inline constexpr int kReceiveOverflow = 1008;

class ReceiveBuffer {
 public:
  static constexpr std::size_t kChunkLimit = 500;
  static constexpr std::size_t kBufferLimit = 1000;
  static constexpr std::size_t kDebugBufferLimit = 10'000;
  static constexpr std::size_t kOverflowTextLength = 5;

  ReceiveBuffer(SerialPort& port, LinkState& state, LinkDisplay& display)
      : port_(port), state_(state), display_(display) {}

  // The port's communication event. The Qt side calls it with kDataReceived whenever the port
  // has bytes ready and with kReceiveOverflow when its input buffer overran; the bytes are read
  // here, through the port.
  void OnCommEvent(int event_code);

  // Tells whether the program waits for a calibration reply (the upload's `UploadExpected`).
  void SetReplyExpected(std::function<bool()> expected) { reply_expected_ = std::move(expected); }
  // The longest the buffer grows while a reply is under way: the reply and what may follow it.
  static constexpr std::size_t kReplyHoldLimit = CalibrationUpload::kReplyLength + kBufferLimit;

  std::string& received() { return received_; }
  const std::string& received() const { return received_; }
  bool InReceive() const { return in_receive_; }

 private:
  void TakeChunk();
  void CutBurst(std::string& chunk);
  void Keep(const std::string& chunk);
  // Holds the buffer from `reply_start`, where the reply begins once `chunk` is added.
  void KeepReply(const std::string& chunk, std::size_t reply_start);
  // Where a reply under way begins in the buffer with `chunk` added, or npos when none is.
  std::size_t ReplyStart(const std::string& chunk) const;

  SerialPort& port_;
  LinkState& state_;
  LinkDisplay& display_;
  std::string received_;
  bool in_receive_ = false;
  std::function<bool()> reply_expected_;
};

}  // namespace vela
