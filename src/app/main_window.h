// The main window: one window, the twelve tabs of `SSTab1`, the start-up status label and the
// link status strip. It assembles the pages and runs the load sequence; the rules live in cores.
#pragma once

#include <QLabel>
#include <QListWidget>
#include <QMainWindow>
#include <QPushButton>
#include <QTabWidget>
#include <QTableWidget>
#include <QTimer>
#include <array>
#include <functional>
#include <memory>

#include "shell/program_setup.h"
#include "shell/qt/qt_platform.h"
#include "shell/startup_sequence.h"

namespace vela {

class DataPage;
class DatalogPage;
class EditorSession;
class LinkSession;
class MapPages;
class QtSerialPort;
class SettingsControls;
class SetupPages;
class StatusLabelAdapter;

struct MainWindowParts {
  ProgramSetup& setup;
  StartupTrace& trace;
  QtSerialPort& port;
  MessageSink& messages;
  FileSystem& files;
  LinkSession& link;
  // True when no other instance runs (and from then on holds this one's claim).
  std::function<bool()> claim_single_instance;
  // The file dialogs; null: the window's own Qt dialogs.
  FileDialogs* dialogs = nullptr;
};

class MainWindow : public QMainWindow, public StartupSteps {
  Q_OBJECT

 public:
  explicit MainWindow(MainWindowParts parts, QWidget* parent = nullptr);
  ~MainWindow() override;

  // The load sequence; false when another instance runs and this one must end.
  bool Load();

  QTabWidget* tabs() const { return tabs_; }
  EditorSession& editors() { return *editors_; }
  MapPages& map_pages() { return *map_pages_; }
  SetupPages& setup_pages() { return *setup_pages_; }
  DatalogPage& datalog_page() { return *datalog_page_; }

  // StartupSteps
  void SizeWindow() override;
  void HideComponentsBeforeStartup() override;
  void SetColours() override;
  void SetupLogLiveChannel1() override;
  void SetupTabs() override;
  void SetupFormSize() override;
  void SetupRpmPoints() override;
  void SetupGrid(const std::string& name) override;
  bool CheckSingleInstance() override;
  void SetupNoticeLabel() override;
  void SetupPortAndSampleLists() override;
  void SetupInfoGrids() override;
  void SetupSensorAndTriggerLists() override;
  void SetupOutputPositions() override;
  void SetupEditorControls() override;
  void SetupHiddenFocuses() override;
  void ReadProgramSettings() override;
  void EnableDatalogChannel0() override;
  void SetupGpiNames() override;
  void SetupGpoNames() override;
  void SetupDatalogChart() override;
  void SetupChartsAndCrossHair() override;
  void LoadDatalogSettings() override;
  void SelectFirstTab() override;
  void StartCountsPerMsTimer() override;
  void RunCommand16() override;

 private:
  bool eventFilter(QObject* watched, QEvent* event) override;

  QWidget* BuildPage(int index);
  QWidget* BuildMapFileButtons(QWidget* parent);
  QWidget* BuildKeystrokeTable(QWidget* parent);
  void ShowKeystrokeTable(bool english);
  void ShowSetupErrors();
  void ShowOffline(bool offline);
  bool HandleWindowKey(QKeyEvent* event);
  void BuildStatusStrip(QWidget* parent);
  void OpenFirstRunSetup();
  void ReopenPort(int port_number);
  void ApplyScale(int value);
  void WireLink();
  void RefreshLinkDisplay();
  void ShowLiveData();
  void ApplyLinkSettings();
  QLabel* AddStripLabel(QWidget* strip, const QString& name, int min_width);

  MainWindowParts parts_;
  SettingsControls* settings_controls_;
  QtFileDialogs dialogs_;
  EditorSession* editors_;
  MapPages* map_pages_;
  SetupPages* setup_pages_ = nullptr;
  QListWidget* setup_errors_ = nullptr;  // the setup error list
  QTableWidget* keystrokes_ = nullptr;
  QPushButton* offline_button_ = nullptr;
  QLabel* mode_label_ = nullptr;
  bool previous_key_was_space_ = false;
  // Live read-outs and the link's counters are redrawn at a steady pace when they changed (see
  // docs/editing.md).
  QTimer live_refresh_;
  bool live_data_new_ = false;
  bool link_display_new_ = false;
  QTabWidget* tabs_ = nullptr;
  QLabel* startup_label_ = nullptr;  // `LabelOrangeBlock`
  QLabel* status_label_ = nullptr;   // the link status label
  QLabel* notice_label_ = nullptr;
  QLabel* port_label_ = nullptr;
  QLabel* rx_indicator_ = nullptr;  // the receive indicator
  QLabel* link_indicator_ = nullptr;
  QLabel* overflow_label_ = nullptr;
  QLabel* tick_label_ = nullptr;
  QLabel* chunk_label_ = nullptr;
  DataPage* data_page_ = nullptr;
  DatalogPage* datalog_page_ = nullptr;
  std::unique_ptr<StatusLabelAdapter> status_adapter_;
  std::string last_orange_block_;
  QList<QWidget*> hidden_until_started_;
  int base_font_points_ = 0;
};

}  // namespace vela
