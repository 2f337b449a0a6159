#include "program/program_setup.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "program/first_run_setup.h"
#include "support/platform_fakes.h"

namespace vela {
namespace {

using ::testing::ElementsAre;
using testing::MemoryFileSystem;
using testing::RecordingMessages;
using testing::ScriptedPort;

class ProgramSetupTest : public ::testing::Test {
 protected:
  ProgramFolders folders = ProgramFoldersUnder("/home/tuner");
  MemoryFileSystem files;
  RecordingMessages messages;
  StartupTrace trace;
  ScriptedPort port;
  ProgramSetup setup{folders, files, messages, trace};
};

TEST_F(ProgramSetupTest, FirstStartCreatesTheFourFoldersInOrderAndTheDefaultFile) {
  setup.ReadProgramSettings(port);
  EXPECT_THAT(files.log,
              ElementsAre("mkdir /home/tuner/MORVANE Programs Info/",
                          "mkdir /home/tuner/MORVANE Programs Info/MORVANE VELA/",
                          "mkdir /home/tuner/MORVANE Programs Info/MORVANE VELA/Maps/",
                          "mkdir /home/tuner/MORVANE Programs Info/MORVANE VELA/Datalogs/",
                          "write " + setup.SetupFilePath()));
  EXPECT_EQ(files.files[setup.SetupFilePath()], DefaultSetupFileText());
  EXPECT_THAT(port.opened, ElementsAre(4));
  EXPECT_TRUE(messages.shown.empty());
}

// An existing file is read, not replaced, and its port opened. That the controls it fills save
// nothing while they are filled, and take the values read, the main window's tests show; the
// traces of the reading, the start-up sequence's.
TEST_F(ProgramSetupTest, AnExistingFileIsReadNotReplaced) {
  files.folders = {{folders.maker, true},
                   {folders.program, true},
                   {folders.maps, true},
                   {folders.datalogs, true}};
  files.files[setup.SetupFilePath()] = "Port = 2 \r\nFrames per Second = 0 \r\n";
  setup.ReadProgramSettings(port);
  EXPECT_TRUE(files.log.empty());
  EXPECT_THAT(port.opened, ElementsAre(2));
}

TEST_F(ProgramSetupTest, APortThatDoesNotOpenIsReportedAndReadingGoesOn) {
  files.files[setup.SetupFilePath()] = SetupFileText(ProgramSettings{.afr_display_mode = 3});
  port.opens_succeed = false;
  setup.ReadProgramSettings(port);
  ASSERT_EQ(messages.shown.size(), 1u);
  EXPECT_EQ(messages.shown[0].icon, MessageIcon::kInformation);
  EXPECT_EQ(messages.shown[0].title, "Commport Error");
  EXPECT_THAT(messages.shown[0].lines,
              ElementsAre("The current Commport could not be opened.",
                          "Please check if the correct commport has been selected.           "));
  EXPECT_EQ(setup.settings.afr_display_mode, 3);
}

TEST_F(ProgramSetupTest, ChangesAreSavedOnlyWhenNeitherGuardIsUp) {
  files.files[setup.SetupFilePath()] = DefaultSetupFileText();
  setup.settings.port_index = 6;
  setup.SuppressChangeEvents = true;
  setup.SettingChanged();
  setup.SuppressChangeEvents = false;
  setup.LoadingSetup = true;
  setup.SettingChanged();
  EXPECT_EQ(files.files[setup.SetupFilePath()], DefaultSetupFileText());
  setup.LoadingSetup = false;
  setup.SettingChanged();
  EXPECT_EQ(files.files[setup.SetupFilePath()].substr(0, 11), "Port = 7 \r\n");
}

TEST_F(ProgramSetupTest, AFailedWriteShowsTheErrorNumberThenTheFileAndWhyAndKeepsTheSettings) {
  files.write_error = kFileErrorPathNotFound;
  files.write_reason = "the folder /d does not exist";
  setup.settings.scale = 9;
  setup.SaveProgramSettings();
  ASSERT_EQ(messages.shown.size(), 1u);
  EXPECT_EQ(messages.shown[0].title, "Save Program Settings");
  EXPECT_THAT(messages.shown[0].lines,
              ElementsAre(" Error Saving Program Settings, 76  ",
                          setup.SetupFilePath() + ": the folder /d does not exist"));
  EXPECT_EQ(setup.settings.scale, 9);
}

// A control that goes on changing while the message box is open (its repeat running under the
// box) saves each change, but the tuner sees one message for the change that failed.
TEST_F(ProgramSetupTest, ChangesWhileASaveErrorIsOpenShowNoFurtherMessage) {
  files.write_error = kFileErrorDiskFull;
  struct RepeatingControl : MessageSink {
    MessageAnswer Show(MessageIcon, const std::string&, const std::vector<std::string>&,
                       MessageButtons) override {
      ++shown;
      for (int i = 0; i < 5 && setup != nullptr; ++i) {
        ++setup->settings.scale;
        setup->SettingChanged();
      }
      return MessageAnswer::kOk;
    }
    ProgramSetup* setup = nullptr;
    int shown = 0;
  } control;
  ProgramSetup repeating(setup.folders(), files, control, trace);
  control.setup = &repeating;
  repeating.SettingChanged();
  EXPECT_EQ(control.shown, 1);
  control.setup = nullptr;
  repeating.SettingChanged();  // the next change of its own shows its own message
  EXPECT_EQ(control.shown, 2);
}

TEST_F(ProgramSetupTest, FirstRunSetupWritesConfigOnlyWhenThePortOpens) {
  const std::string config = setup.ConfigFilePath();
  port.opens_succeed = false;
  EXPECT_FALSE(CompleteFirstRunSetup({3, 0}, false, port, files, config, messages));
  EXPECT_FALSE(files.files.count(config));
  EXPECT_EQ(messages.shown.back().title, "Commport Error");

  port.opens_succeed = true;
  EXPECT_TRUE(CompleteFirstRunSetup({3, 5}, false, port, files, config, messages));
  EXPECT_EQ(files.files[config], "Port = 3 \r\nPort2 = 5 \r\n");
  EXPECT_FALSE(port.IsOpen()) << "the tried port is closed again";
  EXPECT_EQ(messages.shown.back().title, "MORVANE Engine Managements");
  EXPECT_THAT(messages.shown.back().lines,
              ElementsAre("Your System is now setup and is ready to run.      "));
}

TEST(ProgramFoldersTest, WindowsTreeIsFixedAtTheRootOfDriveC) {
  const ProgramFolders f = WindowsProgramFolders();
  EXPECT_EQ(f.maker, "C:\\MORVANE Programs Info\\");
  EXPECT_EQ(f.datalogs, "C:\\MORVANE Programs Info\\MORVANE VELA\\Datalogs\\");
  EXPECT_EQ(PortDeviceName(3, true), "COM3");
  EXPECT_EQ(PortDeviceName(1, false), "/dev/ttyUSB0");
}

class DiskFileSystemTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir = std::filesystem::temp_directory_path() /
          ("vela-fs-" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()) + "-" +
           ::testing::UnitTest::GetInstance()->current_test_info()->name());
    std::filesystem::remove_all(dir);
    std::filesystem::create_directories(dir);
  }
  void TearDown() override { std::filesystem::remove_all(dir); }
  std::filesystem::path dir;
  DiskFileSystem disk;
};

TEST_F(DiskFileSystemTest, WriteReplacesTheWholeFileOrFailsInAMissingFolderAndSaysWhy) {
  EXPECT_EQ(disk.WriteFile((dir / "gone" / "Setup.txt").string(), "x"), kFileErrorPathNotFound);
  EXPECT_FALSE(disk.ReadFile((dir / "gone" / "Setup.txt").string()));
  EXPECT_EQ(disk.LastWriteReason(), "the folder " + (dir / "gone").string() + " does not exist");
  const std::string path = (dir / "Setup.txt").string();
  ASSERT_EQ(disk.WriteFile(path, "a long first content\r\n"), kFileErrorNone);
  EXPECT_EQ(disk.LastWriteReason(), "");
  ASSERT_EQ(disk.WriteFile(path, "short\r\n"), kFileErrorNone);
  EXPECT_EQ(disk.ReadFile(path), "short\r\n");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir), {}), 1);
}

TEST_F(DiskFileSystemTest, AFailedRenameKeepsTheOldFile) {
  // A folder standing where the file should go cannot be replaced by a file.
  const auto target = dir / "Maps";
  std::filesystem::create_directory(target);
  std::ofstream(target / "keep.sm1") << "old";
  EXPECT_NE(disk.WriteFile(target.string(), "new"), kFileErrorNone);
  EXPECT_NE(disk.LastWriteReason(), "");  // the system's words, such as "Is a directory"
  EXPECT_TRUE(std::filesystem::is_directory(target));
  EXPECT_FALSE(std::filesystem::exists(dir / "Maps.saving"));
}

// A map is judged from its first bytes and its size: a huge file is not read whole, and a pipe
// (which would block a reader until something writes to it) is never opened.
TEST_F(DiskFileSystemTest, ReadHeadReadsOnlyTheBeginningAndNeverOpensAPipe) {
  const auto big = dir / "huge.sm1";
  std::ofstream(big) << "MAP";
  std::filesystem::resize_file(big, 400ull << 20);  // 400 MiB, sparse
  const FileHead head = disk.ReadHead(big.string(), 1024);
  EXPECT_EQ(head.kind, FileHead::Kind::kFile);
  EXPECT_EQ(head.size, 400ull << 20);
  ASSERT_EQ(head.bytes.size(), 1024u);
  EXPECT_EQ(head.bytes.substr(0, 3), "MAP");
  const auto pipe = dir / "pipe.sm1";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_EQ(disk.ReadHead(pipe.string(), 1024).kind, FileHead::Kind::kNotAFile);
  EXPECT_EQ(disk.ReadHead(dir.string(), 1024).kind, FileHead::Kind::kFolder);
  EXPECT_EQ(disk.ReadHead((dir / "gone").string(), 1024).kind, FileHead::Kind::kMissing);
  std::ofstream(dir / "short.sm1") << "abc";
  const FileHead short_head = disk.ReadHead((dir / "short.sm1").string(), 1024);
  EXPECT_EQ(short_head.size, 3u);
  EXPECT_EQ(short_head.bytes, "abc");
}

TEST_F(DiskFileSystemTest, FileNamesListsPlainFilesOnlyAndRemoveFileRemovesOne) {
  std::ofstream(dir / "a.sm1") << "a";
  std::ofstream(dir / "b c.sm1") << "b";
  std::filesystem::create_directory(dir / "sub");
  std::vector<std::string> names = disk.FileNames(dir.string());
  std::sort(names.begin(), names.end());
  EXPECT_THAT(names, ::testing::ElementsAre("a.sm1", "b c.sm1"));
  EXPECT_TRUE(disk.RemoveFile((dir / "a.sm1").string()));
  EXPECT_TRUE(disk.RemoveFile((dir / "a.sm1").string()));  // already gone
  EXPECT_THAT(disk.FileNames(dir.string()), ::testing::ElementsAre("b c.sm1"));
  EXPECT_THAT(disk.FileNames((dir / "gone").string()), ::testing::IsEmpty());
}

}  // namespace
}  // namespace vela
