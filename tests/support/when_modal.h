// Answers a modal dialog that a key or a click is about to open: the call that opens it waits in
// the dialog's own event loop, so the answer has to be set up before.
#pragma once

#include <QApplication>
#include <QTimer>
#include <functional>

namespace vela::gui_test {

// Runs `act` on the next modal dialog of class T once it is up; the watch belongs to `owner`.
template <class T>
void WhenModal(QObject* owner, std::function<void(T*)> act) {
  auto* timer = new QTimer(owner);
  timer->setInterval(20);
  QObject::connect(timer, &QTimer::timeout, owner, [timer, act] {
    if (auto* dialog = qobject_cast<T*>(QApplication::activeModalWidget())) {
      timer->stop();
      timer->deleteLater();
      act(dialog);
    }
  });
  timer->start();
}

}  // namespace vela::gui_test
