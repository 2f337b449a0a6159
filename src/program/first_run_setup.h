// The first-run port set-up (`FormSpare`): checks that the chosen port opens and writes
// `Config.txt`. The main start-up never reads that file.
#pragma once

#include <string>

#include "base/file_system.h"
#include "base/platform.h"
#include "link/serial_port.h"

namespace vela {

struct FirstRunChoice {
  int port = 1;   // "CommPort N" of the ECU
  int port2 = 0;  // a second serial device; 0 when there is none
};

std::string ConfigFileText(const FirstRunChoice& choice);

// Opens and closes `test_port` on the chosen number (skipped when `already_open` says the link
// holds that port open now), then writes `config_path`. Shows the "Commport Error" message when the
// port does not open, the settings error when the file cannot be written, and the ready message on
// success. Returns true on success.
bool CompleteFirstRunSetup(const FirstRunChoice& choice, bool already_open, SerialPort& test_port,
                           FileSystem& files, const std::string& config_path,
                           MessageSink& messages);

}  // namespace vela
