// vela-log's commands on logs against a map file: `cells` and `tune`.
#pragma once

#include <string>
#include <vector>

#include "base/file_system.h"

namespace vela::logtool {

// `args` start after the command's name.
int RunCellsCommand(const std::vector<std::string>& args, FileSystem& files, std::string& out,
                    std::string& err);
int RunTuneCommand(const std::vector<std::string>& args, FileSystem& files, std::string& out,
                   std::string& err);

}  // namespace vela::logtool
