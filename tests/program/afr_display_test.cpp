#include "program/afr_display.h"

#include <gtest/gtest.h>

#include "base/program_settings.h"

namespace vela {
namespace {

TEST(AfrDisplay, EachChoiceGivesItsCaptionsAndValue) {
  EXPECT_EQ(AfrCaptionsOf(0).fuel, "  Gasoline");
  EXPECT_EQ(AfrCaptionsOf(0).value, "AFR Value (Gasoline x10)");
  EXPECT_EQ(AfrCaptionsOf(4).fuel, "    Diesel");
  EXPECT_EQ(AfrCaptionsOf(kAfrModeLambda).value, "Lambda Value (x100)");
  EXPECT_EQ(AfrCaptionsOf(kAfrModeDisabled).fuel, "Disabled");
  EXPECT_NEAR(*AfrShownValue(0.9, 2), 5.76, 1e-9);
  EXPECT_NEAR(*AfrShownValue(1.1, kAfrModeCo), 0.0, 1e-9);  // no CO on the lean side
}

// The map pages, the Data Page and the inputs page all show this text: no reading reads "-"
// everywhere, never "0.0" on one page and "-" on another.
TEST(AfrDisplay, TheReadOutTextIsTheValueInTheModesDecimalsOrADash) {
  EXPECT_EQ(AfrText(0.0, 0, '.'), "-");
  EXPECT_EQ(AfrText(1.0, kAfrModeDisabled, '.'), "-");
  EXPECT_EQ(AfrText(1.0, 0, ','), "14,7");
  EXPECT_EQ(AfrText(0.873, kAfrModeLambda, '.'), "0.87");
  EXPECT_EQ(AfrText(0.9, kAfrModeCo, '.'), "3.0");
}

TEST(AfrDisplay, Line4OfTheSettingsTakesEveryEntryOfTheList) {
  ProgramSettings settings;
  int port = 0;
  ApplySetupLine(4, "AFR Display Mode = 7 ", settings, port);
  EXPECT_EQ(settings.afr_display_mode, kAfrModeDisabled);
  ApplySetupLine(4, "AFR Display Mode = 8 ", settings, port);
  EXPECT_EQ(settings.afr_display_mode, kAfrModeDisabled) << "beyond the list: unchanged";
}

}  // namespace
}  // namespace vela
