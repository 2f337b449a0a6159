// The target table: its default, its CSV both ways, and what a CSV is refused for.
#include "tune/target/target_table.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "editors/editor_fakes.h"

namespace vela {
namespace {

using ::testing::HasSubstr;

TuneAxes SoundAxes() { return FuelAxesOf(editor_testing::SoundImage()); }

// The CSV of the default table with one field replaced (line 0 = the header, field 0 = RPM).
std::string CsvWith(int line, int field, const std::string& text) {
  std::string csv = TargetCsv(TargetTable(SoundAxes()));
  std::size_t start = 0;
  for (int l = 0; l < line; ++l) start = csv.find('\n', start) + 1;
  for (int f = 0; f < field; ++f) start = csv.find(',', start) + 1;
  const std::size_t end = csv.find_first_of(",\n", start);
  return csv.replace(start, end - start, text);
}

TEST(TargetTable, DefaultIsRicherAtHighLoad) {
  EXPECT_DOUBLE_EQ(DefaultTargetAfr(40.0), 14.7);
  EXPECT_DOUBLE_EQ(DefaultTargetAfr(80.0), 13.2);
  EXPECT_DOUBLE_EQ(DefaultTargetAfr(100.0), 12.5);
  EXPECT_DOUBLE_EQ(DefaultTargetAfr(300.0), 11.5);
  EXPECT_NEAR(TargetTable(SoundAxes()).AtPoint(4000, 93.75), (13.5 + 12.5) / 2, 0.5);
}

TEST(TargetTable, CsvRoundTripsWithTheFuelAxes) {
  TargetTable table(SoundAxes());
  table.Set(3, 4, 12.85);
  const std::string csv = TargetCsv(table);
  EXPECT_THAT(csv, HasSubstr("target AFR RPM/kPa,0,12.5,25,37.5,50,62.5,75,87.5,100\n8200,"));
  EXPECT_THAT(csv, HasSubstr(",12.85,"));
  const TargetRead read = ReadTargetCsv(csv, table.Axes());
  ASSERT_TRUE(read.table) << read.refusals.front();
  EXPECT_EQ(*read.table, table);
  // A spreadsheet's byte-order mark, "\r\n" lines, blanks and a trailing empty line are fine.
  std::string dressed = "\xEF\xBB\xBF";
  for (char c : csv)
    dressed += c == '\n' ? std::string("\r\n") : c == ',' ? ", " : std::string(1, c);
  EXPECT_TRUE(ReadTargetCsv(dressed + "\r\n", table.Axes()).table);
}

TEST(TargetTable, CsvIsRefusedWithItsReasons) {
  const TuneAxes axes = SoundAxes();
  const auto refusal = [&](const std::string& csv) {
    const TargetRead read = ReadTargetCsv(csv, axes);
    EXPECT_FALSE(read.table);
    return read.refusals.empty() ? std::string() : read.refusals.front();
  };
  const std::string csv = TargetCsv(TargetTable(axes));
  EXPECT_THAT(refusal(csv.substr(0, csv.rfind('\n', csv.size() - 2) + 1)), HasSubstr("11 lines"));
  EXPECT_THAT(refusal(CsvWith(2, 9, "14.7,14.7")), HasSubstr("line 3 has 11 fields"));
  EXPECT_THAT(refusal(CsvWith(0, 2, "30")), HasSubstr("Load of column 2: \"30\""));
  EXPECT_THAT(refusal(CsvWith(4, 3, "abc")), HasSubstr("\"abc\" is not a number"));
  EXPECT_THAT(refusal(CsvWith(4, 3, "0")), HasSubstr("outside the targets' 6 to 25 AFR"));
  EXPECT_THAT(refusal(CsvWith(4, 3, "nan")), HasSubstr("not a number"));
  EXPECT_THAT(refusal(std::string(kMaxTargetCsvBytes + 1, ' ')), HasSubstr("never larger"));
  EXPECT_THAT(refusal(""), HasSubstr("0 lines"));
  // Rows in rising RPM order are another table's layout, not this one's.
  EXPECT_THAT(refusal(CsvWith(1, 0, "0")), HasSubstr("RPM of line 2: \"0\""));
}

TEST(TargetTable, LivesBesideTheMapFile) {
  EXPECT_EQ(TargetPathFor("maps/street.sm1"), "maps/street.afr.csv");
  EXPECT_EQ(TargetPathFor("maps/STREET.SM1"), "maps/STREET.afr.csv");
  EXPECT_EQ(TargetPathFor("street"), "street.afr.csv");
}

}  // namespace
}  // namespace vela
