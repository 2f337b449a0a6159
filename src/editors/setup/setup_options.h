// The texts of the set-up pages' option groups and lists, kept exactly as the tuner sees them
// (leading and double blanks included), with the fixed warning of the trigger input edge. Their
// captions stand in the choices' descriptions (setup_choice_table.h).
#pragma once

#include <array>
#include <string_view>

namespace vela {

template <std::size_t N>
using Texts = std::array<std::string_view, N>;

// Option groups.
inline constexpr Texts<9> kCylinderTexts = {"1", "2", "3", "4", "5", "6", "8", "10", "12"};
inline constexpr std::array<int, 9> kCylinderCounts = {1, 2, 3, 4, 5, 6, 8, 10, 12};
inline constexpr Texts<3> kFuelModeTexts = {"Batch", "Semi-Sequential", "Sequential"};
inline constexpr Texts<3> kImpedanceTexts = {"Low", "Medium", "High"};
inline constexpr Texts<3> kLimiterModeTexts = {"Cut Fuel", "Cut Spark", "Cut Both"};
inline constexpr Texts<2> kLoadSensingTexts = {"TPS Based", "MAP Based"};
inline constexpr Texts<2> kThrottlePumpBasisTexts = {"Throttle Position (TPS)",
                                                     "Manifold Pressure (MAP)"};
inline constexpr Texts<3> kSensorTypeTexts = {"Hall", "Magnetic", "Magnetic Low"};
inline constexpr Texts<2> kTriggerEdgeInputTexts = {"Falling (Default)", "Rising"};
inline constexpr Texts<2> kTriggerEdgeHomeTexts = {"Rising (Default)", "Falling"};
inline constexpr Texts<4> kTriggerEdgeSparkTexts = {"Falling (Default)", "Rising",
                                                    "Pull-up Enabled", "Pull-up Disabled"};

// Lists.
inline constexpr Texts<6> kTriggerPatternTexts = {"Single Trigger",
                                                  "Multi-Tooth - 12 tooth Crank (Lexus 1UZ)",
                                                  "Multi-Tooth - 24 tooth Crank (Toyota 4AGE)",
                                                  "Missing Tooth - 36-1",
                                                  "Missing Tooth - 36-2",
                                                  "Missing Tooth - 60-2"};
inline constexpr Texts<5> kHomePatternTexts = {"Home Position Disabled",
                                               "Generated from Trigger Wheel Input (Adaptive)",
                                               "On Crank - 1 Tooth Seperate Sensor (360\u00B0)",
                                               "On Cam   - 1 Pulse per Cam Rotation (720\u00B0)",
                                               "On Cam   - 2 Pulses per Cam Rotation (360\u00B0)"};
inline constexpr Texts<4> kSparkModeTexts = {"Single Coil", "Wasted Spark", "Coil per Cylinder",
                                             "Twin Distributor (Lexus V8)"};
inline constexpr Texts<2> kDwellModeTexts = {"Constant Duty Percentage", "Constant Charge Time"};
inline constexpr Texts<4> kRpmSiteTexts = {
    "750 RPM Spacing  (7000RPM)", "900 RPM Spacing (8200RPM)", "1000 RPM Spacing (9000RPM)",
    "1200 RPM Spacing (10000RPM)"};
// The top of each spacing's RPM range, as its text names it.
inline constexpr std::array<int, 4> kRpmSiteRangeTop = {7000, 8200, 9000, 10000};
inline constexpr Texts<3> kFuelSiteTexts = {
    "9 Load Sites per RPM Range", "13 Load Sites per RPM Range", "17 Load Sites per RPM Range"};
inline constexpr Texts<2> kIgnSiteTexts = {"5 Load Sites per RPM Range",
                                           "6 Load Sites per RPM Range"};
inline constexpr Texts<15> kFuelPumpPrimeTexts = {
    "Permanently Off",      "Prime for 1  Seconds", "Prime for 2  Seconds", "Prime for 3  Seconds",
    "Prime for 4  Seconds", "Prime for 5  Seconds", "Prime for 6  Seconds", "Prime for 8  Seconds",
    "Prime for 10 Seconds", "Prime for 12 Seconds", "Prime for 15 Seconds", "Prime for 20 Seconds",
    "Prime for 25 Seconds", "Prime for 30 Seconds", "Permanently On"};
// The second "Rev Counter Signal" is a deliberate repeat; each entry keeps its own index.
inline constexpr Texts<4> kAuxOutputTexts = {"Idle Control", "Rev Counter Signal",
                                             "Trigger Signal Pass-Through", "Rev Counter Signal"};
inline constexpr Texts<4> kWarningLightTexts = {"Disabled", "Only Save (OBD) On Board Diagnostics",
                                                "Warning Light Output Flashes Slowly",
                                                "Warning Light Output Flashes Fast"};

// Injection mode names of read-outs and reports; an unknown code reads "***".
inline constexpr Texts<4> kInjectionModeNames = {"Batch Mode", "Semi-Sequential Pairs Mode",
                                                 "Un-Phased Sequential Mode",
                                                 "Full Phased Sequential Mode"};
inline constexpr std::string_view kUnknownInjectionMode = "***";

// The warning (under kWarningTitle) shown when the tuner picks "Rising" for the trigger input:
// three lines of text with an empty line after the first; the last two keep their trailing blanks.
inline constexpr std::array<std::string_view, 4> kRisingEdgeWarningLines = {
    "Please Note that you have selected Rising Edge Trigger Input mode.", "",
    "This mode is normally only used on nissan distibutors. If this value is ",
    "set incorrectly, it can cause the motor to have rotor phasing problems.    "};

}  // namespace vela
