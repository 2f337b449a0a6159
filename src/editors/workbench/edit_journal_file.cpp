#include "editors/workbench/edit_journal_file.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "base/crc32.h"
#include "base/file_bytes.h"

namespace vela {

namespace {

enum class RecordType : std::uint8_t { kBase = 1, kEntry = 2, kMove = 3, kEnd = 4 };

// Length, type and CRC around a payload.
constexpr std::size_t kRecordOverhead = 9;
// No record is near this long; a longer length is damage, not a record to wait for.
constexpr std::uint32_t kMaxPayload = 1u << 20;
constexpr std::size_t kEntryFixedBytes = 14;  // kind, place, time, source length, change count

using file_bytes::Get;
using file_bytes::Put;

std::string Record(RecordType type, std::string_view payload) {
  std::string record;
  record.reserve(kRecordOverhead + payload.size());
  Put<std::uint32_t>(record, static_cast<std::uint32_t>(payload.size()));
  Put<std::uint8_t>(record, static_cast<std::uint8_t>(type));
  record.append(payload);
  Put<std::uint32_t>(record, Crc32(record));
  return record;
}

// At most kEditJournalSourceBytes, never ending inside a UTF-8 character.
std::string_view CutSource(std::string_view source) {
  if (source.size() <= kEditJournalSourceBytes) return source;
  std::size_t end = kEditJournalSourceBytes;
  while (end > 0 && (static_cast<unsigned char>(source[end]) & 0xC0) == 0x80) --end;
  return source.substr(0, end);
}

}  // namespace

std::string EditJournalSlotPath(const std::string& folder, int slot) {
  return folder + "Edits" + std::to_string(slot) + ".journal";
}

std::string EncodeEditJournalHeader(const EditJournalHeader& header) {
  std::string bytes(kEditJournalMagic);
  Put<std::uint16_t>(bytes, kEditJournalVersion);
  Put<std::uint16_t>(bytes, header.part);
  Put<std::uint32_t>(bytes, header.session);
  Put<std::int64_t>(bytes, header.start_ms);
  Put<std::uint32_t>(bytes, Crc32(bytes));
  return bytes;
}

std::optional<EditJournalHeader> DecodeEditJournalHeader(std::string_view bytes) {
  if (bytes.size() < kEditJournalHeaderSize || !bytes.starts_with(kEditJournalMagic)) return {};
  if (Crc32(bytes.substr(0, 24)) != Get<std::uint32_t>(bytes, 24)) return {};
  if (Get<std::uint16_t>(bytes, 8) != kEditJournalVersion) return {};
  return EditJournalHeader{Get<std::uint32_t>(bytes, 12), Get<std::uint16_t>(bytes, 10),
                           Get<std::int64_t>(bytes, 16)};
}

std::string EncodeBaseRecord(const CalibrationImage& image) {
  const CalibrationImage::Block& block = image.Bytes();
  return Record(RecordType::kBase,
                std::string_view(reinterpret_cast<const char*>(block.data()), block.size()));
}

std::string EncodeEntryRecord(const EditEntry& entry) {
  const std::string_view source = CutSource(entry.source);
  std::string payload;
  payload.reserve(kEntryFixedBytes + source.size() + 4 * entry.changes.size());
  Put<std::uint8_t>(payload, static_cast<std::uint8_t>(entry.kind));
  Put<std::uint8_t>(payload, static_cast<std::uint8_t>(entry.place));
  Put<std::int64_t>(payload, entry.time_ms);
  Put<std::uint16_t>(payload, static_cast<std::uint16_t>(source.size()));
  payload.append(source);
  Put<std::uint16_t>(payload, static_cast<std::uint16_t>(entry.changes.size()));
  for (const ByteChange& c : entry.changes) {
    Put<std::uint16_t>(payload, c.position);
    Put<std::uint8_t>(payload, c.before);
    Put<std::uint8_t>(payload, c.after);
  }
  return Record(RecordType::kEntry, payload);
}

std::string EncodeMoveRecord(std::size_t applied) {
  std::string payload;
  Put<std::uint32_t>(payload, static_cast<std::uint32_t>(applied));
  return Record(RecordType::kMove, payload);
}

std::string EncodeEndRecord() { return Record(RecordType::kEnd, {}); }

// ---- Writing ----

void EditJournalWriter::Write(const std::string& bytes) {
  if (ok_) ok_ = file_.Append(bytes);
  if (ok_) ok_ = file_.Sync();
  if (ok_) bytes_ += bytes.size();
}

// The slot that holds no journal, or else the oldest session's oldest part.
bool EditJournalWriter::StartPart(const CalibrationImage& base) {
  int empty = 0;
  int oldest_slot = 1;
  std::optional<EditJournalHeader> oldest;
  for (int slot = 1; slot <= kEditJournalSlots && empty == 0; ++slot) {
    const FileHead head =
        files_.ReadHead(EditJournalSlotPath(folder_, slot), kEditJournalHeaderSize);
    const std::optional<EditJournalHeader> found =
        head.kind == FileHead::Kind::kFile ? DecodeEditJournalHeader(head.bytes) : std::nullopt;
    if (!found) {
      empty = slot;
    } else if (!oldest ||
               std::pair(found->session, found->part) < std::pair(oldest->session, oldest->part)) {
      oldest = found;
      oldest_slot = slot;
    }
  }
  const int chosen = empty != 0 ? empty : oldest_slot;
  if (writing_) file_.Close();
  path_ = EditJournalSlotPath(folder_, chosen);
  ok_ = file_.Create(path_);
  writing_ = ok_;
  bytes_ = 0;
  Write(EncodeEditJournalHeader(header_) + EncodeBaseRecord(base));
  return ok_;
}

// The newest session number among the slots, so that a new session is numbered after it.
bool EditJournalWriter::Begin(const CalibrationImage& image, const EditJournal& journal,
                              std::int64_t time_ms) {
  std::uint32_t newest = 0;
  for (int slot = 1; slot <= kEditJournalSlots; ++slot) {
    const FileHead head =
        files_.ReadHead(EditJournalSlotPath(folder_, slot), kEditJournalHeaderSize);
    if (head.kind != FileHead::Kind::kFile) continue;
    if (auto found = DecodeEditJournalHeader(head.bytes)) newest = std::max(newest, found->session);
  }
  header_ = {newest + 1, 0, time_ms};
  CalibrationImage base = image;
  if (auto back = journal.PreviewReturn(0)) ApplyWrites(base, back->writes);
  ok_ = true;
  if (!StartPart(base)) return false;
  std::string history;
  for (const EditEntry& entry : journal.Entries()) history += EncodeEntryRecord(entry);
  if (journal.CanRedo()) history += EncodeMoveRecord(journal.Applied());
  if (!history.empty()) Write(history);
  first_ = 0;
  count_ = journal.Entries().size();
  cursor_ = journal.Applied();
  return ok_;
}

bool EditJournalWriter::RollFor(std::size_t size, const CalibrationImage& image,
                                std::size_t applied) {
  if (bytes_ + size <= part_bytes_) return false;
  ++header_.part;
  StartPart(image);
  first_ = applied;
  count_ = cursor_ = 0;
  return true;
}

void EditJournalWriter::Rebase(const CalibrationImage& image, std::size_t applied) {
  if (RollFor(kRecordOverhead + kImageLength, image, applied)) return;
  Write(EncodeBaseRecord(image));
  first_ = applied;
  count_ = cursor_ = 0;
}

void EditJournalWriter::WriteEntry(const EditJournal& journal, const CalibrationImage& image) {
  if (!Writing() || journal.Applied() == 0) return;
  const std::size_t applied = journal.Applied();
  if (applied - 1 < first_) return Rebase(image, applied);
  const std::string record = EncodeEntryRecord(journal.Entries()[applied - 1]);
  if (RollFor(record.size(), image, applied)) return;
  Write(record);
  count_ = cursor_ = applied - first_;
}

// A move within the file's entries is a move record; one before them starts the history afresh
// from the image; one beyond them (a redo of entries the file no longer holds) writes them again.
void EditJournalWriter::WriteMove(const EditJournal& journal, const CalibrationImage& image) {
  if (!Writing()) return;
  const std::size_t applied = journal.Applied();
  if (applied < first_) return Rebase(image, applied);
  std::string records;
  if (applied > first_ + count_) {
    if (cursor_ != count_) records += EncodeMoveRecord(count_);
    for (std::size_t n = first_ + count_; n < applied; ++n) {
      records += EncodeEntryRecord(journal.Entries()[n]);
    }
    count_ = applied - first_;
  } else {
    records += EncodeMoveRecord(applied - first_);
  }
  if (RollFor(records.size(), image, applied)) return;
  Write(records);
  cursor_ = applied - first_;
}

void EditJournalWriter::End() {
  if (!writing_) return;
  Write(EncodeEndRecord());
  file_.Close();
  writing_ = false;
}

// ---- Reading ----

namespace {

std::optional<EditEntry> DecodeEntry(std::string_view p) {
  if (p.size() < kEntryFixedBytes) return std::nullopt;
  EditEntry entry;
  const int kind = Get<std::uint8_t>(p, 0);
  const int place = Get<std::uint8_t>(p, 1);
  if (kind < 1 || kind > kEditKindCount || place < 1 || place > kEditPlaceCount) return {};
  entry.kind = static_cast<EditKind>(kind);
  entry.place = static_cast<EditPlace>(place);
  entry.time_ms = Get<std::int64_t>(p, 2);
  const std::size_t source_size = Get<std::uint16_t>(p, 10);
  if (p.size() < kEntryFixedBytes + source_size) return std::nullopt;
  entry.source = std::string(p.substr(12, source_size));
  const std::size_t at = 12 + source_size;
  const std::size_t count = Get<std::uint16_t>(p, at);
  if (p.size() != at + 2 + 4 * count) return std::nullopt;
  entry.changes.resize(count);
  for (std::size_t n = 0; n < count; ++n) {
    const std::size_t c = at + 2 + 4 * n;
    entry.changes[n] = {Get<std::uint16_t>(p, c), Get<std::uint8_t>(p, c + 2),
                        Get<std::uint8_t>(p, c + 3)};
  }
  return entry;
}

// The entry's "before" bytes are what the image holds: a record that says otherwise cannot be
// part of this history.
bool Fits(const EditEntry& entry, const CalibrationImage& image) {
  for (const ByteChange& c : entry.changes) {
    if (image.Byte(c.position) != c.before) return false;
  }
  return true;
}

// One record's effect on the replay; false when it makes no sense where it stands.
bool ApplyRecord(RecordType type, std::string_view payload, ReplayedJournal& out) {
  switch (type) {
    case RecordType::kBase: {
      if (payload.size() != kImageLength) return false;
      out.image.Assign(
          std::span(reinterpret_cast<const std::uint8_t*>(payload.data()), payload.size()));
      out.base = out.image;
      out.journal.Clear();
      return true;
    }
    case RecordType::kEntry: {
      std::optional<EditEntry> entry = DecodeEntry(payload);
      if (!entry || !Fits(*entry, out.image)) return false;
      std::vector<ByteWrite> writes;
      for (const ByteChange& c : entry->changes) writes.push_back({c.position, c.after});
      if (!out.journal.Append(std::move(*entry))) return false;
      ApplyWrites(out.image, writes);
      return true;
    }
    case RecordType::kMove: {
      if (payload.size() != 4) return false;
      const std::optional<JournalStep> step = out.journal.ReturnTo(Get<std::uint32_t>(payload, 0));
      if (step) ApplyWrites(out.image, step->writes);
      return step.has_value();
    }
    case RecordType::kEnd:
      out.report.closed = true;
      return payload.empty();
  }
  return false;
}

}  // namespace

std::optional<ReplayedJournal> ReplayEditJournal(std::string_view bytes) {
  const std::optional<EditJournalHeader> header = DecodeEditJournalHeader(bytes);
  if (!header) return std::nullopt;
  ReplayedJournal out;
  out.header = *header;
  std::size_t at = kEditJournalHeaderSize;
  while (at < bytes.size()) {
    const std::string_view rest = bytes.substr(at);
    if (rest.size() < kRecordOverhead) {
      out.report.torn = true;
      break;
    }
    const std::uint32_t length = Get<std::uint32_t>(rest, 0);
    if (length > kMaxPayload) {
      out.report.damaged = true;
      break;
    }
    if (rest.size() < kRecordOverhead + length) {
      out.report.torn = true;
      break;
    }
    const std::string_view checked = rest.substr(0, 5 + length);
    const auto type = static_cast<RecordType>(Get<std::uint8_t>(rest, 4));
    const bool first = out.report.records == 0;
    if (Crc32(checked) != Get<std::uint32_t>(rest, 5 + length) ||
        (first && type != RecordType::kBase) || !ApplyRecord(type, checked.substr(5), out)) {
      out.report.damaged = true;
      break;
    }
    ++out.report.records;
    at += kRecordOverhead + length;
  }
  out.report.ignored_bytes = bytes.size() - at;
  if (out.report.records == 0) return std::nullopt;
  return out;
}

std::optional<ReplayedJournal> ReadLastEditJournal(FileSystem& files, const std::string& folder) {
  std::optional<std::pair<std::uint32_t, std::uint16_t>> newest;
  std::string path;
  for (int slot = 1; slot <= kEditJournalSlots; ++slot) {
    const std::string slot_path = EditJournalSlotPath(folder, slot);
    const FileHead head = files.ReadHead(slot_path, kEditJournalHeaderSize);
    if (head.kind != FileHead::Kind::kFile) continue;
    const std::optional<EditJournalHeader> found = DecodeEditJournalHeader(head.bytes);
    if (!found || (newest && std::pair(found->session, found->part) <= *newest)) continue;
    newest = std::pair(found->session, found->part);
    path = slot_path;
  }
  if (!newest) return std::nullopt;
  const std::optional<std::string> bytes = files.ReadFile(path);
  if (!bytes) return std::nullopt;
  return ReplayEditJournal(*bytes);
}

}  // namespace vela
