// The edit journal's file: each session of the program writes its journal to a file in the
// program folder as it grows, one record per entry or move, each pushed to the disk before the
// next, so that a crash, a kill or a power cut loses no step. The next start reads the last
// session's file back (every whole record; a torn or damaged last part is left out) and can offer
// the image it reached with its entries.
//
// The file: a 28-byte header ("VELAEDIT", version, part, session number, start time, CRC-32),
// then records of [length u32][type u8][payload][CRC-32 of all before it in the record], all
// numbers little-endian. The first record is the base image (the 1023 bytes before the file's
// first entry); then entries, moves of the undo cursor and, when the session ends, an end record.
// A later base record starts the history afresh from its image: the writer puts one when the
// tuner undoes past the file's first entry (after a new part began), and writes entries again
// when they are redone.
//
// Size: the journal keeps kEditJournalSlots files ("Edits1.journal" ...), one per session; a new
// session takes the slot of the oldest. A session whose file would pass kEditJournalPartBytes
// goes on in the next slot with a new part whose base is the image reached, so one session's
// history on disk then starts there (the history in memory is whole).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "base/file_system.h"
#include "base/journal_file.h"
#include "calibration/calibration_image.h"
#include "editors/workbench/edit_journal.h"

namespace vela {

inline constexpr std::string_view kEditJournalMagic = "VELAEDIT";
inline constexpr std::uint16_t kEditJournalVersion = 1;
inline constexpr std::size_t kEditJournalHeaderSize = 28;
inline constexpr int kEditJournalSlots = 5;
inline constexpr std::uint64_t kEditJournalPartBytes = 16u << 20;
// A longer source text is cut (at a character boundary) to this many bytes in the file.
inline constexpr std::size_t kEditJournalSourceBytes = 4096;

// The path of slot 1 to kEditJournalSlots in `folder`.
std::string EditJournalSlotPath(const std::string& folder, int slot);

struct EditJournalHeader {
  std::uint32_t session = 0;
  std::uint16_t part = 0;
  std::int64_t start_ms = 0;
};

// The file's pieces, for the writer and for tests that build files of their own.
std::string EncodeEditJournalHeader(const EditJournalHeader& header);
std::string EncodeBaseRecord(const CalibrationImage& image);
std::string EncodeEntryRecord(const EditEntry& entry);
std::string EncodeMoveRecord(std::size_t applied);
std::string EncodeEndRecord();
std::optional<EditJournalHeader> DecodeEditJournalHeader(std::string_view bytes);

class EditJournalWriter {
 public:
  // `folder` ends with its separator, as the program's folders do.
  EditJournalWriter(JournalFile& file, FileSystem& files, std::string folder,
                    std::uint64_t part_bytes = kEditJournalPartBytes)
      : file_(file), files_(files), folder_(std::move(folder)), part_bytes_(part_bytes) {}

  // A new session: its file goes to the slot of the oldest one, with `image` taken back to before
  // the journal's first entry as the base, then the journal's entries and cursor as they stand
  // (empty at a fresh start; the offered state when the tuner took it back). False when the file
  // cannot be made or pushed to the disk; the session then runs without a file.
  bool Begin(const CalibrationImage& image, const EditJournal& journal, std::int64_t time_ms);
  // After the journal took an entry, and after it moved its cursor (undo, redo, return), with
  // the image as it stands then.
  void WriteEntry(const EditJournal& journal, const CalibrationImage& image);
  void WriteMove(const EditJournal& journal, const CalibrationImage& image);
  // The session ends: the end record, and the file is closed.
  void End();

  bool Writing() const { return writing_ && ok_; }
  const std::string& path() const { return path_; }
  std::uint64_t BytesWritten() const { return bytes_; }

 private:
  bool StartPart(const CalibrationImage& base);
  // Appends `bytes` and pushes them to the disk; a failure stops every later write.
  void Write(const std::string& bytes);
  // A new part when `size` more bytes would take the file past its cap.
  bool RollFor(std::size_t size, const CalibrationImage& image, std::size_t applied);
  void Rebase(const CalibrationImage& image, std::size_t applied);

  JournalFile& file_;
  FileSystem& files_;
  std::string folder_;
  std::uint64_t part_bytes_;
  std::string path_;
  EditJournalHeader header_;
  std::uint64_t bytes_ = 0;
  // What the file says of the journal: its entries are the journal's from `first_` on, `count_`
  // of them, with `cursor_` applied.
  std::size_t first_ = 0;
  std::size_t count_ = 0;
  std::size_t cursor_ = 0;
  bool writing_ = false;
  bool ok_ = true;
};

struct ReplayReport {
  std::size_t records = 0;        // whole, valid records read (the header not counted)
  std::size_t ignored_bytes = 0;  // bytes after the last valid record
  bool torn = false;              // the file ends inside a record (a cut write)
  bool damaged = false;           // a whole record failed its check or made no sense
  bool closed = false;            // the session ended and wrote its end record
};

struct ReplayedJournal {
  EditJournalHeader header;
  CalibrationImage base;   // the image before the file's first entry
  CalibrationImage image;  // the last image reached
  EditJournal journal;     // the entries with their cursor
  ReplayReport report;
};

// The journal in `bytes`, up to the first record that is cut or fails its check; nullopt when
// the header or the base image is not whole.
std::optional<ReplayedJournal> ReplayEditJournal(std::string_view bytes);
// The newest session's newest part in `folder`, replayed; nullopt when there is none.
std::optional<ReplayedJournal> ReadLastEditJournal(FileSystem& files, const std::string& folder);

}  // namespace vela
