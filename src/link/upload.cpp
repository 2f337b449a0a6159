#include "link/upload.h"

#include <algorithm>
#include <span>

namespace vela {
namespace {

bool NotConnected(const LinkState& state) { return state.Caption.find("Not") != std::string::npos; }

}  // namespace

void CalibrationUpload::EnableTimer() { SetTimer(true, timer_interval_ms_); }

void CalibrationUpload::SetTimer(bool enabled, int interval_ms) {
  if (enabled == timer_enabled_ && interval_ms == timer_interval_ms_) return;
  timer_enabled_ = enabled;
  timer_interval_ms_ = interval_ms;
  if (callbacks_.on_timer) callbacks_.on_timer(enabled, interval_ms);
}

void CalibrationUpload::UploadTimer() {
  if (NotConnected(state_)) {
    if (port_.IsOpen() && upload_step_ < 1) {
      upload_step_ = 1;
      sender_.Send(kPrepareCommand, kPrepareAddress, kPrepareFirstValue);
    }
    return;
  }
  const bool reply_arriving = upload_started_;
  upload_requested_ = true;
  if (reply_arriving) return;
  if (port_.IsOpen() && upload_step_ < 2) {
    upload_step_ = 2;
    sender_.Send(kPrepareCommand, kPrepareAddress, kPrepareSecondValue);
    return;
  }
  BackOff();
  RequestUpload();
  display_.orange_block = "Upload Requested " + std::to_string(upload_request_count_);
}

// 800 ms between the first ten requests, 1600 ms up to the twentieth, 2200 ms from then on.
void CalibrationUpload::BackOff() {
  if (upload_request_count_ < kMaxRequestCount) ++upload_request_count_;
  const int interval = upload_request_count_ < 10 ? 800 : upload_request_count_ < 20 ? 1600 : 2200;
  SetTimer(timer_enabled_, interval);
}

void CalibrationUpload::RequestUpload() {
  if (state_.CommsSendAborted < 1) sender_.Send(request_code_, kRequestAddress, kRequestValue);
}

void CalibrationUpload::SetRequestCode(int selected_entry) {
  if (selected_entry >= 1 && selected_entry <= 5) request_code_ = selected_entry;
}

void CalibrationUpload::UploadReplyHandler(std::string& RxBuffer) {
  if (!upload_expected_) return;
  const std::size_t all = RxBuffer.find(kAllMarker);
  if (all == std::string::npos) {
    upload_started_ = false;
    if (display_.status.text == "UPLOAD") display_.status.colour = kLabelGreen;
    return;
  }
  RxBuffer.erase(0, all);
  upload_all_pos_ = 1;
  upload_started_ = true;
  display_.orange_block = "Upload Started";
  display_.status = {"UPLOAD", kLabelGreen};

  // Nothing is decided before the whole reply could be there: a block whose own bytes spell
  // "DONE", or whose tail could begin one, is no reason to drop it.
  if (RxBuffer.size() < kReplyLength) return;
  if (RxBuffer.compare(kDoneDistance, kDoneMarker.size(), kDoneMarker) == 0) {
    TakeReply(RxBuffer);
    return;
  }
  const std::size_t done = RxBuffer.find(kDoneMarker, kAllMarker.size());
  if (done != std::string::npos) {  // damaged: dropped, the next request brings a new one
    upload_done_pos_ = static_cast<std::int32_t>(done + 1);
    RxBuffer.erase(0, done);
    return;
  }
  // Cut short: no "DONE" where the block should have ended.
  RxBuffer.erase(0, kDoneDistance + 1);
  display_.status = {"ERR", kLabelRed};
}

void CalibrationUpload::TakeReply(std::string& rx_buffer) {
  upload_done_pos_ = static_cast<std::int32_t>(kDoneDistance + 1);
  display_.orange_block = "Upload Received";
  CalibrationImage image;
  const bool pass_on = !upload_blocked_;
  if (pass_on) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(rx_buffer.data());
    image.Assign(std::span(bytes + kAllMarker.size(), kImageLength));
  }
  upload_blocked_ = false;
  // Whatever followed the reply stays for the frame search.
  if (rx_buffer.size() >= 1000) {
    rx_buffer.erase(0, kReplyLength);
  } else {
    rx_buffer.erase(0, kDoneDistance + 2);
  }
  if (!pass_on) return;
  upload_expected_ = false;
  upload_started_ = false;
  display_.upload_progress = 100;
  display_.status.text.clear();
  SetTimer(false, timer_interval_ms_);
  if (callbacks_.on_block) callbacks_.on_block(image);
}

void CalibrationUpload::UploadProgressHandler(const std::string& RxBuffer) {
  if (!upload_started_) return;
  const std::size_t all = RxBuffer.find(kAllMarker);
  if (all == std::string::npos) return;
  const std::size_t received = std::min(RxBuffer.size() - all, kReplyLength);
  display_.upload_progress = static_cast<int>(received * 100 / kReplyLength);
}

bool CalibrationUpload::ReplyIncomplete(const std::string& RxBuffer) const {
  return upload_expected_ && upload_started_ && RxBuffer.size() < kReplyLength &&
         RxBuffer.starts_with(kAllMarker);
}

void CalibrationUpload::Rearm() {
  if (upload_expected_) return;
  upload_expected_ = true;
  upload_started_ = false;
  upload_step_ = 0;
  upload_request_count_ = 0;
  display_.upload_progress = 0;
  SetTimer(true, 800);
}

}  // namespace vela
