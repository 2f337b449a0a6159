// The history panel's "Restore Points" tab: the restore points on disk, newest first, with their
// time (local) and reason; a point is taken on request, restored whole or one map at a time (one
// journal entry each, sent to the ECU like any edit) or handed on for comparison.
#pragma once

#include <QLabel>
#include <QTableWidget>
#include <QWidget>
#include <optional>
#include <vector>

#include "calibration/calibration_image.h"
#include "editors/workbench/edit_journal.h"
#include "editors/workbench/restore_points.h"

namespace vela {

class EditorSession;

class RestorePointsTab : public QWidget {
  Q_OBJECT

 public:
  RestorePointsTab(EditorSession& session, QWidget* parent = nullptr);

  // Reads the folder again; the chosen point stays chosen when it is still there.
  void Refresh();
  QTableWidget* list() const { return list_; }

 signals:
  // The tuner asked to compare the editors' calibration with this point's image.
  void CompareRequested(const QString& name, const CalibrationImage& image);
  // What an action did, for the panel's note line.
  void Note(const QString& text);

 private:
  QWidget* BuildButtons();
  std::optional<RestorePoint> Chosen() const;
  // The chosen point's image; says why when there is none.
  std::optional<CalibrationImage> ChosenImage();
  void TakePoint();
  void Restore(EditPlace place);
  void Compare();

  EditorSession& session_;
  QTableWidget* list_;
  std::vector<RestorePoint> points_;  // as listed, newest first
};

}  // namespace vela
