// The ECU's serial line over QSerialPort: 115,200 baud, 8 data bits, no parity, 1 stop bit, no flow
// control. "CommPort N" is mapped to the system's device for N unless a device was given with
// --port. The port is closed on the first read or resource error (a vanished pseudo-terminal
// otherwise floods read errors and stays open); the link's reopen rule takes over from there.
//
// The data-received event is raised at most once per receive window (kReceiveWindowMs), the way a
// serial driver with a receive threshold gathers bytes: at 115,200 baud a window holds about 290
// bytes, so live frames cost a few events a second instead of one per byte. On Unix the port's
// own read watch is off while the windows run: the window looks at the line every
// kReceiveWindowMs and reads what the system holds, so bytes that arrive in pieces wake nobody
// (a line that hangs up or fails is seen there too). Elsewhere the first byte opens the window.
// A window of 0 raises the event on every arrival (the link uses that while it waits for a
// calibration reply, so the reply is taken the moment its last byte is in). Everything waiting is
// read at once: a backlog of 500 bytes or more reaches the receive event whole, which cuts it.
// A byte written is waited for until it has left (at most the link's write timeout).
#pragma once

#include <QObject>
#include <QSerialPort>
#include <QString>
#include <QTimer>

#include "link/serial_port.h"

namespace vela {

class QtSerialPort : public QObject, public SerialPort {
  Q_OBJECT

 public:
  explicit QtSerialPort(bool windows_names, QObject* parent = nullptr);

  // A device used whatever port number is asked for (empty: the numbering rule applies).
  void set_device_override(const QString& device) { device_override_ = device; }
  const QString& device_override() const { return device_override_; }
  QString DeviceFor(int port_number) const;
  QString device() const { return port_.portName(); }

  bool Open(int port_number) override;
  void Close() override;
  bool IsOpen() const override;
  std::size_t BytesWaiting() const override;
  std::vector<std::uint8_t> ReadAll() override;
  void ClearInput() override;
  bool WriteByte(std::uint8_t byte) override;

  // Does nothing: the line settings are fixed when the port is opened.
  void SetBaudRate() {}

  static constexpr int kReceiveWindowMs = 25;
  // 0 raises the event on every arrival.
  void set_receive_window_ms(int ms);

 signals:
  void DataReceived();
  // The port was open and is now closed: by Close or Open (`reason` empty), or by a read or
  // resource error or a hung-up line (`reason` says which).
  void Closed(const QString& reason);

 private:
  void OnError(QSerialPort::SerialPortError error);
  void OnArrival();
  void OnWindowEnd();
  // Whether the windows look at the line themselves (the port's read watch off).
  bool PolledWindows() const;
  void SetArrivalWatch(bool on);
  void StartReceiving();
  // Bytes in the system's buffer; -1 when the line has hung up or failed (`why` says how).
  long SystemBytesWaiting(QString* why) const;
  // Closes the port if it is open and tells of it.
  void CloseWith(const QString& reason);

  bool windows_names_;
  QString device_override_;
  QSerialPort port_;
  QTimer receive_window_;
};

}  // namespace vela
