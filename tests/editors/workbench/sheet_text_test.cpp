#include "editors/workbench/sheet_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vela {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

// A fuel map of 11 RPM rows and 9 load sites, cursor on the top-left cell, nothing selected.
constexpr MapCellRect kFuelMap{1, 1, 11, 9};
PasteArea CursorAt(int row, int column) {
  return {kFuelMap, {row, column}, {row, column, row, column}};
}
PasteArea Selected(MapCellRect selection) {
  return {kFuelMap, {selection.bottom, selection.right}, selection};
}

// Loads 20, 30 .. 100 kPa; RPM 7500 on row 1 down to 500 on row 11.
SheetAxes FuelAxes() {
  SheetAxes axes;
  for (int c = 0; c < 9; ++c) axes.column_values.push_back(20.0 + 10.0 * c);
  for (int r = 0; r < 11; ++r) axes.row_values.push_back(7500.0 - 700.0 * r);
  return axes;
}

std::vector<double> ValuesOf(const SheetPaste& paste) {
  std::vector<double> values;
  for (const auto& cell : paste.cells) values.push_back(cell.value);
  return values;
}

SheetBlock FuelBlock() { return {2, 3, {1.25, 2.0, 10.5, 0.001, 3.3335, 65.535}, 3, {}}; }

TEST(SheetCopyTest, WritesTabsTheMapsDecimalsAndTheGivenMark) {
  EXPECT_EQ(SheetText(FuelBlock(), '.'), "1.250\t2.000\t10.500\n0.001\t3.334\t65.535\n");
  EXPECT_EQ(SheetText(FuelBlock(), ','), "1,250\t2,000\t10,500\n0,001\t3,334\t65,535\n");
}

TEST(SheetCopyTest, AxesMakeAHeaderRowAndFirstColumnUnderAnEmptyCorner) {
  SheetAxes axes{{7500.0, 6800.0}, {33.3333, 50.0, 66.6667}, 0, 1};
  EXPECT_EQ(SheetText(FuelBlock(), ',', &axes),
            "\t33,3\t50,0\t66,7\n7500\t1,250\t2,000\t10,500\n6800\t0,001\t3,334\t65,535\n");
}

TEST(SheetPasteTest, AxesOfAnotherMapRefuseThePasteNamingTheCellOffTheAxis) {
  const SheetAxes map_axes = FuelAxes();
  // Loads that skip a site, then RPMs that are not this map's.
  SheetPaste paste = ReadSheetPaste("\t40\t60\n6800\t1\t2\n", '.', CursorAt(1, 1), &map_axes);
  EXPECT_EQ(paste.refusal, PasteRefusal::kAxisMismatch);
  EXPECT_EQ(paste.bad_row, 1);
  EXPECT_EQ(paste.bad_column, 3);
  EXPECT_EQ(paste.bad_text, "60");
  paste = ReadSheetPaste("\t40\t50\n6800\t1\t2\n6000\t3\t4\n", '.', CursorAt(1, 1), &map_axes);
  EXPECT_EQ(paste.refusal, PasteRefusal::kAxisMismatch);
  EXPECT_EQ(paste.bad_row, 3);
  EXPECT_EQ(paste.bad_column, 1);
  EXPECT_THAT(paste.cells, IsEmpty());
}

TEST(SheetPasteTest, TellsTheCellSeparatorFromTheTextAndTheDecimalMark) {
  struct Case {
    const char* text;
    char mark;
    std::vector<double> values;
    int columns;
  };
  const Case cases[] = {
      {"1.5,2.5\n3,4\n", '.', {1.5, 2.5, 3, 4}, 2},      // comma-separated under a point
      {"1,5\n2,5\n", ',', {1.5, 2.5}, 1},                // one column of comma decimals
      {"1,5\t2\n", ',', {1.5, 2}, 2},                    // a tab anywhere wins
      {"1,5;2,5\r\n3;4\r\n", '.', {1.5, 2.5, 3, 4}, 2},  // semicolons, as comma locales save
      {"1.5;2.5\n", ',', {1.5, 2.5}, 2},                 // a point is read under a comma too
      {"\"1,5\";\" 2 \"\n", ',', {1.5, 2}, 2},           // quotes and blanks inside them
  };
  for (const Case& c : cases) {
    const SheetPaste paste = ReadSheetPaste(c.text, c.mark, CursorAt(1, 1));
    ASSERT_EQ(paste.status, PasteStatus::kFits) << c.text;
    EXPECT_EQ(paste.block_columns, c.columns) << c.text;
    EXPECT_EQ(ValuesOf(paste), c.values) << c.text;
  }
}

TEST(SheetPasteTest, ToleratesWhatSpreadsheetsLeaveAround) {
  // A byte-order mark, blanks around cells, "\r\n", blank cells at row ends, blank lines at the
  // end.
  const SheetPaste paste =
      ReadSheetPaste("\xEF\xBB\xBF 1.5 \t2\t\t\r\n3\t 4\t\r\n\r\n\t\n", '.', CursorAt(1, 1));
  ASSERT_EQ(paste.status, PasteStatus::kFits);
  EXPECT_EQ(paste.block_rows, 2);
  EXPECT_EQ(paste.block_columns, 2);
  EXPECT_EQ(ValuesOf(paste), (std::vector<double>{1.5, 2, 3, 4}));
}

TEST(SheetPasteTest, RefusesWhatCouldBeOneGroupedNumberOrSeveralCells) {
  SheetPaste paste = ReadSheetPaste("2.5,3\n1,234\n", '.', CursorAt(1, 1));
  EXPECT_EQ(paste.refusal, PasteRefusal::kAmbiguous);
  EXPECT_EQ(paste.bad_row, 2);
  EXPECT_EQ(paste.bad_text, "1,234");
  // A comma in a tab-separated cell is no decimal mark under a point: refused, never 1234.
  paste = ReadSheetPaste("1,234\t5\n", '.', CursorAt(1, 1));
  EXPECT_EQ(paste.refusal, PasteRefusal::kNotANumber);
  EXPECT_EQ(paste.bad_text, "1,234");
  // Both marks in one cell under a comma.
  paste = ReadSheetPaste("1.234,5\n", ',', CursorAt(1, 1));
  EXPECT_EQ(paste.refusal, PasteRefusal::kNotANumber);
}

TEST(SheetPasteTest, RefusesTheWholePasteNamingTheFirstBadCell) {
  struct Case {
    const char* text;
    int row;
    int column;
    const char* found;
  };
  const Case cases[] = {
      {"1\t2\t3\n4\tabc\tx\n", 2, 2, "abc"},
      {"1\t2\n3\n", 2, 2, ""},       // a short row is refused, not padded
      {"1\t2\n\n3\t4\n", 2, 1, ""},  // a blank line inside the block
      {"1\t2\n3\t\"4\"x\n", 2, 2, "\"4\"x"},
      {"\t40\n6800\tnan\n", 2, 2, "nan"},  // counted in the text, axis row and column included
  };
  for (const Case& c : cases) {
    const SheetPaste paste = ReadSheetPaste(c.text, '.', CursorAt(1, 1));
    EXPECT_EQ(paste.status, PasteStatus::kRefused) << c.text;
    EXPECT_EQ(paste.refusal, PasteRefusal::kNotANumber) << c.text;
    EXPECT_EQ(paste.bad_row, c.row) << c.text;
    EXPECT_EQ(paste.bad_column, c.column) << c.text;
    EXPECT_EQ(paste.bad_text, c.found) << c.text;
    EXPECT_THAT(paste.cells, IsEmpty());
  }
  const SheetPaste paste = ReadSheetPaste("1\t2\n3\tabc\n", '.', CursorAt(1, 1));
  EXPECT_THAT(
      PasteRefusalLines(paste),
      ElementsAre("Row 2, column 2 of the pasted text holds \"abc\", which is not a number.",
                  "Nothing was pasted."));
}

TEST(SheetPasteTest, RefusesEmptyAndOversizedText) {
  EXPECT_EQ(ReadSheetPaste("", '.', CursorAt(1, 1)).refusal, PasteRefusal::kEmpty);
  EXPECT_EQ(ReadSheetPaste(" \t \r\n\n", '.', CursorAt(1, 1)).refusal, PasteRefusal::kEmpty);
  const std::string huge(kMaxPasteBytes + 1, '1');
  EXPECT_EQ(ReadSheetPaste(huge, '.', CursorAt(1, 1)).refusal, PasteRefusal::kTooLong);
}

TEST(SheetPasteTest, ABlockPastTheMapsEdgeAsksAndSaysWhatClippingKeeps) {
  const SheetPaste paste = ReadSheetPaste("1\t2\t3\n4\t5\t6\n", '.', CursorAt(11, 8));
  EXPECT_EQ(paste.status, PasteStatus::kTooBig);
  EXPECT_FALSE(paste.room_is_selection);
  EXPECT_EQ(paste.kept_rows, 1);
  EXPECT_EQ(paste.kept_columns, 2);
  EXPECT_THAT(paste.cells, ElementsAre(PasteCellValue{{11, 8}, 1}, PasteCellValue{{11, 9}, 2}));
  EXPECT_THAT(PasteTooBigLines(paste),
              ElementsAre("The pasted block has 2 rows and 3 columns, more than fits between the "
                          "cursor and the map's edge.",
                          "Paste the 1 row and 2 columns that fit (Clip), or Cancel?"));
  // The same block exactly into the corner fits.
  EXPECT_EQ(ReadSheetPaste("1\t2\t3\n4\t5\t6\n", '.', CursorAt(10, 7)).status, PasteStatus::kFits);
}

TEST(SheetPasteTest, ASelectionBoundsTheBlockAndTakesItAtItsTopLeft) {
  const std::string block = "1\t2\t3\n4\t5\t6\n";
  SheetPaste paste = ReadSheetPaste(block, '.', Selected({3, 4, 4, 5}));
  EXPECT_EQ(paste.status, PasteStatus::kTooBig);
  EXPECT_TRUE(paste.room_is_selection);
  EXPECT_EQ(ValuesOf(paste), (std::vector<double>{1, 2, 4, 5}));
  EXPECT_EQ(paste.cells.front().cell, (MapCell{3, 4}));
  // A smaller block fills only its own cells; a single value fills the whole selection.
  paste = ReadSheetPaste(block, '.', Selected({3, 4, 6, 8}));
  EXPECT_EQ(paste.status, PasteStatus::kFits);
  EXPECT_EQ(paste.cells.size(), 6u);
  paste = ReadSheetPaste("7.5\n", '.', Selected({3, 4, 4, 6}));
  EXPECT_EQ(paste.status, PasteStatus::kFits);
  EXPECT_EQ(ValuesOf(paste), std::vector<double>(6, 7.5));
  EXPECT_EQ(paste.cells.back().cell, (MapCell{4, 6}));
  // Without a selection a single value is one cell.
  EXPECT_THAT(ReadSheetPaste("7.5\n", '.', CursorAt(2, 2)).cells,
              ElementsAre(PasteCellValue{{2, 2}, 7.5}));
}

}  // namespace
}  // namespace vela
