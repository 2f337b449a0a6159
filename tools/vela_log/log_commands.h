// The commands of `vela-log`, run against a file system so that tests reach every path without a
// disk. Each returns the exit status (LogExit) and writes what it says to `out` (standard
// output) and `err` (standard error).
#pragma once

#include <string>
#include <vector>

#include "base/file_system.h"

namespace vela::logtool {

enum LogExit : int {
  kLogDone = 0,
  kLogUnreadable = 1,   // a file cannot be read, or is not a datalog, a map or a target table
  kLogUsage = 2,        // wrong arguments, or an output that would replace a file
  kLogWriteFailed = 3,  // tune: the corrected map could not be written
};

extern const char* const kLogUsageText;

// `args` are the arguments after the program's name.
int RunLogCommand(const std::vector<std::string>& args, FileSystem& files, std::string& out,
                  std::string& err);

}  // namespace vela::logtool
