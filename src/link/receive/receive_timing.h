// The receive side's working values: the timer intervals the Qt side gives its QTimers and the
// link values the composition root sets before the timers start. docs/link.md gives the reasoning.
#pragma once

#include <cstdint>

#include "link/link_state.h"

namespace vela {

inline constexpr int kTimerCommProcessIntervalMs = 8;
inline constexpr int kCommsTimerIntervalMs = 100;
inline constexpr int kUploadTimerFirstIntervalMs = 800;

inline constexpr std::int16_t kDefaultRxLevel = 10;
inline constexpr std::int16_t kDefaultRxThreshold = 0;
inline constexpr float kDefaultDispatchPerTick = 1.0f;
inline constexpr std::int16_t kDefaultFrameCounterLimit = 1;

inline void ApplyReceiveDefaults(LinkState& state) {
  state.RxLevel = kDefaultRxLevel;
  state.RxThreshold = kDefaultRxThreshold;
  state.DispatchPerTick = kDefaultDispatchPerTick;
}

}  // namespace vela
