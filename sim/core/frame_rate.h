// The live-frame rate register, address 864. The program sends Int(C / DispatchPerTick^E) for
// the rate its user chose; with DispatchPerTick = 1 the values are the constants 3, 5, 8, 10,
// 13, 17, 21, 27, 33, 44 and 66 for 60, 40, 30, 25, 20, 15, 12, 10, 8, 6 and 4 frames a second.
// The ECU reads the value as a band: every constant falls into the band of its own rate, and a
// value between two constants (a DispatchPerTick other than 1 moves them all) goes to the
// nearer one, to the faster rate when it lies exactly halfway. Larger values mean slower
// frames.
#pragma once

#include <array>
#include <cstdint>

namespace vela::sim {

struct RateBand {
  int highest_value;  // the band holds values up to and including this one
  int frames_per_second;
};

inline constexpr std::array<RateBand, 11> kRateBands = {{
    {4, 60},
    {7, 40},
    {9, 30},
    {11, 25},
    {15, 20},
    {19, 15},
    {24, 12},
    {30, 10},
    {38, 8},
    {55, 6},
    {65535, 4},
}};

// The value the ECU starts with, before the program sends any: 27 (10 frames a second), the same
// value the program starts with.
inline constexpr int kInitialRateValue = 27;

constexpr int FramesPerSecondForValue(std::uint16_t value) {
  for (const RateBand& band : kRateBands) {
    if (value <= band.highest_value) return band.frames_per_second;
  }
  return kRateBands.back().frames_per_second;
}

}  // namespace vela::sim
