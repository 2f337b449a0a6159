// The history panel (Ctrl-J on any page): a window of its own beside the main window, driven by
// keyboard. "Changes" lists the edit journal, oldest first; Enter or "Return to here" on a row
// puts the calibration back to just after it in one step (on the ECU too), Undo and Redo step one
// entry. "Restore Points" lists the restore points (see RestorePointsTab).
#pragma once

#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <QTabWidget>
#include <QTableView>

#include "calibration/calibration_image.h"

namespace vela {

class EditorSession;
class HistoryTableModel;
class RestorePointsTab;

class HistoryPanel : public QDialog {
  Q_OBJECT

 public:
  explicit HistoryPanel(EditorSession& session, QWidget* parent = nullptr);

  // Shows the panel in front with the row the calibration stands at chosen.
  void Open();

  QTableView* changes() const { return changes_; }
  HistoryTableModel* model() const { return model_; }
  RestorePointsTab* restore_points() const { return restore_points_; }
  QTabWidget* tabs() const { return tabs_; }

 signals:
  // A restore point to compare with the editors' calibration (see RestorePointsTab).
  void CompareRequested(const QString& name, const CalibrationImage& image);

 private:
  bool eventFilter(QObject* watched, QEvent* event) override;
  QWidget* BuildChangesTab();
  void AddShortcuts();
  void ReturnToChosen();
  void ShowPosition();
  void ShowNote(const QString& text);

  EditorSession& session_;
  HistoryTableModel* model_;
  QTabWidget* tabs_;
  QTableView* changes_ = nullptr;
  QLabel* position_ = nullptr;
  QLabel* note_ = nullptr;
  RestorePointsTab* restore_points_ = nullptr;
};

}  // namespace vela
