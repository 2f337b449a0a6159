// A datalog as text: the CSV and the old table export, each with its gap marks, and the summary.
#include "datalog/files/log_export.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace vela
