// The commands of `vela-map`, run against a file system so that tests reach every path without a
// disk. Each returns the exit status a script reads (MapExit) and writes what it says to `out`
// (standard output) and `err` (standard error).
#pragma once

#include <string>
#include <vector>

#include "base/file_system.h"

namespace vela::mapfile {

enum MapExit : int {
  kExitDone = 0,         // done; diff: no difference; info: every check passed
  kExitFound = 1,        // diff: the files differ; info: a check failed
  kExitUsage = 2,        // wrong arguments, or an output that would replace a file
  kExitNotAMap = 3,      // a file cannot be read, or is not a map file
  kExitRefused = 4,      // import: the CSV was refused; nothing was written
  kExitWriteFailed = 5,  // import: the new file could not be written
};

extern const char* const kMapUsage;

// `args` are the arguments after the program's name.
int RunMapCommand(const std::vector<std::string>& args, FileSystem& files, std::string& out,
                  std::string& err);

}  // namespace vela::mapfile
