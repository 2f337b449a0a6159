// The chart file: a log comes back as it was saved, and a damaged file gives back every whole
// block and says what it lost.
#include "datalog/log_file.h"

#include <gtest/gtest.h>

#include "datalog/crc32.h"
#include "datalog/log_export.h"
#include "datalog_test_support.h"

namespace vela {
namespace {

using testing::PatternLog;
using testing::SameRecords;

DatalogLog WithMarkers(std::size_t records) {
  DatalogLog log = PatternLog(records);
  log.AddMarkerAt(1.5, "launch");
  log.AddMarkerAt(0.2, "idle, \"cold\"");
  log.axis = TimeAxis{0.5, 12.25};
  return log;
}

TEST(LogFile, ALogComesBackWithItsPointsGapsSeriesMarkersAndAxis) {
  const DatalogLog saved = WithMarkers(3000);
  DatalogLog loaded;
  const LogFileReport report = DecodeLogFile(EncodeLogFile(saved), loaded);
  EXPECT_TRUE(report.Intact());
  EXPECT_TRUE(SameRecords(saved, loaded));
  EXPECT_EQ(loaded.axis, saved.axis);
  EXPECT_EQ(loaded.Series(7).values.size(), 0u);
  EXPECT_EQ(loaded.Series(3).points, 2990u);
  // The summaries are rebuilt: the whole log's extremes are there at once.
  EXPECT_EQ(loaded.Summarize(2, 0, loaded.RecordCount()).max, 249.0f);
}

TEST(LogFile, AnEmptyLogMakesAFileThatReadsBackEmpty) {
  DatalogLog empty;
  DatalogLog loaded = PatternLog(5);
  const LogFileReport report = DecodeLogFile(EncodeLogFile(empty), loaded);
  EXPECT_TRUE(report.Intact());
  EXPECT_EQ(loaded.RecordCount(), 0u);
}

TEST(LogFile, ACutFileKeepsEveryWholeBlockAndSaysItEndsEarly) {
  const DatalogLog saved = WithMarkers(3000);  // records in blocks of 1024, 1024 and 952
  const std::string bytes = EncodeLogFile(saved);
  const std::size_t record_bytes = 16 + 1024 * (8 + 4 * 11);
  const std::size_t second_block_end = kLogHeaderSize + EncodeSeriesBlock(saved).size() +
                                       EncodeAxisBlock(saved.axis).size() +
                                       2 * (kBlockOverhead + record_bytes);
  for (std::size_t cut : {second_block_end, second_block_end + 1, second_block_end + 5000}) {
    DatalogLog loaded;
    const LogFileReport report = DecodeLogFile(std::string_view(bytes).substr(0, cut), loaded);
    EXPECT_TRUE(report.recognised);
    EXPECT_FALSE(report.Intact());
    EXPECT_FALSE(report.has_end);
    EXPECT_EQ(loaded.RecordCount(), 2048u) << cut;
    EXPECT_EQ(report.cut_short, cut > second_block_end);
    EXPECT_EQ(loaded.Times().back(), saved.Times()[2047]);
    EXPECT_EQ(loaded.Series(4).values[2047], saved.Series(4).values[2047]);
  }
}

TEST(LogFile, ADamagedBlockIsSkippedAndTheBlocksAfterItStillLoad) {
  const DatalogLog saved = WithMarkers(3000);
  std::string bytes = EncodeLogFile(saved);
  const std::size_t first_records =
      kLogHeaderSize + EncodeSeriesBlock(saved).size() + EncodeAxisBlock(saved.axis).size();
  bytes[first_records + 5000] ^= 0x40;  // one bit inside the first records block
  DatalogLog loaded;
  const LogFileReport report = DecodeLogFile(bytes, loaded);
  EXPECT_FALSE(report.Intact());
  EXPECT_TRUE(report.has_end);
  EXPECT_EQ(report.damaged_regions, 1u);
  EXPECT_EQ(report.records_lost, 1024u);
  ASSERT_EQ(report.lost_spans.size(), 1u);
  EXPECT_EQ(report.lost_spans[0].first, 0.0);
  EXPECT_DOUBLE_EQ(report.lost_spans[0].second, saved.Times()[1024]);
  EXPECT_EQ(loaded.RecordCount(), 3000u - 1024u);
  EXPECT_EQ(loaded.Times().front(), saved.Times()[1024]);
  EXPECT_EQ(loaded.Markers(), saved.Markers());
  EXPECT_EQ(loaded.axis, saved.axis);
  const std::vector<std::string> loss = DescribeLoss(report, loaded);
  ASSERT_GE(loss.size(), 2u);
  EXPECT_EQ(loss[1], "Missing records between 0.00 s and 102.50 s.");
}

TEST(LogFile, GarbageBetweenBlocksAndAWrongLengthAreSteppedOver) {
  const DatalogLog saved = PatternLog(40);
  const std::string series = EncodeSeriesBlock(saved);
  std::string bytes = EncodeLogHeader() + "\x01\x02garbage" + series;
  std::string bad = EncodeRecordsBlock(saved, 0, 20);
  bad[8] = '\x7F';  // a length far beyond the file
  bytes += bad + EncodeRecordsBlock(saved, 20, 20) + EncodeEndBlock(saved);
  DatalogLog loaded;
  const LogFileReport report = DecodeLogFile(bytes, loaded);
  EXPECT_EQ(report.damaged_regions, 2u);
  EXPECT_EQ(report.records_lost, 20u);
  EXPECT_EQ(loaded.RecordCount(), 20u);
  EXPECT_EQ(loaded.Series(0).active, true);
}

TEST(LogFile, AFileOfAnotherKindOrANewerVersionIsNotRead) {
  DatalogLog log = PatternLog(5);
  EXPECT_FALSE(DecodeLogFile("Channel 0 = 1\r\n", log).recognised);
  std::string newer = EncodeLogFile(PatternLog(3));
  newer[8] = 2;  // version 2, with a header check that matches
  const std::uint32_t check = Crc32(std::string_view(newer).substr(0, 12));
  newer.replace(12, 4, reinterpret_cast<const char*>(&check), 4);
  EXPECT_FALSE(DecodeLogFile(newer, log).recognised);
  newer[8] = 1;
  EXPECT_FALSE(DecodeLogFile(newer, log).recognised);  // now the header check fails
  EXPECT_EQ(log.RecordCount(), 5u);
}

TEST(LogExport, CsvHasNamesAndUnitsAndLeavesMissingPointsEmpty) {
  DatalogLog log;
  ChannelValues values{};
  values[0] = 3000.5;
  values[11] = 147.3;
  log.Append(0.1002, values, 0b100000000001);
  log.Append(0.2004, values, 0b1);
  log.AddMarkerAt(0.25, "lean, check");
  EXPECT_EQ(CsvText(log),
            "Time (s),RPM (rpm),AFR (x10),Marker\r\n"
            "0.100,3000.50,147.3,\r\n"
            "0.200,3000.50,,\"lean, check\"\r\n");
}

TEST(LogExport, TheTextExportJoinsTimeAndTenChannelsWithBlankCommaBlank) {
  DatalogLog log;
  ChannelValues values{};
  for (int n = 0; n < kChannelCount; ++n) values[n] = n + 0.5;
  log.Append(1.002, values, 0b111111111011);
  EXPECT_EQ(Dl1Text(log),
            "1.002 , 0.50 , 1.5 ,  , 3.50 , 4.50 , 5.5 , 6.5 , 7.5 , 8.50 , 9.50\r\n");
}

}  // namespace
}  // namespace vela
