// The receive side wired up over the fakes, and live frames built field by field, for the receive,
// supervision, upload and fault code tests and the upload's road through the editors.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "link/connection_supervisor.h"
#include "link/receive/receive_dispatch.h"
#include "support/platform_fakes.h"
#include "support/recording_sender.h"

namespace vela::testing {

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
    port.open = true;
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
  std::string& Buffer() { return buffer.received(); }

  LinkState state;
  LinkDisplay display;
  LiveData live;
  ScriptedPort port;
  FakeClock clock;
  RecordingSender sender;
  ReceiveBuffer buffer{port, state, display};
  CalibrationUpload upload{port, sender, clock, state, display};
  ReceiveHandlers handlers{live};
  ReceiveDispatcher dispatcher{port, clock, state, display, buffer, upload, handlers};
  ConnectionSupervisor supervisor{state, display, live, upload};
  std::vector<std::uint32_t> periods;  // of the new frames taken, in order
  int refreshes = 0;
  std::function<void()> on_refreshed;
};

}  // namespace vela::testing
