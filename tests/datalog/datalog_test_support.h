// Frames built byte by byte, logs of known shape, and the journal's file in memory.
#pragma once

#include <cmath>
#include <string>

#include "datalog/datalog_log.h"
#include "datalog/files/journal.h"
#include "link/live/live_frame.h"

namespace vela::testing {

// A live frame with its markers and every data byte 0; Put writes little-endian at a 1-based
// position, as the ECU lays the fields out.
struct FrameBuilder {
  live::Frame frame{};
  FrameBuilder() {
    for (int i = 0; i < 5; ++i) frame[i] = static_cast<std::uint8_t>("START"[i]);
    for (int i = 0; i < 3; ++i) frame[42 + i] = static_cast<std::uint8_t>("END"[i]);
  }
  FrameBuilder& Put(int position, std::uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) frame[position - 1 + i] = (value >> (8 * i)) & 0xFF;
    return *this;
  }
};

// `records` records 0.1 s apart, each arriving 5 ms after its log time; channel n holds
// n * 100 + i % 50, except that channel 3 is off (no point) for records 10 to 19 and channel 7
// never recorded.
inline DatalogLog PatternLog(std::size_t records) {
  DatalogLog log;
  for (std::size_t i = 0; i < records; ++i) {
    ChannelValues values{};
    ChannelMask mask = 0;
    for (int n = 0; n < kChannelCount; ++n) {
      if (n == 7 || (n == 3 && i >= 10 && i < 20)) continue;
      values[n] = n * 100.0 + static_cast<double>(i % 50);
      mask |= static_cast<ChannelMask>(1u << n);
    }
    const double t = 0.1 * static_cast<double>(i + 1);
    log.Append(t, t + 0.005, values, mask);
  }
  log.CloseGaps();
  for (int n = 0; n < kChannelCount; ++n) log.SetActive(n, n % 2 == 0);
  return log;
}

// True when both logs hold the same records, points, series states and markers (NaN equal NaN).
inline bool SameRecords(const DatalogLog& a, const DatalogLog& b) {
  if (a.Times() != b.Times() || a.Markers() != b.Markers() || a.Gaps() != b.Gaps()) return false;
  for (std::size_t i = 0; i < a.RecordCount(); ++i) {
    const double x = a.Arrivals()[i];
    const double y = b.Arrivals()[i];
    if (!(x == y || (std::isnan(x) && std::isnan(y)))) return false;
  }
  for (int n = 0; n < kChannelCount; ++n) {
    const LogSeries& x = a.Series(n);
    const LogSeries& y = b.Series(n);
    if (x.active != y.active || x.colour != y.colour || x.points != y.points) return false;
    for (std::size_t i = 0; i < a.RecordCount(); ++i) {
      const float vx = i < x.values.size() ? x.values[i] : NAN;
      const float vy = i < y.values.size() ? y.values[i] : NAN;
      if (!(vx == vy || (std::isnan(vx) && std::isnan(vy)))) return false;
    }
  }
  return true;
}

// The journal's file in memory: what a crash leaves is what was appended; `synced` is how much
// of it a power cut would leave.
class MemoryJournalFile : public JournalFile {
 public:
  bool Create(const std::string&) override {
    if (fail_create) return false;
    bytes.clear();
    synced = 0;
    open = true;
    return true;
  }
  bool Append(std::string_view more) override {
    if (!open) return false;
    bytes.append(more);
    return true;
  }
  bool Sync() override {
    if (fail_sync) return false;
    synced = bytes.size();
    return open;
  }
  void Close() override { open = false; }
  bool Remove(const std::string&) override {
    removed = true;
    bytes.clear();
    return true;
  }

  std::string bytes;
  std::size_t synced = 0;
  bool open = false;
  bool removed = false;
  bool fail_create = false;
  bool fail_sync = false;  // the disk refuses the push (full, or failing)
};

}  // namespace vela::testing
