#include "app/app_options.h"

namespace vela {

AppOptions ParseAppOptions(const QStringList& arguments, const QString& env_data_root) {
  AppOptions options;
  options.data_root = env_data_root;
  for (int i = 0; i < arguments.size(); ++i) {
    const QString& arg = arguments[i];
    auto value = [&](const QString& name) -> std::optional<QString> {
      if (arg.startsWith(name + "=")) return arg.mid(name.size() + 1);
      if (arg == name && i + 1 < arguments.size()) return arguments[++i];
      return std::nullopt;
    };
    if (arg == "-h" || arg == "--help") {
      options.show_help = true;
    } else if (arg.startsWith("--data-dir")) {
      if (auto v = value("--data-dir"))
        options.data_root = *v;
      else
        options.error = "--data-dir needs a folder";
    } else if (arg == "--simulate") {
      options.simulate = true;
    } else if (arg.startsWith("--sim-args")) {
      if (auto v = value("--sim-args"))
        options.sim_args = v->split(' ', Qt::SkipEmptyParts);
      else
        options.error = "--sim-args needs the simulator's options";
    } else if (arg.startsWith("--port")) {
      if (auto v = value("--port"))
        options.port_device = *v;
      else
        options.error = "--port needs a device";
    } else {
      options.error = "unknown option: " + arg;
    }
    if (!options.error.isEmpty()) break;
  }
  return options;
}

QString AppUsage() {
  return "Usage: morvane-vela [--data-dir DIR] [--port DEVICE] [--simulate [--sim-args ARGS]]\n"
         "\n"
         "The MORVANE VELA tuning program: maps, set-up and live values of the ECU on the\n"
         "serial line.\n"
         "\n"
         "  --data-dir DIR   keep the program's folder tree under DIR (default: the home folder;\n"
         "                   the MORVANE_VELA_DATA_DIR environment variable does the same)\n"
         "  --port DEVICE    open DEVICE (a serial device or pseudo-terminal) for the ECU link\n"
         "                   instead of the device of the chosen \"CommPort N\"\n"
         "  --simulate       start the simulated ECU inside the program and connect to it\n"
         "  --sim-args ARGS  options for the simulated ECU, e.g. \"--garbage-every 3\" or\n"
         "                   \"--fault-codes 66,139@20\" (vela-ecusim --help lists them)\n"
         "  -h, --help       print this text and end\n";
}

}  // namespace vela
