// Latencies a tuner feels, measured on the whole program (the main window, its timers and a
// pseudo-terminal standing for the serial line):
//  - from the last byte of "DONE" written to the line until "Upload Sorting Complete" is shown
//    and the map pages show the new calibration;
//  - from a keystroke on a fuel cell until the first byte of its command frame is on the line.
// Run under a display (make bench uses a virtual X server).
#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QTemporaryDir>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <thread>
#include <vector>

#include "app/main_window.h"
#include "app/pages/map_pages.h"
#include "app/sessions/editor_session.h"
#include "app/sessions/link_session.h"
#include "link/live/live_frame.h"
#include "program_fixture.h"
#include "sim/core/base_calibration.h"

namespace {

using namespace vela;

std::vector<std::uint8_t> LiveFrame() {
  std::vector<std::uint8_t> frame(live::kFrameLength, 1);
  std::copy(live::kStartMarker.begin(), live::kStartMarker.end(), frame.begin());
  std::copy(live::kEndMarker.begin(), live::kEndMarker.end(), frame.end() - 3);
  frame[live::kEnginePeriod - 1] = 0x60;  // 60,000 us a revolution: 1000 rpm
  frame[live::kEnginePeriod] = 0xEA;
  frame[live::kEnginePeriod + 1] = 0x00;
  return frame;
}

void Write(int fd, const std::vector<std::uint8_t>& bytes) {
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
    if (n > 0) done += static_cast<std::size_t>(n);
  }
}

void Drain(int fd) {
  std::uint8_t buffer[4096];
  while (::read(fd, buffer, sizeof buffer) > 0) {
  }
}

// Lets the program run for `ms` while the "ECU" streams live frames every 20 ms.
void RunStreaming(int fd, int ms) {
  QElapsedTimer clock;
  clock.start();
  qint64 next = 0;
  while (clock.elapsed() < ms) {
    if (clock.elapsed() >= next) {
      Write(fd, LiveFrame());
      next += 20;
    }
    QApplication::processEvents(QEventLoop::AllEvents, 2);
    Drain(fd);
  }
}

using Window = testing::TestProgram;

double UploadToSortingCompleteMs(Window& w, int fd) {
  std::vector<std::uint8_t> reply = {'A', 'L', 'L'};
  const auto& image = sim::EmbeddedBaseCalibration().Bytes();
  reply.insert(reply.end(), image.begin(), image.end());
  reply.insert(reply.end(), {'D', 'O', 'N', 'E'});
  const std::size_t before = w.trace.texts().size();
  Write(fd, reply);
  QElapsedTimer clock;
  clock.start();
  while (clock.elapsed() < 5000) {
    QApplication::processEvents(QEventLoop::AllEvents, 1);
    const auto& texts = w.trace.texts();
    if (texts.size() > before && std::find(texts.begin() + static_cast<long>(before), texts.end(),
                                           "Upload Sorting Complete") != texts.end()) {
      return clock.nsecsElapsed() / 1e6;
    }
  }
  return -1;
}

// The key is handled on the program's thread, which sends the whole frame before it returns, so
// the line is watched from a thread of its own.
double KeystrokeToWireMs(Window& w, int fd) {
  Drain(fd);
  MapGrid* grid = w.window->map_pages().page(0)->grid();
  grid->SetCurrentCell(6, 4);
  QKeyEvent press(QEvent::KeyPress, Qt::Key_Up, Qt::NoModifier);
  std::atomic<std::int64_t> first_byte_ns{-1};
  const auto start = std::chrono::steady_clock::now();
  std::thread watcher([&] {
    pollfd p{fd, POLLIN, 0};
    while (std::chrono::steady_clock::now() - start < std::chrono::seconds(2)) {
      if (::poll(&p, 1, 1) > 0 && (p.revents & POLLIN)) {
        first_byte_ns = std::chrono::duration_cast<std::chrono::nanoseconds>(
                            std::chrono::steady_clock::now() - start)
                            .count();
        return;
      }
    }
  });
  QApplication::sendEvent(grid, &press);
  watcher.join();
  return first_byte_ns / 1e6;
}

}  // namespace

int main(int argc, char* argv[]) {
  QApplication app(argc, argv);
  const int master = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
  if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0) return 1;
  termios raw{};
  tcgetattr(master, &raw);
  cfmakeraw(&raw);
  tcsetattr(master, TCSANOW, &raw);
  QTemporaryDir dir;
  Window w(dir.path(), QString::fromLatin1(ptsname(master)));
  if (!w.window->Load()) return 1;
  w.window->show();
  RunStreaming(master, 1500);  // connected, link prepared, upload requested
  std::vector<double> uploads;
  std::vector<double> keys;
  for (int i = 0; i < 5; ++i) {
    uploads.push_back(UploadToSortingCompleteMs(w, master));
    RunStreaming(master, 300);
    keys.push_back(KeystrokeToWireMs(w, master));
    w.link.ForceUpload();
    RunStreaming(master, 1200);
  }
  auto report = [](const char* what, std::vector<double> values) {
    std::sort(values.begin(), values.end());
    std::printf("%s: median %.1f ms (min %.1f, max %.1f, %zu runs)\n", what,
                values[values.size() / 2], values.front(), values.back(), values.size());
  };
  report("last byte of DONE to \"Upload Sorting Complete\"", uploads);
  report("keystroke on a fuel cell to the first byte on the line", keys);
  ::close(master);
  return 0;
}
