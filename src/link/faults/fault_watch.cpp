#include "link/faults/fault_watch.h"

#include <algorithm>

namespace vela {

std::optional<int> FaultWatch::ObserveFrame(int held, int newest, std::int64_t now) {
  const bool news = newest != 0 && (!any_frame_ || newest != last_newest_ || held > last_held_);
  any_frame_ = true;
  last_held_ = held;
  last_newest_ = newest;
  if (!news) return std::nullopt;
  Record(newest, now);
  unacknowledged_ = newest;
  return newest;
}

std::vector<int> FaultWatch::ObserveCodes(std::span<const int> codes, std::int64_t now) {
  std::vector<int> added;
  for (int code : codes) {
    const bool known = std::any_of(seen_.begin(), seen_.end(),
                                   [code](const SeenFault& f) { return f.code == code; });
    if (code == 0 || known) continue;
    seen_.push_back({code, now, 1});
    added.push_back(code);
  }
  return added;
}

void FaultWatch::Record(int code, std::int64_t now) {
  const auto it = std::find_if(seen_.begin(), seen_.end(),
                               [code](const SeenFault& f) { return f.code == code; });
  if (it == seen_.end()) {
    seen_.push_back({code, now, 1});
  } else {
    ++it->count;
  }
}

}  // namespace vela
