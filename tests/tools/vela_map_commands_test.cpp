// vela-map's commands against files in memory: what a script reads from them (the differences,
// their JSON, the CSV) and the exit status of every outcome.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tuple>

#include "editors/editor_fakes.h"
#include "tools/vela_map/map_commands.h"
#include "tools/vela_map/map_csv.h"
#include "tools/vela_map/map_diff.h"

namespace vela::mapfile {
namespace {

using editor_testing::MemoryFiles;
using editor_testing::SoundImage;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

std::string FileOf(const CalibrationImage& image) {
  return {image.Bytes().begin(), image.Bytes().end()};
}

// The sound calibration (900 RPM spacing: 8200 RPM at the top row; 9 fuel and 5 ignition load
// sites on a 1 bar MAP sensor) with maps of varied values, every fuel cell under its duty limit.
CalibrationImage FilledImage() {
  CalibrationImage image = SoundImage();
  for (int row = 1; row <= kMapRows; ++row) {
    for (int column = 1; column <= 9; ++column) {
      image.Write16(CellPosition(image, MapId::kFuel1, row, column), 1000 + 37 * row + column);
      image.Write16(CellPosition(image, MapId::kFuel2, row, column), 2345 + 11 * column);
    }
    for (int column = 1; column <= 5; ++column) {
      image.SetByte(CellPosition(image, MapId::kIgnition, row, column), (row * 23 + column) % 256);
    }
  }
  return image;
}

// The CSV with field `field` (0 = the RPM) of line `line` (0 = the header) replaced.
std::string WithField(const std::string& csv, int line, int field, const std::string& text) {
  std::size_t start = 0;
  for (int i = 0; i < line; ++i) start = csv.find('\n', start) + 1;
  for (int i = 0; i < field; ++i) start = csv.find(',', start) + 1;
  const std::size_t end = csv.find_first_of(",\n", start);
  return csv.substr(0, start) + text + csv.substr(end);
}

struct Outcome {
  int status;
  std::string out;
  std::string err;
};

class VelaMapTest : public ::testing::Test {
 protected:
  void SetUp() override {
    files.files["a.sm1"] = FileOf(FilledImage());
    files.files["short.sm1"] = FileOf(FilledImage()).substr(0, 1022);
  }
  Outcome Command(const std::vector<std::string>& args) {
    Outcome run;
    run.status = RunMapCommand(args, files, run.out, run.err);
    return run;
  }
  CalibrationImage Read(const std::string& path) {
    CalibrationImage image;
    const std::string& bytes = files.files.at(path);
    image.Assign({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
    return image;
  }

  MemoryFiles files;
};

TEST(VelaMapDiff, NamesEachChangedCellByGridRowWithItsAxesAndEachByteByItsFieldAlsoInJson) {
  const CalibrationImage a = FilledImage();
  CalibrationImage b = a;
  // Grid row 1 is the top RPM row: block row 11, the last cells of each map area.
  b.Write16(kFuelMap1Start + 2 * (10 * 9 + 1), 4321);  // fuel 1, row 1, column 2
  b.SetByte(kIgnMapStart + 0 * 5 + 4, 10);             // ignition, row 11, column 5
  b.SetByte(907, 66);                                  // InjectionMode
  b.SetByte(950, 9);                                   // RevLimit1, its second byte
  b.SetByte(820, 1);                                   // no editor owns it
  const MapDiff diff = DiffImages(a, b);
  ASSERT_EQ(diff.cells.size(), 2u);
  const auto cell = [](const CellDifference& c) {
    return std::tuple(c.map, c.row, c.column, c.rpm, c.load, c.b);
  };
  EXPECT_EQ(cell(diff.cells[0]), std::tuple(MapId::kFuel1, 1, 2, 8200, 12.5, 4321));
  EXPECT_EQ(cell(diff.cells[1]), std::tuple(MapId::kIgnition, 11, 5, 0, 100.0, 10));
  ASSERT_EQ(diff.bytes.size(), 3u);
  const auto byte = [](const ByteDifference& d) {
    return std::tuple(d.position, d.field, d.offset, d.b);
  };
  EXPECT_EQ(byte(diff.bytes[0]), std::tuple(820, "unowned", 0, 1));
  EXPECT_EQ(byte(diff.bytes[1]), std::tuple(907, "InjectionMode", 0, 66));
  EXPECT_EQ(byte(diff.bytes[2]), std::tuple(950, "RevLimit1", 1, 9));
  // The same differences as JSON, and none.
  const std::string json = DiffJson(diff, "a.sm1", "dir/\"b\".sm1");
  EXPECT_THAT(json, HasSubstr("\"a\": \"a.sm1\",\n  \"b\": \"dir/\\\"b\\\".sm1\""));
  EXPECT_THAT(json, HasSubstr("{\"map\": \"fuel1\", \"row\": 1, \"column\": 2, \"rpm\": 8200, "
                              "\"load\": 12.5, \"load_unit\": \"kPa\", \"unit\": \"ms\", "
                              "\"a\": 1.039, \"b\": 4.321}"));
  EXPECT_THAT(json, HasSubstr("{\"position\": 907, \"field\": \"InjectionMode\", \"offset\": 0, "
                              "\"a\": 65, \"b\": 66}"));
  EXPECT_THAT(json, HasSubstr("\"counts\": {\"cells\": 2, \"bytes\": 3}\n}\n"));
  const std::string none = DiffJson(DiffImages(a, a), "a", "b");
  EXPECT_THAT(none, HasSubstr("\"cells\": [],\n  \"bytes\": [],\n"));
}

TEST(VelaMapDiff, AnyChangedByteIsADifferenceAndEqualFilesHaveNone) {
  const CalibrationImage a = FilledImage();
  EXPECT_TRUE(DiffImages(a, a).Empty());
  for (int position : {1, 199, 374, 760, 806, 857, 1023}) {
    CalibrationImage b = a;
    b.SetByte(position, static_cast<std::uint8_t>(a.Byte(position) ^ 0x10));
    EXPECT_FALSE(DiffImages(a, b).Empty()) << "position " << position;
  }
}

TEST(VelaMapDiff, CellsOnlyOneLayoutHasDifferWithNothingOnTheOtherSide) {
  const CalibrationImage a = FilledImage();
  CalibrationImage b = a;
  b.SetByte(995, 0x22);  // 17 fuel load sites: columns 10 to 17 exist only in B
  const MapDiff diff = DiffImages(a, b);
  const auto only_b = std::count_if(diff.cells.begin(), diff.cells.end(), [](const auto& c) {
    return c.map == MapId::kFuel1 && !c.a.has_value() && c.b.has_value();
  });
  EXPECT_EQ(only_b, 11 * 8);
  ASSERT_EQ(diff.bytes.size(), 1u);
  EXPECT_EQ(diff.bytes[0].field, "FuelSitesSelection");
}

TEST_F(VelaMapTest, ExportThenImportGivesBackTheSameBytesForEveryMap) {
  const Outcome exported = Command({"export", "a.sm1"});
  ASSERT_EQ(exported.status, kExitDone);
  EXPECT_THAT(exported.out, HasSubstr("fuel1 ms RPM/kPa,0,12.5,25,37.5,50,62.5,75,87.5,100\n"
                                      "8200,1.038,1.039,"));
  // A zeroed copy takes each map back from the one CSV that holds all three.
  CalibrationImage blank = FilledImage();
  for (int p = 1; p <= 816; ++p) blank.SetByte(p, 0);
  files.files["blank.sm1"] = FileOf(blank);
  files.files["all.csv"] = exported.out;
  std::string source = "blank.sm1";
  for (const char* map : {"fuel1", "fuel2", "ign"}) {
    const std::string out = std::string(map) + ".sm1";
    const Outcome run = Command({"import", source, "all.csv", "--map", map, "--out", out});
    ASSERT_EQ(run.status, kExitDone) << run.err;
    source = out;
  }
  EXPECT_EQ(files.files.at("ign.sm1"), files.files.at("a.sm1"));
  EXPECT_EQ(files.files.at("blank.sm1"), FileOf(blank));  // the original is never written
}

TEST_F(VelaMapTest, ImportRefusesBadCellsNamingEachAndWritesNothing) {
  std::string csv = Command({"export", "a.sm1", "--map", "ign"}).out;
  csv = WithField(csv, 1, 1, "x1.5");
  csv = WithField(csv, 11, 1, "99.5");
  files.files["bad.csv"] = csv;
  const Outcome run = Command({"import", "a.sm1", "bad.csv", "--map", "ign", "--out", "new.sm1"});
  EXPECT_EQ(run.status, kExitRefused);
  EXPECT_THAT(run.err,
              HasSubstr("ign row 1, column 1 (8200 RPM, 0 kPa): \"x1.5\" is not a number"));
  EXPECT_THAT(run.err,
              HasSubstr("ign row 11, column 1 (0 RPM, 0 kPa): 99.5 is outside -28.5 to 99"));
  EXPECT_EQ(files.files.count("new.sm1"), 0u);
}

TEST_F(VelaMapTest, ImportRefusesAnotherShapeOrOtherAxes) {
  const std::string csv = Command({"export", "a.sm1", "--map", "fuel1"}).out;
  CalibrationImage spaced = FilledImage();
  spaced.SetByte(946, 2);  // 1000 RPM spacing: other RPM rows
  files.files["spaced.sm1"] = FileOf(spaced);
  files.files["fuel1.csv"] = csv;
  files.files["short.csv"] = csv.substr(0, csv.rfind("\n0,") + 1);
  const Outcome axes =
      Command({"import", "spaced.sm1", "fuel1.csv", "--map", "fuel1", "--out", "n"});
  EXPECT_EQ(axes.status, kExitRefused);
  EXPECT_THAT(axes.err, HasSubstr("Row 1: the CSV's RPM \"8200\" is not the file's 9000 RPM."));
  const Outcome rows = Command({"import", "a.sm1", "short.csv", "--map", "fuel1", "--out", "n"});
  EXPECT_EQ(rows.status, kExitRefused);
  EXPECT_THAT(rows.err, HasSubstr("has 11 rows"));
  const Outcome sites = Command({"import", "a.sm1", "fuel1.csv", "--map", "ign", "--out", "n"});
  EXPECT_EQ(sites.status, kExitRefused);
  EXPECT_THAT(sites.err, HasSubstr("the map has 5 load sites"));
  EXPECT_EQ(files.files.count("n"), 0u);
}

// 900 RPM spacing, semi-sequential: 120000 / 2 / 8200 RPM = 7.3 ms at the top row.
TEST_F(VelaMapTest, FuelAboveTheDutyLimitIsRefusedOrWithCapLoweredToItWithANote) {
  const std::string csv = Command({"export", "a.sm1", "--map", "fuel1"}).out;
  files.files["rich.csv"] = WithField(csv, 1, 1, "9");
  const Outcome refused = Command({"import", "a.sm1", "rich.csv", "--map", "fuel1", "--out", "n"});
  EXPECT_EQ(refused.status, kExitRefused);
  EXPECT_THAT(refused.err, HasSubstr("fuel1 row 1, column 1 (8200 RPM, 0 kPa): 9.000 ms is above "
                                     "the duty limit of its RPM row, 7.300 ms."));
  const Outcome capped =
      Command({"import", "a.sm1", "rich.csv", "--map", "fuel1", "--out", "n", "--cap"});
  ASSERT_EQ(capped.status, kExitDone) << capped.err;
  EXPECT_THAT(capped.err, HasSubstr("lowered to the limit"));
  EXPECT_EQ(Read("n").Read16(CellPosition(Read("n"), MapId::kFuel1, 1, 1)), 7300u);
}

TEST_F(VelaMapTest, ExitStatusTellsEachOutcome) {
  CalibrationImage changed = FilledImage();
  changed.SetByte(907, 66);
  files.files["b.sm1"] = FileOf(changed);
  CalibrationImage failing = FilledImage();
  failing.SetByte(947, 200);  // no cylinder count
  files.files["failing.sm1"] = FileOf(failing);
  files.files["c.csv"] = Command({"export", "a.sm1", "--map", "fuel1"}).out;
  EXPECT_EQ(Command({"diff", "a.sm1", "a.sm1"}).status, kExitDone);
  EXPECT_EQ(Command({"diff", "a.sm1", "b.sm1", "--json"}).status, kExitFound);
  EXPECT_EQ(Command({"info", "a.sm1"}).status, kExitDone);
  const Outcome info = Command({"info", "failing.sm1"});
  EXPECT_EQ(info.status, kExitFound);
  EXPECT_THAT(info.out, HasSubstr("Checks: 1 failed"));
  EXPECT_EQ(Command({}).status, kExitUsage);
  EXPECT_EQ(Command({"show", "a.sm1"}).status, kExitUsage);
  EXPECT_EQ(Command({"export", "a.sm1", "--map", "fuel3"}).status, kExitUsage);
  EXPECT_EQ(Command({"import", "a.sm1", "c.csv", "--map", "fuel1"}).status, kExitUsage);
  EXPECT_EQ(Command({"import", "a.sm1", "c.csv", "--map", "fuel1", "--out", "a.sm1"}).status,
            kExitUsage);
  EXPECT_EQ(Command({"import", "a.sm1", "c.csv", "--map", "fuel1", "--out", "b.sm1"}).status,
            kExitUsage);
  EXPECT_EQ(Command({"info", "short.sm1"}).status, kExitNotAMap);
  EXPECT_EQ(Command({"diff", "a.sm1", "missing.sm1"}).status, kExitNotAMap);
  EXPECT_EQ(Command({"import", "a.sm1", "none.csv", "--map", "fuel1", "--out", "n"}).status,
            kExitNotAMap);
  files.write_error = kFileErrorDiskFull;
  EXPECT_EQ(Command({"import", "a.sm1", "c.csv", "--map", "fuel1", "--out", "n"}).status,
            kExitWriteFailed);
  const Outcome help = Command({"--help"});
  EXPECT_EQ(help.status, kExitDone);
  EXPECT_THAT(help.out, HasSubstr("4 import refused"));
}

}  // namespace
}  // namespace vela::mapfile
