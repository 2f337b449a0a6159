#include "base/program_settings.h"

#include <gtest/gtest.h>

#include <sstream>
#include <vector>

namespace vela {
namespace {

std::vector<std::string> LinesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::string::size_type start = 0;
  while (start < text.size()) {
    const auto end = text.find("\r\n", start);
    EXPECT_NE(end, std::string::npos) << "every line ends with CRLF";
    lines.push_back(text.substr(start, end - start));
    start = end + 2;
  }
  return lines;
}

// Reads a whole file the way start-up does: line by line, a missing line keeping the last text.
ProgramSettings ReadAll(const std::string& text, ProgramSettings settings, int* port = nullptr) {
  SetupFileReader reader(text);
  std::string setup_line;
  int comm_port = 0;
  for (int line = 1; line <= kSetupLineCount; ++line) {
    reader.ReadLine(setup_line);
    ApplySetupLine(line, setup_line, settings, comm_port);
  }
  if (port) *port = comm_port;
  return settings;
}

TEST(SetupFileTest, DefaultFileIsTheSixteenDefaultLinesWithCrLf) {
  EXPECT_EQ(DefaultSetupFileText(),
            "Port = 4\r\nFrames per Second = 4\r\nDatalog TimeScale = 20\r\n"
            "AFR Display Mode = 0\r\nFuel Map Display Type = True\r\nGPO Display Type = False\r\n"
            "Confirm GPO Change = True\r\nMap Upload Integrity = True\r\n"
            "Show Instant Help = True\r\nComms Multiply = 1\r\nReduce Comms Sending = 0\r\n"
            "RPM Smoothing = 0\r\nMAP Smoothing = 0\r\nAFR Smoothing = 0\r\n"
            "Language = True\r\nSettings = 0\r\n");
}

TEST(SetupFileTest, SavedLinesUseTheNumberAndTruthFormsAndFilePrintNumbers) {
  const ProgramSettings s{.port_index = 6, .gpo_change_confirm = false, .comms_packet_speed = 5};
  const auto lines = LinesOf(SetupFileText(s));
  ASSERT_EQ(lines.size(), 16u);
  EXPECT_EQ(lines[0], "Port = 7 ");
  EXPECT_EQ(lines[6], "Confirm GPO Change = False");
  EXPECT_EQ(lines[9], "Comms Multiply = 6");
  EXPECT_EQ(lines[15], "Scale =  50 ");
  // The file-print form: the sign in front, one blank behind.
  EXPECT_EQ(FilePrintNumber(-3), "-3 ");
  EXPECT_EQ(FilePrintNumber(2.5), " 2.5 ");
}

TEST(SetupReadTest, SavedSettingsReadBackExceptTheLanguage) {
  const ProgramSettings saved{.port_index = 9,
                              .frames_per_second_index = 0,
                              .datalog_time_scale = 45,
                              .afr_display_mode = 2,
                              .fuel_map_numerical = false,
                              .gpo_name_enable = true,
                              .map_integrity = false,
                              .instant_help = false,
                              .comms_packet_speed = 3,
                              .reduce_comms_sending = 1,
                              .rpm_smoothing = 1,
                              .scale = -20};
  int port = 0;
  ProgramSettings read = ReadAll(SetupFileText(saved), ProgramSettings{}, &port);
  EXPECT_EQ(port, 10);
  EXPECT_FALSE(read.language_first) << "line 15 is read past its end, so never as True";
  read.language_first = saved.language_first;
  EXPECT_EQ(read, saved);
}

// Scale 0 is saved as 50 and read back as 0; the default file's last line leaves it alone.
TEST(SetupReadTest, ScaleZeroReadsBackAndTheDefaultFilesLastLineLeavesTheScaleAlone) {
  const ProgramSettings start{.scale = 12};
  EXPECT_EQ(ReadAll(SetupFileText(ProgramSettings{.scale = 0}), start).scale, 0);
  const ProgramSettings read = ReadAll(DefaultSetupFileText(), start);
  EXPECT_EQ(read.scale, 12);
  EXPECT_EQ(read.port_index, 3);
  EXPECT_EQ(read.frames_per_second_index, 4);
}

TEST(SetupReadTest, LinesAreReadByPositionNotByKey) {
  std::string text = DefaultSetupFileText();
  // Line 12 carries the MAP key and line 13 the RPM key: values go by line number.
  text.replace(text.find("RPM Smoothing = 0"), 17, "MAP Smoothing = 1");
  text.replace(text.rfind("MAP Smoothing = 0"), 17, "RPM Smoothing = 0");
  const ProgramSettings read = ReadAll(text, ProgramSettings{});
  EXPECT_EQ(read.rpm_smoothing, 1);
  EXPECT_EQ(read.map_smoothing, 0);
}

TEST(SetupReadTest, AMissingLineIsParsedFromThePreviousLinesText) {
  // Twelve lines only: lines 13 and 14 read the text of line 12 at their own position.
  std::string text;
  const auto all = LinesOf(DefaultSetupFileText());
  for (int i = 0; i < 11; ++i) text += all[i] + "\r\n";
  text += "RPM Smoothing = 1\r\n";
  const ProgramSettings read = ReadAll(text, ProgramSettings{.scale = 5});
  EXPECT_EQ(read.rpm_smoothing, 1);
  EXPECT_EQ(read.map_smoothing, 1);
  EXPECT_EQ(read.afr_smoothing, 1);
  EXPECT_EQ(read.scale, 5);
}

TEST(SetupReadTest, ValuesThatDoNotConvertOrFitLeaveTheirControlsUnchanged) {
  const ProgramSettings start{.port_index = 1,
                              .frames_per_second_index = 7,
                              .afr_display_mode = 1,
                              .comms_packet_speed = 2};
  const std::string text =
      "Port = x\r\nFrames per Second = 11\r\nDatalog TimeScale = \r\nAFR Display Mode = -1\r\n"
      "Fuel Map Display Type = true\r\n\r\n\r\n\r\n\r\nComms Multiply = 7\r\n";
  int port = 99;
  const ProgramSettings read = ReadAll(text, start, &port);
  EXPECT_EQ(read.port_index, 1);
  EXPECT_EQ(port, 0) << "an unreadable port number leaves the number unset";
  EXPECT_EQ(read.frames_per_second_index, 7);
  EXPECT_EQ(read.datalog_time_scale, 20);
  EXPECT_EQ(read.afr_display_mode, 1);
  EXPECT_FALSE(read.fuel_map_numerical) << "only the exact text True selects the first choice";
  EXPECT_EQ(read.comms_packet_speed, 2);
  // A number converts only when the whole text is one.
  for (const char* text : {"= 0", "4x", "True"}) EXPECT_FALSE(ParseSetupNumber(text)) << text;
}

// A port beyond the list leaves the choice but still gives the number; lone line feeds or
// carriage returns and a missing last line end still split the lines.
TEST(SetupReadTest, APortBeyondTheListAndLoneLineEndsStillRead) {
  int port = 0;
  const ProgramSettings read = ReadAll("Port = 15\nFrames per Second = 9\rDatalog TimeScale = 60",
                                       ProgramSettings{.port_index = 1}, &port);
  EXPECT_EQ(read.port_index, 1);
  EXPECT_EQ(port, 15);
  EXPECT_EQ(read.frames_per_second_index, 9);
  EXPECT_EQ(read.datalog_time_scale, 60);
}

}  // namespace
}  // namespace vela
