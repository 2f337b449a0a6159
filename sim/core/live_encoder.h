// Live frames as the ECU sends them, laid out by link/live/live_frame.h. Besides the fields, the
// encoder sees to it that the data never spells one of the link's markers ("START", "END",
// "ALL", "DONE", and "CODE" of the fault code reply), which the program would take for the edge of
// a frame or an upload reply: a byte that would complete one is moved by one count.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "calibration/calibration_image.h"
#include "link/live/live_frame.h"
#include "sim/core/engine_model.h"

namespace vela::sim {

live::Frame EncodeLiveFrame(const EngineState& state, const CalibrationImage& image,
                            int frames_per_second);

// Index of the first marker spelt anywhere in `bytes`, or npos.
std::size_t FindMarker(std::span<const std::uint8_t> bytes);

// Changes data bytes (positions 6 to 42) until neither the data nor the data followed by the
// first character of "END" spells a marker.
void KeepMarkersOut(live::Frame& frame);

}  // namespace vela::sim
