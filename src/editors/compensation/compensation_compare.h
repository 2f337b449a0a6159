// The compensation tables as a comparison of two images takes them: one column of bytes each, at
// the positions and in the shown units of their grids on the compensation page.
#pragma once

#include <vector>

#include "editors/editor_state.h"
#include "editors/workbench/image_compare.h"

namespace vela {

// `AirMap`, `WaterMap`, `BattMap` and `ThrottlePump`, rows numbered from 0 as their grids number
// them. The throttle pump's last row is shown on the load basis `sensors` gives (the editors').
std::vector<CellTable> CompensationCompareTables(const SensorSetup& sensors);

}  // namespace vela
