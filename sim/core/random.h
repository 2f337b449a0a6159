// A small seeded random source. The simulated ECU must produce the same bytes for the same seed
// on every platform, so it draws from its own generator (SplitMix64) rather than from the
// standard distributions, whose results differ between library implementations.
#pragma once

#include <cstdint>

namespace vela::sim {

class Rng {
 public:
  explicit Rng(std::uint64_t seed) : state_(seed) {}

  std::uint64_t Next() {
    std::uint64_t z = (state_ += 0x9E3779B97F4A7C15ULL);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
    return z ^ (z >> 31);
  }

  // Uniform in [0, 1).
  double Uniform() { return static_cast<double>(Next() >> 11) * 0x1.0p-53; }
  // Uniform in [low, high).
  double Range(double low, double high) { return low + (high - low) * Uniform(); }
  // Uniform whole number in [low, high]; low when high < low.
  int Int(int low, int high) {
    if (high <= low) return low;
    const auto span = static_cast<std::uint64_t>(high - low) + 1;
    return low + static_cast<int>(Next() % span);
  }

 private:
  std::uint64_t state_;
};

}  // namespace vela::sim
