// The comms send routine (`CommsSend` in the behaviour description): frames commands as six-byte
// frames and writes them to the ECU one byte at a time, with a calibrated gap after every byte. The
// gap follows `EngineRate` (the busier the engine, the longer the ECU needs per byte) through the
// pacing table below.
#pragma once

#include <array>
#include <cstdint>

#include "base/platform.h"
#include "link/delay_loop.h"
#include "link/link_state.h"
#include "link/serial_port.h"

namespace vela {

// A command frame as it travels: six bytes.
using FrameBytes = std::array<std::uint8_t, 6>;

// Command code, address low and high byte, value low and high byte, checksum (byte sum modulo
// 256). Values above 16,777,216 first lose Int(value / 16,777,216), then values above 65,535 are
// taken modulo 65,536; negative addresses and values travel as their 16-bit two's complement.
FrameBytes BuildFrameBytes(const CommandFrame& frame);

// One row of the pacing table: the gap between bytes and its companion step count.
struct PacingRow {
  float byte_delay;    // `CommsByteDelay`, milliseconds
  std::int16_t steps;  // `CommsDelaySteps`
};

// The first row whose (exclusive) bound `engine_rate` is below; the last row above 380,000.
PacingRow PacingRowFor(float engine_rate);

// Milliseconds one frame of `command` is given: 2 x delay + 0.9 for codes 2 and 12, 10.45 for
// code 6, 1.05 x delay + 0.45 for the others.
double FrameTimeMs(int command, float byte_delay);

// The frame time every command gets when comms delays are switched off (see docs/link.md).
inline constexpr double kUndelayedFrameTimeMs = 0.015;
// A byte write that takes longer than this ends the call as aborted.
inline constexpr std::int64_t kWriteTimeoutMs = 350;
// `DelayMs` argument waited after the closing command at shutdown.
inline constexpr int kClosingDelayMs = 20;

class CommsSender : public CommandSender {
 public:
  CommsSender(SerialPort& port, Clock& clock, LinkState& link, DelayLoop& delay)
      : port_(port), clock_(clock), link_(link), delay_(delay) {}

  // Chooses the pacing, then writes the frame's bytes, each followed by its gap. Nothing goes
  // out while the port is closed, before the PC has been measured or while sending is suspended.
  [[nodiscard]] SendResult Send(const CommandFrame& frame) override;

  // Shutdown: unless a transfer holds the link (`TLock`), sends command 6 (address 0, value 0)
  // and waits `DelayMs(kClosingDelayMs)` so that the ECU takes it before the port closes.
  void SendClosingCommand();

 private:
  PacingRow ChoosePacing();
  // Writes the bytes; false when a byte was not taken in time and the rest was dropped.
  [[nodiscard]] bool WriteFrame(const FrameBytes& bytes, double frame_time, bool pre_wait,
                                const PacingRow& pacing);
  void PreWait(double frame_time);
  std::int64_t ByteWaitIterations(double frame_time, bool pre_wait, const PacingRow& pacing) const;

  SerialPort& port_;
  Clock& clock_;
  LinkState& link_;
  DelayLoop& delay_;
};

}  // namespace vela
