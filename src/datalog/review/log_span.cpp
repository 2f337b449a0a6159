#include "datalog/review/log_span.h"

#include <algorithm>
#include <cctype>

namespace vela::review {

ColumnView RecordedColumn(const DatalogLog& log, int channel) {
  if (channel < 0 || channel >= kChannelCount) return {};
  const LogSeries& series = log.Series(channel);
  return {series.values, &series.summaries};
}

bool SameName(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return std::tolower(static_cast<unsigned char>(x)) ==
                  std::tolower(static_cast<unsigned char>(y));
         });
}

std::optional<int> RecordedChannelNamed(std::string_view name) {
  for (int n = 0; n < kChannelCount; ++n) {
    if (SameName(name, kChannels[n].name) || SameName(name, kChannels[n].caption)) return n;
  }
  return std::nullopt;
}

}  // namespace vela::review
