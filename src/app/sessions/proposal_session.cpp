#include "app/sessions/proposal_session.h"

#include "app/pages/datalog_page.h"
#include "app/sessions/target_session.h"
#include "base/file_names.h"
#include "datalog/files/datalog_files.h"
#include "datalog/files/log_file.h"
#include "tune/view/proposal_view.h"

namespace vela {

namespace {

constexpr std::string_view kAddLogTitle = "Add a DataLog to the Fuel Proposal";

}  // namespace

ProposalSession::ProposalSession(ProposalSessionParts parts, QObject* parent)
    : QObject(parent), parts_(parts) {
  live_.setInterval(kLiveIntervalMs);
  connect(&live_, &QTimer::timeout, this, &ProposalSession::LiveTick);
  // New targets change what every cell should get.
  connect(&parts_.targets, &TargetSession::Changed, this, [this] {
    if (Run()) Recompute();
  });
  // Another comparison, or none, ends the proposal.
  connect(&parts_.compare, &CompareSession::Changed, this, [this] {
    if (run_ && !parts_.compare.Proposal()) {
      run_.reset();
      live_.stop();
      emit Changed();
    }
  });
}

const TuneRun* ProposalSession::Run() const {
  return run_ && parts_.compare.Proposal() ? &*run_ : nullptr;
}

// The tuner's target table when it stands on this calibration's fuel axes, else the default.
TargetTable ProposalSession::Targets(const CalibrationImage& image) const {
  const TuneAxes axes = FuelAxesOf(image);
  const TargetTable& kept = parts_.targets.table();
  return kept.Axes() == axes ? kept : TargetTable(axes);
}

void ProposalSession::Propose(int fuel_map) {
  fuel_map_ = fuel_map == 2 ? 2 : 1;
  base_ = parts_.editors.image();
  if (parts_.datalog.log().RecordCount() == 0 && added_.empty()) {
    emit Note(
        "No fuel proposal: no log is loaded or being recorded. Load one on the DataLogging "
        "page, or add one with \"Add Log...\".");
  }
  Recompute();
  live_.start();
}

void ProposalSession::Recompute() {
  if (!base_) return;
  const DatalogLog& shown = parts_.datalog.log();
  seen_records_ = shown.RecordCount();
  seen_revision_ = shown.Revision();
  std::vector<const DatalogLog*> logs;
  if (shown.RecordCount() > 0) logs.push_back(&shown);
  for (const DatalogLog& log : added_) logs.push_back(&log);
  TuneSettings settings = settings_;
  settings.proposal.fuel_map = fuel_map_;
  run_ = RunTune(logs, *base_, Targets(*base_), settings);
  parts_.compare.CompareWithProposal(run_->proposal);
  emit Changed();
}

void ProposalSession::LiveTick() {
  if (!Run()) {
    live_.stop();
    return;
  }
  const DatalogLog& log = parts_.datalog.log();
  if (log.RecordCount() == seen_records_ && log.Revision() == seen_revision_) return;
  Recompute();
}

void ProposalSession::AddLog() {
  std::string& folder = parts_.editors.dialog_memory().folder;
  if (folder.empty()) folder = parts_.folders.datalogs;
  const std::optional<std::string> path =
      parts_.dialogs.AskOpenPath(std::string(kDatalogFilter), std::string(kAddLogTitle), folder);
  if (!path) return;
  if (const std::size_t start = NameStart(*path); start > 0) folder = path->substr(0, start);
  const std::optional<std::string> bytes = parts_.files.ReadFile(*path);
  DatalogLog log;
  if (!bytes || (DecodeLogFile(*bytes, log), log.RecordCount() == 0)) {
    parts_.messages.Show(MessageIcon::kExclamation, std::string(kAddLogTitle),
                         {path->substr(NameStart(*path)) + " is no datalog with records."});
    return;
  }
  added_.push_back(std::move(log));
  emit Note(QString("Fuel proposal: %1 added")
                .arg(QString::fromStdString(path->substr(NameStart(*path)))));
  Recompute();
}

void ProposalSession::ClearAddedLogs() {
  added_.clear();
  Recompute();
}

std::string ProposalSession::SettingsPath() const {
  return parts_.folders.program + std::string(kTuneSetupFileName);
}

void ProposalSession::LoadSettings() {
  const std::optional<std::string> text = parts_.files.ReadFile(SettingsPath());
  settings_ = text ? ReadTuneSettingsText(*text) : TuneSettings{};
}

void ProposalSession::SetSettings(const TuneSettings& settings) {
  settings_ = settings;
  if (parts_.files.WriteFile(SettingsPath(), TuneSettingsText(settings_)) != kFileErrorNone) {
    emit Note(QString::fromStdString("The fuel proposal's settings could not be written to " +
                                     SettingsPath()));
  }
  if (Run()) Recompute();
}

}  // namespace vela

#include "moc_proposal_session.cpp"
