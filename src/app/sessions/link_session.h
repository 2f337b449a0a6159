// The ECU link as the program runs it: the link cores wired together, the main form's timers
// that drive them, and the serial port's events passed in. The main window shows what the cores
// put into the link display and the live data set.
#pragma once

#include <QObject>
#include <QTimer>
#include <memory>

#include "base/qt/qt_platform.h"
#include "base/startup_trace.h"
#include "calibration/calibration_image.h"
#include "link/comms_sender.h"
#include "link/connection_supervisor.h"
#include "link/delay_loop.h"
#include "link/engine_rate.h"
#include "link/link_state.h"
#include "link/link_timing.h"
#include "link/live/live_data.h"
#include "link/receive/receive_buffer.h"
#include "link/receive/receive_dispatch.h"
#include "link/receive/receive_handlers.h"
#include "link/transfer/upload.h"

namespace vela {

class QtSerialPort;

class LinkSession : public QObject {
  Q_OBJECT

 public:
  LinkSession(QtSerialPort& port, StartupTrace& trace, QObject* parent = nullptr);

  // Starts the receive and supervision timers; the speed measurement follows when the window is up.
  void Start();
  // `CountsPerMSTimer`: measures the PC once the window is shown, then enables the upload timer.
  void StartCountsPerMsTimer(StatusLabel& status_label);
  // The rate choice changed: recompute the value and send it through `TimerCommsSpeed`.
  void RateChosen(int index);
  // The rate choice as read from the settings: the value is recomputed, and goes to the ECU
  // with the next rate command (the one that ends an upload).
  void RateSet(int index);
  void PacketSpeedChosen(int choice);  // 0..5: `CommsRepeat` 1..6
  void SlowSendChosen(bool on);
  void SetCommsDelayEnabled(bool on) { state_.CommsDelayEnabled = on; }
  // Forces a fresh upload from the ECU (the U key).
  void ForceUpload();
  // The calibration whose sensor points the temperature read-outs use.
  void UseCalibration(const CalibrationImage* image) { handlers_.SetCalibration(image); }
  // The air-fuel value of a lambda reading in the display choice in force.
  void SetAfrValue(ReceiveHandlers::AfrValue afr_value) {
    handlers_.SetAfrValue(std::move(afr_value));
  }
  // The injector duty base of the engine set-up, for the live duty read-out.
  void SetDutyBase(double base) { handlers_.SetDutyBase(base); }
  // Shutdown: the closing command unless a transfer holds the link.
  void Close();

  LinkState& state() { return state_; }
  const LinkDisplay& display() const { return display_; }
  LiveData& live() { return live_; }
  CommandSender& sender() { return sender_; }
  // True while the port is open and the ECU connected: the line can carry a download.
  bool LineReady() const;
  ReceiveDispatcher& dispatcher() { return dispatcher_; }
  CalibrationUpload& upload() { return upload_; }
  // How long the dispatcher's tick waits between ticks now: the usual interval, or longer while
  // the tries of a port that will not open are spaced out.
  int TickIntervalMs() const { return timer_comm_process_.interval(); }

 signals:
  void CaptionChanged(const QString& caption);
  // Counters, indicators or labels of the link display may have changed.
  void DisplayChanged();
  void LiveDataChanged();
  void DisplaysReset();
  // A complete calibration block from the ECU, once the dispatch that found it has ended: what
  // it leads to (filling the editors, the questions and notes it raises) never runs inside the
  // receive path, where a modal box would stop the port's events and the dispatcher.
  void CalibrationReceived(const CalibrationImage& image);
  // Every new live frame the dispatcher takes, after the handlers have run.
  void FrameTaken(const live::Frame& frame);
  // The caption has just changed to not connected.
  void LinkLost();

 private:
  void WireCallbacks();
  void OnBlock(const CalibrationImage& image);
  // One tick of `TimerCommProcess`, after which the timer rests if the dispatcher waits for data.
  void Tick();
  // Starts the dispatcher's tick again if it rested (and the link has not been closed); true
  // when it did.
  bool WakeDispatcher();

  QtSerialPort& port_;
  StartupTrace& trace_;
  QtClock clock_;
  LinkState state_;
  LinkDisplay display_;
  LiveData live_;
  DelayLoop delay_;
  CommsSender sender_;
  LinkTiming timing_;
  EngineRate engine_rate_;
  CalibrationUpload upload_;
  ReceiveHandlers handlers_;
  ReceiveBuffer buffer_;
  ReceiveDispatcher dispatcher_;
  ConnectionSupervisor supervisor_;

  QTimer timer_comm_process_;
  QTimer comms_timer_;
  QTimer upload_timer_;
  QTimer comms_speed_timer_;
  bool running_ = false;
};

}  // namespace vela
