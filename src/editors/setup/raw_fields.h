// The bytes that the outputs, inputs, idle and throttle position editors show as they are: each
// named by its field and image position, with the decoding the calibration layout gives (bit
// fields as switches, the idle target in RPM, a byte shown halved), and the setup checks that
// speak of it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "calibration/calibration_image.h"
#include "editors/setup/setup_checks.h"

namespace vela {

enum class RawShow {
  kByte,    // 0 to 255 as stored
  kHalved,  // stored / 2
  kBits,    // eight switches, bit 0 first
  kRpm24,   // a 24-bit engine period shown in RPM (3 positions)
};

struct RawField {
  std::string label;  // field name and position, "Gpo1Setup byte 1 (884)"
  int position;       // first image position
  RawShow show = RawShow::kByte;
};

struct RawGroup {
  std::string title;
  std::vector<RawField> fields;
};

// General purpose outputs 1 to 3 (16 bytes each, the first the output's function code).
std::vector<RawGroup> OutputGroups();
// General purpose inputs 1 and 2 (six settings bytes, two further bytes, the function code).
std::vector<RawGroup> InputGroups();
// Idle control: target, valve limits, cold adjuster, PWM frequency, options, further values.
std::vector<RawGroup> IdleGroups();
// Throttle position sensor set-up and calibration.
std::vector<RawGroup> TpsGroups();
// The battery compensation's bytes beyond its 16 V row (1006 to 1010).
RawGroup UnshownBattGroup();

// The messages of the setup checks that speak of `position` and fail on `image`, in check order.
std::vector<std::string> FailedChecksAt(const CalibrationImage& image, int position,
                                        const CheckContext& context);

}  // namespace vela
