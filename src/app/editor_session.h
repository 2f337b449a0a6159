// The editors at work: the editors' state and the program's calibration image, a received
// calibration applied to them, every edited cell written into the image and sent at once, map
// files saved and loaded, the download with its progress window, and off-line mode.
#pragma once

#include <QDialog>
#include <QLabel>
#include <QObject>
#include <QProgressBar>
#include <QTimer>

#include "calibration/calibration_image.h"
#include "editors/apply_calibration.h"
#include "editors/editor_state.h"
#include "editors/map_file.h"
#include "editors/mapgrid/cell_transmission.h"
#include "link/download.h"
#include "link/link_state.h"
#include "shell/platform.h"
#include "shell/startup_trace.h"

namespace vela {

class LinkSession;
class MapGridModel;

// Passes commands on unless the program is off-line: then nothing reaches the ECU.
class OfflineGate : public CommandSender {
 public:
  OfflineGate(CommandSender& inner, const ProgramMode& mode) : inner_(inner), mode_(mode) {}
  void CommsSend(int command, int address, std::int32_t value, bool& pre_wait, bool& reserved,
                 int command2, int address2, std::int32_t value2, bool& slower) override;

 private:
  CommandSender& inner_;
  const ProgramMode& mode_;
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

class EditorSession : public QObject {
  Q_OBJECT

 public:
  EditorSession(EditorSessionParts parts, QWidget* window);

  EditorState& state() { return state_; }
  const CalibrationImage& image() const { return image_; }
  bool has_calibration() const { return has_calibration_; }
  Download& download() { return download_; }
  // The folder the program's file dialogs last showed (maps and datalogs share it).
  FileDialogMemory& dialog_memory() { return dialog_memory_; }

  // A complete block from the ECU. Ignored while off-line, so a tuner's off-line edits are never
  // replaced behind their back. When cells were changed while the ECU was not connected and the
  // ECU's block differs from the editors' calibration, the tuner is asked which one wins.
  void ApplyUpload(const CalibrationImage& image);
  // The tuner changed `cells` of `map`'s grid: cap, write into the image and send.
  void CellsEdited(EditedMap map, MapGridModel& grid, const std::vector<MapCell>& cells);
  void SaveMap();
  void LoadAndDownloadMap();
  void SetOffline(bool offline);
  void SetMapSelection(int choice);

 signals:
  // The editors' state was filled from a calibration: grids and lists must be shown again.
  void EditorsFilled();
  void OfflineChanged(bool offline);
  void DownloadStatus(const QString& text);

 private:
  ApplyEnvironment Environment();
  // True when the tuner chose to send the editors' calibration instead of taking the ECU's.
  bool KeepEditsOver(const CalibrationImage& ecu_image);

  EditorSessionParts parts_;
  EditorState state_;
  CalibrationImage image_;
  bool has_calibration_ = false;
  bool edited_while_down_ = false;  // cells changed while no ECU was listening
  ProgramMode mode_;
  OfflineGate gate_;
  CellTransmission transmission_;
  DownloadProgressWindow progress_;
  QTimer download_timer_;
  Download download_;
  FileDialogMemory dialog_memory_;
  MapFiles map_files_;
};

}  // namespace vela
