#include "editors/workbench/edit_journal_file.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>

#include "base/crc32.h"
#include "support/platform_fakes.h"
#include "workbench/test_images.h"

namespace vela {
namespace {

using testing::Noise;

using ::vela::testing::MemoryFileSystem;

const std::string kFolder = "/prog/";

// Appends land in the memory file system's file; counts the pushes to the disk.
class MemoryJournalFile : public JournalFile {
 public:
  explicit MemoryJournalFile(MemoryFileSystem& files) : files_(files) {}
  bool Create(const std::string& path) override {
    path_ = path;
    files_.files[path].clear();
    return true;
  }
  bool Append(std::string_view bytes) override {
    files_.files[path_].append(bytes);
    ++appends;
    return true;
  }
  bool Sync() override { return ++syncs, true; }
  void Close() override {}
  bool Remove(const std::string& path) override { return files_.files.erase(path) > 0; }

  int appends = 0;
  int syncs = 0;

 private:
  MemoryFileSystem& files_;
  std::string path_;
};

// A session as the program runs it: each change and move goes to the journal, then the file.
struct Session {
  MemoryFileSystem files;
  MemoryJournalFile file{files};
  EditJournalWriter writer;
  CalibrationImage image = Noise(1);
  EditJournal journal;
  std::vector<std::size_t> record_ends;  // the file's size after each record

  explicit Session(std::uint64_t part_bytes = kEditJournalPartBytes)
      : writer(file, files, kFolder, part_bytes) {}

  void Begin(std::int64_t time_ms = 5) {
    EXPECT_TRUE(writer.Begin(image, journal, time_ms));
    record_ends.push_back(FileBytes().size());
  }
  void Edit(EditKind kind, const std::function<void(CalibrationImage&)>& change) {
    CalibrationImage after = image;
    change(after);
    if (!journal.Record(kind, EditPlace::kWholeImage, image, after, "*1.05", 1234)) return;
    image = after;
    writer.WriteEntry(journal, image);
    record_ends.push_back(FileBytes().size());
  }
  void Move(std::optional<JournalStep> step) {
    if (step) ApplyWrites(image, step->writes);
    writer.WriteMove(journal, image);
    record_ends.push_back(FileBytes().size());
  }
  const std::string& FileBytes() { return files.files[writer.path()]; }
};

void SomeWork(Session& s) {
  s.Edit(EditKind::kKeyStep, [](auto& i) { i.SetFuelMs(1, 2, 3, 4.5); });
  s.Edit(EditKind::kMapFileLoaded, [](auto& i) { i = Noise(2); });
  s.Edit(EditKind::kSetupChange, [](auto& i) { i.Write16(900, 6500); });
  s.Move(s.journal.Undo());
  s.Move(s.journal.Undo());
  s.Move(s.journal.Redo());
  s.Edit(EditKind::kPaste, [](auto& i) { i.SetIgnDegrees(1, 1, 12); });
  s.Edit(EditKind::kTakenFromEcu, [](auto& i) { i = Noise(3); });
  s.Edit(EditKind::kTakeOther, [](auto& i) { i.SetFuelMs(2, 4, 4, 7.25); });
  s.Move(s.journal.ReturnTo(1));
}

void ExpectSameState(const ReplayedJournal& replayed, const Session& s) {
  EXPECT_EQ(replayed.image.Bytes(), s.image.Bytes());
  EXPECT_EQ(replayed.journal.Entries(), s.journal.Entries());
  EXPECT_EQ(replayed.journal.Applied(), s.journal.Applied());
}

TEST(EditJournalFileTest, EveryStepIsOnTheDiskAndReadsBackExactly) {
  Session s;
  s.Begin();
  SomeWork(s);
  EXPECT_EQ(s.file.syncs, s.file.appends) << "each record is pushed to the disk on its own";
  const std::optional<ReplayedJournal> replayed = ReadLastEditJournal(s.files, kFolder);
  ASSERT_TRUE(replayed);
  ExpectSameState(*replayed, s);
  EXPECT_EQ(replayed->base.Bytes(), Noise(1).Bytes());
  EXPECT_EQ(replayed->journal.Entries()[0].source, "*1.05");
  EXPECT_EQ(replayed->journal.Entries()[0].time_ms, 1234);
  EXPECT_FALSE(replayed->report.closed);
  s.writer.End();
  EXPECT_TRUE(ReadLastEditJournal(s.files, kFolder)->report.closed);
}

// A kill in the middle of the last write: every cut keeps the records before it.
TEST(EditJournalFileTest, CutInsideTheLastRecordKeepsTheWholeOnes) {
  Session s;
  s.Begin();
  SomeWork(s);
  const CalibrationImage reached = s.image;
  s.Edit(EditKind::kFill, [](auto& i) { i.SetByte(800, i.Byte(800) + 1); });
  const std::string whole = s.FileBytes();
  const std::size_t last_start = s.record_ends[s.record_ends.size() - 2];
  for (std::size_t cut = last_start; cut < whole.size(); ++cut) {
    const std::optional<ReplayedJournal> replayed =
        ReplayEditJournal(std::string_view(whole).substr(0, cut));
    ASSERT_TRUE(replayed) << cut;
    EXPECT_EQ(replayed->image.Bytes(), reached.Bytes()) << cut;
    EXPECT_EQ(replayed->report.records, s.record_ends.size() - 1) << cut;
    EXPECT_EQ(replayed->report.torn, cut != last_start) << cut;
    EXPECT_EQ(replayed->report.ignored_bytes, cut - last_start) << cut;
  }
  EXPECT_EQ(ReplayEditJournal(whole)->image.Bytes(), s.image.Bytes());
}

TEST(EditJournalFileTest, DamagedRecordEndsTheReplayThere) {
  Session s;
  s.Begin();
  s.Edit(EditKind::kKeyStep, [](auto& i) { i.SetByte(10, i.Byte(10) + 1); });
  const CalibrationImage first = s.image;
  s.Edit(EditKind::kKeyStep, [](auto& i) { i.SetByte(11, i.Byte(11) + 1); });
  s.Edit(EditKind::kKeyStep, [](auto& i) { i.SetByte(12, i.Byte(12) + 1); });
  std::string bytes = s.FileBytes();
  bytes[s.record_ends[1] + 12] ^= 0x01;  // inside the second entry
  const std::optional<ReplayedJournal> replayed = ReplayEditJournal(bytes);
  ASSERT_TRUE(replayed);
  EXPECT_TRUE(replayed->report.damaged);
  EXPECT_EQ(replayed->journal.Entries().size(), 1u);
  EXPECT_EQ(replayed->image.Bytes(), first.Bytes());

  std::string header_hit = s.FileBytes();
  header_hit[9] ^= 0x40;
  EXPECT_FALSE(ReplayEditJournal(header_hit));
  EXPECT_FALSE(ReplayEditJournal(s.FileBytes().substr(0, s.record_ends[0] - 1)))
      << "no whole base image, nothing to offer";
  std::string huge = s.FileBytes();
  huge[s.record_ends[0] + 3] = '\x7f';  // a length no record has
  EXPECT_TRUE(ReplayEditJournal(huge)->report.damaged);
}

// A kind is stored as its number, so files written before a kind was added read the same: the
// numbers of the kinds never move, and a number beyond the last kind is a damaged record.
TEST(EditJournalFileTest, KindNumbersStayAndAnUnknownKindIsDamage) {
  Session s;
  s.Begin();
  s.Edit(EditKind::kRestore, [](auto& i) { i.SetByte(10, i.Byte(10) + 1); });
  s.Edit(EditKind::kTakeOther, [](auto& i) { i.SetByte(11, i.Byte(11) + 1); });
  const std::string bytes = s.FileBytes();
  const std::size_t kind_at = 5;  // after the payload length and the record type
  EXPECT_EQ(bytes[s.record_ends[0] + kind_at], 11) << "a restore, as in the first files";
  EXPECT_EQ(bytes[s.record_ends[1] + kind_at], 12);
  EXPECT_EQ(ReplayEditJournal(bytes)->journal.Entries().back().kind, EditKind::kTakeOther);

  // The last record rewritten with kind 13, its check sum made right.
  std::string unknown = bytes;
  const std::size_t start = s.record_ends[1];
  unknown[start + kind_at] = 13;
  const std::size_t checked = unknown.size() - start - 4;
  const std::uint32_t crc = Crc32(std::string_view(unknown).substr(start, checked));
  for (int b = 0; b < 4; ++b) unknown[start + checked + b] = static_cast<char>(crc >> (8 * b));
  const std::optional<ReplayedJournal> replayed = ReplayEditJournal(unknown);
  ASSERT_TRUE(replayed);
  EXPECT_TRUE(replayed->report.damaged);
  EXPECT_EQ(replayed->journal.Entries().size(), 1u);
}

// A new session takes the oldest session's slot; the newest is the one read back, and a session
// resumed from it carries its history and redo branch on.
TEST(EditJournalFileTest, SessionsRotateThroughTheSlotsAndResume) {
  Session s;
  for (int n = 1; n <= kEditJournalSlots + 1; ++n) {
    s.journal.Clear();
    s.Begin(n);
    s.Edit(EditKind::kKeyStep, [&](auto& i) { i.SetByte(n, i.Byte(n) + 1); });
  }
  EXPECT_EQ(s.writer.path(), EditJournalSlotPath(kFolder, 1));
  EXPECT_EQ(s.files.files.size(), static_cast<std::size_t>(kEditJournalSlots));
  std::optional<ReplayedJournal> last = ReadLastEditJournal(s.files, kFolder);
  ASSERT_TRUE(last);
  EXPECT_EQ(last->header.session, static_cast<std::uint32_t>(kEditJournalSlots + 1));

  SomeWork(s);
  Session next;
  next.files = s.files;
  last = ReadLastEditJournal(next.files, kFolder);
  next.image = last->image;
  next.journal = last->journal;
  next.Begin();
  EXPECT_EQ(next.writer.path(), EditJournalSlotPath(kFolder, 2));
  ExpectSameState(*ReadLastEditJournal(next.files, kFolder), s);
}

// With a small cap the session goes on in new parts and starts its history afresh when undone
// past a part's start; after every step the file on the disk gives the image reached.
TEST(EditJournalFileTest, PartsAndFreshStartsKeepTheImageReached) {
  Session s(3000);
  s.Begin();
  std::mt19937 random(5);
  for (int n = 0; n < 400; ++n) {
    const int roll = static_cast<int>(random() % 10);
    const int p = 1 + static_cast<int>(random() % kImageLength);
    if (roll < 5 || s.journal.Entries().empty()) {
      s.Edit(EditKind::kKeyStep, [&](auto& i) { i.SetByte(p, i.Byte(p) + 1 + roll); });
    } else if (roll < 7) {
      if (s.journal.CanUndo()) s.Move(s.journal.Undo());
    } else if (roll < 9) {
      if (s.journal.CanRedo()) s.Move(s.journal.Redo());
    } else {
      s.Move(s.journal.ReturnTo(random() % (s.journal.Entries().size() + 1)));
    }
    const std::optional<ReplayedJournal> replayed = ReadLastEditJournal(s.files, kFolder);
    ASSERT_TRUE(replayed) << n;
    ASSERT_EQ(replayed->image.Bytes(), s.image.Bytes()) << n;
  }
  EXPECT_GT(s.files.files.size(), 1u);
}

}  // namespace
}  // namespace vela
