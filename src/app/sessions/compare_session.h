// A comparison of two of: the editors' image, the ECU's calibration as last read, a map file, a
// restore point. The first side (the base) is the editors' image unless the tuner chose
// another; the comparison follows both sides: it is worked out again whenever the editors'
// image changes (an edit, an undo) and whenever the ECU's calibration does (a new read). Each
// map page has its own view of it (current, other side, difference). With the editors' image as
// the base, the other side's values are taken into it as one edit and the differing cells are
// sent to the ECU; with another base the comparison only shows (compare_pair.h).
#pragma once

#include <QObject>
#include <QString>
#include <array>
#include <optional>

#include "app/sessions/editor_session.h"
#include "editors/compare/compare_pair.h"
#include "editors/workbench/image_compare.h"
#include "tune/fuel_proposal.h"

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

  // The sides the chooser offers; a restore point comes from the list of restore points.
  enum class Source { kEditors, kEcu, kMapFile };

  bool Comparing() const { return comparing_; }
  // The ECU's calibration has been read, so it can be compared with.
  bool EcuRead() const { return parts_.editors.ecu_image().has_value(); }
  const OtherSide& Side() const { return pair_.other; }
  const ComparePair& Pair() const { return pair_; }
  // The editors' image is the base: taking, sending and editing are allowed.
  bool Editable() const { return vela::Editable(pair_); }
  // The first side as the chooser offers it (the editors' image while a restore point is it).
  Source BaseSource() const {
    return pair_.base.kind == OtherSideKind::kEcu       ? Source::kEcu
           : pair_.base.kind == OtherSideKind::kMapFile ? Source::kMapFile
                                                        : Source::kEditors;
  }
  const ImageComparison& Comparison() const { return comparison_; }
  // The map's table of the comparison, null while nothing is compared.
  const TableComparison* Table(EditedMap map) const;

  CompareView View(EditedMap map) const { return views_[Index(map)]; }
  void SetView(EditedMap map, CompareView view);

  // Compares `base` with `other`. The ECU's calibration is refused, with a note, before one was
  // read; a map file is asked for (base first), and one that is no map or fails the map checks
  // is refused with its reasons. False, with the comparison as it was, when nothing changed.
  bool Compare(Source base, Source other);
  // Stops comparing; the base is the editors' image again.
  void StopComparing();

  // Compares the editors' image with itself holding `proposal`'s values (ProposedImage): the
  // other side follows every edit, so a taken cell no longer differs. A proposal already
  // compared with is replaced in place, the views kept.
  void CompareWithProposal(FuelProposal proposal);
  // The proposal compared with, null while the other side is no proposal.
  const FuelProposal* Proposal() const { return proposal_ ? &*proposal_ : nullptr; }

  // The other side's values taken into `grid` (the map's page grid), for its selection or the
  // whole map, under the rules of any edit (the duty cap, the map's range), as one journal entry.
  // Returns the note saying what was done, or why nothing was (the base is not the editors').
  QString TakeOther(EditedMap map, MapGridModel& grid, bool whole_map);
  // The editors' values of the map's differing cells sent to the ECU; returns the note.
  QString SendDifferences(EditedMap map);

 public slots:
  // Compares the base last chosen with a restore point: `name` as the list of restore points
  // shows it.
  void CompareWith(QString name, CalibrationImage image);

 signals:
  // The comparison was worked out again, its other side changed or a view changed.
  void Changed();
  // A short note for the status strip.
  void Note(const QString& text);

 private:
  static std::size_t Index(EditedMap map) { return static_cast<std::size_t>(map); }
  // A side picked for a comparison, with its image when it keeps one of its own.
  struct Picked {
    OtherSide side;
    std::optional<CalibrationImage> image;
  };
  std::optional<Picked> Pick(Source source, std::string_view file_title);
  std::optional<Picked> AskMapFile(std::string_view title);
  bool Start(Picked base, Picked other);
  void Recompute();
  // A side's image now: the editors' as edited, the ECU's as last read (it follows every new
  // read), or the side's own.
  const CalibrationImage* ImageOf(const OtherSide& side,
                                  const std::optional<CalibrationImage>& own) const;

  CompareSessionParts parts_;
  bool comparing_ = false;
  ComparePair pair_;
  std::optional<CalibrationImage> base_;   // a map file's image as the base
  std::optional<CalibrationImage> other_;  // a map file's or a restore point's image
  ImageComparison comparison_;
  std::array<CompareView, kMapPages> views_{};
  std::optional<FuelProposal> proposal_;
};

}  // namespace vela
