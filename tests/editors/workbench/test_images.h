// Calibration images the workbench tests start from.
#pragma once

#include <random>

#include "calibration/calibration_image.h"

namespace vela::testing {

// Random bytes, the same for the same seed.
inline CalibrationImage Noise(unsigned seed) {
  std::mt19937 random(seed);
  CalibrationImage image;
  for (int p = 1; p <= kImageLength; ++p) image.SetByte(p, static_cast<std::uint8_t>(random()));
  return image;
}

// 9 fuel and 5 ignition load sites, every fuel cell of both maps 2.000 ms and every ignition
// cell 20 degrees.
inline CalibrationImage EvenMaps() {
  CalibrationImage image;
  for (int r = 1; r <= kMapRows; ++r) {
    for (int c = 1; c <= 9; ++c) {
      image.SetFuelMs(1, r, c, 2.0);
      image.SetFuelMs(2, r, c, 2.0);
    }
    for (int c = 1; c <= 5; ++c) image.SetIgnDegrees(r, c, 20.0);
  }
  return image;
}

}  // namespace vela::testing
