// A damaged chart file gives back every whole block whatever else is damaged, and says exactly
// what it lost: a damaged series block, a zeroed header, a damaged last block, a cut file, a
// damaged block of records, and all of them at once.
#include <gtest/gtest.h>

#include <algorithm>

#include "datalog/datalog_test_support.h"
#include "datalog/files/log_file.h"

namespace vela {
namespace {

using testing::PatternLog;
using testing::SameRecords;

// A saved log of 3000 records (blocks of 1024, 1024 and 952) and two markers, with where each of
// its blocks begins.
struct SavedFile {
  SavedFile() : log(PatternLog(3000)) {
    log.AddMarkerAt(1.5, "launch");
    log.AddMarkerAt(250.0, "lift");
    bytes = EncodeLogFile(log);
    series = kLogHeaderSize;
    axis = series + EncodeSeriesBlock(log).size();
    std::size_t at = axis + EncodeAxisBlock(log.axis).size();
    for (std::size_t first = 0; first < 3000; first += kRecordsPerBlock) {
      records.push_back(at);
      at += EncodeRecordsBlock(log, first, std::min<std::size_t>(kRecordsPerBlock, 3000 - first))
                .size();
    }
    end = bytes.size() - EncodeEndBlock(log).size();
  }
  // One bit of the payload of the block at `block` turned over.
  void Damage(std::size_t block) { bytes[block + kBlockOverhead - 2] ^= 0x10; }

  struct Read {
    DatalogLog log;
    LogFileReport report;
    std::vector<std::string> lines;
    bool Says(const std::string& text) const {
      return std::any_of(lines.begin(), lines.end(),
                         [&](const std::string& line) { return line.find(text) != line.npos; });
    }
  };
  Read Load(std::string_view file) const {
    Read read;
    read.report = DecodeLogFile(file, read.log);
    read.lines = DescribeLoss(read.report, read.log);
    return read;
  }
  Read Load() const { return Load(bytes); }

  DatalogLog log;
  std::string bytes;
  std::size_t series = 0;
  std::size_t axis = 0;
  std::vector<std::size_t> records;
  std::size_t end = 0;
};

TEST(LogRecovery, ADamagedSeriesBlockHidesNoChannelThatHoldsPoints) {
  SavedFile file;
  file.Damage(file.series);
  const SavedFile::Read read = file.Load();
  EXPECT_TRUE(read.report.recognised);
  EXPECT_FALSE(read.report.series_read);
  EXPECT_EQ(read.report.records_lost, 0u);
  EXPECT_EQ(read.log.RecordCount(), 3000u);
  for (int n = 0; n < kChannelCount; ++n) {
    EXPECT_EQ(read.log.Series(n).active, n != 7) << n;  // channel 7 was never recorded
    EXPECT_EQ(read.log.Series(n).colour, kChannels[n].colour);
  }
  EXPECT_EQ(read.log.Markers(), file.log.Markers());
  EXPECT_TRUE(read.Says("The list of channels is damaged"));
  EXPECT_FALSE(read.Says("ends early"));
  EXPECT_FALSE(read.Says("Missing records"));
}

TEST(LogRecovery, AZeroedHeaderStillGivesAFileWhoseEveryBlockIsIntactWhole) {
  SavedFile file;
  std::fill_n(file.bytes.begin(), kLogHeaderSize, '\0');
  const SavedFile::Read read = file.Load();
  EXPECT_TRUE(read.report.recognised);
  EXPECT_TRUE(read.report.header_damaged);
  EXPECT_TRUE(SameRecords(read.log, file.log));
  EXPECT_EQ(read.log.axis, file.log.axis);
  ASSERT_EQ(read.lines.size(), 2u);
  EXPECT_EQ(read.lines[1], "The file's header is damaged; its blocks were read without it.");
}

TEST(LogRecovery, ADamagedClosingBlockIsNotACutFile) {
  SavedFile file;
  file.Damage(file.end);
  const SavedFile::Read read = file.Load();
  EXPECT_FALSE(read.report.cut_short);
  EXPECT_TRUE(read.report.last_block_damaged);
  EXPECT_TRUE(SameRecords(read.log, file.log));
  EXPECT_FALSE(read.Says("ends early"));
  EXPECT_TRUE(read.Says(
      "The last block of the file is damaged: the file's closing record count could not be read, "
      "so whether records are missing after 300.00 s cannot be told."));
}

TEST(LogRecovery, ADamagedLastBlockOfRecordsSaysHowManyRecordsItHeld) {
  // A journal left by a crash: no markers or closing block after its records.
  SavedFile file;
  std::string journal = file.bytes.substr(0, file.records[2]);
  journal += EncodeRecordsBlock(file.log, 2048, 952);
  journal[journal.size() - 100] ^= 0x01;
  const SavedFile::Read read = file.Load(journal);
  EXPECT_EQ(read.log.RecordCount(), 2048u);
  EXPECT_TRUE(read.report.last_block_damaged);
  EXPECT_EQ(read.report.last_block_records, 952u);
  EXPECT_FALSE(read.Says("ends early"));
  EXPECT_TRUE(read.Says(
      "The last block of the file is damaged: the 952 records it held after 204.80 s could not "
      "be read."));
}

TEST(LogRecovery, ACutFileKeepsEveryWholeBlockAndSaysItEndsEarly) {
  SavedFile file;
  const std::size_t second_block_end = file.records[2];
  for (std::size_t cut : {second_block_end, second_block_end + 1, second_block_end + 5000}) {
    const SavedFile::Read read = file.Load(std::string_view(file.bytes).substr(0, cut));
    EXPECT_TRUE(read.report.recognised);
    EXPECT_FALSE(read.report.has_end);
    EXPECT_EQ(read.report.cut_short, cut > second_block_end);
    EXPECT_FALSE(read.report.last_block_damaged);
    EXPECT_EQ(read.log.RecordCount(), 2048u) << cut;
    EXPECT_EQ(read.log.Times().back(), file.log.Times()[2047]);
    EXPECT_EQ(read.log.Series(4).values[2047], file.log.Series(4).values[2047]);
    EXPECT_TRUE(read.Says("The file ends early: anything recorded after 204.80 s is missing."));
  }
}

TEST(LogRecovery, ADamagedBlockOfRecordsCostsThoseRecordsAndTheRestLoads) {
  SavedFile file;
  file.bytes[file.records[0] + 5000] ^= 0x40;
  const SavedFile::Read read = file.Load();
  EXPECT_TRUE(read.report.has_end);
  EXPECT_EQ(read.report.damaged_regions, 1u);
  EXPECT_EQ(read.report.records_lost, 1024u);
  ASSERT_EQ(read.report.lost.size(), 1u);
  EXPECT_EQ(read.report.lost[0].count, 1024u);
  EXPECT_EQ(read.log.RecordCount(), 3000u - 1024u);
  EXPECT_EQ(read.log.Times().front(), file.log.Times()[1024]);
  EXPECT_EQ(read.log.Markers(), file.log.Markers());
  EXPECT_EQ(read.lines[1], "Missing records between 0.00 s and 102.50 s (1024 records).");
  EXPECT_FALSE(read.Says("ends early"));
}

TEST(LogRecovery, EveryIntactBlockIsRecoveredWhenEverythingElseIsDamaged) {
  SavedFile file;
  std::fill_n(file.bytes.begin(), kLogHeaderSize, '\0');
  file.Damage(file.series);
  file.Damage(file.axis);
  file.Damage(file.records[1]);
  file.Damage(file.end);
  const SavedFile::Read read = file.Load();
  EXPECT_TRUE(read.report.recognised);
  EXPECT_EQ(read.log.RecordCount(), 1024u + 952u);
  EXPECT_EQ(read.log.Times()[1024], file.log.Times()[2048]);
  EXPECT_EQ(read.log.Markers(), file.log.Markers());
  EXPECT_TRUE(read.log.Series(0).active);
  EXPECT_EQ(read.log.axis.min, 0.0);
  EXPECT_TRUE(read.Says("time axis setting is damaged"));
  EXPECT_TRUE(read.Says("Missing records between 102.40 s and 204.90 s (1024 records)."));
  EXPECT_TRUE(read.Says("in 3 places were skipped."));  // the series and axis lie side by side
}

TEST(LogRecovery, GarbageBetweenBlocksAndAWrongLengthAreSteppedOver) {
  const DatalogLog saved = PatternLog(40);
  std::string bytes = EncodeLogHeader() + "\x01\x02garbage" + EncodeSeriesBlock(saved);
  std::string bad = EncodeRecordsBlock(saved, 0, 20);
  bad[8] = '\x7F';  // a length far beyond the file
  bytes += bad + EncodeRecordsBlock(saved, 20, 20) + EncodeEndBlock(saved);
  DatalogLog loaded;
  const LogFileReport report = DecodeLogFile(bytes, loaded);
  EXPECT_EQ(report.damaged_regions, 2u);
  EXPECT_EQ(report.records_lost, 20u);
  EXPECT_EQ(loaded.RecordCount(), 20u);
  EXPECT_TRUE(loaded.Series(0).active);
}

TEST(LogRecovery, MarkersThatCouldNotBeReadAreCounted) {
  SavedFile file;
  const std::size_t first_marker = file.records[2] + EncodeRecordsBlock(file.log, 2048, 952).size();
  file.Damage(first_marker);
  const SavedFile::Read read = file.Load();
  EXPECT_EQ(read.log.Markers().size(), 1u);
  EXPECT_TRUE(read.Says("1 marker could not be read."));
}

// Random damage of every kind (turned bits, zeroed stretches, cuts): the reader never takes a
// damaged record for a good one, and what it reads and what it says is lost never exceed the log.
TEST(LogRecovery, WhateverTheDamageEveryRecordReadIsOneThatWasSaved) {
  const SavedFile file;
  std::uint32_t random = 2024;
  const auto next = [&random](std::size_t below) {
    random = random * 1664525u + 1013904223u;
    return static_cast<std::size_t>(random >> 8) % below;
  };
  for (int trial = 0; trial < 300; ++trial) {
    std::string bytes = file.bytes;
    if (trial % 3 == 0) {
      for (int flips = 1 + trial % 7; flips > 0; --flips) bytes[next(bytes.size())] ^= 0x20;
    } else if (trial % 3 == 1) {
      const std::size_t at = next(bytes.size());
      std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                  std::min<std::size_t>(next(20000), bytes.size() - at), '\0');
    } else {
      bytes.resize(next(bytes.size()));
    }
    const SavedFile::Read read = file.Load(bytes);
    if (!read.report.recognised) continue;
    EXPECT_LE(read.log.RecordCount() + read.report.records_lost, 3000u) << trial;
    const std::vector<double>& times = file.log.Times();
    for (std::size_t i = 0; i < read.log.RecordCount(); i += 97) {
      const auto at = std::lower_bound(times.begin(), times.end(), read.log.Times()[i]);
      ASSERT_NE(at, times.end()) << trial;
      const auto saved = static_cast<std::size_t>(at - times.begin());
      EXPECT_EQ(*at, read.log.Times()[i]) << trial;
      EXPECT_EQ(file.log.Arrivals()[saved], read.log.Arrivals()[i]) << trial;
      EXPECT_EQ(file.log.Series(5).values[saved], read.log.Series(5).values[i]) << trial;
    }
  }
}

}  // namespace
}  // namespace vela
