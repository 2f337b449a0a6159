// vela-map: map files (*.sm1) from the command line, for scripts and quick looks: a file's
// checks and set-up, the differences between two files, maps as CSV and a map from CSV into a
// copy of a file. `vela-map --help` lists the commands and the exit status of each outcome.
#include <cstdio>
#include <string>
#include <vector>

#include "base/file_system.h"
#include "tools/vela_map/map_commands.h"

int main(int argc, char* argv[]) {
  const std::vector<std::string> args(argv + 1, argv + argc);
  vela::DiskFileSystem files;
  std::string out;
  std::string err;
  const int status = vela::mapfile::RunMapCommand(args, files, out, err);
  std::fwrite(out.data(), 1, out.size(), stdout);
  std::fwrite(err.data(), 1, err.size(), stderr);
  return status;
}
