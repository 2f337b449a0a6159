#include "calibration/conversions.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "calibration/rounding.h"
#include "support/platform_fakes.h"

namespace vela {
namespace {

using testing::RecordingMessages;

TEST(RoundHalfEven, SendsHalvesToTheEvenNeighbour) {
  EXPECT_EQ(RoundHalfEven(2.5), 2.0);
  EXPECT_EQ(RoundHalfEven(3.5), 4.0);
  EXPECT_EQ(RoundHalfEven(-3.5), -4.0);
  EXPECT_EQ(RoundHalfEven(2.5000001), 3.0);
  EXPECT_EQ(RoundHalfEven(1.2345 * 1000.0), 1234.0);  // typed decimal half, inexact in binary
}

TEST(FormatFixed, PadsToExactlyTheRequestedDecimals) {
  RecordingMessages sink;
  EXPECT_EQ(FormatFixed("5", 3, '.', &sink), "5.000");
  EXPECT_EQ(FormatFixed("  7 ", 1, '.', &sink), "7.0");
  EXPECT_EQ(FormatFixed("1e3", 1, '.', &sink), "1000.0");
  EXPECT_EQ(FormatFixed(".25", 2, '.', &sink), "0.25");
  EXPECT_EQ(FormatFixed("12.7", 0, '.', &sink), "13");
  EXPECT_TRUE(sink.shown.empty());
  // The computer's comma is used, and taken in the text as its point.
  EXPECT_EQ(FormatFixed("1.25", 3, ',', nullptr), "1,250");
  EXPECT_EQ(FormatFixed("1,25", 1, ',', nullptr), "1,2");
}

TEST(FormatFixed, RoundsTheDecimalDigitsHalfToEven) {
  EXPECT_EQ(FormatFixed("0.125", 2, '.', nullptr), "0.12");
  EXPECT_EQ(FormatFixed("0.1251", 2, '.', nullptr), "0.13");
  EXPECT_EQ(FormatFixed("99.95", 1, '.', nullptr), "100.0");
  EXPECT_EQ(FormatFixed("-1.5", 0, '.', nullptr), "-2");
  EXPECT_EQ(FormatFixed("-0.0004", 3, '.', nullptr), "0.000");
  EXPECT_EQ(FormatFixed("0.5", 0, '.', nullptr), "0");
}

TEST(FormatFixed, UnreadableTextShowsTheLanguageErrorOnceAndComesBackAsItStood) {
  RecordingMessages sink;
  EXPECT_EQ(FormatFixed("1,5", 2, '.', &sink), "1,5");
  ASSERT_EQ(sink.shown.size(), 1u);
  EXPECT_EQ(sink.shown[0].icon, MessageIcon::kInformation);
  EXPECT_EQ(sink.shown[0].title, "Language Error");
  EXPECT_EQ(sink.shown[0].lines,
            (std::vector<std::string>{
                "This error has arrisen from your language settings on your computer.           ",
                "Please contact MORVANE Engine Management to solve the problem."}));
  EXPECT_EQ(FormatFixed("1.2.3", 1, ',', &sink), "1,2.3");
  for (const char* text : {"", "abc", "-", ".", "1e", "1e999", "5x"}) {
    EXPECT_EQ(FormatFixed(text, 1, '.', &sink), text);
  }
  EXPECT_EQ(sink.shown.size(), 9u);
  EXPECT_EQ(FormatFixed("abc", 1, '.', nullptr), "abc");
}

TEST(FormatFixed, FormatsComputedValuesByTheirShortestDecimalText) {
  EXPECT_EQ(FormatFixed(FuelMsFromRaw(1234), 3, '.', nullptr), "1.234");
  EXPECT_EQ(FormatFixed(0.125, 2, '.', nullptr), "0.12");
  EXPECT_EQ(FormatFixed(2.675, 2, ',', nullptr), "2,68");
  EXPECT_EQ(FormatFixed(1e20, 0, '.', nullptr), "100000000000000000000");
}

TEST(DecimalSeparatorFrom, ReadsTheComputersTextOfOneThousandth) {
  EXPECT_EQ(DecimalSeparatorFrom("0.001"), '.');
  EXPECT_EQ(DecimalSeparatorFrom("0,001"), ',');
}

TEST(RawConversions, GoBackWithHalvesToEvenAndClampToTheByte) {
  EXPECT_DOUBLE_EQ(AirCompFromRaw(0), -12.8);
  EXPECT_EQ(RawFromAirComp(-12.8), 0);
  EXPECT_EQ(RawFromAirComp(12.7), 255);
  EXPECT_EQ(RawFromAirComp(20.0), 255);
  EXPECT_EQ(RawFromAirComp(0.05), 128);  // 128.5 -> 128
  EXPECT_EQ(RawFromTriggerOffset(60.25), 120);
  EXPECT_DOUBLE_EQ(TriggerOffsetFromRaw(121), 60.5);
  EXPECT_DOUBLE_EQ(BattCompFromRaw(7), 0.07);
  EXPECT_EQ(RawFromBattComp(2.005), 200);
  EXPECT_EQ(RawFromSensorFraction(1.0), 255);
  EXPECT_EQ(RawFromSensorFraction(3213.0 / 3773.0), 218);
}

// A falling (NTC) curve: 20 counts per 20 degrees, 200 at -20 down to 60 at 120.
constexpr std::array<double, 8> kFalling = {200, 180, 160, 140, 120, 100, 80, 60};

TEST(TemperatureText, InterpolatesBetweenPointsInWholeDegrees) {
  EXPECT_EQ(TemperatureText(200, kFalling), "-20");
  EXPECT_EQ(TemperatureText(181, kFalling), "-1");
  EXPECT_EQ(TemperatureText(127.5, kFalling), "52");  // 52.5 -> 52
  EXPECT_EQ(TemperatureText(60, kFalling), "120");
  const std::array<double, 8> rising = {60, 80, 100, 120, 140, 160, 180, 200};
  EXPECT_EQ(TemperatureText(90, rising), "10");
  EXPECT_EQ(TemperatureText(50, rising), "<-20");
  EXPECT_EQ(TemperatureText(210, rising), ">120");
}

TEST(TemperatureText, ShowsSentinelsBeyondTheCurve) {
  EXPECT_EQ(TemperatureText(201, kFalling), "<-20");
  EXPECT_EQ(TemperatureText(59, kFalling), ">120");
  EXPECT_EQ(TemperatureText(std::nan(""), kFalling), ">120");
  const std::array<double, 8> flat = {0, 0, 0, 0, 0, 0, 0, 0};
  EXPECT_EQ(TemperatureText(0, flat), "-20");
  EXPECT_EQ(TemperatureText(5, flat), ">120");
}

}  // namespace
}  // namespace vela
