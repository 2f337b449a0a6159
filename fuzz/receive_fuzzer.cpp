// The receive path with the upload handler: the line's bytes arrive in chunks through the
// receive event, and the dispatcher, the upload timer and the connection supervision tick in
// between, with the link connected and a calibration upload awaited at the start.
//
// Input: one byte n, then n schedule bytes, then the line's bytes. The schedule is run in a
// loop until the line's bytes are all delivered; each schedule byte is one step, its top three
// bits the kind of step and its low five bits the step's size (see Step). No schedule delivers
// 45 bytes at a time with one dispatcher tick after each chunk. Time moves only with the
// dispatcher's ticks, 8 ms each.
//
// Invariants:
// - the receive buffer never holds more than the link's limits allow: 1000 characters and one
//   chunk cut to 500, or a reply held from "ALL" on (ReceiveBuffer::kReplyHoldLimit);
// - every frame handed to the handlers or taken by the dispatcher is a whole 45-byte frame,
//   "START" at its start and "END" at its end (or the standing engine's zero frame before the
//   first one);
// - every byte written to the port belongs to a six-byte command frame with its checksum, and
//   the frames are the upload's own: the link preparation and the upload request;
// - the upload's progress stays within 0 to 100 percent;
// - once the line has been quiet for longer than a reply takes, no reply start stands: a stray
//   "ALL" never holds the frames or the upload's requests back;
// - a calibration handed on is one the line carried: its 1023 bytes and "DONE" stand together
//   in the line's bytes (unless the port itself lost bytes on an overrun or a read error, which
//   the reply, having no checksum, cannot show);
// - whatever came before, once the link is lost and found again, live frames whose data spell
//   "ALL" (a standing engine) are taken one by one, and a whole reply arriving in 250-byte reads
//   after them is handed on, and handed on as it was sent (its block being the line's first 1023
//   bytes);
// - no read-out shows "nan" or "inf".
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "invariant.h"
#include "link/connection_supervisor.h"
#include "link/receive/receive_dispatch.h"
#include "program/live_text.h"
#include "recording_line.h"

namespace {

using namespace vela;
using fuzz::Require;

constexpr std::array<std::size_t, 32> kChunkSizes = {
    1,  2,  3,   4,   5,   6,   7,   8,   10,  12,  16,   20,   32,   44,   45,   46,
    64, 90, 128, 250, 400, 499, 500, 501, 700, 999, 1000, 1001, 1030, 1500, 2100, 65536};
constexpr std::array<std::uint8_t, 2> kDefaultSchedule = {0x0E, 0x60};  // 45 bytes, one tick
// Steps run at most; whatever has not arrived by then arrives at once.
constexpr int kMaxSteps = 4096;
// Enough dispatcher ticks to take every frame a full buffer can hold, one a tick.
constexpr int kSettleTicks = static_cast<int>(ReceiveBuffer::kReplyHoldLimit) / live::kFrameLength;

enum class StepKind {
  kChunkWithEvent,  // bytes arrive and the port says so
  kChunkOnly,       // bytes arrive and wait in the port for a later event
  kDispatchTicks,   // 1 to 4 ticks of `TimerCommProcess`
  kUploadTick,      // one tick of `UploadTimer`
  kCommsTicks,      // 1 to 16 ticks of `CommsTimer`
  kOverflow,        // the port reports an input overrun
  kPortError,       // the port closes on a read error; the next tick reopens it
};
// The kind of each value of a schedule byte's top three bits: chunks with an event twice.
constexpr std::array<StepKind, 8> kStepKinds = {
    StepKind::kChunkWithEvent, StepKind::kChunkWithEvent, StepKind::kChunkOnly,
    StepKind::kDispatchTicks,  StepKind::kUploadTick,     StepKind::kCommsTicks,
    StepKind::kOverflow,       StepKind::kPortError};

bool IsWholeFrame(const live::Frame& f) {
  const auto end_at = f.begin() + live::kStartToEnd;
  return std::equal(live::kStartMarker.begin(), live::kStartMarker.end(), f.begin()) &&
         std::equal(live::kEndMarker.begin(), live::kEndMarker.end(), end_at);
}

bool IsZeroFrame(const live::Frame& f) {
  return std::ranges::all_of(f, [](std::uint8_t b) { return b == 0; });
}

bool ShowsANumber(const std::string& text) {
  return text.find("nan") == std::string::npos && text.find("inf") == std::string::npos;
}

struct ReceiveBench {
  ReceiveBench() {
    ApplyReceiveDefaults(link);
    link.Caption = std::string(kCaptionConnected);
    link.RxPending = static_cast<std::uint8_t>(link.RxLevel);
    buffer.SetReplyExpected([this] { return upload.UploadExpected(); });
    dispatcher.SetFrameHook([this](const live::Frame& f) {
      Require(IsWholeFrame(f), "the dispatcher takes only whole frames between START and END");
      ++frames_taken;
    });
    handlers.SetHooks({.on_engine_count = nullptr,
                       .on_refreshed = [this](const LiveData&) { CheckHandedFrame(); }});
    upload.SetCallbacks({.on_block = [this](const CalibrationImage& image) { OnBlock(image); },
                         .on_timer = nullptr});
    upload.EnableTimer();
  }

  void Step(std::uint8_t step, std::span<const std::uint8_t>& to_come) {
    const int size = step & 0x1F;
    switch (kStepKinds[static_cast<std::size_t>(step >> 5)]) {
      case StepKind::kChunkWithEvent:
        Arrive(to_come, kChunkSizes[static_cast<std::size_t>(size)]);
        DataReceived();
        break;
      case StepKind::kChunkOnly:
        Arrive(to_come, kChunkSizes[static_cast<std::size_t>(size)]);
        break;
      case StepKind::kDispatchTicks:
        for (int t = 0; t <= size % 4; ++t) Tick();
        break;
      case StepKind::kUploadTick:
        upload.UploadTimer();
        break;
      case StepKind::kCommsTicks:
        for (int t = 0; t <= size % 16; ++t) supervisor.CommsTimer();
        break;
      case StepKind::kOverflow:
        port_lost_bytes = port_lost_bytes || (line.port.open && !line.port.input.empty());
        buffer.OnCommEvent(kReceiveOverflow);
        break;
      case StepKind::kPortError:
        port_lost_bytes = port_lost_bytes || !line.port.input.empty();
        line.port.Close();
        break;
    }
    CheckReceiveSide();
  }

  // The next `size` bytes still to come arrive at the port; a closed port loses them.
  void Arrive(std::span<const std::uint8_t>& to_come, std::size_t size) {
    const std::size_t taken = std::min(size, to_come.size());
    if (line.port.open) {
      line.port.input.append(to_come.begin(), to_come.begin() + static_cast<std::ptrdiff_t>(taken));
    } else {
      port_lost_bytes = port_lost_bytes || taken > 0;
    }
    to_come = to_come.subspan(taken);
  }

  // One tick of `TimerCommProcess`, as its timer runs it.
  void Tick() {
    line.clock.now += kTimerCommProcessIntervalMs;
    dispatcher.TimerCommProcess();
  }

  // The line falls quiet for longer than a reply takes, and the dispatcher ticks once.
  void RequireNoStartStandsAfterQuiet() {
    line.clock.now += CalibrationUpload::kReplyTimeMs + 1;
    dispatcher.TimerCommProcess();
    Require(!upload.UploadStarted() || !line.port.input.empty() || !line.port.open,
            "a reply start that no reply followed in a reply's time is given up");
  }

  // As the composition root does: the calibration converts the temperatures from now on.
  void OnBlock(const CalibrationImage& image) {
    blocks.push_back(image);
    handlers.SetCalibration(&blocks.back());
    if (port_lost_bytes) return;
    std::string reply(image.Bytes().begin(), image.Bytes().end());
    reply += CalibrationUpload::kDoneMarker;
    Require(line_bytes.find(reply) != std::string_view::npos,
            "a calibration handed on is a block and DONE that the line carried");
  }

  // Loses the link, finds it again with one live frame, and sends `image` as a whole reply in
  // 250-byte reads, each followed by a dispatcher tick: the reply is handed on, unchanged.
  void RequireReplyTakenAfterReconnect(const CalibrationImage& image) {
    dispatcher.TimerCommProcess();  // reopens a port closed by an error
    for (int tick = 0; tick <= link.RxLevel; ++tick) supervisor.CommsTimer();
    Require(!supervisor.Connected() && upload.UploadExpected(),
            "a lost link awaits the ECU's calibration again");
    std::string frame(live::kFrameLength, '\0');
    std::copy(live::kStartMarker.begin(), live::kStartMarker.end(), frame.begin());
    std::copy(live::kEndMarker.begin(), live::kEndMarker.end(), frame.end() - 3);
    line.port.input = frame;
    DataReceived();
    supervisor.CommsTimer();
    Require(supervisor.Connected(), "data arriving finds the link again");

    // A standing engine: the period bytes spell "ALL".
    std::copy(CalibrationUpload::kAllMarker.begin(), CalibrationUpload::kAllMarker.end(),
              frame.begin() + live::kEnginePeriod - 1);
    for (int i = 0; i < 3; ++i) {
      const std::int64_t taken = frames_taken;
      line.port.input = frame;
      DataReceived();
      Tick();
      Require(frames_taken == taken + 1, "a live frame whose data spell ALL is taken as a frame");
    }

    std::string reply(CalibrationUpload::kAllMarker);
    reply.append(image.Bytes().begin(), image.Bytes().end());
    reply += CalibrationUpload::kDoneMarker;
    line_bytes = reply;
    const std::size_t handed_before = blocks.size();
    constexpr std::size_t kRead = 250;
    for (std::size_t at = 0; at < reply.size(); at += kRead) {
      line.port.input = reply.substr(at, kRead);
      DataReceived();
      Tick();
      CheckReceiveSide();
    }
    Require(blocks.size() == handed_before + 1, "a whole reply after a new link is handed on");
    Require(blocks.back().Bytes() == image.Bytes(), "the reply is handed on as it was sent");
  }

  // As the Qt side does: the event, then at once a dispatch while a reply is awaited.
  void DataReceived() {
    buffer.OnCommEvent(kDataReceived);
    if (upload.UploadExpected()) {
      bool first_call = true;
      dispatcher.CommsReceiveDispatch(first_call);
    }
  }

  void CheckReceiveSide() const {
    const std::size_t limit =
        std::max(ReceiveBuffer::kReplyHoldLimit,
                 ReceiveBuffer::kBufferLimit + ReceiveBuffer::kChunkLimit - 1);
    Require(buffer.received().size() <= limit, "the receive buffer stays within its limits");
    Require(display.upload_progress >= 0 && display.upload_progress <= 100,
            "the upload's progress is a percentage");
  }

  void CheckHandedFrame() const {
    const live::Frame& f = dispatcher.last_frame();
    Require(IsWholeFrame(f) || IsZeroFrame(f),
            "the handlers get a whole frame between START and END, or none before the first");
    for (int q = 0; q < kLiveQuantityCount; ++q) {
      const std::string text = LiveText(live, static_cast<LiveQuantity>(q), {',', 0});
      Require(ShowsANumber(text), "no read-out shows nan or inf");
    }
  }

  // The frames the upload may send: the two link preparations and the request.
  void CheckWritten() const {
    using Upload = CalibrationUpload;
    const std::array allowed = {
        BuildFrameBytes({kSingleValueWrite, kLiveRateAddress, Upload::kPrepareFirstValue}),
        BuildFrameBytes({kSingleValueWrite, kLiveRateAddress, Upload::kPrepareSecondValue}),
        BuildFrameBytes({upload.RequestCode(), Upload::kRequestAddress, Upload::kRequestValue})};
    for (const FrameBytes& frame : fuzz::CommandFramesOf(line.port.written)) {
      Require(std::ranges::count(allowed, frame) == 1,
              "the receive side sends only the link preparation and the upload request");
    }
  }

  fuzz::RecordingLine line;
  LinkState& link = line.link;
  LinkDisplay display;
  LiveData live;
  std::string_view line_bytes;  // everything the line carries (the schedule apart)
  bool port_lost_bytes = false;
  std::int64_t frames_taken = 0;
  std::deque<CalibrationImage> blocks;  // handed on, in order; the handlers use the latest
  ReceiveBuffer buffer{line.port, link, display};
  CalibrationUpload upload{line.port, line.sender, line.clock, link, display};
  ReceiveHandlers handlers{live};
  ReceiveDispatcher dispatcher{line.port, line.clock, link, display, buffer, upload, handlers};
  ConnectionSupervisor supervisor{link, display, live, upload};
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::span<const std::uint8_t> input(data, size);
  std::span<const std::uint8_t> schedule(kDefaultSchedule);
  if (!input.empty()) {
    const std::size_t n = std::min<std::size_t>(input[0], input.size() - 1);
    if (n > 0) schedule = input.subspan(1, n);
    input = input.subspan(1 + n);
  }

  ReceiveBench bench;
  bench.line_bytes = std::string_view(reinterpret_cast<const char*>(input.data()), input.size());
  std::span<const std::uint8_t> to_come = input;
  const bool delivers = std::ranges::any_of(schedule, [](std::uint8_t step) {
    return kStepKinds[step >> 5] == StepKind::kChunkWithEvent ||
           kStepKinds[step >> 5] == StepKind::kChunkOnly;
  });
  // A schedule that delivers nothing runs once.
  const int steps = delivers ? kMaxSteps : static_cast<int>(schedule.size());
  for (int step = 0; !to_come.empty() && step < steps; ++step) {
    bench.Step(schedule[static_cast<std::size_t>(step) % schedule.size()], to_come);
  }
  bench.Arrive(to_come, to_come.size());
  bench.DataReceived();
  bench.CheckReceiveSide();
  for (int tick = 0; tick < kSettleTicks; ++tick) {
    bench.Tick();
    bench.CheckReceiveSide();
  }
  bench.RequireNoStartStandsAfterQuiet();

  CalibrationImage::Block block{};
  std::copy_n(input.begin(), std::min(input.size(), block.size()), block.begin());
  CalibrationImage image;
  image.Assign(block);
  bench.RequireReplyTakenAfterReconnect(image);
  bench.CheckWritten();
  return 0;
}
