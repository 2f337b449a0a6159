// The recording journal: whatever was flushed before a crash or a power cut comes back at the
// next start; a saved or declined log leaves nothing behind.
#include "datalog/files/journal.h"

#include <gtest/gtest.h>

#include "datalog/datalog_test_support.h"
#include "support/platform_fakes.h"

namespace vela {
namespace {

constexpr const char* kJournal = "/d/Recording.journal";

struct Recording {
  Recording() {
    for (int n = 0; n < kChannelCount; ++n) log.SetActive(n, n != 7);
    journal.Begin(log);
  }
  // Records ten a second, each arriving on the clock at its log time.
  void Records(std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
      ChannelValues values{};
      const double t = 0.1 * static_cast<double>(log.RecordCount() + 1);
      for (int n = 0; n < kChannelCount; ++n) values[n] = n * 10.0 + t;
      log.Append(t, t, values, 0b111101111111);
    }
  }
  // What the next start finds on the disk: everything appended (a crash or a kill) or only what
  // was synced (a power cut).
  std::optional<RecoveredLog> Recover(bool power_cut = false) {
    testing::MemoryFileSystem disk;
    if (!file.removed) {
      disk.files[kJournal] = power_cut ? file.bytes.substr(0, file.synced) : file.bytes;
    }
    return ReadJournal(disk, kJournal);
  }
  DatalogLog log;
  testing::MemoryJournalFile file;
  DatalogJournal journal{file, kJournal};
};

TEST(Journal, AfterACrashEveryFlushedRecordComesBackAndTheRestIsLost) {
  Recording r;
  r.Records(30);
  r.journal.Flush(r.log);
  r.Records(1500);
  r.journal.Flush(r.log);
  r.Records(12);  // after the last flush: lost with the crash
  const std::optional<RecoveredLog> found = r.Recover(true);
  ASSERT_TRUE(found);
  EXPECT_EQ(found->log.RecordCount(), 1530u);
  EXPECT_FALSE(found->report.has_end);
  EXPECT_EQ(found->log.Times().back(), r.log.Times()[1529]);
  EXPECT_EQ(found->log.Series(5).values[1000], r.log.Series(5).values[1000]);
  EXPECT_FALSE(found->log.Series(7).active);
  EXPECT_EQ(found->log.Series(7).points, 0u);
}

TEST(Journal, MarkersAndChannelChangesMadeWhileLoggingAreKept) {
  Recording r;
  r.Records(10);
  r.log.AddMarker("full throttle");
  r.log.SetActive(2, false);
  r.journal.Flush(r.log);
  r.Records(10);
  r.log.AddMarker("lift");
  r.journal.Flush(r.log);
  r.journal.Flush(r.log);  // nothing new: nothing written twice
  const std::optional<RecoveredLog> found = r.Recover();
  ASSERT_TRUE(found);
  EXPECT_TRUE(testing::SameRecords(found->log, r.log));  // markers and series states included
}

TEST(Journal, AStoppedLogIsClosedWholeAndASavedOneLeavesNothing) {
  Recording r;
  r.Records(100);
  r.journal.End(r.log);
  EXPECT_FALSE(r.file.open);
  std::optional<RecoveredLog> found = r.Recover();
  ASSERT_TRUE(found);
  EXPECT_TRUE(found->report.Intact());
  EXPECT_EQ(found->log.RecordCount(), 100u);
  r.journal.Discard();
  EXPECT_FALSE(r.Recover());
}

TEST(Journal, AJournalWithoutRecordsOffersNothingAndANewLogStartsItAfresh) {
  Recording r;
  EXPECT_FALSE(r.Recover());
  r.Records(5);
  r.journal.Flush(r.log);
  r.log.Clear();
  r.journal.Begin(r.log);
  r.Records(3);
  r.journal.Flush(r.log);
  const std::optional<RecoveredLog> found = r.Recover();
  ASSERT_TRUE(found);
  EXPECT_EQ(found->log.RecordCount(), 3u);
}

TEST(Journal, ARecordIsWrittenByTheTimeItIsHalfASecondOldAndNoSooner) {
  Recording r;
  r.Records(4);  // arrived at 0.1 .. 0.4 s
  EXPECT_FALSE(r.journal.FlushIfDue(r.log, 0.55));
  EXPECT_TRUE(r.journal.FlushIfDue(r.log, 0.61));  // the oldest, at 0.1 s, is half a second old
  EXPECT_EQ(r.Recover()->log.RecordCount(), 4u);
  EXPECT_EQ(r.file.synced, r.file.bytes.size());
  EXPECT_FALSE(r.journal.FlushIfDue(r.log, 5.0));  // nothing left to write
  r.log.AddMarker("lift");  // a marker alone goes half a second after the last write
  EXPECT_FALSE(r.journal.FlushIfDue(r.log, 0.9));
  EXPECT_TRUE(r.journal.FlushIfDue(r.log, 1.2));
  EXPECT_EQ(r.Recover()->log.Markers().size(), 1u);
}

// A stream of 60 frames a second whose journal is asked at every frame, as the DataLogging tab
// asks it: whenever the program is killed, the journal on the disk lacks at most the last half
// second of records and one frame.
TEST(Journal, AKillAtAnyMomentLosesAtMostHalfASecondAndAFrame) {
  testing::MemoryJournalFile file;
  DatalogJournal journal(file, kJournal);
  DatalogLog log;
  journal.Begin(log);
  ChannelValues values{};
  double worst = 0.0;
  for (int i = 1; i <= 600; ++i) {
    const double now = i / 60.0;
    log.Append(now * 1.002, now, values, 1);
    journal.FlushIfDue(log, now);
    if (i % 7 != 0) continue;
    testing::MemoryFileSystem disk;
    disk.files[kJournal] = file.bytes;  // what a kill now leaves
    const std::optional<RecoveredLog> found = ReadJournal(disk, kJournal);
    const double kept = found ? found->log.Arrivals().back() : 0.0;
    worst = std::max(worst, now - kept);
  }
  EXPECT_LE(worst, kJournalFlushAgeSeconds + 1.0 / 60 + 1e-9);
  EXPECT_GT(worst, kJournalFlushAgeSeconds - 1.0 / 60);
}

// A journal that cannot be made, or whose first push the disk refuses (full, or failing), is
// said to be missing and writes nothing; one whose push fails later writes nothing more.
TEST(Journal, AJournalTheDiskWillNotTakeIsSaidSoAndStopsWriting) {
  for (const bool at_create : {true, false}) {
    testing::MemoryJournalFile file;
    (at_create ? file.fail_create : file.fail_sync) = true;
    DatalogJournal journal(file, kJournal);
    DatalogLog log = testing::PatternLog(10);
    EXPECT_FALSE(journal.Begin(log));
    const std::size_t begun = file.bytes.size();
    journal.Flush(log);
    EXPECT_EQ(file.bytes.size(), begun);
  }

  Recording r;
  r.Records(5);
  r.journal.Flush(r.log);
  const std::size_t synced = r.file.synced;
  r.file.fail_sync = true;
  r.Records(5);
  r.journal.Flush(r.log);
  const std::size_t appended = r.file.bytes.size();
  r.file.fail_sync = false;
  r.Records(5);
  r.journal.Flush(r.log);
  r.journal.End(r.log);
  EXPECT_EQ(r.file.bytes.size(), appended);
  EXPECT_EQ(r.file.synced, synced);
  EXPECT_EQ(r.Recover()->log.RecordCount(), 10u);
}

}  // namespace
}  // namespace vela
