#include "datalog/files/log_export.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <vector>

namespace vela {

namespace {

constexpr int kTimeDecimals = 3;
constexpr int kDl1Channels = 10;         // the table's columns 1 to 10
constexpr std::size_t kGapsListed = 20;  // in the summary

void AppendFixed(std::string& out, double value, int decimals) {
  char text[64];
  const auto result =
      std::to_chars(text, text + sizeof(text), value, std::chars_format::fixed, decimals);
  out.append(text, result.ptr);
}

void AppendValue(std::string& out, const DatalogLog& log, int channel, std::size_t record) {
  const std::vector<float>& values = log.Series(channel).values;
  if (record < values.size() && !std::isnan(values[record])) {
    AppendFixed(out, values[record], kChannels[channel].decimals);
  }
}

std::string CsvQuoted(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (char c : text) {
    if (c == '"') quoted += '"';
    quoted += c;
  }
  return quoted + "\"";
}

// The marker texts of every record, joined where several fall on one record. Only markers from
// `from` to `to` are taken; one that falls before the range's first record is put on that
// record.
std::vector<std::string> MarkerColumn(const DatalogLog& log, RecordRange range, double from,
                                      double to) {
  std::vector<std::string> column(log.RecordCount());
  for (const LogMarker& marker : log.Markers()) {
    if (column.empty()) break;
    if (marker.time < from || marker.time > to) continue;
    const std::size_t record = std::max(log.IndexAtOrBefore(marker.time).value_or(0), range.begin);
    if (record >= range.end) continue;  // a span with no record
    std::string& cell = column[record];
    cell += (cell.empty() ? "" : "; ") + marker.text;
  }
  return column;
}

// The number of frames missing before every record (0 for most).
std::vector<std::uint32_t> GapColumn(const DatalogLog& log) {
  std::vector<std::uint32_t> column(log.RecordCount());
  for (const LogGap& gap : log.Gaps()) column[gap.record] = gap.missing_frames;
  return column;
}

std::string GapWords(const LogGap& gap) {
  return std::to_string(gap.missing_frames) + (gap.missing_frames == 1 ? " frame" : " frames") +
         " missing";
}

// The text export's row for a gap: "Gap", how many frames are missing and the time on the
// clock between the records around it, in the table's first three columns.
void AppendDl1GapRow(std::string& text, const LogGap& gap) {
  text += "Gap , " + GapWords(gap) + " , ";
  AppendFixed(text, gap.clock_s, kTimeDecimals);
  text += " s";
  for (int n = 2; n < kDl1Channels; ++n) text += " , ";
  text += "\r\n";
}

}  // namespace

std::string FixedText(double value, int decimals) {
  std::string text;
  AppendFixed(text, value, decimals);
  return text;
}

std::string Dl1Text(const DatalogLog& log) {
  std::string text;
  const std::vector<LogGap>& gaps = log.Gaps();
  auto gap = gaps.begin();
  for (std::size_t i = 0; i < log.RecordCount(); ++i) {
    if (gap != gaps.end() && gap->record == i) AppendDl1GapRow(text, *gap++);
    AppendFixed(text, log.Times()[i], kTimeDecimals);
    for (int n = 0; n < kDl1Channels; ++n) {
      text += " , ";
      AppendValue(text, log, n, i);
    }
    text += "\r\n";
  }
  return text;
}

namespace {

std::string CsvHeader(const DatalogLog& log, std::vector<int>& channels,
                      std::span<const CsvColumn> extra) {
  std::string text = "Time (s),Arrival (s)";
  for (int n = 0; n < kChannelCount; ++n) {
    if (log.Series(n).points == 0) continue;
    channels.push_back(n);
    text += "," + std::string(kChannels[n].name) + " (" + std::string(kChannels[n].unit) + ")";
  }
  for (const CsvColumn& column : extra) text += "," + CsvQuoted(column.name);
  return text + ",Missing frames,Marker\r\n";
}

void AppendExtra(std::string& text, std::span<const CsvColumn> extra, std::size_t record) {
  for (const CsvColumn& column : extra) {
    text += ',';
    if (record < column.values.size() && std::isfinite(column.values[record])) {
      AppendFixed(text, column.values[record], column.decimals);
    }
  }
}

std::string CsvRows(const DatalogLog& log, RecordRange range, double from, double to,
                    std::span<const CsvColumn> extra) {
  std::vector<int> channels;
  std::string text = CsvHeader(log, channels, extra);
  const std::vector<std::string> markers = MarkerColumn(log, range, from, to);
  const std::vector<std::uint32_t> missing = GapColumn(log);
  text.reserve(text.size() + (range.end - range.begin) * (20 + 9 * channels.size()));
  for (std::size_t i = range.begin; i < range.end; ++i) {
    AppendFixed(text, log.Times()[i], kTimeDecimals);
    text += ',';
    if (!std::isnan(log.Arrivals()[i])) AppendFixed(text, log.Arrivals()[i], kTimeDecimals);
    for (int n : channels) {
      text += ',';
      AppendValue(text, log, n, i);
    }
    AppendExtra(text, extra, i);
    text += ',';
    if (missing[i] > 0) text += std::to_string(missing[i]);
    text += ',';
    text += CsvQuoted(markers[i]);
    text += "\r\n";
  }
  return text;
}

}  // namespace

std::string CsvText(const DatalogLog& log, std::span<const CsvColumn> extra) {
  constexpr double kAll = std::numeric_limits<double>::infinity();
  return CsvRows(log, WholeLog(log.RecordCount()), -kAll, kAll, extra);
}

std::string CsvText(const DatalogLog& log, double from, double to,
                    std::span<const CsvColumn> extra) {
  return CsvRows(log, RecordsInSpan(log.Times(), from, to), from, to, extra);
}

std::string LogInfoText(const DatalogLog& log, const LogFileReport& report) {
  std::string text =
      "Format: MORVANE VELA datalog, version " + std::to_string(report.version) + "\n";
  text += "Records: " + std::to_string(log.RecordCount()) + "\n";
  const double start = log.RecordCount() ? log.Times().front() : 0.0;
  text += "Duration: " + FixedText(log.EndTime() - start, kTimeDecimals) + " s (" +
          FixedText(start, kTimeDecimals) + " s to " + FixedText(log.EndTime(), kTimeDecimals) +
          " s)\n";
  const std::optional<double> clock = log.ClockEnd();
  text += "Clock: " + (clock ? FixedText(*clock, kTimeDecimals) + " s from the start of logging\n"
                             : std::string("not recorded (an older file)\n"));
  text += "Time axis: " + FixedText(log.axis.min, kTimeDecimals) + " s to " +
          FixedText(log.axis.max, kTimeDecimals) + " s\n";
  text += "Channels:\n";
  for (int n = 0; n < kChannelCount; ++n) {
    const LogSeries& s = log.Series(n);
    text += "  " + std::to_string(n) + "  " + std::string(kChannels[n].caption) + " (" +
            std::string(kChannels[n].unit) + "): " + (s.active ? "active" : "inactive") + ", " +
            std::to_string(s.points) + " points\n";
  }
  text += "Markers: " + std::to_string(log.Markers().size()) + "\n";
  for (const LogMarker& marker : log.Markers()) {
    text += "  " + FixedText(marker.time, kTimeDecimals) + " s  " + marker.text + "\n";
  }
  text += "Gaps: " + std::to_string(log.Gaps().size()) + " (" +
          std::to_string(log.MissingFrames()) + " frames missing)\n";
  for (std::size_t g = 0; g < log.Gaps().size() && g < kGapsListed; ++g) {
    const LogGap& gap = log.Gaps()[g];
    text += "  " + FixedText(log.Times()[gap.record], kTimeDecimals) + " s  " + GapWords(gap) +
            ", " + FixedText(gap.clock_s, kTimeDecimals) + " s between records\n";
  }
  if (log.Gaps().size() > kGapsListed) text += "  ...\n";
  for (const std::string& line : DescribeLoss(report, log)) text += "Damage: " + line + "\n";
  return text;
}

}  // namespace vela
