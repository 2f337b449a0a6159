#include "editors/compensation/compensation_tables.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "calibration/conversions.h"
#include "editor_fakes.h"

namespace vela {
namespace {

using editor_testing::RecordingSender;
using editor_testing::ScriptedMessages;
using editor_testing::SentFrame;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// Every stored byte comes back through its text (below); these are the ends beyond a byte: the
// water table's 100 % and the ten-bit throttle position of the pump's de-activation.
TEST(CompensationConversions, EndsBeyondAByte) {
  EXPECT_EQ(WaterCompStored(100.0), 256);
  EXPECT_EQ(DeactivateStoredTps(100.0), 1023);
  EXPECT_EQ(DeactivateStoredTps(24.9), 255);
}

TEST(CompensationConversions, ThrottlePumpRoundsToOneDecimalBeforeMakingWhole) {
  // 0.2 / 0.390625 = 0.512: to one decimal 0.5, made whole to the even 0 (straight to whole
  // it would be 1).
  EXPECT_EQ(ThrottlePumpStored(0.2), 0);
  EXPECT_EQ(WaterCompStored(0.2), 1);
  // 0.6 / 0.390625 = 1.536: 1.5, made whole to the even 2.
  EXPECT_EQ(ThrottlePumpStored(0.6), 2);
}

TEST(CompensationConversions, DeactivateOverOnAMapBasisGoesThroughTheSensorLine) {
  // A 2.5 bar span read from 0 kPa: 0.5 bar of boost is 150 kPa, 2.988 V, count 76.8 -> 77.
  const MapSensorLine line{1.0, 0.0, 250.0};
  EXPECT_EQ(DeactivateStoredMap(0.5, line), 154);
  EXPECT_NEAR(DeactivateShownMap(154, line), 0.504, 0.001);
  // Full span is count 128, twice 256: beyond the byte.
  EXPECT_EQ(DeactivateStoredMap(1.5, line), 256);
}

TEST(CompensationConversions, EveryStoredByteComesBackThroughItsShownText) {
  SensorSetup tps_basis;
  SensorSetup map_basis;
  map_basis.throttle_pump_on_map = true;
  map_basis.map_sensor_type = 3;
  map_basis.map_scale_entry = 0;
  for (const CompTable table : kCompTables) {
    for (int row = 0; row < static_cast<int>(LayoutOf(table).positions.size()); ++row) {
      for (const SensorSetup* sensors : {&tps_basis, &map_basis}) {
        const CellFormat format = FormatOf(table, row, *sensors);
        for (int raw = format.min_raw; raw <= format.max_raw; ++raw) {
          const std::string text = FormatFixed(format.shown(raw), format.decimals, '.', nullptr);
          const int back = format.stored(std::stod(text));
          // On a MAP basis the stored value is always twice a count: odd bytes show between.
          if (table == CompTable::kThrottlePump && row == 3 && sensors->throttle_pump_on_map) {
            EXPECT_EQ(back, raw % 2 == 0 ? raw : back) << raw;
            EXPECT_LE(std::abs(back - raw), 1) << raw;
          } else {
            EXPECT_EQ(back, raw) << LayoutOf(table).name << " row " << row << " raw " << raw;
          }
        }
      }
    }
  }
}

class CompensationEditorTest : public ::testing::Test, public editor_testing::EditFixture {
 protected:
  CompensationEditor editor{Parts()};
};

TEST_F(CompensationEditorTest, AReportedPositionIsWrittenOneLowerWhenNotBelowTheBound) {
  EXPECT_TRUE(editor.CellChanged(CompTable::kWaterMap, 2, 982, 980, 64));
  EXPECT_THAT(sender.frames, ElementsAre(SentFrame{4, 981, 64}));
  EXPECT_EQ(state.compensation.WaterMap[2], 64);
  EXPECT_EQ(image.Byte(981), 64);
  EXPECT_FALSE(editor.CellChanged(CompTable::kWaterMap, 2, 979, 980, 64));
  EXPECT_FALSE(editor.CellChanged(CompTable::kWaterMap, 2, 983, 980, 64));  // not row 2's
  EXPECT_TRUE(editor.CellChanged(CompTable::kThrottlePump, 3, 952, 952, 200));
  EXPECT_EQ(sender.frames.back(), (SentFrame{4, 951, 200}));
  EXPECT_EQ(state.compensation.ThrottlePump[3], 200);
}

TEST_F(CompensationEditorTest, AValueThatDoesNotFitTheByteIsRefusedAndNothingIsSent) {
  EXPECT_FALSE(editor.StoredOfText(CompTable::kWaterMap, 0, "100", '.'));
  ASSERT_EQ(messages.shown.size(), 1u);
  EXPECT_EQ(messages.shown[0].title, "MORVANE Warning");
  EXPECT_EQ(messages.shown[0].lines[0],
            "WaterMap row -20: 100 would be stored as 256, which does not fit the ECU's byte (0 "
            "to 255).");
  EXPECT_FALSE(editor.StoredOfText(CompTable::kThrottlePump, 3, "100", '.'));  // 1023
  EXPECT_FALSE(editor.StoredOfText(CompTable::kAirMap, 0, "-12.9", '.'));
  EXPECT_FALSE(editor.StoredOfText(CompTable::kBattMap, 0, "2.01", '.'));  // the check's limit
  EXPECT_FALSE(editor.StoredOfText(CompTable::kBattMap, 0, "abc", '.'));
  EXPECT_FALSE(editor.CellChanged(CompTable::kWaterMap, 0, 980, 980, 256));
  EXPECT_THAT(sender.frames, IsEmpty());
  EXPECT_EQ(messages.shown.size(), 6u);
  EXPECT_EQ(editor.StoredOfText(CompTable::kBattMap, 0, "1,25", ','), 125);
  EXPECT_EQ(editor.StoredOfText(CompTable::kAirMap, 0, "12.7", '.'), 255);
}

TEST(SmallGridModel, ValueKeysStepTheShownValueAndAlwaysReachAnotherByte) {
  SmallGridModel grid({"-20", "0"}, {979, 980});
  SensorSetup sensors;
  for (int row = 0; row < 2; ++row) grid.SetFormat(row, FormatOf(CompTable::kWaterMap, row, {}));
  std::vector<SmallGridChange> reported;
  grid.SetChangedHandler([&](const std::vector<SmallGridChange>& c) { reported = c; });
  grid.SetRaw(0, 26);  // 10.2 %
  grid.Select(0, 1, 0);
  grid.ApplyStep({ValueKey::kStandard, 1});  // +1 %: 11.2 % is 28.67 -> 29; 0 % -> 1 % is 3
  EXPECT_EQ(grid.Raw(0), 29);
  EXPECT_EQ(grid.Raw(1), 3);
  EXPECT_THAT(reported, ElementsAre(SmallGridChange{0, 980, 980}, SmallGridChange{1, 981, 980}));
  grid.Select(0, 0, 0);
  grid.ApplyStep({ValueKey::kFine, -1});  // 0.1 % is less than a byte step: one byte down
  EXPECT_EQ(grid.Raw(0), 28);
  grid.SetRaw(0, 255);
  reported.clear();
  grid.ApplyStep({ValueKey::kLarge, 1});  // at the top: nothing changes, nothing reported
  EXPECT_EQ(grid.Raw(0), 255);
  EXPECT_THAT(reported, IsEmpty());
  grid.ApplyStep({ValueKey::kOneMs, -1});  // no effect on a percent table
  EXPECT_EQ(grid.Raw(0), 255);
  EXPECT_TRUE(grid.HandleKey({MapKey::kLetter, 'P'}));
  EXPECT_EQ(grid.Current(), 1);
}

TEST_F(CompensationEditorTest, ABatteryByteAboveTheCheckIsRefusedWhateverTheOthersHold) {
  image.SetByte(1007, 250);  // a byte beyond the table's rows that the ECU holds too high
  state.compensation.BattMap[8] = 250;
  EXPECT_FALSE(editor.CellChanged(CompTable::kBattMap, 1, 1001, 1000, 201));
  ASSERT_EQ(messages.shown.size(), 1u);
  EXPECT_THAT(messages.shown[0].lines[0],
              ::testing::HasSubstr("\"Battery Voltage Compensation Invalid\""));
  EXPECT_TRUE(editor.CellChanged(CompTable::kBattMap, 1, 1001, 1000, 200));
  EXPECT_THAT(sender.frames, ElementsAre(SentFrame{4, 1000, 200}));
}

TEST(CurveTemperature, OnlyATemperatureOnTheTableGetsALivePoint) {
  EXPECT_EQ(CurveTemperature("23"), 23.0);
  EXPECT_EQ(CurveTemperature("-20"), -20.0);
  EXPECT_EQ(CurveTemperature("120"), 120.0);
  for (const char* none : {"999", ">120", "<-20", "Error", "Over", "", "--"}) {
    EXPECT_FALSE(CurveTemperature(none)) << none;
  }
}

}  // namespace
}  // namespace vela
