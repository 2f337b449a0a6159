// The serial line to the ECU as the link sees it. The Qt side implements it over QSerialPort;
// tests script it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vela {

class SerialPort {
 public:
  virtual ~SerialPort() = default;
  // Opens port `port_number` ("CommPort N") at 115,200 baud, 8 data bits, no parity, 1 stop bit.
  virtual bool Open(int port_number) = 0;
  virtual void Close() = 0;
  virtual bool IsOpen() const = 0;
  virtual std::size_t BytesWaiting() const = 0;
  virtual std::vector<std::uint8_t> ReadAll() = 0;
  virtual void ClearInput() = 0;
  // True once the byte has left the program for the line; false when the port is closed or could
  // not take it within the link's write timeout (350 ms), the byte then dropped.
  [[nodiscard]] virtual bool WriteByte(std::uint8_t byte) = 0;
};

}  // namespace vela
