#include "app/display_guard.h"

#include <QByteArray>
#include <QString>
#include <QtGlobal>
#include <cstdio>
#include <cstdlib>
#include <utility>
#include <vector>

namespace vela {

namespace {

struct HeldMessage {
  QtMsgType type;
  QByteArray category;
  QString text;
};

struct Guarding {
  bool on = false;
  QtMessageHandler previous = nullptr;
  std::vector<HeldMessage> held;
};

Guarding& State() {
  static Guarding state;
  return state;
}

bool Empty(const char* text) { return text == nullptr || *text == '\0'; }

void Hold(QtMsgType type, const QMessageLogContext& context, const QString& text) {
  if (type == QtFatalMsg) {
    const std::string line = NoDisplayLine(std::getenv("QT_QPA_PLATFORM"), std::getenv("DISPLAY"),
                                           std::getenv("WAYLAND_DISPLAY"));
    std::fprintf(stderr, "%s\n", line.c_str());
    std::fflush(stderr);
    std::_Exit(1);
  }
  State().held.push_back({type, QByteArray(context.category), text});
}

}  // namespace

std::string NoDisplayLine(const char* platform, const char* display, const char* wayland_display) {
  std::string why;
  if (!Empty(platform)) {
    why = "the window system \"" + std::string(platform) + "\" could not be started";
  } else if (Empty(display) && Empty(wayland_display)) {
    why = "DISPLAY is not set";
  } else {
    why = "cannot open display " + std::string(Empty(display) ? wayland_display : display);
  }
  return "morvane-vela needs a display (" + why +
         "); to run it headless: xvfb-run -a morvane-vela [OPTIONS], or "
         "QT_QPA_PLATFORM=offscreen morvane-vela [OPTIONS] to show nothing at all";
}

DisplayGuard::DisplayGuard() {
  State().held.clear();
  State().previous = qInstallMessageHandler(&Hold);
  State().on = true;
}

DisplayGuard::~DisplayGuard() { Opened(); }

void DisplayGuard::Opened() {
  Guarding& state = State();
  if (!state.on) return;
  state.on = false;
  qInstallMessageHandler(state.previous);
  for (const HeldMessage& message : std::exchange(state.held, {})) {
    const QMessageLogContext context(nullptr, 0, nullptr, message.category.constData());
    state.previous(message.type, context, message.text);
  }
}

}  // namespace vela
