// What a damaged chart file lost, in the tuner's words: one line per kind of damage, each saying
// exactly what could not be read.
#include <cstdio>

#include "datalog/files/log_file.h"

namespace vela {

namespace {

std::string Seconds(double t) {
  char text[32];
  std::snprintf(text, sizeof(text), "%.2f s", t);
  return text;
}

std::string Count(std::uint64_t n, const char* one, const char* many) {
  return std::to_string(n) + " " + (n == 1 ? one : many);
}

void DescribeLostRecords(const LogFileReport& report, std::vector<std::string>& lines) {
  for (const LostRecords& lost : report.lost) {
    const std::string records = " (" + Count(lost.count, "record", "records") + ").";
    lines.push_back(lost.after > lost.before
                        ? "Missing records between " + Seconds(lost.before) + " and " +
                              Seconds(lost.after) + records
                        : "Missing records after " + Seconds(lost.before) + records);
  }
  if (report.records_lost > 0 && report.lost.size() > 1) {
    lines.push_back(Count(report.records_lost, "record", "records") + " could not be read.");
  }
}

// How the file ends: closed whole, cut, or whole with a damaged last block.
void DescribeEnding(const LogFileReport& report, const DatalogLog& log,
                    std::vector<std::string>& lines) {
  if (report.last_block_damaged && report.last_block_type == LogBlock::kRecords &&
      report.last_block_records > 0) {
    lines.push_back("The last block of the file is damaged: the " +
                    Count(report.last_block_records, "record", "records") + " it held after " +
                    Seconds(log.EndTime()) + " could not be read.");
  } else if (report.last_block_damaged && !report.has_end) {
    lines.push_back(
        "The last block of the file is damaged: the file's closing record count could not be "
        "read, so whether records are missing after " +
        Seconds(log.EndTime()) + " cannot be told.");
  } else if (report.cut_short || !report.has_end) {
    lines.push_back("The file ends early: anything recorded after " + Seconds(log.EndTime()) +
                    " is missing.");
  }
}

}  // namespace

std::vector<std::string> DescribeLoss(const LogFileReport& report, const DatalogLog& log) {
  std::vector<std::string> lines;
  if (report.Intact()) return lines;
  lines.push_back("The datalog file is damaged. What could be read has been loaded: " +
                  Count(log.RecordCount(), "record", "records") + " up to " +
                  Seconds(log.EndTime()) + ".");
  if (report.header_damaged) {
    lines.push_back("The file's header is damaged; its blocks were read without it.");
  }
  if (!report.series_read) {
    lines.push_back(
        "The list of channels is damaged: every channel that holds points is shown, in its own "
        "colour.");
  }
  if (!report.axis_read) {
    lines.push_back("The time axis setting is damaged: the chart shows the whole log.");
  }
  DescribeLostRecords(report, lines);
  DescribeEnding(report, log, lines);
  if (report.markers_read < report.expected_markers) {
    lines.push_back(Count(report.expected_markers - report.markers_read, "marker", "markers") +
                    " could not be read.");
  }
  if (report.damaged_regions > 0) {
    lines.push_back(Count(report.bytes_skipped, "damaged byte", "damaged bytes") + " in " +
                    Count(report.damaged_regions, "place was", "places were") + " skipped.");
  }
  return lines;
}

}  // namespace vela
