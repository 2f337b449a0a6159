#include "tools/vela_log/log_commands.h"

#include "datalog/files/log_export.h"
#include "datalog/files/log_file.h"
#include "tools/vela_log/tune_commands.h"

namespace vela::logtool {

const char* const kLogUsageText =
    "usage: vela-log info FILE   record count, duration, clock, channels, markers and gaps of a "
    "datalog\n"
    "       vela-log csv FILE    the datalog as CSV on standard output\n"
    "       vela-log cells LOG... --map MAP.sm1 [--target T.csv] [--ign] [--delay SECONDS]\n"
    "                            time and mean AFR per map cell as CSV\n"
    "       vela-log tune LOG... --map MAP.sm1 [--target T.csv] -o OUT.sm1 [--force]\n"
    "                 [--fuel 1|2] [--delay SECONDS] [--max-change PERCENT] [--min-samples N]\n"
    "                            write the map corrected by the logs' AFR; print the cells "
    "changed\n";

namespace {

int RunFileCommand(const std::string& command, const std::string& path, FileSystem& files,
                   std::string& out, std::string& err) {
  const std::optional<std::string> bytes = files.ReadFile(path);
  if (!bytes) {
    err += "vela-log: " + path + " cannot be read\n";
    return kLogUnreadable;
  }
  DatalogLog log;
  const LogFileReport report = DecodeLogFile(*bytes, log);
  if (!report.recognised) {
    err += "vela-log: " + path + " is not a MORVANE VELA datalog this tool can read\n";
    return kLogUnreadable;
  }
  if (command == "info") {
    out += "File: " + path + "\n" + LogInfoText(log, report);
    return kLogDone;
  }
  for (const std::string& line : DescribeLoss(report, log)) err += "vela-log: " + line + "\n";
  out += CsvText(log);
  return kLogDone;
}

}  // namespace

int RunLogCommand(const std::vector<std::string>& args, FileSystem& files, std::string& out,
                  std::string& err) {
  const std::string command = args.empty() ? "" : args.front();
  const std::vector<std::string> rest(args.begin() + (args.empty() ? 0 : 1), args.end());
  if ((command == "info" || command == "csv") && rest.size() == 1) {
    return RunFileCommand(command, rest.front(), files, out, err);
  }
  if (command == "cells") return RunCellsCommand(rest, files, out, err);
  if (command == "tune") return RunTuneCommand(rest, files, out, err);
  err += kLogUsageText;
  return kLogUsage;
}

}  // namespace vela::logtool
