#include "datalog/log_export.h"

#include <charconv>
#include <cmath>
#include <vector>

namespace vela {

namespace {

constexpr int kTimeDecimals = 3;
constexpr int kDl1Channels = 10;  // the table's columns 1 to 10

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

// The marker texts of every record, joined where several fall on one record.
std::vector<std::string> MarkerColumn(const DatalogLog& log) {
  std::vector<std::string> column(log.RecordCount());
  for (const LogMarker& marker : log.Markers()) {
    if (column.empty()) break;
    std::string& cell = column[log.IndexAtOrBefore(marker.time).value_or(0)];
    cell += (cell.empty() ? "" : "; ") + marker.text;
  }
  return column;
}

}  // namespace

std::string FixedText(double value, int decimals) {
  std::string text;
  AppendFixed(text, value, decimals);
  return text;
}

std::string Dl1Text(const DatalogLog& log) {
  std::string text;
  for (std::size_t i = 0; i < log.RecordCount(); ++i) {
    AppendFixed(text, log.Times()[i], kTimeDecimals);
    for (int n = 0; n < kDl1Channels; ++n) {
      text += " , ";
      AppendValue(text, log, n, i);
    }
    text += "\r\n";
  }
  return text;
}

std::string CsvText(const DatalogLog& log) {
  std::vector<int> channels;
  std::string text = "Time (s)";
  for (int n = 0; n < kChannelCount; ++n) {
    if (log.Series(n).points == 0) continue;
    channels.push_back(n);
    text += "," + std::string(kChannels[n].name) + " (" + std::string(kChannels[n].unit) + ")";
  }
  text += ",Marker\r\n";
  const std::vector<std::string> markers = MarkerColumn(log);
  text.reserve(text.size() + log.RecordCount() * (10 + 9 * channels.size()));
  for (std::size_t i = 0; i < log.RecordCount(); ++i) {
    AppendFixed(text, log.Times()[i], kTimeDecimals);
    for (int n : channels) {
      text += ',';
      AppendValue(text, log, n, i);
    }
    text += ',';
    text += CsvQuoted(markers[i]);
    text += "\r\n";
  }
  return text;
}

std::string LogInfoText(const DatalogLog& log, const LogFileReport& report) {
  std::string text =
      "Format: MORVANE VELA datalog, version " + std::to_string(report.version) + "\n";
  text += "Records: " + std::to_string(log.RecordCount()) + "\n";
  const double start = log.RecordCount() ? log.Times().front() : 0.0;
  text += "Duration: " + FixedText(log.EndTime() - start, kTimeDecimals) + " s (" +
          FixedText(start, kTimeDecimals) + " s to " + FixedText(log.EndTime(), kTimeDecimals) +
          " s)\n";
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
  for (const std::string& line : DescribeLoss(report, log)) text += "Damage: " + line + "\n";
  return text;
}

}  // namespace vela
