// The base calibration built into the program. Kept apart from its generator so that the
// generator can be built before sim/data/base.sm1 exists.
#include "sim/core/base_calibration.h"

namespace vela::sim {

namespace detail {
// Generated at build time from sim/data/base.sm1.
extern const std::uint8_t kEmbeddedBaseImage[kImageLength];
}  // namespace detail

CalibrationImage EmbeddedBaseCalibration() {
  CalibrationImage image;
  image.Assign(std::span<const std::uint8_t>(detail::kEmbeddedBaseImage, kImageLength));
  return image;
}

}  // namespace vela::sim
