// DatalogSetup.txt: made with every channel on, read and written as the program writes it, and
// its failure rules.
#include "datalog/datalog_settings.h"

#include <gtest/gtest.h>

#include "support/platform_fakes.h"

namespace vela {
namespace {

constexpr const char* kPath = "/p/DatalogSetup.txt";

struct Settings {
  testing::MemoryFileSystem files;
  testing::RecordingMessages messages;
  DatalogSettings settings{files, messages, kPath};
};

ChannelChecks Checks(std::initializer_list<int> on) {
  ChannelChecks checks{};
  for (int n : on) checks[n] = true;
  return checks;
}

TEST(DatalogSettings, AMissingFileIsMadeWithEveryChannelOnAndWhatIsSavedIsReadBack) {
  Settings s;
  const ChannelChecks checks = s.settings.LoadDatalogSettings();
  EXPECT_EQ(checks, Checks({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}));
  EXPECT_EQ(s.files.files[kPath],
            "Channel 0 = 1\r\nChannel 1 = 1\r\nChannel 2 = 1\r\nChannel 3 = 1\r\n"
            "Channel 4 = 1\r\nChannel 5 = 1\r\nChannel 6 = 1\r\nChannel 7 = 1\r\n"
            "Channel 8 = 1\r\nChannel 9 = 1\r\nChannel 10 = 1\r\nChannel 11 = 1\r\n");
  EXPECT_TRUE(s.messages.shown.empty());
  const ChannelChecks saved = Checks({0, 3, 4, 11});
  s.settings.SaveDatalogSettings(saved);
  EXPECT_EQ(s.files.files[kPath].substr(0, 28), "Channel 0 = 1\r\nChannel 1 = 0");
  EXPECT_EQ(s.settings.LoadDatalogSettings(), saved);
}

TEST(DatalogSettings, OnlyAOneTwoCharactersAfterTheEqualsSignTurnsAChannelOn) {
  EXPECT_EQ(
      ReadDatalogSetupText("Channel 0 = 1\r\nChannel 1 = 2\r\nChannel 2 =1\r\nChannel 3 = 1 \r\n"
                           "Channel 4 = -1\r\nanything = 1\r\nx1\r\nChannel 7 = 1 = 0\r\n"
                           "Channel 8 = 1\nChannel 9 = 0\r\nChannel 10 = 0\r\nChannel 11 = 1\r\n"),
      Checks({0, 5, 6, 8, 11}));
}

TEST(DatalogSettings, AShortFileGivesTheRemainingChannelsTheLastLineRead) {
  EXPECT_EQ(ReadDatalogSetupText("Channel 0 = 0\r\nChannel 1 = 1\r\n"),
            Checks({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}));
  EXPECT_EQ(ReadDatalogSetupText("Channel 0 = 1\r\nChannel 1 = 0\r\n"), Checks({0}));
  EXPECT_EQ(ReadDatalogSetupText(""), Checks({}));
}

TEST(DatalogSettings, AFileThatCannotBeMadeSaysSoAndEveryChannelIsOn) {
  Settings s;
  s.files.write_error = kFileErrorAccess;
  EXPECT_EQ(s.settings.LoadDatalogSettings(), Checks({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}));
  ASSERT_EQ(s.messages.shown.size(), 1u);
  EXPECT_EQ(s.messages.shown[0].icon, MessageIcon::kInformation);
  EXPECT_EQ(s.messages.shown[0].title, "Save Config Settings");
  EXPECT_EQ(s.messages.shown[0].lines,
            std::vector<std::string>{" Error Creating DatalogSetup Settings, 75  "});
}

TEST(DatalogSettings, AFailedSaveSharesTheProgramSettingsWording) {
  Settings s;
  s.files.files[kPath] = "Channel 0 = 1\r\n";
  s.files.write_error = kFileErrorDiskFull;
  s.settings.SaveDatalogSettings(Checks({}));
  ASSERT_EQ(s.messages.shown.size(), 1u);
  EXPECT_EQ(s.messages.shown[0].title, "Save Datalog Settings");
  EXPECT_EQ(s.messages.shown[0].lines,
            std::vector<std::string>{" Error Saving Program Settings, 61  "});
  EXPECT_EQ(s.files.files[kPath], "Channel 0 = 1\r\n");
}

}  // namespace
}  // namespace vela
