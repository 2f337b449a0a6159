#include "editors/workbench/cell_send_queue.h"

namespace vela {

void CellSendQueue::Add(const std::vector<CellWrite>& cells) {
  if (waiting_.empty()) {
    sent_ = 0;
    total_ = 0;
    failed_ = 0;
  }
  for (const CellWrite& cell : cells) {
    if (!CalibrationImage::IsPosition(cell.position) || Waiting(cell.position)) continue;
    queued_[static_cast<std::size_t>(cell.position)] = true;
    waiting_.push_back(cell);
    ++total_;
  }
}

SendResult CellSendQueue::SendNext(const CalibrationImage& image, CommandSender& sender) {
  if (waiting_.empty()) return {};
  const CellWrite cell = waiting_.front();
  waiting_.pop_front();
  queued_[static_cast<std::size_t>(cell.position)] = false;
  const int value = cell.width == 2 ? image.Read16(cell.position) : image.Byte(cell.position);
  const SendResult result = sender.Send({kSingleValueWrite, cell.position, value});
  ++sent_;
  if (result.outcome == SendOutcome::kNotSent || result.outcome == SendOutcome::kAborted) {
    ++failed_;
  }
  return result;
}

void CellSendQueue::Clear() {
  for (const CellWrite& cell : waiting_) queued_[static_cast<std::size_t>(cell.position)] = false;
  waiting_.clear();
}

bool CellSendQueue::Waiting(int position) const {
  return CalibrationImage::IsPosition(position) && queued_[static_cast<std::size_t>(position)];
}

std::vector<int> CellSendQueue::WaitingPositions() const {
  std::vector<int> positions;
  positions.reserve(waiting_.size());
  for (const CellWrite& cell : waiting_) positions.push_back(cell.position);
  return positions;
}

}  // namespace vela
