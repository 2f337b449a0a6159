#include "link/qt/qt_serial_port.h"

#include <QElapsedTimer>

#include "link/comms_sender.h"
#include "shell/program_folders.h"

namespace vela {

QtSerialPort::QtSerialPort(bool windows_names, QObject* parent)
    : QObject(parent), windows_names_(windows_names) {
  receive_window_.setSingleShot(true);
  receive_window_.setInterval(kReceiveWindowMs);
  connect(&receive_window_, &QTimer::timeout, this, [this] {
    if (port_.isOpen() && port_.bytesAvailable() > 0) emit DataReceived();
  });
  connect(&port_, &QSerialPort::readyRead, this, [this] {
    if (receive_window_.interval() == 0) {
      emit DataReceived();
    } else if (!receive_window_.isActive()) {
      receive_window_.start();
    }
  });
  connect(&port_, &QSerialPort::errorOccurred, this, &QtSerialPort::OnError);
}

QString QtSerialPort::DeviceFor(int port_number) const {
  if (!device_override_.isEmpty()) return device_override_;
  return QString::fromStdString(PortDeviceName(port_number, windows_names_));
}

bool QtSerialPort::Open(int port_number) {
  if (port_.isOpen()) port_.close();
  port_.setPortName(DeviceFor(port_number));
  port_.setBaudRate(QSerialPort::Baud115200);
  port_.setDataBits(QSerialPort::Data8);
  port_.setParity(QSerialPort::NoParity);
  port_.setStopBits(QSerialPort::OneStop);
  port_.setFlowControl(QSerialPort::NoFlowControl);
  port_.setReadBufferSize(0);
  return port_.open(QIODevice::ReadWrite);
}

void QtSerialPort::Close() {
  if (port_.isOpen()) port_.close();
}

bool QtSerialPort::IsOpen() const { return port_.isOpen(); }

std::size_t QtSerialPort::BytesWaiting() const {
  return port_.isOpen() ? static_cast<std::size_t>(port_.bytesAvailable()) : 0;
}

std::vector<std::uint8_t> QtSerialPort::ReadAll() {
  if (!port_.isOpen()) return {};
  const QByteArray bytes = port_.readAll();
  return std::vector<std::uint8_t>(bytes.begin(), bytes.end());
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
  if (!port_.isOpen()) return;
  const QString reason = port_.errorString();
  port_.close();
  emit ClosedOnError(reason);
}

}  // namespace vela
