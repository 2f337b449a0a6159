// The link's globals, held by one object that the transmit side, the receive side, the upload and
// the supervision share. Names are the link's own.
#pragma once

#include <cstdint>
#include <string>

namespace vela {

struct LinkState {
  // Timing (busy-waits and pacing).
  std::int32_t CountsPerMS = 0;
  std::int32_t CommsRepeat = 1;
  std::int16_t CommsPreWaitCount = 0;
  float DispatchPerTick = 1.0f;
  std::int16_t CommsSpeedValue = 27;
  bool CommsSuspended = false;
  bool SlowSend = false;          // the reduce-sending option (`CheckSlowSend`)
  bool CommsDelayEnabled = true;  // off: frame times shrink to 0.015 ms (see docs/link.md)
  bool ForcedDelay = false;
  // Set once `CountsPerMS` has been measured at start: nothing is sent before, since the pacing
  // gaps between bytes are counted in delay-loop iterations of this PC.
  bool PacingReady = false;

  // Transmit results.
  std::int16_t CommsSendAborted = 0;
  std::int16_t StallCounter = 0;
  float EngineRate = 0.0f;

  // Receive side.
  std::uint8_t RxPending = 0;
  std::int16_t RxLevel = 0;
  std::int16_t RxThreshold = 0;
  bool RxDebug = false;

  // The main form's caption: "Not" in it means not connected.
  std::string Caption;
  // A link transfer (download) holds the link; shutdown then sends no closing command.
  bool TLock = false;

  // The caption says the link is down ("Not" in it).
  bool CaptionSaysNotConnected() const { return Caption.find("Not") != std::string::npos; }
  // The caption is set and says the link is up.
  bool CaptionSaysConnected() const { return !Caption.empty() && !CaptionSaysNotConnected(); }
};

// Command codes the ECU answers to (docs/protocol.md).
// The single-value write: one image byte at its position, a fuel cell's 16-bit value at the
// cell's first byte, or the live-frame rate at kLiveRateAddress.
inline constexpr int kSingleValueWrite = 4;
// Closes a download transfer; also sent before the port is closed.
inline constexpr int kCloseCommand = 6;
// The ECU register that takes the live-frame rate (with kSingleValueWrite); the upload also sets
// it while it prepares the link. Nothing written there is stored in the image.
inline constexpr int kLiveRateAddress = 864;

// One command frame as a caller hands it over; the sender turns it into six bytes on the wire.
struct CommandFrame {
  int command = 0;
  int address = 0;
  std::int32_t value = 0;
  // Waits a quiet spell before the frame and spreads the frame time over more steps; the
  // live-frame rate command asks for it, so that the ECU gets a gap before a rate change.
  bool pre_wait = false;
};

// What became of a frame.
enum class SendOutcome {
  kSent,     // all six bytes written, each followed by its gap
  kNotSent,  // nothing written: port closed, PC not yet measured, sending suspended or off-line
  kAborted,  // a byte was not taken in time: the rest dropped and the link marked stalled
  kHeld,     // kept back, to go out later in the order made (edits during a download)
};

struct SendResult {
  SendOutcome outcome = SendOutcome::kNotSent;
  // The pacing the frame was given: the gap between bytes (the reduce-sending option included)
  // and its companion step count. Zero when the frame never reached the pacing.
  float byte_delay_ms = 0.0f;
  std::int16_t delay_steps = 0;

  bool sent() const { return outcome == SendOutcome::kSent; }
};

// Sends command frames: the only way anything reaches the ECU. A frame that could not go out is
// not repeated; the result says so, and the link state keeps the stall for supervision.
class CommandSender {
 public:
  virtual ~CommandSender() = default;
  [[nodiscard]] virtual SendResult Send(const CommandFrame& frame) = 0;
};

}  // namespace vela
