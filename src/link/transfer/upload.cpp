#include "link/transfer/upload.h"

#include <algorithm>
#include <span>

#include "link/live/live_frame.h"

namespace vela {

std::size_t FindReplyStart(std::string_view text) {
  constexpr std::string_view kAll = CalibrationUpload::kAllMarker;
  for (std::size_t at = text.find(kAll); at != std::string_view::npos;
       at = text.find(kAll, at + 1)) {
    switch (live::WithinFrameData(text, at, kAll.size())) {
      case live::InFrameData::kNo:
        return at;
      case live::InFrameData::kNotYetKnown:
        return std::string_view::npos;
      case live::InFrameData::kYes:
        break;
    }
  }
  return std::string_view::npos;
}

void CalibrationUpload::EnableTimer() { SetTimer(true, timer_interval_ms_); }

void CalibrationUpload::SetTimer(bool enabled, int interval_ms) {
  if (enabled == timer_enabled_ && interval_ms == timer_interval_ms_) return;
  timer_enabled_ = enabled;
  timer_interval_ms_ = interval_ms;
  if (callbacks_.on_timer) callbacks_.on_timer(enabled, interval_ms);
}

// The frames sent here need no check of their own: a lost one leaves no reply, and the ticks go on
// asking until one comes.
void CalibrationUpload::UploadTimer() {
  if (held_ && held_()) return;
  if (state_.CaptionSaysNotConnected()) {
    if (port_.IsOpen() && upload_step_ < 1) {
      upload_step_ = 1;
      static_cast<void>(sender_.Send({kSingleValueWrite, kLiveRateAddress, kPrepareFirstValue}));
    }
    return;
  }
  // A reply start that stood longer than a reply takes holds no request back.
  const bool reply_arriving = upload_started_ && !ReplyOverdue();
  upload_requested_ = true;
  if (reply_arriving) return;
  if (port_.IsOpen() && upload_step_ < 2) {
    upload_step_ = 2;
    static_cast<void>(sender_.Send({kSingleValueWrite, kLiveRateAddress, kPrepareSecondValue}));
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
  if (state_.CommsSendAborted >= 1) return;
  static_cast<void>(sender_.Send({request_code_, kRequestAddress, kRequestValue}));
}

void CalibrationUpload::SetRequestCode(int selected_entry) {
  if (selected_entry >= 1 && selected_entry <= 5) request_code_ = selected_entry;
}

void CalibrationUpload::UploadReplyHandler(std::string& received) {
  if (!upload_expected_) return;
  const std::size_t all = FindReplyStart(received);
  if (all == std::string::npos) {
    upload_started_ = false;
    if (display_.status.text == "UPLOAD") display_.status.colour = kLabelGreen;
    return;
  }
  const bool new_start = all > 0 || !upload_started_;
  received.erase(0, all);
  upload_all_pos_ = 1;
  upload_started_ = true;
  display_.orange_block = "Upload Started";
  display_.status = {"UPLOAD", kLabelGreen};
  FollowReply(received, new_start);

  // Nothing is decided before the whole reply could be there: a block whose own bytes spell
  // "DONE", or whose tail could begin one, is no reason to drop it.
  if (received.size() >= kReplyLength) {
    if (received.compare(kDoneDistance, kDoneMarker.size(), kDoneMarker) == 0) {
      TakeReply(received);
    } else {
      DropDamagedReply(received);
    }
    return;
  }
  // Bytes still waiting at the port may be the rest of it: they are read before it is judged.
  if (ReplyOverdue() && port_.BytesWaiting() == 0) GiveUpReply(received);
}

void CalibrationUpload::FollowReply(const std::string& received, bool new_start) {
  const std::int64_t now = clock_.NowMs();
  if (new_start) {
    reply_seen_ms_ = now;
    reply_reach_ = 0;
  }
  if (now - reply_seen_ms_ <= kReplyTimeMs) reply_reach_ = std::max(reply_reach_, received.size());
}

bool CalibrationUpload::ReplyOverdue() const {
  return upload_started_ && clock_.NowMs() - reply_seen_ms_ > kReplyTimeMs;
}

// A damaged reply goes whole, so that no byte of its block is ever searched as a live frame or
// another reply: all 1030 characters a reply takes, or up to its "DONE" when that stands one
// place early or late. Only a reply with no "DONE" at all is reported.
void CalibrationUpload::DropDamagedReply(std::string& received) {
  const std::size_t done = received.rfind(kDoneMarker, kDoneDistance + 1);
  std::size_t end = kReplyLength;
  if (done != std::string::npos && done >= kAllMarker.size()) {
    upload_done_pos_ = static_cast<std::int32_t>(done + 1);
    if (done + 1 >= kDoneDistance) end = done + kDoneMarker.size();
  } else {
    display_.status = {"ERR", kLabelRed};
  }
  received.erase(0, end);
  upload_started_ = false;
}

// No whole reply followed its start in the time a reply takes: a stray "ALL" in live data, or a
// reply cut short. What arrived within that time may be the reply's own bytes and goes with it;
// what came later is searched afresh.
void CalibrationUpload::GiveUpReply(std::string& received) {
  const std::size_t reach = std::clamp(reply_reach_, kAllMarker.size(), kReplyLength);
  received.erase(0, std::min(reach, received.size()));
  upload_started_ = false;
  display_.status = {"ERR", kLabelRed};
}

void CalibrationUpload::TakeReply(std::string& received) {
  upload_done_pos_ = static_cast<std::int32_t>(kDoneDistance + 1);
  display_.orange_block = "Upload Received";
  CalibrationImage image;
  const bool pass_on = !upload_blocked_;
  if (pass_on) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(received.data());
    image.Assign(std::span(bytes + kAllMarker.size(), kImageLength));
  }
  upload_blocked_ = false;
  // Whatever followed the reply stays for the frame search.
  if (received.size() >= 1000) {
    received.erase(0, kReplyLength);
  } else {
    received.erase(0, kDoneDistance + 2);
  }
  if (!pass_on) return;
  display_.upload_progress = 100;
  display_.status.text.clear();
  Complete();
  if (callbacks_.on_block) callbacks_.on_block(image);
}

void CalibrationUpload::UploadProgressHandler(const std::string& received) {
  if (!upload_started_ || !received.starts_with(kAllMarker)) return;
  const std::size_t arrived = std::min(received.size(), kReplyLength);
  display_.upload_progress = static_cast<int>(arrived * 100 / kReplyLength);
}

bool CalibrationUpload::ReplyIncomplete(const std::string& received) const {
  return upload_expected_ && upload_started_ && received.size() < kReplyLength &&
         received.starts_with(kAllMarker);
}

void CalibrationUpload::Complete() {
  upload_expected_ = false;
  upload_started_ = false;
  upload_requested_ = false;
  SetTimer(false, timer_interval_ms_);
}

void CalibrationUpload::Rearm() {
  upload_started_ = false;
  if (upload_expected_) return;
  upload_expected_ = true;
  upload_step_ = 0;
  upload_request_count_ = 0;
  display_.upload_progress = 0;
  SetTimer(true, 800);
}

}  // namespace vela
