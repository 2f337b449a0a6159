#include "datalog/files/log_file.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "base/crc32.h"
#include "datalog/files/log_file_bytes.h"
#include "datalog/files/log_reader.h"

namespace vela {

using log_bytes::Get;
using log_bytes::Put;

namespace {

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

bool AnyArrival(const DatalogLog& log, std::size_t first, std::size_t count) {
  const double* arrivals = log.Arrivals().data() + first;
  return std::any_of(arrivals, arrivals + count, [](double a) { return !std::isnan(a); });
}

bool HeaderIntact(std::string_view bytes) {
  return bytes.size() >= kLogHeaderSize && bytes.substr(0, kLogFileMagic.size()) == kLogFileMagic &&
         Crc32(bytes.substr(0, 12)) == Get<std::uint32_t>(bytes, 12);
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
  const std::uint16_t flags = AnyArrival(log, first, count) ? kRecordsWithArrivals : 0;
  std::string payload;
  payload.reserve(log_bytes::RecordsPayloadSize(count, mask, flags));
  Put<std::uint64_t>(payload, first);
  Put<std::uint32_t>(payload, static_cast<std::uint32_t>(count));
  Put<std::uint16_t>(payload, mask);
  Put<std::uint16_t>(payload, flags);
  payload.append(reinterpret_cast<const char*>(log.Times().data() + first), count * sizeof(double));
  if (flags & kRecordsWithArrivals) {
    payload.append(reinterpret_cast<const char*>(log.Arrivals().data() + first),
                   count * sizeof(double));
  }
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
  file.reserve(kLogHeaderSize + 512 + log.RecordCount() * (16 + 4 * kChannelCount) +
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
  if (HeaderIntact(bytes)) {
    report.version = Get<std::uint16_t>(bytes, 8);
    if (report.version < 1 || report.version > kLogFileVersion) return report;
  } else {
    // A damaged header does not make the blocks after it unreadable: each checks itself.
    report.header_damaged = true;
  }
  DatalogLog read;
  LogBlockReader(bytes, read, report).ReadAll(std::min(bytes.size(), kLogHeaderSize));
  // A file with a damaged header is a datalog only when at least one whole block says so.
  report.recognised = !report.header_damaged || report.blocks_read > 0;
  if (report.recognised) log.ReplaceWith(std::move(read));
  return report;
}

bool LooksLikeLogFile(std::string_view head) {
  if (head.substr(0, kLogFileMagic.size()) == kLogFileMagic) return true;
  return head.size() >= kLogFileHeadBytes && Get<std::uint32_t>(head, kLogHeaderSize) == kBlockSync;
}

}  // namespace vela
