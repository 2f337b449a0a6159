// vela-log's cells and tune commands against files in memory: a log of an engine running 10 %
// lean in one spot gives that spot 10 % more fuel and leaves the rest of the map alone.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "datalog/files/log_file.h"
#include "editors/editor_fakes.h"
#include "tools/vela_log/log_commands.h"
#include "tune/target/target_table.h"

namespace vela::logtool {
namespace {

using ::testing::HasSubstr;

class VelaLogTune : public ::testing::Test {
 protected:
  VelaLogTune() {
    CalibrationImage image = editor_testing::SoundImage();
    for (int row = 1; row <= kMapRows; ++row) {
      for (int column = 1; column <= 9; ++column) image.SetFuelMs(1, row, column, 4.0);
    }
    files_.files["a.sm1"] = std::string(image.Bytes().begin(), image.Bytes().end());
    // 20 s warm and steady on an RPM site (grid row 6) and load site 5 (50 kPa), 10 % lean of
    // the default target there.
    const double rpm = FuelAxesOf(image).RowRpm(6);
    const double target = TargetTable(FuelAxesOf(image)).At(6, 5);
    DatalogLog log;
    for (int i = 0; i < 1200; ++i) {
      const ChannelValues values = {rpm, 50, 25, 4.0, 20, 20, 85, 25, 13.8, 30, 0, target * 11.0};
      log.Append(i * 1.002 / 60.0, i / 60.0, values, 0x0FFF);
    }
    log.CloseGaps();
    files_.files["run.sl1"] = EncodeLogFile(log);
  }

  int Run(const std::vector<std::string>& args) {
    out_.clear();
    err_.clear();
    return RunLogCommand(args, files_, out_, err_);
  }

  CalibrationImage ImageIn(const std::string& path) {
    const std::string& bytes = files_.files.at(path);
    CalibrationImage image;
    EXPECT_TRUE(
        image.Assign(std::span(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size())));
    return image;
  }

  editor_testing::MemoryFiles files_;
  std::string out_;
  std::string err_;
};

TEST_F(VelaLogTune, CellsPrintsTimeAndAfrPerCellAndTuneWritesTheCorrectedCopy) {
  ASSERT_EQ(Run({"cells", "run.sl1", "--map", "a.sm1", "--delay", "0.1"}), kLogDone) << err_;
  EXPECT_THAT(out_, HasSubstr("row,column,rpm,load_kpa,time_s,samples,mean_afr,afr_spread,"
                              "target_afr,afr_error\n"));
  EXPECT_THAT(out_, HasSubstr("\n6,5,"));
  EXPECT_THAT(out_, HasSubstr(",15.73,0.00,14.30,1.43\n"));  // 14.3 target, 10 % lean

  ASSERT_EQ(Run({"tune", "run.sl1", "--map", "a.sm1", "-o", "b.sm1", "--delay", "0.1"}), kLogDone)
      << err_;
  EXPECT_THAT(out_, HasSubstr("Delay: set, 0.100 s"));
  EXPECT_THAT(out_, HasSubstr("Fuel 1: 1 cells changed"));
  EXPECT_THAT(out_, HasSubstr("\n6,5,"));
  EXPECT_THAT(out_, HasSubstr(",4.000,4.400,10.0,"));
  const CalibrationImage corrected = ImageIn("b.sm1");
  EXPECT_DOUBLE_EQ(corrected.FuelMs(1, BlockRowOfGridRow(6), 5), 4.4);
  EXPECT_EQ(DifferingMapCells(corrected, ImageIn("a.sm1")), 1);
  // The copy is never written over a file that is there.
  EXPECT_EQ(Run({"tune", "run.sl1", "--map", "a.sm1", "-o", "b.sm1"}), kLogUsage);
  EXPECT_THAT(err_, HasSubstr("b.sm1 exists"));
}

TEST_F(VelaLogTune, RefusesWhatItCannotUse) {
  EXPECT_EQ(Run({"tune", "run.sl1", "--map", "a.sm1"}), kLogUsage);  // no -o
  EXPECT_EQ(Run({"cells", "run.sl1"}), kLogUsage);                   // no --map
  EXPECT_EQ(Run({"cells", "run.sl1", "--map", "a.sm1", "--fuel", "3"}), kLogUsage);
  EXPECT_EQ(Run({"cells", "run.sl1", "--map", "a.sm1", "--bogus"}), kLogUsage);
  EXPECT_EQ(Run({"cells", "a.sm1", "--map", "a.sm1"}), kLogUnreadable);
  EXPECT_EQ(Run({"cells", "run.sl1", "--map", "run.sl1"}), kLogUnreadable);
  files_.files["a.afr.csv"] = "not a table\n";  // beside the map: read, and refused
  EXPECT_EQ(Run({"cells", "run.sl1", "--map", "a.sm1"}), kLogUnreadable);
  EXPECT_THAT(err_, HasSubstr("a.afr.csv: The target CSV has 1 lines"));
  EXPECT_EQ(Run({"info"}), kLogUsage);
}

}  // namespace
}  // namespace vela::logtool
