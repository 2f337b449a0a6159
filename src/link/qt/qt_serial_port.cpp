#include "link/qt/qt_serial_port.h"

#include <QElapsedTimer>
#include <QSocketNotifier>
#include <algorithm>

#ifdef Q_OS_UNIX
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#endif

#include "base/program_folders.h"
#include "link/comms_sender.h"

namespace vela {

QtSerialPort::QtSerialPort(bool windows_names, QObject* parent)
    : QObject(parent), windows_names_(windows_names) {
  receive_window_.setInterval(kReceiveWindowMs);
  connect(&receive_window_, &QTimer::timeout, this, &QtSerialPort::OnWindowEnd);
  connect(&port_, &QSerialPort::readyRead, this, &QtSerialPort::OnArrival);
  connect(&port_, &QSerialPort::errorOccurred, this, &QtSerialPort::OnError);
}

QString QtSerialPort::DeviceFor(int port_number) const {
  if (!device_override_.isEmpty()) return device_override_;
  return QString::fromStdString(PortDeviceName(port_number, windows_names_));
}

bool QtSerialPort::Open(int port_number) {
  Close();
  port_.setPortName(DeviceFor(port_number));
  port_.setBaudRate(QSerialPort::Baud115200);
  port_.setDataBits(QSerialPort::Data8);
  port_.setParity(QSerialPort::NoParity);
  port_.setStopBits(QSerialPort::OneStop);
  port_.setFlowControl(QSerialPort::NoFlowControl);
  port_.setReadBufferSize(0);
  receive_window_.stop();
  if (!port_.open(QIODevice::ReadWrite)) return false;
  StartReceiving();
  return true;
}

void QtSerialPort::Close() { CloseWith(QString()); }

void QtSerialPort::CloseWith(const QString& reason) {
  receive_window_.stop();
  if (!port_.isOpen()) return;
  port_.close();
  emit Closed(reason);
}

bool QtSerialPort::PolledWindows() const {
#ifdef Q_OS_UNIX
  return receive_window_.interval() > 0;
#else
  return false;
#endif
}

void QtSerialPort::set_receive_window_ms(int ms) {
  if (receive_window_.interval() == ms) return;
  receive_window_.setInterval(ms);
  if (!port_.isOpen()) return;
  StartReceiving();
  // Bytes that came while the windows ran are not left waiting for the next arrival.
  if (ms == 0 && BytesWaiting() > 0) emit DataReceived();
}

// Polled windows run from the port's opening; otherwise the read watch wakes the program and the
// first byte opens a window.
void QtSerialPort::StartReceiving() {
  const bool polled = PolledWindows();
  SetArrivalWatch(!polled);
  receive_window_.setSingleShot(!polled);
  if (polled) {
    receive_window_.start();
  } else {
    receive_window_.stop();
  }
}

// QSerialPort offers no public way to stop watching its descriptor, so the watch is the read
// QSocketNotifier the port keeps as its child on Unix: an internal of Qt's serial port, checked on
// Qt 6.4 (Debian 12). LinkEndToEndTest.theSerialPortKeepsItsReadNotifierAsAChild fails on a Qt
// that stops keeping it there, before the program would be woken by every byte again.
void QtSerialPort::SetArrivalWatch(bool on) {
  for (QSocketNotifier* notifier : port_.findChildren<QSocketNotifier*>()) {
    if (notifier->type() == QSocketNotifier::Read && notifier->isEnabled() != on) {
      notifier->setEnabled(on);
    }
  }
}

// Bytes the port read by itself (while a written byte was waited for, for one) are taken at the
// window's end with the rest.
void QtSerialPort::OnArrival() {
  if (receive_window_.interval() == 0) {
    emit DataReceived();
  } else if (!PolledWindows() && !receive_window_.isActive()) {
    receive_window_.start();
  }
}

void QtSerialPort::OnWindowEnd() {
  if (!port_.isOpen()) return;
  if (!PolledWindows()) {
    if (port_.bytesAvailable() > 0) emit DataReceived();
    return;
  }
  QString why;
  const long waiting = SystemBytesWaiting(&why);
  if (waiting < 0) {
    CloseWith(why);
    return;
  }
  if (waiting > 0 || port_.bytesAvailable() > 0) emit DataReceived();
}

long QtSerialPort::SystemBytesWaiting(QString* why) const {
#ifdef Q_OS_UNIX
  const int fd = static_cast<int>(port_.handle());
  pollfd line{fd, POLLIN, 0};
  if (::poll(&line, 1, 0) < 0) return 0;
  if ((line.revents & (POLLHUP | POLLERR | POLLNVAL)) != 0) {
    *why = (line.revents & POLLHUP) != 0 ? QStringLiteral("The line has hung up")
                                         : QStringLiteral("The line reports an error");
    return -1;
  }
  int waiting = 0;
  if (::ioctl(fd, FIONREAD, &waiting) != 0) {
    *why = QString::fromLocal8Bit(std::strerror(errno));
    return -1;
  }
  return waiting;
#else
  (void)why;
  return 0;
#endif
}

bool QtSerialPort::IsOpen() const { return port_.isOpen(); }

// What the port has read and what still waits in the system's buffer: with the read watch on, the
// system holds the bytes that came since the port last read.
std::size_t QtSerialPort::BytesWaiting() const {
  if (!port_.isOpen()) return 0;
  QString why;
  return static_cast<std::size_t>(port_.bytesAvailable()) +
         static_cast<std::size_t>(std::max(0L, SystemBytesWaiting(&why)));
}

std::vector<std::uint8_t> QtSerialPort::ReadAll() {
  if (!port_.isOpen()) return {};
  std::vector<std::uint8_t> bytes;
  if (port_.bytesAvailable() > 0) {
    const QByteArray held = port_.readAll();
    bytes.assign(held.begin(), held.end());
    // Reading through the port turns its read watch back on.
    if (PolledWindows()) SetArrivalWatch(false);
  }
#ifdef Q_OS_UNIX
  const int fd = static_cast<int>(port_.handle());
  std::uint8_t chunk[4096];
  for (;;) {
    const ssize_t n = ::read(fd, chunk, sizeof chunk);
    if (n > 0) {
      bytes.insert(bytes.end(), chunk, chunk + n);
      if (static_cast<std::size_t>(n) < sizeof chunk) break;
      continue;
    }
    if (n < 0 && errno == EINTR) continue;
    // Nothing more (EAGAIN); a failed line is seen at the next window's end or by the port.
    break;
  }
#endif
  return bytes;
}

void QtSerialPort::ClearInput() {
  if (!port_.isOpen()) return;
  port_.clear(QSerialPort::Input);
  port_.readAll();
}

bool QtSerialPort::WriteByte(std::uint8_t byte) {
  if (!port_.isOpen()) return false;
  const char c = static_cast<char>(byte);
  if (port_.write(&c, 1) != 1) return false;
  // On the wire now: the link paces its bytes itself. A line that does not take the byte within
  // the write timeout has stalled; the byte is dropped so that no half frame trickles out later.
  QElapsedTimer waited;
  waited.start();
  port_.flush();
  while (port_.isOpen() && port_.bytesToWrite() > 0) {
    const qint64 left = kWriteTimeoutMs - waited.elapsed();
    if (left <= 0 || !port_.waitForBytesWritten(static_cast<int>(left))) break;
  }
  if (!port_.isOpen()) return false;
  if (port_.bytesToWrite() > 0) {
    port_.clear(QSerialPort::Output);
    return false;
  }
  return true;
}

void QtSerialPort::OnError(QSerialPort::SerialPortError error) {
  if (error != QSerialPort::ReadError && error != QSerialPort::ResourceError) return;
  CloseWith(port_.errorString());
}

}  // namespace vela

#include "moc_qt_serial_port.cpp"
