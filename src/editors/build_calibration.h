// The way back: a calibration image built from what the editors hold, for a download or a map
// file, with the setup validation a save runs.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "calibration/calibration_image.h"
#include "editors/editor_state.h"

namespace vela {

// Follows each failed check's message in the save validation.
inline constexpr std::string_view kMapErrorSuffix = ", There was an error in your Map";

struct BuiltCalibration {
  CalibrationImage image;
  // One line per failed setup check ("Trigger Pattern Invalid, There was an error in your Map"),
  // in the order in which applying the image would list them; empty when all pass.
  std::vector<std::string> errors;
};

// Every setup field encoded from the editors, and zero bytes everywhere else (maps included).
CalibrationImage EncodeSetup(const EditorState& state);

// The whole block: the maps from their grids (laid out by the load-site choices, unused map
// cells zero), the setup fields from the editors, zero at every position no editor owns.
BuiltCalibration BuildCalibrationFromEditors(const EditorState& state);

}  // namespace vela
