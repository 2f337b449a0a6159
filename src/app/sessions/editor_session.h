// The editors at work: the editors' state and the program's calibration image, a received
// calibration applied to them, every edited cell written into the image and sent at once, map
// files saved and loaded, the download with its progress window, and off-line mode.
#pragma once

#include <QDialog>
#include <QLabel>
#include <QObject>
#include <QProgressBar>
#include <QTimer>
#include <functional>
#include <optional>
#include <vector>

#include "app/sessions/edit_history.h"
#include "base/platform.h"
#include "base/startup_trace.h"
#include "calibration/calibration_image.h"
#include "editors/apply_calibration.h"
#include "editors/compensation/compensation_tables.h"
#include "editors/compensation/temperature_sensors.h"
#include "editors/editor_state.h"
#include "editors/map_file.h"
#include "editors/mapgrid/cell_transmission.h"
#include "editors/setup/setup_editor.h"
#include "editors/workbench/cell_send_queue.h"
#include "editors/workbench/edit_journal.h"
#include "link/link_state.h"
#include "link/transfer/download.h"

namespace vela {

class LinkSession;
class MapGridModel;

// Passes commands on unless the program is off-line: then nothing reaches the ECU.
class OfflineGate : public CommandSender {
 public:
  OfflineGate(CommandSender& inner, const ProgramMode& mode) : inner_(inner), mode_(mode) {}
  [[nodiscard]] SendResult Send(const CommandFrame& frame) override;

 private:
  CommandSender& inner_;
  const ProgramMode& mode_;
};

// Passes commands on and notes each edit, so that one made while no ECU listens is remembered.
class EditSender : public CommandSender {
 public:
  EditSender(CommandSender& inner, std::function<void()> on_send)
      : inner_(inner), on_send_(std::move(on_send)) {}
  [[nodiscard]] SendResult Send(const CommandFrame& frame) override {
    on_send_();
    return inner_.Send(frame);
  }

 private:
  CommandSender& inner_;
  std::function<void()> on_send_;
};

// `Form3`: the download progress window.
class DownloadProgressWindow : public QDialog {
  Q_OBJECT

 public:
  explicit DownloadProgressWindow(QWidget* parent = nullptr);
  void SetWidth(double width);

 private:
  QProgressBar* bar_;
};

struct EditorSessionParts {
  LinkSession& link;
  StartupTrace& status;
  MessageSink& messages;
  FileDialogs& dialogs;
  FileSystem& files;
  const ProgramFolders& folders;
  bool& suppress_change_events;
};

// Which map a grid edits.
enum class EditedMap { kFuel1, kFuel2, kIgnition };
EditPlace PlaceOf(EditedMap map);
int MapStartOf(EditedMap map);

// Hands the frames of a change of many cells to the send queue instead of the line: the cells
// then go out a few at a time (see CellSendQueue).
class QueueingSender : public CommandSender {
 public:
  QueueingSender(CellSendQueue& queue, const CalibrationImage& image)
      : queue_(queue), image_(image) {}
  [[nodiscard]] SendResult Send(const CommandFrame& frame) override;

 private:
  CellSendQueue& queue_;
  const CalibrationImage& image_;
};

class EditorSession : public QObject {
  Q_OBJECT

 public:
  EditorSession(EditorSessionParts parts, QWidget* window);

  EditorState& state() { return state_; }
  const CalibrationImage& image() const { return image_; }
  bool has_calibration() const { return has_calibration_; }
  // The map file the calibration was loaded from or saved to; empty when none.
  const std::string& map_path() const { return map_path_; }
  Download& download() { return download_; }
  // The folder the program's file dialogs last showed (maps and datalogs share it).
  FileDialogMemory& dialog_memory() { return dialog_memory_; }

  // A complete block from the ECU. Ignored while off-line, so a tuner's off-line edits are never
  // replaced behind their back. When changes were made while the ECU was not connected or the
  // program was off-line, and the ECU's block differs from the editors' calibration, the tuner is
  // asked which one wins. A block that arrives while that question is open waits for the answer.
  // The notes of the application (the "PC Software Update" message) are shown after it, once
  // the event that brought the block is handled.
  void ApplyUpload(const CalibrationImage& image);
  // The tuner changed `cells` of `map`'s grid: cap, write into the image and send.
  void CellsEdited(EditedMap map, MapGridModel& grid, const std::vector<MapCell>& cells);
  // A change of many cells of `map`'s grid, already made in the grid under the map's rules
  // (ApplyTargets): the cells are written into the image, queued for the ECU and journaled as
  // one entry of `kind` with `source` (what the tuner typed, where it came from).
  void CellsBulkEdited(EditedMap map, MapGridModel& grid, const std::vector<MapCell>& changed,
                       EditKind kind, std::string source);
  // Bytes taken into the image from elsewhere (the other side of a comparison, a restore point):
  // written, queued for the ECU, shown in the editors and journaled as one entry.
  void BytesEdited(const std::vector<ByteWrite>& writes, EditKind kind, EditPlace place,
                   std::string source);

  // Journals the changes the set-up, compensation and sensor editors have made since the last
  // entry as ONE entry of `kind` (an operation on many cells of a table, made through the
  // editor's own change path), instead of a set-up change once their frames are out. False when
  // nothing changed.
  bool RecordNow(EditKind kind, EditPlace place, std::string source);
  // A short note for the status strip (what an operation did, or why it did nothing).
  void Note(const QString& text) { emit HistoryNote(text); }

  // Sends the cells at these image positions (their first bytes) as the image holds them, through
  // the send queue: a comparison's differing cells, nothing changed in the image.
  void SendCells(const std::vector<int>& positions);

  // The edit history: undo, redo and a return to any entry put the image back and, connected,
  // send the cells that change; off-line they are noted like other off-line work. False when
  // there was nothing to undo or redo.
  EditHistory& history() { return history_; }
  bool Undo();
  bool Redo();
  bool ReturnTo(std::size_t applied);
  // The cells waiting to go to the ECU after a change of many cells.
  const CellSendQueue& send_queue() const { return send_queue_; }
  // The ECU's calibration as last read, or none yet.
  const std::optional<CalibrationImage>& ecu_image() const { return ecu_image_; }
  // At start: offers the last session's state back when its journal holds entries, then starts
  // this session's journal file.
  void OfferLastSession();
  void SaveMap();
  void LoadAndDownloadMap();
  void SetOffline(bool offline);
  void SetMapSelection(int choice);
  // True while the ECU may hold another calibration than the one shown: a download did not
  // complete and the whole image has not been sent again since.
  bool EcuOutOfStep() const { return ecu_out_of_step_; }

  // The set-up, compensation and sensor table editors: each change goes into the state and the
  // image and is sent at once.
  SetupEditor& setup_editor() { return setup_editor_; }
  CompensationEditor& compensation_editor() { return compensation_editor_; }
  SensorTableSender& sensor_tables() { return sensor_tables_; }
  bool& suppress_change_events() { return parts_.suppress_change_events; }
  MessageSink& messages() { return parts_.messages; }

 signals:
  // The editors' state was filled from a calibration: grids and lists must be shown again.
  void EditorsFilled();
  void OfflineChanged(bool offline);
  void DownloadStatus(const QString& text);
  void EcuOutOfStepChanged(bool out_of_step);
  // The calibration the editors hold: the map file's name (or where it came from) and its path.
  void MapInUseChanged(const QString& name, const QString& path);
  // Cells of a change of many cells went out: `sent` of `total`; total 0 when the queue is idle.
  void SendProgress(int sent, int total);
  // An undo, redo or return changed only this map's values: its grid must be shown again, and
  // nothing else (EditorsFilled stands for every other step).
  void MapRefilled(EditedMap map);
  // A short note for the status strip: what an undo, a redo, a restore point or an operation on
  // a compensation table did.
  void HistoryNote(const QString& text);
  // The calibration was saved as this map file (before MapInUseChanged names it).
  void MapFileSaved(const QString& path);

 private:
  ApplyEnvironment Environment();
  // One block from the ECU; false when the editors' calibration goes down to the ECU instead.
  bool ApplyEcuBlock(const CalibrationImage& image);
  // The upload prepared the link (864 <- 8, then 15); applying its block ends with the live-rate
  // command. A block whose calibration is replaced by a download ends it here.
  void EndUploadPreparation();
  // Shows the notes the last application left once the current event is handled.
  void ShowNotesLater();
  // True when the tuner chose to send the editors' calibration instead of taking the ECU's.
  bool KeepEditsOver(const CalibrationImage& ecu_image);
  // A download ended after its line failed: says so, and offers to send the image again.
  void DownloadInterrupted();
  void DownloadWhole();
  // A change made while no ECU listens (not connected, or off-line): when an ECU's calibration
  // arrives next and differs, the tuner is asked which one wins.
  void NoteChangeWithoutEcu();
  // Every edit: remembered for the ECU's return, and the map in use is marked changed.
  void NoteEdit();
  void SetMapInUse(const std::string& path, bool from_ecu);
  void ShowMapInUse();
  void SetOutOfStep(bool out_of_step);
  // Puts a history step into the image and the editors and queues what the ECU must get.
  void ApplyStep(const JournalStep& step, const QString& what);
  // Journals changes made through the set-up, compensation and sensor editors.
  void RecordPending();
  void DrainQueue();
  void RefillEditors();
  // After a history step: only the map it lay in when it stayed inside one map's cells (far
  // cheaper than refilling every page), else every editor.
  void RefillAfter(const std::vector<ByteWrite>& writes);
  TransmissionSetup TransmissionSetupOf(EditedMap map) const;
  static std::string KeyStepSource(const MapGridModel& grid);
  // The grid's values into the editors' state.
  void TakeGridValues(EditedMap map, const MapGridModel& grid);

  EditorSessionParts parts_;
  EditorState state_;
  CalibrationImage image_;
  bool has_calibration_ = false;
  bool applying_upload_ = false;                 // ApplyUpload is at work (a question may be open)
  std::optional<CalibrationImage> newer_block_;  // arrived while it was
  std::vector<CalibrationNote> notes_;           // to show once the application is done
  bool edited_while_down_ = false;               // changes made while no ECU was listening
  bool ecu_out_of_step_ = false;
  bool resend_when_back_ = false;  // the tuner asked for the whole image once the ECU is back
  std::string map_path_;           // the map file in use, empty when none
  bool map_from_ecu_ = false;      // the calibration was read from the ECU
  bool map_changed_ = false;       // edited since it was read, saved or loaded
  ProgramMode mode_;
  OfflineGate gate_;
  HeldEdits held_edits_;  // a download holds the editors' changes until it has ended
  EditSender edit_sender_;
  SetupEditor setup_editor_;
  CompensationEditor compensation_editor_;
  SensorTableSender sensor_tables_;
  CellTransmission transmission_;
  DownloadProgressWindow progress_;
  QTimer download_timer_;
  Download download_;
  FileDialogMemory dialog_memory_;
  MapFiles map_files_;
  EditHistory history_;
  std::optional<CalibrationImage> ecu_image_;
  CellSendQueue send_queue_;
  QueueingSender queueing_sender_;
  CellTransmission bulk_transmission_;
  QTimer send_timer_;
  bool record_pending_ = false;
};

}  // namespace vela
