// A datalog as text: the CSV and the old table export, each with its gap marks, and the summary.
#include "datalog/files/log_export.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "datalog/datalog_test_support.h"

namespace vela {
namespace {

TEST(LogExport, CsvHasNamesUnitsAndArrivalsAndLeavesMissingPointsEmpty) {
  DatalogLog log;
  ChannelValues values{};
  values[0] = 3000.5;
  values[11] = 147.3;
  log.Append(0.1002, 0.1131, values, 0b100000000001);
  log.Append(0.2004, NAN, values, 0b1);
  log.AddMarkerAt(0.25, "lean, check");
  EXPECT_EQ(CsvText(log),
            "Time (s),Arrival (s),RPM (rpm),AFR (x10),Missing frames,Marker\r\n"
            "0.100,0.113,3000.50,147.3,,\r\n"
            "0.200,,3000.50,,,\"lean, check\"\r\n");
}

TEST(LogExport, TheTextExportJoinsTimeAndTenChannelsWithBlankCommaBlank) {
  DatalogLog log;
  ChannelValues values{};
  for (int n = 0; n < kChannelCount; ++n) values[n] = n + 0.5;
  log.Append(1.002, 1.0, values, 0b111111111011);
  EXPECT_EQ(Dl1Text(log),
            "1.002 , 0.50 , 1.5 ,  , 3.50 , 4.50 , 5.5 , 6.5 , 7.5 , 8.50 , 9.50\r\n");
}

// Ten frames a second; the link lost 7 frames before the sixth record.
DatalogLog LogWithAGap() {
  DatalogLog log;
  ChannelValues values{};
  values[0] = 900.0;
  for (int i = 0; i < 30; ++i) {
    const double t = (i + 1) * 0.1002;
    log.Append(t, (i + 1) * 0.1 + (i >= 5 ? 0.7 : 0.0), values, 0b1);
  }
  log.CloseGaps();
  return log;
}

TEST(LogExport, AGapIsMarkedInTheCsvAndTheTextExportBeforeTheRecordAfterIt) {
  const DatalogLog log = LogWithAGap();
  ASSERT_EQ(log.Gaps().size(), 1u);
  const std::string csv = CsvText(log);
  EXPECT_NE(csv.find("\r\n0.501,0.500,900.00,,\r\n0.601,1.300,900.00,7,\r\n"), std::string::npos);
  const std::string dl1 = Dl1Text(log);
  EXPECT_NE(dl1.find("\r\nGap , 7 frames missing , 0.800 s ,  ,  ,  ,  ,  ,  ,  , \r\n"
                     "0.601 , 900.00 , "),
            std::string::npos);
}

TEST(LogExport, TheSummaryTellsTheClockAndTheGaps) {
  LogFileReport report;
  report.recognised = true;
  report.version = 2;
  const std::string info = LogInfoText(LogWithAGap(), report);
  EXPECT_NE(info.find("Clock: 3.700 s from the start of logging\n"), std::string::npos);
  EXPECT_NE(info.find("Gaps: 1 (7 frames missing)\n  0.601 s  7 frames missing, 0.800 s"),
            std::string::npos);
}

TEST(LogExport, ASpansCsvHoldsTheRecordsWithinItWithTheWholeLogsColumnsAndItsMarkers) {
  DatalogLog log = testing::PatternLog(50);  // records at 0.1 .. 5.0 s
  log.AddMarkerAt(1.05, "before the span, on the record at 1.0 s");
  log.AddMarkerAt(1.15, "in the span, before its first record");
  log.AddMarkerAt(1.3, "on a record");
  log.AddMarkerAt(1.45, "after the span, on the record at 1.4 s");
  const std::string whole = CsvText(log);
  const std::string span = CsvText(log, 1.12, 1.41);
  // The same header, then the rows of 1.2, 1.3 and 1.4 s exactly as the whole log has them.
  const std::size_t header_end = whole.find("\r\n") + 2;
  ASSERT_EQ(span.substr(0, header_end), whole.substr(0, header_end));
  const std::string rows = span.substr(header_end);
  EXPECT_EQ(std::count(rows.begin(), rows.end(), '\n'), 3);
  EXPECT_EQ(rows.rfind("1.200,", 0), 0u);
  EXPECT_NE(rows.find("\r\n1.400,"), std::string::npos);
  EXPECT_NE(rows.find("in the span, before its first record"), std::string::npos);
  const std::size_t row_start = rows.find("1.300,");
  const std::string row_13 = rows.substr(row_start, rows.find("\r\n1.400,") + 2 - row_start);
  EXPECT_NE(whole.find("\r\n" + row_13), std::string::npos);
  EXPECT_EQ(span.find("before the span"), std::string::npos);
  EXPECT_EQ(span.find("after the span"), std::string::npos);
  // A span between two records, or beyond the log, has the header alone.
  EXPECT_EQ(CsvText(log, 1.21, 1.29), whole.substr(0, header_end));
  EXPECT_EQ(CsvText(log, 9.0, 10.0), whole.substr(0, header_end));
}

}  // namespace
}  // namespace vela
