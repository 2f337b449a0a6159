// vela-log: what datalog chart files (*.sl1) hold, and what they say about a map, for scripts
// and quick looks. The commands are in log_commands.h.
#include <cstdio>
#include <string>
#include <vector>

#include "base/file_system.h"
#include "tools/vela_log/log_commands.h"

int main(int argc, char* argv[]) {
  const std::vector<std::string> args(argv + 1, argv + argc);
  vela::DiskFileSystem files;
  std::string out;
  std::string err;
  const int status = vela::logtool::RunLogCommand(args, files, out, err);
  std::fwrite(out.data(), 1, out.size(), stdout);
  std::fwrite(err.data(), 1, err.size(), stderr);
  return status;
}
