#include "program/afr_display.h"

#include <algorithm>

#include "program/live_text.h"

namespace vela {

namespace {

struct AfrMode {
  AfrCaptions captions;
  double stoichiometric;  // 0 for the modes that are not a ratio
};

constexpr std::array<AfrMode, kAfrDisplayModes> kModes = {{
    {{"  Gasoline", "AFR Value (Gasoline x10)", "AFR"}, 14.7},
    {{"   Ethanol", "AFR Value (Ethanol x10)", "AFR"}, 9.0},
    {{"  Methanol", "AFR Value (Methanol x10)", "AFR"}, 6.4},
    {{"Natural Gas", "AFR Value (Natural Gas x10)", "AFR"}, 17.2},
    {{"    Diesel", "AFR Value (Diesel x10)", "AFR"}, 14.5},
    {{"Lambda", "Lambda Value (x100)", "Lambda"}, 0.0},
    {{"CO Gasoline", "CO Value (Gasoline Equivalent %)", "CO %"}, 0.0},
    {{"Disabled", "", ""}, 0.0},
}};
constexpr double kCoPercentPerLambda = 30.0;

const AfrMode& ModeOf(int mode) {
  return kModes[static_cast<std::size_t>(mode >= 0 && mode < kAfrDisplayModes ? mode : 0)];
}

}  // namespace

AfrCaptions AfrCaptionsOf(int mode) { return ModeOf(mode).captions; }

std::optional<double> AfrShownValue(double lambda, int mode) {
  if (!(lambda > 0.0) || mode == kAfrModeDisabled) return std::nullopt;
  if (mode == kAfrModeLambda) return lambda;
  if (mode == kAfrModeCo) return std::max(0.0, (1.0 - lambda) * kCoPercentPerLambda);
  return lambda * ModeOf(mode).stoichiometric;
}

int AfrDecimals(int mode) { return mode == kAfrModeLambda ? 2 : 1; }

std::string AfrText(double lambda, int mode, char separator) {
  const std::optional<double> value = AfrShownValue(lambda, mode);
  if (!value) return std::string(kNoAfrText);
  return FixedText(*value, AfrDecimals(mode), separator);
}

}  // namespace vela
