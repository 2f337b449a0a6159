// The fuel correction proposal in the program: Ctrl-P on a fuel map page works out what the log
// the datalog page holds (recorded or loaded), with any logs added from files, proposes for that
// map, and shows it as a comparison with the editors' image (CompareSession). While a log is
// being recorded the proposal follows it at a calm pace. Its settings (filters, the per-pass
// limit, the evidence minimum, the delay) are kept in `TuneSetup.txt` in the program folder.
//
// Ctrl-P works the proposal out at once. Every later working-out (the log grew or was replaced,
// a log added, new settings or targets) runs on a thread of the session's own, one at a time,
// from copies the recording cannot change, and is shown when it is done; a result whose inputs
// changed meanwhile is thrown away and the proposal worked out again.
#pragma once

#include <QObject>
#include <QString>
#include <QTimer>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <thread>
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

// What one working-out of the proposal reads, none of it shared with what the tuner changes.
struct ProposalInputs {
  std::vector<std::shared_ptr<const LogColumns>> logs;
  CalibrationImage image;
  TargetTable targets;
  TuneSettings settings;
};
// Works a proposal out; `dropped` turns true when its result is no longer wanted (the session
// is closing), so that a long working-out may stop early.
using ProposalCompute =
    std::function<TuneRun(const ProposalInputs&, const std::atomic<bool>& dropped)>;
TuneRun ComputeProposal(const ProposalInputs& inputs, const std::atomic<bool>& dropped);

class ProposalSession : public QObject {
  Q_OBJECT

 public:
  // While recording, the proposal is worked out again this often when the log has grown.
  static constexpr int kLiveIntervalMs = 2000;

  explicit ProposalSession(ProposalSessionParts parts, QObject* parent = nullptr);
  // Tells a working-out under way that its result is not wanted and waits for it.
  ~ProposalSession() override;

  // Proposes for fuel map `fuel_map` (1 or 2) of the editors' image as it is now, from the
  // datalog page's log and the logs added, and compares the editors' image with it.
  void Propose(int fuel_map);
  // Asks for a log file and adds it to the evidence; the proposal is worked out again.
  void AddLog();
  // True while a proposal is being worked out on the session's thread.
  bool Computing() const { return computing_; }
  // What works a proposal out (ComputeProposal unless a test holds it back).
  void SetCompute(ProposalCompute compute) { compute_ = std::move(compute); }

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
  ProposalInputs Inputs();
  void Show(TuneRun run);
  // The inputs changed: a result under way is stale; worked out again when a proposal is shown.
  void InputsChanged();
  void Start();
  void Finished(std::uint64_t generation, std::optional<TuneRun> run);
  void LiveTick();
  std::string SettingsPath() const;

  ProposalSessionParts parts_;
  TuneSettings settings_;
  std::vector<std::shared_ptr<const LogColumns>> added_;
  std::shared_ptr<LogColumns> shown_log_;  // the datalog page's log, as last copied
  std::optional<CalibrationImage> base_;   // the editors' image when Ctrl-P was pressed
  std::optional<TuneRun> run_;
  int fuel_map_ = 1;
  std::uint64_t seen_revision_ = 0;
  std::size_t seen_records_ = 0;
  QTimer live_;
  ProposalCompute compute_ = ComputeProposal;
  std::uint64_t generation_ = 0;        // counts the changes of the inputs
  std::uint64_t shown_generation_ = 0;  // the inputs of the proposal shown
  bool computing_ = false;
  std::atomic<bool> closing_{false};
  std::thread worker_;
};

}  // namespace vela
