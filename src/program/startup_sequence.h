// The main window's load sequence: the order of its steps and the trace texts each step shows in
// the start-up status label. The window supplies what each step does; the order lives here.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "base/startup_trace.h"

namespace vela {

class ProgramSetup;

// One step of the load: the trace text shown as it begins, what it does, and the trace text shown
// when it has run (an empty text shows nothing). A step without an action only shows its texts;
// an action that returns false ends the load at once.
struct StartupStep {
  std::string started;
  std::function<bool()> run;
  std::string complete;
};

// What the program does at the steps of its load. A step whose action is left empty is not part
// of the load: neither it nor its trace texts appear.
struct StartupActions {
  std::function<void()> size_window;
  std::function<void()> hide_before_startup;     // the controls that wait for the load's end
  std::function<void()> set_colours;             // "SetColours"
  std::function<void()> clear_datalog_channels;  // "Setup LogLiveChannel1"
  std::function<void()> set_up_tabs;             // "Setup SSTab1"
  std::function<void()> set_form_size;           // "Setup Formsize"
  std::function<void()> set_up_map_grids;        // "Setup Grid Fuel": every map grid
  // True when no other instance runs; false when this one must end now.
  std::function<bool()> check_single_instance;
  std::function<void()> set_up_notice_label;      // "SetupNoticeLabel"
  std::function<void()> set_up_port_lists;        // "SetupPortLists"
  std::function<void()> read_program_settings;    // traces "Read Setup.txt" itself
  std::function<void()> enable_datalog_channel0;  // traced as "Read Config.txt"
  std::function<void()> set_up_datalog_chart;     // "Setup TChart1"
  std::function<void()> load_datalog_settings;    // "LoadDatalogSettings"
  std::function<void()> select_first_tab;         // "SSTab1_Click"
  std::function<void()> start_counts_per_ms_timer;
  std::function<void()> reset_displays;  // the action of the button `Command16`
};

// The load's steps in order. `SuppressChangeEvents` is set from the defaults until the datalog
// chart is set up, whatever actions are given.
std::vector<StartupStep> StartupTable(const StartupActions& actions, ProgramSetup& setup);

// Runs the steps in order, each with its trace texts. Returns false when a step ends the load.
bool RunStartupSteps(const std::vector<StartupStep>& steps, StartupTrace& trace);

// Runs the load sequence. Returns false when another instance runs: the sequence stops there and
// the program must end without touching a file or the port.
bool RunStartupSequence(const StartupActions& actions, ProgramSetup& setup, StartupTrace& trace);

}  // namespace vela
