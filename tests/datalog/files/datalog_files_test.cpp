// Saving and loading datalogs through the file dialog: titles, filters, folders, the name rules,
// the text export, and what a failed save or a bad file leaves.
#include "datalog/files/datalog_files.h"

#include <gtest/gtest.h>

#include "datalog/datalog_test_support.h"
#include "datalog/files/log_export.h"
#include "support/platform_fakes.h"

namespace vela {
namespace {

// The shared scripted dialogs, noting the content listing an open dialog is given.
struct ListingDialogs : testing::ScriptedDialogs {
  std::optional<std::string> AskOpenPathListing(const std::string& filter, const std::string& title,
                                                const std::string& folder,
                                                const ContentListing& listing) override {
    listings.push_back(listing);
    return AskOpenPath(filter, title, folder);
  }
  std::vector<ContentListing> listings;
};

struct Files {
  Files() {
    disk.folders[folders.datalogs] = true;
    disk.folders[folders.maps] = true;
  }
  ProgramFolders folders{"/m/", "/m/V/", "/m/V/Maps/", "/m/V/Datalogs/"};
  testing::MemoryFileSystem disk;
  testing::ScriptedMessages messages;  // Yes to every question
  ListingDialogs dialogs;
  std::string dialog_folder;
  DatalogFiles files{disk, dialogs, messages, folders, dialog_folder};
  DatalogLog log = testing::PatternLog(50);
};

TEST(DatalogNames, TheLastOfUpToFourDotsGivesWayToTheUpperCaseExtension) {
  EXPECT_EQ(ChartSavePath("/d/trackday.sl1"), "/d/trackday.SL1");
  EXPECT_EQ(ChartSavePath("/d.x/pull"), "/d.x/pull");
  EXPECT_EQ(ChartSavePath("C:\\a.b\\dyno.run.SL1"), "C:\\a.b\\dyno.run.SL1");
  EXPECT_EQ(ChartSavePath("/d/a.b.c.d.e.f"), std::nullopt);
  EXPECT_EQ(ChartSavePath("/d/a.b.c.d.e"), "/d/a.b.c.d.SL1");
}

TEST(DatalogFiles, SavingWritesTheChartFileUnderTheDatalogsFolder) {
  Files f;
  f.dialogs.paths = {"/m/V/Datalogs/trackday.sl1"};
  EXPECT_EQ(f.files.Save(f.log), DatalogFileResult::kDone);
  ASSERT_EQ(f.dialogs.saved.size(), 1u);
  EXPECT_EQ(f.dialogs.saved[0].title, "Save MORVANE VELA DataLog to Hard Disk");
  EXPECT_EQ(f.dialogs.saved[0].filter,
            "MORVANE DataLogs, VELA chart format (*.sl1)|*.sl1|\"All DataLogs (*.sl*)|*.sl*|");
  EXPECT_EQ(f.dialogs.saved[0].initial_folder, "/m/V/Datalogs/");
  EXPECT_EQ(f.disk.files.at("/m/V/Datalogs/trackday.SL1"), EncodeLogFile(f.log));
}

TEST(DatalogFiles, AFiveDotNameIsRefusedForSavingAndForLoading) {
  Files f;
  f.dialogs.paths = {"/m/V/Datalogs/a.b.c.d.e.f", "/m/V/Datalogs/a.b.c.d.e.sl1"};
  EXPECT_EQ(f.files.SaveDatalog3(f.log), DatalogFileResult::kRefused);
  EXPECT_EQ(f.files.LoadDatalog(f.log).result, DatalogFileResult::kRefused);
  ASSERT_EQ(f.messages.shown.size(), 2u);
  EXPECT_EQ(f.messages.shown[0].icon, MessageIcon::kNone);
  EXPECT_EQ(f.messages.shown[0].lines[0], "Invalid File Name. This datalog will NOT be saved.");
  EXPECT_EQ(f.messages.shown[1].lines[0], "Invalid File Name. This datalog will NOT be loaded.");
  EXPECT_TRUE(f.disk.files.empty());
  EXPECT_EQ(f.log.RecordCount(), 50u);
}

TEST(DatalogFiles, AMissingFolderIsSaidAndTheMapsFolderGivesWayToTheDatalogsFolder) {
  Files f;
  f.disk.folders.erase(f.folders.datalogs);
  f.dialog_folder = "/m/V/Maps/old/";
  EXPECT_EQ(f.files.SaveDatalog3(f.log), DatalogFileResult::kCancelled);
  EXPECT_EQ(f.dialogs.saved[0].initial_folder, "/m/V/Datalogs/");
  f.dialog_folder = "/elsewhere/";
  f.files.LoadDatalog(f.log);
  EXPECT_EQ(f.dialogs.opened[0].initial_folder, "/elsewhere/");
  EXPECT_EQ(f.dialogs.opened[0].title, "Load MORVANE VELA DataLog from Hard Disk");
  ASSERT_EQ(f.messages.shown.size(), 2u);
  EXPECT_EQ(f.messages.shown[0].title, "Folder not Found");
  EXPECT_EQ(f.messages.shown[0].icon, MessageIcon::kExclamation);
  EXPECT_EQ(f.messages.shown[0].lines[0],
            "Folder not found. Please select the correct Datalogs folder to save your datalogs.");
  EXPECT_EQ(f.messages.shown[1].lines[0],
            "Folder not found. Please select the correct Datalogs folder where your datalogs are "
            "saved.");
}

TEST(DatalogFiles, AFailedSaveSaysSoAndLeavesTheOlderFileAsItWas) {
  Files f;
  f.disk.files["/m/V/Datalogs/pull.SL1"] = "older log";
  f.disk.write_error = kFileErrorDiskFull;
  f.dialogs.paths = {"/m/V/Datalogs/pull.sl1"};
  EXPECT_EQ(f.files.SaveDatalog3(f.log), DatalogFileResult::kFailed);
  EXPECT_EQ(f.disk.files["/m/V/Datalogs/pull.SL1"], "older log");
  ASSERT_EQ(f.messages.shown.size(), 2u);  // the overwrite question, then the failure
  EXPECT_EQ(f.messages.shown[1].lines[0], "The datalog could not be saved (error 61).");
}

TEST(DatalogFiles, LoadingReplacesTheLogOnlyWithADatalog) {
  Files f;
  f.disk.files["/m/V/Datalogs/x.SL1"] = EncodeLogFile(testing::PatternLog(7));
  f.disk.files["/m/V/Datalogs/map.sl1"] = std::string(1023, '\x10');
  f.dialogs.paths = {"/m/V/Datalogs/map.sl1", "/m/V/Datalogs/x.SL1"};
  EXPECT_EQ(f.files.LoadDatalog(f.log).result, DatalogFileResult::kFailed);
  EXPECT_EQ(f.log.RecordCount(), 50u);
  const std::uint64_t revision = f.log.Revision();
  EXPECT_EQ(f.files.LoadDatalog(f.log).result, DatalogFileResult::kDone);
  EXPECT_EQ(f.log.RecordCount(), 7u);
  EXPECT_GT(f.log.Revision(), revision);
  EXPECT_EQ(f.messages.shown.size(), 1u);
}

TEST(DatalogFiles, ADamagedFileLoadsWhatIsIntactAndSaysWhatWasLost) {
  Files f;
  const std::string whole = EncodeLogFile(testing::PatternLog(2000));
  f.disk.files["/m/V/Datalogs/cut.SL1"] = whole.substr(0, whole.size() * 3 / 4);
  f.dialogs.paths = {"/m/V/Datalogs/cut.SL1"};
  const DatalogLoadResult result = f.files.LoadDatalog(f.log);
  EXPECT_EQ(result.result, DatalogFileResult::kDone);
  EXPECT_EQ(f.log.RecordCount(), 1024u);
  ASSERT_EQ(f.messages.shown.size(), 1u);
  EXPECT_EQ(f.messages.shown[0].lines[0],
            "The datalog file is damaged. What could be read has been loaded: 1024 records up to "
            "102.40 s.");
}

TEST(DatalogFiles, AllDataLogsListsEveryChartFileByItsContentWhateverItsName) {
  Files f;
  f.files.LoadDatalog(f.log);
  ASSERT_EQ(f.dialogs.listings.size(), 1u);
  const FileDialogs::ContentListing& listing = f.dialogs.listings[0];
  EXPECT_EQ(listing.filter_index, 1);  // "All DataLogs (*.sl*)"
  const auto head = [&](const std::string& file) { return file.substr(0, listing.head_bytes); };
  // Saved under a name without a dot, the chart file has no extension.
  EXPECT_TRUE(listing.matches(head(EncodeLogFile(f.log))));
  EXPECT_FALSE(listing.matches(head(std::string(1023, '\x10'))));
}

TEST(DatalogFiles, TheTextExportGoesToItsOwnDialogAndGetsItsExtension) {
  Files f;
  f.files.DatalogFileKind = kDatalogKindText;
  f.dialogs.paths = {"/m/V/Datalogs/pull", "/m/V/Datalogs/dyno.txt"};
  EXPECT_EQ(f.files.Save(f.log), DatalogFileResult::kDone);
  EXPECT_EQ(f.files.Save(f.log), DatalogFileResult::kDone);
  EXPECT_EQ(f.dialogs.saved[0].title, "Save MORVANE ECU DataLog to Hard Disk");
  EXPECT_EQ(f.dialogs.saved[0].filter,
            "MORVANE DataLog (*.dl1)|*.dl1|\"MORVANE DataLog (*.dl1)|*.dl1|");
  EXPECT_EQ(f.disk.files.at("/m/V/Datalogs/pull.dl1"), Dl1Text(f.log));
  EXPECT_EQ(f.disk.files.count("/m/V/Datalogs/dyno.txt"), 1u);
}

TEST(DatalogFiles, TheSpanAndThePictureGoThroughTheirDialogsAndAFailureLeavesNoFile) {
  Files f;
  f.dialogs.paths = {"/m/V/Datalogs/pull", "/m/V/Datalogs/view"};
  EXPECT_EQ(f.files.ExportCsvSpan(f.log, 1.0, 2.0), DatalogFileResult::kDone);
  EXPECT_EQ(f.disk.files.at("/m/V/Datalogs/pull.csv"), CsvText(f.log, 1.0, 2.0));
  EXPECT_EQ(f.files.ExportPicture([] { return std::string("\x89PNG"); }), DatalogFileResult::kDone);
  EXPECT_EQ(f.disk.files.at("/m/V/Datalogs/view.png"), "\x89PNG");
  EXPECT_EQ(f.dialogs.saved[1].title, "Export MORVANE VELA DataLog chart as PNG");
  EXPECT_EQ(f.dialogs.saved[1].filter, "PNG picture (*.png)|*.png|");
  // Cancelled (the paths are used up): the picture is never made.
  bool made = false;
  EXPECT_EQ(f.files.ExportPicture([&made] {
    made = true;
    return std::string("x");
  }),
            DatalogFileResult::kCancelled);
  EXPECT_FALSE(made);
  // A write that fails says so; the disk keeps no file of that name.
  f.dialogs.paths = {"/m/V/Datalogs/full.png"};
  f.disk.write_error = kFileErrorAccess;
  EXPECT_EQ(f.files.ExportPicture([] { return std::string("\x89PNG"); }),
            DatalogFileResult::kFailed);
  EXPECT_EQ(f.disk.files.count("/m/V/Datalogs/full.png"), 0u);
  ASSERT_EQ(f.messages.shown.size(), 1u);
  EXPECT_NE(f.messages.shown[0].lines[0].find("(error 75)"), std::string::npos);
}

}  // namespace
}  // namespace vela
