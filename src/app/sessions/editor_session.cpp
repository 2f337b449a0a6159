#include "app/sessions/editor_session.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QVBoxLayout>
#include <algorithm>

#include "app/sessions/link_session.h"
#include "editors/mapgrid/map_grid_model.h"
#include "editors/setup/setup_checks.h"

namespace vela {

namespace {

constexpr std::string_view kEditsWhileDownLines[] = {
    "The map was changed while the ECU was not connected, and the ECU holds a different map.",
    "Send the changed map to the ECU now? (No takes the ECU's map; the changes are lost.)"};
constexpr std::string_view kInterruptedLines[] = {
    "The download did not complete: the link to the ECU failed while the map was being sent.",
    "The ECU may now run on part of the new map and part of the old one.",
    "Send the whole map again as soon as the ECU is back?"};

// Frames of a change of many cells go out in slices this long, so the program answers keys and
// redraws between them.
constexpr int kSendSliceMs = 15;

// The map whose area holds every write, when no set-up check reads any of them; nullopt for a
// step that reaches beyond one map.
std::optional<EditedMap> MapOfWrites(const std::vector<ByteWrite>& writes) {
  if (writes.empty()) return std::nullopt;
  const auto within = [&writes](int start, int length) {
    return std::all_of(writes.begin(), writes.end(), [&](const ByteWrite& w) {
      return w.position >= start && w.position < start + length;
    });
  };
  std::optional<EditedMap> map;
  if (within(kFuelMap1Start, kFuelMapAreaLength)) map = EditedMap::kFuel1;
  if (within(kFuelMap2Start, kFuelMapAreaLength)) map = EditedMap::kFuel2;
  if (within(kIgnMapStart, kIgnMapAreaLength)) map = EditedMap::kIgnition;
  if (!map) return std::nullopt;
  for (const SetupCheck& check : AllSetupChecks()) {
    for (const ByteWrite& w : writes) {
      if (check.Reads(w.position)) return std::nullopt;
    }
  }
  return map;
}

}  // namespace

EditPlace PlaceOf(EditedMap map) {
  return map == EditedMap::kFuel1   ? EditPlace::kFuelMap1
         : map == EditedMap::kFuel2 ? EditPlace::kFuelMap2
                                    : EditPlace::kIgnMap;
}

int MapStartOf(EditedMap map) {
  return map == EditedMap::kFuel1   ? kFuelMap1Start
         : map == EditedMap::kFuel2 ? kFuelMap2Start
                                    : kIgnMapStart;
}

SendResult QueueingSender::Send(const CommandFrame& frame) {
  const ByteWrite byte{frame.address, 0};
  queue_.Add(CellsToSend(std::span<const ByteWrite>(&byte, 1), image_));
  return {.outcome = SendOutcome::kHeld};
}

SendResult OfflineGate::Send(const CommandFrame& frame) {
  if (mode_.Offline) return {};
  return inner_.Send(frame);
}

DownloadProgressWindow::DownloadProgressWindow(QWidget* parent)
    : QDialog(parent), bar_(new QProgressBar(this)) {
  setObjectName("Form3");
  setWindowTitle(QString::fromStdString(std::string(kDownloadProgressTitle)));
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(new QLabel(QString::fromStdString(std::string(kDownloadProgressText)), this));
  bar_->setRange(0, static_cast<int>(kDownloadProgressFullWidth));
  bar_->setTextVisible(false);
  layout->addWidget(bar_);
  setMinimumWidth(420);
}

void DownloadProgressWindow::SetWidth(double width) {
  bar_->setValue(static_cast<int>(std::min(width, kDownloadProgressFullWidth)));
}

EditorSession::EditorSession(EditorSessionParts parts, QWidget* window)
    : QObject(window),
      parts_(parts),
      gate_(parts.link.sender(), mode_),
      held_edits_(gate_),
      edit_sender_(held_edits_,
                   [this] {
                     NoteEdit();
                     // The set-up, compensation and sensor editors: one entry per change, once
                     // its frames are out.
                     if (!record_pending_) {
                       record_pending_ = true;
                       QTimer::singleShot(0, this, [this] { RecordPending(); });
                     }
                   }),
      setup_editor_({state_, image_, edit_sender_, parts.messages, parts.suppress_change_events}),
      compensation_editor_(
          {state_, image_, edit_sender_, parts.messages, parts.suppress_change_events}),
      sensor_tables_({state_, image_, edit_sender_, parts.messages, parts.suppress_change_events}),
      transmission_(image_, held_edits_),
      progress_(window),
      download_(gate_, parts.link.state(),
                DownloadCallbacks{
                    [this] {
                      progress_.SetWidth(0);
                      progress_.show();
                    },
                    [this](double width) { progress_.SetWidth(width); },
                    [this] { progress_.hide(); },
                    [this](bool on) { on ? download_timer_.start() : download_timer_.stop(); },
                    [this] {
                      if (!download_.broken()) SetOutOfStep(false);
                      emit DownloadStatus(QString());
                    },
                    [this] { return mode_.Offline || parts_.link.LineReady(); },
                    [this] { DownloadInterrupted(); },
                },
                &held_edits_),
      map_files_(parts.files, parts.dialogs, parts.messages, parts.folders, dialog_memory_),
      history_(parts.files, parts.folders, this),
      queueing_sender_(send_queue_, image_),
      bulk_transmission_(image_, queueing_sender_) {
  send_timer_.setInterval(0);
  connect(&send_timer_, &QTimer::timeout, this, &EditorSession::DrainQueue);
  connect(&history_, &EditHistory::Note, this, &EditorSession::HistoryNote);
  download_timer_.setInterval(kDownloadTimerIntervalMs);
  connect(&download_timer_, &QTimer::timeout, this, [this] { download_.Tick(); });
  // The upload asks nothing while a download runs or while the program is off-line.
  parts_.link.upload().SetHeld([this] { return mode_.Offline || download_.running(); });
  // The temperature read-outs convert through the sensor points of the program's calibration.
  parts_.link.UseCalibration(&image_);
}

ApplyEnvironment EditorSession::Environment() {
  LinkSession& link = parts_.link;
  return ApplyEnvironment{parts_.status,
                          parts_.messages,
                          gate_,
                          link.state(),
                          parts_.suppress_change_events,
                          [&link] { link.upload().Complete(); },
                          &notes_};
}

void EditorSession::ShowNotesLater() {
  QTimer::singleShot(0, this, [this] {
    std::vector<CalibrationNote> notes;
    notes.swap(notes_);
    for (const CalibrationNote& note : notes)
      parts_.messages.Show(note.icon, note.title, note.lines);
  });
}

void EditorSession::EndUploadPreparation() {
  // No acknowledgement follows: a rate frame lost on the line shows as the link's stall.
  static_cast<void>(
      gate_.Send({kSingleValueWrite, kLiveRateAddress, parts_.link.state().CommsSpeedValue}));
}

bool EditorSession::KeepEditsOver(const CalibrationImage& ecu_image) {
  if (!edited_while_down_ || !has_calibration_ || ecu_image.Bytes() == image_.Bytes()) {
    return false;
  }
  const MessageAnswer answer = parts_.messages.Show(
      MessageIcon::kQuestion, std::string(kWarningTitle),
      {std::string(kEditsWhileDownLines[0]), std::string(kEditsWhileDownLines[1])},
      MessageButtons::kYesNo);
  return answer == MessageAnswer::kYes;
}

void EditorSession::DownloadWhole() {
  send_queue_.Clear();
  static_cast<void>(history_.Record(EditKind::kDownload, EditPlace::kWholeImage, image_,
                                    "the editors' calibration"));
  download_.Start(image_.ToVector());
  emit DownloadStatus(QString::fromStdString(std::string(kDownloadStatus)));
}

void EditorSession::SetOutOfStep(bool out_of_step) {
  if (ecu_out_of_step_ == out_of_step) return;
  ecu_out_of_step_ = out_of_step;
  emit EcuOutOfStepChanged(out_of_step);
}

void EditorSession::DownloadInterrupted() {
  SetOutOfStep(true);
  std::vector<std::string> lines(std::begin(kInterruptedLines), std::end(kInterruptedLines));
  const bool again = parts_.messages.Show(MessageIcon::kExclamation, std::string(kWarningTitle),
                                          lines, MessageButtons::kYesNo) == MessageAnswer::kYes;
  resend_when_back_ = again;
  // Still connected (a send was aborted): the ECU is here, so the image goes again at once.
  if (again && parts_.link.LineReady()) {
    resend_when_back_ = false;
    DownloadWhole();
  }
}

void EditorSession::ApplyUpload(const CalibrationImage& image) {
  if (applying_upload_) {
    newer_block_ = image;
    return;
  }
  applying_upload_ = true;
  bool ecu_calibration = ApplyEcuBlock(image);
  while (newer_block_) {
    const CalibrationImage next = *newer_block_;
    newer_block_.reset();
    // Once the editors' calibration goes down, a block read before it arrived is out of date.
    if (ecu_calibration) ecu_calibration = ApplyEcuBlock(next);
  }
  applying_upload_ = false;
  ShowNotesLater();
}

bool EditorSession::ApplyEcuBlock(const CalibrationImage& image) {
  if (mode_.Offline) {
    parts_.status.Show("Off-line: the ECU's calibration was not applied");
    return true;
  }
  // The editors' calibration goes down instead when the tuner chose to send it once the ECU was
  // back, or chooses now to keep the edits made while it was away.
  const bool send_down = resend_when_back_ ? image.Bytes() != image_.Bytes() : KeepEditsOver(image);
  resend_when_back_ = false;
  edited_while_down_ = false;
  RecordPending();
  if (send_down) {
    // The ECU's own calibration is about to be replaced: it is kept as a restore point first.
    static_cast<void>(history_.TakeRestorePoint(image, RestoreReason::kBeforeDownload));
    EndUploadPreparation();
    DownloadWhole();
    return false;
  }
  SetOutOfStep(false);
  // The ECU's calibration, unless it is the one the editors already show (a map sent down).
  const bool new_calibration = !has_calibration_ || image.Bytes() != image_.Bytes();
  if (new_calibration) SetMapInUse(std::string(), true);
  image_ = image;
  ecu_image_ = image;
  send_queue_.Clear();
  has_calibration_ = true;
  state_.SetupErrors.clear();
  ApplyEnvironment env = Environment();
  ApplyUploadedCalibration(image_, CalibrationSource::kUpload, state_, env);
  // A read-back of the calibration the editors already hold is no change: the history keeps its
  // hold on the ECU, so that an undo after pressing U still puts the ECU back.
  if (new_calibration) {
    static_cast<void>(
        history_.Record(EditKind::kTakenFromEcu, EditPlace::kWholeImage, image_, "ECU"));
  }
  static_cast<void>(history_.TakeRestorePoint(image_, RestoreReason::kFromEcu));
  emit EditorsFilled();
  return true;
}

void EditorSession::CellsEdited(EditedMap map, MapGridModel& grid,
                                const std::vector<MapCell>& cells) {
  if (parts_.suppress_change_events) return;
  RecordPending();
  NoteEdit();
  transmission_.OnCellsChanged(grid, cells, TransmissionSetupOf(map));
  TakeGridValues(map, grid);
  static_cast<void>(history_.Record(EditKind::kKeyStep, PlaceOf(map), image_, KeyStepSource(grid)));
}

TransmissionSetup EditorSession::TransmissionSetupOf(EditedMap map) const {
  TransmissionSetup setup;
  setup.map_start = MapStartOf(map);
  setup.ignition_divide = state_.setup.ignition_divide;
  setup.third_injection_mode = state_.setup.fuel_mode == kFuelModeSequential;
  return setup;
}

// Where a key step was made: the cursor's cell by its RPM and load, as the grid labels them.
std::string EditorSession::KeyStepSource(const MapGridModel& grid) {
  const MapCell cell = grid.Current();
  return grid.RpmLabel(cell.row) + " RPM, " + grid.LoadLabel(cell.column) + " " + grid.LoadUnit();
}

void EditorSession::CellsBulkEdited(EditedMap map, MapGridModel& grid,
                                    const std::vector<MapCell>& changed, EditKind kind,
                                    std::string source) {
  if (parts_.suppress_change_events || changed.empty()) return;
  RecordPending();
  NoteEdit();
  bulk_transmission_.OnCellsChanged(grid, changed, TransmissionSetupOf(map));
  TakeGridValues(map, grid);
  static_cast<void>(history_.Record(kind, PlaceOf(map), image_, std::move(source)));
  DrainQueue();
}

void EditorSession::BytesEdited(const std::vector<ByteWrite>& writes, EditKind kind,
                                EditPlace place, std::string source) {
  if (writes.empty()) return;
  RecordPending();
  ApplyWrites(image_, writes);
  send_queue_.Add(CellsToSend(writes, image_));
  NoteEdit();
  RefillEditors();
  static_cast<void>(history_.Record(kind, place, image_, std::move(source)));
  DrainQueue();
}

void EditorSession::SendCells(const std::vector<int>& positions) {
  std::vector<ByteWrite> bytes;
  bytes.reserve(positions.size());
  for (int position : positions) bytes.push_back({position, 0});
  send_queue_.Add(CellsToSend(bytes, image_));
  DrainQueue();
}

bool EditorSession::Undo() {
  RecordPending();
  const std::optional<JournalStep> step = history_.Undo(image_);
  if (step) ApplyStep(*step, "Undone");
  return step.has_value();
}

bool EditorSession::Redo() {
  RecordPending();
  const std::optional<JournalStep> step = history_.Redo(image_);
  if (step) ApplyStep(*step, "Redone");
  return step.has_value();
}

bool EditorSession::ReturnTo(std::size_t applied) {
  RecordPending();
  const std::optional<JournalStep> step = history_.ReturnTo(applied, image_);
  if (step) ApplyStep(*step, "Returned");
  return step.has_value();
}

void EditorSession::ApplyStep(const JournalStep& step, const QString& what) {
  ApplyWrites(image_, step.writes);
  const std::vector<CellWrite> cells = CellsToSend(step.writes, image_);
  if (step.for_ecu) send_queue_.Add(cells);
  NoteEdit();
  // The ECU still holds a calibration the history has gone back behind: when it is read next,
  // the tuner is asked which one wins.
  if (step.differs_from_ecu) edited_while_down_ = true;
  RefillAfter(step.writes);
  emit HistoryNote(QString("%1: %2 %3%4")
                       .arg(what)
                       .arg(cells.size())
                       .arg(cells.size() == 1 ? "value" : "values")
                       .arg(step.for_ecu ? "" : " (on the PC only)"));
  DrainQueue();
}

void EditorSession::RefillEditors() {
  state_.SetupErrors.clear();
  ApplyEnvironment env = Environment();
  ApplyUploadedCalibration(image_, CalibrationSource::kEditorsImage, state_, env);
  emit EditorsFilled();
}

void EditorSession::RefillAfter(const std::vector<ByteWrite>& writes) {
  const std::optional<EditedMap> map = MapOfWrites(writes);
  const bool same_layout = image_.FuelLoadSites() == state_.maps.FuelLoadSites &&
                           image_.IgnLoadSites() == state_.maps.IgnLoadSites;
  if (!map || !same_layout) {
    RefillEditors();
    return;
  }
  switch (*map) {
    case EditedMap::kFuel1:
      state_.maps.FuelMap1 = image_.ReadFuelMap(1);
      break;
    case EditedMap::kFuel2:
      state_.maps.FuelMap2 = image_.ReadFuelMap(2);
      break;
    case EditedMap::kIgnition:
      state_.maps.IgnMap = image_.ReadIgnMap();
      break;
  }
  emit MapRefilled(*map);
}

void EditorSession::RecordPending() {
  record_pending_ = false;
  if (history_.Unrecorded(image_)) {
    static_cast<void>(history_.Record(EditKind::kSetupChange, EditPlace::kSetup, image_, {}));
  }
}

bool EditorSession::RecordNow(EditKind kind, EditPlace place, std::string source) {
  record_pending_ = false;
  if (!history_.Unrecorded(image_)) return false;
  return history_.Record(kind, place, image_, std::move(source));
}

void EditorSession::DrainQueue() {
  QElapsedTimer slice;
  slice.start();
  while (!send_queue_.Empty() && slice.elapsed() < kSendSliceMs) {
    static_cast<void>(send_queue_.SendNext(image_, held_edits_));
  }
  if (send_queue_.Empty()) {
    send_timer_.stop();
    emit SendProgress(send_queue_.Sent(), 0);
  } else {
    send_timer_.start();
    emit SendProgress(send_queue_.Sent(), send_queue_.Total());
  }
}

void EditorSession::OfferLastSession() {
  if (std::optional<ReplayedJournal> last = history_.LastSession(); last && !last->report.closed) {
    const QString when = QDateTime::fromMSecsSinceEpoch(last->journal.Entries().back().time_ms)
                             .toString("yyyy-MM-dd hh:mm:ss");
    const MessageAnswer answer = parts_.messages.Show(
        MessageIcon::kQuestion, "Edit History",
        {"The last session ended without closing the program, with " +
             std::to_string(last->journal.Entries().size()) +
             (last->journal.Entries().size() == 1 ? " change" : " changes") +
             " in its history (the newest at " + when.toStdString() + ").",
         "Take that calibration and its history back? (No starts from the ECU's calibration; the "
         "last session's file stays until it is overwritten.)"},
        MessageButtons::kYesNo);
    if (answer == MessageAnswer::kYes) {
      history_.TakeBack(*last);
      image_ = last->image;
      has_calibration_ = true;
      edited_while_down_ = true;
      SetMapInUse(std::string(), false);
      NoteEdit();
      RefillEditors();
    }
  }
  history_.BeginFile(image_);
}

void EditorSession::TakeGridValues(EditedMap map, const MapGridModel& grid) {
  MapValues values = grid.ToMapValues();
  switch (map) {
    case EditedMap::kFuel1:
      state_.maps.FuelMap1 = values;
      break;
    case EditedMap::kFuel2:
      state_.maps.FuelMap2 = values;
      break;
    case EditedMap::kIgnition:
      state_.maps.IgnMap = values;
      break;
  }
}

void EditorSession::NoteChangeWithoutEcu() {
  if (mode_.Offline || !parts_.link.state().CaptionSaysConnected()) edited_while_down_ = true;
}

void EditorSession::NoteEdit() {
  NoteChangeWithoutEcu();
  if (map_changed_) return;
  map_changed_ = true;
  ShowMapInUse();
}

void EditorSession::SetMapInUse(const std::string& path, bool from_ecu) {
  map_path_ = path;
  map_from_ecu_ = from_ecu;
  map_changed_ = false;
  ShowMapInUse();
}

void EditorSession::ShowMapInUse() {
  QString name;
  if (!map_path_.empty()) {
    const std::size_t slash = map_path_.find_last_of("/\\");
    name = QString::fromStdString(slash == std::string::npos ? map_path_
                                                             : map_path_.substr(slash + 1));
    if (map_changed_) name += ", changed";
  } else if (map_from_ecu_) {
    name = map_changed_ ? "from the ECU, changed, not saved" : "from the ECU";
  }
  emit MapInUseChanged(name, QString::fromStdString(map_path_));
}

void EditorSession::SaveMap() {
  if (map_files_.SaveMap(state_) == MapFileResult::kDone) {
    emit MapFileSaved(QString::fromStdString(map_files_.last_path()));
    SetMapInUse(map_files_.last_path(), false);
  }
}

void EditorSession::LoadAndDownloadMap() {
  LinkSession& link = parts_.link;
  ApplyEnvironment env = Environment();
  MapDownloadTarget target{link.state(), mode_, image_, state_, env, download_};
  const bool was_offline = mode_.Offline;
  RecordPending();
  const CalibrationImage before = image_;
  const MapFileResult result = map_files_.LoadAndDownloadMap(target);
  if (mode_.Offline != was_offline) emit OfflineChanged(mode_.Offline);
  if (result != MapFileResult::kDone) return;
  send_queue_.Clear();
  static_cast<void>(history_.TakeRestorePoint(before, RestoreReason::kBeforeMapFile));
  static_cast<void>(history_.Record(EditKind::kMapFileLoaded, EditPlace::kWholeImage, image_,
                                    map_files_.last_path()));
  NoteChangeWithoutEcu();
  SetMapInUse(map_files_.last_path(), false);
  has_calibration_ = true;
  emit DownloadStatus(QString::fromStdString(std::string(kDownloadStatus)));
  emit EditorsFilled();
  ShowNotesLater();
}

void EditorSession::SetOffline(bool offline) {
  if (mode_.Offline == offline) return;
  mode_.Offline = offline;
  if (!offline) parts_.link.ForceUpload();
  emit OfflineChanged(offline);
}

void EditorSession::SetMapSelection(int choice) {
  // Through the set-up editor, so that the selection bits never go out beside a fuel load site
  // code that fails its check (the byte is refused whole; the pages show why).
  if (parts_.suppress_change_events || state_.setup.fuel_map_selection == choice) return;
  setup_editor_.Choose(SetupChoice::kMapSelection, choice);
}

}  // namespace vela

#include "moc_editor_session.cpp"
