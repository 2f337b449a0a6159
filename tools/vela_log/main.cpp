// vela-log: what a datalog chart file (*.sl1) holds, for scripts and quick looks.
//
//   vela-log info FILE   record count, duration, clock, channels, markers and gaps (and any
//                        damage)
//   vela-log csv FILE    the log as CSV on standard output
//
// A damaged file gives what could be read, with the damage told on standard error; a file that
// is not a datalog, or cannot be read, gives exit status 1; wrong arguments give 2.
#include <cstdio>
#include <cstring>
#include <string>

#include "base/file_system.h"
#include "datalog/files/log_export.h"
#include "datalog/files/log_file.h"

namespace {

constexpr const char* kUsage =
    "usage: vela-log info FILE   record count, duration, clock, channels, markers and gaps of a "
    "datalog\n"
    "       vela-log csv FILE    the datalog as CSV on standard output\n";

}  // namespace

int main(int argc, char* argv[]) {
  if (argc != 3 || (std::strcmp(argv[1], "info") != 0 && std::strcmp(argv[1], "csv") != 0)) {
    std::fputs(kUsage, stderr);
    return 2;
  }
  const std::string command = argv[1];
  const std::string path = argv[2];
  vela::DiskFileSystem files;
  const std::optional<std::string> bytes = files.ReadFile(path);
  if (!bytes) {
    std::fprintf(stderr, "vela-log: %s cannot be read\n", path.c_str());
    return 1;
  }
  vela::DatalogLog log;
  const vela::LogFileReport report = vela::DecodeLogFile(*bytes, log);
  if (!report.recognised) {
    std::fprintf(stderr, "vela-log: %s is not a MORVANE VELA datalog this tool can read\n",
                 path.c_str());
    return 1;
  }
  if (command == "info") {
    const std::string text = "File: " + path + "\n" + vela::LogInfoText(log, report);
    std::fwrite(text.data(), 1, text.size(), stdout);
    return 0;
  }
  for (const std::string& line : vela::DescribeLoss(report, log)) {
    std::fprintf(stderr, "vela-log: %s\n", line.c_str());
  }
  const std::string csv = vela::CsvText(log);
  std::fwrite(csv.data(), 1, csv.size(), stdout);
  return 0;
}
