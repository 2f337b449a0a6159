// `EngineRate`: how busy the engine keeps the ECU, from the first field of every live frame (the
// crank period in microseconds per revolution). One frame's rate is kEngineRateConstant /
// kEngineRateDivisor / count, which is engine cycles per hour (30 x RPM); `EngineRate` is the mean
// over the last kEngineRateTableLength frames and picks the row of the pacing table.
#pragma once

#include <array>
#include <cstdint>

#include "link/link_state.h"

namespace vela {

inline constexpr double kEngineRateConstant = 3'600'000'000.0;  // microseconds per hour
inline constexpr double kEngineRateDivisor = 2.0;  // crank revolutions per four-stroke cycle
inline constexpr std::size_t kEngineRateTableLength = 10;

class EngineRate {
 public:
  // The table starts filled with 0 (a standing engine).
  explicit EngineRate(LinkState& link) : link_(link) { Refill(0.0f); }

  // The rate of one crank period; a count of 0 (engine stopped) gives +infinity.
  static float RateFromCount(std::uint32_t count);

  // Adds one frame's period to the table, replacing the oldest entry, and sets
  // `LinkState::EngineRate` to the mean of the table.
  void AddCount(std::uint32_t count);

  // Sets every entry to `value` (the link was lost: the mean starts afresh).
  void Refill(float value);

 private:
  void Publish();

  LinkState& link_;
  std::array<float, kEngineRateTableLength> table_{};
  std::size_t next_ = 0;
};

}  // namespace vela
