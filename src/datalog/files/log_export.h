// A datalog as text: the old table export (*.dl1), CSV for spreadsheets and other viewers, and
// the summary `vela-log info` prints.
#pragma once

#include <span>
#include <string>

#include "datalog/datalog_log.h"
#include "datalog/files/log_file.h"

namespace vela {

// One line per record: time, then channels 0 (RPM) to 9 (Idle %), each with its decimals (empty
// where the channel has no point), joined by " , " and ended by CR LF. Before the record after a
// gap, a row "Gap", "N frames missing", "S s" (the clock between the records around it).
std::string Dl1Text(const DatalogLog& log);

// A header row "Time (s)", "Arrival (s)", "Name (unit)" of every channel that holds a point,
// "Missing frames" and "Marker"; one row per record, values with their decimals and '.' (empty
// where there is no point or no known arrival), the frames lost just before the record (empty
// for none), the markers' texts in the row of the record they fall on. Rows end with CR LF.
// `extra` columns (channels computed from the recorded ones, one value per record) follow the
// recorded channels, headed by their names.
struct CsvColumn {
  std::string name;
  std::span<const float> values;  // NaN or missing: empty
  int decimals = 3;
};
std::string CsvText(const DatalogLog& log, std::span<const CsvColumn> extra = {});
// The same for the records from `from` to `to` (seconds of log time, both included): the columns
// are those of the whole log, and a marker within the times is never left out.
std::string CsvText(const DatalogLog& log, double from, double to,
                    std::span<const CsvColumn> extra = {});

// Record count, duration, clock, time axis, channels, markers, gaps, and any damage the reader
// found.
std::string LogInfoText(const DatalogLog& log, const LogFileReport& report);

// `value` with `decimals` fixed decimals and '.'.
std::string FixedText(double value, int decimals);

}  // namespace vela
