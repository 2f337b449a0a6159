// The datalog chart file (*.sl1), this program's own format, and the recording journal, which is
// the same format written a block at a time. A header, then self-checking blocks: each starts
// with a sync word and ends with a CRC-32, so a reader keeps every whole block, skips a damaged
// one to the next sync word, and says what it could not read. The layout is in docs/datalog.md.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "datalog/datalog_log.h"

namespace vela {

inline constexpr std::string_view kLogFileMagic = "MVDATLOG";
// Version 2 added the records' arrival times; version 1 files are still read.
inline constexpr std::uint16_t kLogFileVersion = 2;
inline constexpr std::size_t kLogHeaderSize = 16;
inline constexpr std::uint32_t kBlockSync = 0x314B4C42;  // "BLK1" on disk
inline constexpr std::size_t kBlockOverhead = 16;        // sync, type, reserved, length, CRC
// Records per block of a saved file: a damaged block costs at most this many records.
inline constexpr std::size_t kRecordsPerBlock = 1024;
// The flags of a records block: its arrival times follow its log times.
inline constexpr std::uint16_t kRecordsWithArrivals = 1;

enum class LogBlock : std::uint16_t {
  kSeries = 1,   // per series: number, active state, colour, caption
  kAxis = 2,     // the time axis: minimum, maximum
  kRecords = 3,  // records: first index, count, channel mask, flags, times, arrivals, values
  kMarker = 4,   // time and text
  kEnd = 5,      // record and marker counts of a file written whole
};

// A stretch of records known to be missing: the log times of the records on either side (the
// end of the log when it runs to the end of the file) and how many.
struct LostRecords {
  double before = 0.0;
  double after = 0.0;
  std::uint64_t count = 0;
  bool operator==(const LostRecords&) const = default;
};

// What a reader found. `recognised` is false for a file that is not a datalog of this program
// (no whole block in it) or whose intact header gives a newer format version; nothing is read
// from it then.
struct LogFileReport {
  bool recognised = false;
  int version = 0;              // 0 when the header is damaged
  bool header_damaged = false;  // the blocks were read without it
  bool series_read = false;     // a whole series block was read (else every channel with points
                                // is drawn)
  bool axis_read = false;
  bool has_end = false;                // the closing block was read
  std::uint64_t expected_records = 0;  // from the closing block
  std::uint32_t expected_markers = 0;  // from the closing block
  std::size_t markers_read = 0;
  std::size_t blocks_read = 0;
  std::size_t damaged_regions = 0;  // stretches of bytes that held no good block
  std::size_t bytes_skipped = 0;
  bool cut_short = false;  // the file ends inside a block
  // The file ends with a block that is whole but fails its check (not a cut file). When it
  // says it held records (its own, unchecked, count fits its length), how many.
  bool last_block_damaged = false;
  LogBlock last_block_type = LogBlock::kEnd;
  std::uint64_t last_block_records = 0;
  std::uint64_t records_lost = 0;  // records known to be missing
  std::vector<LostRecords> lost;

  bool Intact() const {
    return recognised && !header_damaged && series_read && has_end && damaged_regions == 0 &&
           !cut_short && records_lost == 0 && markers_read >= expected_markers;
  }
};

// True when `head`, the first bytes of a file (20 are enough), is the beginning of a chart file:
// its header, or a damaged header followed by a block.
bool LooksLikeLogFile(std::string_view head);
inline constexpr std::size_t kLogFileHeadBytes = kLogHeaderSize + 4;

// The whole file: header, series, axis, records in blocks of kRecordsPerBlock, markers, end.
std::string EncodeLogFile(const DatalogLog& log);
// Reads `bytes` into `log`, which is replaced (its revision moving on) when the file is recognised
// and left as it was otherwise. Every whole block is read whatever else is damaged.
LogFileReport DecodeLogFile(std::string_view bytes, DatalogLog& log);

// The pieces, for the journal.
std::string EncodeLogHeader();
std::string EncodeSeriesBlock(const DatalogLog& log);
std::string EncodeAxisBlock(const TimeAxis& axis);
std::string EncodeRecordsBlock(const DatalogLog& log, std::size_t first, std::size_t count);
std::string EncodeMarkerBlock(const LogMarker& marker);
std::string EncodeEndBlock(const DatalogLog& log);

// Lines that tell the tuner what a damaged file lost (empty for an intact one).
std::vector<std::string> DescribeLoss(const LogFileReport& report, const DatalogLog& log);

}  // namespace vela
