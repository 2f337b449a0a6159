// Cells on their way to the ECU after a change of many cells (a typed operation, a paste, an
// undo). A whole fuel map is over a thousand bytes of frames, seconds on a busy engine's link, so
// the frames go out a few at a time between the program's other work instead of all at once.
//
// The queue holds positions, not values: each frame carries the image's value at the moment it
// goes. A cell changed again while it waits (a key step, a later operation) therefore never gets
// an older value after a newer one, and a cell queued twice goes once.
#pragma once

#include <cstddef>
#include <deque>
#include <vector>

#include "calibration/calibration_image.h"
#include "editors/workbench/edit_journal.h"  // CellWrite
#include "link/link_state.h"

namespace vela {

class CellSendQueue {
 public:
  // Adds the cells at the back, in their order; a cell already waiting keeps its place.
  void Add(const std::vector<CellWrite>& cells);
  // Sends the front cell with kSingleValueWrite and the image's present value there. Nothing
  // when the queue is empty.
  SendResult SendNext(const CalibrationImage& image, CommandSender& sender);
  // Drops every waiting cell (a whole image goes down, or the ECU's calibration replaced ours).
  void Clear();

  bool Empty() const { return waiting_.empty(); }
  bool Waiting(int position) const;
  // The first byte of each waiting cell, in sending order.
  std::vector<int> WaitingPositions() const;
  // Progress of the cells queued since the queue was last empty: sent so far and in all.
  int Sent() const { return sent_; }
  int Total() const { return total_; }
  // Frames of this run that did not go out (no ECU listening, or the line failed).
  int Failed() const { return failed_; }

 private:
  std::deque<CellWrite> waiting_;
  std::vector<bool> queued_ = std::vector<bool>(kImageLength + 1, false);
  int sent_ = 0;
  int total_ = 0;
  int failed_ = 0;
};

}  // namespace vela
