#include "editors/compensation/temperature_sensors.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "calibration/conversions.h"
#include "editor_fakes.h"

namespace vela {
namespace {

using editor_testing::RecordingSender;
using editor_testing::ScriptedMessages;
using editor_testing::SentFrame;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(SensorRatioByte, EachListOffersItsSensorsAndNoMore) {
  EXPECT_FALSE(KnownSensorOhms(SensorTable::kWater, 0));
  EXPECT_TRUE(KnownSensorOhms(SensorTable::kWater, 7));
  EXPECT_FALSE(KnownSensorOhms(SensorTable::kAir, 6));
  EXPECT_EQ(SensorListTexts(SensorTable::kWater, false).size(), 8u);
  EXPECT_EQ(SensorListTexts(SensorTable::kAir, false)[2], " VW 1 Wire");
}

TEST(SensorRatioByte, HalfwayAndTopOfTheByte) {
  EXPECT_EQ(SensorRatioByte(3213), 218);
  EXPECT_EQ(SensorRatioByte(35429), 252);
  EXPECT_EQ(SensorRatioByte(286159), 255);
  EXPECT_EQ(SensorRatioByte(286160), 256);
  for (int b = 1; b <= 255; ++b) {
    EXPECT_EQ(SensorRatioByte(std::round(OhmsOfRatioByte(static_cast<std::uint8_t>(b)))), b) << b;
  }
}

class SensorTableSenderTest : public ::testing::Test, public editor_testing::EditFixture {
 protected:
  static std::array<std::string, 8> Texts(const std::array<int, 8>& ohms) {
    std::array<std::string, 8> texts;
    for (int i = 0; i < 8; ++i) texts[i] = std::to_string(ohms[i]);
    return texts;
  }
  SensorTableSender tables{Parts()};
};

TEST_F(SensorTableSenderTest, ATableGoesOutAsItsEightPointsInOrder) {
  ASSERT_TRUE(
      tables.Send(SensorTable::kWater, Texts(*KnownSensorOhms(SensorTable::kWater, 5)), '.'));
  EXPECT_THAT(sender.frames,
              ElementsAre(SentFrame{4, 987, 251}, SentFrame{4, 988, 248}, SentFrame{4, 989, 224},
                          SentFrame{4, 990, 175}, SentFrame{4, 991, 136}, SentFrame{4, 992, 110},
                          SentFrame{4, 993, 61}, SentFrame{4, 994, 52}));
  EXPECT_EQ(tables.LastSent(SensorTable::kWater)[8], 52);
  EXPECT_EQ(state.sensors.water_sensor_cal[7], 52);
  sender.frames.clear();
  ASSERT_TRUE(tables.Send(SensorTable::kAir, Texts(*KnownSensorOhms(SensorTable::kAir, 1)), '.'));
  EXPECT_EQ(sender.frames.front(), (SentFrame{4, 971, 252}));
  EXPECT_EQ(image.Byte(978), 31);
}

TEST_F(SensorTableSenderTest, ABadRowIsNamedAndNothingOfTheTableIsSent) {
  std::array<std::string, 8> texts = Texts(*KnownSensorOhms(SensorTable::kWater, 1));
  for (const char* bad : {"abc", "0", "-5", "286160", ""}) {
    texts[7] = bad;
    EXPECT_FALSE(tables.Send(SensorTable::kWater, texts, '.')) << bad;
  }
  EXPECT_THAT(sender.frames, IsEmpty());
  ASSERT_EQ(messages.shown.size(), 5u);
  EXPECT_EQ(messages.shown[0].lines[0],
            "The resistance at 120 \u00B0C (\"abc\") is not a number of ohms.");
  EXPECT_THAT(messages.shown[3].lines[0], ::testing::HasSubstr("too high"));
  EXPECT_EQ(image.Byte(994), 0);
}

TEST_F(SensorTableSenderTest, ATypedRowSendsThatRowAloneAndNeverACurveThatRises) {
  ASSERT_TRUE(
      tables.Send(SensorTable::kWater, Texts(*KnownSensorOhms(SensorTable::kWater, 7)), '.'));
  sender.frames.clear();
  // 40 C from 1147 to 1000 ohms: byte 172 becomes 164; its neighbours stay as they are.
  ASSERT_TRUE(tables.SendRow(SensorTable::kWater, 3, "1000", '.'));
  EXPECT_THAT(sender.frames, ElementsAre(SentFrame{4, 990, 164}));
  EXPECT_EQ(state.sensors.water_sensor_cal[3], 164);
  EXPECT_EQ(tables.LastSent(SensorTable::kWater)[4], 164);
  // 2.5 ohms at 40 C would sit below 60 C's point: the curve would rise, so nothing is sent.
  sender.frames.clear();
  EXPECT_FALSE(tables.SendRow(SensorTable::kWater, 3, "2.5", '.'));
  EXPECT_FALSE(tables.SendRow(SensorTable::kWater, 4, "5000", '.'));  // 60 C above 40 C's
  EXPECT_FALSE(tables.SendRow(SensorTable::kWater, 8, "1000", '.'));  // the live row
  EXPECT_THAT(sender.frames, IsEmpty());
  ASSERT_EQ(messages.shown.size(), 2u);
  EXPECT_THAT(messages.shown[0].lines[0],
              ::testing::HasSubstr("\"Water Temp Sensor Calibration Error\""));
  EXPECT_EQ(image.Byte(990), 164);
}

TEST(SteinhartHart, ThreePointsOfAKnownSensorGiveItsCurveBack) {
  // An NTC of 10 kilohm at 25 C, B = 3950: R = 10000 exp(3950 (1/T - 1/298.15)).
  const auto ohms = [](double c) {
    return 10000.0 * std::exp(3950.0 * (1.0 / (c + 273.15) - 1.0 / 298.15));
  };
  std::string problem;
  const auto rows = FillFromPoints({{{0, ohms(0)}, {40, ohms(40)}, {100, ohms(100)}}}, &problem);
  ASSERT_TRUE(rows) << problem;
  for (int i = 0; i < 8; ++i) {
    const double celsius = kSensorPointTemperatures[i];
    EXPECT_NEAR(rows->ohms[i] / ohms(celsius), 1.0, 0.03) << celsius;
    EXPECT_NEAR(CelsiusAt(rows->curve, rows->ohms[i]), celsius, 1e-6);
  }
  EXPECT_THAT(rows->extrapolated,
              ElementsAre(true, false, false, false, false, false, false, true));
  // The curve passes through the three points exactly.
  EXPECT_NEAR(*OhmsAt(rows->curve, 40), ohms(40), 1e-6 * ohms(40));
}

TEST(SteinhartHart, PointsThatMakeNoSensorCurveAreRefused) {
  std::string problem;
  EXPECT_FALSE(FillFromPoints({{{20, 3000}, {20, 2000}, {80, 300}}}, &problem));
  EXPECT_FALSE(problem.empty());
  // Resistance rising with temperature: not an NTC sensor.
  EXPECT_FALSE(FillFromPoints({{{0, 300}, {40, 1000}, {100, 5000}}}, &problem));
  EXPECT_THAT(problem, ::testing::HasSubstr("falls"));
  EXPECT_FALSE(FillFromPoints({{{0, 0}, {40, 1000}, {100, 200}}}, &problem));
}

}  // namespace
}  // namespace vela
