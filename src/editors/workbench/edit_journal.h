// The edit journal: every change to the editors' calibration image is one entry holding the bytes
// before and after at each position it changed, so that undo, redo and a return to any entry put
// back exactly the bytes that were there. The journal only says which bytes to write; the caller
// writes them into the image and, connected, sends the cells they belong to like any other edit.
//
// A calibration taken from the ECU is a boundary: undoing it puts the editors' earlier image back
// on the PC only, and while the journal stands behind it nothing it returns is for the ECU (the
// ECU still holds what was read), and the image is to be shown as differing from the ECU.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "calibration/calibration_image.h"
#include "editors/setup/setup_editor.h"  // ByteWrite, a byte to write into the image

namespace vela {

enum class EditKind : std::uint8_t {
  kKeyStep = 1,
  kTypedOperation,
  kInterpolation,
  kSmoothing,
  kFill,
  kPaste,
  kSetupChange,
  kMapFileLoaded,
  kDownload,
  kTakenFromEcu,
  kRestore,
  kTakeOther,  // the other side's values taken from a comparison
};
inline constexpr int kEditKindCount = 12;

// Where a change was made: one map, the set-up pages, or the image as a whole.
enum class EditPlace : std::uint8_t { kFuelMap1 = 1, kFuelMap2, kIgnMap, kSetup, kWholeImage };
inline constexpr int kEditPlaceCount = 5;

// One changed image position (1 to 1023).
struct ByteChange {
  std::uint16_t position = 0;
  std::uint8_t before = 0;
  std::uint8_t after = 0;
  friend bool operator==(const ByteChange&, const ByteChange&) = default;
};

struct EditEntry {
  EditKind kind = EditKind::kKeyStep;
  EditPlace place = EditPlace::kWholeImage;
  std::vector<ByteChange> changes;  // ascending positions, each once, before != after
  std::string source;               // what the tuner typed or the file it came from
  std::int64_t time_ms = 0;         // wall clock, milliseconds since 1970
  friend bool operator==(const EditEntry&, const EditEntry&) = default;
};

// A whole cell (or set-up byte) to send: `width` bytes from `position`, as a little-endian value.
// A fuel map cell is 2 bytes, an ignition cell 1; a set-up byte is 1 and is not a map cell.
struct CellWrite {
  int position = 0;
  int width = 1;
  std::uint32_t value = 0;
  bool map_cell = false;
  friend bool operator==(const CellWrite&, const CellWrite&) = default;
};

// What an undo, a redo or a return asks of the caller.
struct JournalStep {
  std::vector<ByteWrite> writes;  // ascending positions, only bytes that change
  bool for_ecu = true;            // false: write the image only, send nothing
  bool differs_from_ecu = false;  // the image is now to be shown as differing from the ECU
};

// The positions where `before` and `after` differ.
std::vector<ByteChange> DiffImages(const CalibrationImage& before, const CalibrationImage& after);
void ApplyWrites(CalibrationImage& image, std::span<const ByteWrite> writes);
// The cells the writes touch, read from `written` (the image with the writes applied): a byte of
// a fuel map area sends its whole 2-byte cell (counted from the area's start), any other byte
// goes alone. Ascending positions, each cell once.
std::vector<CellWrite> CellsToSend(std::span<const ByteWrite> writes,
                                   const CalibrationImage& written);

class EditJournal {
 public:
  // A change from `before` to `after`, appended as the newest entry. Undone entries are dropped
  // first (a new change after an undo ends the redo branch). A change of no byte is not an entry,
  // except a download or a calibration taken from the ECU, which the history always shows.
  // Returns false when nothing was recorded.
  bool Record(EditKind kind, EditPlace place, const CalibrationImage& before,
              const CalibrationImage& after, std::string source, std::int64_t time_ms);
  // Appends an entry as it stands (its changes checked as Record makes them); false if refused.
  bool Append(EditEntry entry);

  bool CanUndo() const { return cursor_ > 0; }
  bool CanRedo() const { return cursor_ < entries_.size(); }
  // The newest applied entry's "before" bytes, or its "after" bytes for the first undone one;
  // nullopt when there is nothing to undo or redo.
  std::optional<JournalStep> Undo();
  std::optional<JournalStep> Redo();
  // To the state just after the first `applied` entries (0: before every entry) in one step: the
  // combined changes from now to there. nullopt when `applied` is beyond the entries.
  std::optional<JournalStep> ReturnTo(std::size_t applied);
  // The step ReturnTo would give, without moving.
  std::optional<JournalStep> PreviewReturn(std::size_t applied) const;

  const std::vector<EditEntry>& Entries() const { return entries_; }
  // How many entries are applied (the rest can be redone).
  std::size_t Applied() const { return cursor_; }
  // True while an applied-then-undone calibration taken from the ECU lies ahead of the cursor.
  bool BehindEcu() const { return BehindEcuAt(cursor_); }
  // Sets the entries and cursor read back from a journal file.
  void Restore(std::vector<EditEntry> entries, std::size_t applied);
  void Clear();

 private:
  bool BehindEcuAt(std::size_t cursor) const;

  std::vector<EditEntry> entries_;
  std::size_t cursor_ = 0;
};

// The changes of an entry are well formed: positions 1 to 1023, ascending, before != after.
bool ChangesWellFormed(const std::vector<ByteChange>& changes);

}  // namespace vela
