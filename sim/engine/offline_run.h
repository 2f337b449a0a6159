// What vela-ecusim does without a link: write the true fuel map (--true-map, for the target of
// --target or the default one) and run a drive into a chart file (--drive, --write-log).
#pragma once

#include <optional>
#include <string>

#include "sim/core/sim_options.h"

namespace vela::sim {

// Does what `line` asks of the two; returns the lines to print (one per file written), or
// nullopt and a reason when a file cannot be read or written.
std::optional<std::string> RunOffline(const SimCommandLine& line, std::string* error);

}  // namespace vela::sim
