// The target air-fuel ratios the program tunes the fuel maps towards: one table on the fuel maps'
// axes, kept in a file beside the map file in use (street.sm1 -> street.afr.csv), or in the
// program folder's default file while the calibration came from the ECU or from nowhere. Every
// change is written at once; the tuner's changes have an undo history of their own. Nothing of
// this goes to the ECU.
//
// Readers (the heat map's AFR error, the fuel proposal) take table() and follow Changed().
#pragma once

#include <QObject>
#include <QString>
#include <string>
#include <vector>

#include "tune/target/target_edits.h"
#include "tune/target/target_table.h"

namespace vela {

class EditorSession;
class FileSystem;
class MessageSink;

// The file the targets live in while no map file is in use, in `program_folder`.
std::string DefaultTargetPath(const std::string& program_folder);

class TargetSession : public QObject {
  Q_OBJECT

 public:
  // Follows the editors: a map file opened or saved under a new name, a calibration read from
  // the ECU, a set-up that moves the fuel maps' axes.
  TargetSession(EditorSession& editors, FileSystem& files, MessageSink& messages,
                std::string program_folder, QObject* parent = nullptr);

  // The targets in force, on the fuel maps' axes of the editors' calibration (rows from the
  // highest RPM, as the fuel grids show them).
  const TargetTable& table() const { return edits_.Table(); }
  // The table on `axes`: itself when it stands on them, else moved onto them as Follow() moves
  // it (a reader may ask between the editors' change and the session's following it).
  TargetTable TableOn(const TuneAxes& axes) const;
  // The file the targets are kept in, and the map file it belongs to (empty: the default file).
  const std::string& path() const { return path_; }
  const std::string& map_path() const { return map_path_; }

  // A change by the tuner: the whole new table, written at once; one undo step. False when the
  // table equals the present one.
  bool Change(const TargetTable& table, const QString& what);
  // The default targets (DefaultTargetAfr) on the present axes, as one undo step.
  bool ResetToDefault();
  bool Undo();
  bool Redo();
  bool CanUndo() const { return edits_.CanUndo(); }
  bool CanRedo() const { return edits_.CanRedo(); }

  // Reads the targets kept for `map_path` (empty: the default file) on `axes`. A missing file
  // gives the default targets; a refused one too, with its reasons shown, and the file is left as
  // it is. Called by the editors' signals; public for a caller that knows better.
  void Open(const std::string& map_path, const TuneAxes& axes);
  // Opens the file of the editors' map file when another is in use (or none was opened yet), or
  // carries the targets over to the fuel maps' present axes when the set-up moved them.
  void Follow();

 signals:
  // The table in force changed (an edit, an undo, another file, other axes).
  void Changed();
  // A short note for the status strip: what a change did, or why a write failed.
  void Note(const QString& text);

 private:
  void SavedAs(const std::string& map_path);
  void Write();

  EditorSession& editors_;
  FileSystem& files_;
  MessageSink& messages_;
  std::string program_folder_;
  std::string map_path_;
  std::string path_;
  bool opened_ = false;
  TargetEdits edits_;
};

}  // namespace vela
