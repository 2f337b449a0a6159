// The set-up tabs (outputs, inputs, compensation, main setup, sensor setup) and the instant help
// box: built into the main window's pages, filled when a calibration reaches the editors, and
// given the live values.
#pragma once

#include <QObject>
#include <QTabWidget>
#include <functional>

#include "link/live/live_data.h"

namespace vela {

class CompensationPage;
class EditorSession;
class InputsPage;
class InstantHelp;
class LinkSession;
class MainSetupPage;
class OutputsPage;
class ProgramSetup;
class SensorSetupPage;
class SettingsControls;

// Puts `content` into `page` inside a scroll area, so that a small screen scrolls instead of
// cutting controls off.
void Place(QWidget* page, QWidget* content);

class SetupPages : public QObject {
  Q_OBJECT

 public:
  SetupPages(EditorSession& editors, LinkSession& link, ProgramSetup& setup,
             SettingsControls& settings, QTabWidget* tabs, std::function<void()> maps_changed,
             QWidget* window);

  // Builds tab `index` into `page` when it is one of the set-up tabs; false otherwise.
  bool BuildPage(int index, QWidget* page);
  // `TextInstantHelp`, for the main window to place.
  QWidget* help_box() const;

  void ShowEditors();
  // The live values of the set-up page in front; greyed while `connected` is false.
  void ShowLive(const LiveData& live, int afr_mode, bool connected);
  // The instant help option or the language changed.
  void InstantHelpChanged();
  void LanguageChanged(bool english);

  MainSetupPage* main_setup() const { return main_setup_; }
  SensorSetupPage* sensor_setup() const { return sensor_setup_; }
  CompensationPage* compensation() const { return compensation_; }

 private:
  EditorSession& editors_;
  LinkSession& link_;
  ProgramSetup& setup_;
  SettingsControls& settings_;
  std::function<void()> maps_changed_;
  InstantHelp* help_;
  OutputsPage* outputs_ = nullptr;
  InputsPage* inputs_ = nullptr;
  CompensationPage* compensation_ = nullptr;
  MainSetupPage* main_setup_ = nullptr;
  SensorSetupPage* sensor_setup_ = nullptr;
};

}  // namespace vela
