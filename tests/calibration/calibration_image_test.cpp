#include "calibration/calibration_image.h"

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

namespace vela {
namespace {

CalibrationImage ImageOf(std::vector<std::uint8_t> bytes) {
  CalibrationImage image;
  EXPECT_TRUE(image.Assign(bytes));
  return image;
}

std::vector<std::uint8_t> CountingBytes() {
  std::vector<std::uint8_t> bytes(kImageLength);
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>(i * 7 + 3);
  return bytes;
}

TEST(CalibrationImageBlock, Is1023BytesFromPositionOneAndRefusesAnythingElse) {
  const std::vector<std::uint8_t> bytes = CountingBytes();
  CalibrationImage image = ImageOf(bytes);
  EXPECT_EQ(image.ToVector(), bytes);
  EXPECT_FALSE(image.Assign(std::vector<std::uint8_t>(1022, 0)));
  EXPECT_FALSE(image.Assign(std::vector<std::uint8_t>(1024, 0)));
  EXPECT_EQ(image.ToVector(), bytes);
  // Positions count from one; outside the block reads are zero and writes refused.
  EXPECT_EQ(image.Byte(1), 3);
  EXPECT_EQ(image.Byte(1023), static_cast<std::uint8_t>(1022 * 7 + 3));
  EXPECT_EQ(image.Byte(0), 0);
  EXPECT_EQ(image.Byte(1024), 0);
  EXPECT_FALSE(image.SetByte(0, 1));
  EXPECT_FALSE(image.Write16(1023, 0xFFFF));
  EXPECT_FALSE(image.Write24(1022, 0xFFFFFF));
  EXPECT_EQ(image.ToVector(), CountingBytes());
}

TEST(CalibrationImageBlock, MultiByteNumbersAreLittleEndian) {
  CalibrationImage image;
  image.Write24(943, 0x123456);
  EXPECT_EQ(image.Byte(943), 0x56);
  EXPECT_EQ(image.Byte(945), 0x12);
  EXPECT_EQ(image.EcuNumber(), 0x123456u);
  image.Write24(1011, 0x01000203);  // bit 24 is dropped
  EXPECT_EQ(image.IdleTargetRpm(), 0x000203u);
  EXPECT_EQ(image.Byte(1014), 0);
}

TEST(SetupFields, TileThePositionsAfterTheMapsTogetherWithTheUnownedOnes) {
  std::vector<int> owners(kImageLength + 1, 0);
  for (const SetupField& field : kSetupFields) {
    EXPECT_TRUE(field.kind == FieldKind::kByteGroup || field.width <= 3) << field.name;
    for (int p = field.position; p <= field.LastPosition(); ++p) ++owners[p];
  }
  for (const PositionRange& range : kUnownedPositions) {
    for (int p = range.first; p <= range.last; ++p) ++owners[p];
  }
  for (int p = 749; p <= kImageLength; ++p) {
    if (p >= kIgnMapStart && p < kIgnMapStart + kIgnMapAreaLength) continue;
    EXPECT_EQ(owners[p], 1) << "position " << p;
  }
}

TEST(SetupFields, AreReadByName) {
  CalibrationImage image = ImageOf(CountingBytes());
  EXPECT_EQ(image.FieldValue("RevLimit2"), image.Read16(900));
  EXPECT_EQ(image.FieldValue("TriggerVoltage"), image.Byte(852));
  EXPECT_EQ(image.FieldValue("AirComp"), std::nullopt);  // a table, not a number
  EXPECT_EQ(image.FieldValue("NoSuchField"), std::nullopt);
  const std::vector<std::uint8_t> batt = image.FieldBytes("BattComp");
  ASSERT_EQ(batt.size(), 12u);
  EXPECT_EQ(batt.front(), image.Byte(999));
  EXPECT_EQ(batt.back(), image.Byte(1010));
  EXPECT_TRUE(image.FieldBytes("NoSuchField").empty());
}

TEST(LoadSites, ComeFromTheLowBitsOfTheSelectionByteAndReadInvalidCodesAsTheEditorsDo) {
  CalibrationImage image;
  EXPECT_EQ(image.FuelLoadSites(), 9);
  EXPECT_EQ(image.IgnLoadSites(), 5);
  image.SetByte(995, 0xE1);  // all three map selection bits set, code 1
  EXPECT_EQ(image.FuelLoadSites(), 13);
  image.SetByte(995, 0x22);
  EXPECT_EQ(image.FuelLoadSites(), 17);
  image.SetByte(995, 0x03);
  EXPECT_EQ(CalibrationImage::FuelLoadSitesOfCode(0x03), std::nullopt);
  EXPECT_EQ(image.FuelLoadSites(), 17);
  image.SetByte(996, 1);
  EXPECT_EQ(image.IgnLoadSites(), 6);
  image.SetByte(996, 2);
  EXPECT_EQ(image.IgnLoadSites(), 6);
}

TEST(FuelCells, EncodeMicrosecondsLowByteFirstAndClampToSixteenBits) {
  CalibrationImage image;
  image.SetByte(995, 1);  // 13 sites
  EXPECT_EQ(image.FuelCellPosition(1, 2, 3), 1 + 2 * (13 + 2));
  EXPECT_EQ(image.FuelCellPosition(2, 1, 1), kFuelMap2Start);
  EXPECT_EQ(image.FuelCellPosition(1, 1, 14), 0);
  EXPECT_EQ(image.FuelCellPosition(3, 1, 1), 0);
  ASSERT_TRUE(image.SetFuelMs(1, 1, 1, 65.535));
  EXPECT_EQ(image.Read16(1), 0xFFFFu);
  image.SetFuelMs(2, 1, 1, 0.256);
  EXPECT_EQ(image.Byte(375), 0);
  EXPECT_EQ(image.Byte(376), 1);
  image.SetFuelMs(1, 1, 1, 70.0);
  EXPECT_EQ(image.Read16(1), 65535u);
  image.SetFuelMs(1, 1, 1, -1.0);
  EXPECT_EQ(image.Read16(1), 0u);
  image.SetFuelMs(1, 11, 13, 1.2345);  // a half goes to the even neighbour
  EXPECT_DOUBLE_EQ(image.FuelMs(1, 11, 13), 1.234);
  EXPECT_FALSE(image.SetFuelMs(1, 12, 1, 1.0));
}

TEST(IgnitionCells, EncodeBackwardsFromNinetyNineAndKeepOnlyTheLowByte) {
  CalibrationImage image;
  const std::vector<std::pair<double, int>> cases = {{99.0, 0},   {0.0, 198}, {-28.5, 255},
                                                     {99.5, 255}, {-29.0, 0}, {10.25, 178}};
  for (const auto& [degrees, raw] : cases) {
    image.SetIgnDegrees(1, 1, degrees);
    EXPECT_EQ(image.Byte(kIgnMapStart), raw) << degrees;
  }
  image.SetIgnDegrees(2, 5, 30.0);
  EXPECT_EQ(image.Byte(kIgnMapStart + 9), 138);
  EXPECT_DOUBLE_EQ(image.IgnDegrees(2, 5), 30.0);
  EXPECT_FALSE(image.SetIgnDegrees(1, 6, 10.0));  // only 5 sites
}

TEST(MapWalks, ShowTheFirstBlockRowAtTheBottomOfTheGrid) {
  CalibrationImage image;
  image.SetFuelMs(2, 1, 9, 4.5);
  image.SetFuelMs(2, 11, 1, 7.25);
  image.SetIgnDegrees(1, 2, 20.5);
  const MapValues fuel = image.ReadFuelMap(2);
  ASSERT_EQ(fuel.Columns(), 9);
  EXPECT_DOUBLE_EQ(fuel.At(11, 9), 4.5);
  EXPECT_DOUBLE_EQ(fuel.At(1, 1), 7.25);
  const MapValues ign = image.ReadIgnMap();
  ASSERT_EQ(ign.Columns(), 5);
  EXPECT_DOUBLE_EQ(ign.At(11, 2), 20.5);
  EXPECT_DOUBLE_EQ(ign.At(1, 1), 99.0);
}

TEST(BuildImage, ZeroesUnusedMapAreasAndUnownedPositions) {
  const CalibrationImage source = ImageOf(std::vector<std::uint8_t>(kImageLength, 0xAA));
  CalibrationImage layout = source;
  layout.SetByte(995, 0);
  layout.SetByte(996, 0);
  MapValues fuel1(9), fuel2(9), ign(5);
  fuel2.Set(11, 1, 0.256);
  ign.Set(1, 5, 0.0);
  const CalibrationImage built = BuildImage(fuel1, fuel2, ign, layout);
  for (int p = 199; p <= 374; ++p) ASSERT_EQ(built.Byte(p), 0) << p;
  for (int p = 573; p <= 748; ++p) ASSERT_EQ(built.Byte(p), 0) << p;
  for (int p = 806; p <= 816; ++p) ASSERT_EQ(built.Byte(p), 0) << p;
  for (const PositionRange& range : kUnownedPositions) {
    for (int p = range.first; p <= range.last; ++p) ASSERT_EQ(built.Byte(p), 0) << p;
  }
  EXPECT_EQ(built.Read16(375), 256u);
  EXPECT_EQ(built.Byte(805), 198);
  EXPECT_EQ(built.Byte(750), 0xAA);
  EXPECT_EQ(built.Byte(1023), 0xAA);
}

TEST(BuildImage, ReproducesAnImageFromItsOwnMapsForEveryLayout) {
  for (const auto& [fuel_code, ign_code] : {std::pair{0, 0}, {1, 1}, {2, 1}}) {
    std::vector<std::uint8_t> bytes = CountingBytes();
    for (const PositionRange& range : kUnownedPositions) {
      std::fill(bytes.begin() + range.first - 1, bytes.begin() + range.last, 0);
    }
    CalibrationImage image = ImageOf(bytes);
    image.SetByte(995, static_cast<std::uint8_t>(0x40 | fuel_code));
    image.SetByte(996, static_cast<std::uint8_t>(ign_code));
    // Make the reserved tails zero as a built block has them.
    image.WriteFuelMap(1, image.ReadFuelMap(1));
    image.WriteFuelMap(2, image.ReadFuelMap(2));
    image.WriteIgnMap(image.ReadIgnMap());
    const CalibrationImage built =
        BuildImage(image.ReadFuelMap(1), image.ReadFuelMap(2), image.ReadIgnMap(), image);
    EXPECT_EQ(built.Bytes(), image.Bytes()) << "fuel code " << fuel_code;
  }
}

}  // namespace
}  // namespace vela
