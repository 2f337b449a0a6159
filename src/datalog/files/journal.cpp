#include "datalog/files/journal.h"

#include <algorithm>
#include <cmath>

namespace vela {

namespace {

std::array<bool, kChannelCount> ActiveStates(const DatalogLog& log) {
  std::array<bool, kChannelCount> active{};
  for (int n = 0; n < kChannelCount; ++n) active[n] = log.Series(n).active;
  return active;
}

}  // namespace

// A write counts only once it is on the disk: a failed push ends the journal as a failed append
// does, and a journal that cannot be pushed at its start is said to be missing.
void DatalogJournal::Write(const std::string& bytes) {
  if (ok_) ok_ = file_.Append(bytes);
  if (ok_) ok_ = file_.Sync();
}

bool DatalogJournal::Begin(const DatalogLog& log) {
  if (writing_) file_.Close();
  ok_ = file_.Create(path_);
  writing_ = ok_;
  records_written_ = 0;
  last_flush_s_ = 0.0;
  markers_written_.clear();
  active_written_ = ActiveStates(log);
  if (!ok_) return false;
  Write(EncodeLogHeader() + EncodeSeriesBlock(log) + EncodeAxisBlock(log.axis));
  return ok_;
}

void DatalogJournal::Flush(const DatalogLog& log) {
  if (!writing_ || !ok_) return;
  std::string bytes;
  if (ActiveStates(log) != active_written_) {
    active_written_ = ActiveStates(log);
    bytes += EncodeSeriesBlock(log);
  }
  for (std::size_t first = records_written_; first < log.RecordCount(); first += kRecordsPerBlock) {
    bytes += EncodeRecordsBlock(log, first, std::min(kRecordsPerBlock, log.RecordCount() - first));
  }
  records_written_ = log.RecordCount();
  // Markers may land anywhere in time; each one not yet written is written once.
  std::vector<LogMarker> written = markers_written_;
  for (const LogMarker& marker : log.Markers()) {
    const auto found = std::find(written.begin(), written.end(), marker);
    if (found != written.end()) {
      written.erase(found);
      continue;
    }
    bytes += EncodeMarkerBlock(marker);
    markers_written_.push_back(marker);
  }
  if (!bytes.empty()) Write(bytes);
}

bool DatalogJournal::FlushDue(const DatalogLog& log, double now_s) const {
  if (!writing_ || !ok_) return false;
  if (records_written_ < log.RecordCount()) {
    const double oldest = log.Arrivals()[records_written_];
    // A record of unknown arrival is as old as the last write.
    return now_s - (std::isnan(oldest) ? last_flush_s_ : oldest) >= kJournalFlushAgeSeconds;
  }
  const bool changed =
      log.Markers().size() != markers_written_.size() || ActiveStates(log) != active_written_;
  return changed && now_s - last_flush_s_ >= kJournalFlushAgeSeconds;
}

bool DatalogJournal::FlushIfDue(const DatalogLog& log, double now_s) {
  if (!FlushDue(log, now_s)) return false;
  Flush(log);
  last_flush_s_ = now_s;
  return true;
}

void DatalogJournal::End(const DatalogLog& log) {
  if (!writing_) return;
  Flush(log);
  Write(EncodeEndBlock(log));
  file_.Close();
  writing_ = false;
}

void DatalogJournal::Discard() {
  if (writing_) file_.Close();
  writing_ = false;
  file_.Remove(path_);
}

std::optional<RecoveredLog> ReadJournal(FileSystem& files, const std::string& path) {
  const std::optional<std::string> bytes = files.ReadFile(path);
  if (!bytes) return std::nullopt;
  RecoveredLog recovered;
  recovered.report = DecodeLogFile(*bytes, recovered.log);
  if (!recovered.report.recognised || recovered.log.RecordCount() == 0) return std::nullopt;
  return recovered;
}

}  // namespace vela
