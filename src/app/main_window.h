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

#include "base/qt/qt_platform.h"
#include "editors/mapgrid/key_routing.h"
#include "link/program_status.h"
#include "program/program_setup.h"
#include "program/startup_sequence.h"

namespace vela {

class ComparePages;
class CompareSession;
class DataPage;
class DatalogPage;
class EditorSession;
class FaultMonitor;
class FaultPanel;
class FileOptionsPage;
class HelpPage;
class HistoryPanel;
class LinkSession;
class LiveView;
class MapLogOverlay;
class MapPages;
class ProposalPages;
class ProposalSession;
class QtSerialPort;
class SettingsControls;
class SetupErrorList;
class SetupPages;
class StatusLabelAdapter;
class StatusStrip;
class TargetPanel;
class TargetSession;

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

class MainWindow : public QMainWindow {
  Q_OBJECT

 public:
  explicit MainWindow(MainWindowParts parts, QWidget* parent = nullptr);
  ~MainWindow() override;

  // The load sequence; false when another instance runs and this one must end.
  bool Load();
  // Shows the window: maximized on a screen smaller than its preferred size (a laptop or a
  // netbook), where a window with its title bar would otherwise reach past the screen's edge.
  void ShowOnScreen();

  QTabWidget* tabs() const { return tabs_; }
  EditorSession& editors() { return *editors_; }
  MapPages& map_pages() { return *map_pages_; }
  SetupPages& setup_pages() { return *setup_pages_; }
  DatalogPage& datalog_page() { return *datalog_page_; }
  FaultMonitor& faults() { return *fault_monitor_; }
  FaultPanel& fault_panel() { return *fault_panel_; }
  StatusStrip& status_strip() { return *status_strip_; }
  CompareSession& compare() { return *compare_; }
  ComparePages& compare_pages() { return *compare_pages_; }
  HistoryPanel& history_panel() { return *history_panel_; }
  ProposalSession& proposal() { return *proposal_; }
  ProposalPages& proposal_pages() { return *proposal_pages_; }
  MapLogOverlay& log_overlay() { return *log_overlay_; }
  TargetSession& targets() { return *targets_; }
  TargetPanel& target_panel() { return *target_panel_; }

 private:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void showEvent(QShowEvent* event) override;

  // Construction: the tabs and the strip, then the wiring between the parts.
  void BuildLayout();
  void ConnectParts();
  // The comparison of the editors' image with another, on the pages.
  void BuildCompare();
  // The fuel correction proposal on the fuel map pages (Ctrl-P).
  void BuildProposal();
  // The log on the map pages (Ctrl-H, Ctrl-M, the chart cursor's cell).
  void BuildLogOverlay();
  // The target AFR table: its session and its window (Ctrl-T).
  void BuildTargets();
  void WireReview();
  // The load's steps as this window does them (see program/startup_sequence.h).
  StartupActions LoadActions();
  void SizeWindow();
  void HideComponentsBeforeStartup();
  void SetColours();
  bool CheckSingleInstance();
  void ReadProgramSettings();
  void SelectFirstTab();
  void StartCountsPerMsTimer();
  // The action of the Data Page's "Reset Displays" button (`Command16`): blank read-outs.
  void ResetDisplays();

  QWidget* BuildPage(int index);
  void ShowSetupErrors();
  void ShowOffline(bool offline);
  bool HandleWindowKey(QKeyEvent* event);
  bool HandleWorkbenchKey(KeyAction action, int tab);
  // Ctrl-J: the history panel in front (changes and restore points).
  void ShowHistory();
  bool InHistoryPanel(QObject* watched) const;
  // The keyboard goes to the page in front: its map grid, or the page itself.
  void FocusPage(int index);
  void PageShown(int index);
  QWidget* BuildDataPage();
  void OpenFaults();
  void OpenFirstRunSetup();
  void ReopenPort(int port_number);
  void ApplyScale(int value);
  void WireLink();
  void RefreshStatus();
  ProgramStatus CurrentStatus() const;
  // Shows the newest live values; false when the Data Page waited for its turn.
  bool ShowLiveData(bool tick = false);
  void ApplyLinkSettings();
  void ShowPortDevice();

  MainWindowParts parts_;
  SettingsControls* settings_controls_;
  QtFileDialogs dialogs_;
  EditorSession* editors_;
  LiveView* live_view_;
  FaultMonitor* fault_monitor_;
  MapPages* map_pages_;
  SetupPages* setup_pages_ = nullptr;
  CompareSession* compare_ = nullptr;
  ComparePages* compare_pages_ = nullptr;
  ProposalSession* proposal_ = nullptr;
  ProposalPages* proposal_pages_ = nullptr;
  MapLogOverlay* log_overlay_ = nullptr;
  SetupErrorList* setup_errors_ = nullptr;
  HelpPage* help_page_ = nullptr;
  FileOptionsPage* file_options_page_ = nullptr;
  bool offline_ = false;
  bool previous_key_was_space_ = false;
  // The live read-outs of the page in front and the status strip are redrawn at a steady pace
  // (see docs/window.md).
  QTimer live_refresh_;
  unsigned data_page_ticks_ = 0;  // live refresh ticks while the Data Page is in front
  QTimer status_refresh_;
  bool live_data_new_ = false;
  QTabWidget* tabs_ = nullptr;
  StatusStrip* status_strip_ = nullptr;
  QLabel* notice_label_ = nullptr;
  FaultPanel* fault_panel_ = nullptr;
  DataPage* data_page_ = nullptr;
  DatalogPage* datalog_page_ = nullptr;
  HistoryPanel* history_panel_ = nullptr;
  TargetSession* targets_ = nullptr;
  TargetPanel* target_panel_ = nullptr;
  std::unique_ptr<StatusLabelAdapter> status_adapter_;
  std::string last_orange_block_;
  QList<QWidget*> hidden_until_started_;
  int base_font_points_ = 0;
};

}  // namespace vela
