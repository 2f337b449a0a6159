// Scripted stand-ins for the transmit side's tests.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "link/link_timing.h"
#include "link/serial_port.h"

namespace vela::transmit_testing {

// Returns the scripted readings first, then `now`, which moves by `step_per_read` per reading.
struct FakeClock : Clock {
  std::int64_t NowMs() override {
    ++reads;
    if (script.empty()) return (now += step_per_read) - step_per_read;
    now = script.front();
    script.pop_front();
    return now;
  }
  void LetEventsRun() override { ++events_run; }
  std::int64_t now = 0, step_per_read = 0;
  std::deque<std::int64_t> script;
  int reads = 0, events_run = 0;
};

struct ScriptedPort : SerialPort {
  bool Open(int) override { return open = true; }
  void Close() override { open = false; }
  bool IsOpen() const override { return open; }
  std::size_t BytesWaiting() const override { return 0; }
  std::vector<std::uint8_t> ReadAll() override { return {}; }
  void ClearInput() override {}
  bool WriteByte(std::uint8_t byte) override {
    if (refuse_from >= 0 && static_cast<int>(written.size()) >= refuse_from) return false;
    written.push_back(byte);
    if (on_write) on_write();
    return true;
  }
  bool open = true;
  int refuse_from = -1;  // the port takes no byte from this count on (-1: every byte)
  std::vector<std::uint8_t> written;
  std::function<void()> on_write;
};

struct RecordingLabel : StatusLabel {
  void SetText(const std::string& text) override { log.push_back(text); }
  void SetColour(LabelColour c) override {
    log.push_back(std::to_string(c.red) + "," + std::to_string(c.green) + "," +
                  std::to_string(c.blue));
  }
  std::vector<std::string> log;
};

struct RecordingSender : CommandSender {
  void CommsSend(int command, int address, std::int32_t value, bool& pre_wait, bool&, int, int,
                 std::int32_t, bool&) override {
    sent.push_back({command, address, value, pre_wait ? 1 : 0});
  }
  std::vector<std::vector<int>> sent;
};

}  // namespace vela::transmit_testing
