// A calibration image of random bytes, the same for the same seed.
#pragma once

#include <random>

#include "calibration/calibration_image.h"

namespace vela::testing {

inline CalibrationImage Noise(unsigned seed) {
  std::mt19937 random(seed);
  CalibrationImage image;
  for (int p = 1; p <= kImageLength; ++p) image.SetByte(p, static_cast<std::uint8_t>(random()));
  return image;
}

}  // namespace vela::testing
