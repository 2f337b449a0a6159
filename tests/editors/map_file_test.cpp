#include "editors/map_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "editor_fakes.h"
#include "editors/build_calibration.h"

namespace vela {
namespace {

using editor_testing::MemoryFiles;
using editor_testing::ScriptedDialogs;
using editor_testing::SentFrame;
using editor_testing::SoundImage;
using editor_testing::SoundImageWith;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::ShownMessage;

const ProgramFolders kFolders{"/d/M/", "/d/M/V/", "/d/M/V/Maps/", "/d/M/V/Datalogs/"};
constexpr char kConnected[] = "MORVANE Engine Management System  -  Connected";
constexpr char kNotConnected[] = "MORVANE Engine Management System  - Not  Connected";

std::string FileOf(const CalibrationImage& image) {
  return {image.Bytes().begin(), image.Bytes().end()};
}

class MapFileTest : public ::testing::Test, public editor_testing::ApplyRig {
 protected:
  // The maps folder is there and the ECU connected, unless a test says otherwise.
  MapFileTest() {
    files.folders[kFolders.maps] = true;
    link.Caption = kConnected;
  }

  MapFileResult Load() { return map_files.LoadAndDownloadMap(target); }
  // The open dialog picks `name` in the maps folder, a file holding `content`.
  void Offer(const std::string& name, const std::string& content) {
    dialogs.path = "/d/M/V/Maps/" + name;
    files.files[*dialogs.path] = content;
  }
  // The one box loading the offered file shows, answered No.
  ShownMessage NoToTheOnlyBox() {
    messages.shown.clear();
    messages.answers = {MessageAnswer::kNo};
    EXPECT_EQ(Load(), MapFileResult::kCancelled);
    EXPECT_EQ(messages.shown.size(), 1u);
    return messages.shown.empty() ? ShownMessage{} : messages.shown[0];
  }
  // The editors as an upload of `image` leaves them, with nothing traced or sent since.
  void Uploaded(const CalibrationImage& image) {
    ApplyUploadedCalibration(image, CalibrationSource::kUpload, state, env);
    status = StartupTrace();
    sender.frames.clear();
  }

  MemoryFiles files;
  ScriptedDialogs dialogs;
  FileDialogMemory memory;
  MapFiles map_files{files, dialogs, messages, kFolders, memory};

  ProgramMode mode;
  CalibrationImage program_image;
  EditorState state;
  Download download{sender, link, {}};
  MapDownloadTarget target{link, mode, program_image, state, env, download};
};

TEST_F(MapFileTest, SaveWritesTheBuiltBlockThroughTheSaveDialog) {
  EditorState saved;
  saved.setup.rev_limit1_period = saved.setup.rev_limit2_period = 100;
  saved.idle.IdleTargetRpm = 900;
  dialogs.path = "/d/M/V/Maps/a.b.c.d.sm1";
  EXPECT_EQ(map_files.SaveMap(saved), MapFileResult::kDone);
  EXPECT_THAT(messages.shown, IsEmpty());
  ASSERT_EQ(dialogs.saved.size(), 1u);
  EXPECT_EQ(dialogs.saved[0].filter, "MORVANE Map (*.sm1)|*.sm1|\"MORVANE Map (*.sm1)|*.sm1|");
  EXPECT_EQ(dialogs.saved[0].title, "Save MORVANE ECU Map to Hard Disk");
  EXPECT_EQ(dialogs.saved[0].initial_folder, kFolders.maps);
  EXPECT_EQ(files.files.at("/d/M/V/Maps/a.b.c.d.sm1"),
            FileOf(BuildCalibrationFromEditors(saved).image));
}

TEST_F(MapFileTest, FiveDotsAreRefusedOnSaveAndLoad) {
  dialogs.path = "/d/M/V/Maps/a.b.c.d.e.sm1";
  EXPECT_EQ(map_files.SaveMap(EditorState{}), MapFileResult::kRefused);
  EXPECT_EQ(messages.shown.back().lines,
            std::vector<std::string>{"Invalid File Name. This datalog will NOT be loaded."});
  EXPECT_EQ(Load(), MapFileResult::kRefused);
  EXPECT_EQ(messages.shown.back().lines,
            std::vector<std::string>{"Invalid File Name. This map will NOT be loaded."});
  EXPECT_EQ(files.writes, 0);
  EXPECT_THAT(status.texts(), IsEmpty());
  EXPECT_EQ(DotsInFileName("/x.y.z.w.v/map.sm1"), 1);
}

// A blank state fails the validation: one warning, and the file is still saved.
TEST_F(MapFileTest, SaveWarnsOnceAsksBeforeOverwritingAndAFailedWriteKeepsTheOldFile) {
  dialogs.path = "/d/M/V/Maps/m";  // the extension is added
  files.files["/d/M/V/Maps/m.sm1"] = "old";
  const EditorState blank;
  messages.answers = {MessageAnswer::kNo};  // the question (the validation warning is OK only)
  EXPECT_EQ(map_files.SaveMap(blank), MapFileResult::kCancelled);
  ASSERT_EQ(messages.shown.size(), 2u);
  EXPECT_EQ(messages.shown[0].title, "MORVANE Warning");
  EXPECT_EQ(messages.shown[0].lines.front(),
            "Rev Limiter 2 Invalid, There was an error in your Map");
  EXPECT_EQ(messages.shown[1].title, "Overwrite file");
  EXPECT_THAT(messages.shown[1].lines, ElementsAre("Do you want to overwrite the file?"));
  EXPECT_EQ(messages.shown[1].buttons, MessageButtons::kYesNo);

  files.write_error = kFileErrorDiskFull;
  files.write_reason = "No space left on device";
  EXPECT_EQ(map_files.SaveMap(blank), MapFileResult::kFailed);
  EXPECT_EQ(messages.shown.back().lines.at(0), " Error Saving Program Settings, 61  ");
  EXPECT_EQ(messages.shown.back().lines.at(1), "/d/M/V/Maps/m.sm1: No space left on device");
  EXPECT_EQ(files.files.at("/d/M/V/Maps/m.sm1"), "old");

  files.write_error = kFileErrorNone;
  EXPECT_EQ(map_files.SaveMap(blank), MapFileResult::kDone);
  EXPECT_EQ(files.files.at("/d/M/V/Maps/m.sm1").size(), 1023u);
}

TEST_F(MapFileTest, InitialFolderLeavesTheDatalogsAndReportsAMissingMapsFolder) {
  memory.folder = "/d/M/V/Datalogs/2024/";
  dialogs.path = std::nullopt;
  EXPECT_EQ(map_files.SaveMap(EditorState{}), MapFileResult::kCancelled);
  EXPECT_EQ(dialogs.saved.back().initial_folder, kFolders.maps);

  memory.folder = "/elsewhere/";
  files.folders.clear();
  messages.shown.clear();
  EXPECT_EQ(Load(), MapFileResult::kCancelled);
  EXPECT_EQ(dialogs.opened.back().initial_folder, "/elsewhere/");
  EXPECT_EQ(dialogs.opened.back().filter, "MORVANE Maps (*.sm1)|*.sm1|\"All Maps (*.sm*)|*.sm*|");
  EXPECT_EQ(dialogs.opened.back().title, "Download MORVANE VELA Map to the ECU");
  ASSERT_EQ(messages.shown.size(), 1u);
  EXPECT_EQ(messages.shown[0].title, "Folder not Found");
  EXPECT_THAT(messages.shown[0].lines,
              ElementsAre("Folder not found. Please select the correct Maps folder where your "
                          "maps are saved."));
}

TEST_F(MapFileTest, LoadWithoutTheEcuSwitchesToOfflineModeFirst) {
  link.Caption = kNotConnected;
  EXPECT_EQ(Load(), MapFileResult::kRefused);
  ASSERT_EQ(messages.shown.size(), 1u);
  EXPECT_EQ(messages.shown[0].title, "DownLoad Error");
  EXPECT_THAT(messages.shown[0].lines,
              ElementsAre("You cannot download a map to the ECU while it is          ",
                          "not connected and the power is not turned on.",
                          "The laptop software will now be swapped into Offline Mode."));
  EXPECT_TRUE(mode.Offline);
  EXPECT_THAT(dialogs.opened, IsEmpty());

  dialogs.path = std::nullopt;
  EXPECT_EQ(Load(), MapFileResult::kCancelled);  // off-line: the dialog opens
  EXPECT_EQ(dialogs.opened.size(), 1u);
}

// Byte 909 of the file gives way to the version of the ECU whose calibration was uploaded: the
// same byte of the uploaded image that the version label and the version check show.
TEST_F(MapFileTest, ConfirmedLoadAppliesTheFileWithTheEcusVersionAndStartsTheDownload) {
  Uploaded(SoundImageWith({{909, 3}}));
  CalibrationImage file = SoundImage();
  file.SetByte(909, 9);
  file.SetByte(1, 0x34);
  file.SetByte(2, 0x12);
  Offer("a.b.c.d.sm1", FileOf(file));
  state.SetupErrors = {"from before"};

  const ShownMessage check = NoToTheOnlyBox();
  EXPECT_EQ(check.title, " Download Check");
  EXPECT_THAT(
      check.lines,
      ElementsAre("This operation will change ALL info currently in the ECU.",
                  "Are you REALLY sure you want to download a new map into the ECU?       "));
  EXPECT_FALSE(download.running());

  EXPECT_EQ(Load(), MapFileResult::kDone);
  EXPECT_EQ(program_image.Byte(909), 3);
  EXPECT_EQ(state.version.FirmwareVersion, 3);
  EXPECT_THAT(state.SetupErrors, IsEmpty());
  EXPECT_THAT(status.texts(),
              ElementsAre("Upload Sorting Started", "Upload Sorting Complete", "DownLoad"));
  ASSERT_TRUE(download.running());
  EXPECT_TRUE(link.TLock);
  download.Tick();
  EXPECT_THAT(sender.frames, ElementsAre(SentFrame{2, 1, 0x1234}));
}

// Only a file of exactly 1023 bytes is a map. Anything else is refused before a question is
// asked or a byte is sent, with the file's name and size, and the editors stay as they were.
TEST_F(MapFileTest, EveryFileThatIsNotExactlyAMapIsRefusedBeforeAnythingIsSent) {
  const std::string map = FileOf(SoundImage());
  const std::pair<std::string, std::string> cases[] = {
      {"empty.sm1", ""},
      {"short.sm1", map.substr(0, 1022)},
      {"long.sm1", map + "x"},
  };
  state.setup.cylinders_code = 5;
  for (const auto& [name, content] : cases) {
    SCOPED_TRACE(name);
    Offer(name, content);
    messages.shown.clear();
    EXPECT_EQ(Load(), MapFileResult::kRefused);
    ASSERT_EQ(messages.shown.size(), 1u);
    EXPECT_EQ(messages.shown[0].title, "Download MORVANE VELA Map to the ECU");
    EXPECT_THAT(messages.shown[0].lines,
                ElementsAre("\"/d/M/V/Maps/" + name + "\"",
                            "This file holds " + std::to_string(content.size()) + " bytes." +
                                " A map file holds exactly 1023 bytes, so this is not a map.",
                            "Nothing was loaded and nothing was sent to the ECU."));
  }
  files.folders["/d/M/V/Maps/folder.sm1"] = true;
  dialogs.path = "/d/M/V/Maps/folder.sm1";
  EXPECT_EQ(Load(), MapFileResult::kRefused);
  EXPECT_EQ(messages.shown.back().lines[1], "This is a folder, not a map file.");
  dialogs.path = "/d/M/V/Maps/gone.sm1";
  EXPECT_EQ(Load(), MapFileResult::kRefused);
  EXPECT_EQ(messages.shown.back().lines[1], "The map file could not be read.");
  EXPECT_FALSE(download.running());
  EXPECT_THAT(sender.frames, IsEmpty());
  EXPECT_THAT(status.texts(), IsEmpty());
  EXPECT_EQ(state.setup.cylinders_code, 5);
  EXPECT_EQ(program_image.Bytes(), CalibrationImage().Bytes());
}

TEST_F(MapFileTest, AFileFailingSetupChecksIsShownWithItsChangesAndNeedsAYes) {
  CalibrationImage file = SoundImage();
  file.SetByte(902, 9);    // trigger pattern
  file.SetByte(958, 200);  // dwell time
  file.Write16(1, 1500);   // two fuel cells and an ignition cell differ from the editors
  file.Write16(3, 1600);
  file.SetByte(751, 40);
  Offer("odd.sm1", FileOf(file));
  Uploaded(SoundImage());

  const ShownMessage warning = NoToTheOnlyBox();
  EXPECT_EQ(warning.title, "MORVANE Warning");
  EXPECT_EQ(warning.buttons, MessageButtons::kYesNoDefaultNo);
  EXPECT_THAT(warning.lines, ElementsAre("The map file \"odd.sm1\" fails these setup checks:",
                                         "    Trigger Pattern Invalid", "    Dwell Time Invalid",
                                         "It changes 3 map cells of the maps shown now.",
                                         "Download it into the ECU all the same?"));
  EXPECT_FALSE(download.running());
  EXPECT_THAT(sender.frames, IsEmpty());

  // Yes goes on to the download question, whose lines stay as they are, and then downloads.
  messages.shown.clear();
  messages.answers = {MessageAnswer::kYes, MessageAnswer::kYes};
  EXPECT_EQ(Load(), MapFileResult::kDone);
  ASSERT_EQ(messages.shown.size(), 2u);
  EXPECT_EQ(messages.shown[1].title, " Download Check");
  ASSERT_TRUE(download.running());
  download.Tick();  // the download's own frames are the download test's
  EXPECT_EQ(sender.frames.front(), (SentFrame{2, 1, 1500}));
}

// The file is judged by itself, as applying it would judge it: its MAP scaling against its own
// sensor type (byte 955), whatever sensor the editors show now.
TEST_F(MapFileTest, TheFilesOwnSensorTypeJudgesItsScaling) {
  Uploaded(SoundImage());  // type 0
  // A scaling of the 4 bar sensor only.
  const CalibrationImage four_bar = SoundImageWith({{955, 64 | 4}, {956, 250}});
  Offer("four.sm1", FileOf(four_bar));
  EXPECT_EQ(NoToTheOnlyBox().title, " Download Check");  // no setup question

  Uploaded(four_bar);  // type 4 shown
  CalibrationImage one_bar = four_bar;
  one_bar.SetByte(955, 64);
  Offer("one.sm1", FileOf(one_bar));
  EXPECT_EQ(NoToTheOnlyBox().lines.at(1), "    Map Sensor Scaling Invalid");
}

// The map editors cap every fuel cell at 100 % injector duty at its row's RPM; a file is not let
// past that silently. Here the injection mode gives a duty base of 60,000 ms x RPM on RPM rows of
// 0, 500, 1000, 1900 ... 8200: 60 ms is above the limit of the 0 RPM row (20 ms) and of the nine
// rows from 1900 RPM up, at the limit at 1000 RPM and within it at 500. The top row allows 7.3 ms.
TEST_F(MapFileTest, AFileWithFuelCellsAboveTheirDutyLimitIsQuestionedWithTheirNumber) {
  Uploaded(SoundImage());
  CalibrationImage file = SoundImage();
  for (int row = 1; row <= kMapRows; ++row) {
    for (int column = 1; column <= 9; ++column) file.SetFuelMs(1, row, column, 60.0);
  }
  file.SetFuelMs(2, 11, 1, 7.3);    // at the limit: allowed
  file.SetFuelMs(2, 11, 2, 7.301);  // above it
  file.SetFuelMs(2, 1, 1, 20.0);    // at the 0 RPM row's limit
  EXPECT_EQ(OverDutyFuelCells(file), 9 * 9 + 1);
  Offer("rich.sm1", FileOf(file));
  EXPECT_THAT(NoToTheOnlyBox().lines,
              ElementsAre("The map file \"rich.sm1\" fails these setup checks:",
                          "    82 fuel cells are above the duty limit of their RPM row (more "
                          "than 100 % injector duty)",
                          "It changes 102 map cells of the maps shown now.",
                          "Download it into the ECU all the same?"));
}

}  // namespace
}  // namespace vela
