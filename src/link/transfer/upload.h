// The calibration upload (ECU to PC): the upload timer prepares the link and asks for the
// calibration with growing pauses; the reply handler finds "ALL", the 1023-byte block and "DONE"
// in the receive buffer and hands the block on, after which the timer stops.
//
// Live data may spell "ALL" (a standing engine's period bytes can be 41 4C 4C), so an "ALL" is
// taken for the start of a reply only where it cannot be a frame's data, and a start that no
// whole reply follows within the reply's own time on the line is given up.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "base/platform.h"
#include "calibration/calibration_image.h"
#include "link/link_state.h"
#include "link/receive/receive_display.h"
#include "link/serial_port.h"

namespace vela {

// Where a calibration reply may begin in `text`: the first "ALL" that is not data of a live frame,
// or npos. An "ALL" within the 37 data bytes after a "START" whose "END" stands 42 characters on
// is that frame's data; one after a "START" whose end has not arrived yet cannot be told, so the
// search stops there (npos) until more bytes are in.
std::size_t FindReplyStart(std::string_view text);

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
  static constexpr int kPrepareFirstValue = 8;
  static constexpr int kPrepareSecondValue = 15;
  static constexpr int kRequestAddress = 770;
  static constexpr int kRequestValue = 1284;
  static constexpr std::int16_t kMaxRequestCount = 100;
  // How long a reply may take from its "ALL" to its "DONE": 1030 bytes of 10 bits at 115,200 baud
  // are 89.4 ms on the wire; the margin covers a USB adapter holding the last bytes up to its
  // 16 ms latency timer, the pieces a line or the system may deliver them in, and the tick
  // counter's few milliseconds (docs/link.md).
  static constexpr std::int64_t kReplyWireMs = 90;
  static constexpr std::int64_t kReplyTimeMs = 150;

  CalibrationUpload(SerialPort& port, CommandSender& sender, Clock& clock, LinkState& state,
                    LinkDisplay& display, Callbacks callbacks = {})
      : port_(port),
        sender_(sender),
        clock_(clock),
        state_(state),
        display_(display),
        callbacks_(std::move(callbacks)) {}

  // Starts the upload timer (at the end of the start-up measurement).
  void EnableTimer();
  // One tick of `UploadTimer`.
  void UploadTimer();
  void RequestUpload();
  // Called by the dispatcher on every dispatch while data is arriving.
  void UploadReplyHandler(std::string& received);
  void UploadProgressHandler(const std::string& received);
  // True while a reply has begun at the start of the receive buffer and is not yet whole. Until it
  // is, nothing in it can be told from the block's own bytes, which may spell a live frame, and the
  // ECU sends nothing else before the reply ends.
  bool ReplyIncomplete(const std::string& received) const;
  // The editors took a calibration from elsewhere (a map file going down to the ECU): the upload
  // is over as if its block had been handed on, timer stopped and flags cleared; a reply still on
  // its way is not taken. A lost link re-arms it as usual.
  void Complete();
  // While `held` returns true the upload timer's ticks send nothing, neither the link preparation
  // nor a request: a download runs (a reply would be a half-written image), or the program works
  // off-line (whatever came back would not be applied).
  void SetHeld(std::function<bool()> held) { held_ = std::move(held); }
  // The receive buffer was emptied: a reply under way went with it.
  void ReplyDropped() { upload_started_ = false; }
  // The link was lost: a reply under way is dead, and the next complete block is taken again.
  // Restarts a finished upload from the link preparation.
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
  // A reply start was seen at the start of `received`: notes when, and how far it reached in time.
  void FollowReply(const std::string& received, bool new_start);
  // True once a reply start has stood longer than a reply takes.
  bool ReplyOverdue() const;
  void TakeReply(std::string& received);
  void DropDamagedReply(std::string& received);
  void GiveUpReply(std::string& received);
  void SetTimer(bool enabled, int interval_ms);

  SerialPort& port_;
  CommandSender& sender_;
  Clock& clock_;
  LinkState& state_;
  LinkDisplay& display_;
  Callbacks callbacks_;
  std::function<bool()> held_;

  bool upload_expected_ = true;
  bool upload_started_ = false;
  bool upload_requested_ = false;
  bool upload_blocked_ = false;
  std::int32_t upload_all_pos_ = 0;
  std::int32_t upload_done_pos_ = 0;
  std::int64_t reply_seen_ms_ = 0;  // when the reply start under way was first seen
  std::size_t reply_reach_ = 0;     // characters of it that were there within its time
  std::int16_t upload_request_count_ = 0;
  std::int16_t upload_step_ = 0;
  int request_code_ = 1;
  bool timer_enabled_ = false;
  int timer_interval_ms_ = 800;
};

}  // namespace vela
