#include "program/startup_sequence.h"

#include <utility>

#include "program/program_setup.h"

namespace vela {

namespace {

// Builds the table: every helper leaves a step out whose action is empty.
class TableBuilder {
 public:
  explicit TableBuilder(std::vector<StartupStep>& steps) : steps_(steps) {}

  void Step(std::string started, const std::function<void()>& action, std::string complete) {
    if (!action) return;
    steps_.push_back(
        {std::move(started), [action] { return (action(), true); }, std::move(complete)});
  }
  // "<name> Started" before, "<name> Complete" after.
  void Traced(const std::string& name, const std::function<void()>& action) {
    Step(name + " Started", action, name + " Complete");
  }
  void Completed(const std::string& name, const std::function<void()>& action) {
    Step("", action, name + " Complete");
  }
  void Silent(const std::function<void()>& action) { Step("", action, ""); }
  void Text(std::string text) { steps_.push_back({std::move(text), nullptr, ""}); }
  void Check(const std::string& name, const std::function<bool()>& check) {
    if (check) steps_.push_back({name + " Started", check, name + " Complete"});
  }

 private:
  std::vector<StartupStep>& steps_;
};

void AddDefaults(TableBuilder& table, const StartupActions& a, ProgramSetup& setup) {
  table.Silent([&setup] { setup.SuppressChangeEvents = true; });
  table.Completed("Setup LogLiveChannel1", a.clear_datalog_channels);
  table.Completed("Setup SSTab1", a.set_up_tabs);
  table.Text("Setup Defaults Complete");
  table.Completed("Setup Formsize", a.set_form_size);
  // The engine speed points and the grids after Fuel are set up with it; the load still names
  // each of them, as the tuner has always seen them go by.
  table.Text("Setup RPM Points Complete");
  table.Completed("Setup Grid Fuel", a.set_up_map_grids);
  for (const char* grid : {"Ign", "Water", "Air", "IdleMod0", "IdleMod1", "IdleMod2", "Other",
                           "ThrottlePump", "WaterMap", "AirMap", "BattMap", "DataLog"}) {
    table.Text(std::string("Setup Grid ") + grid + " Complete");
  }
  table.Text("Setup GridSetup Complete");
}

void AddSettingsAndDatalog(TableBuilder& table, const StartupActions& a, ProgramSetup& setup) {
  table.Silent(a.read_program_settings);
  table.Step("Read Config.txt Started", a.enable_datalog_channel0, "Read Config.txt Complete");
  // The input and output names are fixed texts the pages hold; only the traces remain.
  for (const char* text :
       {"Setup GetGPIName Started", "Setup GetGPIName Complete", "Setup GetGPOName Complete"}) {
    table.Text(text);
  }
  const std::function<void()> chart = a.set_up_datalog_chart;
  table.Step(
      "Setup TChart1 Startup",
      [chart, &setup] {
        if (chart) chart();
        setup.SuppressChangeEvents = false;
      },
      "Setup TChart1 Complete");
  table.Traced("LoadDatalogSettings", a.load_datalog_settings);
}

}  // namespace

std::vector<StartupStep> StartupTable(const StartupActions& a, ProgramSetup& setup) {
  std::vector<StartupStep> steps;
  TableBuilder table(steps);
  table.Text("Entered Form1.Load");
  table.Silent(a.size_window);
  table.Step("HideComponentsBeforeStartup ...........", a.hide_before_startup, "");
  table.Traced("SetColours", a.set_colours);
  AddDefaults(table, a, setup);
  table.Check("CheckSingleInstance", a.check_single_instance);
  table.Traced("SetupNoticeLabel", a.set_up_notice_label);
  table.Traced("SetupPortLists", a.set_up_port_lists);
  table.Silent(a.hide_before_startup);  // hidden again now that the fixed controls are set
  table.Text("SetupHiddenFocuses Started");
  table.Text("SetupHiddenFocuses Complete");
  AddSettingsAndDatalog(table, a, setup);
  table.Traced("SSTab1_Click", a.select_first_tab);
  table.Step("", a.start_counts_per_ms_timer, "CountsPerMSTimer Enabled");
  table.Silent(a.reset_displays);
  return steps;
}

bool RunStartupSteps(const std::vector<StartupStep>& steps, StartupTrace& trace) {
  for (const StartupStep& step : steps) {
    if (!step.started.empty()) trace.Show(step.started);
    if (step.run && !step.run()) return false;
    if (!step.complete.empty()) trace.Show(step.complete);
  }
  return true;
}

bool RunStartupSequence(const StartupActions& actions, ProgramSetup& setup, StartupTrace& trace) {
  return RunStartupSteps(StartupTable(actions, setup), trace);
}

}  // namespace vela
