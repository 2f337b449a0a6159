// The air-fuel ratio display choice (`ComboAFRMode`, line 4 of Setup.txt): the fuel the ratio is
// shown for, the captions it gives the AFR read-outs, and the shown value from the live lambda.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "base/program_settings.h"

namespace vela {

inline constexpr std::array<std::string_view, kAfrDisplayModes> kAfrModeTexts = {
    " AFR Gasoline", " AFR Ethanol", " AFR Methanol",           " AFR Natural Gas (NGV)",
    " AFR Diesel",   " Lambda",      " CO Gasoline Equivalent", " Disabled"};
inline constexpr int kAfrModeLambda = 5;
inline constexpr int kAfrModeCo = 6;
inline constexpr int kAfrModeDisabled = 7;

struct AfrCaptions {
  std::string_view fuel;   // beside the read-out: "  Gasoline"
  std::string_view value;  // the value's name: "AFR Value (Gasoline x10)"; empty when disabled
  std::string_view unit;   // "AFR", "Lambda", "CO %", or empty when disabled
};
// An unknown mode is taken as gasoline.
AfrCaptions AfrCaptionsOf(int mode);

// The shown value for a live lambda: the ratio for the fuel (lambda x its stoichiometric
// ratio), lambda itself, or for "CO Gasoline Equivalent" the carbon monoxide share of a gasoline
// engine's exhaust at that lambda (30 % for each 1.0 below lambda 1, the rich-side slope exhaust
// gas analysers show; 0 at lambda 1 and leaner). nullopt with no reading (lambda 0) or when
// disabled.
std::optional<double> AfrShownValue(double lambda, int mode);
// Decimals of the shown value: 1 for a ratio and CO, 2 for lambda.
int AfrDecimals(int mode);

// The air-fuel read-out's text, the same on every page that shows it: the shown value with the
// mode's decimals and `separator`, or kNoAfrText with no reading or with the display disabled.
inline constexpr std::string_view kNoAfrText = "-";
std::string AfrText(double lambda, int mode, char separator);

}  // namespace vela
