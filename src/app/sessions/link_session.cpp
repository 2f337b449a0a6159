#include "app/sessions/link_session.h"

#include <algorithm>

#include "link/qt/qt_serial_port.h"
#include "link/receive/receive_timing.h"

namespace vela {

LinkSession::LinkSession(QtSerialPort& port, StartupTrace& trace, QObject* parent)
    : QObject(parent),
      port_(port),
      trace_(trace),
      delay_(clock_, state_),
      sender_(port, clock_, state_, delay_),
      timing_(delay_, state_, sender_),
      engine_rate_(state_),
      upload_(port, sender_, clock_, state_, display_),
      handlers_(live_),
      buffer_(port, state_, display_),
      dispatcher_(port, clock_, state_, display_, buffer_, upload_, handlers_),
      supervisor_(state_, display_, live_, upload_) {
  ApplyReceiveDefaults(state_);
  timer_comm_process_.setInterval(kTimerCommProcessIntervalMs);
  comms_timer_.setInterval(kCommsTimerIntervalMs);
  comms_speed_timer_.setSingleShot(true);
  comms_speed_timer_.setInterval(0);
  WireCallbacks();
}

void LinkSession::WireCallbacks() {
  connect(&port_, &QtSerialPort::DataReceived, this, [this] {
    buffer_.OnCommEvent(kDataReceived);
    // While a calibration reply is awaited, bytes are taken as they come and a reply is handed
    // on the moment it is complete, without waiting for the dispatcher's next tick.
    if (upload_.UploadExpected()) {
      bool first_call = true;
      dispatcher_.CommsReceiveDispatch(first_call);
    }
    port_.set_receive_window_ms(upload_.UploadExpected() ? 0 : QtSerialPort::kReceiveWindowMs);
    // A resting tick wakes with the data: its first tick is now, the next ones follow every
    // kTimerCommProcessIntervalMs while whole frames wait.
    if (WakeDispatcher()) Tick();
    emit DisplayChanged();
  });
  // A closed port wakes it too: the tick opens the port again.
  connect(&port_, &QtSerialPort::Closed, this, [this] { WakeDispatcher(); });
  connect(&timer_comm_process_, &QTimer::timeout, this, [this] {
    Tick();
    emit DisplayChanged();
  });
  connect(&comms_timer_, &QTimer::timeout, this, [this] {
    supervisor_.CommsTimer();
    emit DisplayChanged();
  });
  connect(&upload_timer_, &QTimer::timeout, this, [this] {
    port_.set_receive_window_ms(upload_.UploadExpected() ? 0 : QtSerialPort::kReceiveWindowMs);
    upload_.UploadTimer();
    emit DisplayChanged();
  });
  connect(&comms_speed_timer_, &QTimer::timeout, this, [this] { timing_.TimerCommsSpeed(); });

  buffer_.SetReplyExpected([this] { return upload_.UploadExpected(); });
  dispatcher_.SetFrameHook([this](const live::Frame& frame) { emit FrameTaken(frame); });
  handlers_.SetHooks({[this](std::uint32_t count) { engine_rate_.AddCount(count); },
                      [this](const LiveData&) { emit LiveDataChanged(); }});
  supervisor_.SetCallbacks({
      [this](const std::string& caption) { emit CaptionChanged(QString::fromStdString(caption)); },
      [this] { emit DisplaysReset(); },
      [this] { engine_rate_.Refill(0.0f); },
      [this] { emit LinkLost(); },
  });
  upload_.SetCallbacks({[this](const CalibrationImage& image) { OnBlock(image); },
                        [this](bool enabled, int interval_ms) {
                          if (!enabled) {
                            upload_timer_.stop();
                            return;
                          }
                          upload_timer_.start(interval_ms);
                        }});
}

void LinkSession::Start() {
  running_ = true;
  timer_comm_process_.start();
  comms_timer_.start();
}

// The tick rests once it could only wait for data (every whole frame taken, at most a part of
// the next one there) and wakes with the next arrival or a closed port; while a closed port
// cannot be opened it ticks only when the next try is due. Its ticks then fall on
// the arrivals instead of between them: at 60 frames a second the program wakes less than half
// as often, a frame is taken the moment it is complete, and a backlog still drains at a frame a
// tick.
void LinkSession::Tick() {
  dispatcher_.TimerCommProcess();
  // While a closed port cannot be opened, the next tick is the next try. Set before the tick
  // rests as well, so that a port opened again wakes it at the usual interval.
  const int interval = static_cast<int>(
      std::max<std::int64_t>(kTimerCommProcessIntervalMs, dispatcher_.MsUntilReopen()));
  if (timer_comm_process_.interval() != interval) timer_comm_process_.setInterval(interval);
  if (dispatcher_.WaitsForData()) timer_comm_process_.stop();
}

bool LinkSession::WakeDispatcher() {
  if (!running_ || timer_comm_process_.isActive()) return false;
  timer_comm_process_.start();
  return true;
}

void LinkSession::StartCountsPerMsTimer(StatusLabel& status_label) {
  QTimer::singleShot(0, this, [this, &status_label] {
    timing_.CountsPerMSTimer(trace_, status_label, [this] { upload_.EnableTimer(); });
    emit DisplayChanged();
  });
}

void LinkSession::RateChosen(int index) {
  timing_.ComputeCommsSpeed(index);
  comms_speed_timer_.start();
}

void LinkSession::RateSet(int index) { timing_.ComputeCommsSpeed(index); }

void LinkSession::PacketSpeedChosen(int choice) { state_.CommsRepeat = choice + 1; }

void LinkSession::SlowSendChosen(bool on) { state_.SlowSend = on; }

void LinkSession::ForceUpload() {
  upload_.Rearm();
  upload_.EnableTimer();
}

void LinkSession::Close() {
  running_ = false;
  timer_comm_process_.stop();
  comms_timer_.stop();
  upload_timer_.stop();
  sender_.SendClosingCommand();
}

void LinkSession::OnBlock(const CalibrationImage& image) {
  QMetaObject::invokeMethod(
      this, [this, image] { emit CalibrationReceived(image); }, Qt::QueuedConnection);
}

bool LinkSession::LineReady() const { return port_.IsOpen() && state_.CaptionSaysConnected(); }

}  // namespace vela

#include "moc_link_session.cpp"
