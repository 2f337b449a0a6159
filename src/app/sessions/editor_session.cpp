#include "app/sessions/editor_session.h"

#include <QVBoxLayout>

#include "app/sessions/link_session.h"
#include "editors/mapgrid/map_grid_model.h"

namespace vela {

namespace {

constexpr std::string_view kEditsWhileDownLines[] = {
    "The map was changed while the ECU was not connected, and the ECU holds a different map.",
    "Send the changed map to the ECU now? (No takes the ECU's map; the changes are lost.)"};
constexpr std::string_view kInterruptedLines[] = {
    "The download did not complete: the link to the ECU failed while the map was being sent.",
    "The ECU may now run on part of the new map and part of the old one.",
    "Send the whole map again as soon as the ECU is back?"};
}  // namespace

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
      edit_sender_(held_edits_, [this] { NoteEdit(); }),
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
      map_files_(parts.files, parts.dialogs, parts.messages, parts.folders, dialog_memory_) {
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
  if (send_down) {
    EndUploadPreparation();
    DownloadWhole();
    return false;
  }
  SetOutOfStep(false);
  // The ECU's calibration, unless it is the one the editors already show (a map sent down).
  if (!has_calibration_ || image.Bytes() != image_.Bytes()) SetMapInUse(std::string(), true);
  image_ = image;
  has_calibration_ = true;
  state_.SetupErrors.clear();
  ApplyEnvironment env = Environment();
  ApplyUploadedCalibration(image_, CalibrationSource::kUpload, state_, env);
  emit EditorsFilled();
  return true;
}

void EditorSession::CellsEdited(EditedMap map, MapGridModel& grid,
                                const std::vector<MapCell>& cells) {
  if (parts_.suppress_change_events) return;
  NoteEdit();
  TransmissionSetup setup;
  setup.map_start = map == EditedMap::kFuel1   ? kFuelMap1Start
                    : map == EditedMap::kFuel2 ? kFuelMap2Start
                                               : kIgnMapStart;
  setup.ignition_divide = state_.setup.ignition_divide;
  setup.third_injection_mode = state_.setup.fuel_mode == kFuelModeSequential;
  transmission_.OnCellsChanged(grid, cells, setup);
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
    SetMapInUse(map_files_.last_path(), false);
  }
}

void EditorSession::LoadAndDownloadMap() {
  LinkSession& link = parts_.link;
  ApplyEnvironment env = Environment();
  MapDownloadTarget target{link.state(), mode_, image_, state_, env, download_};
  const bool was_offline = mode_.Offline;
  const MapFileResult result = map_files_.LoadAndDownloadMap(target);
  if (mode_.Offline != was_offline) emit OfflineChanged(mode_.Offline);
  if (result != MapFileResult::kDone) return;
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
