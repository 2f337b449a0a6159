// The serial line as the fuzz targets drive it: a port whose input the target fills and which
// keeps every byte the program writes, and the program's own sender pacing frames onto it.
#pragma once

#include <cstdint>
#include <vector>

#include "link/comms_sender.h"
#include "link/delay_loop.h"
#include "support/platform_fakes.h"

namespace vela::fuzz {

// Closing drops what the port held, as closing a serial port does.
struct RecordingPort : testing::ScriptedPort {
  RecordingPort() { open = true; }
  void Close() override {
    ScriptedPort::Close();
    input.clear();
  }
};

// The link's shared values and `CommsSend` over a recording port. Pacing is ready from the start
// with the shortest waits (comms delays off, no measured speed), as for the simulated ECU, and a
// clock that never moves never lets a write time out.
struct RecordingLine {
  RecordingLine() {
    link.PacingReady = true;
    link.CommsDelayEnabled = false;
  }
  RecordingPort port;
  LinkState link;
  testing::FakeClock clock;
  DelayLoop delay{clock, link};
  CommsSender sender{port, clock, link, delay};
};

}  // namespace vela::fuzz
