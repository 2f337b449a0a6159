#include "editors/compare/compare_texts.h"

#include <gtest/gtest.h>

namespace vela {
namespace {

const OtherSide kEcu{OtherSideKind::kEcu, {}};
const OtherSide kFile{OtherSideKind::kMapFile, "base.sm1"};

TEST(CompareTexts, CountsAreSaidInWords) {
  EXPECT_EQ(CellCountText(0, kEcu), "No cell differs from ECU as last read");
  EXPECT_EQ(CellCountText(1, kFile), "1 cell differs from map file base.sm1");
  EXPECT_EQ(CellCountText(12, kEcu), "12 cells differ from ECU as last read");
  EXPECT_EQ(SetupCountText({}, kEcu), "No set-up byte differs from ECU as last read");
}

// A field of several bytes is named once; past five fields the rest is "...".
TEST(CompareTexts, SetupCountNamesEachFieldOnce) {
  std::vector<SetupByteDifference> bytes = {{949, "RevLimit1", 0, 1}, {950, "RevLimit1", 0, 2}};
  EXPECT_EQ(SetupCountText(bytes, kEcu), "2 set-up bytes differ from ECU as last read: RevLimit1");
  for (std::string_view field : {"A", "B", "C", "D", "E", "F"}) {
    bytes.push_back({1000, field, 0, 1});
  }
  EXPECT_EQ(SetupCountText(bytes, kEcu),
            "8 set-up bytes differ from ECU as last read: RevLimit1, A, B, C, D, ...");
}

TEST(CompareTexts, ValuesCarryTheDecimalsMarkAndSignOfADifference) {
  EXPECT_EQ(ValueText(0.12, 3, '.', true), "+0.120");
  EXPECT_EQ(ValueText(-1.5, 1, ',', true), "-1,5");
  EXPECT_EQ(ValueText(2.0, 3, ',', false), "2,000");
  EXPECT_EQ(ValueText(-0.0004, 3, '.', true), "0.000") << "no sign on what rounds to 0";
  EXPECT_EQ(ValueText(7.0, 0, ',', true), "+7");
}

TEST(CompareTexts, RefusedEditSaysWhatIsShownAndTheWayBack) {
  EXPECT_NE(EditRefusedNote(CompareView::kDifference).find("the difference"), std::string::npos);
  EXPECT_NE(EditRefusedNote(CompareView::kOther).find("Ctrl-Q"), std::string::npos);
}

}  // namespace
}  // namespace vela
