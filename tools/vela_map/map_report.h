// What `vela-map info` says about a map file: the checks the program runs before it loads the
// file, and the file's set-up in the words of the set-up pages.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "calibration/calibration_image.h"

namespace vela::mapfile {

// The set-up in words, one (caption, what the file holds) line each, in page order. A byte that
// no entry stands for is said with its value.
std::vector<std::pair<std::string, std::string>> SetupInWords(const CalibrationImage& image);

// The whole report: file, checks (`failures` as MapFileCheckFailures gives them), set-up.
std::string InfoText(const std::string& path, const CalibrationImage& image,
                     const std::vector<std::string>& failures);

}  // namespace vela::mapfile
