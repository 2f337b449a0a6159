// The recording journal: while logging runs, the log is written to a file in the datalogs folder
// as it grows, in the chart file's own format, and pushed to the disk whenever the oldest record
// not yet written is half a second old. After a crash, a kill or a power cut the next start finds
// it and offers the log back, short of at most the last second. It stays until the log is saved
// or the tuner declines to recover it.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/file_system.h"
#include "base/journal_file.h"
#include "datalog/datalog_log.h"
#include "datalog/files/log_file.h"

namespace vela {

inline constexpr std::string_view kJournalFileName = "Recording.journal";
// A record is written to the journal (and the journal pushed to the disk) by the time it is this
// old, by the program's clock; markers and channel changes with the next records, or this long
// after the last write when no record follows.
inline constexpr double kJournalFlushAgeSeconds = 0.5;
// How often the Qt side asks whether a flush is due when no frame arrives to ask it.
inline constexpr int kJournalCheckMs = 100;

class DatalogJournal {
 public:
  DatalogJournal(JournalFile& file, std::string path) : file_(file), path_(std::move(path)) {}

  // A new log begins: the journal starts afresh with the log's series. False when the file
  // cannot be made or pushed to the disk (the log is then recorded without a journal).
  bool Begin(const DatalogLog& log);
  // Records, markers and series changes since the last flush, pushed to the disk.
  void Flush(const DatalogLog& log);
  // True when something waits to be written and its age at `now_s` (seconds since logging
  // started, the records' arrival clock) has reached kJournalFlushAgeSeconds.
  bool FlushDue(const DatalogLog& log, double now_s) const;
  // Flushes when FlushDue; true when it did.
  bool FlushIfDue(const DatalogLog& log, double now_s);
  // Logging stopped: the last records and the closing block; the file stays until Discard.
  void End(const DatalogLog& log);
  // The log is safe elsewhere (saved) or unwanted: the file goes.
  void Discard();

  bool Writing() const { return writing_; }
  const std::string& path() const { return path_; }

 private:
  // Appends `bytes` and pushes them to the disk; a failure stops every later write.
  void Write(const std::string& bytes);

  JournalFile& file_;
  std::string path_;
  bool writing_ = false;
  bool ok_ = true;
  std::size_t records_written_ = 0;
  double last_flush_s_ = 0.0;
  std::vector<LogMarker> markers_written_;
  std::array<bool, kChannelCount> active_written_{};
};

struct RecoveredLog {
  DatalogLog log;
  LogFileReport report;
};

// The log a journal at `path` holds, when it holds at least one record.
std::optional<RecoveredLog> ReadJournal(FileSystem& files, const std::string& path);

}  // namespace vela
