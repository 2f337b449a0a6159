// How a fuzz target checks what must always hold: a broken invariant names itself on standard
// error and aborts, so that libFuzzer keeps the input that broke it as a crash.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "link/comms_sender.h"

namespace vela::fuzz {

[[noreturn]] void Fail(std::string_view invariant);

inline void Require(bool holds, std::string_view invariant) {
  if (!holds) Fail(invariant);
}

// The bytes a port took, cut into the six-byte command frames they must be. Fails unless they
// are a whole number of frames and every frame's last byte is the sum of its first five modulo
// 256.
std::vector<FrameBytes> CommandFramesOf(std::span<const std::uint8_t> written);

// The line bytes of `frames`, one after another.
std::vector<std::uint8_t> LineBytesOf(std::span<const FrameBytes> frames);

}  // namespace vela::fuzz
