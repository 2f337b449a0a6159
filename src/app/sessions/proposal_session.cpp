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

TuneRun ComputeProposal(const ProposalInputs& inputs, const std::atomic<bool>&) {
  std::vector<const LogColumns*> logs;
  for (const std::shared_ptr<const LogColumns>& log : inputs.logs) logs.push_back(log.get());
  return RunTune(logs, inputs.image, inputs.targets, inputs.settings);
}

ProposalSession::ProposalSession(ProposalSessionParts parts, QObject* parent)
    : QObject(parent), parts_(parts) {
  live_.setInterval(kLiveIntervalMs);
  connect(&live_, &QTimer::timeout, this, &ProposalSession::LiveTick);
  // New targets change what every cell should get.
  connect(&parts_.targets, &TargetSession::Changed, this, &ProposalSession::InputsChanged);
  // Another comparison, or none, ends the proposal.
  connect(&parts_.compare, &CompareSession::Changed, this, [this] {
    if (run_ && !parts_.compare.Proposal()) {
      run_.reset();
      live_.stop();
      ++generation_;
      emit Changed();
    }
  });
}

ProposalSession::~ProposalSession() {
  closing_ = true;
  if (worker_.joinable()) worker_.join();
}

const TuneRun* ProposalSession::Run() const {
  return run_ && parts_.compare.Proposal() ? &*run_ : nullptr;
}

// The tuner's target table on this calibration's fuel axes.
TargetTable ProposalSession::Targets(const CalibrationImage& image) const {
  return parts_.targets.TableOn(FuelAxesOf(image));
}

void ProposalSession::Propose(int fuel_map) {
  fuel_map_ = fuel_map == 2 ? 2 : 1;
  base_ = parts_.editors.image();
  ++generation_;
  if (parts_.datalog.log().RecordCount() == 0 && added_.empty()) {
    emit Note(
        "No fuel proposal: no log is loaded or being recorded. Load one on the DataLogging "
        "page, or add one with \"Add Log...\".");
  }
  shown_generation_ = generation_;
  Show(compute_(Inputs(), closing_));
  live_.start();
}

// Copies of what the proposal is worked out from. The datalog page's log is copied only as far
// as it grew since the last copy, unless a working-out still reads that copy.
ProposalInputs ProposalSession::Inputs() {
  const DatalogLog& shown = parts_.datalog.log();
  seen_records_ = shown.RecordCount();
  seen_revision_ = shown.Revision();
  if (!shown_log_ || shown_log_.use_count() > 1) {
    auto copy = std::make_shared<LogColumns>();
    if (shown_log_) *copy = *shown_log_;
    shown_log_ = std::move(copy);
  }
  TakeColumns(shown, *shown_log_);
  ProposalInputs inputs{{}, *base_, Targets(*base_), settings_};
  inputs.settings.proposal.fuel_map = fuel_map_;
  if (!shown_log_->times.empty()) inputs.logs.push_back(shown_log_);
  inputs.logs.insert(inputs.logs.end(), added_.begin(), added_.end());
  return inputs;
}

void ProposalSession::Show(TuneRun run) {
  run_ = std::move(run);
  parts_.compare.CompareWithProposal(run_->proposal);
  emit Changed();
}

void ProposalSession::InputsChanged() {
  ++generation_;
  if (Run() && !computing_) Start();
}

void ProposalSession::Start() {
  if (worker_.joinable()) worker_.join();  // done already: it has handed its result over
  computing_ = true;
  const std::uint64_t generation = generation_;
  worker_ = std::thread([this, generation, compute = compute_, inputs = Inputs()] {
    std::optional<TuneRun> run;
    try {
      run = compute(inputs, closing_);
    } catch (...) {  // out of memory: no result, the proposal shown stays
    }
    QMetaObject::invokeMethod(
        this,
        [this, generation, run = std::move(run)]() mutable {
          Finished(generation, std::move(run));
        },
        Qt::QueuedConnection);
  });
}

void ProposalSession::Finished(std::uint64_t generation, std::optional<TuneRun> run) {
  computing_ = false;
  if (!run || !Run()) return;
  const DatalogLog& log = parts_.datalog.log();
  const bool same_log =
      shown_log_->times.empty() ? log.RecordCount() == 0 : HoldsStartOf(*shown_log_, log);
  if (generation == generation_ && same_log) {
    shown_generation_ = generation;
    Show(std::move(*run));
  }
  if (shown_generation_ != generation_ || !same_log) Start();
}

void ProposalSession::LiveTick() {
  if (!Run()) {
    live_.stop();
    return;
  }
  const DatalogLog& log = parts_.datalog.log();
  if (computing_ || (log.RecordCount() == seen_records_ && log.Revision() == seen_revision_)) {
    return;
  }
  Start();
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
  auto columns = std::make_shared<LogColumns>();
  TakeColumns(log, *columns);
  added_.push_back(std::move(columns));
  emit Note(QString("Fuel proposal: %1 added")
                .arg(QString::fromStdString(path->substr(NameStart(*path)))));
  InputsChanged();
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
  InputsChanged();
}

}  // namespace vela

#include "moc_proposal_session.cpp"
