// Helpers shared by the simulated ECU's tests: command frames as bytes, a reader that splits the
// ECU's output into live frames, upload replies and stray bytes, and a loop that runs the
// simulator over simulated time.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "link/live/live_frame.h"
#include "sim/core/ecu_simulator.h"

namespace vela::sim::testing {

inline bool At(const std::vector<std::uint8_t>& s, std::size_t i, std::string_view text) {
  if (i + text.size() > s.size()) return false;
  for (std::size_t k = 0; k < text.size(); ++k) {
    if (s[i + k] != static_cast<std::uint8_t>(text[k])) return false;
  }
  return true;
}

struct Reply {
  std::size_t length = 0;  // bytes from "ALL" up to and including "DONE" (or to the next frame)
  bool has_done = false;
  std::vector<std::uint8_t> body;  // the bytes between "ALL" and "DONE"
};

struct Stream {
  std::vector<live::Frame> frames;
  std::vector<Reply> replies;
  std::size_t stray = 0;
};

// True when `s` from `i` on is the beginning of a live frame that has not yet been sent whole.
inline bool UnfinishedFrame(const std::vector<std::uint8_t>& s, std::size_t i) {
  const std::size_t n = s.size() - i;
  if (n >= static_cast<std::size_t>(live::kFrameLength)) return false;
  const std::string_view start = live::kStartMarker;
  return At(s, i, start.substr(0, std::min(n, start.size())));
}

// Reads `s` as the program would see it when nothing is lost: complete live frames, upload
// replies (up to "DONE", or cut short by the next live frame) and everything else as stray.
inline Stream Split(const std::vector<std::uint8_t>& s) {
  Stream out;
  for (std::size_t i = 0; i < s.size();) {
    if (UnfinishedFrame(s, i)) break;  // the start of a frame still on its way
    if (At(s, i, "START") && At(s, i + live::kStartToEnd, "END")) {
      live::Frame f;
      std::copy(s.begin() + i, s.begin() + i + live::kFrameLength, f.begin());
      out.frames.push_back(f);
      i += live::kFrameLength;
    } else if (At(s, i, "ALL")) {
      Reply r;
      std::size_t j = i + 3;
      while (j < s.size() && !At(s, j, "DONE") && !At(s, j, "START")) ++j;
      r.has_done = At(s, j, "DONE");
      r.body.assign(s.begin() + i + 3, s.begin() + j);
      r.length = j - i + (r.has_done ? 4 : 0);
      out.replies.push_back(r);
      i += r.length;
    } else {
      ++out.stray;
      ++i;
    }
  }
  return out;
}

// Advances `sim` from its present time to `until_us` in steps of `step_us`, collecting output
// (and the most bytes one step gave in `largest`).
inline std::vector<std::uint8_t> RunUntil(EcuSimulator& sim, std::int64_t until_us,
                                          std::int64_t step_us = 1000,
                                          std::size_t* largest = nullptr) {
  std::vector<std::uint8_t> out;
  for (std::int64_t t = sim.NowUs() + step_us; t < until_us + step_us; t += step_us) {
    const auto bytes = sim.Advance(std::min(t, until_us));
    out.insert(out.end(), bytes.begin(), bytes.end());
    if (largest) *largest = std::max(*largest, bytes.size());
  }
  return out;
}

inline void Send(EcuSimulator& sim, std::uint8_t code, std::uint16_t address, std::uint16_t value) {
  sim.Feed(EncodeCommandFrame({code, address, value}));
}

}  // namespace vela::sim::testing
