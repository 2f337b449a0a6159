// Instant help on the caption labels of the setup tabs. A fixed set of label indexes are help
// labels; each belongs to one tab's topic set and names one topic. With instant help on, the
// label under the mouse is highlighted, and a click puts its topic's text into the instant help
// box (`TextInstantHelp`). Only the outputs (tab 3), inputs (tab 4) and main setup (tab 6) tabs
// have topic sets.
//
// A topic's text is a list of lines, each beginning with one blank: the title, ":" and a short
// definition, then one line per choice (its name, a hyphen and the explanation), continuation
// lines indented so that the explanations line up; joined with carriage return and line feed.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vela {

enum class HelpSet { kOutputs, kInputs, kMainSetup };

inline constexpr int kHelpTabOutputs = 3;
inline constexpr int kHelpTabInputs = 4;
inline constexpr int kHelpTabMainSetup = 6;

struct HelpTopic {
  std::string_view title;
  std::span<const std::string_view> lines;
};

struct HelpLabel {
  int index;               // the label's index in the caption label array `Label`
  HelpSet set;             // the tab it stands on
  std::string_view topic;  // the title of its topic in that set
};

// The help labels' indexes, as the pages create them.
namespace help_label {
// Main setup.
inline constexpr int kCylinders = 100;
inline constexpr int kFuelMode = 101;
inline constexpr int kInjectorImpedance = 102;
inline constexpr int kFuelMapSelection = 103;
inline constexpr int kRevLimiter1 = 104;
inline constexpr int kRevLimiter2 = 105;
inline constexpr int kLimiterType = 106;
inline constexpr int kStartupPrime = 107;
inline constexpr int kInstalledMapSensor = 108;
inline constexpr int kMapSensorScaling = 109;
inline constexpr int kLoadSensing = 110;
inline constexpr int kSparkMode = 111;
inline constexpr int kDwellControl = 112;
inline constexpr int kDwellSetting = 113;
inline constexpr int kTriggerPattern = 114;
inline constexpr int kTriggerSensorType = 115;
inline constexpr int kTriggerVoltage = 116;
inline constexpr int kTriggerAngle = 117;
inline constexpr int kTriggerToothOffset = 118;
inline constexpr int kTriggerInputEdge = 119;
inline constexpr int kHomePosition = 120;
inline constexpr int kHomeSensorType = 121;
inline constexpr int kHomeVoltage = 122;
inline constexpr int kHomeInputEdge = 123;
inline constexpr int kSparkOutputEdge = 124;
inline constexpr int kEngineSpeedSites = 125;
inline constexpr int kFuelLoadSites = 126;
inline constexpr int kIgnitionLoadSites = 127;
inline constexpr int kAuxiliaryOutput = 128;
inline constexpr int kWarningLight = 129;
inline constexpr int kAfrDisplay = 130;
// Outputs: output n's byte k (1 to 16) is kGpoFirst + 16 x (n - 1) + k - 1.
inline constexpr int kGpoFirst = 200;
inline constexpr int kIdleTarget = 250;
inline constexpr int kIdleValveMinimum = 251;
inline constexpr int kIdleValveMaximum = 252;
inline constexpr int kIdlePwmFrequency = 253;
inline constexpr int kIdleSetting = 254;
inline constexpr int kIdleColdFirst = 255;         // three labels
inline constexpr int kIdleMod0First = 258;         // three labels
inline constexpr int kIdleMod2First = 261;         // four labels
inline constexpr int kIdleFlagsFirst = 265;        // two labels
inline constexpr int kOutputFunctionsFirst = 270;  // five labels, in kOutputFunctionTopics order
inline constexpr int kFaultsFirst = 280;           // eleven labels, in kFaultTopics order
inline constexpr int kOutputDisplay = 291;
// Inputs: input n's function code is kGpiFirst + 10 x (n - 1), its six settings bytes follow,
// then its two further bytes.
inline constexpr int kGpiFirst = 300;
inline constexpr int kLaunchFirst = 320;        // six labels, in kLaunchTopics order
inline constexpr int kClosedLoopFirst = 330;    // ten labels, in kClosedLoopTopics order
inline constexpr int kSensorFaultsFirst = 340;  // four labels, in kSensorFaultTopics order
}  // namespace help_label

inline constexpr std::string_view kOutputFunctionTopics[] = {
    "Water Sensor Failure", "Duty Cycle", "Boost Limiter", "Launch Control", "Anti-Lag"};
inline constexpr std::string_view kFaultTopics[] = {
    "Rev Limiter Hit",          "Boost Limiter Hit",
    "Injector Over-Duty Cycle", "Ignition Charge Time Error",
    "Trigger Angle Error",      "Eratic/Noisy RPM Signal",
    "Eratic/Noisy Home Signal", "Air Temperature Sensor",
    "Water Temperature Sensor", "Battery Voltage Low/High",
    "TPS Sensor Range Error"};
inline constexpr std::string_view kLaunchTopics[] = {"Launch Limiter",  "Launch Retard",
                                                     "Launch Fuel",     "Anti-Lag Limiter",
                                                     "Anti-Lag Retard", "Anti-Lag Fuel"};
inline constexpr std::string_view kClosedLoopTopics[] = {
    "Controller",   "Current AFR", "Correction %",     "Allow Instant Compensations",
    "AFR Setpoint", "Loop Speed",  "En-Richment Gain", "En-Leanment Gain",
    "Max RPM",      "Max MAP"};
inline constexpr std::string_view kSensorFaultTopics[] = {
    "Air Temperature Sensor", "Water Temperature Sensor", "Battery Voltage Low/High",
    "TPS Sensor Range Error"};

// The topics of a set, in catalogue order.
std::span<const HelpTopic> TopicsOf(HelpSet set);
// The text of a topic: its lines joined with "\r\n".
std::string HelpText(const HelpTopic& topic);
// The topic titled `title` in `set`, if any.
const HelpTopic* FindTopic(HelpSet set, std::string_view title);

// Every help label, by index.
std::span<const HelpLabel> HelpLabels();
const HelpLabel* FindHelpLabel(int index);
bool IsHelpLabel(int index);

// The topic set a tab selects, if it has one.
std::optional<HelpSet> HelpSetOfTab(int tab);

// `ShowHelpTopic`: the text a click on label `index` puts into the box, or nullopt to leave the
// box as it is (instant help off, no help label, a tab without a set, no topic in that set).
std::optional<std::string> ShowHelpTopic(int index, int current_tab, bool instant_help);

// `HighlightHelpLabel`: which label to restore and which to highlight as the mouse moves over a
// label (`index`) or over the frames around labels (nullopt, which ends a highlight).
class HelpHighlighter {
 public:
  struct Step {
    std::optional<int> restore;    // give this label its own colour back
    std::optional<int> highlight;  // give this label the hover colour
    bool operator==(const Step&) const = default;
  };
  Step Hover(std::optional<int> index, bool instant_help);
  std::optional<int> Highlighted() const { return highlighted_; }

 private:
  std::optional<int> highlighted_;
};

}  // namespace vela
