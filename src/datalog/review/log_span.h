// The pieces every review view reads a log by: the records of a time span, a channel's column as
// it is stored (no copy), and a channel found by its name. A column may be shorter than the log's
// times (a channel switched on late, or never recorded): the records past its end have no point.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "datalog/datalog_log.h"

namespace vela::review {

// The records of a time span (kept with the log, which the exports read by them too).
using vela::RecordRange;
using vela::RecordsInSpan;
using vela::WholeLog;

// A channel's values with the summaries drawn from them: a recorded channel of a log or a
// computed one.
struct ColumnView {
  std::span<const float> values;
  const MinMaxPyramid* summaries = nullptr;  // null: read every sample
};
ColumnView RecordedColumn(const DatalogLog& log, int channel);

// The value at record `i`, NaN past the column's end.
inline float ValueOr(std::span<const float> values, std::size_t i) {
  return i < values.size() ? values[i] : kNoPoint;
}

// The recorded channel a name stands for: its export name ("Duty") or its caption ("Duty %"),
// letters in any case. nullopt for any other name.
std::optional<int> RecordedChannelNamed(std::string_view name);
// True when both names are the same, letters in any case.
bool SameName(std::string_view a, std::string_view b);

}  // namespace vela::review
