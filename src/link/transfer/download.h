// The calibration download: writes a whole calibration image into the ECU, two bytes per command
// frame, one frame per tick of the main form's `DownloadTimer`, while the progress window
// `Form3` shows how far it has come. There is no acknowledgement: a frame that could not be
// written is not repeated, but a download during which the line failed is reported when it ends,
// so that it is never passed off as done.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>
#include <utility>
#include <vector>

#include "link/link_state.h"

namespace vela {

inline constexpr std::string_view kDownloadProgressTitle = " Download Progress";
inline constexpr std::string_view kDownloadProgressText =
    "Busy Downloading info to the ECU... Please be patient.";
inline constexpr double kDownloadProgressFullWidth = 6450.0;  // progress bar units
// `DownloadTimer`'s interval: room for the ECU to store each pair before the next frame.
inline constexpr int kDownloadTimerIntervalMs = 10;

inline constexpr int kDownloadPairCommand = 2;  // writes a 16-bit pair
// The odd last byte goes with kSingleValueWrite; kCloseCommand closes the transfer.

// What the Qt side does for the download: the progress window `Form3`, `DownloadTimer` and the
// status label. Any of them may be empty.
struct DownloadCallbacks {
  std::function<void()> show_progress;  // opens `Form3` at width 0
  std::function<void(double width)>
      set_progress;  // bar width, 0 to about kDownloadProgressFullWidth
  std::function<void()> close_progress;
  std::function<void(bool enabled)> set_timer_enabled;
  std::function<void()> clear_status;
  // True while the line can carry the download: the port open and the ECU connected (or
  // nothing meant to be sent, off-line). Asked after every frame; empty counts as true.
  std::function<bool()> line_ready;
  // After the progress window closed, when the port closed, the link was lost or a send was
  // aborted while the download ran: the ECU may hold part of the image.
  std::function<void()> interrupted;
};

// The way the editors' single changes (cells, set-up choices, tables) reach the ECU. While a
// download runs they wait, in the order made, and follow its closing frame: the download sends
// the image as it stood when it started, so a change sent in between would be overwritten in the
// ECU by the download's later frame for the same place while the editors keep it.
class HeldEdits : public CommandSender {
 public:
  explicit HeldEdits(CommandSender& inner) : inner_(inner) {}
  // While holding, keeps the frame (`kHeld`); otherwise passes it on.
  [[nodiscard]] SendResult Send(const CommandFrame& frame) override;
  void Hold() { holding_ = true; }
  // Sends what waited, in the order it came, and lets changes through from then on.
  void Release();
  bool holding() const { return holding_; }
  std::size_t waiting() const { return waiting_.size(); }

 private:
  CommandSender& inner_;
  bool holding_ = false;
  std::vector<CommandFrame> waiting_;
};

class Download {
 public:
  // `edits`, when given, is held from a download's start to its end (HeldEdits).
  Download(CommandSender& sender, LinkState& link, DownloadCallbacks callbacks,
           HeldEdits* edits = nullptr)
      : sender_(sender), link_(link), callbacks_(std::move(callbacks)), edits_(edits) {}

  // Takes `image` as `DownloadImage`, sets `DownloadPos` and `DownloadBase` to 1, holds the link
  // (`TLock`, so that shutdown sends no closing command mid-transfer), shows the progress
  // window and enables the timer. A download under way starts again with the new image.
  void Start(std::vector<std::uint8_t> image);

  // One tick of `DownloadTimer`: sends exactly one frame. A tick while no download runs does
  // nothing. The tick after the closing frame's position finishes the download: progress
  // window closed, timer off, `DownloadPos` back to 1, link released, the held edits sent,
  // status cleared.
  void Tick();

  bool running() const { return running_; }
  // True from a download's start when one of its frames met a line that could not carry it.
  bool broken() const { return broken_; }
  int DownloadPos() const { return download_pos_; }
  int DownloadBase() const { return download_base_; }
  double progress_width() const { return progress_width_; }

 private:
  void Finish();

  CommandSender& sender_;
  LinkState& link_;
  DownloadCallbacks callbacks_;
  HeldEdits* edits_;
  std::vector<std::uint8_t> download_image_;
  bool lock_before_ = false;  // `TLock` as the tuner left it, restored at the end
  int download_pos_ = 1;
  int download_base_ = 1;
  double progress_width_ = 0.0;
  bool running_ = false;
  bool broken_ = false;
};

}  // namespace vela
