// What restoring a restore point writes into the editors' image: the whole image, or one map's
// area alone. A map is only taken when the point lays it out like the image does (the same number
// of load sites): its bytes would otherwise land in other cells.
#pragma once

#include <string>
#include <vector>

#include "calibration/calibration_image.h"
#include "editors/workbench/edit_journal.h"

namespace vela {

struct RestorePlan {
  std::vector<ByteWrite> writes;  // ascending positions, only bytes that change
  std::string refusal;            // why nothing may be written; empty when it may
};

// `place` is the whole image or one of the three maps (the set-up alone is not restored: its
// bytes belong together with the maps they describe).
RestorePlan PlanRestore(const CalibrationImage& current, const CalibrationImage& point,
                        EditPlace place);

}  // namespace vela
