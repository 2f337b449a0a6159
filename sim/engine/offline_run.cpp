#include "sim/engine/offline_run.h"

#include <fstream>
#include <sstream>

#include "base/file_system.h"
#include "sim/core/base_calibration.h"
#include "sim/engine/drive_log.h"
#include "sim/engine/true_map.h"
#include "tune/target/target_table.h"

namespace vela::sim {

namespace {

// The target of --target, read as the program reads the table it keeps beside a map file: on
// the fuel map's axes of `image`. Without --target, the default table.
std::optional<TargetTable> TargetOf(const SimCommandLine& line, const CalibrationImage& image,
                                    std::string* error) {
  const TuneAxes axes = FuelAxesOf(image);
  if (line.target_path.empty()) return TargetTable(axes);
  std::ifstream in(line.target_path, std::ios::binary);
  if (!in) {
    if (error) *error = "cannot read " + line.target_path;
    return std::nullopt;
  }
  std::ostringstream text;
  text << in.rdbuf();
  TargetRead read = ReadTargetCsv(text.str(), axes);
  if (!read.table && error) {
    *error = line.target_path + ":";
    for (const std::string& refusal : read.refusals) *error += " " + refusal;
  }
  return std::move(read.table);
}

bool WriteTrueMap(const SimCommandLine& line, const CalibrationImage& image, std::string* error) {
  const std::optional<TargetTable> target = TargetOf(line, image, error);
  if (!target) return false;
  const CalibrationImage truth = WithTrueFuelMap(image, line.sim.fuel_errors, *target);
  const auto& bytes = truth.Bytes();
  DiskFileSystem files;
  if (files.WriteFile(line.true_map_path, std::string(bytes.begin(), bytes.end())) !=
      kFileErrorNone) {
    if (error)
      *error = "cannot write " + FileErrorLine(line.true_map_path, files.LastWriteReason());
    return false;
  }
  return true;
}

}  // namespace

std::optional<std::string> RunOffline(const SimCommandLine& line, std::string* error) {
  std::optional<CalibrationImage> image = line.image_path.empty()
                                              ? EmbeddedBaseCalibration()
                                              : LoadCalibrationFile(line.image_path, error);
  if (!image) return std::nullopt;
  std::string report;
  if (!line.true_map_path.empty()) {
    if (!WriteTrueMap(line, *image, error)) return std::nullopt;
    report += "true fuel map written to " + line.true_map_path + "\n";
  }
  if (!line.write_log_path.empty()) {
    if (!WriteDriveLog(line.sim, *image, line.drive_seconds, line.write_log_path, error)) {
      return std::nullopt;
    }
    std::ostringstream seconds;
    seconds << line.drive_seconds;
    report += "drive of " + seconds.str() + " s written to " + line.write_log_path + "\n";
  }
  return report;
}

}  // namespace vela::sim
