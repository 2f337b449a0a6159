#include "editors/editor_state.h"

#include <algorithm>

#include "calibration/conversions.h"

namespace vela {

namespace {
constexpr int kMaxIgnitionDivide = 4;
}  // namespace

int FuelLoadSitesOfChoice(int sites_code) {
  if (sites_code < 0) return kFuelLoadSiteChoices.front();
  const int last = static_cast<int>(kFuelLoadSiteChoices.size()) - 1;
  return kFuelLoadSiteChoices[static_cast<std::size_t>(std::min(sites_code, last))];
}

int IgnLoadSitesOfChoice(int sites_code) {
  return sites_code > 0 ? kIgnLoadSiteChoices.back() : kIgnLoadSiteChoices.front();
}

void SetupIgnitionDivide(EngineSetup& setup) {
  // The ECU opens the injectors on the crank trigger: every crank turn (twice a cycle) in the
  // batch and semi-sequential modes, once a cycle in full sequential. An unknown mode takes the
  // lower limit of the two.
  setup.ignition_divide = setup.fuel_mode == kFuelModeSequential ? 1 : 2;
  static_assert(2 <= kMaxIgnitionDivide);
  setup.injection_factor = setup.fuel_mode == kFuelModeSequential ? setup.ignition_divide : 1;
}

double DutyLimitBase(const EngineSetup& setup) {
  const int divide = setup.ignition_divide >= 1 ? setup.ignition_divide : 1;
  return kMsRpmPerEngineCycle * setup.injection_factor / divide;
}

}  // namespace vela
