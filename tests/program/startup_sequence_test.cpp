#include "program/startup_sequence.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "program/program_setup.h"
#include "support/platform_fakes.h"

namespace vela {
namespace {

// Records each step as it runs, and the guard flag while the settings are read.
struct RecordingActions {
  RecordingActions(ProgramSetup& setup, testing::ScriptedPort& port) {
    const auto step = [this](const char* name) { return [this, name] { steps.push_back(name); }; };
    actions.size_window = step("SizeWindow");
    actions.hide_before_startup = step("Hide");
    actions.set_colours = step("Colours");
    actions.clear_datalog_channels = step("LogLiveChannel1");
    actions.set_up_tabs = step("Tabs");
    actions.set_form_size = step("FormSize");
    actions.set_up_map_grids = step("Grids");
    actions.check_single_instance = [this] {
      steps.push_back("SingleInstance");
      return true;  // a second instance stopping the load: the main window's tests
    };
    actions.set_up_notice_label = step("Notice");
    actions.set_up_port_lists = step("PortLists");
    actions.read_program_settings = [this, &setup, &port] {
      steps.push_back("ReadSettings");
      suppressed_while_reading = setup.SuppressChangeEvents;
      setup.ReadProgramSettings(port);
    };
    actions.enable_datalog_channel0 = step("Channel0");
    actions.set_up_datalog_chart = step("DatalogChart");
    actions.load_datalog_settings = step("DatalogSettings");
    actions.select_first_tab = step("FirstTab");
    actions.start_counts_per_ms_timer = step("CountsPerMsTimer");
    actions.reset_displays = step("Command16");
  }

  StartupActions actions;
  bool suppressed_while_reading = false;
  std::vector<std::string> steps;
};

class StartupSequenceTest : public ::testing::Test {
 protected:
  testing::MemoryFileSystem files;
  testing::RecordingMessages messages;
  testing::ScriptedPort port;
  StartupTrace trace;
  ProgramSetup setup{ProgramFoldersUnder("/data"), files, messages, trace};
  RecordingActions recorder{setup, port};
};

TEST_F(StartupSequenceTest, TracesEveryStepInOrder) {
  ASSERT_TRUE(RunStartupSequence(recorder.actions, setup, trace));
  EXPECT_THAT(
      trace.texts(),
      ::testing::ElementsAre(
          "Entered Form1.Load", "HideComponentsBeforeStartup ...........", "SetColours Started",
          "SetColours Complete", "Setup LogLiveChannel1 Complete", "Setup SSTab1 Complete",
          "Setup Defaults Complete", "Setup Formsize Complete", "Setup RPM Points Complete",
          "Setup Grid Fuel Complete", "Setup Grid Ign Complete", "Setup Grid Water Complete",
          "Setup Grid Air Complete", "Setup Grid IdleMod0 Complete", "Setup Grid IdleMod1 Complete",
          "Setup Grid IdleMod2 Complete", "Setup Grid Other Complete",
          "Setup Grid ThrottlePump Complete", "Setup Grid WaterMap Complete",
          "Setup Grid AirMap Complete", "Setup Grid BattMap Complete",
          "Setup Grid DataLog Complete", "Setup GridSetup Complete", "CheckSingleInstance Started",
          "CheckSingleInstance Complete", "SetupNoticeLabel Started", "SetupNoticeLabel Complete",
          "SetupPortLists Started", "SetupPortLists Complete", "SetupHiddenFocuses Started",
          "SetupHiddenFocuses Complete", "Read Setup.txt Started", "Read Setup.txt Complete",
          "Read Config.txt Started", "Read Config.txt Complete", "Setup GetGPIName Started",
          "Setup GetGPIName Complete", "Setup GetGPOName Complete", "Setup TChart1 Startup",
          "Setup TChart1 Complete", "LoadDatalogSettings Started", "LoadDatalogSettings Complete",
          "SSTab1_Click Started", "SSTab1_Click Complete", "CountsPerMSTimer Enabled"));
  EXPECT_THAT(recorder.steps,
              ::testing::ElementsAre(
                  "SizeWindow", "Hide", "Colours", "LogLiveChannel1", "Tabs", "FormSize", "Grids",
                  "SingleInstance", "Notice", "PortLists", "Hide", "ReadSettings", "Channel0",
                  "DatalogChart", "DatalogSettings", "FirstTab", "CountsPerMsTimer", "Command16"));
  // Change events stay suppressed while the settings are read, until the datalog chart is set up.
  EXPECT_TRUE(recorder.suppressed_while_reading);
  EXPECT_FALSE(setup.SuppressChangeEvents);
}

// A step the program leaves empty is not part of the load, and neither are its traces; the
// guard flag still spans the same stretch.
TEST_F(StartupSequenceTest, AnEmptyStepIsLeftOutWithItsTraces) {
  recorder.actions.set_colours = nullptr;
  recorder.actions.set_up_datalog_chart = nullptr;
  recorder.actions.check_single_instance = nullptr;
  ASSERT_TRUE(RunStartupSequence(recorder.actions, setup, trace));
  const std::vector<std::string>& texts = trace.texts();
  for (const char* gone : {"SetColours Started", "SetColours Complete",
                           "CheckSingleInstance Started", "CheckSingleInstance Complete"}) {
    EXPECT_EQ(std::count(texts.begin(), texts.end(), gone), 0) << gone;
  }
  EXPECT_EQ(std::count(texts.begin(), texts.end(), "Setup TChart1 Complete"), 1);
  EXPECT_TRUE(recorder.suppressed_while_reading);
  EXPECT_FALSE(setup.SuppressChangeEvents);
}

}  // namespace
}  // namespace vela
