#include "link/transfer/download.h"

#include <utility>

namespace vela {

SendResult HeldEdits::Send(const CommandFrame& frame) {
  if (!holding_) return inner_.Send(frame);
  waiting_.push_back(frame);
  return {.outcome = SendOutcome::kHeld};
}

void HeldEdits::Release() {
  holding_ = false;
  std::vector<CommandFrame> waiting;
  waiting.swap(waiting_);
  // As when they were made: the image keeps the edits, and a lost frame shows as the stall.
  for (const CommandFrame& edit : waiting) static_cast<void>(inner_.Send(edit));
}

void Download::Start(std::vector<std::uint8_t> image) {
  download_image_ = std::move(image);
  download_pos_ = 1;
  download_base_ = 1;
  progress_width_ = 0.0;
  running_ = true;
  broken_ = false;
  lock_before_ = link_.TLock;
  link_.TLock = true;
  if (edits_) edits_->Hold();
  if (callbacks_.show_progress) callbacks_.show_progress();
  if (callbacks_.set_timer_enabled) callbacks_.set_timer_enabled(true);
}

// p is the position of the next byte; positions past the image's end carry 0. The last frame's
// position (p > L) turns it into the closing command.
void Download::Tick() {
  if (!running_) return;
  const int p = download_pos_;
  const int length = static_cast<int>(download_image_.size());
  int command = p == length ? kSingleValueWrite : kDownloadPairCommand;
  if (p > length) command = kCloseCommand;
  const int low = p <= length ? download_image_[static_cast<std::size_t>(p - 1)] : 0;
  const int high = p <= length - 1 ? download_image_[static_cast<std::size_t>(p)] : 0;
  // A frame the line did not carry is read from the link's state, as every frame of the download
  // is: `CommsSendAborted` stays set from a stall until a byte goes through again.
  static_cast<void>(sender_.Send({command, download_base_ - 1 + p, high * 256 + low}));
  const bool line_ready = !callbacks_.line_ready || callbacks_.line_ready();
  if (!line_ready || link_.CommsSendAborted > 0) broken_ = true;

  progress_width_ = length > 0 ? kDownloadProgressFullWidth / length * p : 0.0;
  if (callbacks_.set_progress) callbacks_.set_progress(progress_width_);
  download_pos_ = p + 2;
  if (download_pos_ < length + 3) return;
  Finish();
}

void Download::Finish() {
  if (callbacks_.close_progress) callbacks_.close_progress();
  if (callbacks_.set_timer_enabled) callbacks_.set_timer_enabled(false);
  download_pos_ = 1;
  running_ = false;
  link_.TLock = lock_before_;
  if (edits_) edits_->Release();
  if (callbacks_.clear_status) callbacks_.clear_status();
  if (broken_ && callbacks_.interrupted) callbacks_.interrupted();
}

}  // namespace vela
