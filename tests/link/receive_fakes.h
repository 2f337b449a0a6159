// Scripted stand-ins and a wired-up receive side for the receive, supervision and upload tests.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <tuple>
#include <vector>

#include "link/connection_supervisor.h"
#include "link/receive/receive_dispatch.h"

namespace vela::receive_testing {

// A port whose input the test fills; a read may call back into the code under test.
struct ReceivePort : SerialPort {
  bool Open(int port_number) override {
    opened.push_back(port_number);
    return open = opens_succeed;
  }
  void Close() override { open = false; }
  bool IsOpen() const override { return open; }
  std::size_t BytesWaiting() const override { return input.size(); }
  std::vector<std::uint8_t> ReadAll() override {
    if (on_read) on_read();
    std::vector<std::uint8_t> bytes(input.begin(), input.end());
    input.clear();
    return bytes;
  }
  void ClearInput() override { input.clear(); }
  bool WriteByte(std::uint8_t) override { return true; }

  bool open = true;
  bool opens_succeed = true;
  std::string input;
  std::vector<int> opened;
  std::function<void()> on_read;
};

// Time stands still unless the test moves it.
struct ReceiveClock : Clock {
  std::int64_t NowMs() override { return now_ms; }
  void LetEventsRun() override { ++events_run; }
  std::int64_t now_ms = 0;
  int events_run = 0;
};

using SentCommand = std::tuple<int, int, std::int32_t>;  // command, address, value

struct SentCommands : CommandSender {
  void CommsSend(int command, int address, std::int32_t value, bool&, bool&, int, int, std::int32_t,
                 bool&) override {
    sent.emplace_back(command, address, value);
  }
  std::vector<SentCommand> sent;
};

// A live frame built field by field with the positions of live_frame.h.
struct FrameBuilder {
  FrameBuilder() {
    std::copy(live::kStartMarker.begin(), live::kStartMarker.end(), frame.begin());
    std::copy(live::kEndMarker.begin(), live::kEndMarker.end(), frame.begin() + 42);
  }
  FrameBuilder& Byte(int position, std::uint8_t value) {
    frame[position - 1] = value;
    return *this;
  }
  FrameBuilder& U16(int position, std::uint16_t value) {
    return Byte(position, value & 0xFF).Byte(position + 1, value >> 8);
  }
  FrameBuilder& U24(int position, std::uint32_t value) {
    return U16(position, value & 0xFFFF).Byte(position + 2, (value >> 16) & 0xFF);
  }
  std::string Str() const { return std::string(frame.begin(), frame.end()); }
  live::Frame frame{};
};

// Frames told apart by their engine periods 1, 2, ... count.
inline std::string Frames(int count, std::uint32_t first = 1) {
  std::string frames;
  for (int i = 0; i < count; ++i)
    frames += FrameBuilder().U24(live::kEnginePeriod, first + i).Str();
  return frames;
}

// The whole receive side over the fakes, connected and with data arriving.
struct ReceiveRig {
  ReceiveRig() {
    ApplyReceiveDefaults(state);
    state.Caption = std::string(kCaptionConnected);
    state.RxPending = static_cast<std::uint8_t>(state.RxLevel);
    handlers.SetHooks({.on_engine_count = nullptr, .on_refreshed = [this](const LiveData&) {
                         ++refreshes;
                         if (on_refreshed) on_refreshed();
                       }});
    dispatcher.SetFrameHook(
        [this](const live::Frame& f) { periods.push_back(live::U24(f, live::kEnginePeriod)); });
    buffer.SetReplyExpected([this] { return upload.UploadExpected(); });
  }
  void Dispatch() {
    bool first_call = true;
    dispatcher.CommsReceiveDispatch(first_call);
  }
  void Receive(const std::string& chunk) {
    port.input = chunk;
    buffer.OnCommEvent(kDataReceived);
  }
  std::string& Buffer() { return buffer.RxBuffer(); }

  LinkState state;
  LinkDisplay display;
  LiveData live;
  ReceivePort port;
  ReceiveClock clock;
  SentCommands sender;
  ReceiveBuffer buffer{port, state, display};
  CalibrationUpload upload{port, sender, clock, state, display};
  ReceiveHandlers handlers{live};
  ReceiveDispatcher dispatcher{port, clock, state, display, buffer, upload, handlers};
  ConnectionSupervisor supervisor{state, display, live, upload};
  std::vector<std::uint32_t> periods;  // of the new frames taken, in order
  int refreshes = 0;
  std::function<void()> on_refreshed;
};

}  // namespace vela::receive_testing
