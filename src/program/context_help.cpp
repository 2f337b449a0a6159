#include "program/context_help.h"

#include <algorithm>
#include <vector>

namespace vela {

namespace {

void Add(std::vector<HelpLabel>& labels, int index, HelpSet set, std::string_view topic) {
  labels.push_back({index, set, topic});
}

void AddMainSetupLabels(std::vector<HelpLabel>& labels) {
  namespace l = help_label;
  const std::pair<int, std::string_view> main_setup[] = {
      {l::kCylinders, "Cylinders"},
      {l::kFuelMode, "Fuel Mode"},
      {l::kInjectorImpedance, "Injector Impedance"},
      {l::kFuelMapSelection, "Fuel Map Selection"},
      {l::kRevLimiter1, "Rev Limiter"},
      {l::kRevLimiter2, "Rev Limiter"},
      {l::kLimiterType, "Limiter Type"},
      {l::kStartupPrime, "Startup Prime"},
      {l::kInstalledMapSensor, "Installed Map Sensor"},
      {l::kMapSensorScaling, "MAP Sensor Scaling"},
      {l::kLoadSensing, "Load Sensing"},
      {l::kSparkMode, "Spark Mode"},
      {l::kDwellControl, "Dwell Control"},
      {l::kDwellSetting, "Dwell Setting"},
      {l::kTriggerPattern, "Trigger Pattern"},
      {l::kTriggerSensorType, "Trigger Sensor"},
      {l::kTriggerVoltage, "Trigger Sensor"},
      {l::kTriggerAngle, "Trigger Angle"},
      {l::kTriggerToothOffset, "Trigger Angle"},
      {l::kTriggerInputEdge, "Trigger Edges"},
      {l::kHomePosition, "Home Position"},
      {l::kHomeSensorType, "Home Sensor"},
      {l::kHomeVoltage, "Home Sensor"},
      {l::kHomeInputEdge, "Trigger Edges"},
      {l::kSparkOutputEdge, "Spark Output Edge"},
      {l::kEngineSpeedSites, "Engine Speed Sites"},
      {l::kFuelLoadSites, "Fuel Load Sites"},
      {l::kIgnitionLoadSites, "Ignition Load Sites"},
      {l::kAuxiliaryOutput, "Auxiliary Output"},
      {l::kWarningLight, "Engine Warning Light"},
      {l::kAfrDisplay, "AFR Display"},
  };
  for (const auto& [index, topic] : main_setup) Add(labels, index, HelpSet::kMainSetup, topic);
}

void AddOutputLabels(std::vector<HelpLabel>& labels) {
  namespace l = help_label;
  const HelpSet set = HelpSet::kOutputs;
  for (int output = 0; output < 3; ++output) {
    for (int byte = 0; byte < 16; ++byte) {
      Add(labels, l::kGpoFirst + 16 * output + byte, set,
          byte == 0 ? "Output Function Code" : "Output Settings");
    }
  }
  Add(labels, l::kIdleTarget, set, "Idle Target");
  Add(labels, l::kIdleValveMinimum, set, "Idle Valve Limits");
  Add(labels, l::kIdleValveMaximum, set, "Idle Valve Limits");
  Add(labels, l::kIdlePwmFrequency, set, "Idle PWM Frequency");
  Add(labels, l::kIdleSetting, set, "Idle Setting");
  for (int i = 0; i < 3; ++i) Add(labels, l::kIdleColdFirst + i, set, "Idle Cold Adjuster");
  for (int i = 0; i < 3; ++i) Add(labels, l::kIdleMod0First + i, set, "Idle Values");
  for (int i = 0; i < 4; ++i) Add(labels, l::kIdleMod2First + i, set, "Idle Values");
  for (int i = 0; i < 2; ++i) Add(labels, l::kIdleFlagsFirst + i, set, "Idle Options");
  int index = l::kOutputFunctionsFirst;
  for (const std::string_view topic : kOutputFunctionTopics) Add(labels, index++, set, topic);
  index = l::kFaultsFirst;
  for (const std::string_view topic : kFaultTopics) Add(labels, index++, set, topic);
  Add(labels, l::kOutputDisplay, set, "Output Display");
}

void AddInputLabels(std::vector<HelpLabel>& labels) {
  namespace l = help_label;
  const HelpSet set = HelpSet::kInputs;
  for (int input = 0; input < 2; ++input) {
    const int first = l::kGpiFirst + 10 * input;
    Add(labels, first, set, "Input Function Code");
    for (int byte = 1; byte <= 6; ++byte) Add(labels, first + byte, set, "Input Settings");
    for (int byte = 7; byte <= 8; ++byte) Add(labels, first + byte, set, "Input Auxiliary Bytes");
  }
  int index = l::kLaunchFirst;
  for (const std::string_view topic : kLaunchTopics) Add(labels, index++, set, topic);
  index = l::kClosedLoopFirst;
  for (const std::string_view topic : kClosedLoopTopics) Add(labels, index++, set, topic);
  index = l::kSensorFaultsFirst;
  for (const std::string_view topic : kSensorFaultTopics) Add(labels, index++, set, topic);
}

const std::vector<HelpLabel>& AllLabels() {
  static const std::vector<HelpLabel> labels = [] {
    std::vector<HelpLabel> all;
    AddMainSetupLabels(all);
    AddOutputLabels(all);
    AddInputLabels(all);
    std::sort(all.begin(), all.end(),
              [](const HelpLabel& a, const HelpLabel& b) { return a.index < b.index; });
    return all;
  }();
  return labels;
}

}  // namespace

std::string HelpText(const HelpTopic& topic) {
  std::string text;
  for (std::size_t i = 0; i < topic.lines.size(); ++i) {
    if (i > 0) text += "\r\n";
    text += topic.lines[i];
  }
  return text;
}

const HelpTopic* FindTopic(HelpSet set, std::string_view title) {
  const std::span<const HelpTopic> topics = TopicsOf(set);
  const auto it = std::find_if(topics.begin(), topics.end(),
                               [title](const HelpTopic& topic) { return topic.title == title; });
  return it == topics.end() ? nullptr : &*it;
}

std::span<const HelpLabel> HelpLabels() { return AllLabels(); }

const HelpLabel* FindHelpLabel(int index) {
  const std::vector<HelpLabel>& labels = AllLabels();
  const auto it = std::lower_bound(labels.begin(), labels.end(), index,
                                   [](const HelpLabel& label, int i) { return label.index < i; });
  return it != labels.end() && it->index == index ? &*it : nullptr;
}

bool IsHelpLabel(int index) { return FindHelpLabel(index) != nullptr; }

std::optional<HelpSet> HelpSetOfTab(int tab) {
  switch (tab) {
    case kHelpTabOutputs:
      return HelpSet::kOutputs;
    case kHelpTabInputs:
      return HelpSet::kInputs;
    case kHelpTabMainSetup:
      return HelpSet::kMainSetup;
    default:
      return std::nullopt;
  }
}

std::optional<std::string> ShowHelpTopic(int index, int current_tab, bool instant_help) {
  const HelpLabel* label = FindHelpLabel(index);
  if (!instant_help || label == nullptr) return std::nullopt;
  const std::optional<HelpSet> set = HelpSetOfTab(current_tab);
  if (!set || label->set != *set) return std::nullopt;
  const HelpTopic* topic = FindTopic(*set, label->topic);
  if (topic == nullptr) return std::nullopt;
  return HelpText(*topic);
}

HelpHighlighter::Step HelpHighlighter::Hover(std::optional<int> index, bool instant_help) {
  const bool highlight = instant_help && index && IsHelpLabel(*index);
  if (highlight && highlighted_ == index) return {};
  Step step{highlighted_, std::nullopt};
  highlighted_.reset();
  if (highlight) {
    step.highlight = index;
    highlighted_ = index;
  }
  return step;
}

}  // namespace vela
