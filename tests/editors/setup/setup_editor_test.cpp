#include "editors/setup/setup_editor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "editor_fakes.h"
#include "editors/setup/map_sensor.h"
#include "editors/setup/raw_fields.h"
#include "editors/setup/setup_marks.h"
#include "editors/setup/setup_notes.h"

namespace vela {
namespace {

using editor_testing::SentFrame;
using editor_testing::SoundImage;
using editor_testing::SoundImageWith;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class SetupEditorTest : public ::testing::Test, public editor_testing::EditFixture {
 protected:
  SetupEditorTest() { Load(SoundImage()); }

  // The editors filled from `image`, as after an upload.
  void Load(const CalibrationImage& loaded) {
    image = loaded;
    state = editor_testing::Applied(image);
    state.SetupErrors.clear();
  }

  SetupEditor editor{Parts()};
};

TEST_F(SetupEditorTest, Byte942IsRecomputedFromTheEdgesTheAuxiliaryEntryAndTheLimiter) {
  editor.Choose(SetupChoice::kTriggerInputEdge, 1);
  editor.Choose(SetupChoice::kSparkOutputEdge, 1);
  editor.Choose(SetupChoice::kLimiterMode, 2);
  EXPECT_EQ(image.Byte(942), 1 + 4 + 192);
  EXPECT_EQ(sender.frames.back(), (SentFrame{4, 942, 197}));
  editor.Choose(SetupChoice::kHomeInputEdge, 1);
  editor.Choose(SetupChoice::kAuxOutput, 1);
  EXPECT_EQ(image.Byte(942), 1 + 2 + 4 + 32 + 192);
  // Either "Rev Counter Signal" keeps its own index; only the second entry sets bit 5.
  editor.Choose(SetupChoice::kAuxOutput, 3);
  EXPECT_EQ(state.setup.aux_output, 3);
  EXPECT_EQ(image.Byte(942), 1 + 2 + 4 + 192);
  editor.Choose(SetupChoice::kLimiterMode, 0);
  EXPECT_EQ(image.Byte(942), 1 + 2 + 4 + 64);
}

TEST_F(SetupEditorTest, EachChoiceSendsOnlyTheByteItLivesIn) {
  const std::tuple<SetupChoice, int, int, int> cases[] = {
      {SetupChoice::kCylinders, 7, 947, 7},
      {SetupChoice::kFuelMode, 2, 907, 2 | 64},
      {SetupChoice::kTriggerSensorType, 2, 903, 2},
      {SetupChoice::kTriggerSensorFlag, 1, 903, 0x82},
      {SetupChoice::kDwellMode, 1, 958, 50 | 64},
      {SetupChoice::kThrottlePumpBasis, 1, 955, 64 | 128},  // beside MAP load sensing
  };
  for (const auto& [choice, value, position, byte] : cases) {
    sender.frames.clear();
    editor.Choose(choice, value);
    EXPECT_THAT(sender.frames, ElementsAre(SentFrame{4, position, byte})) << position;
  }
}

TEST_F(SetupEditorTest, RisingTriggerEdgeWarnsFirstAndIsSentWhateverTheAnswer) {
  messages.answers.push_back(MessageAnswer::kOk);
  sender.on_send = [this] { EXPECT_EQ(messages.shown.size(), 1u); };
  editor.Choose(SetupChoice::kTriggerInputEdge, 1);
  ASSERT_EQ(messages.shown.size(), 1u);
  EXPECT_EQ(messages.shown[0].icon, MessageIcon::kExclamation);
  EXPECT_EQ(messages.shown[0].title, "MORVANE Warning");
  EXPECT_THAT(messages.shown[0].lines,
              ElementsAre("Please Note that you have selected Rising Edge Trigger Input mode.", "",
                          "This mode is normally only used on nissan distibutors. If this value "
                          "is ",
                          "set incorrectly, it can cause the motor to have rotor phasing "
                          "problems.    "));
  EXPECT_EQ(image.Byte(942) & 1, 1);
  editor.Choose(SetupChoice::kTriggerInputEdge, 0);
  EXPECT_EQ(messages.shown.size(), 1u);
}

TEST_F(SetupEditorTest, WhileTheEditorsAreFilledNothingIsKeptSentOrShown) {
  suppress = true;
  const CalibrationImage before = image;
  editor.Choose(SetupChoice::kTriggerInputEdge, 1);
  editor.Choose(SetupChoice::kCylinders, 1);
  EXPECT_FALSE(editor.SetRevLimitRpm(1, 7000).has_value());
  editor.SetRawByte(884, 3);
  EXPECT_THAT(messages.shown, IsEmpty());
  EXPECT_THAT(sender.frames, IsEmpty());
  EXPECT_EQ(image.Bytes(), before.Bytes());
  EXPECT_EQ(state.setup.trigger_input_edge, 0);
}

TEST_F(SetupEditorTest, RevLimitersAreEnginePeriodsSentSoNoPassingSpeedExceedsBothLimits) {
  // 6800 RPM is 8823.5 us, made 8824 (0x2278).
  Load(SoundImageWith({{949, 0x78}, {950, 0x22}}));
  // Up to 7200 RPM: 8333 us (0x208D), a shorter period: the low byte goes first.
  ASSERT_TRUE(editor.SetRevLimitRpm(1, 7200));
  EXPECT_THAT(sender.frames, ElementsAre(SentFrame{4, 949, 0x8D}, SentFrame{4, 950, 0x20}));
  // Down to 5000 RPM: 12000 us (0x2EE0), longer: the high byte goes first.
  sender.frames.clear();
  ASSERT_TRUE(editor.SetRevLimitRpm(1, 5000));
  EXPECT_THAT(sender.frames, ElementsAre(SentFrame{4, 950, 0x2E}, SentFrame{4, 949, 0xE0}));
  // The same speed again changes no byte and sends nothing.
  sender.frames.clear();
  ASSERT_TRUE(editor.SetRevLimitRpm(1, 5000));
  EXPECT_THAT(sender.frames, IsEmpty());
  // A speed whose period does not fit 16 bits, or no speed at all, is refused.
  EXPECT_FALSE(editor.SetRevLimitRpm(2, 900));
  EXPECT_FALSE(editor.SetRevLimitRpm(2, 0));
  EXPECT_THAT(sender.frames, IsEmpty());
}

TEST_F(SetupEditorTest, TheFiveBarSensorWithAllThreeMapFlagsIsNotOfferedAndSaysWhy) {
  // MAP load sensing is on in the sound image; altitude compensation, then the 5 bar sensor.
  ASSERT_FALSE(editor.Choose(SetupChoice::kAltitudeComp, 1).empty());
  ASSERT_FALSE(editor.Choose(SetupChoice::kMapSensorType, 5).empty());
  sender.frames.clear();
  // A MAP-based throttle pump would make byte 955 read 32 + 64 + 128 + 5 = 229.
  const ChangeOutcome pump = editor.TryChoose(SetupChoice::kThrottlePumpBasis, 1);
  ASSERT_TRUE(pump.Refused());
  EXPECT_EQ(RefusalText(pump),
            "it would set byte 955 to 229, which fails \"Map Sensor Setup Invalid\": byte 955 (the "
            "MAP sensor type and its three flags) is above 228");
  EXPECT_THAT(editor.Choose(SetupChoice::kThrottlePumpBasis, 1), IsEmpty());
  EXPECT_FALSE(state.sensors.throttle_pump_on_map);
  // The other way round: with all three flags on, the 5 bar sensor is the one not offered.
  ASSERT_FALSE(editor.Choose(SetupChoice::kMapSensorType, 4).empty());
  ASSERT_FALSE(editor.Choose(SetupChoice::kThrottlePumpBasis, 1).empty());
  sender.frames.clear();
  EXPECT_TRUE(editor.TryChoose(SetupChoice::kMapSensorType, 5).Refused());
  EXPECT_FALSE(editor.TryChoose(SetupChoice::kMapSensorType, 3).Refused());
  EXPECT_THAT(editor.Choose(SetupChoice::kMapSensorType, 5), IsEmpty());
  // Nor can the pump lose its MAP sensor: turning both its users off is refused at the last.
  ASSERT_FALSE(editor.Choose(SetupChoice::kAltitudeComp, 0).empty());
  EXPECT_THAT(RefusalText(editor.TryChoose(SetupChoice::kLoadSensing, kLoadSensingTps)),
              ::testing::HasSubstr("\"Throttle Pump Setup Error\""));
  EXPECT_EQ(image.Byte(955), 64 | 128 | 4);
}

TEST_F(SetupEditorTest, ABadByteFromTheEcuIsReplacedOnlyByAGoodOne) {
  // No output function, the idle minimum above the maximum, a battery byte beyond the table
  // above 2.00 ms.
  Load(SoundImageWith({{884, 20}, {1014, 50}, {1015, 40}, {1007, 250}}));
  EXPECT_EQ(editor.RawRange(884), (std::pair{0, 15}));
  EXPECT_THAT(editor.SetRawByte(884, 19), IsEmpty());
  EXPECT_THAT(editor.SetRawByte(884, 15), ElementsAre(ByteWrite{884, 15}));
  EXPECT_EQ(editor.RawRange(1015), (std::pair{50, 255}));
  EXPECT_THAT(editor.SetRawByte(1015, 45), IsEmpty());
  EXPECT_THAT(editor.SetRawByte(1015, 50), ElementsAre(ByteWrite{1015, 50}));
  // A byte no check reads takes anything, and a good byte beside a bad one can still change.
  EXPECT_EQ(editor.RawRange(885), (std::pair{0, 255}));
  EXPECT_EQ(editor.RawRange(1008), (std::pair{0, 200}));
  EXPECT_THAT(editor.SetRawByte(1008, 120), ElementsAre(ByteWrite{1008, 120}));
  EXPECT_EQ(image.Byte(1007), 250);
}

TEST_F(SetupEditorTest, AByteBadInTwoPartsIsMendedOnePartAtATime) {
  // Byte 907 with no injection mode and no impedance (and bits no control sets): each control
  // shows no entry, and choosing an entry in either mends its part, though the byte still fails
  // until the other is chosen too.
  Load(SoundImageWith({{907, 0xFF}}));
  EXPECT_THAT(editor.Choose(SetupChoice::kFuelMode, 0), ElementsAre(ByteWrite{907, 0xC0}));
  // The injection mode now shows an entry: changing it again would leave the byte failing.
  EXPECT_TRUE(editor.TryChoose(SetupChoice::kFuelMode, 1).Refused());
  EXPECT_THAT(editor.Choose(SetupChoice::kInjectorImpedance, 2), ElementsAre(ByteWrite{907, 0x80}));
  EXPECT_FALSE(editor.TryChoose(SetupChoice::kFuelMode, 1).Refused());
  // A byte bad in one part only: the other control waits for it.
  Load(SoundImageWith({{907, 0x43}}));
  EXPECT_TRUE(editor.TryChoose(SetupChoice::kInjectorImpedance, 2).Refused());
  EXPECT_THAT(editor.Choose(SetupChoice::kFuelMode, 2), ElementsAre(ByteWrite{907, 0x42}));
}

TEST_F(SetupEditorTest, ABytePartOnlyOneControlShowsWaitsForThatControl) {
  // Fuel load sites code 5 shares byte 995 with the fuel map selection: the selection cannot be
  // written beside it until the tuner picks load sites; then both go.
  Load(SoundImageWith({{995, 0x20 | 5}, {958, 0xC5}}));  // the dwell byte with bit 7 set
  EXPECT_EQ(state.maps.FuelLoadSites, 17);
  EXPECT_EQ(ShownChoice(SetupChoice::kFuelLoadSites, state, image), kNoEntry);
  EXPECT_EQ(ChoiceMark(SetupChoice::kFuelLoadSites, state, image),
            "The ECU holds byte 995 = 37, which no entry here stands for: it fails \"Fuel Load "
            "Sites Error\" (bits 0 to 4 of byte 995 are above 2). Choosing an entry writes it.");
  EXPECT_TRUE(editor.TryChoose(SetupChoice::kMapSelection, kMapSelectionOnlyMap2).Refused());
  EXPECT_THAT(editor.Choose(SetupChoice::kFuelLoadSites, 1), ElementsAre(ByteWrite{995, 0x21}));
  EXPECT_THAT(editor.Choose(SetupChoice::kMapSelection, kMapSelectionOnlyMap2),
              ElementsAre(ByteWrite{995, 0x41}));
  // The dwell byte shows no mode and no value until the tuner sets one; then bit 7 goes.
  EXPECT_EQ(ShownChoice(SetupChoice::kDwellMode, state, image), kNoEntry);
  EXPECT_FALSE(DwellShow(state.setup.dwell).value);
  EXPECT_THAT(DwellShow(state.setup.dwell).mark, ::testing::HasSubstr("byte 958 = 197"));
  EXPECT_THAT(editor.Choose(SetupChoice::kLimiterMode, 1), ElementsAre(ByteWrite{942, 128}));
  EXPECT_EQ(image.Byte(958), 0xC5);
  EXPECT_THAT(editor.SetDwellValue(30), ElementsAre(ByteWrite{958, 0x40 | 30}));
}

TEST(SetupMarks, AControlNeverShowsAPlausibleValueForAByteItCannotHold) {
  // (A byte that fails its check: the fuel load sites above.)
  EditorState state;
  CalibrationImage image;
  state.setup.limiter_mode = kNoEntry;
  EXPECT_EQ(ShownChoice(SetupChoice::kLimiterMode, state, image), kNoEntry);
  state.sensors.map_sensor_type = 2;
  state.sensors.map_scale_code = 99;  // not a scaling of the 2.5 bar sensor
  state.sensors.map_scale_entry = 1;
  EXPECT_EQ(ShownChoice(SetupChoice::kMapScale, state, image), kNoEntry);
  state.setup.spark_mode = 3;
  EXPECT_EQ(ShownChoice(SetupChoice::kSparkMode, state, image), 3);
  EXPECT_EQ(ChoiceMark(SetupChoice::kSparkMode, state, image), "");

  state.setup.rev_limit1_period = 1000;  // 60,000 RPM
  const NumberShow rev = RevLimiterShow(1, state.setup);
  EXPECT_EQ(rev.value, 60000.0);
  EXPECT_EQ(ClampInto(59950, rev), 20000.0);
  EXPECT_THAT(rev.mark, ::testing::HasSubstr("60000 RPM (a period of 1000 us)"));
  EXPECT_EQ(RevLimiterShow(2, state.setup).mark,
            "Not set: the ECU holds 0, a period with no speed (it fails \"Rev Limiter 2 "
            "Invalid\"). Setting a speed writes it.");
  EXPECT_FALSE(IdleTargetShow(0).value);
  EXPECT_EQ(IdleTargetShow(60000).value, 1000.0);
  EXPECT_EQ(IdleTargetShow(60000).mark, "");
  EXPECT_EQ(TriggerOffsetShow(130).value, 65.0);
  EXPECT_THAT(TriggerOffsetShow(130).mark, ::testing::HasSubstr("65.0 degrees"));
  EXPECT_EQ(DwellShow(0x40 | 25).value, 2.5);
  EXPECT_EQ(DwellShow(0x40 | 25).mark, "");
}

TEST(InjectionModeName, AnUnknownModeCodeReadsStars) {
  const std::tuple<int, int, std::string_view> cases[] = {{0, 0, "Batch Mode"},
                                                          {1, 0, "Semi-Sequential Pairs Mode"},
                                                          {2, 0, "Un-Phased Sequential Mode"},
                                                          {2, 3, "Full Phased Sequential Mode"},
                                                          {3, 0, "***"},
                                                          {-1, 0, "***"},
                                                          {2, 9, "***"}};
  EngineSetup setup;
  for (const auto& [mode, home, name] : cases) {
    setup.fuel_mode = mode;
    setup.home_pattern = home;
    EXPECT_EQ(InjectionModeName(setup), name) << mode << " " << home;
  }
}

TEST(SafeByteOrder, NoIntermediateValueFallsBelowBothTheOldAndTheNewNumber) {
  for (const auto& [old_value, new_value] :
       {std::pair<std::uint32_t, std::uint32_t>{0x01FFFF, 0x020000},
        {0x020000, 0x01FFFF},
        {0x123456, 0x654321}}) {
    std::uint32_t held = old_value;
    for (const int position : SafeByteOrder(0, 3, old_value, new_value)) {
      const std::uint32_t mask = 0xFFu << (8 * position);
      held = (held & ~mask) | (new_value & mask);
      EXPECT_GE(held, std::min(old_value, new_value));
    }
    EXPECT_EQ(held, new_value);
  }
}

TEST_F(SetupEditorTest, IdleTargetAndTriggerOffsetAreEditedInRpmAndDegrees) {
  ASSERT_TRUE(editor.SetIdleTargetRpm(900));  // 66667 us: 0x01046B
  EXPECT_EQ(image.Read24(1011), 66667u);
  EXPECT_EQ(state.idle.IdleTargetRpm, 66667u);
  ASSERT_TRUE(editor.SetTriggerOffsetDegrees(42.5));
  EXPECT_EQ(image.Byte(959), 85);
  EXPECT_FALSE(editor.SetTriggerOffsetDegrees(60.5));
  EXPECT_EQ(image.Byte(959), 85);
}

TEST_F(SetupEditorTest, ANewMapSensorTypeStartsAtFullScaleAndTheScalingFollowsItsTable) {
  editor.Choose(SetupChoice::kMapSensorType, 4);
  EXPECT_EQ(image.Byte(955) & 7, 4);
  EXPECT_EQ(image.Byte(956), 64);
  editor.Choose(SetupChoice::kMapScale, 11);
  EXPECT_EQ(image.Byte(956), 240);
  editor.Choose(SetupChoice::kMapSensorType, 2);
  EXPECT_EQ(image.Byte(956), 64);
  EXPECT_EQ(state.sensors.map_scale_entry, 0);
  EXPECT_THAT(FailedChecksAt(image, 956, {state.sensors.map_sensor_type}), IsEmpty());
}

TEST_F(SetupEditorTest, AFuelLoadSiteChangeLaysTheMapsOutAfreshFromTheSameBytes) {
  image.Write16(1, 1234);   // first cell
  image.Write16(19, 4321);  // tenth cell: row 2, column 1 with 9 sites; row 1, column 10 with 13
  editor.Choose(SetupChoice::kFuelLoadSites, 1);
  EXPECT_EQ(image.Byte(995), 0x20 | 1);  // the map selection bits are kept
  EXPECT_EQ(state.maps.FuelLoadSites, 13);
  EXPECT_EQ(state.maps.FuelMap1.Columns(), 13);
  EXPECT_DOUBLE_EQ(state.maps.FuelMap1.At(11, 10), 4.321);
  editor.Choose(SetupChoice::kIgnLoadSites, 1);
  EXPECT_EQ(state.maps.IgnLoadSites, 6);
}

TEST_F(SetupEditorTest, RawBytesAndIdleSwitchesGoToTheirOwnPositionOnly) {
  editor.SetRawByte(884 + 5, 77);
  editor.SetRawByte(1018, 90);
  editor.SetIdleFlag(9, true);
  EXPECT_THAT(sender.frames,
              ElementsAre(SentFrame{4, 889, 77}, SentFrame{4, 1018, 90}, SentFrame{4, 857, 2}));
  EXPECT_EQ(state.io.Gpo1Setup[5], 77);
  EXPECT_TRUE(state.idle.idle_flags[9]);
  EXPECT_FALSE(SetupEditor::IsRawPosition(942));
  sender.frames.clear();
  editor.SetRawByte(942, 1);
  EXPECT_THAT(sender.frames, IsEmpty());
}

TEST(RawFields, EveryByteOfTheGroupsIsShownOnceAndTakenByTheEditor) {
  std::map<int, int> shown;
  for (const auto& groups : {OutputGroups(), InputGroups(), IdleGroups(), TpsGroups()}) {
    for (const RawGroup& group : groups) {
      for (const RawField& field : group.fields) {
        const int width = field.show == RawShow::kRpm24 ? 3 : 1;
        for (int p = field.position; p < field.position + width; ++p) ++shown[p];
        if (field.show == RawShow::kByte || field.show == RawShow::kHalved) {
          EXPECT_TRUE(SetupEditor::IsRawPosition(field.position)) << field.label;
        }
      }
    }
  }
  // Each once, from the first byte of the outputs' groups to the last of the idle bytes.
  for (const auto& [position, times] : shown) EXPECT_EQ(times, 1) << position;
  EXPECT_EQ(shown.begin()->first, 749);
  EXPECT_EQ(shown.rbegin()->first, 1023);
}

TEST(MapSensor, EveryTypeOffersAsManyScalingsAsItHasCodesEachWithItsSpan) {
  for (int type = 0; type < kMapSensorTypes; ++type) {
    const std::vector<std::string> texts = MapScaleTexts(type);
    for (int entry = 0; entry < static_cast<int>(texts.size()); ++entry) {
      EXPECT_TRUE(MapScaleCodeOfEntry(type, entry)) << type << " " << entry;
      EXPECT_GE(MapSensorSpanBar(type, entry).value_or(0.0), 1.0) << texts[entry];
    }
    EXPECT_FALSE(MapScaleCodeOfEntry(type, static_cast<int>(texts.size()))) << type;
  }
  EXPECT_EQ(MapSensorSpanBar(3, 0), 3.04);
  EXPECT_FALSE(MapSensorSpanBar(2, 4));
}

TEST(FailedChecksAt, NamesTheChecksThatSpeakOfAPositionAndFail) {
  CalibrationImage image = SoundImage();
  image.SetByte(884, 16);
  image.SetByte(1014, 201);
  EXPECT_THAT(FailedChecksAt(image, 884, {}), ElementsAre("GPO1 Function Invalid"));
  EXPECT_THAT(FailedChecksAt(image, 1015, {}),
              ElementsAre("Idle Minimum Larger than Maximum Error"));
  EXPECT_THAT(FailedChecksAt(image, 910, {}), IsEmpty());
}

TEST(SetupNotes, DangerousChoicesAreNamedAndSafeOnesAreNot) {
  EngineSetup setup;
  setup.cylinders_code = 3;        // "4"
  setup.rpm_sites_code = 0;        // up to 7000 RPM
  setup.rev_limit1_period = 8571;  // 7000 RPM
  EXPECT_EQ(RevLimiterNote(setup), "");
  setup.rev_limit2_period = 8000;  // 7500 RPM
  EXPECT_EQ(RevLimiterNote(setup),
            "Rev Limiter 2 (7500 RPM) is above the maps' RPM range, which ends at 7000 RPM: above "
            "it the engine runs on the top row's fuel and timing.");
  setup.rpm_sites_code = 1;  // up to 8200 RPM
  EXPECT_EQ(RevLimiterNote(setup), "");

  setup.fuel_mode = kFuelModeSequential;
  setup.home_pattern = 0;
  EXPECT_THAT(InjectionNote(setup), ::testing::HasSubstr("without a home position"));
  setup.home_pattern = 3;
  EXPECT_EQ(InjectionNote(setup), "");
  setup.spark_mode = 2;
  EXPECT_EQ(SparkModeNote(setup), "");
  setup.home_pattern = 0;
  EXPECT_THAT(SparkModeNote(setup), ::testing::HasSubstr("Coil per cylinder"));

  setup.injector_impedance = 1;
  EXPECT_EQ(ImpedanceNote(setup), "");
  setup.injector_impedance = 2;
  EXPECT_THAT(ImpedanceNote(setup), ::testing::HasSubstr("overheat"));
}

TEST(SetupNotes, DwellIsJudgedByTheChargeTimeItGives) {
  EngineSetup setup;
  setup.cylinders_code = 3;  // 4 cylinders
  setup.spark_mode = 1;      // wasted spark: each coil fires twice a cycle
  IdleControl idle;
  idle.IdleTargetRpm = 60000;  // 1000 RPM
  setup.dwell = 5;             // 5 % of 60 ms: 3 ms
  EXPECT_EQ(DwellNote(setup, idle), "");
  setup.dwell = 40;  // 24 ms at idle
  EXPECT_THAT(DwellNote(setup, idle), ::testing::HasSubstr("24.0 ms"));
  setup.dwell = kDwellChargeTimeBit | 50;  // 5.0 ms charge time
  EXPECT_EQ(DwellNote(setup, idle), "");
  setup.dwell = kDwellChargeTimeBit | 51;
  EXPECT_THAT(DwellNote(setup, idle), ::testing::HasSubstr("5.1 ms"));
}

}  // namespace
}  // namespace vela
