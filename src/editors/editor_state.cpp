#include "editors/editor_state.h"

#include <algorithm>

namespace vela {

namespace {
constexpr double kDutyLimitNumerator = 120000.0;  // milliseconds x RPM of one engine cycle
constexpr int kMaxIgnitionDivide = 4;
}  // namespace

int FuelLoadSitesOfChoice(int combo_site_fuel) {
  if (combo_site_fuel < 0) return kFuelLoadSiteChoices.front();
  const int last = static_cast<int>(kFuelLoadSiteChoices.size()) - 1;
  return kFuelLoadSiteChoices[static_cast<std::size_t>(std::min(combo_site_fuel, last))];
}

int IgnLoadSitesOfChoice(int combo_site_ignition) {
  return combo_site_ignition > 0 ? kIgnLoadSiteChoices.back() : kIgnLoadSiteChoices.front();
}

void SetupIgnitionDivide(EngineSetup& setup) {
  // The ECU opens the injectors on the crank trigger: every crank turn (twice a cycle) in the
  // batch and semi-sequential modes, once a cycle in full sequential. An unknown mode takes the
  // lower limit of the two.
  setup.IgnitionDivide = setup.FuelMode == kFuelModeSequential ? 1 : 2;
  static_assert(2 <= kMaxIgnitionDivide);
  setup.InjectionFactor = setup.FuelMode == kFuelModeSequential ? setup.IgnitionDivide : 1;
}

double DutyLimitBase(const EngineSetup& setup) {
  const int divide = setup.IgnitionDivide >= 1 ? setup.IgnitionDivide : 1;
  return kDutyLimitNumerator * setup.InjectionFactor / divide;
}

}  // namespace vela
