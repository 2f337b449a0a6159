#include "program/startup_sequence.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "program/program_setup.h"
#include "support/platform_fakes.h"

namespace vela {
namespace {

using ::testing::ElementsAre;

// Records each step as it runs, and the guard flags at the moments that matter.
class RecordingSteps : public StartupSteps {
 public:
  explicit RecordingSteps(ProgramSetup& setup, testing::ScriptedPort& port)
      : setup_(setup), port_(port) {}
  void SizeWindow() override { Step("SizeWindow"); }
  void HideComponentsBeforeStartup() override { Step("Hide"); }
  void SetColours() override { Step("Colours"); }
  void SetupLogLiveChannel1() override { Step("LogLiveChannel1"); }
  void SetupTabs() override { Step("Tabs"); }
  void SetupFormSize() override { Step("FormSize"); }
  void SetupRpmPoints() override { Step("RpmPoints"); }
  void SetupGrid(const std::string& name) override { Step("Grid " + name); }
  bool CheckSingleInstance() override {
    Step("SingleInstance");
    return alone;
  }
  void SetupNoticeLabel() override { Step("Notice"); }
  void SetupPortAndSampleLists() override { Step("PortLists"); }
  void SetupInfoGrids() override { Step("InfoGrids"); }
  void SetupSensorAndTriggerLists() override { Step("SensorLists"); }
  void SetupOutputPositions() override { Step("OutputPositions"); }
  void SetupEditorControls() override { Step("EditorControls"); }
  void SetupHiddenFocuses() override { Step("HiddenFocuses"); }
  void ReadProgramSettings() override {
    Step("ReadSettings");
    suppressed_while_reading = setup_.SuppressChangeEvents;
    setup_.ReadProgramSettings(port_);
  }
  void EnableDatalogChannel0() override { Step("Channel0"); }
  void SetupGpiNames() override { Step("GpiNames"); }
  void SetupGpoNames() override { Step("GpoNames"); }
  void SetupDatalogChart() override { Step("DatalogChart"); }
  void SetupChartsAndCrossHair() override { Step("Charts"); }
  void LoadDatalogSettings() override { Step("DatalogSettings"); }
  void SelectFirstTab() override { Step("FirstTab"); }
  void StartCountsPerMsTimer() override { Step("CountsPerMsTimer"); }
  void RunCommand16() override { Step("Command16"); }

  bool alone = true;
  bool suppressed_while_reading = false;
  std::vector<std::string> steps;

 private:
  void Step(const std::string& name) { steps.push_back(name); }
  ProgramSetup& setup_;
  testing::ScriptedPort& port_;
};

class StartupSequenceTest : public ::testing::Test {
 protected:
  testing::MemoryFileSystem files;
  testing::RecordingMessages messages;
  testing::ScriptedPort port;
  StartupTrace trace;
  ProgramSetup setup{ProgramFoldersUnder("/data"), files, messages, trace};
  RecordingSteps steps{setup, port};
};

TEST_F(StartupSequenceTest, TracesEveryStepInOrder) {
  ASSERT_TRUE(RunStartupSequence(steps, setup, trace));
  std::vector<std::string> expected = {"Entered Form1.Load",
                                       "HideComponentsBeforeStartup ...........",
                                       "SetColours Started",
                                       "SetColours Complete",
                                       "Setup LogLiveChannel1 Complete",
                                       "Setup SSTab1 Complete",
                                       "Setup Defaults Complete",
                                       "Setup Formsize Complete",
                                       "Setup RPM Points Complete"};
  for (const char* grid : {"Fuel", "Ign", "Water", "Air", "IdleMod0", "IdleMod1", "IdleMod2",
                           "Other", "ThrottlePump", "WaterMap", "AirMap", "BattMap", "DataLog"}) {
    expected.push_back(std::string("Setup Grid ") + grid + " Complete");
  }
  for (const char* text : {"Setup GridSetup Complete",      "CheckSingleInstance Started",
                           "CheckSingleInstance Complete",  "SetupNoticeLabel Started",
                           "SetupNoticeLabel Complete",     "SetupPortLists Started",
                           "SetupPortLists Complete",       "SetupInfoGrids Started",
                           "SetupInfoGrids Complete",       "SetupSensorLists Started",
                           "SetupSensorLists Complete",     "SetupOutputPositions Started",
                           "SetupOutputPositions Complete", "SetupEditorControls Started",
                           "SetupEditorControls Complete",  "SetupHiddenFocuses Started",
                           "SetupHiddenFocuses Complete",   "Read Setup.txt Started",
                           "Read Setup.txt Complete",       "Read Config.txt Started",
                           "Read Config.txt Complete",      "Setup GetGPIName Started",
                           "Setup GetGPIName Complete",     "Setup GetGPOName Complete",
                           "Setup TChart1 Startup",         "Setup TChart1 Complete",
                           "Setup Charts Started",          "Setup Charts Complete",
                           "LoadDatalogSettings Started",   "LoadDatalogSettings Complete",
                           "SSTab1_Click Started",          "SSTab1_Click Complete",
                           "CountsPerMSTimer Enabled"}) {
    expected.push_back(text);
  }
  EXPECT_EQ(trace.texts(), expected);
  EXPECT_EQ(steps.steps.back(), "Command16");
}

TEST_F(StartupSequenceTest, ChangeEventsStaySuppressedUntilTheDatalogChartIsSetUp) {
  ASSERT_TRUE(RunStartupSequence(steps, setup, trace));
  EXPECT_TRUE(steps.suppressed_while_reading);
  EXPECT_FALSE(setup.SuppressChangeEvents);
  const auto chart = std::find(steps.steps.begin(), steps.steps.end(), "DatalogChart");
  const auto read = std::find(steps.steps.begin(), steps.steps.end(), "ReadSettings");
  EXPECT_LT(read, chart);
}

TEST_F(StartupSequenceTest, ASecondInstanceStopsBeforeAnyFileOrPortIsTouched) {
  steps.alone = false;
  EXPECT_FALSE(RunStartupSequence(steps, setup, trace));
  EXPECT_EQ(steps.steps.back(), "SingleInstance");
  EXPECT_TRUE(files.log.empty());
  EXPECT_TRUE(port.opened.empty());
}

}  // namespace
}  // namespace vela
