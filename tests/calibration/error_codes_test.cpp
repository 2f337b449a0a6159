#include "calibration/error_codes.h"

#include <gtest/gtest.h>

#include <string>

namespace vela {
namespace {

// The table's texts are its own; these pin the rules around them: the two leading blanks, codes
// that share an entry, the empty titles, the fallback for codes outside the table, and the seams
// where an explanation is put together from parts.
TEST(ErrorCodeTable, TitlesKeepTheirBlanksAndSharedAndPlaceholderEntriesStandAsWritten) {
  EXPECT_EQ(ErrorTitle(0), "  No Error");
  EXPECT_EQ(ErrorTitle(3), "  Injector Duty Cycle too High");
  EXPECT_EQ(ErrorTitle(139), ErrorTitle(3));
  EXPECT_EQ(ErrorTitle(13), "  TPS out of Range");  // with the idle control explanation
  EXPECT_EQ(ErrorTitle(16), "");
  EXPECT_EQ(ErrorExplanation(31), ErrorExplanation(1));
  EXPECT_EQ(ErrorExplanation(139), ErrorExplanation(3));
  EXPECT_EQ(ErrorExplanation(33), ErrorExplanation(13));
  EXPECT_EQ(ErrorExplanation(13).substr(0, 13), "Idle control ");
  EXPECT_EQ(ErrorExplanation(0), "No Errors Present.");
  EXPECT_EQ(ErrorExplanation(12), "Oops....");
  EXPECT_EQ(ErrorExplanation(16), "");
}

TEST(ErrorCodeTable, CodesOutsideTheTableAreUnknown) {
  for (int code : {-1, 16384, 22, 30, 99, 138, 140, 255, 32767, -32768}) {
    EXPECT_EQ(ErrorTitle(code), "  Unknown Code") << code;
    EXPECT_EQ(ErrorExplanation(code), "Unknown Code....") << code;
  }
}

TEST(ErrorCodeTable, JoinedExplanationsRunOnWithOneBlankAtTheSeam) {
  EXPECT_NE(ErrorExplanation(3).find("damage to the engine. Possible issues are:"),
            std::string::npos);
  EXPECT_NE(ErrorExplanation(5).find("on the main setup page. Calibrate the ECU"),
            std::string::npos);
  const std::string vital =
      "if possible. It is, however, vital that a home position is used for coil-on-plug "
      "applications.";
  for (int code : {7, 77}) {
    const std::string text = ErrorExplanation(code);
    EXPECT_EQ(text.substr(text.size() - vital.size()), vital) << code;
  }
  EXPECT_EQ(ErrorExplanation(79).find("vital"), std::string::npos);
  EXPECT_NE(ErrorExplanation(79).find("The signal either missed a pulse or is not present at all. "
                                      "This signal is needed"),
            std::string::npos);
}

TEST(ErrorExplanationSlots, TheLookupFillsTheSlotItIsGivenAndNoOther) {
  ErrorExplanations slots;
  EXPECT_EQ(slots.ErrorCodeText(2, 66), "  Missing RPM Pulse");
  EXPECT_EQ(slots.Explanation(2), ErrorExplanation(66));
  for (int slot : {0, 1, 3, 4, 5}) EXPECT_EQ(slots.Explanation(slot), "") << slot;
  EXPECT_EQ(slots.ErrorCodeText(5, 8), "  Air Temp Sensor Unplugged");
  EXPECT_EQ(slots.Explanation(5), "Air temperature sensor possibly unplugged or open circuit.");
  slots.ErrorCodeText(2, 16);
  EXPECT_EQ(slots.Explanation(2), "");
}

TEST(ErrorExplanationSlots, ASlotOfSixOrMoreIsRefusedButTheTitleStillComes) {
  ErrorExplanations slots;
  for (int slot = 0; slot < kErrorExplanationSlots; ++slot) slots.ErrorCodeText(slot, 1);
  EXPECT_EQ(slots.ErrorCodeText(6, 2), "  Boost Limiter Exceeded");
  EXPECT_EQ(slots.ErrorCodeText(-1, 2), "  Boost Limiter Exceeded");
  EXPECT_EQ(slots.Explanation(6), "");
  for (int slot = 0; slot < kErrorExplanationSlots; ++slot) {
    EXPECT_EQ(slots.Explanation(slot), ErrorExplanation(1)) << slot;
  }
  slots.Clear();
  EXPECT_EQ(slots.Explanation(0), "");
}

TEST(ErrorRows, TheNumberIsPaddedByItsSizeAndCarriesABlankForItsSign) {
  EXPECT_EQ(ErrorRowText(0), "     0  -  No Error");
  EXPECT_EQ(ErrorRowText(10), "     10  -  Battery Voltage High");
  EXPECT_EQ(ErrorRowText(11), "   11  -  TPS out of Range - Low");
  EXPECT_EQ(ErrorRowText(100), "   100  -  Unknown Code");
  EXPECT_EQ(ErrorRowText(101), " 101  -  Unknown Code");
  EXPECT_EQ(ErrorRowText(139), " 139  -  Injector Duty Cycle too High");
  EXPECT_EQ(ErrorRowText(-5), "    -5  -  Unknown Code");
  // An empty title leaves the number and the dash alone.
  EXPECT_EQ(ErrorRowText(16), "   16  -");
}

}  // namespace
}  // namespace vela
