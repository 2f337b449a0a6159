// The chart file's reader of blocks: it keeps every block whose sync word, length and CRC hold,
// steps over whatever does not to the next sync word, and notes in the report exactly what it
// could not read.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "datalog/datalog_log.h"
#include "datalog/files/log_file.h"

namespace vela {

class LogBlockReader {
 public:
  LogBlockReader(std::string_view bytes, DatalogLog& log, LogFileReport& report)
      : bytes_(bytes), log_(log), report_(report) {}

  // Reads every block from `from` to the end of the file.
  void ReadAll(std::size_t from);

 private:
  bool ReadBlockAt(std::size_t at, std::size_t& next);
  // Bytes from `at` hold no good block: skips to the next sync word, or notes how the file ends.
  std::size_t SkipDamage(std::size_t at);
  void NoteDamagedLastBlock(std::size_t at);
  void Apply(LogBlock type, std::string_view payload);
  void ApplySeries(std::string_view payload);
  void ApplyRecords(std::string_view payload);
  void ApplyEnd(std::string_view payload);
  void NoteLoss(std::uint64_t count, double after_time);
  void Finish();

  std::string_view bytes_;
  DatalogLog& log_;
  LogFileReport& report_;
  std::uint64_t next_index_ = 0;  // where the next records block should begin
  std::vector<double> times_;
  std::vector<double> arrivals_;
  std::vector<float> values_;
};

}  // namespace vela
