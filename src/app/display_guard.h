// Opening the window system. With no display to open, the toolkit prints several lines of its own
// and aborts (exit 134); the program instead says in one line that it needs a display and how to
// run it without one, and exits with 1.
#pragma once

#include <string>

namespace vela {

// The line said when no display can be opened, from the environment the toolkit read: the
// window system chosen (QT_QPA_PLATFORM) and the displays offered (DISPLAY, WAYLAND_DISPLAY);
// each may be null or empty.
std::string NoDisplayLine(const char* platform, const char* display, const char* wayland_display);

// Lives while the application object is made. Meanwhile the toolkit's messages are held back:
// should it give up, the program says NoDisplayLine() alone and exits with 1; once Opened() is
// called, the held messages are passed on as they came.
class DisplayGuard {
 public:
  DisplayGuard();
  ~DisplayGuard();
  DisplayGuard(const DisplayGuard&) = delete;
  DisplayGuard& operator=(const DisplayGuard&) = delete;

  void Opened();
};

}  // namespace vela
