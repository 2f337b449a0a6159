#include "link/engine_rate.h"

#include <limits>

namespace vela {

float EngineRate::RateFromCount(std::uint32_t count) {
  if (count == 0) return std::numeric_limits<float>::infinity();
  return static_cast<float>(kEngineRateConstant / kEngineRateDivisor / count);
}

void EngineRate::AddCount(std::uint32_t count) {
  table_[next_] = RateFromCount(count);
  next_ = (next_ + 1) % table_.size();
  Publish();
}

void EngineRate::Refill(float value) {
  table_.fill(value);
  next_ = 0;
  Publish();
}

// Summed afresh each time: a running sum would turn into NaN once an infinite entry leaves it.
void EngineRate::Publish() {
  double sum = 0.0;
  for (const float entry : table_) sum += entry;
  link_.EngineRate = static_cast<float>(sum / static_cast<double>(table_.size()));
}

}  // namespace vela
