// The calibration upload (ECU to PC): the upload timer prepares the link and asks for the
// calibration with growing pauses; the reply handler finds "ALL", the 1023-byte block and "DONE"
// in the receive buffer and hands the block on, after which the timer stops.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "calibration/calibration_image.h"
#include "link/link_state.h"
#include "link/receive_display.h"
#include "link/serial_port.h"

namespace vela {

class CalibrationUpload {
 public:
  struct Callbacks {
    // `ApplyUploadedCalibration`: a complete block.
    std::function<void(const CalibrationImage&)> on_block;
    // The upload timer was started, stopped or given a new interval.
    std::function<void(bool enabled, int interval_ms)> on_timer;
  };

  static constexpr std::string_view kAllMarker = "ALL";
  static constexpr std::string_view kDoneMarker = "DONE";
  static constexpr std::size_t kDoneDistance = 1026;  // from the "A" of "ALL" to the "D"
  static constexpr std::size_t kReplyLength = kDoneDistance + 4;
  static constexpr int kPrepareCommand = 4;
  static constexpr int kPrepareAddress = 864;
  static constexpr int kPrepareFirstValue = 8;
  static constexpr int kPrepareSecondValue = 15;
  static constexpr int kRequestAddress = 770;
  static constexpr int kRequestValue = 1284;
  static constexpr std::int16_t kMaxRequestCount = 100;

  CalibrationUpload(SerialPort& port, CommandSender& sender, LinkState& state, LinkDisplay& display,
                    Callbacks callbacks = {})
      : port_(port),
        sender_(sender),
        state_(state),
        display_(display),
        callbacks_(std::move(callbacks)) {}

  // Starts the upload timer (at the end of the start-up measurement).
  void EnableTimer();
  // One tick of `UploadTimer`.
  void UploadTimer();
  void RequestUpload();
  // Called by the dispatcher on every dispatch while data is arriving.
  void UploadReplyHandler(std::string& RxBuffer);
  void UploadProgressHandler(const std::string& RxBuffer);
  // True while a reply has begun at the start of `RxBuffer` and is not yet whole. Until it is,
  // nothing in it can be told from the block's own bytes, which may spell a live frame, and the
  // ECU sends nothing else before the reply ends.
  bool ReplyIncomplete(const std::string& RxBuffer) const;
  // The link was lost: the next complete block is taken again. Restarts a finished upload from
  // the link preparation.
  void Rearm();

  // The selected entry (1 to 5) of the request form's option list; 0 = none, the code stays.
  void SetRequestCode(int selected_entry);
  void SetUploadBlocked(bool blocked) { upload_blocked_ = blocked; }
  void SetCallbacks(Callbacks callbacks) { callbacks_ = std::move(callbacks); }

  bool UploadExpected() const { return upload_expected_; }
  bool UploadStarted() const { return upload_started_; }
  bool UploadRequested() const { return upload_requested_; }
  bool UploadBlocked() const { return upload_blocked_; }
  std::int32_t UploadAllPos() const { return upload_all_pos_; }
  std::int32_t UploadDonePos() const { return upload_done_pos_; }
  std::int16_t UploadRequestCount() const { return upload_request_count_; }
  std::int16_t UploadStep() const { return upload_step_; }
  int RequestCode() const { return request_code_; }
  bool TimerEnabled() const { return timer_enabled_; }
  int TimerIntervalMs() const { return timer_interval_ms_; }

 private:
  void BackOff();
  void TakeReply(std::string& rx_buffer);
  void SetTimer(bool enabled, int interval_ms);

  SerialPort& port_;
  CommandSender& sender_;
  LinkState& state_;
  LinkDisplay& display_;
  Callbacks callbacks_;

  bool upload_expected_ = true;
  bool upload_started_ = false;
  bool upload_requested_ = false;
  bool upload_blocked_ = false;
  std::int32_t upload_all_pos_ = 0;
  std::int32_t upload_done_pos_ = 0;
  std::int16_t upload_request_count_ = 0;
  std::int16_t upload_step_ = 0;
  int request_code_ = 1;
  bool timer_enabled_ = false;
  int timer_interval_ms_ = 800;
};

}  // namespace vela
