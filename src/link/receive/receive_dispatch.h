// The receive timer and the dispatcher: `TimerCommProcess` keeps the port open and runs
// `CommsReceiveDispatch` one to six times a tick; each dispatch lets the upload look at the
// buffer, takes at most one whole live frame out of the receive buffer and runs the receive
// handlers.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>

#include "base/platform.h"
#include "link/link_state.h"
#include "link/live/live_frame.h"
#include "link/receive/receive_buffer.h"
#include "link/receive/receive_display.h"
#include "link/receive/receive_handlers.h"
#include "link/receive/receive_timing.h"
#include "link/serial_port.h"
#include "link/transfer/upload.h"

namespace vela {

class ReceiveDispatcher {
 public:
  static constexpr float kBacklogTrimFactor = 14400.0f;  // x `RxBacklogFactor`: 147,600
  static constexpr float kDamagedDropFactor = 2000.0f;   // x `RxBacklogFactor`: 20,500
  static constexpr std::size_t kTrimSearchBack = 60;
  static constexpr std::size_t kTrimKeepBeforeStart = 38;
  static constexpr std::size_t kTrimKeep = 71;
  // A closed port is opened again on the next tick. While that keeps failing (the device is gone:
  // a cable pulled, an adapter unplugged) the tries wait from kReopenFirstWaitMs, doubling up to
  // kReopenLongestWaitMs: each try writes the port's lock file and syncs the disk.
  static constexpr std::int64_t kReopenFirstWaitMs = 125;
  static constexpr std::int64_t kReopenLongestWaitMs = 1000;

  ReceiveDispatcher(SerialPort& port, Clock& clock, LinkState& state, LinkDisplay& display,
                    ReceiveBuffer& buffer, CalibrationUpload& upload, ReceiveHandlers& handlers)
      : port_(port),
        clock_(clock),
        state_(state),
        display_(display),
        buffer_(buffer),
        upload_(upload),
        handlers_(handlers) {}

  // One tick of `TimerCommProcess`.
  void TimerCommProcess();
  // The dispatcher; `FirstCall` is true on a tick's first call.
  void CommsReceiveDispatch(bool& FirstCall);

  // True when a tick now could only wait for more data: the port is open and either no data is
  // pending or the receive buffer holds no whole or damaged frame ("START" with an "END" after it).
  // Nothing but the receive event changes that, so the ticks may rest until it runs again.
  bool WaitsForData() const;
  // While the port is closed, how long until the tick tries to open it again (0: at once, or the
  // port is open).
  std::int64_t MsUntilReopen() const;

  // The port the tick reopens after an error ("CommPort N").
  void SetPortNumber(int port_number) { port_number_ = port_number; }
  // Take a new frame only every `limit`-th whole frame found (1: every frame).
  void SetFrameCounterLimit(std::int16_t limit) { frame_counter_limit_ = limit; }
  void SetRxSkip(std::int32_t skip) { rx_skip_ = skip; }
  // Called with every new frame taken, after the handlers (the datalog capture).
  void SetFrameHook(std::function<void(const live::Frame&)> hook) { on_frame_ = std::move(hook); }
  // Called on every dispatch while data arrives and no calibration reply is under way, after the
  // upload's handler and before the frame search, with the receive buffer: another text reply of
  // the ECU (the fault codes) is taken out here.
  void SetReplyHandler(std::function<void(std::string&)> handler) {
    on_reply_ = std::move(handler);
  }
  void ResetFrameCounter() { frame_counter_ = 0; }

  const live::Frame& last_frame() const { return last_frame_; }
  std::int16_t FrameCounter() const { return frame_counter_; }
  float RxBacklogFactor() const { return rx_backlog_factor_; }
  bool InDispatch() const { return in_dispatch_; }

 private:
  void ReopenPort();
  void Dispatch();
  void TakeWholeFrame(std::string& received, std::size_t start);
  void TrimBacklog(std::string& received) const;
  void RunHandlers();

  SerialPort& port_;
  Clock& clock_;
  LinkState& state_;
  LinkDisplay& display_;
  ReceiveBuffer& buffer_;
  CalibrationUpload& upload_;
  ReceiveHandlers& handlers_;
  std::function<void(const live::Frame&)> on_frame_;
  std::function<void(std::string&)> on_reply_;

  live::Frame last_frame_{};
  std::uint8_t rx_frame_length_ = live::kStartToEnd;
  std::int32_t rx_skip_ = 0;
  float rx_backlog_factor_ = 10.25f;
  std::int16_t frame_counter_ = 0;
  std::int16_t frame_counter_limit_ = kDefaultFrameCounterLimit;
  int port_number_ = 1;
  std::int64_t reopen_wait_ms_ = 0;  // 0 until a reopen failed
  std::int64_t next_reopen_ms_ = 0;
  bool in_dispatch_ = false;
};

}  // namespace vela
