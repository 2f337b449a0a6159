// The first-run set-up window: the tuner picks the ECU's port (and a second serial device, if
// any); the port is tried and `Config.txt` written.
#pragma once

#include <QComboBox>
#include <QDialog>

#include "program/program_setup.h"

namespace vela {

class QtSerialPort;

class FormSpare : public QDialog {
  Q_OBJECT

 public:
  FormSpare(ProgramSetup& setup, QtSerialPort& link_port, FileSystem& files, MessageSink& messages,
            QWidget* parent = nullptr);

  // Tries the chosen port and writes `Config.txt`; closes the window on success.
  void Complete();

 private:
  ProgramSetup& setup_;
  QtSerialPort& link_port_;
  FileSystem& files_;
  MessageSink& messages_;
  QComboBox* port_list_;
  QComboBox* port2_list_;
};

}  // namespace vela
