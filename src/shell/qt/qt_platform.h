// The Qt side of the cores' platform interfaces.
#pragma once

#include <QElapsedTimer>
#include <QWidget>

#include "shell/platform.h"

namespace vela {

// Modal message boxes over a parent window.
class QtMessageSink : public MessageSink {
 public:
  explicit QtMessageSink(QWidget* parent = nullptr) : parent_(parent) {}
  void set_parent(QWidget* parent) { parent_ = parent; }
  MessageAnswer Show(MessageIcon icon, const std::string& title,
                     const std::vector<std::string>& lines, MessageButtons buttons) override;

 private:
  QWidget* parent_;
};

class QtFileDialogs : public FileDialogs {
 public:
  explicit QtFileDialogs(QWidget* parent = nullptr) : parent_(parent) {}
  std::optional<std::string> AskOpenPath(const std::string& filter, const std::string& title,
                                         const std::string& initial_folder) override;
  std::optional<std::string> AskSavePath(const std::string& filter, const std::string& title,
                                         const std::string& initial_folder) override;

 private:
  QWidget* parent_;
};

// Milliseconds since the program started; letting events run processes the Qt event queue.
class QtClock : public Clock {
 public:
  QtClock() { timer_.start(); }
  std::int64_t NowMs() override { return timer_.elapsed(); }
  void LetEventsRun() override;

 private:
  QElapsedTimer timer_;
};

// The computer's decimal separator, from the system locale.
char SystemDecimalSeparator();

// Converts a "Description|*.ext|Other|*.x" filter into Qt's "Description (*.ext);;..." form.
QString QtFilterFrom(const std::string& filter);

}  // namespace vela
