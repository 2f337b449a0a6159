// The "DataLo&gging" tab: the channel check boxes `Check2`, the buttons `Command6` (start/stop,
// load, save), the chart `TChart1` with its cursors and markers, the cursor read-out and the time
// scale. It binds the datalog core to the link's frames, the settings file, the journal and the
// file dialogs.
#pragma once

#include <QCheckBox>
#include <QComboBox>
#include <QElapsedTimer>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QTimer>
#include <QWidget>
#include <array>
#include <optional>
#include <string>
#include <vector>

#include "datalog/datalog_capture.h"
#include "datalog/datalog_log.h"
#include "datalog/datalog_settings.h"
#include "datalog/files/datalog_files.h"
#include "datalog/files/journal.h"
#include "datalog/qt/datalog_chart.h"
#include "datalog/qt/journal_file.h"
#include "datalog/review/chart_layout.h"
#include "link/live/live_frame.h"
#include "program/program_setup.h"

namespace vela {

class ChartLayoutBar;
class DistributionView;
class LinkSession;
class MapGridModel;
class MarkerListPanel;
class ReviewSession;

// The tuner's default chart layout, in the program folder.
inline constexpr std::string_view kChartLayoutFileName = "ChartLayout.txt";

struct DatalogPageParts {
  ProgramSetup& setup;
  LinkSession& link;
  MessageSink& messages;
  FileDialogs& dialogs;
  FileSystem& files;
  std::string& dialog_folder;  // shared with the map files
};

class DatalogPage : public QWidget {
  Q_OBJECT

 public:
  // `time_scale_box` holds `DatalogTimeScale` and `TextDatalogTimeScale`.
  DatalogPage(DatalogPageParts parts, QWidget* time_scale_box, QWidget* parent = nullptr);
  ~DatalogPage() override;

  // Start-up steps: every channel flag off, channel 0's flag set, the chart set up, the channel
  // settings read (with `LoadingSetup` held), a journal an earlier run left offered back.
  void ClearChannelFlags();
  void EnableChannel0();
  void SetupChart();
  void LoadDatalogSettings();
  void OfferRecovery();

  // `Command6`: 0 starts or stops logging, 1 loads a datalog, 2 saves it.
  void Command6(int index);
  // The L key.
  void StartStopLogging() { Command6(0); }
  // The K key: a marker at the newest record while logging, otherwise at cursor A.
  void DropMarker();
  // A marker with `text` at the time of the newest record.
  void AddMarker(const std::string& text);

  void FrameTaken(const live::Frame& frame);
  // The link was lost: logging stops (the button says "Start DataLogging" again).
  void LinkLost();
  // Logging stops with the link: while the caption says not connected, no log runs.
  void StopWithoutEcu();
  // The fuel map whose cell the cursor read-out names.
  void SetFuelMap(const MapGridModel* fuel_map) { fuel_map_ = fuel_map; }

  DatalogLog& log() { return log_; }
  DatalogCapture& capture() { return capture_; }
  DatalogChart* chart() const { return chart_; }
  // The layout a log without one of its own is shown with (ChartLayout.txt, or the built-in).
  const review::ChartLayout& DefaultLayout() const { return default_layout_; }
  // "Save as default": the chart's layout written to ChartLayout.txt; false when it failed.
  bool SaveDefaultLayout();
  // The chart draws what `session` holds and keeps its layout there; the session's default
  // layout is the tuner's.
  void DrawReview(ReviewSession& session);
  bool Logging() const { return capture_.DatalogLive; }

  // The log's review (datalog_review.cpp): its math channels, second log and layout, the marker
  // list beside the chart, the scatter and histogram view, the dialogs.
  ReviewSession& review() { return *review_; }
  MarkerListPanel* marker_list() const { return marker_list_; }
  // Opens (or brings up) the scatter and histogram view.
  DistributionView* OpenDistribution();
  void OpenMathChannels();
  // "Load Second Log...": a chart file laid over this log from both starts, then aligned.
  void LoadSecondLog();
  void AlignSecondLog();
  // Cursor A (and the view, when it is outside) to `time`.
  void PutCursorA(double time);

 signals:
  // Stopping brings the DataLogging tab to the front.
  void ShowDataLoggingTab();

 private:
  QWidget* BuildButtons();
  QWidget* BuildChannels();
  QWidget* BuildReadout();
  // Exports of what the chart shows (datalog_export.cpp): the "Export View" button and its menu,
  // the span as CSV and the chart as a PNG picture.
  void AddExportMenu(QHBoxLayout* row);
  void ExportShownCsv();
  void ExportPicture();
  void StartLogging();
  void StopLogging(bool by_button);
  void Save();
  void Load();
  void ChannelToggled(int channel, bool on);
  // A log from a file or a recovered journal is shown: the check boxes, which say what the next
  // recording takes, are left as they are.
  void ShowLoadedLog();
  void ShowGaps();
  // Seconds on the program's clock, from which arrival times are counted.
  double NowSeconds() const;
  void FlushJournalIfDue();
  ChannelChecks Checks() const;
  void Refresh();
  void ShowTime(double seconds);
  void ShowCursorValues();
  QString FuelCellText(double time) const;
  double TimeScale() const;
  // The layout bar above the chart and the default layout it saves.
  QWidget* BuildLayoutBar();
  void ReadDefaultLayout();
  // The review's parts of the page (datalog_review.cpp).
  void BuildReview();
  QWidget* BuildReviewButtons(QWidget* parent);
  QWidget* BuildMarkerList(QWidget* parent);
  void AddReviewKeys();
  void ReviewChanged();
  void ShowReviewValues(std::optional<double> a, std::optional<double> b);
  std::vector<CsvColumn> MathCsvColumns() const;
  // The math channels that evaluated get check boxes after the recorded channels' and entries
  // in the Axis box after theirs.
  void ShowMathChannels();
  void AxisChosen(int index);
  // The Axis box on the layout's selected channel.
  void ShowAxisChannel();

  DatalogPageParts parts_;
  DatalogLog log_;
  DatalogCapture capture_;
  DatalogSettings settings_;
  DatalogFiles files_;
  QtJournalFile journal_file_;
  DatalogJournal journal_;
  bool journal_holds_log_ = false;  // the journal on disk is this log's, not yet saved
  const MapGridModel* fuel_map_ = nullptr;

  DatalogChart* chart_ = nullptr;
  std::array<QPushButton*, 3> command6_{};
  std::array<QCheckBox*, kChannelCount> check2_{};
  QGridLayout* channels_grid_ = nullptr;
  std::vector<QCheckBox*> math_checks_;
  QLabel* status_ = nullptr;
  QLabel* time_box_ = nullptr;
  QComboBox* file_kind_ = nullptr;
  QComboBox* axis_channel_ = nullptr;
  QTableWidget* cursor_values_ = nullptr;
  QLabel* fuel_cell_ = nullptr;
  QLabel* gaps_ = nullptr;
  QTimer refresh_;
  QTimer journal_check_;
  QElapsedTimer clock_;
  bool records_new_ = false;
  ChartLayoutBar* layout_bar_ = nullptr;
  review::ChartLayout default_layout_;
  ReviewSession* drawn_review_ = nullptr;
  ReviewSession* review_ = nullptr;
  MarkerListPanel* marker_list_ = nullptr;
  DistributionView* distribution_ = nullptr;
};

}  // namespace vela
