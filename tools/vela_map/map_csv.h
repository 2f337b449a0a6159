// Maps as CSV, for spreadsheets and scripts. One block per map: a header row whose first cell
// names the map ("fuel1 ms RPM/kPa") followed by the load of each load site, then the eleven RPM
// rows top to bottom as the grid shows them, each the row's RPM and its values. Fields are
// separated by commas and numbers use '.' as the decimal mark; blocks are separated by an empty
// line.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "calibration/calibration_image.h"
#include "tools/vela_map/map_sheets.h"

namespace vela::mapfile {

std::string MapCsv(const CalibrationImage& image, std::span<const MapId> maps);

// What a CSV map does to an image. A refused import gives no image and says each reason, cell by
// cell; `notes` say what an accepted import changed on its way in (cells lowered to the duty
// limit).
struct ImportOutcome {
  std::optional<CalibrationImage> image;
  std::vector<std::string> refusals;
  std::vector<std::string> notes;
};

// Puts the CSV's block for `map` into a copy of `target`. The CSV holds one block (whatever its
// name) or several, of which the one named after `map` is taken. The block must have the map's
// shape and the target's axes. Every value is rounded to the cell's step as a typed value is;
// values outside the map's range or that are no number are refused; fuel values above the duty
// limit of their RPM row are refused too, or lowered to it with `cap_to_duty`.
ImportOutcome ImportMapCsv(const CalibrationImage& target, MapId map, std::string_view csv,
                           bool cap_to_duty);

}  // namespace vela::mapfile
