#include "editors/workbench/cell_operation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vela {
namespace {

using ::testing::HasSubstr;

const ValueBounds kFuel = ValueBoundsOf(MapGridModel(MapKind::kFuel));
const ValueBounds kIgnition = ValueBoundsOf(MapGridModel(MapKind::kIgnition));

CellOperation Parsed(const std::string& text, char mark = '.', ValueBounds bounds = kFuel) {
  const OperationParse parse = ParseCellOperation(text, mark, bounds);
  EXPECT_TRUE(parse.operation) << text << ": " << parse.refusal;
  return parse.operation.value_or(CellOperation{});
}

std::string Refusal(const std::string& text, char mark = '.', ValueBounds bounds = kFuel) {
  const OperationParse parse = ParseCellOperation(text, mark, bounds);
  EXPECT_FALSE(parse.operation) << text;
  EXPECT_FALSE(parse.refusal.empty()) << text;
  return parse.refusal;
}

void ExpectOperation(const std::string& text, OperationKind kind, double operand, char mark = '.',
                     ValueBounds bounds = kIgnition) {
  const CellOperation operation = Parsed(text, mark, bounds);
  EXPECT_EQ(operation.kind, kind) << text;
  EXPECT_DOUBLE_EQ(operation.operand, operand) << text;
}

TEST(CellOperationTest, EachFormOfTheLineReadsAsItsOperation) {
  ExpectOperation("12.5", OperationKind::kSet, 12.5);
  ExpectOperation("  .5 ", OperationKind::kSet, 0.5);
  ExpectOperation("=-5", OperationKind::kSet, -5.0);
  ExpectOperation("+0.3", OperationKind::kAdd, 0.3);
  ExpectOperation("- 0.3", OperationKind::kAdd, -0.3);
  ExpectOperation("*1.05", OperationKind::kScale, 1.05);
  ExpectOperation("/4", OperationKind::kScale, 0.25);
  ExpectOperation("+5%", OperationKind::kScale, 1.05);
  ExpectOperation("-3 %", OperationKind::kScale, 0.97);
}

TEST(CellOperationTest, TheComputersDecimalMarkAndThePointAreBothRead) {
  ExpectOperation("12,5", OperationKind::kSet, 12.5, ',');
  ExpectOperation("12.5", OperationKind::kSet, 12.5, ',');
  ExpectOperation("*1,05", OperationKind::kScale, 1.05, ',');
  EXPECT_THAT(Refusal("12,5", '.'), HasSubstr("\",\" is not part of a number"));
  EXPECT_THAT(Refusal("1,2.5", ','), HasSubstr("more than one decimal mark"));
}

TEST(CellOperationTest, MalformedLinesAreRefusedWithTheirReason) {
  EXPECT_THAT(Refusal(""), HasSubstr("Type a value or an operation"));
  EXPECT_THAT(Refusal("   "), HasSubstr("Type a value or an operation"));
  for (const char* text : {"+-3", "/ *2"}) {
    EXPECT_THAT(Refusal(text), HasSubstr("two signs")) << text;
  }
  EXPECT_THAT(Refusal("12a"), HasSubstr("\"a\" is not part of a number"));
  EXPECT_THAT(Refusal("1e3"), HasSubstr("\"e\" is not part of a number"));
  EXPECT_THAT(Refusal("1 2"), HasSubstr("\" \" is not part of a number"));
  EXPECT_THAT(Refusal("*"), HasSubstr("factor after *"));
  EXPECT_THAT(Refusal("+ "), HasSubstr("amount to add"));
  EXPECT_THAT(Refusal("="), HasSubstr("value after ="));
  EXPECT_THAT(Refusal("+%"), HasSubstr("percentage before %"));
  EXPECT_THAT(Refusal("."), HasSubstr("is no number"));
  EXPECT_THAT(Refusal("1.2.3"), HasSubstr("more than one decimal mark"));
  EXPECT_THAT(Refusal("*5%"), HasSubstr("percentage needs + or -"));
  EXPECT_THAT(Refusal("/0"), HasSubstr("Division by zero"));
}

TEST(CellOperationTest, NumbersBeyondWhatTheMapHoldsAreRefused) {
  EXPECT_THAT(Refusal("70"), HasSubstr("beyond what this map holds (0.000 to 65.535)"));
  EXPECT_THAT(Refusal("99.5", '.', kIgnition), HasSubstr("(-28.5 to 99.0)"));
  EXPECT_THAT(Refusal("=-29", '.', kIgnition), HasSubstr("beyond"));
  Parsed("=-28.5", '.', kIgnition);
  Parsed("65.535");
  EXPECT_THAT(Refusal("+70"), HasSubstr("beyond"));
  EXPECT_THAT(Refusal("/0.000001"), HasSubstr("beyond"));
  EXPECT_THAT(Refusal(std::string(400, '9')), HasSubstr("beyond"));
  EXPECT_THAT(Refusal("*0"), HasSubstr("type 0 to set the cells to zero"));
  EXPECT_THAT(Refusal("-100%"), HasSubstr("leaves no value"));
  // A narrower fuel range (maxms) narrows what a set may ask for.
  MapGridModel narrow(MapKind::kFuel);
  MapGridSettings settings;
  settings.maxms = 20.0;
  narrow.SetSettings(settings);
  EXPECT_THAT(Refusal("21", ',', ValueBoundsOf(narrow)), HasSubstr("(0,000 to 20,000)"));
}

class OperationPreviewTest : public ::testing::Test {
 protected:
  OperationPreviewTest() {
    for (int row = 1; row <= kMapRows; ++row) {
      for (int column = 1; column <= 9; ++column) grid.SetValue(row, column, 2.0 + 0.1 * column);
    }
  }
  MapGridModel grid{MapKind::kFuel, 9};
};

TEST_F(OperationPreviewTest, ShowsTheRangeAfterRoundingAndLeavesTheGridAlone) {
  const CellRect rect{10, 1, 11, 3};  // 2.1 to 2.3 ms, low RPM rows
  const OperationPreview preview = PreviewOperation(grid, rect, Parsed("*1.05"), {});
  EXPECT_DOUBLE_EQ(preview.lowest, 2.205);
  EXPECT_DOUBLE_EQ(preview.highest, 2.415);
  EXPECT_EQ(preview.changed, 6);
  EXPECT_EQ(RangeText(preview, MapKind::kFuel, ','), "2,205 .. 2,415");
  EXPECT_DOUBLE_EQ(grid.Value(10, 1), 2.1);
  const OperationPreview set = PreviewOperation(grid, rect, Parsed("3"), {});
  EXPECT_EQ(RangeText(set, MapKind::kFuel, '.'), "3.000");
}

TEST_F(OperationPreviewTest, ShowsTheDutyCapAndTheMapLimitsItWillMeet) {
  grid.SetRpmSites({1000, 2000, 3000, 4000, 5000, 6000, 7000, 8000, 9000, 10000, 11000});
  // Row 6 runs at 6000 RPM: 20.0 ms at most; row 11 at 1000 RPM is held by the map's range.
  const OperationPreview capped = PreviewOperation(grid, {6, 1, 6, 2}, Parsed("30"), {});
  EXPECT_DOUBLE_EQ(capped.highest, 20.0);
  EXPECT_EQ(capped.capped, 2);
  const OperationPreview held = PreviewOperation(grid, {11, 1, 11, 1}, Parsed("+65"), {});
  EXPECT_DOUBLE_EQ(held.highest, 65.535);
  EXPECT_EQ(held.clamped, 1);
  EXPECT_EQ(held.capped, 0);
}

}  // namespace
}  // namespace vela
