// A comparison of the editors' image with another: the ECU's calibration as last read, a map
// file or a restore point. The comparison follows both sides: it is worked out again whenever
// the editors' image changes (an edit, an undo) and whenever the other side does (a new read of
// the ECU's calibration). Each map page has its own view of it (current, other side,
// difference). From it the other side's values are taken into the editors' image as one edit,
// and the differing cells are sent to the ECU.
#pragma once

#include <QObject>
#include <QString>
#include <array>
#include <optional>

#include "app/sessions/editor_session.h"
#include "editors/compare/compare_texts.h"
#include "editors/workbench/image_compare.h"

namespace vela {

struct CompareSessionParts {
  EditorSession& editors;
  FileDialogs& dialogs;
  FileSystem& files;
  MessageSink& messages;
  const ProgramFolders& folders;
};

class CompareSession : public QObject {
  Q_OBJECT

 public:
  static constexpr int kMapPages = 3;  // fuel map 1, fuel map 2, ignition, in EditedMap's order

  explicit CompareSession(CompareSessionParts parts, QObject* parent = nullptr);

  bool Comparing() const { return comparing_; }
  // The ECU's calibration has been read, so it can be compared with.
  bool EcuRead() const { return parts_.editors.ecu_image().has_value(); }
  const OtherSide& Side() const { return side_; }
  const ImageComparison& Comparison() const { return comparison_; }
  // The map's table of the comparison, null while nothing is compared.
  const TableComparison* Table(EditedMap map) const;

  CompareView View(EditedMap map) const { return views_[Index(map)]; }
  void SetView(EditedMap map, CompareView view);

  // Compares with the ECU's calibration as last read; false, with a note, before one was read.
  bool CompareWithEcu();
  // Asks for a map file and compares with it; a file that is no map or fails the map checks is
  // refused with its reasons. False when nothing changed.
  bool CompareWithMapFile();
  void StopComparing();

  // The other side's values taken into `grid` (the map's page grid), for its selection or the
  // whole map, under the rules of any edit (the duty cap, the map's range), as one journal entry.
  // Returns the note saying what was done.
  QString TakeOther(EditedMap map, MapGridModel& grid, bool whole_map);
  // The editors' values of the map's differing cells sent to the ECU; returns the note.
  QString SendDifferences(EditedMap map);

 public slots:
  // Compares with a restore point: `name` as the list of restore points shows it.
  void CompareWith(QString name, CalibrationImage image);

 signals:
  // The comparison was worked out again, its other side changed or a view changed.
  void Changed();
  // A short note for the status strip.
  void Note(const QString& text);

 private:
  static std::size_t Index(EditedMap map) { return static_cast<std::size_t>(map); }
  void Start(OtherSide side, std::optional<CalibrationImage> image);
  void Recompute();
  // The other side's image now: the ECU's as last read follows every new read.
  const CalibrationImage* TheirImage() const;

  CompareSessionParts parts_;
  bool comparing_ = false;
  OtherSide side_;
  std::optional<CalibrationImage> other_;  // a map file's or a restore point's image
  ImageComparison comparison_;
  std::array<CompareView, kMapPages> views_{};
};

}  // namespace vela
