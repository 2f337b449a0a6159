#include "editors/workbench/edit_journal.h"

#include <array>
#include <utility>

namespace vela {

namespace {

constexpr int kFuelAreaEnds[] = {kFuelMap1Start + kFuelMapAreaLength - 1,
                                 kFuelMap2Start + kFuelMapAreaLength - 1};

// The first position of the fuel cell holding `position`, or 0 outside the fuel map areas.
int FuelCellStart(int position) {
  for (int map = 0; map < 2; ++map) {
    const int start = map == 0 ? kFuelMap1Start : kFuelMap2Start;
    if (position >= start && position <= kFuelAreaEnds[map]) {
      return start + (position - start) / 2 * 2;
    }
  }
  return 0;
}

bool InIgnArea(int position) {
  return position >= kIgnMapStart && position < kIgnMapStart + kIgnMapAreaLength;
}

bool RecordedWhenUnchanged(EditKind kind) {
  return kind == EditKind::kDownload || kind == EditKind::kTakenFromEcu;
}

}  // namespace

std::vector<ByteChange> DiffImages(const CalibrationImage& before, const CalibrationImage& after) {
  std::vector<ByteChange> changes;
  for (int p = 1; p <= kImageLength; ++p) {
    if (before.Byte(p) != after.Byte(p)) {
      changes.push_back({static_cast<std::uint16_t>(p), before.Byte(p), after.Byte(p)});
    }
  }
  return changes;
}

void ApplyWrites(CalibrationImage& image, std::span<const ByteWrite> writes) {
  for (const ByteWrite& w : writes) image.SetByte(w.position, w.value);
}

std::vector<CellWrite> CellsToSend(std::span<const ByteWrite> writes,
                                   const CalibrationImage& written) {
  std::vector<CellWrite> cells;
  for (const ByteWrite& w : writes) {
    CellWrite cell;
    if (const int start = FuelCellStart(w.position); start != 0) {
      cell = {start, 2, written.Read16(start), true};
    } else {
      cell = {w.position, 1, written.Byte(w.position), InIgnArea(w.position)};
    }
    // Writes come in ascending order, so both bytes of a fuel cell arrive one after the other.
    if (!cells.empty() && cells.back().position == cell.position) continue;
    cells.push_back(cell);
  }
  return cells;
}

bool ChangesWellFormed(const std::vector<ByteChange>& changes) {
  int last = 0;
  for (const ByteChange& c : changes) {
    if (c.position <= last || !CalibrationImage::IsPosition(c.position) || c.before == c.after) {
      return false;
    }
    last = c.position;
  }
  return true;
}

bool EditJournal::Record(EditKind kind, EditPlace place, const CalibrationImage& before,
                         const CalibrationImage& after, std::string source, std::int64_t time_ms) {
  return Append({kind, place, DiffImages(before, after), std::move(source), time_ms});
}

bool EditJournal::Append(EditEntry entry) {
  if (!ChangesWellFormed(entry.changes)) return false;
  if (entry.changes.empty() && !RecordedWhenUnchanged(entry.kind)) return false;
  entries_.resize(cursor_);
  entries_.push_back(std::move(entry));
  cursor_ = entries_.size();
  return true;
}

std::optional<JournalStep> EditJournal::Undo() {
  if (!CanUndo()) return std::nullopt;
  return ReturnTo(cursor_ - 1);
}

std::optional<JournalStep> EditJournal::Redo() {
  if (!CanRedo()) return std::nullopt;
  return ReturnTo(cursor_ + 1);
}

std::optional<JournalStep> EditJournal::ReturnTo(std::size_t applied) {
  std::optional<JournalStep> step = PreviewReturn(applied);
  if (step) cursor_ = applied;
  return step;
}

// Going back, each position ends at the "before" of the earliest entry crossed that changed it;
// going forward, at the "after" of the latest. It starts at the other end's value, and only the
// positions whose value moves are written.
std::optional<JournalStep> EditJournal::PreviewReturn(std::size_t applied) const {
  if (applied > entries_.size()) return std::nullopt;
  constexpr int kUntouched = -1;
  std::array<int, kImageLength + 1> now;
  std::array<int, kImageLength + 1> then;
  now.fill(kUntouched);
  then.fill(kUntouched);
  const bool back = applied < cursor_;
  const std::size_t low = back ? applied : cursor_;
  const std::size_t high = back ? cursor_ : applied;
  for (std::size_t n = 0; n < high - low; ++n) {
    // Crossed in the direction of travel: newest first going back, oldest first going forward.
    const EditEntry& entry = entries_[back ? high - 1 - n : low + n];
    for (const ByteChange& c : entry.changes) {
      if (now[c.position] == kUntouched) now[c.position] = back ? c.after : c.before;
      then[c.position] = back ? c.before : c.after;
    }
  }
  JournalStep step;
  for (int p = 1; p <= kImageLength; ++p) {
    if (then[p] != now[p]) step.writes.push_back({p, static_cast<std::uint8_t>(then[p])});
  }
  step.for_ecu = !BehindEcuAt(cursor_) && !BehindEcuAt(applied);
  step.differs_from_ecu = BehindEcuAt(applied);
  return step;
}

bool EditJournal::BehindEcuAt(std::size_t cursor) const {
  for (std::size_t n = entries_.size(); n > cursor; --n) {
    if (entries_[n - 1].kind == EditKind::kTakenFromEcu) return true;
  }
  return false;
}

void EditJournal::Restore(std::vector<EditEntry> entries, std::size_t applied) {
  entries_ = std::move(entries);
  cursor_ = applied <= entries_.size() ? applied : entries_.size();
}

void EditJournal::Clear() {
  entries_.clear();
  cursor_ = 0;
}

}  // namespace vela
