#include "program/context_help.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

namespace vela {
namespace {

using ::testing::ElementsAre;

TEST(HelpTopics, TheTwoGivenTopicsReadExactly) {
  EXPECT_EQ(HelpText(*FindTopic(HelpSet::kMainSetup, "Cylinders")),
            " Cylinders: Number of cylinders in the engine.");
  EXPECT_EQ(HelpText(*FindTopic(HelpSet::kMainSetup, "Fuel Mode")),
            " Fuel Mode:  Determines how the injectors are pulsed.\r\n"
            " Batch                  - Fires all the injectors at the same time once per crank "
            "rotation.\r\n"
            " Semi Sequential - fires the injectors in matched pairs according to firing order.\r\n"
            " Full Sequential   - fires the injectors in firing order, matching the cylinders.");
}

// Each set is looked up on its own: a title found in one is not found through another unless
// both hold it; the catalogue's own spellings are found as written.
TEST(HelpTopics, EachSetIsSearchedOnItsOwnAndTitlesAreFoundAsWritten) {
  EXPECT_EQ(FindTopic(HelpSet::kOutputs, "Cylinders"), nullptr);
  EXPECT_EQ(FindTopic(HelpSet::kMainSetup, "cylinders"), nullptr);
  EXPECT_NE(FindTopic(HelpSet::kOutputs, "Air Temperature Sensor"), nullptr);
  EXPECT_NE(FindTopic(HelpSet::kInputs, "En-Leanment Gain"), nullptr);
  EXPECT_THAT(HelpText(*FindTopic(HelpSet::kMainSetup, "Injector Impedance")),
              ::testing::HasSubstr("whcih"));
}

TEST(HelpTopics, EveryTextHasTheTitleLineThenChoiceOrContinuationLines) {
  for (const HelpSet set : {HelpSet::kOutputs, HelpSet::kInputs, HelpSet::kMainSetup}) {
    for (const HelpTopic& topic : TopicsOf(set)) {
      ASSERT_FALSE(topic.lines.empty()) << topic.title;
      EXPECT_EQ(topic.lines[0].substr(0, topic.title.size() + 2),
                " " + std::string(topic.title) + ":")
          << topic.title;
      for (std::size_t i = 1; i < topic.lines.size(); ++i) {
        const std::string_view line = topic.lines[i];
        const bool choice = line.size() > 1 && line[1] != ' ' && line.find(" - ") != line.npos;
        const bool continuation = line.substr(0, 3) == "   ";
        EXPECT_TRUE(choice || continuation) << topic.title << ": " << line;
      }
      EXPECT_EQ(HelpText(topic).find('\n'),
                HelpText(topic).find("\r\n") + 1 * (topic.lines.size() > 1));
    }
  }
}

TEST(HelpLabels, EveryLabelNamesATopicOfItsOwnSet) {
  std::set<int> seen;
  for (const HelpLabel& label : HelpLabels()) {
    EXPECT_TRUE(seen.insert(label.index).second) << label.index;
    EXPECT_NE(FindTopic(label.set, label.topic), nullptr) << label.index << " " << label.topic;
  }
  EXPECT_GT(seen.size(), 150u);
}

// The main setup and outputs tabs' topics, and instant help turned off, the set-up pages' help
// walk clicks through; a label only ever stands on its own set's tab there.
TEST(ShowHelpTopic, OnlyTheOutputsInputsAndMainSetupTabsShowTheirOwnLabelsTopics) {
  EXPECT_THAT(*ShowHelpTopic(help_label::kSensorFaultsFirst, kHelpTabInputs, true),
              ::testing::StartsWith(" Air Temperature Sensor:"));
  EXPECT_FALSE(ShowHelpTopic(help_label::kCylinders, kHelpTabInputs, true));
  EXPECT_FALSE(ShowHelpTopic(help_label::kCylinders, 0, true));
  EXPECT_FALSE(ShowHelpTopic(99, kHelpTabMainSetup, true));
  EXPECT_FALSE(IsHelpLabel(99));
}

TEST(HelpHighlighter, HighlightsHelpLabelsOnlyWhileInstantHelpIsOn) {
  HelpHighlighter highlighter;
  using Step = HelpHighlighter::Step;
  EXPECT_EQ(highlighter.Hover(100, true), (Step{std::nullopt, 100}));
  EXPECT_EQ(highlighter.Hover(100, true), (Step{}));
  EXPECT_EQ(highlighter.Hover(101, true), (Step{100, 101}));
  EXPECT_EQ(highlighter.Hover(std::nullopt, true), (Step{101, std::nullopt}));
  EXPECT_EQ(highlighter.Hover(99, true), (Step{}));  // not a help label
  EXPECT_EQ(highlighter.Hover(102, false), (Step{}));
  highlighter.Hover(102, true);
  EXPECT_EQ(highlighter.Hover(103, false), (Step{102, std::nullopt}));
  EXPECT_EQ(highlighter.Highlighted(), std::nullopt);
}

}  // namespace
}  // namespace vela
