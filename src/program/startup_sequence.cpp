#include "program/startup_sequence.h"

#include "program/program_setup.h"

namespace vela {

namespace {

template <typename Step>
void Traced(StartupTrace& trace, const std::string& name, Step step) {
  trace.Show(name + " Started");
  step();
  trace.Show(name + " Complete");
}

void SetupDefaults(StartupSteps& steps, ProgramSetup& setup, StartupTrace& trace) {
  setup.SuppressChangeEvents = true;
  steps.SetupLogLiveChannel1();
  trace.Show("Setup LogLiveChannel1 Complete");
  steps.SetupTabs();
  trace.Show("Setup SSTab1 Complete");
  trace.Show("Setup Defaults Complete");
  steps.SetupFormSize();
  trace.Show("Setup Formsize Complete");
  steps.SetupRpmPoints();
  trace.Show("Setup RPM Points Complete");
  for (const char* grid : kStartupGrids) {
    steps.SetupGrid(grid);
    trace.Show(std::string("Setup Grid ") + grid + " Complete");
  }
  trace.Show("Setup GridSetup Complete");
}

void SetupFixedControls(StartupSteps& steps, StartupTrace& trace) {
  Traced(trace, "SetupNoticeLabel", [&] { steps.SetupNoticeLabel(); });
  Traced(trace, "SetupPortLists", [&] { steps.SetupPortAndSampleLists(); });
  Traced(trace, "SetupInfoGrids", [&] { steps.SetupInfoGrids(); });
  Traced(trace, "SetupSensorLists", [&] { steps.SetupSensorAndTriggerLists(); });
  Traced(trace, "SetupOutputPositions", [&] { steps.SetupOutputPositions(); });
  steps.HideComponentsBeforeStartup();
  Traced(trace, "SetupEditorControls", [&] { steps.SetupEditorControls(); });
  Traced(trace, "SetupHiddenFocuses", [&] { steps.SetupHiddenFocuses(); });
}

}  // namespace

bool RunStartupSequence(StartupSteps& steps, ProgramSetup& setup, StartupTrace& trace) {
  trace.Show("Entered Form1.Load");
  steps.SizeWindow();
  trace.Show("HideComponentsBeforeStartup ...........");
  steps.HideComponentsBeforeStartup();
  Traced(trace, "SetColours", [&] { steps.SetColours(); });
  SetupDefaults(steps, setup, trace);

  trace.Show("CheckSingleInstance Started");
  if (!steps.CheckSingleInstance()) return false;
  trace.Show("CheckSingleInstance Complete");

  SetupFixedControls(steps, trace);

  steps.ReadProgramSettings();  // shows the "Read Setup.txt" traces itself
  trace.Show("Read Config.txt Started");
  steps.EnableDatalogChannel0();
  trace.Show("Read Config.txt Complete");

  trace.Show("Setup GetGPIName Started");
  steps.SetupGpiNames();
  trace.Show("Setup GetGPIName Complete");
  steps.SetupGpoNames();
  trace.Show("Setup GetGPOName Complete");

  trace.Show("Setup TChart1 Startup");
  steps.SetupDatalogChart();
  setup.SuppressChangeEvents = false;
  trace.Show("Setup TChart1 Complete");
  Traced(trace, "Setup Charts", [&] { steps.SetupChartsAndCrossHair(); });
  Traced(trace, "LoadDatalogSettings", [&] { steps.LoadDatalogSettings(); });

  Traced(trace, "SSTab1_Click", [&] { steps.SelectFirstTab(); });
  steps.StartCountsPerMsTimer();
  trace.Show("CountsPerMSTimer Enabled");
  steps.RunCommand16();
  return true;
}

}  // namespace vela
