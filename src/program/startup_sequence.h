// The main window's load sequence: the order of its steps and the trace texts each step shows in
// the start-up status label. The window supplies what each step does; the order lives here.
#pragma once

#include <string>

#include "base/startup_trace.h"

namespace vela {

class ProgramSetup;

// What the main window does at each step of its load.
class StartupSteps {
 public:
  virtual ~StartupSteps() = default;
  virtual void SizeWindow() = 0;
  virtual void HideComponentsBeforeStartup() = 0;
  virtual void SetColours() = 0;
  virtual void SetupLogLiveChannel1() = 0;
  virtual void SetupTabs() = 0;
  virtual void SetupFormSize() = 0;
  virtual void SetupRpmPoints() = 0;
  virtual void SetupGrid(const std::string& name) = 0;
  // True when no other instance runs; false when this one must end now.
  virtual bool CheckSingleInstance() = 0;
  virtual void SetupNoticeLabel() = 0;
  virtual void SetupPortAndSampleLists() = 0;
  virtual void SetupInfoGrids() = 0;
  virtual void SetupSensorAndTriggerLists() = 0;
  virtual void SetupOutputPositions() = 0;
  virtual void SetupEditorControls() = 0;
  virtual void SetupHiddenFocuses() = 0;
  virtual void ReadProgramSettings() = 0;
  virtual void EnableDatalogChannel0() = 0;
  virtual void SetupGpiNames() = 0;
  virtual void SetupGpoNames() = 0;
  virtual void SetupDatalogChart() = 0;
  virtual void SetupChartsAndCrossHair() = 0;
  virtual void LoadDatalogSettings() = 0;
  virtual void SelectFirstTab() = 0;
  virtual void StartCountsPerMsTimer() = 0;
  virtual void RunCommand16() = 0;
};

// The grids set up at start, in their order.
inline constexpr const char* kStartupGrids[] = {
    "Fuel",  "Ign",          "Water",    "Air",    "IdleMod0", "IdleMod1", "IdleMod2",
    "Other", "ThrottlePump", "WaterMap", "AirMap", "BattMap",  "DataLog"};

// Runs the load sequence. Returns false when another instance runs: the sequence stops there and
// the program must end without touching a file or the port.
bool RunStartupSequence(StartupSteps& steps, ProgramSetup& setup, StartupTrace& trace);

}  // namespace vela
