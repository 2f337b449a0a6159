// The fuel correction proposal in the program: Ctrl-P on a fuel map page works out what the log
// the datalog page holds (recorded or loaded), with any logs added from files, proposes for that
// map, and shows it as a comparison with the editors' image (CompareSession). While a log is
// being recorded the proposal follows it at a calm pace. Its settings (filters, the per-pass
// limit, the evidence minimum, the delay) are kept in `TuneSetup.txt` in the program folder.
#pragma once

#include <QObject>
#include <QString>
#include <QTimer>
#include <optional>
#include <vector>

#include "app/sessions/compare_session.h"
#include "tune/tune_run.h"

namespace vela {

class DatalogPage;

class TargetSession;

struct ProposalSessionParts {
  EditorSession& editors;
  CompareSession& compare;
  DatalogPage& datalog;
  FileDialogs& dialogs;
  FileSystem& files;
  MessageSink& messages;
  const ProgramFolders& folders;
  const TargetSession& targets;
};

inline constexpr std::string_view kTuneSetupFileName = "TuneSetup.txt";

class ProposalSession : public QObject {
  Q_OBJECT

 public:
  // While recording, the proposal is worked out again this often when the log has grown.
  static constexpr int kLiveIntervalMs = 2000;

  explicit ProposalSession(ProposalSessionParts parts, QObject* parent = nullptr);

  // Proposes for fuel map `fuel_map` (1 or 2) of the editors' image as it is now, from the
  // datalog page's log and the logs added, and compares the editors' image with it.
  void Propose(int fuel_map);
  // Asks for a log file and adds it to the evidence; the proposal is worked out again.
  void AddLog();
  // Forgets the logs added from files.
  void ClearAddedLogs();
  int AddedLogs() const { return static_cast<int>(added_.size()); }

  // The proposal now shown, null when none is.
  const TuneRun* Run() const;
  const TuneSettings& Settings() const { return settings_; }
  // New settings, written to the settings file; a shown proposal is worked out again.
  void SetSettings(const TuneSettings& settings);
  // Reads the settings file (defaults when it is missing or unreadable).
  void LoadSettings();

  // The target AFR of every cell of the fuel maps of `image`.
  TargetTable Targets(const CalibrationImage& image) const;

 signals:
  // A new proposal, or none any more.
  void Changed();
  void Note(const QString& text);

 private:
  void Recompute();
  void LiveTick();
  std::string SettingsPath() const;

  ProposalSessionParts parts_;
  TuneSettings settings_;
  std::vector<DatalogLog> added_;
  std::optional<CalibrationImage> base_;  // the editors' image when Ctrl-P was pressed
  std::optional<TuneRun> run_;
  int fuel_map_ = 1;
  std::uint64_t seen_revision_ = 0;
  std::size_t seen_records_ = 0;
  QTimer live_;
};

}  // namespace vela
