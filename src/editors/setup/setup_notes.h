// Notes beside dangerous set-up choices: said in red on the page, never blocking the tuner.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "editors/editor_state.h"

namespace vela {

// A rev limiter above the RPM range of the maps' site spacing.
std::string RevLimiterNote(const EngineSetup& setup);
// Sequential injection, or coil per cylinder, without a home position.
std::string InjectionNote(const EngineSetup& setup);
std::string SparkModeNote(const EngineSetup& setup);
// A drive that overheats injectors or the ECU's drivers when it does not match the injectors.
std::string ImpedanceNote(const EngineSetup& setup);
// A dwell that charges the coils long enough to overheat them: a charge time above 5.0 ms, or a
// duty that gives more than 6 ms at the idle target (1000 RPM when none is set).
std::string DwellNote(const EngineSetup& setup, const IdleControl& idle);
// The injection mode's name for read-outs and reports: "Batch Mode", "Semi-Sequential Pairs
// Mode", and for "Sequential" "Full Phased Sequential Mode" with a home position or "Un-Phased
// Sequential Mode" without one; "***" for a mode code no choice has (or a home position code no
// entry has, with which the phasing cannot be told).
std::string_view InjectionModeName(const EngineSetup& setup);

// Always said beside the load site lists: a change does not convert the maps.
std::string LoadSitesNote();

// The charge time in milliseconds that a constant duty gives one coil at `rpm`; nullopt for an
// unknown cylinder count or spark mode.
std::optional<double> DutyChargeTimeMs(const EngineSetup& setup, double rpm);

}  // namespace vela
