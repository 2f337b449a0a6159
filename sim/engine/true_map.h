// The fuel map that would make the engine run exactly at a target air-fuel ratio: each cell the
// injector time the warm engine needs at its site (the site's engine speed, and its load: the
// manifold pressure on a MAP basis; on a throttle basis the steady pressure that throttle gives
// at that speed) with its fuel errors, for the target at that site. The ECU's compensations add
// nothing to it once the engine is warm, and the opening time the battery table adds is what the
// injectors take, so a calibration holding these cells fuels the warm engine to the target at
// every site and, reading between the four cells around a point, very nearly between them.
// The target is the program's own table (tune/target/target_table.h) on the fuel map's axes.
#pragma once

#include <span>

#include "calibration/calibration_image.h"
#include "sim/engine/engine_physics.h"
#include "tune/target/target_table.h"

namespace vela::sim {

// Microseconds, whole, 0 to 65,535; `block_row` 1 to 11, `column` 1 to the load sites.
double TrueCellUs(const CalibrationImage& image, std::span<const FuelError> errors,
                  const vela::TargetTable& target, int block_row, int column);
// `image` with fuel map 1 (the map the ECU runs on) made the true map; nothing else changes.
CalibrationImage WithTrueFuelMap(const CalibrationImage& image, std::span<const FuelError> errors,
                                 const vela::TargetTable& target);

}  // namespace vela::sim
