#include "app/sessions/edit_history.h"

#include <QDateTime>
#include <algorithm>

#include "editors/history/history_words.h"

namespace vela {

EditHistory::EditHistory(FileSystem& files, const ProgramFolders& folders, QObject* parent)
    : QObject(parent),
      files_(files),
      folder_(folders.program),
      writer_(file_, files, folders.program),
      restore_points_(files, RestorePoints::FolderIn(folders)) {}

EditHistory::~EditHistory() { writer_.End(); }

std::int64_t EditHistory::Now() { return QDateTime::currentMSecsSinceEpoch(); }

void EditHistory::BeginFile(const CalibrationImage& image) {
  recorded_ = image;
  static_cast<void>(writer_.Begin(image, journal_, Now()));
}

std::optional<ReplayedJournal> EditHistory::LastSession() {
  std::optional<ReplayedJournal> last = ReadLastEditJournal(files_, folder_);
  if (!last) return std::nullopt;
  // Calibrations read from the ECU and downloads alone are nothing of the tuner's to take back:
  // the ECU holds them.
  const std::vector<EditEntry>& entries = last->journal.Entries();
  const bool tuners_own = std::any_of(entries.begin(), entries.end(), [](const EditEntry& e) {
    return e.kind != EditKind::kTakenFromEcu && e.kind != EditKind::kDownload;
  });
  if (!tuners_own) return std::nullopt;
  return last;
}

void EditHistory::TakeBack(const ReplayedJournal& last) {
  journal_.Restore(last.journal.Entries(), last.journal.Applied());
  recorded_ = last.image;
  emit Changed();
}

bool EditHistory::Record(EditKind kind, EditPlace place, const CalibrationImage& image,
                         std::string source) {
  if (!journal_.Record(kind, place, recorded_, image, std::move(source), Now())) return false;
  recorded_ = image;
  writer_.WriteEntry(journal_, image);
  emit Changed();
  return true;
}

std::optional<JournalStep> EditHistory::Moved(std::optional<JournalStep> step,
                                              const CalibrationImage& image) {
  if (!step) return step;
  recorded_ = image;
  ApplyWrites(recorded_, step->writes);
  writer_.WriteMove(journal_, recorded_);
  emit Changed();
  return step;
}

std::optional<JournalStep> EditHistory::Undo(const CalibrationImage& image) {
  return Moved(journal_.Undo(), image);
}

std::optional<JournalStep> EditHistory::Redo(const CalibrationImage& image) {
  return Moved(journal_.Redo(), image);
}

std::optional<JournalStep> EditHistory::ReturnTo(std::size_t applied,
                                                 const CalibrationImage& image) {
  return Moved(journal_.ReturnTo(applied), image);
}

RestorePoints::Taken EditHistory::TakeRestorePoint(const CalibrationImage& image,
                                                   RestoreReason reason) {
  RestorePoints::Taken taken = restore_points_.Take(image, reason, Now());
  if (taken.outcome == RestorePoints::Outcome::kWritten || !taken.thinned.empty()) {
    emit RestorePointsChanged();
  }
  if (reason == RestoreReason::kOnRequest || taken.outcome == RestorePoints::Outcome::kFailed ||
      !taken.thinned.empty() || !taken.not_removed.empty()) {
    emit Note(QString::fromStdString(TakenText(taken)));
  }
  return taken;
}

}  // namespace vela

#include "moc_edit_history.cpp"
