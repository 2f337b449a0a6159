// Throughput of the receive side: live frames through the receive event, the dispatcher and the
// 28 handlers, in frames per second.
#include <benchmark/benchmark.h>

#include <algorithm>

#include "link/connection_supervisor.h"
#include "link/link_state.h"
#include "link/live/live_data.h"
#include "link/live/live_frame.h"
#include "link/receive/receive_buffer.h"
#include "link/receive/receive_dispatch.h"
#include "link/receive/receive_handlers.h"
#include "link/transfer/upload.h"

namespace {

class NullClock : public vela::Clock {
 public:
  std::int64_t NowMs() override { return 0; }
  void LetEventsRun() override {}
};

// A port that always has the next live frame waiting.
class StreamingPort : public vela::SerialPort {
 public:
  // A frame of an engine at 1000 rpm (60,000 microseconds a revolution) and filler data.
  StreamingPort() : frame_(vela::live::kFrameLength) {
    for (int i = 0; i < vela::live::kFrameLength; ++i)
      frame_[i] = static_cast<std::uint8_t>(20 + i);
    std::copy(vela::live::kStartMarker.begin(), vela::live::kStartMarker.end(), frame_.begin());
    std::copy(vela::live::kEndMarker.begin(), vela::live::kEndMarker.end(), frame_.end() - 3);
    frame_[vela::live::kEnginePeriod - 1] = 0x60;
    frame_[vela::live::kEnginePeriod] = 0xEA;
    frame_[vela::live::kEnginePeriod + 1] = 0x00;
  }
  bool Open(int) override { return true; }
  void Close() override {}
  bool IsOpen() const override { return true; }
  std::size_t BytesWaiting() const override { return frame_.size(); }
  std::vector<std::uint8_t> ReadAll() override { return frame_; }
  void ClearInput() override {}
  bool WriteByte(std::uint8_t) override { return true; }

 private:
  std::vector<std::uint8_t> frame_;
};

class NullSender : public vela::CommandSender {
 public:
  vela::SendResult Send(const vela::CommandFrame&) override {
    return {.outcome = vela::SendOutcome::kSent};
  }
};

void BM_ReceiveAndDispatchLiveFrames(benchmark::State& state) {
  StreamingPort port;
  NullClock clock;
  NullSender sender;
  vela::LinkState link;
  vela::LinkDisplay display;
  vela::LiveData live;
  link.RxLevel = 10;
  link.Caption = std::string(vela::kCaptionConnected);
  vela::CalibrationUpload upload(port, sender, clock, link, display);
  vela::ReceiveHandlers handlers(live);
  vela::ReceiveBuffer buffer(port, link, display);
  vela::ReceiveDispatcher dispatcher(port, clock, link, display, buffer, upload, handlers);
  std::int64_t frames = 0;
  for (auto _ : state) {
    buffer.OnCommEvent(vela::kDataReceived);
    dispatcher.TimerCommProcess();
    ++frames;
  }
  if (live.engine_rpm < 999.0 || live.engine_rpm > 1001.0) state.SkipWithError("frame not decoded");
  state.SetItemsProcessed(frames);
  state.counters["frames_per_second"] =
      benchmark::Counter(static_cast<double>(frames), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_ReceiveAndDispatchLiveFrames);

}  // namespace
