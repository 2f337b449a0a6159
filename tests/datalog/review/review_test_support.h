// Logs of a known shape for the review's tests.
#pragma once

#include <cmath>
#include <map>
#include <vector>

#include "datalog/datalog_log.h"

namespace vela::review::testing {

// A log with one record per entry of `times`; channel n holds `columns[n][i]` at record i (NaN:
// no point there); a channel not in `columns` is never recorded. Every record needs a point.
inline DatalogLog LogOf(const std::vector<double>& times,
                        const std::map<int, std::vector<double>>& columns) {
  DatalogLog log;
  for (std::size_t i = 0; i < times.size(); ++i) {
    ChannelValues values{};
    ChannelMask mask = 0;
    for (const auto& [channel, column] : columns) {
      if (i >= column.size() || std::isnan(column[i])) continue;
      values[channel] = column[i];
      mask |= static_cast<ChannelMask>(1u << channel);
    }
    log.Append(times[i], times[i], values, mask);
  }
  log.CloseGaps();
  return log;
}

inline std::vector<double> Steps(std::size_t count, double step, double first = 0.0) {
  std::vector<double> times(count);
  for (std::size_t i = 0; i < count; ++i) times[i] = first + step * static_cast<double>(i);
  return times;
}

}  // namespace vela::review::testing
