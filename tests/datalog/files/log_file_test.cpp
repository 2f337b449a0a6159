// The chart file: a log comes back as it was saved, with its arrival times and gaps; older and
// foreign files; what a file's first bytes say about it.
#include "datalog/files/log_file.h"

#include <gtest/gtest.h>

#include "base/crc32.h"
#include "datalog/datalog_test_support.h"

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

// `bytes` with its header saying `version`, and a header check to match.
std::string WithVersion(std::string bytes, std::uint16_t version) {
  bytes[8] = static_cast<char>(version & 0xFF);
  bytes[9] = static_cast<char>(version >> 8);
  const std::uint32_t check = Crc32(std::string_view(bytes).substr(0, 12));
  bytes.replace(12, 4, reinterpret_cast<const char*>(&check), 4);
  return bytes;
}

TEST(LogFile, ALogEvenEmptyComesBackWithItsPointsSeriesMarkersAxisArrivalsAndGaps) {
  DatalogLog saved = WithMarkers(3000);
  // A second log whose link lost 12 frames after record 1500.
  DatalogLog lossy;
  ChannelValues values{};
  for (int i = 0; i < 3000; ++i) {
    const double t = (i + 1) * 0.1002;
    lossy.Append(t, t + (i >= 1500 ? 1.2 : 0.0), values, 0b101);
  }
  lossy.CloseGaps();
  ASSERT_EQ(lossy.Gaps().size(), 1u);
  DatalogLog empty;
  for (const DatalogLog* log : {&saved, &lossy, &empty}) {
    DatalogLog loaded = PatternLog(5);  // what was there goes
    const LogFileReport report = DecodeLogFile(EncodeLogFile(*log), loaded);
    EXPECT_TRUE(report.Intact());
    EXPECT_EQ(report.version, 2);
    EXPECT_TRUE(SameRecords(*log, loaded));  // arrivals and gaps included
    EXPECT_EQ(loaded.axis, log->axis);
  }
  DatalogLog loaded;
  DecodeLogFile(EncodeLogFile(saved), loaded);
  EXPECT_EQ(loaded.Series(7).values.size(), 0u);  // a channel never recorded holds no column
  // The summaries are rebuilt: the whole log's extremes are there at once.
  EXPECT_EQ(loaded.Summarize(2, 0, loaded.RecordCount()).max, 249.0f);
}

TEST(LogFile, AVersionOneFileWithoutArrivalTimesStillReads) {
  DatalogLog old;
  ChannelValues values{};
  for (int i = 0; i < 40; ++i) old.Append(i * 0.1, NAN, values, 0b1);
  const std::string bytes = WithVersion(EncodeLogFile(old), 1);
  DatalogLog loaded;
  const LogFileReport report = DecodeLogFile(bytes, loaded);
  EXPECT_TRUE(report.Intact());
  EXPECT_EQ(report.version, 1);
  EXPECT_EQ(loaded.RecordCount(), 40u);
  EXPECT_TRUE(std::isnan(loaded.Arrivals()[0]));
  EXPECT_FALSE(loaded.ClockEnd().has_value());
  EXPECT_TRUE(loaded.Gaps().empty());
}

TEST(LogFile, AFileOfAnotherKindOrANewerVersionIsNotReadAndTheLogStays) {
  DatalogLog log = PatternLog(5);
  EXPECT_FALSE(DecodeLogFile("Channel 0 = 1\r\n", log).recognised);
  EXPECT_FALSE(DecodeLogFile(std::string(1023, '\x10'), log).recognised);  // a map file
  EXPECT_FALSE(DecodeLogFile("", log).recognised);
  EXPECT_FALSE(DecodeLogFile(WithVersion(EncodeLogFile(PatternLog(3)), 3), log).recognised);
  EXPECT_EQ(log.RecordCount(), 5u);
}

TEST(LogFile, AChartFileIsKnownByItsFirstBytesEvenWithADamagedHeader) {
  const std::string file = EncodeLogFile(PatternLog(3));
  EXPECT_TRUE(LooksLikeLogFile(std::string(kLogHeaderSize, '\0') + file.substr(16, 4)));
  EXPECT_TRUE(LooksLikeLogFile("MVDATLOG"));
  EXPECT_FALSE(LooksLikeLogFile(""));
}

}  // namespace
}  // namespace vela
