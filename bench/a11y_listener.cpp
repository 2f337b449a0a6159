// Listens on the accessibility bus the way a screen reader does, so that a program measured beside
// it pays what it pays with a screen reader running: it registers with the accessibility registry
// for every object, window and focus event (a program's toolkit sends only the events some tool
// has registered for), takes every such signal off the bus and asks the program for the name of
// the object it came from. It prints how many it took when it ends (on SIGTERM or SIGINT).
//
//   vela-a11y-listener        run on the session bus that the accessibility bus launcher serves
#include <sys/socket.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QSocketNotifier>
#include <csignal>
#include <cstdio>

namespace {

int signal_pipe[2];

void OnSignal(int) {
  const char byte = 1;
  (void)!write(signal_pipe[1], &byte, 1);
}

// Counts the accessibility events that arrive and, as a screen reader does, asks the program
// for the name of the object each one comes from.
class EventCounter : public QObject {
  Q_OBJECT

 public:
  explicit EventCounter(QDBusConnection bus) : bus_(bus) {}
  int count() const { return count_; }

 public slots:
  void Take(const QDBusMessage& event) {
    ++count_;
    QDBusMessage get = QDBusMessage::createMethodCall(event.service(), event.path(),
                                                      "org.freedesktop.DBus.Properties", "Get");
    get << QString("org.a11y.atspi.Accessible") << QString("Name");
    bus_.asyncCall(get);
  }

 private:
  QDBusConnection bus_;
  int count_ = 0;
};

QString AccessibilityBusAddress() {
  const QDBusMessage reply = QDBusConnection::sessionBus().call(QDBusMessage::createMethodCall(
      "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress"));
  return reply.type() == QDBusMessage::ReplyMessage ? reply.arguments().value(0).toString()
                                                    : QString();
}

}  // namespace

int main(int argc, char* argv[]) {
  QCoreApplication app(argc, argv);
  const QString address = AccessibilityBusAddress();
  if (address.isEmpty()) {
    std::fprintf(stderr, "vela-a11y-listener: no accessibility bus on the session bus\n");
    return 1;
  }
  QDBusConnection bus = QDBusConnection::connectToBus(address, "a11y");
  if (!bus.isConnected()) {
    std::fprintf(stderr, "vela-a11y-listener: cannot reach the accessibility bus\n");
    return 1;
  }
  EventCounter counter(bus);
  for (const char* kind : {"Object", "Window", "Focus"}) {
    const QString interface = QString("org.a11y.atspi.Event.%1").arg(kind);
    for (const char* event :
         {"PropertyChange", "StateChanged", "ChildrenChanged", "TextChanged", "TextCaretMoved",
          "ActiveDescendantChanged", "Activate", "Create", "Destroy", "Focus", "ColumnInserted",
          "RowInserted", "ModelChanged", "VisibleDataChanged", "SelectionChanged", "BoundsChanged",
          "TextSelectionChanged", "AttributesChanged"}) {
      bus.connect(QString(), QString(), interface, event, &counter, SLOT(Take(QDBusMessage)));
    }
  }
  for (const char* event : {"object:", "window:", "focus:"}) {
    QDBusMessage call =
        QDBusMessage::createMethodCall("org.a11y.atspi.Registry", "/org/a11y/atspi/registry",
                                       "org.a11y.atspi.Registry", "RegisterEvent");
    call << QString(event);
    bus.call(call);
  }
  if (pipe(signal_pipe) != 0) return 1;
  std::signal(SIGTERM, OnSignal);
  std::signal(SIGINT, OnSignal);
  QSocketNotifier stop(signal_pipe[0], QSocketNotifier::Read);
  QObject::connect(&stop, &QSocketNotifier::activated, &app, &QCoreApplication::quit);
  std::printf("vela-a11y-listener: listening\n");
  std::fflush(stdout);
  const int result = app.exec();
  std::printf("vela-a11y-listener: %d accessibility events taken\n", counter.count());
  return result;
}

#include "a11y_listener.moc"
