#include "datalog/files/log_reader.h"

#include <algorithm>
#include <cstring>

#include "base/crc32.h"
#include "datalog/files/log_file_bytes.h"

namespace vela {

using log_bytes::Get;

void LogBlockReader::ReadAll(std::size_t from) {
  std::size_t at = from;
  bool in_damage = false;
  while (at < bytes_.size()) {
    std::size_t next = at;
    if (ReadBlockAt(at, next)) {
      at = next;
      in_damage = false;
      continue;
    }
    // One stretch of damage, however many false sync words lie inside it.
    if (!in_damage) ++report_.damaged_regions;
    in_damage = true;
    at = SkipDamage(at);
  }
  Finish();
}

bool LogBlockReader::ReadBlockAt(std::size_t at, std::size_t& next) {
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

std::size_t LogBlockReader::SkipDamage(std::size_t at) {
  const std::size_t resume = bytes_.find(std::string_view("BLK1"), at + 1);
  if (resume != std::string_view::npos) {
    report_.bytes_skipped += resume - at;
    return resume;
  }
  report_.bytes_skipped += bytes_.size() - at;
  NoteDamagedLastBlock(at);
  return bytes_.size();
}

// The damage runs to the end of the file. When the block there says it ends exactly where the
// file ends, the file is whole and only that block is bad; otherwise the file was cut.
void LogBlockReader::NoteDamagedLastBlock(std::size_t at) {
  const std::size_t left = bytes_.size() - at;
  if (left < kBlockOverhead || Get<std::uint32_t>(bytes_, at + 8) != left - kBlockOverhead) {
    report_.cut_short = true;
    return;
  }
  report_.last_block_damaged = true;
  report_.last_block_type = static_cast<LogBlock>(Get<std::uint16_t>(bytes_, at + 4));
  const std::string_view payload = bytes_.substr(at + 12, left - kBlockOverhead);
  if (report_.last_block_type != LogBlock::kRecords || payload.size() < log_bytes::kRecordsHead) {
    return;
  }
  const std::uint32_t count = Get<std::uint32_t>(payload, 8);
  const auto mask = Get<ChannelMask>(payload, 12);
  const auto flags = Get<std::uint16_t>(payload, 14);
  // The block's own count, believed only when it agrees with the block's length.
  if (log_bytes::RecordsPayloadSize(count, mask, flags) == payload.size()) {
    report_.last_block_records = count;
  }
}

void LogBlockReader::Apply(LogBlock type, std::string_view payload) {
  switch (type) {
    case LogBlock::kSeries:
      ApplySeries(payload);
      break;
    case LogBlock::kAxis:
      if (payload.size() >= 16) {
        log_.axis = TimeAxis{Get<double>(payload, 0), Get<double>(payload, 8)};
        report_.axis_read = true;
      }
      break;
    case LogBlock::kRecords:
      ApplyRecords(payload);
      break;
    case LogBlock::kMarker:
      if (payload.size() >= 10) {
        const auto length = Get<std::uint16_t>(payload, 8);
        if (payload.size() >= 10u + length) {
          log_.AddMarkerAt(Get<double>(payload, 0), std::string(payload.substr(10, length)));
          ++report_.markers_read;
        }
      }
      break;
    case LogBlock::kEnd:
      ApplyEnd(payload);
      break;
  }
}

void LogBlockReader::ApplySeries(std::string_view payload) {
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
  report_.series_read = true;
}

void LogBlockReader::ApplyRecords(std::string_view payload) {
  if (payload.size() < log_bytes::kRecordsHead) return;
  const auto first = Get<std::uint64_t>(payload, 0);
  const auto count = Get<std::uint32_t>(payload, 8);
  const auto mask = Get<ChannelMask>(payload, 12);
  const auto flags = Get<std::uint16_t>(payload, 14);
  if (count == 0 || payload.size() != log_bytes::RecordsPayloadSize(count, mask, flags)) return;
  if (first < next_index_) return;  // already read (a block written twice)
  std::size_t at = log_bytes::kRecordsHead;
  if (first > next_index_) NoteLoss(first - next_index_, Get<double>(payload, at));
  next_index_ = first + count;

  times_.resize(count);
  std::memcpy(times_.data(), payload.data() + at, count * sizeof(double));
  at += count * sizeof(double);
  arrivals_.clear();
  if (flags & kRecordsWithArrivals) {
    arrivals_.resize(count);
    std::memcpy(arrivals_.data(), payload.data() + at, count * sizeof(double));
    at += count * sizeof(double);
  }
  values_.resize((payload.size() - at) / sizeof(float));
  std::memcpy(values_.data(), payload.data() + at, values_.size() * sizeof(float));
  std::array<const float*, kChannelCount> columns{};
  std::size_t column = 0;
  for (int n = 0; n < kChannelCount; ++n) {
    if (mask & (1u << n)) columns[n] = values_.data() + count * column++;
  }
  log_.AppendRecords(times_, arrivals_, columns);
}

void LogBlockReader::ApplyEnd(std::string_view payload) {
  if (payload.size() < 8) return;
  report_.has_end = true;
  report_.expected_records = Get<std::uint64_t>(payload, 0);
  if (payload.size() >= 12) report_.expected_markers = Get<std::uint32_t>(payload, 8);
}

void LogBlockReader::NoteLoss(std::uint64_t count, double after_time) {
  report_.records_lost += count;
  report_.lost.push_back(LostRecords{log_.EndTime(), after_time, count});
}

void LogBlockReader::Finish() {
  if (report_.has_end && report_.expected_records > next_index_) {
    NoteLoss(report_.expected_records - next_index_, log_.EndTime());
  }
  if (!report_.axis_read) log_.axis = TimeAxis{0.0, std::max(log_.EndTime(), 1.0)};
  // Without the list of channels, every channel that holds points is drawn: nothing intact is
  // hidden.
  if (!report_.series_read) {
    for (int n = 0; n < kChannelCount; ++n) log_.SetActive(n, log_.Series(n).points > 0);
  }
  log_.CloseGaps();
}

}  // namespace vela
