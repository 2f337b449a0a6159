// The receive event: bytes the serial port delivers are gathered into `RxBuffer`, one character
// per byte, within fixed limits so that the dispatcher always works on fresh data.
#pragma once

#include <cstddef>
#include <string>

#include "link/link_state.h"
#include "link/receive_display.h"
#include "link/serial_port.h"

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

  std::string& RxBuffer() { return rx_buffer_; }
  const std::string& RxBuffer() const { return rx_buffer_; }
  bool InReceive() const { return in_receive_; }

 private:
  void TakeChunk();
  std::string ReadChunk();
  void Keep(const std::string& chunk);

  SerialPort& port_;
  LinkState& state_;
  LinkDisplay& display_;
  std::string rx_buffer_;
  bool in_receive_ = false;
};

}  // namespace vela
