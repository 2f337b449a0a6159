// Command-line options of the program.
#pragma once

#include <QString>
#include <QStringList>
#include <optional>

namespace vela {

struct AppOptions {
  QString data_root;      // --data-dir: the folder tree goes under this root
  QString port_device;    // --port: this device is opened whatever "CommPort N" is chosen
  bool simulate = false;  // --simulate: run the simulated ECU in-process and connect to it
  QStringList sim_args;   // --sim-args "...": options for the simulated ECU (its fault options)
  bool show_help = false;
  QString error;  // not empty when the command line could not be read
};

// Reads the arguments (without the program name); `env_data_root` is the value of
// MORVANE_VELA_DATA_DIR, used when --data-dir is not given.
AppOptions ParseAppOptions(const QStringList& arguments, const QString& env_data_root);

QString AppUsage();

}  // namespace vela
