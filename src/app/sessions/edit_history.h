// The editors' history: every change to the calibration image becomes one entry of the edit
// journal, written to the journal file as it is made; undo, redo and a return to any entry say
// which bytes to put back; restore points are taken and listed. The editors' session owns one
// and tells it of every change; it writes the image and sends the cells itself.
#pragma once

#include <QObject>
#include <cstdint>
#include <optional>
#include <string>

#include "base/file_system.h"
#include "base/program_folders.h"
#include "calibration/calibration_image.h"
#include "datalog/qt/journal_file.h"
#include "editors/workbench/edit_journal.h"
#include "editors/workbench/edit_journal_file.h"
#include "editors/workbench/restore_points.h"

namespace vela {

class EditHistory : public QObject {
  Q_OBJECT

 public:
  EditHistory(FileSystem& files, const ProgramFolders& folders, QObject* parent = nullptr);
  ~EditHistory() override;

  const EditJournal& journal() const { return journal_; }
  RestorePoints& restore_points() { return restore_points_; }

  // The journal file of this session, starting from `image` (the editors' image at start, or the
  // last session's state when the tuner took it back with TakeBack first).
  void BeginFile(const CalibrationImage& image);
  // The last session's journal, read back; nullopt when there is none or it holds only
  // calibrations read from the ECU and downloads.
  std::optional<ReplayedJournal> LastSession();
  // Continues the last session: its entries and cursor become this session's journal.
  void TakeBack(const ReplayedJournal& last);

  // One change from the image as last recorded to `image`. Returns false when no entry was made
  // (nothing changed, and the kind is not one the history always shows).
  bool Record(EditKind kind, EditPlace place, const CalibrationImage& image, std::string source);
  // True when `image` holds changes not yet recorded.
  bool Unrecorded(const CalibrationImage& image) const {
    return image.Bytes() != recorded_.Bytes();
  }

  // Undo, redo and return: the step to apply to the image (the history already counts it done).
  std::optional<JournalStep> Undo(const CalibrationImage& image);
  std::optional<JournalStep> Redo(const CalibrationImage& image);
  std::optional<JournalStep> ReturnTo(std::size_t applied, const CalibrationImage& image);

  // A restore point of `image`. Its outcome is said (Note) when the tuner asked for it, when it
  // failed, and whenever points were thinned or could not be removed: none goes unsaid.
  RestorePoints::Taken TakeRestorePoint(const CalibrationImage& image, RestoreReason reason);

  // Milliseconds since 1970, the time every entry and restore point carries.
  static std::int64_t Now();

 signals:
  void Changed();
  // The restore points on disk changed (one written, some thinned).
  void RestorePointsChanged();
  // What taking a restore point did, in the tuner's words.
  void Note(const QString& text);

 private:
  std::optional<JournalStep> Moved(std::optional<JournalStep> step, const CalibrationImage& image);

  FileSystem& files_;
  std::string folder_;
  EditJournal journal_;
  CalibrationImage recorded_;  // the image as of the newest applied entry
  QtJournalFile file_;
  EditJournalWriter writer_;
  RestorePoints restore_points_;
};

}  // namespace vela
