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

// Sends command frames: the only way anything reaches the ECU.
class CommandSender {
 public:
  virtual ~CommandSender() = default;
  virtual void CommsSend(int command, int address, std::int32_t value, bool& pre_wait,
                         bool& reserved, int command2, int address2, std::int32_t value2,
                         bool& slower) = 0;
  // Convenience for the common single frame.
  void Send(int command, int address, std::int32_t value, bool pre_wait = false) {
    bool reserved = false;
    bool slower = false;
    CommsSend(command, address, value, pre_wait, reserved, 0, 0, 0, slower);
  }
};

}  // namespace vela
