#include "tools/vela_map/map_commands.h"

#include <filesystem>
#include <optional>

#include "editors/map_file.h"
#include "tools/vela_map/map_csv.h"
#include "tools/vela_map/map_diff.h"
#include "tools/vela_map/map_report.h"

namespace vela::mapfile {

const char* const kMapUsage =
    "usage: vela-map info FILE\n"
    "           the map file's checks and its set-up in words\n"
    "       vela-map diff A B [--json]\n"
    "           the map cells and set-up bytes that differ between two map files\n"
    "       vela-map export FILE [--map fuel1|fuel2|ign|all]\n"
    "           maps as CSV (header row the loads, first column the RPM); all by default\n"
    "       vela-map import FILE CSV --map fuel1|fuel2|ign --out NEWFILE [--cap] [--force]\n"
    "           a copy of FILE with one map from CSV, written to NEWFILE (never FILE itself);\n"
    "           fuel values above their row's duty limit are refused, or lowered to it with\n"
    "           --cap; --force replaces an existing NEWFILE\n"
    "exit status: 0 done (diff: no difference; info: all checks passed), 1 diff: files differ,\n"
    "             info: a check failed, 2 usage error, 3 a file cannot be read or is not a map,\n"
    "             4 import refused (nothing written), 5 the new file could not be written\n";

namespace {

struct Arguments {
  std::vector<std::string> positional;
  std::optional<std::string> map;
  std::optional<std::string> out;
  bool json = false;
  bool cap = false;
  bool force = false;
};

// The arguments after the command, or nothing for an unknown or incomplete option.
std::optional<Arguments> ParseArguments(const std::vector<std::string>& args) {
  Arguments parsed;
  for (std::size_t i = 1; i < args.size(); ++i) {
    const std::string& arg = args[i];
    if (arg == "--map" || arg == "--out") {
      if (i + 1 >= args.size()) return std::nullopt;
      (arg == "--map" ? parsed.map : parsed.out) = args[++i];
    } else if (arg == "--json" || arg == "--cap" || arg == "--force") {
      (arg == "--json" ? parsed.json : arg == "--cap" ? parsed.cap : parsed.force) = true;
    } else if (arg.size() > 1 && arg[0] == '-') {
      return std::nullopt;
    } else {
      parsed.positional.push_back(arg);
    }
  }
  return parsed;
}

struct Io {
  FileSystem& files;
  std::string& out;
  std::string& err;
};

std::optional<CalibrationImage> ReadMap(const std::string& path, Io& io) {
  MapFileImage read = ReadMapFileImage(io.files, path);
  if (!read.image) io.err += "vela-map: " + path + ": " + read.refusal + "\n";
  return std::move(read.image);
}

int Usage(Io& io, const std::string& why) {
  io.err += "vela-map: " + why + "\n" + kMapUsage;
  return kExitUsage;
}

int Info(const Arguments& a, Io& io) {
  if (a.positional.size() != 1 || a.map || a.out || a.json || a.cap || a.force) {
    return Usage(io, "info takes one map file");
  }
  const std::optional<CalibrationImage> image = ReadMap(a.positional[0], io);
  if (!image) return kExitNotAMap;
  const std::vector<std::string> failures = MapFileCheckFailures(*image);
  io.out += InfoText(a.positional[0], *image, failures);
  return failures.empty() ? kExitDone : kExitFound;
}

int Diff(const Arguments& a, Io& io) {
  if (a.positional.size() != 2 || a.map || a.out || a.cap || a.force) {
    return Usage(io, "diff takes two map files and --json");
  }
  const std::optional<CalibrationImage> first = ReadMap(a.positional[0], io);
  const std::optional<CalibrationImage> second = ReadMap(a.positional[1], io);
  if (!first || !second) return kExitNotAMap;
  const MapDiff diff = DiffImages(*first, *second);
  io.out += a.json ? DiffJson(diff, a.positional[0], a.positional[1])
                   : DiffText(diff, a.positional[0], a.positional[1]);
  return diff.Empty() ? kExitDone : kExitFound;
}

int Export(const Arguments& a, Io& io) {
  if (a.positional.size() != 1 || a.out || a.json || a.cap || a.force) {
    return Usage(io, "export takes one map file and --map");
  }
  std::vector<MapId> maps(kAllMaps.begin(), kAllMaps.end());
  if (a.map && *a.map != "all") {
    const std::optional<MapId> one = MapNamed(*a.map);
    if (!one) return Usage(io, "no map is named \"" + *a.map + "\"");
    maps = {*one};
  }
  const std::optional<CalibrationImage> image = ReadMap(a.positional[0], io);
  if (!image) return kExitNotAMap;
  io.out += MapCsv(*image, maps);
  return kExitDone;
}

bool SameFile(const std::string& a, const std::string& b) {
  std::error_code error;
  const std::filesystem::path first = std::filesystem::weakly_canonical(a, error);
  if (error) return a == b;
  const std::filesystem::path second = std::filesystem::weakly_canonical(b, error);
  return error ? a == b : first == second;
}

// Why an import may not write to its output, or empty.
std::string OutputRefusal(const Arguments& a, Io& io) {
  const std::string& out = *a.out;
  if (SameFile(out, a.positional[0])) return "import never writes over its map file; name a copy";
  if (SameFile(out, a.positional[1])) return "import would write over its CSV";
  if (!a.force && io.files.ReadHead(out, 0).kind != FileHead::Kind::kMissing) {
    return out + " exists; --force replaces it";
  }
  return {};
}

int WriteImport(const CalibrationImage& before, const ImportOutcome& outcome, MapId map,
                const std::string& path, Io& io) {
  for (const std::string& note : outcome.notes) io.err += "vela-map: note: " + note + "\n";
  const CalibrationImage::Block& bytes = outcome.image->Bytes();
  if (io.files.WriteFile(path, std::string(bytes.begin(), bytes.end())) != kFileErrorNone) {
    io.err += "vela-map: " + FileErrorLine(path, io.files.LastWriteReason()) +
              ": the new map file could not be written\n";
    return kExitWriteFailed;
  }
  for (const std::string& failure : MapFileCheckFailures(*outcome.image)) {
    io.err += "vela-map: note: the new file fails a check: " + failure + "\n";
  }
  const std::size_t changed = DiffImages(before, *outcome.image).cells.size();
  io.out += "Wrote " + path + ": " + std::to_string(changed) + " cell" + (changed == 1 ? "" : "s") +
            " of " + std::string(MapName(map)) + " changed\n";
  return kExitDone;
}

int Import(const Arguments& a, Io& io) {
  if (a.positional.size() != 2 || !a.map || !a.out || a.json) {
    return Usage(io, "import takes a map file, a CSV, --map and --out");
  }
  const std::optional<MapId> map = MapNamed(*a.map);
  if (!map) return Usage(io, "no map is named \"" + *a.map + "\"");
  if (const std::string why = OutputRefusal(a, io); !why.empty()) return Usage(io, why);
  const std::optional<CalibrationImage> image = ReadMap(a.positional[0], io);
  if (!image) return kExitNotAMap;
  const std::optional<std::string> csv = io.files.ReadFile(a.positional[1]);
  if (!csv) {
    io.err += "vela-map: " + a.positional[1] + ": the CSV could not be read\n";
    return kExitNotAMap;
  }
  const ImportOutcome outcome = ImportMapCsv(*image, *map, *csv, a.cap);
  if (!outcome.image) {
    for (const std::string& line : outcome.refusals) io.err += "vela-map: refused: " + line + "\n";
    io.err += "vela-map: nothing was written\n";
    return kExitRefused;
  }
  return WriteImport(*image, outcome, *map, *a.out, io);
}

}  // namespace

int RunMapCommand(const std::vector<std::string>& args, FileSystem& files, std::string& out,
                  std::string& err) {
  Io io{files, out, err};
  if (args.size() == 1 && (args[0] == "--help" || args[0] == "-h" || args[0] == "help")) {
    out += kMapUsage;
    return kExitDone;
  }
  const std::optional<Arguments> parsed = ParseArguments(args);
  if (args.empty() || !parsed) return Usage(io, "wrong arguments");
  const std::string& command = args[0];
  if (command == "info") return Info(*parsed, io);
  if (command == "diff") return Diff(*parsed, io);
  if (command == "export") return Export(*parsed, io);
  if (command == "import") return Import(*parsed, io);
  return Usage(io, "no command \"" + command + "\"");
}

}  // namespace vela::mapfile
