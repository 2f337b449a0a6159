#include "calibration/error_codes.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace vela {
namespace {

TEST(ErrorCodeTable, EveryCodeHasItsTitle) {
  const std::vector<std::pair<int, std::string_view>> titles = {
      {0, "  No Error"},
      {1, "  Rev Limiter Exceeded"},
      {31, "  Ignition Rev Limiter Exceeded"},
      {2, "  Boost Limiter Exceeded"},
      {32, "  Ignition Boost Limiter Exceeded"},
      {3, "  Injector Duty Cycle too High"},
      {139, "  Injector Duty Cycle too High"},
      {4, "  Ignition Charge Time Reduced 1"},
      {24, "  Ignition Charge Time Reduced 2"},
      {5, "  Ignition Trigger Angle too Small (Advanced)"},
      {25, "  Ignition Trigger Angle too Large (Retarded)"},
      {6, "  Noisy RPM Signal"},
      {66, "  Missing RPM Pulse"},
      {76, "  High Frequency RPM Noise"},
      {7, "  Home Position Signal Erratic Missing Pulses"},
      {77, "  Home Position Signal Missing Completely"},
      {79, "  Home Position Signal EXTRA Pulse"},
      {37, "  Noisy Home Position Signal"},
      {8, "  Air Temp Sensor Unplugged"},
      {18, "  Air Temp Sensor Shorted"},
      {9, "  Water Temp Sensor unplugged"},
      {19, "  Water Temp Sensor Shorted"},
      {29, "  Water Temp Over 100 deg C"},
      {10, "  Battery Voltage High"},
      {20, "  Battery Voltage Low"},
      {11, "  TPS out of Range - Low"},
      {21, "  TPS out of Range - High"},
      {12, "  Throttle Pump Error"},
      {13, "  TPS out of Range"},
      {33, "  Idle Control Range Error - High"},
      {14, "  Lambda Range Error"},
      {15, "  Spare 1"},
      {16, ""},
      {17, ""},
  };
  for (const auto& [code, title] : titles) EXPECT_EQ(ErrorTitle(code), title) << code;
}

TEST(ErrorCodeTable, CodesOutsideTheTableAreUnknown) {
  for (int code : {-1, 16384, 22, 30, 99, 138, 140, 255, 32767, -32768}) {
    EXPECT_EQ(ErrorTitle(code), "  Unknown Code") << code;
    EXPECT_EQ(ErrorExplanation(code), "Unknown Code....") << code;
  }
}

TEST(ErrorCodeTable, JoinedExplanationsRunOnWithoutAGap) {
  EXPECT_EQ(ErrorExplanation(3),
            "Injector open time is approaching or has exceeded 100%. Fuel flow rate is not "
            "sufficient to supply the engine with enough fuel at the correct AFR. This can cause "
            "damage to the engine. Possible issues are: Injectors are too small, fuel is pump too "
            "small, fuel filter blocked or one of these components are failing.");
  EXPECT_EQ(ErrorExplanation(5),
            "Ignition Trigger angle has bumped up against the limit and cannot hold the requested "
            "ignition angle. Advance the physical RPM input sensor position or trigger wheel so "
            "that it increases the trigger angle to a larger number on the main setup page. "
            "Calibrate the ECU to this new trigger angle position. Typical reason for this is if "
            "the trigger angle has to be set to low number, for eg: 30 deg and the ignition map "
            "requests 40 deg.");
  EXPECT_EQ(ErrorExplanation(25),
            "Ignition Trigger angle has bumped up against the limit and cannot hold the required "
            "ignition angle. Retard the physical RPM input sensor position or trigger wheel so "
            "that it decreases the trigger angle to a smaller number on the main setup page. "
            "Calibrate the ECU to this new trigger angle position. Typical reason for this is if "
            "the trigger angle has to be set to high number, for eg: 90 deg and the ignition map, "
            "or Anti-Lag control requests a negative ignition angle.");
  EXPECT_EQ(ErrorExplanation(7),
            "Home position signal was expected but did not happen. The signal missed a pulse. "
            "This signal is needed if wasted spark or coil on plug is being used. It is possible "
            "to run sequential fueling without a home position signal, but it is prefered to run "
            "it if possible. It is, however, vital that a home position is used for coil-on-plug "
            "applications.");
  EXPECT_EQ(ErrorExplanation(77),
            "Home position signal is missing completely. The signal is not present at all. This "
            "signal is needed if wasted spark or coil on plug is being used. It is possible to "
            "run sequential fueling without a home position signal, but it is prefered to run it "
            "if possible. It is, however, vital that a home position is used for coil-on-plug "
            "applications.");
  EXPECT_EQ(ErrorExplanation(79),
            "Home position signal was expected but did not happen. The signal either missed a "
            "pulse or is not present at all. This signal is needed if wasted spark or coil on "
            "plug is being used. It is possible to run sequential fueling without a home "
            "position signal, but it is prefered to run it if possible.");
}

TEST(ErrorCodeTable, SharedAndPlaceholderExplanationsStandAsWritten) {
  EXPECT_EQ(ErrorExplanation(31), ErrorExplanation(1));
  EXPECT_EQ(ErrorExplanation(32), ErrorExplanation(2));
  EXPECT_EQ(ErrorExplanation(24), ErrorExplanation(4));
  EXPECT_EQ(ErrorExplanation(139), ErrorExplanation(3));
  EXPECT_EQ(ErrorExplanation(33), ErrorExplanation(13));
  EXPECT_EQ(ErrorExplanation(13),
            "Idle control has reached the maximum or minimum limit and will not be able to "
            "correctly control the idle RPM.");
  EXPECT_EQ(ErrorExplanation(20),
            "Battery voltage either too high or too low. Check that the alternator is charging at "
            "the correct voltage. If voltage too low it might not be activating correctly.");
  EXPECT_EQ(ErrorExplanation(29),
            "Dangerously high water temperature measured. Cool engine down to avoid engine damage");
  EXPECT_EQ(ErrorExplanation(11),
            "TPS is out of range and is registering below 0% (under-voltage). This can cause a "
            "tuning inaccuracy. Confirm the TPS is properly secured and cannot move due to "
            "vibration or any other reasons. Otherwise, if you have not calibrated the TPS yet, "
            "then calibrate your TPS to remove the error code.");
  EXPECT_EQ(ErrorExplanation(0), "No Errors Present.");
  EXPECT_EQ(ErrorExplanation(12), "Oops....");
  EXPECT_EQ(ErrorExplanation(14), "Need to figure out what to say here.");
  EXPECT_EQ(ErrorExplanation(15), "Spare 1");
  EXPECT_EQ(ErrorExplanation(16), "");
  EXPECT_EQ(ErrorExplanation(17), "");
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
  EXPECT_EQ(ErrorRowText(0), kNoErrorRow);
  EXPECT_EQ(ErrorRowText(3), "     3  -  Injector Duty Cycle too High");
  EXPECT_EQ(ErrorRowText(10), "     10  -  Battery Voltage High");
  EXPECT_EQ(ErrorRowText(11), "   11  -  TPS out of Range - Low");
  EXPECT_EQ(ErrorRowText(100), "   100  -  Unknown Code");
  EXPECT_EQ(ErrorRowText(101), " 101  -  Unknown Code");
  EXPECT_EQ(ErrorRowText(139), " 139  -  Injector Duty Cycle too High");
  EXPECT_EQ(ErrorRowText(-5), "    -5  -  Unknown Code");
}

TEST(ErrorRows, EdgeCasesOfTheList) {
  EXPECT_EQ(ErrorRowText(13), "   13  -  TPS out of Range");
  // An empty title leaves the number and the dash alone.
  EXPECT_EQ(ErrorRowText(16), "   16  -");
  EXPECT_EQ(ErrorRowText(17), "   17  -");
}

}  // namespace
}  // namespace vela
