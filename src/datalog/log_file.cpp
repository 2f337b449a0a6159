#include "datalog/log_file.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>

#include "datalog/crc32.h"

namespace vela {

// Numbers are stored little-endian; arrays of them are copied as they lie in memory.
static_assert(std::endian::native == std::endian::little, "the datalog file is little-endian");

namespace {

constexpr float kNoPoint = std::numeric_limits<float>::quiet_NaN();

template <typename T>
void Put(std::string& out, T value) {
  char bytes[sizeof(T)];
  std::memcpy(bytes, &value, sizeof(T));
  out.append(bytes, sizeof(T));
}

template <typename T>
T Get(std::string_view bytes, std::size_t at) {
  T value;
  std::memcpy(&value, bytes.data() + at, sizeof(T));
  return value;
}

// A block around `payload`: sync word, type, reserved, length, payload, CRC from type on.
std::string Block(LogBlock type, std::string_view payload) {
  std::string block;
  block.reserve(kBlockOverhead + payload.size());
  Put<std::uint32_t>(block, kBlockSync);
  Put<std::uint16_t>(block, static_cast<std::uint16_t>(type));
  Put<std::uint16_t>(block, 0);
  Put<std::uint32_t>(block, static_cast<std::uint32_t>(payload.size()));
  block.append(payload);
  Put<std::uint32_t>(block, Crc32(std::string_view(block).substr(4)));
  return block;
}

ChannelMask MaskOf(const DatalogLog& log, std::size_t first) {
  ChannelMask mask = 0;
  for (int n = 0; n < kChannelCount; ++n) {
    if (log.Series(n).values.size() > first) mask |= static_cast<ChannelMask>(1u << n);
  }
  return mask;
}

// A reader of blocks that keeps what is whole and steps over what is not.
class BlockReader {
 public:
  BlockReader(std::string_view bytes, DatalogLog& log, LogFileReport& report)
      : bytes_(bytes), log_(log), report_(report) {}

  void ReadAll();

 private:
  bool ReadBlockAt(std::size_t at, std::size_t& next);
  void Apply(LogBlock type, std::string_view payload);
  void ApplySeries(std::string_view payload);
  void ApplyRecords(std::string_view payload);
  void NoteLoss(std::uint64_t count, double after_time);

  std::string_view bytes_;
  DatalogLog& log_;
  LogFileReport& report_;
  bool axis_read_ = false;
  std::uint64_t next_index_ = 0;  // where the next records block should begin
  std::vector<double> times_;
  std::vector<float> values_;
};

void BlockReader::ReadAll() {
  std::size_t at = kLogHeaderSize;
  while (at < bytes_.size()) {
    std::size_t next = at;
    if (ReadBlockAt(at, next)) {
      at = next;
      continue;
    }
    // Not a whole good block here: look for the next sync word after this position.
    const std::size_t resume = bytes_.find(std::string_view("BLK1"), at + 1);
    ++report_.damaged_regions;
    if (resume == std::string_view::npos) {
      report_.bytes_skipped += bytes_.size() - at;
      report_.cut_short = true;
      break;
    }
    report_.bytes_skipped += resume - at;
    at = resume;
  }
  if (report_.has_end && report_.expected_records > next_index_) {
    NoteLoss(report_.expected_records - next_index_, log_.EndTime());
  }
  if (!axis_read_) log_.axis = TimeAxis{0.0, std::max(log_.EndTime(), 1.0)};
}

bool BlockReader::ReadBlockAt(std::size_t at, std::size_t& next) {
  if (bytes_.size() - at < kBlockOverhead) return false;
  if (Get<std::uint32_t>(bytes_, at) != kBlockSync) return false;
  const std::uint32_t length = Get<std::uint32_t>(bytes_, at + 8);
  if (length > bytes_.size() - at - kBlockOverhead) return false;
  const std::string_view checked = bytes_.substr(at + 4, 8 + length);
  if (Crc32(checked) != Get<std::uint32_t>(bytes_, at + 12 + length)) return false;
  ++report_.blocks_read;
  Apply(static_cast<LogBlock>(Get<std::uint16_t>(bytes_, at + 4)), checked.substr(8));
  next = at + kBlockOverhead + length;
  return true;
}

void BlockReader::Apply(LogBlock type, std::string_view payload) {
  switch (type) {
    case LogBlock::kSeries:
      ApplySeries(payload);
      break;
    case LogBlock::kAxis:
      if (payload.size() >= 16) {
        log_.axis = TimeAxis{Get<double>(payload, 0), Get<double>(payload, 8)};
        axis_read_ = true;
      }
      break;
    case LogBlock::kRecords:
      ApplyRecords(payload);
      break;
    case LogBlock::kMarker:
      if (payload.size() >= 10) {
        const std::uint16_t length = Get<std::uint16_t>(payload, 8);
        if (payload.size() >= 10u + length) {
          log_.AddMarkerAt(Get<double>(payload, 0), std::string(payload.substr(10, length)));
        }
      }
      break;
    case LogBlock::kEnd:
      if (payload.size() >= 8) {
        report_.has_end = true;
        report_.expected_records = Get<std::uint64_t>(payload, 0);
      }
      break;
  }
}

void BlockReader::ApplySeries(std::string_view payload) {
  std::size_t at = 1;
  const int count = payload.empty() ? 0 : static_cast<unsigned char>(payload[0]);
  for (int i = 0; i < count && at + 6 <= payload.size(); ++i) {
    const int number = static_cast<unsigned char>(payload[at]);
    const std::size_t caption_length = static_cast<unsigned char>(payload[at + 5]);
    if (number < kChannelCount) {
      log_.SetActive(number, payload[at + 1] != 0);
      log_.SetColour(number, ChannelColour{static_cast<std::uint8_t>(payload[at + 2]),
                                           static_cast<std::uint8_t>(payload[at + 3]),
                                           static_cast<std::uint8_t>(payload[at + 4])});
    }
    at += 6 + caption_length;
  }
}

void BlockReader::ApplyRecords(std::string_view payload) {
  if (payload.size() < 16) return;
  const std::uint64_t first = Get<std::uint64_t>(payload, 0);
  const std::uint32_t count = Get<std::uint32_t>(payload, 8);
  const ChannelMask mask = Get<std::uint16_t>(payload, 12);
  const std::size_t channels = static_cast<std::size_t>(std::popcount(mask));
  if (payload.size() != 16 + count * (8 + 4 * channels)) return;
  if (first < next_index_) return;  // already read (a block written twice)
  if (first > next_index_) NoteLoss(first - next_index_, Get<double>(payload, 16));
  next_index_ = first + count;

  times_.resize(count);
  std::memcpy(times_.data(), payload.data() + 16, count * sizeof(double));
  values_.resize(static_cast<std::size_t>(count) * channels);
  std::memcpy(values_.data(), payload.data() + 16 + count * sizeof(double),
              values_.size() * sizeof(float));
  std::array<const float*, kChannelCount> columns{};
  std::size_t column = 0;
  for (int n = 0; n < kChannelCount; ++n) {
    if (mask & (1u << n)) columns[n] = values_.data() + count * column++;
  }
  log_.AppendRecords(times_, columns);
}

void BlockReader::NoteLoss(std::uint64_t count, double after_time) {
  report_.records_lost += count;
  report_.lost_spans.emplace_back(log_.EndTime(), after_time);
}

std::string Seconds(double t) {
  char text[32];
  std::snprintf(text, sizeof(text), "%.2f s", t);
  return text;
}

}  // namespace

std::string EncodeLogHeader() {
  std::string header(kLogFileMagic);
  Put<std::uint16_t>(header, kLogFileVersion);
  Put<std::uint16_t>(header, 0);
  Put<std::uint32_t>(header, Crc32(header));
  return header;
}

std::string EncodeSeriesBlock(const DatalogLog& log) {
  std::string payload;
  payload.push_back(static_cast<char>(kChannelCount));
  for (int n = 0; n < kChannelCount; ++n) {
    const LogSeries& s = log.Series(n);
    const std::string_view caption = kChannels[n].caption;
    payload.push_back(static_cast<char>(n));
    payload.push_back(s.active ? 1 : 0);
    payload.push_back(static_cast<char>(s.colour.red));
    payload.push_back(static_cast<char>(s.colour.green));
    payload.push_back(static_cast<char>(s.colour.blue));
    payload.push_back(static_cast<char>(caption.size()));
    payload.append(caption);
  }
  return Block(LogBlock::kSeries, payload);
}

std::string EncodeAxisBlock(const TimeAxis& axis) {
  std::string payload;
  Put<double>(payload, axis.min);
  Put<double>(payload, axis.max);
  return Block(LogBlock::kAxis, payload);
}

std::string EncodeRecordsBlock(const DatalogLog& log, std::size_t first, std::size_t count) {
  const ChannelMask mask = MaskOf(log, first);
  std::string payload;
  payload.reserve(16 + count * (8 + 4 * static_cast<std::size_t>(std::popcount(mask))));
  Put<std::uint64_t>(payload, first);
  Put<std::uint32_t>(payload, static_cast<std::uint32_t>(count));
  Put<std::uint16_t>(payload, mask);
  Put<std::uint16_t>(payload, 0);
  payload.append(reinterpret_cast<const char*>(log.Times().data() + first), count * sizeof(double));
  for (int n = 0; n < kChannelCount; ++n) {
    if ((mask & (1u << n)) == 0) continue;
    const std::vector<float>& values = log.Series(n).values;
    const std::size_t stored = std::min(count, values.size() - first);
    payload.append(reinterpret_cast<const char*>(values.data() + first), stored * sizeof(float));
    for (std::size_t i = stored; i < count; ++i) Put<float>(payload, kNoPoint);
  }
  return Block(LogBlock::kRecords, payload);
}

std::string EncodeMarkerBlock(const LogMarker& marker) {
  std::string payload;
  const std::string_view text = std::string_view(marker.text).substr(0, 0xFFFF);
  Put<double>(payload, marker.time);
  Put<std::uint16_t>(payload, static_cast<std::uint16_t>(text.size()));
  payload.append(text);
  return Block(LogBlock::kMarker, payload);
}

std::string EncodeEndBlock(const DatalogLog& log) {
  std::string payload;
  Put<std::uint64_t>(payload, log.RecordCount());
  Put<std::uint32_t>(payload, static_cast<std::uint32_t>(log.Markers().size()));
  return Block(LogBlock::kEnd, payload);
}

std::string EncodeLogFile(const DatalogLog& log) {
  std::string file = EncodeLogHeader();
  file.reserve(kLogHeaderSize + 512 + log.RecordCount() * (8 + 4 * kChannelCount) +
               (log.RecordCount() / kRecordsPerBlock + 1) * (kBlockOverhead + 16));
  file += EncodeSeriesBlock(log);
  file += EncodeAxisBlock(log.axis);
  for (std::size_t first = 0; first < log.RecordCount(); first += kRecordsPerBlock) {
    file += EncodeRecordsBlock(log, first, std::min(kRecordsPerBlock, log.RecordCount() - first));
  }
  for (const LogMarker& marker : log.Markers()) file += EncodeMarkerBlock(marker);
  file += EncodeEndBlock(log);
  return file;
}

LogFileReport DecodeLogFile(std::string_view bytes, DatalogLog& log) {
  LogFileReport report;
  if (bytes.size() < kLogHeaderSize || bytes.substr(0, kLogFileMagic.size()) != kLogFileMagic ||
      Crc32(bytes.substr(0, 12)) != Get<std::uint32_t>(bytes, 12)) {
    return report;
  }
  report.version = Get<std::uint16_t>(bytes, 8);
  if (report.version < 1 || report.version > kLogFileVersion) return report;
  report.recognised = true;
  log.Clear();
  BlockReader(bytes, log, report).ReadAll();
  return report;
}

std::vector<std::string> DescribeLoss(const LogFileReport& report, const DatalogLog& log) {
  std::vector<std::string> lines;
  if (report.Intact()) return lines;
  lines.push_back("The datalog file is damaged. What could be read has been loaded: " +
                  std::to_string(log.RecordCount()) + " records up to " + Seconds(log.EndTime()) +
                  ".");
  for (const auto& [before, after] : report.lost_spans) {
    lines.push_back(after > before ? "Missing records between " + Seconds(before) + " and " +
                                         Seconds(after) + "."
                                   : "Missing records after " + Seconds(before) + ".");
  }
  if (report.records_lost > 0) {
    lines.push_back(std::to_string(report.records_lost) + " records could not be read.");
  }
  if (!report.has_end) {
    lines.push_back("The file ends early: anything recorded after " + Seconds(log.EndTime()) +
                    " is missing.");
  }
  if (report.damaged_regions > 0) {
    lines.push_back(std::to_string(report.bytes_skipped) + " damaged bytes in " +
                    std::to_string(report.damaged_regions) + " places were skipped.");
  }
  return lines;
}

}  // namespace vela
