// A drive without a link, faster than real time: the engine model runs its drive cycle and every
// live frame the ECU would send at the program's default rate (kDriveLogFramesPerSecond) is
// recorded as the program records it: the datalog capture with every channel on, the air-fuel
// ratio shown for gasoline (lambda x 14.7), the temperatures through the image's sensor points
// and the duty on one injection per cycle. The result is the log the program would have saved.
#pragma once

#include <string>

#include "calibration/calibration_image.h"
#include "datalog/datalog_log.h"
#include "sim/core/sim_options.h"

namespace vela::sim {

// The program's default live-frame rate choice ("20 Samples/Second").
inline constexpr int kDriveLogFramesPerSecond = 20;

// Fills `log` (replaced) with `seconds` of driving from a cold start, recorded at
// `frames_per_second` (one of the program's live-frame rate choices).
void RunDrive(const SimOptions& options, const CalibrationImage& image, double seconds,
              DatalogLog& log, int frames_per_second = kDriveLogFramesPerSecond);

// Runs the drive and writes it as a chart file at `path` (written whole to a temporary file and
// renamed); false and a reason when the file cannot be written.
bool WriteDriveLog(const SimOptions& options, const CalibrationImage& image, double seconds,
                   const std::string& path, std::string* error);

}  // namespace vela::sim
