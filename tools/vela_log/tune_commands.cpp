#include "tools/vela_log/tune_commands.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <optional>

#include "datalog/files/log_file.h"
#include "editors/map_file.h"
#include "tools/vela_log/log_commands.h"
#include "tune/tune_run.h"
#include "tune/view/proposal_view.h"

namespace vela::logtool {

namespace {

struct TuneArgs {
  std::vector<std::string> logs;
  std::string map;
  std::string target;
  std::string output;
  bool force = false;
  bool ignition = false;
  int fuel = 1;
  std::optional<double> delay;
  std::optional<double> max_change_percent;
  std::optional<double> min_samples;
};

std::optional<double> ArgNumber(const std::string& text) {
  double value = 0.0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (text.empty() || error != std::errc() || stop != end || !std::isfinite(value) || value < 0) {
    return std::nullopt;
  }
  return value;
}

// One option with its value; false when the value is missing or no number where one is needed.
bool TakeOption(const std::string& name, const std::string& value, TuneArgs& args) {
  if (name == "--map") args.map = value;
  if (name == "--target") args.target = value;
  if (name == "-o") args.output = value;
  if (name == "--map" || name == "--target" || name == "-o") return true;
  const std::optional<double> number = ArgNumber(value);
  if (!number) return false;
  if (name == "--delay") args.delay = *number;
  if (name == "--max-change") args.max_change_percent = *number;
  if (name == "--min-samples") args.min_samples = *number;
  if (name == "--fuel") args.fuel = static_cast<int>(*number);
  return name != "--fuel" || *number == 1.0 || *number == 2.0;
}

std::optional<TuneArgs> ParseArgs(const std::vector<std::string>& list, std::string& err) {
  TuneArgs args;
  static const std::vector<std::string> kValued = {
      "--map", "--target", "-o", "--delay", "--max-change", "--fuel", "--min-samples"};
  for (std::size_t i = 0; i < list.size(); ++i) {
    const std::string& arg = list[i];
    if (arg == "--force" || arg == "--ign") {
      (arg == "--force" ? args.force : args.ignition) = true;
    } else if (std::find(kValued.begin(), kValued.end(), arg) != kValued.end()) {
      if (i + 1 >= list.size() || !TakeOption(arg, list[i + 1], args)) {
        err += "vela-log: " + arg + " needs a value\n" + kLogUsageText;
        return std::nullopt;
      }
      ++i;
    } else if (arg.starts_with("-")) {
      err += "vela-log: unknown option " + arg + "\n" + kLogUsageText;
      return std::nullopt;
    } else {
      args.logs.push_back(arg);
    }
  }
  if (args.logs.empty() || args.map.empty()) {
    err += "vela-log: a log and --map are needed\n";
    err += kLogUsageText;
    return std::nullopt;
  }
  return args;
}

bool ReadLogs(const TuneArgs& args, FileSystem& files, std::vector<DatalogLog>& logs,
              std::string& err) {
  for (const std::string& path : args.logs) {
    const std::optional<std::string> bytes = files.ReadFile(path);
    DatalogLog& log = logs.emplace_back();
    if (!bytes) {
      err += "vela-log: " + path + " cannot be read\n";
      return false;
    }
    const LogFileReport report = DecodeLogFile(*bytes, log);
    if (!report.recognised) {
      err += "vela-log: " + path + " is not a MORVANE VELA datalog this tool can read\n";
      return false;
    }
    for (const std::string& line : DescribeLoss(report, log)) {
      err += "vela-log: " + path + ": " + line + "\n";
    }
  }
  return true;
}

// The target table: the file named, else the one beside the map file, else the default.
std::optional<TargetTable> ReadTargets(const TuneArgs& args, const TuneAxes& axes,
                                       FileSystem& files, std::string& source, std::string& err) {
  source = args.target.empty() ? TargetPathFor(args.map) : args.target;
  const std::optional<std::string> text = files.ReadFile(source);
  if (!text) {
    if (!args.target.empty()) {
      err += "vela-log: " + source + " cannot be read\n";
      return std::nullopt;
    }
    source = "default";
    return TargetTable(axes);
  }
  TargetRead read = ReadTargetCsv(*text, axes);
  for (const std::string& line : read.refusals) err += "vela-log: " + source + ": " + line + "\n";
  return std::move(read.table);
}

std::string Fixed(double value, int decimals) {
  if (!std::isfinite(value)) return "";
  char text[48];
  std::snprintf(text, sizeof text, "%.*f", decimals, value);
  return text;
}

std::string DelayText(const DelayModel& delay, bool set, const DelayFit& fit,
                      std::string_view unit) {
  const std::string model = Fixed(delay.floor_s, 3) + " s + " + Fixed(delay.k, 0) + " / (RPM x " +
                            std::string(unit) + ")";
  if (set) return "Delay: set, " + model + "\n";
  if (fit.fitted) {
    return "Delay: fitted, " + model + " from " + std::to_string(fit.steps) + " steps (" +
           std::to_string(fit.dropped) + " left out), rms residual " +
           Fixed(fit.rms_residual_s, 3) + " s\n" +
           (CoarseDelayFit(fit) ? "Note: " + CoarseFitText(fit) + "\n" : "");
  }
  return "Delay: default, " + model + " (no fit: " + fit.why_not + ")\n";
}

struct LoadedInputs {
  std::vector<DatalogLog> logs;
  CalibrationImage image;
  std::optional<TargetTable> targets;
  std::string target_source;
};

int LoadInputs(const TuneArgs& args, FileSystem& files, LoadedInputs& in, std::string& err) {
  const MapFileImage map = ReadMapFileImage(files, args.map);
  if (!map.image) {
    err += "vela-log: " + args.map + ": " + map.refusal + "\n";
    return kLogUnreadable;
  }
  in.image = *map.image;
  if (!ReadLogs(args, files, in.logs, err)) return kLogUnreadable;
  in.targets = ReadTargets(args, FuelAxesOf(in.image), files, in.target_source, err);
  return in.targets ? kLogDone : kLogUnreadable;
}

TuneSettings SettingsOf(const TuneArgs& args) {
  TuneSettings settings;
  if (args.delay) settings.delay = DelayModel{*args.delay, 0.0};
  if (args.max_change_percent) settings.proposal.max_change = *args.max_change_percent / 100.0;
  if (args.min_samples) settings.proposal.min_samples = *args.min_samples;
  settings.proposal.fuel_map = args.fuel;
  return settings;
}

std::vector<const DatalogLog*> Pointers(const std::vector<DatalogLog>& logs) {
  std::vector<const DatalogLog*> pointers;
  for (const DatalogLog& log : logs) pointers.push_back(&log);
  return pointers;
}

std::string CellsCsv(const Evidence& evidence, const TargetTable& targets) {
  const TuneAxes& axes = evidence.cells.Axes();
  std::string out = "row,column,rpm,load_" +
                    std::string(axes.LoadUnit() == "%" ? "percent" : "kpa") +
                    ",time_s,samples,mean_afr,afr_spread,target_afr,afr_error\n";
  for (int row = 1; row <= axes.Rows(); ++row) {
    for (int column = 1; column <= axes.Columns(); ++column) {
      const CellEvidence& cell = evidence.cells.At(row, column);
      out += std::to_string(row) + "," + std::to_string(column) + "," + Fixed(axes.RowRpm(row), 0) +
             "," + Fixed(axes.ColumnLoad(column), 1) + "," + Fixed(cell.time_s, 2) + "," +
             Fixed(cell.samples, 1) + "," + Fixed(cell.MeanAfr(), 2) + "," +
             Fixed(cell.AfrSpread(), 2) + "," +
             Fixed(targets.AtPoint(axes.RowRpm(row), axes.ColumnLoad(column)), 2) + "," +
             Fixed(cell.MeanError(), 2) + "\n";
    }
  }
  return out;
}

std::string ChangedCellsText(const FuelProposal& proposal, const TuneAxes& axes) {
  int changed = 0, too_little = 0, limited = 0;
  std::string table =
      "row,column,rpm,load,before_ms,after_ms,change_percent,samples,time_s,mean_afr,"
      "target_afr\n";
  for (const ProposedCell& cell : proposal.cells) {
    if (cell.state == CellProposalState::kTooLittle) ++too_little;
    if (cell.state != CellProposalState::kProposed) continue;
    ++changed;
    if (cell.limited) ++limited;
    table += std::to_string(cell.row) + "," + std::to_string(cell.column) + "," +
             Fixed(axes.RowRpm(cell.row), 0) + "," + Fixed(axes.ColumnLoad(cell.column), 1) + "," +
             Fixed(cell.before_ms, 3) + "," + Fixed(cell.after_ms, 3) + "," +
             Fixed((cell.after_ms / cell.before_ms - 1.0) * 100.0, 1) + "," +
             Fixed(cell.evidence.samples, 1) + "," + Fixed(cell.evidence.time_s, 2) + "," +
             Fixed(cell.evidence.MeanAfr(), 2) + "," + Fixed(cell.target_afr, 2) + "\n";
  }
  return "Fuel " + std::to_string(proposal.fuel_map) + ": " + std::to_string(changed) +
         " cells changed (" + std::to_string(limited) + " held to the per-pass limit), " +
         std::to_string(too_little) + " with too little evidence left alone, " +
         std::to_string(proposal.change.capped) + " held at the duty limit\n" + table;
}

}  // namespace

int RunCellsCommand(const std::vector<std::string>& list, FileSystem& files, std::string& out,
                    std::string& err) {
  const std::optional<TuneArgs> args = ParseArgs(list, err);
  if (!args) return kLogUsage;
  LoadedInputs in;
  if (const int status = LoadInputs(*args, files, in, err); status != kLogDone) return status;
  const TuneAxes axes = args->ignition ? IgnAxesOf(in.image) : FuelAxesOf(in.image);
  std::vector<SampleLog> samples;
  for (const DatalogLog& log : in.logs) samples.push_back(SamplesOf(log, axes.basis));
  TuneSettings settings = SettingsOf(*args);
  settings.filters = FiltersFor(in.image, settings.filters);
  DelayFit fit;
  const DelayModel delay = ChooseDelay(samples, settings, fit);
  err += "vela-log: " + DelayText(delay, settings.delay.has_value(), fit, axes.LoadUnit());
  const Evidence evidence = GatherEvidence(samples, axes, *in.targets, settings.filters, delay);
  out += CellsCsv(evidence, *in.targets);
  return kLogDone;
}

int RunTuneCommand(const std::vector<std::string>& list, FileSystem& files, std::string& out,
                   std::string& err) {
  const std::optional<TuneArgs> args = ParseArgs(list, err);
  if (!args) return kLogUsage;
  if (args->output.empty()) {
    err += "vela-log: tune needs -o OUT.sm1\n";
    err += kLogUsageText;
    return kLogUsage;
  }
  if (!args->force && files.ReadHead(args->output, 0).kind != FileHead::Kind::kMissing) {
    err += "vela-log: " + args->output + " exists; --force replaces it\n";
    return kLogUsage;
  }
  LoadedInputs in;
  if (const int status = LoadInputs(*args, files, in, err); status != kLogDone) return status;
  const TuneRun run = RunTune(Pointers(in.logs), in.image, *in.targets, SettingsOf(*args));
  const TuneAxes& axes = run.evidence.cells.Axes();
  out += DelayText(run.delay, run.delay_set, run.fit, axes.LoadUnit()) +
         SamplesText(run.evidence.verdicts) + "\n" + "Targets: " + in.target_source + "\n" +
         ChangedCellsText(run.proposal, axes);
  const auto& bytes = run.proposal.corrected.Bytes();
  if (files.WriteFile(args->output, std::string(bytes.begin(), bytes.end())) != kFileErrorNone) {
    err += "vela-log: " + args->output + " could not be written: " + files.LastWriteReason() + "\n";
    return kLogWriteFailed;
  }
  out += "Wrote " + args->output + "\n";
  return kLogDone;
}

}  // namespace vela::logtool
